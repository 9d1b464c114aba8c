#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "calendar/calendar.h"

namespace moniva {

// Day keys and the texts kept or shown with dates, UTF-8, in the digits, names and styles of the user's
// locale. A `zone` is an IANA id; empty or unknown means the user's zone.

/// The day as a number like 20240229, in the user's calendar.
int integerDateOfTimeZone(const Calendar& calendar, Date date, std::string_view zone = {});
/// The month as a number like 202402.
int integerOfYearMonth(const Calendar& calendar, Date date);

/// "2024/02/29".
std::string stringOfDateForCSV(const Calendar& calendar, Date date);
/// "2024-02-29 14:30:05".
std::string stringOfDatetime(const Calendar& calendar, Date date, std::string_view zone = {});
/// The zone's name at that date: "Central European Summer Time".
std::string stringOfTimeZone(const Calendar& calendar, Date date, std::string_view zone = {});

// The locale's own styles, the day alone. The tiny one is the short one without its year.
std::string stringOfDateTinyStyle(const Calendar& calendar, Date date);
std::string stringOfDateShortStyle(const Calendar& calendar, Date date);
std::string stringOfDateMediumStyle(const Calendar& calendar, Date date);
std::string stringOfDateLongStyle(const Calendar& calendar, Date date);
std::string stringOfDateFullStyle(const Calendar& calendar, Date date);

// The same with the time of day.
std::string stringOfDatetimeShortStyle(const Calendar& calendar, Date date);
std::string stringOfDatetimeMediumStyle(const Calendar& calendar, Date date);
std::string stringOfDatetimeLongStyle(const Calendar& calendar, Date date);
std::string stringOfDatetimeFullStyle(const Calendar& calendar, Date date);

/// The full names of the month and of the weekday, as they stand alone: "February", "Thursday".
std::string stringOfMonthName(const Calendar& calendar, Date date);
std::string stringOfWeekdayName(const Calendar& calendar, Date date);

/// A text unique to a moment: the seconds of `now` to six places and a random number, without the point. The
/// number is written signed, as older stores have it.
std::string dateUuid(Date now, std::uint32_t random32);

}  // namespace moniva
