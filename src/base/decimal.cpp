#include "base/decimal.h"

#include <fmt/format.h>

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

}  // namespace moniva
