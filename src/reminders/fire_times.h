#pragma once

#include <array>
#include <string>
#include <string_view>

#include "calendar/calendar.h"

// When one is reminded of what is due on a day, and what that reminder is called.
namespace moniva {

struct FireTime {
  int daysLeft = 0;  ///< 5, 3 or 0
  Date date;
  /// The owner's key, '_' and the date by the wall clock: "KEY_2026-11-22 10:00:00".
  std::string identifier;
};

/// At ten o'clock five days before the due date's day, three days before and on the day itself.
std::array<FireTime, 3> fireTimesFor(const Calendar& calendar, std::string_view owner, Date due);
/// The moment in an identifier; 1970 where there is none.
Date fireDateOf(const Calendar& calendar, std::string_view identifier);

}  // namespace moniva
