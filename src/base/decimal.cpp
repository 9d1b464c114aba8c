#include "base/decimal.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

namespace moniva {
namespace {

constexpr int kPlaces = 12;
constexpr double kMost = 1e15;
constexpr int kDigits = 15;

/// A finite number as text of fifteen digits: "-d.dddddddddddddde-05".
struct Written {
  explicit Written(double number)
      : end(std::to_chars(text.data(), text.data() + text.size(), number, std::chars_format::scientific,
                          kDigits - 1)
                .ptr) {}

  std::array<char, 32> text{};
  const char* end;
};

/// The size of a finite number: fifteen digits times that power of ten.
struct FifteenDigits {
  explicit FifteenDigits(double number) {
    const Written written(number);
    const char* at = written.text.data();
    for (; at != written.end && *at != 'e'; ++at) {
      if (*at >= '0' && *at <= '9') digits = digits * 10 + (*at - '0');
    }
    if (at != written.end) std::from_chars(at + (at[1] == '+' ? 2 : 1), written.end, exponent);
    exponent -= kDigits - 1;
  }

  std::int64_t digits = 0;
  int exponent = 0;
};

}  // namespace

std::optional<Decimal> Decimal::of(double number) {
  if (!std::isfinite(number) || std::abs(number) > kMost) return std::nullopt;
  // Whole cents, as most amounts are: the double next to that many cents stands for them.
  if (std::abs(number) < 1e12) {
    const double cents = std::round(number * 100);
    if (cents / 100 == number) return Decimal(static_cast<Units>(cents) * 10'000'000'000);
  }
  const FifteenDigits size(number);
  Units units = size.digits;
  int shift = size.exponent + kPlaces;
  for (; shift > 0; --shift) units *= 10;
  if (shift < -kDigits - 1) return Decimal();
  Units divisor = 1;
  for (; shift < 0; ++shift) divisor *= 10;
  units = (units + divisor / 2) / divisor;
  return Decimal(number < 0 ? -units : units);
}

std::string Decimal::text(int leastPlaces) const {
  constexpr Units kOne = 1'000'000'000'000;
  constexpr Units kBillions = 1'000'000'000'000'000'000;
  const Units size = units_ < 0 ? -units_ : units_;
  const Units whole = size / kOne;
  std::string text = units_ < 0 ? "-" : "";
  if (whole < kBillions) {
    text += fmt::format_int(static_cast<std::uint64_t>(whole)).str();
  } else {
    text += fmt::format("{}{:018}", static_cast<std::uint64_t>(whole / kBillions),
                        static_cast<std::uint64_t>(whole % kBillions));
  }
  auto rest = static_cast<std::uint64_t>(size % kOne);
  int places = kPlaces;
  for (; places > leastPlaces && rest % 10 == 0; --places) rest /= 10;
  if (places == 0) return text;
  const std::size_t end = text.size() + 1 + static_cast<std::size_t>(places);
  text += '.';
  text.resize(end);
  for (std::size_t at = end; places > 0; --places, rest /= 10)
    text[--at] = static_cast<char>('0' + rest % 10);
  return text;
}

double withFifteenDigits(double number) {
  if (!std::isfinite(number)) return number;
  const Written written(number);
  std::from_chars(written.text.data(), written.end, number);
  return number;
}

double rounded(double number, int decimals) {
  constexpr std::array<double, kPlaces + 1> kUnits = {1,   1e1, 1e2, 1e3,  1e4,  1e5, 1e6,
                                                      1e7, 1e8, 1e9, 1e10, 1e11, 1e12};
  if (!std::isfinite(number) || std::abs(number) >= kMost) return std::round(number);
  decimals = std::clamp(decimals, 0, kPlaces);
  const double unit = kUnits[static_cast<std::size_t>(decimals)];
  const double size = std::abs(number) * unit;
  // Noise tells only where a half is near; the usual number is spared the long way.
  constexpr double kNoiseless = 1e13;
  constexpr double kNoise = 1e-14;
  double counted = 0;
  if (size < kNoiseless && std::abs(size - std::trunc(size) - 0.5) > size * kNoise) {
    counted = std::round(size);
  } else {
    const FifteenDigits written(number);
    int shift = written.exponent + decimals;
    // As many digits as there are, all before the last decimal.
    if (shift >= 0) return withFifteenDigits(number);
    std::int64_t divisor = 1;
    for (shift = std::max(shift, -kDigits - 1); shift < 0; ++shift) divisor *= 10;
    const std::int64_t rest = written.digits % divisor;
    const std::int64_t whole = written.digits / divisor + (rest >= divisor - rest ? 1 : 0);
    counted = static_cast<double>(whole);
  }
  return std::copysign(counted / unit, counted == 0 ? 1 : number);
}

}  // namespace moniva
