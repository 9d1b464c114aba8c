#pragma once

#include <optional>
#include <string>
#include <vector>

#include "reports/period_comparison.h"
#include "reports/transaction_report.h"
#include "ui/cli/commands/report_commands.h"

namespace moniva {

/// The category typed, whichever it is of: first one of what is asked for ("income", "expense" or "all"),
/// else one of the other. Ends the command for none.
MVCategory reportCategory(Session& session, const std::string& name, const std::string& type);

/// Where the figures of a report come from: a whole book or account, a category, a vendor or what was in
/// foreign money, by the options. Interrupted while it makes a list, it makes a partial one.
class ReportSource {
 public:
  /// Ends the command for options that mean nothing, and for names that are none.
  ReportSource(Session& session, const MonivaAccount& of, const ReportOptions& options);

  TransReportSummary list(PeriodUnit unit, const ParsedPeriod& period, bool withEmpty);
  TransReportSummary day(Date date);
  /// What each period of a list is compared with, in the same order.
  std::vector<TransReportSummary> comparedWith(PeriodUnit unit, const TransReportSummary& list,
                                               ComparedWith with);
  /// It counts a vendor or foreign money alone.
  bool isOfMember() const { return vendor_ || !currency_.empty(); }

 private:
  TransReportSummary listOfMember(PeriodUnit unit, const PeriodWalk::Period& period, bool withEmpty,
                                  const std::atomic<bool>* stop);

  Session& session_;
  MonivaAccount of_;
  TransactionReport report_;
  std::optional<Vendor> vendor_;
  std::string currency_;
};

}  // namespace moniva
