#include "currency/calculate_number_pad_view.h"

#include <fmt/format.h>
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <regex>
#include <string>
#include <vector>

#include "currency/amount_expression.h"

namespace moniva {
namespace {

const std::vector<std::string> kPadKeys = {"0", "1", "2", "3", "4", "5", "6", "7", "8",
                                           "9", "•", "+", "-", "×", "÷", "⌫", "C", "="};

/// The keys of a text such as "12•5×3=".
std::vector<std::string> keysOf(const std::string& text) {
  std::vector<std::string> keys;
  for (const char c : text) {
    if ((c & 0xC0) == 0x80) {
      keys.back() += c;
    } else {
      keys.emplace_back(1, c);
    }
  }
  return keys;
}

/// The display, and behind ':' the result where that is not the number displayed.
std::string shown(const CalculateNumberPadView& pad) {
  const std::string display = pad.displayText();
  double number = 0;
  const auto end = display.data() + display.size();
  const bool isNumber = std::from_chars(display.data(), end, number).ptr == end && !display.empty();
  return isNumber && number == pad.resultAmount() ? display
                                                  : fmt::format("{}:{}", display, pad.resultAmount());
}

TEST(CalculateNumberPadView, showsDisplayAndResultAfterEachKey) {
  const struct {
    double opened;
    int digits;
    bool fills;
    const char* keys;
    const char* shown;
    const char* why;
  } cases[] = {
      {0, 2, false, "12•50+3=", "1 12 12. 12.5 12.50 12.50+:12.5 12.50+3:15.5 15.50", "a sum"},
      {0, 2, false, "2+3×4=", "2 2+:2 2+3:5 5*:5 5*4:20 20", "no precedence"},
      {0, 2, false, "5-×÷+", "5 5-:5 5*:5 5/:5 5+:5", "an operator replaces one without an operand"},
      {0, 2, false, "5×-2=", "5 5*:5 5-:5 5-2:3 3", "so no operand on the right has a sign"},
      {0, 2, false, "+×÷-+-×5", ":0 :0 :0 -:0 -:0 -:0 -:0 -5", "only a minus begins, and waits for a digit"},
      {0, 2, false, "007•005", "0 0 7 7. 7.0 7.00 7.00", "a lone nought goes, the third decimal too"},
      {0, 2, false, "-07•5=", "-:0 -0 -7 -7. -7.5 -7.50", "behind a sign as well"},
      {0, 2, false, "••5•+•2=", "0. 0. 0.5 0.5 0.5+:0.5 0.5+0.:0.5 0.5+0.2:0.7 0.70", "one point each"},
      {0, 2, false, "-•5", "-:0 -0. -0.5", "a point behind a sign"},
      {0, 2, false, "7÷0=5", "7 7/:7 7/0:inf ∞:inf 5", "not a number to go on with"},
      {0, 2, false, "-7÷0+⌫⌫•", "-:0 -7 -7/:-7 -7/0:-inf -∞+:-inf -∞:-inf :0 0.", "goes in one piece"},
      {0, 2, false, "0÷0-1=", "0 0/:0 0/0:nan NaN-:nan NaN-1:nan NaN:nan", "goes on through a sum"},
      {0, 2, false, "1÷8=", "1 1/:1 1/8:0.13 0.13", "what is told is what will stand there"},
      {0, 2, false, "0•7+•1+•2=",
       "0 0. 0.7 0.7+:0.7 0.7+0.:0.7 0.7+0.1:0.8 0.80+:0.8 0.80+0.:0.8 0.80+0.2:1 1", "no noise"},
      {-0.01, 2, false, "÷4=", "-0.01/:-0.01 -0.01/4:0 0.00", "no sign on what rounds to nought"},
      {0, 2, false, "3-3=-1=", "3 3-:3 3-3:0 0 0-:0 0-1:-1 -1", "nought of a result is an operand"},
      {0, 2, false, "12+3⌫⌫⌫⌫⌫", "1 12 12+:12 12+3:15 12+:12 12 1 :0 :0", "backwards through it"},
      {0, 2, false, "12+3C7", "1 12 12+:12 12+3:15 :0 7", "all at once"},
      {15.5, 2, false, "5⌫5", "15.50 15.5 15.55", "opened with all decimals"},
      {12, 2, false, "5•5", "125 125. 125.5", "opened with none"},
      {-2.675, 2, false, "+", "-2.68+:-2.68", "halves away from zero"},
      {0, 2, false, "=", ":0", "nothing stays nothing"},
      {0, 2, false, "1234567890123456",
       "1 12 123 1234 12345 123456 1234567 12345678 123456789 1234567890 12345678901 123456789012 "
       "1234567890123 12345678901234 123456789012345 123456789012345",
       "a double keeps fifteen digits"},
      {1e20, 2, false,
       "×1=", "100000000000000000000*:1e+20 100000000000000000000*1:1e+20 100000000000000000000",
       "beyond whole numbers of 64 bits"},
      {0, 0, false, "1•5÷2=", "1 1 15 15/:15 15/2:8 8", "no decimals: no point, whole results"},
      {0, 1, false, "•25", "0. 0.2 0.2", "one decimal"},
      {0, 3, false, "•1255×3=", "0. 0.1 0.12 0.125 0.125 0.125*:0.125 0.125*3:0.375 0.375", "three"},
      {0, 4, false, "1÷3=", "1 1/:1 1/3:0.3333 0.3333", "four"},
      {0, 5, false, "1÷3=", "1 1/:1 1/3:0.33333 0.33333", "five"},
      {0, 6, false, "2÷3=", "2 2/:2 2/3:0.666667 0.666667", "six"},
      {0, 2, true, "12345", "0.01 0.12 1.23 12.34 123.45", "filled from the right"},
      {0, 2, true, "005⌫5", "0.00 0.00 0.05 0.0 0.05", "noughts are no digits; one goes as it stands"},
      {0, 2, true, "-5×3=4", "-:0 -0.05 -0.05*:-0.05 -0.05*0.03:0 0.00 0.04", "no sign on nought"},
      {0, 2, true, "150+25=", "0.01 0.15 1.50 1.50+:1.5 1.50+0.02:1.52 1.50+0.25:1.75 1.75", "both sides"},
      {0, 2, true, "•5", "0. 0.05", "a point changes nothing of that"},
      {12, 2, true, "3", "1.23", "digits behind an amount are digits of it"},
      {0, 0, true, "07", "0 7", "nothing to fill"},
      {0, 1, true, "57", "0.5 5.7", "one"},
      {0, 3, true, "5", "0.005", "three"},
      {0, 4, true, "5", "0.0005", "four"},
      {0, 5, true, "5", "0.00005", "five"},
      {0, 6, true, "7", "0.000007", "six"},
  };
  for (const auto& c : cases) {
    CalculateNumberPadView pad;
    pad.setDecimalDigits(c.digits);
    pad.setAutoFillDecimalEnable(c.fills);
    pad.setOriginalAmount(c.opened);
    std::ptrdiff_t sounds = 0;
    pad.clickSound = [&] { ++sounds; };
    std::vector<std::string> all;
    for (const auto& key : keysOf(c.keys)) {
      EXPECT_TRUE(press(pad, key)) << key;
      all.push_back(shown(pad));
    }
    EXPECT_EQ(fmt::format("{}", fmt::join(all, " ")), c.shown) << c.why << ", " << c.keys;
    EXPECT_EQ(sounds, std::ranges::count_if(keysOf(c.keys), [](auto& key) { return key != "="; })) << c.keys;
    EXPECT_EQ(pad.originalAmount(), c.opened);
  }
}

TEST(CalculateNumberPadView, keepsWhatIsTypedWhenDecimalsChange) {
  CalculateNumberPadView pad;
  std::vector<std::string> told;
  pad.click = [&](const std::string& display, double result) {
    told.push_back(fmt::format("{}:{}", display, result));
  };
  pad.setCurrency("KWD");
  pad.setOriginalAmount(10.125);
  for (const auto& key : keysOf("÷3")) press(pad, key);
  pad.setCurrency("JPY");
  pad.addDot();
  pad.addFive();
  pad.calculateField();
  EXPECT_EQ(told, (std::vector<std::string>{"10.125:10.125", "10.125/:10.125", "10.125/3:3.375", "10.125/3:3",
                                            "10.125/35:0", "0:0"}));
}

RC_GTEST_PROP(CalculateNumberPadView, noSequenceOfKeysBreaksItsState, ()) {
  static const std::regex kOperand(R"(-|∞|-∞|NaN|-?\d+(\.(\d*))?)");
  CalculateNumberPadView pad;
  std::pair<std::string, double> told;
  pad.click = [&](const std::string& display, double result) { told = {display, result}; };
  pad.setDecimalDigits(*rc::gen::inRange(0, CalculateNumberPadView::kMostDigits + 1));
  pad.setAutoFillDecimalEnable(*rc::gen::arbitrary<bool>());
  pad.setOriginalAmount(*rc::gen::element(0.0, 12.0, -7.0, 1e14, 1e300));
  const auto keys = *rc::gen::container<std::vector<std::string>>(rc::gen::elementOf(kPadKeys));
  for (const auto& key : keys) {
    press(pad, key);
    RC_LOG() << key << " -> " << pad.displayText() << '\n';
    RC_ASSERT(told.first == pad.displayText());
    RC_ASSERT(told.second == pad.resultAmount() || std::isnan(told.second));
    for (const auto& operand : {pad.leftOperand(), pad.rightOperand()}) {
      std::smatch parts;
      RC_ASSERT(operand.empty() || std::regex_match(operand, parts, kOperand));
      RC_ASSERT(operand.empty() || parts[2].length() <= pad.decimalDigits());
    }
    RC_ASSERT(pad.rightOperand().empty() || !pad.operatorText().empty());
    RC_ASSERT(pad.operatorText().empty() || (!pad.leftOperand().empty() && pad.leftOperand() != "-"));
    RC_ASSERT(!pad.rightOperand().starts_with('-'));
    auto evaluated = pad;
    evaluated.click = nullptr;
    evaluated.calculateField();
    const bool readsBack = shown(evaluated) == evaluated.displayText();
    RC_ASSERT(readsBack || evaluated.displayText().empty() || !std::isfinite(pad.resultAmount()));
    RC_ASSERT(evaluated.resultAmount() == pad.resultAmount() || std::isnan(pad.resultAmount()));
  }
  for (auto left = pad.displayText().size(); left > 0; --left) pad.del();
  RC_ASSERT(pad.displayText().empty());
  RC_ASSERT(pad.resultAmount() == 0);
}

/// a/b of whole numbers, halves away from zero.
std::int64_t rounded(std::int64_t a, std::int64_t b) {
  const auto size = (2 * std::abs(a) + std::abs(b)) / (2 * std::abs(b));
  return (a < 0) == (b < 0) ? size : -size;
}

RC_GTEST_PROP(AmountExpression, isReckonedFromLeftToRightInWholeCents, ()) {
  using Kind = AmountToken::Kind;
  const auto number = [](std::int64_t cents) {
    return AmountToken{Kind::number, static_cast<double>(cents) / 100, "", 2};
  };
  std::int64_t expected = *rc::gen::inRange(-99'999, 99'999);
  std::vector<AmountToken> tokens = {number(expected)};
  for (int i = *rc::gen::inRange(0, 4); i > 0; --i) {
    const auto kind = *rc::gen::element(Kind::add, Kind::subtract, Kind::multiply, Kind::divide);
    const std::int64_t cents = *rc::gen::inRange(1, 9'999);
    tokens.push_back({kind, 0, "", 0});
    tokens.push_back(number(cents));
    expected = kind == Kind::add        ? expected + cents
               : kind == Kind::subtract ? expected - cents
               : kind == Kind::multiply ? rounded(expected * cents, 100)
                                        : rounded(expected * 100, cents);
  }
  CalculateNumberPadView pad;
  pad.setAutoFillDecimalEnable(true);
  RC_ASSERT(pressed(pad, tokens).value() == static_cast<double>(expected) / 100);
  RC_ASSERT(pad.autoFillDecimalEnable());
}

TEST(AmountExpression, refusesBeforeAnyKeyIsPressed) {
  using Kind = AmountToken::Kind;
  CalculateNumberPadView pad;
  for (const AmountToken& bad : {AmountToken{Kind::number, 0.125, "0.125", 3},
                                 AmountToken{Kind::number, 123456789012345, "123456789012345.00", 2}}) {
    const auto result =
        pressed(pad, std::vector<AmountToken>{{Kind::number, 7, "7", 0}, {Kind::add, 0, "+", 0}, bad});
    ASSERT_FALSE(result) << bad.text;
    EXPECT_NE(result.error().why.find(bad.text), std::string::npos);
    EXPECT_EQ(pad.displayText(), "");
  }
}

}  // namespace
}  // namespace moniva
