#include "app/text_dates.h"

#include <algorithm>
#include <cstdio>

#include "calendar/civil_time.h"

namespace moniva {
namespace {

/// Seconds east of Greenwich that "+0100", "+01:00", "Z", "UTC" or "GMT" stand for.
std::optional<int> offsetOf(std::string_view zone) {
  if (zone == "Z" || zone == "UTC" || zone == "GMT") return 0;
  std::string digits;
  for (const char c : zone.substr(std::min<std::size_t>(1, zone.size()))) {
    if (c != ':') digits += c;
  }
  const bool isOffset = (zone.starts_with('+') || zone.starts_with('-')) && digits.size() == 4 &&
                        digits.find_first_not_of("0123456789") == std::string::npos;
  if (!isOffset) return std::nullopt;
  const int number = std::stoi(digits);
  return (zone[0] == '-' ? -1 : 1) * (number / 100 * 3600 + number % 100 * 60);
}

}  // namespace

std::optional<double> storedDate(const Calendar& calendar, const std::string& text) {
  if (text.find_first_not_of(' ') == std::string::npos) return 0.0;
  CivilTime at;
  int read = 0;
  if (std::sscanf(text.c_str(), "%4d-%2d-%2d%n", &at.year, &at.month, &at.day, &read) != 3)
    return std::nullopt;
  double seconds = 0;
  int time = 0;
  if (std::sscanf(text.c_str() + read, "%*1[T ]%2d:%2d:%lf%n", &at.hour, &at.minute, &seconds, &time) == 3) {
    read += time;
  }
  const bool isSound = at.year > 0 && at.month >= 1 && at.month <= 12 && at.day >= 1 &&
                       at.day <= daysInMonth(at.year, at.month) && at.hour >= 0 && at.hour < 24 &&
                       at.minute >= 0 && at.minute < 60 && seconds >= 0 && seconds < 60;
  if (!isSound) return std::nullopt;
  std::string_view zone = std::string_view(text).substr(static_cast<std::size_t>(read));
  while (zone.starts_with(' ')) zone.remove_prefix(1);
  while (zone.ends_with(' ')) zone.remove_suffix(1);
  if (zone.empty()) return calendar.resolve(at).date.secondsSince1970 + seconds;
  const auto offset = offsetOf(zone);
  if (!offset) return std::nullopt;
  const auto minutes = (daysFromCivil(at.year, at.month, at.day) * 24 + at.hour) * 60 + at.minute;
  return static_cast<double>(minutes * 60 - *offset) + seconds;
}

}  // namespace moniva
