#include "calendar/book_periods.h"

#include <algorithm>
#include <cstdlib>

namespace moniva {
namespace {

// Settings outside their range still count on into other months and years, but a damaged store must not make
// the search for a period a long walk: none is further off than 400 months.
constexpr int kFurthestStart = 400;
constexpr int kFurthestWalk = kFurthestStart / 12 + 2;
// Labels come from people and go further.
constexpr int kFurthestYear = 1'000'000;
constexpr int kFurthestMonth = 10'000;

PeriodStarts bounded(PeriodStarts starts) {
  starts.weekStartsOn = static_cast<int>(floorRemainder(std::int64_t{starts.weekStartsOn} - 1, 7)) + 1;
  starts.monthStartsOn = std::clamp(starts.monthStartsOn, -kFurthestStart, kFurthestStart);
  starts.yearStartsOn = std::clamp(starts.yearStartsOn, -kFurthestStart, kFurthestStart);
  return starts;
}

}  // namespace

BookPeriods::BookPeriods(const Calendar& calendar, PeriodStarts starts, Date now)
    : calendar_(&calendar), starts_(bounded(starts)), now_(now) {}

std::int64_t BookPeriods::dayOf(std::optional<Date> date) const {
  return calendar_->dayNumber(date.value_or(now_));
}

Date BookPeriods::lastDay(const Span& span) const {
  const Date date = calendar_->beginOfDay(span.last);
  // A last day that the zone skipped begins on the day after it, which is the next period's.
  return calendar_->dayNumber(date) > span.last ? calendar_->beginOfDay(span.last - 1) : date;
}

BookPeriods::Span BookPeriods::monthFrom(std::int64_t first) const {
  const DaySystem& days = calendar_->days();
  const std::int64_t next = days.plusMonths(first, 1);
  // After a clamp to a shorter month the last day stays the clamped one.
  const bool clamped = days.parts(next).day != days.parts(first).day;
  return {first, clamped ? next : next - 1};
}

BookPeriods::Span BookPeriods::yearFrom(std::int64_t first) const {
  return {first, calendar_->days().plusYears(first, 1) - 1};
}

BookPeriods::Span BookPeriods::monthAfter(std::int64_t day) const {
  const DaySystem& days = calendar_->days();
  std::int64_t first = days.firstOfMonth(day);
  if (starts_.monthStartsOn < 0) first = days.firstOfMonth(first - 1);
  return monthFrom(first + std::abs(starts_.monthStartsOn) - 1);
}

BookPeriods::Span BookPeriods::yearAfter(std::int64_t day) const {
  const DaySystem& days = calendar_->days();
  // Month 0 is the last one of the year before, however many months the calendar has.
  DaySystem::Parts start = days.parts(starts_.yearStartsOn < 0 ? days.firstOfYear(day) - 1 : day);
  start.month = std::abs(starts_.yearStartsOn) - (starts_.monthStartsOn < 0 ? 1 : 0);
  start.day = std::abs(starts_.monthStartsOn);
  return yearFrom(days.day(start));
}

BookPeriods::Span BookPeriods::monthHolding(std::int64_t day) const {
  const DaySystem& days = calendar_->days();
  if (starts_.monthStartsOn == 1) return {days.firstOfMonth(day), days.lastOfMonth(day)};

  Span span = monthAfter(day);
  while (day < span.first) span = monthFrom(days.plusMonths(span.first, -1));
  while (day > span.last) span = monthFrom(days.plusMonths(span.first, 1));
  return span;
}

BookPeriods::Span BookPeriods::yearHolding(std::int64_t day) const {
  const DaySystem& days = calendar_->days();
  if (isPlain()) return yearFrom(days.firstOfYear(day));

  DaySystem::Parts start = days.parts(day);
  start.month = std::abs(starts_.yearStartsOn) - (starts_.monthStartsOn < 0 ? 1 : 0);
  // The calendar's last month: the 12th, or the 13th of the Hebrew and the Ethiopic.
  if (start.month <= 0) start.month = days.parts(days.firstOfYear(day) - 1).month;
  start.day = std::abs(starts_.monthStartsOn);

  Span span = yearFrom(days.day(start));
  while (day < span.first) span = yearFrom(days.plusYears(span.first, -1));
  while (day > span.last) span = yearFrom(days.plusYears(span.first, 1));
  return span;
}

std::int64_t BookPeriods::dayCalled(int year, int month) const {
  const DaySystem& days = calendar_->days();
  return days.day({days.parts(dayOf({})).era, std::clamp(year, -kFurthestYear, kFurthestYear),
                   std::clamp(month, -kFurthestMonth, kFurthestMonth), 1});
}

std::int64_t BookPeriods::namesakeOfMonth(std::int64_t day) const {
  if (starts_.monthStartsOn == 1) return day;
  const Span span = monthAfter(day);
  const DaySystem& days = calendar_->days();
  if (day < span.first) return days.firstOfMonth(day) - 1;
  return day > span.last ? days.lastOfMonth(day) + 1 : day;
}

std::int64_t BookPeriods::namesakeOfYear(std::int64_t day) const {
  if (isPlain()) return day;
  const DaySystem& days = calendar_->days();
  // One step is enough but for a year that begins in the December before the January before. A day that
  // drift has left between two years is the earlier one's, so the walk never turns.
  std::int64_t name = day;
  const bool isEarlier = day < yearAfter(name).first;
  for (int steps = 0; steps < kFurthestWalk; ++steps) {
    const Span span = yearAfter(name);
    if (isEarlier ? day >= span.first : day <= span.last) break;
    name = isEarlier ? days.firstOfYear(name) - 1 : days.plusYears(days.firstOfYear(name), 1);
  }
  return name;
}

Date BookPeriods::firstDateOfWeek(std::optional<Date> date) const {
  const Date at = date.value_or(now_);
  const auto daysIn = floorRemainder(calendar_->weekday(at) - starts_.weekStartsOn, 7);
  return at.plusSeconds(-static_cast<double>(daysIn * kSecondsPerDay));
}

Date BookPeriods::lastDateOfWeek(std::optional<Date> date) const {
  return calendar_->getPreviouslyDay(calendar_->getNextWeekDay(firstDateOfWeek(date)));
}

Date BookPeriods::firstDateOfMonth(std::optional<Date> date) const {
  return begin(monthHolding(dayOf(date)));
}
Date BookPeriods::lastDateOfMonth(std::optional<Date> date) const {
  return lastDay(monthHolding(dayOf(date)));
}
Date BookPeriods::firstDateOfYear(std::optional<Date> date) const {
  return begin(yearHolding(dayOf(date)));
}
Date BookPeriods::lastDateOfYear(std::optional<Date> date) const {
  return lastDay(yearHolding(dayOf(date)));
}

Date BookPeriods::firstDateOfFiscalYear(int year) const {
  return begin(yearAfter(dayCalled(year, 1)));
}
Date BookPeriods::lastDateOfFiscalYear(int year) const {
  return lastDay(yearAfter(dayCalled(year, 1)));
}
Date BookPeriods::firstDateOfFiscalYear(int year, int month) const {
  return begin(monthAfter(dayCalled(year, month)));
}
Date BookPeriods::firstDateOfCalendarYear(int year, int month) const {
  return calendar_->beginOfDay(dayCalled(year, month));
}

int BookPeriods::getFiscalYear(std::optional<Date> date) const {
  return calendar_->days().parts(namesakeOfYear(dayOf(date))).year;
}
int BookPeriods::getFiscalMonth(std::optional<Date> date) const {
  return calendar_->days().parts(namesakeOfMonth(dayOf(date))).month;
}
int BookPeriods::getYearForFiscalMonth(std::optional<Date> date) const {
  return calendar_->days().parts(namesakeOfMonth(dayOf(date))).year;
}
Date BookPeriods::namesakeOfMonth(Date date) const {
  return calendar_->beginOfDay(namesakeOfMonth(dayOf(date)));
}

bool BookPeriods::isCurrentYear(std::optional<Date> date) const {
  const Span current = yearHolding(dayOf({}));
  const std::int64_t day = dayOf(date);
  return current.first <= day && day <= current.last;
}

bool BookPeriods::isCurrentMonth(std::optional<Date> date) const {
  const Span current = monthHolding(dayOf({}));
  const std::int64_t day = dayOf(date);
  return current.first <= day && day <= current.last;
}

Date BookPeriods::dueDateAfter(Date closingDate) const {
  constexpr int kDaysToPay = 20;
  if (starts_.dueDay > 0) {
    const DaySystem& days = calendar_->days();
    const std::int64_t closing = calendar_->dayNumber(closingDate);
    const auto inMonthOf = [&](std::int64_t day) {
      return std::min(days.firstOfMonth(day) + starts_.dueDay - 1, days.lastOfMonth(day));
    };
    std::int64_t due = inMonthOf(closing);
    if (due <= closing) due = inMonthOf(days.lastOfMonth(closing) + 1);
    return calendar_->beginOfDay(due);
  }
  return calendar_->dateWithDay(closingDate, kDaysToPay);
}

std::string BookPeriods::joined(DateForm form, Date first, Date last) const {
  return calendar_->formats().write(form, first) + " -- " + calendar_->formats().write(form, last);
}

std::string BookPeriods::getWeekPeriodShort(std::optional<Date> date) const {
  return joined(DateForm::monthAndDay, firstDateOfWeek(date), lastDateOfWeek(date));
}

std::string BookPeriods::getMonthPeriodShort(std::optional<Date> date) const {
  return joined(DateForm::monthAndDay, firstDateOfMonth(date), lastDateOfMonth(date));
}

std::string BookPeriods::getMonthPeriodMiddle(std::optional<Date> date) const {
  return joined(DateForm::shortDay, firstDateOfMonth(date), lastDateOfMonth(date));
}

std::string BookPeriods::getYearPeriodMiddle(std::optional<Date> date) const {
  return joined(DateForm::shortDay, firstDateOfYear(date), lastDateOfYear(date));
}

std::string BookPeriods::getFisalYearPeriodMiddle(int year) const {
  return joined(DateForm::mediumDay, firstDateOfFiscalYear(year), lastDateOfFiscalYear(year));
}

std::string BookPeriods::getFisalMonthPeriodMiddle(int year, int month) const {
  const Span span = monthAfter(dayCalled(year, month));
  return joined(DateForm::mediumDay, begin(span), lastDay(span));
}

}  // namespace moniva
