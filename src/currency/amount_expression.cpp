#include "currency/amount_expression.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <utility>

namespace moniva {
namespace {

/// The key of an operator, and the end of the expression for none.
std::string_view operatorKey(AmountToken::Kind kind) {
  switch (kind) {
    case AmountToken::Kind::add:
      return "+";
    case AmountToken::Kind::subtract:
      return "-";
    case AmountToken::Kind::multiply:
      return "×";
    case AmountToken::Kind::divide:
      return "÷";
    case AmountToken::Kind::number:
      break;
  }
  return "=";
}

/// The digits of a number and its '.', without its sign.
std::string digitsOf(const AmountToken& number, int mostDecimals) {
  return fmt::format("{:.{}f}", std::abs(number.number), std::min(number.decimals, mostDecimals));
}

Result<> checkDigits(const CalculateNumberPadView& pad, const AmountToken& token) {
  if (decimalsThatCount(token) > pad.decimalDigits()) {
    return pad.decimalDigits() == 0
               ? refuse("'{}' has decimals, and there are none to calculate with", token.text)
               : refuse("'{}' has more decimals than the {} there are to calculate with", token.text,
                        pad.decimalDigits());
  }
  const std::string digits = digitsOf(token, pad.decimalDigits());
  const auto first = std::ranges::find_if(digits, [](char c) { return c >= '1' && c <= '9'; });
  if (std::count_if(first, digits.end(), [](char c) { return c != '.'; }) >
      CalculateNumberPadView::kMostSignificant) {
    return refuse("'{}' has more digits than can be calculated with", token.text);
  }
  return {};
}

}  // namespace

bool press(CalculateNumberPadView& pad, std::string_view key) {
  using Pad = CalculateNumberPadView;
  static constexpr std::pair<std::string_view, void (Pad::*)()> kKeys[] = {
      {"0", &Pad::addZero},        {"1", &Pad::addOne},   {"2", &Pad::addTwo}, {"3", &Pad::addThree},
      {"4", &Pad::addFour},        {"5", &Pad::addFive},  {"6", &Pad::addSix}, {"7", &Pad::addSeven},
      {"8", &Pad::addEight},       {"9", &Pad::addNine},  {"•", &Pad::addDot}, {"+", &Pad::add},
      {"-", &Pad::subtract},       {"×", &Pad::multiply}, {"÷", &Pad::divide}, {"⌫", &Pad::del},
      {"=", &Pad::calculateField}, {"C", &Pad::delLong},
  };
  const auto found = std::ranges::find(kKeys, key, &std::pair<std::string_view, void (Pad::*)()>::first);
  if (found == std::end(kKeys)) return false;
  (pad.*found->second)();
  return true;
}

int decimalsThatCount(const AmountToken& number) {
  const std::string text = digitsOf(number, number.decimals);
  const auto point = text.find('.');
  return point == std::string::npos ? 0 : static_cast<int>(text.find_last_not_of('0') - point);
}

Result<double> pressed(CalculateNumberPadView& pad, std::span<const AmountToken> tokens,
                       std::vector<KeypadStep>* steps) {
  for (const auto& token : tokens) {
    if (token.kind != AmountToken::Kind::number) continue;
    if (auto fits = checkDigits(pad, token); !fits) return tl::make_unexpected(fits.error());
  }
  const auto pressKey = [&](std::string_view key) {
    press(pad, key);
    if (steps) steps->push_back({std::string(key), pad.displayText(), pad.resultAmount()});
  };
  // Numbers typed with their points are no entry of a cash register.
  const bool filledUp = pad.autoFillDecimalEnable();
  pad.setAutoFillDecimalEnable(false);
  for (const auto& token : tokens) {
    if (token.kind != AmountToken::Kind::number) {
      pressKey(operatorKey(token.kind));
      continue;
    }
    if (std::signbit(token.number)) pressKey("-");
    for (const char c : digitsOf(token, pad.decimalDigits()))
      pressKey(c == '.' ? "•" : std::string_view(&c, 1));
  }
  pressKey("=");
  pad.setAutoFillDecimalEnable(filledUp);
  return pad.resultAmount();
}

}  // namespace moniva
