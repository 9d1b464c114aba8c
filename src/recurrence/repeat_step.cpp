#include "recurrence/repeat_step.h"

#include <algorithm>

namespace moniva {
namespace {

/// The stepped date on the day the series began on, where its month has that day; else on its last.
Date onFirstDay(const Calendar& calendar, Date stepped, int firstDay) {
  constexpr int kDayThatMonthsLack = 29;
  const int day = calendar.day(stepped);
  if (firstDay < kDayThatMonthsLack || day == firstDay) return stepped;
  const int wanted = std::min(firstDay, calendar.numberOfDaysInMonth(stepped));
  return wanted == day ? stepped : calendar.dateWithDay(stepped, wanted - day);
}

}  // namespace

Date nextRepeatDate(const Calendar& calendar, RepeatRule rule, Date from, int firstDay) {
  switch (rule) {
    case RepeatRule::daily:
      return calendar.getNextDay(from);
    case RepeatRule::weekly:
      return calendar.getNextWeekDay(from);
    case RepeatRule::biweekly:
      return calendar.getNextWeekDay(calendar.getNextWeekDay(from));
    case RepeatRule::monthly:
      return onFirstDay(calendar, calendar.getNextMonthDay(from), firstDay);
    case RepeatRule::bimonthly:
      return onFirstDay(calendar, calendar.getNextBimonthDay(from), firstDay);
    case RepeatRule::quarterly:
      return onFirstDay(calendar, calendar.getNextQuarterDay(from), firstDay);
    case RepeatRule::halfYearly:
      return onFirstDay(calendar, calendar.getNextHalfyearDay(from), firstDay);
    case RepeatRule::yearly:
      return onFirstDay(calendar, calendar.getNextYearDay(from), firstDay);
  }
  return from;
}

}  // namespace moniva
