#pragma once

#include "reports/trans_report_summary.h"
#include "ui/cli/session.h"

namespace moniva {

/// The periods of a list as a table with bars and a total.
void printPeriods(Session& session, const TransReportSummary& list, const MonivaAccount& of,
                  std::string_view unit);
/// All accounts with their balances.
void listAccounts(Session& session);

}  // namespace moniva
