#pragma once

#include <compare>
#include <cstdint>
#include <optional>
#include <string>

namespace moniva {

/// A sum of money as an exact decimal with up to twelve places. Adding any number of amounts leaves no noise
/// behind, as adding doubles does; there is room for 10^26.
class Decimal {
 public:
  constexpr Decimal() = default;
  /// The number a person typed to get this double: of its digits the first fifteen, as what stands behind
  /// them is noise. Nothing for what is not finite and beyond 1e15.
  static std::optional<Decimal> of(double number);

  bool isZero() const { return units_ == 0; }
  friend auto operator<=>(const Decimal&, const Decimal&) = default;
  Decimal& operator+=(const Decimal& other) {
    units_ += other.units_;
    return *this;
  }
  Decimal operator-() const { return Decimal(-units_); }
  friend Decimal operator+(Decimal one, const Decimal& other) { return one += other; }
  friend Decimal operator-(Decimal one, const Decimal& other) { return one += -other; }

  /// "-1234.50": with that many places at least, and as many more as it takes.
  std::string text(int leastPlaces) const;

 private:
  __extension__ typedef __int128 Units;  // of 10^-12
  constexpr explicit Decimal(Units units) : units_(units) {}

  Units units_ = 0;
};

/// The number with its first fifteen digits: what stands behind them is noise of binary fractions.
double withFifteenDigits(double number);

/// The number with that many decimals (0 to 12), by the digits a person typed to get this double, of which
/// fifteen count: halves go away from zero (1.005 with two is 1.01), and zero has no sign. From 1e15 on it is
/// made whole; what is not finite stays so.
double rounded(double number, int decimals);

}  // namespace moniva
