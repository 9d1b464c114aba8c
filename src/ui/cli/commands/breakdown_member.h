#pragma once

#include "calendar/parse_date.h"
#include "reports/breakdown_gap.h"
#include "reports/period_walk.h"
#include "ui/cli/session.h"

/// The breakdowns of one kind or another as one: their rows, and one member of them.
namespace moniva {

/// What a breakdown was asked for.
struct BreakdownAsked {
  MonivaAccount of;
  BreakdownBy by = BreakdownBy::category;
  int type = 12;
  ParsedPeriod period{};
  bool pending = false;
};

// Each ends the command when the store cannot be read.

/// A row for each member.
TransReportSummary breakdownOf(const BreakdownAsked& asked);
/// What records have of the row's member.
std::string memberKey(const TransReportSummary& row);
/// The member of that name: a row of the breakdown by its title or key, else what is in use. Ends the command
/// for none, with the nearest there is.
TransReportSummary memberNamed(Session& session, const BreakdownAsked& asked, const TransReportSummary& list,
                               const std::string& name);
/// The member's periods; where it is an account and none is named, those of all together.
TransReportSummary periodsOfMember(const BreakdownAsked& asked, const TransReportSummary& member,
                                   PeriodUnit unit, bool includeEmpty);
/// The `eid`s of its records, the latest first.
std::vector<std::string> recordsOfMember(const BreakdownAsked& asked, const TransReportSummary& member);

}  // namespace moniva
