#include "base/decimal.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

namespace moniva {
namespace {

constexpr int kPlaces = 12;
constexpr double kMost = 1e15;

}  // namespace

std::optional<Decimal> Decimal::of(double number) {
  if (!std::isfinite(number) || std::abs(number) > kMost) return std::nullopt;
  // Whole cents, as most amounts are: the double next to that many cents stands for them.
  if (std::abs(number) < 1e12) {
    const double cents = std::round(number * 100);
    if (cents / 100 == number) return Decimal(static_cast<Units>(cents) * 10'000'000'000);
  }
  std::array<char, 32> text{};
  const auto end =
      std::to_chars(text.data(), text.data() + text.size(), number, std::chars_format::scientific, 14).ptr;
  // "-d.dddddddddddddde-05": fifteen digits, and where the point is.
  std::int64_t digits = 0;
  const char* at = text.data();
  for (; at != end && *at != 'e'; ++at) {
    if (*at >= '0' && *at <= '9') digits = digits * 10 + (*at - '0');
  }
  int exponent = 0;
  if (at != end) std::from_chars(at + (at[1] == '+' ? 2 : 1), end, exponent);
  Units units = digits;
  int shift = exponent - 14 + kPlaces;
  for (; shift > 0; --shift) units *= 10;
  if (shift < -16) return Decimal();
  Units divisor = 1;
  for (; shift < 0; ++shift) divisor *= 10;
  units = (units + divisor / 2) / divisor;
  return Decimal(number < 0 ? -units : units);
}

std::string Decimal::text(int leastPlaces) const {
  std::array<char, 48> reversed{};
  std::size_t length = 0;
  Units rest = units_ < 0 ? -units_ : units_;
  int places = kPlaces;
  for (; places > leastPlaces && rest % 10 == 0; --places) rest /= 10;
  for (int place = 0; place <= places || rest > 0; ++place) {
    if (place == places && place > 0) reversed[length++] = '.';
    reversed[length++] = static_cast<char>('0' + static_cast<int>(rest % 10));
    rest /= 10;
  }
  if (units_ < 0) reversed[length++] = '-';
  return {reversed.rbegin() + static_cast<std::ptrdiff_t>(reversed.size() - length), reversed.rend()};
}

}  // namespace moniva
