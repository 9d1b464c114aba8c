#pragma once

#include "reports/breakdown_gap.h"
#include "reports/trans_report_summary.h"
#include "ui/cli/command_line.h"

namespace moniva {

/// What the table of a breakdown, or of one member's periods, is told beside its rows.
struct BreakdownHeading {
  std::string of;           ///< the book or account, and the member it is of
  std::string rows;         ///< what the rows are: "Category", "Month"
  std::string currency;     ///< that of all amounts; blank where each row has its own
  bool withShares = false;  ///< per cent of `whole`
  double whole = 0;
};

/// Prints the rows with counts, amounts, shares and bars, and their total; dimmed is what goes under its key.
void printBreakdown(Session& session, const TransReportSummary& list, const BreakdownHeading& heading);

/// Leaves the first `limit` rows and makes all others one, called "others"; 0 leaves all.
void joinOthers(const Session& session, TransReportSummary& list, std::int64_t limit);

/// One dim line with what a report of the period has and the rows have not, if there is such.
void printGap(Session& session, const BreakdownGap& gap, const std::string& unfiled,
              const std::string& currency);

}  // namespace moniva
