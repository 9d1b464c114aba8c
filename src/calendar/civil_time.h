#pragma once

#include <compare>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace moniva {

/// A date and time of day as a person writes them: Gregorian, without a zone.
struct CivilTime {
  int year = 1970;
  int month = 1;  ///< 1 to 12
  int day = 1;    ///< 1 to 31
  int hour = 0;
  int minute = 0;
  int second = 0;

  friend constexpr auto operator<=>(const CivilTime&, const CivilTime&) = default;
};

constexpr std::int64_t kSecondsPerDay = 86'400;

/// Quotient and remainder that round toward the past, so that times before 1970 divide like later ones.
constexpr std::int64_t floorDivide(std::int64_t value, std::int64_t by) {
  return value / by - (value % by < 0 ? 1 : 0);
}
constexpr std::int64_t floorRemainder(std::int64_t value, std::int64_t by) {
  return value - floorDivide(value, by) * by;
}

/// Days from 1970-01-01 to a Gregorian date, in either direction. `month` must be 1 to 12; `day` may be any
/// number and counts on from the first of the month.
constexpr std::int64_t daysFromCivil(std::int64_t year, int month, std::int64_t day) {
  // Years begin in March here, so that the leap day is the last of its year and the months before it follow
  // one linear rule: 153 days for every five.
  const std::int64_t shifted = month <= 2 ? year - 1 : year;
  const std::int64_t era = floorDivide(shifted, 400);
  const std::int64_t yearOfEra = shifted - era * 400;
  const std::int64_t monthFromMarch = (month + 9) % 12;
  const std::int64_t dayOfYear = (153 * monthFromMarch + 2) / 5;
  return era * 146'097 + yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear + day - 719'469;
}

/// The Gregorian date of a number of days since 1970-01-01, at midnight.
constexpr CivilTime civilFromDays(std::int64_t days) {
  const std::int64_t shifted = days + 719'468;
  const std::int64_t era = floorDivide(shifted, 146'097);
  const std::int64_t dayOfEra = shifted - era * 146'097;
  const std::int64_t yearOfEra = (dayOfEra - dayOfEra / 1'460 + dayOfEra / 36'524 - dayOfEra / 146'096) / 365;
  const std::int64_t dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
  const std::int64_t monthFromMarch = (5 * dayOfYear + 2) / 153;
  CivilTime civil;
  civil.day = static_cast<int>(dayOfYear - (153 * monthFromMarch + 2) / 5 + 1);
  civil.month = static_cast<int>(monthFromMarch < 10 ? monthFromMarch + 3 : monthFromMarch - 9);
  civil.year = static_cast<int>(yearOfEra + era * 400 + (civil.month <= 2 ? 1 : 0));
  return civil;
}

/// The number of days of a Gregorian month.
constexpr int daysInMonth(std::int64_t year, int month) {
  const std::int64_t next = month == 12 ? daysFromCivil(year + 1, 1, 1) : daysFromCivil(year, month + 1, 1);
  return static_cast<int>(next - daysFromCivil(year, month, 1));
}

/// "2024-02-29 10:00:00", in digits of no locale; texts of years with four digits sort like their times.
std::string wallClockText(const CivilTime& at);
/// The time a text of that form tells, from year 1 to 9999; nothing where it has another form, or where there
/// is no such day or time of day.
std::optional<CivilTime> wallClockFrom(std::string_view text);

static_assert(daysFromCivil(1970, 1, 1) == 0 && daysFromCivil(2000, 2, 29) == 11'016);
static_assert(civilFromDays(-1) == CivilTime{1969, 12, 31} && civilFromDays(11'017) == CivilTime{2000, 3, 1});

}  // namespace moniva
