#pragma once

#include <optional>
#include <string>

#include "calendar/calendar.h"

namespace moniva {

/// Where a book's week, month and year begin.
struct PeriodStarts {
  /// The weekday, from Sunday = 1 to Saturday = 7; other numbers are taken modulo 7.
  int weekStartsOn = 1;
  /// The day of the month. -D is day D of the month before the one the period is called after.
  int monthStartsOn = 1;
  /// The month of the year. -M is month M of the year before the one the period is called after.
  int yearStartsOn = 1;
  /// The day of the month on which bills are to be paid, 1 to 31; 0 where none is set.
  int dueDay = 0;
};

/// The weeks, months and years of one book.
///
/// A period is given by its first and last day. Months and years begin at the first instant of those days;
/// callers that want the whole last day take its `dateEnd`. Where no date is given, `now` is meant. Nothing
/// fails: numbers out of range count on into the neighbouring months and years.
///
/// A period is called after a year and a month of the user's calendar, by their numbers there. A number that
/// is given is meant in the era of `now`; one that is answered is of the era of the date.
///
/// A month that begins on the 29th to 31st is counted on from its neighbours and not anchored anew, so that
/// after a short month it begins on an earlier day: 31 January, 28 February, 28 March.
class BookPeriods {
 public:
  /// `calendar` must outlive this object.
  BookPeriods(const Calendar& calendar, PeriodStarts starts, Date now);

  /// The week's first day at the date's time of day, found by fixed days of 86,400 seconds: over a change of
  /// the clock it can be an hour off, which near midnight is the day before. Pass a time well inside the day.
  [[nodiscard]] Date firstDateOfWeek(std::optional<Date> date = {}) const;
  [[nodiscard]] Date lastDateOfWeek(std::optional<Date> date = {}) const;
  [[nodiscard]] Date firstDateOfMonth(std::optional<Date> date = {}) const;
  [[nodiscard]] Date lastDateOfMonth(std::optional<Date> date = {}) const;
  [[nodiscard]] Date firstDateOfYear(std::optional<Date> date = {}) const;
  [[nodiscard]] Date lastDateOfYear(std::optional<Date> date = {}) const;

  /// The first and last day of the fiscal year called `year`.
  [[nodiscard]] Date firstDateOfFiscalYear(int year) const;
  [[nodiscard]] Date lastDateOfFiscalYear(int year) const;
  /// The first day of the book month called `month` of the calendar year `year`.
  [[nodiscard]] Date firstDateOfFiscalYear(int year, int month) const;
  [[nodiscard]] Date firstDateOfCalendarYear(int year, int month) const;

  /// What the fiscal year that holds the date is called.
  [[nodiscard]] int getFiscalYear(std::optional<Date> date = {}) const;
  /// What the book month that holds the date is called, from 1 to the calendar's last.
  [[nodiscard]] int getFiscalMonth(std::optional<Date> date = {}) const;
  [[nodiscard]] int getYearForFiscalPeriod(std::optional<Date> date = {}) const {
    return getFiscalYear(date);
  }
  [[nodiscard]] int getMonthForFiscalPeriod(std::optional<Date> date = {}) const {
    return getFiscalMonth(date);
  }
  /// The calendar year that the book month is called after: with months from -25, 28 December 2023 is in
  /// January 2024.
  [[nodiscard]] int getYearForFiscalMonth(std::optional<Date> date = {}) const;

  /// A day of the calendar month that the book month of the date is called after, to write its name by.
  [[nodiscard]] Date namesakeOfMonth(Date date) const;

  /// Whether the date lies in the book year or month that holds today.
  [[nodiscard]] bool isCurrentYear(std::optional<Date> date = {}) const;
  [[nodiscard]] bool isCurrentMonth(std::optional<Date> date = {}) const;

  /// When what was spent in the book month of the date is to be paid: on the first due day after the month's
  /// last day (in months that are too short, on their last day), or twenty days after it without a due day.
  /// Of a later month it is never earlier.
  [[nodiscard]] Date dueDate(std::optional<Date> date = {}) const {
    return dueDateAfter(lastDateOfMonth(date));
  }
  /// The same of any stretch of days, by its last day.
  [[nodiscard]] Date dueDateAfter(Date closing) const;

  // Periods as texts: "Feb, 25 -- Mar, 24", and in the locale's short or medium style.
  [[nodiscard]] std::string getWeekPeriodShort(std::optional<Date> date = {}) const;
  [[nodiscard]] std::string getMonthPeriodShort(std::optional<Date> date = {}) const;
  [[nodiscard]] std::string getMonthPeriodMiddle(std::optional<Date> date = {}) const;
  [[nodiscard]] std::string getYearPeriodMiddle(std::optional<Date> date = {}) const;
  [[nodiscard]] std::string getFisalYearPeriodMiddle(int year) const;
  [[nodiscard]] std::string getFisalMonthPeriodMiddle(int year, int month) const;

 private:
  /// First and last day of a period, as day numbers: on those no change of the clock can go wrong.
  struct Span {
    std::int64_t first;
    std::int64_t last;
  };

  [[nodiscard]] std::int64_t dayOf(std::optional<Date> date) const;
  [[nodiscard]] Date begin(const Span& span) const { return calendar_->beginOfDay(span.first); }
  [[nodiscard]] Date lastDay(const Span& span) const;
  [[nodiscard]] Span monthFrom(std::int64_t first) const;
  [[nodiscard]] Span yearFrom(std::int64_t first) const;
  [[nodiscard]] Span monthHolding(std::int64_t day) const;
  [[nodiscard]] Span yearHolding(std::int64_t day) const;
  /// The book month and year that are called after the calendar's month and year that hold the day.
  [[nodiscard]] Span monthAfter(std::int64_t day) const;
  [[nodiscard]] Span yearAfter(std::int64_t day) const;
  /// The other way round: a day of the calendar month and year after which the period that holds `day` is
  /// called. Days and not numbers, since a number means little without its era, and not all years have the
  /// same months.
  [[nodiscard]] std::int64_t namesakeOfMonth(std::int64_t day) const;
  [[nodiscard]] std::int64_t namesakeOfYear(std::int64_t day) const;
  /// The first day of the calendar month that a person calls so.
  [[nodiscard]] std::int64_t dayCalled(int year, int month) const;
  [[nodiscard]] bool isPlain() const { return starts_.monthStartsOn == 1 && starts_.yearStartsOn == 1; }
  [[nodiscard]] std::string joined(DateForm form, Date first, Date last) const;

  const Calendar* calendar_;
  PeriodStarts starts_;
  Date now_;
};

}  // namespace moniva
