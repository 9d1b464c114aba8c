#include "base/uuid.h"
#include "recurrence/series_seed.h"
#include "recurrence/spend_repeat.h"

// Identifiers of occurrences: a version 7 UUID whose time is the day, as if in UTC, and whose other bits
// follow from seed, day and part. So devices in any zone make the same one for the same day.
namespace moniva {
namespace {

constexpr std::int64_t kSecondsOfDay = 86'400;

/// The milliseconds since 1970 with which a UUID of version 7 begins.
std::optional<std::int64_t> millisecondsOf(std::string_view uuid) {
  constexpr std::size_t kDash = 8;
  constexpr std::size_t kEnd = 13;
  constexpr std::size_t kVersion = 14;
  if (uuid.size() != 36 || uuid[kDash] != '-' || uuid[kVersion] != '7') return std::nullopt;
  std::int64_t number = 0;
  for (std::size_t place = 0; place < kEnd; ++place) {
    if (place == kDash) continue;
    const char sign = uuid[place];
    const bool isLetter = sign >= 'a' && sign <= 'f';
    if (!isLetter && (sign < '0' || sign > '9')) return std::nullopt;
    number = number * 16 + (isLetter ? sign - 'a' + 10 : sign - '0');
  }
  return number;
}

}  // namespace

std::string identifierOfDay(std::string_view seed, std::int64_t dayNumber, std::string_view part) {
  return nameBasedUuidV7(static_cast<double>(dayNumber * kSecondsOfDay),
                         fmt::format("{} {} {}", seed, dayNumber, part));
}

std::string occurrenceIdentifier(const Calendar& calendar, std::string_view seed, Date day,
                                 std::string_view part) {
  return identifierOfDay(seed, calendar.dayNumber(day), part);
}

std::optional<std::int64_t> dayToldBy(std::string_view eid) {
  const auto milliseconds = millisecondsOf(eid);
  if (!milliseconds || *milliseconds % (kSecondsOfDay * 1000) != 0) return std::nullopt;
  return *milliseconds / (kSecondsOfDay * 1000);
}

std::optional<std::int32_t> dayMadeFor(std::string_view seed, std::string_view eid) {
  const auto day = dayToldBy(eid);
  if (!day) return std::nullopt;
  for (const std::string_view part : {"", "A", "B", "AB", "P"}) {
    if (identifierOfDay(seed, *day, part) == eid) return static_cast<std::int32_t>(*day);
  }
  return std::nullopt;
}

}  // namespace moniva
