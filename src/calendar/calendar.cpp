#include "calendar/calendar.h"

#include "calendar/locale_name.h"

namespace moniva {

Result<std::shared_ptr<const Calendar>> Calendar::make(std::string zone, std::string locale) {
  auto known = Zone::make(zone);
  if (!known) return tl::make_unexpected(known.error());
  auto name = localeName(locale);
  if (!name) return tl::make_unexpected(name.error());
  auto days = DaySystem::make(*name);
  if (!days) return tl::make_unexpected(days.error());

  std::unique_ptr<const DaySystem> gregorian;
  if (!(*days)->isGregorian()) {
    auto made = DaySystem::make("en_US@calendar=gregorian");
    if (!made) return tl::make_unexpected(made.error());
    gregorian = std::move(*made);
  }
  return std::shared_ptr<const Calendar>(
      new Calendar(std::move(*known), std::move(*name), std::move(*days), std::move(gregorian)));
}

Date Calendar::dateWithDay(Date date, int count) const {
  const Taken from = taken(date);
  return onDay(from, from.day + count);
}

Date Calendar::dateWithMonth(Date date, int count) const {
  const Taken from = taken(date);
  return onDay(from, days().plusMonths(from.day, count));
}

Date Calendar::dateWithYear(Date date, int count) const {
  const Taken from = taken(date);
  return onDay(from, days().plusYears(from.day, count));
}

Date Calendar::getPreviouslyMonthBeginDay(Date date) const {
  const Date back = dateWithMonth(date, -1);
  return day(back) == day(date) ? getNextDay(back) : back;
}

Date Calendar::firstDayOfMonth(Date date) const {
  const Taken from = taken(date);
  return onDay(from, days().firstOfMonth(from.day));
}

Date Calendar::lastDayOfMonth(Date date) const {
  const Taken from = taken(date);
  return onDay(from, days().lastOfMonth(from.day));
}

int Calendar::numberOfDaysInMonth(Date date) const {
  return days().parts(days().lastOfMonth(dayNumber(date))).day;
}

bool Calendar::isLastDayOfMonth(Date date) const {
  const std::int64_t today = dayNumber(date);
  return days().lastOfMonth(today) == today;
}

int Calendar::weekday(Date date) const {
  constexpr int kThursday = 4;  // 1970-01-01, counting from Sunday = 0
  return static_cast<int>(floorRemainder(dayNumber(date) + kThursday, 7)) + 1;
}

bool Calendar::isSameYear(Date a, Date b) const {
  const DaySystem::Parts left = days().parts(dayNumber(a));
  const DaySystem::Parts right = days().parts(dayNumber(b));
  return left.era == right.era && left.year == right.year;
}

std::strong_ordering Calendar::compareMonthToDate(Date a, Date b) const {
  return days().firstOfMonth(dayNumber(a)) <=> days().firstOfMonth(dayNumber(b));
}

Date Calendar::dateWithYear(int year, int month, int day) const {
  return beginOfDay(days().day({DaySystem::kAnyEra, year, month, day}));
}

Date Calendar::firstDayOfCurrentMonth(Date now) const {
  return beginOfDay(days().firstOfMonth(dayNumber(now)));
}

Date Calendar::firstDayOfPreviousMonth(Date now) const {
  return beginOfDay(days().firstOfMonth(days().firstOfMonth(dayNumber(now)) - 1));
}

Date Calendar::firstDayOfNextMonth(Date now) const {
  return beginOfDay(days().lastOfMonth(dayNumber(now)) + 1);
}

Date Calendar::firstDayOfQuarterFromDate(Date date) const {
  return beginOfDay(days().firstOfQuarter(dayNumber(date)));
}

Date Calendar::firstDayOfPreviousQuarter(Date now) const {
  return beginOfDay(days().firstOfQuarter(days().firstOfQuarter(dayNumber(now)) - 1));
}

Date Calendar::firstDayOfNextQuarter(Date now) const {
  return beginOfDay(days().plusMonths(days().firstOfQuarter(dayNumber(now)), 3));
}

Date Calendar::firstDayOfCurrentYear(Date now) const {
  return beginOfDay(days().firstOfYear(dayNumber(now)));
}

Date Calendar::firstDayOfPreviousYear(Date now) const {
  return beginOfDay(days().firstOfYear(days().firstOfYear(dayNumber(now)) - 1));
}

Date Calendar::firstDayOfNextYear(Date now) const {
  return beginOfDay(days().plusYears(days().firstOfYear(dayNumber(now)), 1));
}

}  // namespace moniva
