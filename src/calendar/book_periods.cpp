#include "calendar/book_periods.h"

#include <algorithm>
#include <cstdlib>

namespace moniva {
namespace {

// Settings outside their range still count on into other months, but a damaged store must not make the search
// for a period walk over millions of them.
constexpr int kFurthestStart = 10'000;
constexpr int kFurthestYear = 1'000'000;

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

BookPeriods::Span BookPeriods::monthHolding(std::int64_t day) const {
  const DaySystem& days = calendar_->days();
  if (starts_.monthStartsOn == 1) return {days.firstOfMonth(day), days.lastOfMonth(day)};

  DaySystem::Parts start = days.parts(day);
  if (starts_.monthStartsOn < 0) --start.month;
  start.day = std::abs(starts_.monthStartsOn);
  Span span = monthFrom(days.day(start));
  while (day < span.first) span = monthFrom(days.plusMonths(span.first, -1));
  while (day > span.last) span = monthFrom(days.plusMonths(span.first, 1));
  return span;
}

BookPeriods::Span BookPeriods::yearHolding(std::int64_t day) const {
  const DaySystem& days = calendar_->days();
  DaySystem::Parts start = days.parts(day);
  start.month = std::abs(starts_.yearStartsOn);
  if (starts_.monthStartsOn < 0) --start.month;
  if (start.month == 0) start.month = 12;
  if (start.month < 0) start.month = 12 - starts_.yearStartsOn;
  start.day = std::abs(starts_.monthStartsOn);

  Span span = yearFrom(days.day(start));
  while (day < span.first) span = yearFrom(days.plusYears(span.first, -1));
  while (day > span.last) span = yearFrom(days.plusYears(span.first, 1));
  return span;
}

BookPeriods::Span BookPeriods::monthCalled(int year, int month) const {
  year = std::clamp(year, -kFurthestYear, kFurthestYear);
  month = std::clamp(month, -kFurthestStart, kFurthestStart);
  DaySystem::Parts start{DaySystem::kAnyEra, year, month, std::abs(starts_.monthStartsOn)};
  if (starts_.monthStartsOn < 0 && --start.month == 0) {
    start.month = 12;
    --start.year;
  }
  return monthFrom(calendar_->days().day(start));
}

BookPeriods::Span BookPeriods::yearCalled(int year) const {
  year = std::clamp(year, -kFurthestYear, kFurthestYear);
  DaySystem::Parts start{DaySystem::kAnyEra, year, starts_.yearStartsOn, std::abs(starts_.monthStartsOn)};
  if (starts_.yearStartsOn < 0) {
    start.month = -starts_.yearStartsOn;
    --start.year;
  }
  if (starts_.monthStartsOn < 0) --start.month;
  if (start.month == 0) {
    start.month = 12;
    --start.year;
  }
  return yearFrom(calendar_->days().day(start));
}

BookPeriods::Label BookPeriods::monthLabel(std::int64_t day) const {
  const DaySystem::Parts at = calendar_->days().parts(day);
  const Span span = monthCalled(at.year, at.month);
  if (day < span.first) return at.month == 1 ? Label{at.year - 1, 12} : Label{at.year, at.month - 1};
  if (day > span.last) return at.month >= 12 ? Label{at.year + 1, 1} : Label{at.year, at.month + 1};
  return {at.year, at.month};
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
  return begin(yearCalled(year));
}
Date BookPeriods::lastDateOfFiscalYear(int year) const {
  return lastDay(yearCalled(year));
}
Date BookPeriods::firstDateOfFiscalYear(int year, int month) const {
  return begin(monthCalled(year, month));
}
Date BookPeriods::firstDateOfCalendarYear(int year, int month) const {
  return calendar_->dateWithYear(year, month, 1);
}

int BookPeriods::getFiscalYear(std::optional<Date> date) const {
  const std::int64_t day = dayOf(date);
  int year = calendar_->days().parts(day).year;
  // One step is enough but for a year that begins in the December before the January before. A day that
  // drift has left between two years is the earlier one's, so the walk never turns.
  if (day < yearCalled(year).first) {
    while (year > -kFurthestYear && day < yearCalled(year).first) --year;
  } else {
    while (year < kFurthestYear && day > yearCalled(year).last) ++year;
  }
  return year;
}

int BookPeriods::getFiscalMonth(std::optional<Date> date) const {
  return monthLabel(dayOf(date)).month;
}
int BookPeriods::getYearForFiscalMonth(std::optional<Date> date) const {
  return monthLabel(dayOf(date)).year;
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

Date BookPeriods::dueDate(std::optional<Date> date) const {
  constexpr int kDaysToPay = 20;
  return calendar_->dateWithDay(lastDateOfMonth(date), kDaysToPay);
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
  const Span span = monthCalled(year, month);
  return joined(DateForm::mediumDay, begin(span), lastDay(span));
}

}  // namespace moniva
