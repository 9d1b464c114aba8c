#pragma once

#include <compare>

namespace moniva {

/// A point in time. Which day it falls on is a question for a Calendar: the answer depends on the zone.
struct Date {
  double secondsSince1970 = 0;

  friend constexpr auto operator<=>(const Date&, const Date&) = default;

  /// The point `seconds` later. Fixed seconds, not calendar days: a day has 23 to 25 hours.
  [[nodiscard]] constexpr Date plusSeconds(double seconds) const { return {secondsSince1970 + seconds}; }
};

}  // namespace moniva
