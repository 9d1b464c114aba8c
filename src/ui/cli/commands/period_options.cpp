#include "ui/cli/commands/period_options.h"

#include <charconv>

#include "calendar/date_texts.h"
#include "ui/cli/command_error.h"

namespace moniva {
namespace {

/// A check that a value is a whole number from 1 to `last`, or from -1 to -`last`; it passes on what it read,
/// since the parser would take a leading zero for an octal number.
CLI::Validator beginning(int last, const std::string& refusal) {
  return CLI::Validator(
      [last, refusal](std::string& text) {
        int number = 0;
        const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
        const bool isWhole = error == std::errc() && end == text.data() + text.size();
        if (!isWhole || number == 0 || std::abs(number) > last) return refusal;
        text = std::to_string(number);
        return std::string();
      },
      "");
}

}  // namespace

void addPeriodOptions(CLI::App& command, PeriodStarts& starts) {
  command
      .add_option("--week-starts", starts.weekStartsOn,
                  "Weekday a week begins on: 1 Sunday, 2 Monday, ... 7 Saturday")
      ->type_name("WEEKDAY")
      ->check(CLI::Range(1, 7));
  command
      .add_option("--month-starts", starts.monthStartsOn,
                  "Day a month begins on; a negative one is that day of the month before")
      ->type_name("DAY")
      ->transform(beginning(31, toTranslate("a month begins on day 1 to 31, or -1 to -31")));
  command
      .add_option("--year-starts", starts.yearStartsOn,
                  "Month a year begins in; a negative one is that month of the year before")
      ->type_name("MONTH")
      ->transform(beginning(12, toTranslate("a year begins in month 1 to 12, or -1 to -12")));
}

void writeStarts(MonivaAccount& row, const PeriodStarts& starts) {
  if (starts.weekStartsOn != 0) done(row.updateWeekStartsOn(starts.weekStartsOn));
  if (starts.monthStartsOn != 0) done(row.updateMonthStartsOn(starts.monthStartsOn));
  if (starts.yearStartsOn != 0) done(row.updateYearStartsOn(starts.yearStartsOn));
}

std::string monthBeginsText(const Session& session, const MonivaAccount& row) {
  return row.monthStartsOn > 0 ? session.text("day {}", row.monthStartsOn)
                               : session.text("day {} before", -row.monthStartsOn);
}

std::string yearBeginsText(const Session& session, const MonivaAccount& row) {
  return row.yearStartsOn > 0 ? session.text("month {}", row.yearStartsOn)
                              : session.text("month {} before", -row.yearStartsOn);
}

PresentPeriods::PresentPeriods(const Session& session, const MonivaAccount& row) {
  const auto& calendar = session.calendar();
  const BookPeriods periods(calendar, row.periodStarts(), session.now());
  // Weeks are counted back in fixed seconds: from noon, a change of the clock leaves them on their day.
  const Date noon = calendar.dateBegin(session.now()).plusSeconds(12 * 3600);
  week = periods.getWeekPeriodShort(noon);
  month = periods.getMonthPeriodMiddle();
  year = periods.getYearPeriodMiddle();
  firstWeekday = stringOfWeekdayName(calendar, periods.firstDateOfWeek(noon));
}

}  // namespace moniva
