#pragma once

#include <string>

#include "calendar/book_periods.h"
#include "calendar/parse_date.h"
#include "model/moniva_account.h"
#include "reports/period_walk.h"
#include "ui/cli/command_line.h"

/// What reports, breakdowns and explanations have in common on the command line: of what they are, and over
/// which days.
namespace moniva {

/// The options --book and --account.
struct HolderOptions {
  std::string book;
  std::string account;

  /// Adds both; the object has to outlive the command.
  void addTo(CLI::App& command);
  /// The book or account chosen, or a group of either; the current book when none was. Ends the command where
  /// both were typed or the name means nothing.
  MonivaAccount chosen(Session& session) const;
};

/// A period as the book or account counts: the label of a year "2024" or a month "2024-03" in the user's
/// calendar, Gregorian days, or two of these joined by "..". Ends the command for what is none.
ParsedPeriod periodTyped(Session& session, const MonivaAccount& of, const std::string& text);
/// What is meant where no period is typed: all there is for years, the present year for months and weeks, the
/// present month for days.
ParsedPeriod usualPeriod(Session& session, const MonivaAccount& of, PeriodUnit unit);
/// "Jan 1, 2024 to Dec 31, 2024".
std::string periodText(Session& session, const ParsedPeriod& period);

/// What a whole report of the row counts: what it tracks.
int wholeReportType(const MonivaAccount& of);

// The stored colours of income and of expense.
Ink incomeInk(Session& session);
Ink expenseInk(Session& session);

}  // namespace moniva
