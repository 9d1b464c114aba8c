#pragma once

#include <memory>
#include <string>

#include "base/result.h"
#include "calendar/zoned_calendar.h"

namespace moniva {

/// The vocabulary of days, months and years in the user's zone and calendar.
///
/// Unchanging once made, so threads may share it. No operation fails: numbers out of range count on into the
/// neighbouring months and years. "Today" is never looked up; operations that need it take it as `now`.
/// Months count from 1, weekdays from Sunday = 1.
class Calendar final : public ZonedCalendar {
 public:
  /// `zone` is an IANA id ("Europe/Berlin"), `locale` a BCP 47, POSIX or ICU name ("de-DE", "en_US.UTF-8",
  /// "fa_IR@calendar=persian"); unknown ones are refused.
  static Result<std::shared_ptr<const Calendar>> make(std::string zone, std::string locale);

  // The same day at 00:00:00, at 23:59:59, and at another date's time of day.
  [[nodiscard]] Date dateBegin(Date date) const { return beginOfDay(dayNumber(date)); }
  [[nodiscard]] Date dateWithoutTime(Date date) const { return dateBegin(date); }
  [[nodiscard]] Date dateEnd(Date date) const { return endOfDay(dayNumber(date)); }
  [[nodiscard]] Date dateWithTime(Date date, Date timeOf) const { return withTimeOf(date, timeOf); }

  // The same time of day `count` days, months or years later. A day the month lacks becomes its last.
  [[nodiscard]] Date dateWithDay(Date date, int count) const;
  [[nodiscard]] Date dateWithMonth(Date date, int count) const;
  [[nodiscard]] Date dateWithYear(Date date, int count) const;

  [[nodiscard]] Date getPreviouslyDay(Date date) const { return dateWithDay(date, -1); }
  [[nodiscard]] Date getNextDay(Date date) const { return dateWithDay(date, 1); }
  [[nodiscard]] Date getPreviouslyWeekDay(Date date) const { return dateWithDay(date, -7); }
  [[nodiscard]] Date getNextWeekDay(Date date) const { return dateWithDay(date, 7); }
  [[nodiscard]] Date getPreviouslyMonthDay(Date date) const { return dateWithMonth(date, -1); }
  [[nodiscard]] Date getNextMonthDay(Date date) const { return dateWithMonth(date, 1); }
  [[nodiscard]] Date getNextBimonthDay(Date date) const { return dateWithMonth(date, 2); }
  [[nodiscard]] Date getNextQuarterDay(Date date) const { return dateWithMonth(date, 3); }
  [[nodiscard]] Date getNextHalfyearDay(Date date) const { return dateWithMonth(date, 6); }
  [[nodiscard]] Date getPreviouslyYearDay(Date date) const { return dateWithYear(date, -1); }
  [[nodiscard]] Date getNextYearDay(Date date) const { return dateWithYear(date, 1); }
  /// The last day of the next month.
  [[nodiscard]] Date getNextMonthEndDay(Date date) const { return lastDayOfMonth(dateWithMonth(date, 1)); }
  /// A month back and a day on, so that the days up to this one make a month; after a clamp, no day on.
  [[nodiscard]] Date getPreviouslyMonthBeginDay(Date date) const;

  // The first and last day of the month, at the same time of day.
  [[nodiscard]] Date firstDayOfMonth(Date date) const;
  [[nodiscard]] Date lastDayOfMonth(Date date) const;
  [[nodiscard]] int numberOfDaysInMonth(Date date) const;
  [[nodiscard]] bool isLastDayOfMonth(Date date) const;

  [[nodiscard]] int day(Date date) const { return days().parts(dayNumber(date)).day; }
  [[nodiscard]] int month(Date date) const { return days().parts(dayNumber(date)).month; }
  [[nodiscard]] int year(Date date) const { return days().parts(dayNumber(date)).year; }
  [[nodiscard]] int weekday(Date date) const;
  /// The weekday a week begins on in the user's locale: 1 Sunday ... 7 Saturday.
  [[nodiscard]] int firstWeekday() const { return days().firstWeekday(); }
  /// By the locale's first weekday and shortest first week.
  [[nodiscard]] int weekOfYear(Date date) const { return days().weekOfYear(dayNumber(date)); }
  [[nodiscard]] int dayOfYear(Date date) const { return days().dayOfYear(dayNumber(date)); }

  // By calendar day, month or year; the time of day plays no part.
  [[nodiscard]] bool isSameDay(Date a, Date b) const { return dayNumber(a) == dayNumber(b); }
  [[nodiscard]] bool isSameMonth(Date a, Date b) const { return compareMonthToDate(a, b) == 0; }
  [[nodiscard]] bool isSameYear(Date a, Date b) const;
  [[nodiscard]] bool isBeforeDay(Date a, Date b) const { return dayNumber(a) < dayNumber(b); }
  [[nodiscard]] bool isAfterDay(Date a, Date b) const { return dayNumber(a) > dayNumber(b); }
  [[nodiscard]] std::strong_ordering compareMonthToDate(Date a, Date b) const;
  // By instant.
  [[nodiscard]] static bool isBefore(Date a, Date b) { return a < b; }
  [[nodiscard]] static bool isAfter(Date a, Date b) { return a > b; }
  [[nodiscard]] static std::partial_ordering compareToDate(Date a, Date b) { return a <=> b; }

  [[nodiscard]] bool isToday(Date date, Date now) const { return isSameDay(date, now); }
  [[nodiscard]] bool isNotToday(Date date, Date now) const { return !isSameDay(date, now); }
  [[nodiscard]] bool isHistory(Date date, Date now) const { return isBeforeDay(date, now); }
  [[nodiscard]] bool isAfterToday(Date date, Date now) const { return isAfterDay(date, now); }
  [[nodiscard]] bool isCurrentMonth(Date date, Date now) const { return isSameMonth(date, now); }
  [[nodiscard]] bool isCurrentYear(Date date, Date now) const { return isSameYear(date, now); }

  // The beginning of a day named by its parts in the user's calendar.
  [[nodiscard]] Date dateWithYear(int year, int month, int day) const;
  [[nodiscard]] Date dateFromDay(int day, int month, int year) const {
    return dateWithYear(year, month, day);
  }

  // Beginnings of days.
  [[nodiscard]] Date midnightOfDate(Date date) const { return dateBegin(date); }
  [[nodiscard]] Date zeroOutTimeComponents(Date date) const { return dateBegin(date); }
  [[nodiscard]] Date midnightToday(Date now) const { return dateBegin(now); }
  [[nodiscard]] Date midnightTomorrow(Date now) const { return oneDayAfter(now); }
  [[nodiscard]] Date oneDayAfter(Date date) const { return beginOfDay(dayNumber(getNextDay(date))); }

  // Beginnings of the first days of plain months, quarters (from January, April, July, October) and years.
  [[nodiscard]] Date firstDayOfCurrentMonth(Date now) const;
  [[nodiscard]] Date firstDayOfPreviousMonth(Date now) const;
  [[nodiscard]] Date firstDayOfNextMonth(Date now) const;
  [[nodiscard]] Date firstDayOfQuarterFromDate(Date date) const;
  [[nodiscard]] Date firstDayOfCurrentQuarter(Date now) const { return firstDayOfQuarterFromDate(now); }
  [[nodiscard]] Date firstDayOfPreviousQuarter(Date now) const;
  [[nodiscard]] Date firstDayOfNextQuarter(Date now) const;
  [[nodiscard]] Date firstDayOfCurrentYear(Date now) const;
  [[nodiscard]] Date firstDayOfPreviousYear(Date now) const;
  [[nodiscard]] Date firstDayOfNextYear(Date now) const;

 private:
  using ZonedCalendar::ZonedCalendar;
};

}  // namespace moniva
