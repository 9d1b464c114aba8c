#pragma once

#include <string_view>

#include "base/result.h"
#include "calendar/calendar.h"

namespace moniva {

// What a person types for a date. Numbers are Gregorian whatever the user's calendar, years have four digits,
// and spaces around the text are ignored. A refusal names the text and what is wrong with it.

/// A typed date in the user's zone.
struct ParsedDate {
  Date date;                        ///< without a time of day: the beginning of the day
  bool hasTime = false;             ///< whether a time of day was typed
  bool movedByClockChange = false;  ///< the clock skips what was typed; `date` is later by the gap
  bool ambiguous = false;           ///< the clock shows what was typed twice; `date` is the first
};

/// A typed period: from the first instant of its first day to the last second of its last.
struct ParsedPeriod {
  Date first;
  Date last;
};

/// A time of day on a clock of 24 hours.
struct TimeOfDay {
  int hour = 0;
  int minute = 0;
  int second = 0;
};

/// "14:30" or "14:30:05".
Result<TimeOfDay> parseTimeOfDay(std::string_view text);

/// "2024-02-29", "2024/2/29" or "29.02.2024", each with a time of day after a space or a "T" or without, as
/// typed. "02/03/2024" is refused: half the world reads it as February, the other half as March.
Result<CivilTime> parseCivil(std::string_view text);

/// What parseCivil takes, or "today", "yesterday", "tomorrow" by the day of `now`, or a time alone, which is
/// today.
Result<ParsedDate> parseDate(std::string_view text, const Calendar& calendar, Date now);

/// A day as parseDate takes it without a time, a month "2024-03", a year "2024", or two of these joined by
/// "..", from the first day of the one to the last of the other.
Result<ParsedPeriod> parsePeriod(std::string_view text, const Calendar& calendar, Date now);

}  // namespace moniva
