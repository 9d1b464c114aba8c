#pragma once

#include <string>

#include "model/moniva_account.h"
#include "ui/cli/command_line.h"

namespace moniva {

/// Nothing typed about when periods begin.
inline constexpr PeriodStarts kNoStarts{0, 0, 0};

/// The options --week-starts, --month-starts and --year-starts; what is typed goes to `starts`, which has to
/// outlive the command.
void addPeriodOptions(CLI::App& command, PeriodStarts& starts);
/// Writes what was typed of them into the row; ends the command when the store refuses it.
void writeStarts(MonivaAccount& row, const PeriodStarts& starts);

/// "day 25", or "day 25 before" for that day of the month before; the same of the month of a year.
std::string monthBeginsText(const Session& session, const MonivaAccount& row);
std::string yearBeginsText(const Session& session, const MonivaAccount& row);

/// The present week, month and year of a book or account as texts, and when they begin.
struct PresentPeriods {
  PresentPeriods(const Session& session, const MonivaAccount& row);

  std::string week;
  std::string month;
  std::string year;
  std::string firstWeekday;  ///< "Monday"
};

}  // namespace moniva
