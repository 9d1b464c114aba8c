#pragma once

#include "calendar/calendar.h"
#include "model/repeat_rule.h"

namespace moniva {

/// The date of a series after `from`, at its time of day, in the user's zone and calendar. Rules that count
/// months come back to `firstDay`, the day of month the series began on: where a month lacks the 29th, 30th
/// or 31st its last day stands, and the next month that has the day has it again. So where a series gets
/// never depends on how many steps led there. 0 for a first day that is not known.
Date nextRepeatDate(const Calendar& calendar, RepeatRule rule, Date from, int firstDay);

}  // namespace moniva
