#include "reminders/fire_times.h"

#include <fmt/format.h>

#include <charconv>

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
    const CivilTime at = calendar.civilTime(date);
    times.at(place++) = {daysLeft, date,
                         fmt::format("{}_{:04}-{:02}-{:02} {:02}:{:02}:{:02}", owner, at.year, at.month,
                                     at.day, at.hour, at.minute, at.second)};
  }
  return times;
}

Date fireDateOf(const Calendar& calendar, std::string_view identifier) {
  std::string_view text = identifier.substr(std::min(ownerOf(identifier).size() + 1, identifier.size()));
  CivilTime at;
  for (int* part : {&at.year, &at.month, &at.day, &at.hour, &at.minute, &at.second}) {
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), *part);
    if (error != std::errc()) return {};
    text.remove_prefix(std::min(static_cast<std::size_t>(end - text.data()) + 1, text.size()));
  }
  const bool isTime = at.month >= 1 && at.month <= 12 && at.day >= 1 && at.day <= 31 && at.hour >= 0 &&
                      at.hour < 24 && at.minute >= 0 && at.minute < 60 && at.second >= 0 && at.second < 60;
  return isTime && at.year > 1970 && at.year < 10000 ? calendar.resolve(at).date : Date{};
}

std::string_view ownerOf(std::string_view identifier) {
  const auto end = identifier.rfind('_');
  return identifier.substr(0, end == std::string_view::npos ? identifier.size() : end);
}

}  // namespace moniva
