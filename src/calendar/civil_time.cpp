#include "calendar/civil_time.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>

namespace moniva {

std::string wallClockText(const CivilTime& at) {
  return fmt::format("{:04}-{:02}-{:02} {:02}:{:02}:{:02}", at.year, at.month, at.day, at.hour, at.minute,
                     at.second);
}

std::optional<CivilTime> wallClockFrom(std::string_view text) {
  CivilTime at;
  std::string_view rest = text;
  for (int* part : {&at.year, &at.month, &at.day, &at.hour, &at.minute, &at.second}) {
    const auto [end, error] = std::from_chars(rest.data(), rest.data() + rest.size(), *part);
    if (error != std::errc() || *part < 0) return std::nullopt;
    rest.remove_prefix(std::min(static_cast<std::size_t>(end - rest.data()) + 1, rest.size()));
  }
  const bool isDay = at.year >= 1 && at.year <= 9999 && at.month >= 1 && at.month <= 12 && at.day >= 1 &&
                     at.day <= daysInMonth(at.year, at.month);
  const bool isTime = at.hour < 24 && at.minute < 60 && at.second < 60;
  // Written again it is the same where its marks and digits are right.
  return isDay && isTime && wallClockText(at) == text ? std::optional(at) : std::nullopt;
}

}  // namespace moniva
