#include "reports/period_comparison.h"

#include <algorithm>

namespace moniva {
namespace {

/// First and last day, as day numbers.
struct Days {
  std::int64_t first;
  std::int64_t last;
};

/// The whole period of the unit that holds the day.
Days periodHolding(const Calendar& calendar, const BookPeriods& book, PeriodUnit unit, std::int64_t day) {
  const Date begin = calendar.beginOfDay(day);
  switch (unit) {
    case PeriodUnit::year:
      return {calendar.dayNumber(book.firstDateOfYear(begin)),
              calendar.dayNumber(book.lastDateOfYear(begin))};
    case PeriodUnit::month:
      return {calendar.dayNumber(book.firstDateOfMonth(begin)),
              calendar.dayNumber(book.lastDateOfMonth(begin))};
    case PeriodUnit::week: {
      // Weeks are counted in fixed seconds: from noon, a change of the clock leaves them on their day.
      const auto first = calendar.dayNumber(book.firstDateOfWeek(begin.plusSeconds(12 * 3600)));
      return {first, first + 6};
    }
    case PeriodUnit::day:
      break;
  }
  return {day, day};
}

}  // namespace

PeriodWalk::Period periodComparedWith(const Calendar& calendar, const BookPeriods& book, PeriodUnit unit,
                                      const PeriodWalk::Period& period, ComparedWith with) {
  const Days shown{calendar.dayNumber(period.begin), calendar.dayNumber(period.end)};
  const Days whole = periodHolding(calendar, book, unit, shown.first);
  const auto yearBefore = [&](std::int64_t day) { return calendar.days().plusYears(day, -1); };
  constexpr std::int64_t kYearOfWeeks = 364;
  std::int64_t inOther = whole.first - 1;
  if (with == ComparedWith::year) {
    if (unit == PeriodUnit::week) inOther = whole.first - kYearOfWeeks;
    if (unit == PeriodUnit::day) inOther = yearBefore(whole.first);
    // From its middle, however its beginning drifts.
    if (unit == PeriodUnit::month) inOther = yearBefore((whole.first + whole.last) / 2);
  }
  const Days other = periodHolding(calendar, book, unit, inOther);
  const auto alike = [&](std::int64_t day) { return std::min(other.first + day - whole.first, other.last); };
  return {calendar.beginOfDay(alike(shown.first)),
          calendar.beginOfDay(shown.last == whole.last ? other.last : alike(shown.last))};
}

}  // namespace moniva
