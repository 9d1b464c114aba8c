#include "base/decimal.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <cmath>
#include <tuple>

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

TEST(Rounded, goesByTheDigitsTyped) {
  const double huge = 1e300;
  for (const auto& [number, decimals, result, why] : {
           std::tuple{1.005, 2, 1.01, "a little less than it as a binary fraction"},
           {-1.005, 2, -1.01, "away from zero below it too"},
           {1.015, 2, 1.02, "less in binary"},
           {8.575, 2, 8.58, "less in binary, and once more when multiplied"},
           {0.285, 2, 0.29, "less in binary"},
           {1.255, 2, 1.26, "less in binary"},
           {10.075, 2, 10.08, "less in binary"},
           {2.675, 2, 2.68, "less in binary"},
           {1.0049999, 2, 1.0, "below the half"},
           {2.5, 0, 3.0, "no decimals"},
           {0.35, 1, 0.4, "one"},
           {1.0005, 3, 1.001, "three"},
           {0.0000005, 6, 0.000001, "six"},
           {1234567890.115, 2, 1234567890.12, "thirteen digits"},
           {999999999999.995, 2, 1e12, "fifteen"},
           {123456789012345.67, 2, 123456789012346.0, "the sixteenth digit is noise"},
           {1e15, 2, 1e15, "whole anyway"},
           {huge, 6, huge, "any size"},
           {1e-300, 2, 0.0, "next to nothing"},
       }) {
    EXPECT_EQ(rounded(number, decimals), result) << why;
  }
  EXPECT_FALSE(std::signbit(rounded(-0.001, 2))) << "zero has no sign";
  EXPECT_TRUE(std::isnan(rounded(std::nan(""), 2)));
}

/// What is typed with a five at the end, of up to fifteen digits in all.
RC_GTEST_PROP(Rounded, goesUpFromAHalf, ()) {
  const auto decimals = *rc::gen::inRange(0, 7);
  const auto whole = *rc::gen::inRange<std::int64_t>(0, 99'999'999'999'999);
  const double unit = std::pow(10.0, decimals);
  const double half = static_cast<double>(whole * 10 + 5) / (unit * 10);
  RC_ASSERT(rounded(half, decimals) == static_cast<double>(whole + 1) / unit);
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
