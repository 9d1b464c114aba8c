#include "base/decimal.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <cmath>

#include "base/amount.h"

namespace moniva {
namespace {

TEST(Decimals, areWhatWasTyped) {
  struct Case {
    double number;
    int places;
    const char* text;
    const char* why;
  };
  for (const auto& [number, places, text, why] : {
           Case{12.5, 2, "12.50", "the places of its currency"},
           Case{12.345, 2, "12.345", "and more where there are more"},
           Case{-0.05, 0, "-0.05", "below nought"},
           Case{300, 0, "300", "a currency without cents"},
           Case{0.1 + 0.2, 2, "0.30", "no noise"},
           Case{100.0 / 3, 2, "33.333333333333", "twelve places at most"},
           Case{1e-7, 2, "0.0000001", "no exponent"},
           Case{1e-14, 2, "0.00", "too small to be anything"},
           Case{999999999999.999, 2, "999999999999.999", "fifteen digits"},
           Case{1e15, 2, "1000000000000000.00", "the largest"},
       }) {
    EXPECT_EQ(Decimal::of(number).value().text(places), text) << why;
  }
  for (const double none : {2e15, -2e15, HUGE_VAL, std::nan("")}) EXPECT_FALSE(Decimal::of(none)) << none;
}

RC_GTEST_PROP(Decimals, addUpExactly, (const std::vector<std::int32_t>& thousandths)) {
  Decimal sum;
  std::int64_t exact = 0;
  for (const auto part : thousandths) {
    exact += std::int64_t{part} * 1'000'000;
    sum += *Decimal::of(part * 1e6 / 1e3);
  }
  RC_ASSERT(sum.text(3) == (exact < 0 ? "-" : "") + std::to_string(std::abs(exact / 1000)) + ".000");
  RC_ASSERT(parseSignedAmount(sum.text(2)).value() == static_cast<double>(exact) / 1000);
}

}  // namespace
}  // namespace moniva
