#pragma once

#include <optional>
#include <string>

#include "calendar/calendar.h"

namespace moniva {

/// The seconds since 1970 of a date that an older program kept as a text: "2015-03-04 12:30:00", with a zone
/// behind it ("+0100", "Z") or in the calendar's; 0 for a blank one, nothing for one that cannot be read.
std::optional<double> storedDate(const Calendar& calendar, const std::string& text);

}  // namespace moniva
