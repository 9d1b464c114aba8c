#include "reminders/fire_times.h"

#include <fmt/format.h>

#include "platform/local_notifications.h"

namespace moniva {

std::array<FireTime, 3> fireTimesFor(const Calendar& calendar, std::string_view owner, Date due) {
  std::array<FireTime, 3> times;
  std::size_t place = 0;
  for (const int daysLeft : {5, 3, 0}) {
    Date day = due;
    for (int back = 0; back < daysLeft; ++back) day = calendar.getPreviouslyDay(day);
    CivilTime ten = civilFromDays(calendar.dayNumber(day));
    ten.hour = 10;
    const Date date = calendar.resolve(ten).date;
    times.at(place++) = {daysLeft, date,
                         fmt::format("{}_{}", owner, wallClockText(calendar.civilTime(date)))};
  }
  return times;
}

Date fireDateOf(const Calendar& calendar, std::string_view identifier) {
  const auto owner = notificationOwner(identifier);
  if (owner.size() == identifier.size()) return {};
  const auto at = wallClockFrom(identifier.substr(owner.size() + 1));
  return at && at->year > 1970 ? calendar.resolve(*at).date : Date{};
}

}  // namespace moniva
