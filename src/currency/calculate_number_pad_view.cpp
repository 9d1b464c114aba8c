#include "currency/calculate_number_pad_view.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <iterator>
#include <limits>

#include "base/decimal.h"
#include "currency/currency_codes.h"

namespace moniva {
namespace {

constexpr std::string_view kInfinity = "∞";
constexpr std::string_view kNegativeInfinity = "-∞";
constexpr std::string_view kNoNumber = "NaN";

bool isDigit(char c) {
  return c >= '0' && c <= '9';
}

bool isOutOfRange(std::string_view operand) {
  return operand == kInfinity || operand == kNegativeInfinity || operand == kNoNumber;
}

/// The value of an operand; what has no digit yet is 0, and 0 has no sign.
double valueOfOperand(std::string_view operand) {
  if (operand == kInfinity) return std::numeric_limits<double>::infinity();
  if (operand == kNegativeInfinity) return -std::numeric_limits<double>::infinity();
  if (operand == kNoNumber) return std::numeric_limits<double>::quiet_NaN();
  double value = 0;
  std::from_chars(operand.data(), operand.data() + operand.size(), value);
  return value + 0.0;
}

std::ptrdiff_t significantDigits(std::string_view operand) {
  const auto first = std::ranges::find_if(operand, [](char c) { return c >= '1' && c <= '9'; });
  return std::count_if(first, operand.end(), isDigit);
}

/// A setting that is a number or a yes or no; 0 for what is neither.
int settingOf(const UserDefaults& defaults, std::string_view key) {
  const auto value = defaults.objectForKey(key);
  if (!value) return 0;
  if (const bool* isOn = value->if_bool()) return *isOn ? 1 : 0;
  const std::int64_t* number = value->if_int64();
  return number ? static_cast<int>(std::clamp<std::int64_t>(*number, 0, 1000)) : 0;
}

}  // namespace

CalculateNumberPadView::CalculateNumberPadView(const UserDefaults& defaults)
    : autoFillDecimalEnable_(settingOf(defaults, kAutoFillKey) != 0),
      numberKeyboardType_(settingOf(defaults, kStyleKey)) {}

void CalculateNumberPadView::setOriginalAmount(double amount) {
  left_ = amount == 0 ? "" : removeUselessDecimalZero(amount);
  operator_.clear();
  right_.clear();
  originalAmount_ = amount;
  resultAmount_ = amount + 0.0;
  if (click) click(displayText(), resultAmount_);
}

void CalculateNumberPadView::setCurrency(std::string_view code) {
  currency_ = code;
  setDecimalDigits(currencyDigits(code));
}

void CalculateNumberPadView::setDecimalDigits(int digits) {
  digits = std::clamp(digits, 0, kMostDigits);
  if (digits == decimalDigits_) return;
  decimalDigits_ = digits;
  // What the two operands come to is rounded to the decimals there are now.
  if (!right_.empty()) updateResultString();
}

void CalculateNumberPadView::addNumber(int digit) {
  if (digit < 0 || digit > 9) return;
  clickKey();
  std::string& number = operand();
  const bool beginsAnew = isOutOfRange(number);
  if (!beginsAnew) {
    if (significantDigits(number) >= kMostSignificant) return;
    if (!autoFillDecimalEnable_ && decimalDigitsIsFull(number)) return;
  }
  if (beginsAnew) number.clear();
  if (number == "0" || number == "-0") number.pop_back();
  number += static_cast<char>('0' + digit);
  if (autoFillDecimalEnable_) number = addDecimal(number);
  updateResultString();
}

void CalculateNumberPadView::addDot() {
  clickKey();
  std::string& number = operand();
  if (decimalDigits_ == 0 || number.find('.') != std::string::npos) return;
  if (isOutOfRange(number)) number.clear();
  number += number.empty() || number == "-" ? "0." : ".";
  updateResultString();
}

void CalculateNumberPadView::add() {
  setOperator('+');
}

void CalculateNumberPadView::subtract() {
  setOperator('-');
}

void CalculateNumberPadView::multiply() {
  setOperator('*');
}

void CalculateNumberPadView::divide() {
  setOperator('/');
}

void CalculateNumberPadView::setOperator(char sign) {
  clickKey();
  if (left_ == "-" || (left_.empty() && sign != '-')) return;
  if (left_.empty()) {
    left_ = "-";
  } else {
    if (!right_.empty()) evaluate();
    operator_ = sign;
  }
  updateResultString();
}

void CalculateNumberPadView::del() {
  clickKey();
  if (left_.empty()) return;
  if (!right_.empty()) {
    right_.pop_back();
  } else if (!operator_.empty()) {
    operator_.clear();
  } else if (isOutOfRange(left_)) {
    left_.clear();
  } else {
    left_.pop_back();
  }
  updateResultString();
}

void CalculateNumberPadView::delLong() {
  clickKey();
  if (left_.empty()) return;
  left_.clear();
  operator_.clear();
  right_.clear();
  updateResultString();
}

void CalculateNumberPadView::calculateField() {
  if (left_.empty()) return;
  evaluate();
  updateResultString();
}

void CalculateNumberPadView::updateResultString() {
  resultAmount_ = value();
  if (click) click(displayText(), resultAmount_);
}

std::string CalculateNumberPadView::addDecimal(std::string_view operand) const {
  if (isOutOfRange(operand)) return std::string(operand);
  std::string digits;
  std::ranges::copy_if(operand, std::back_inserter(digits), isDigit);
  digits.erase(0, digits.find_first_not_of('0'));
  const auto decimals = static_cast<std::size_t>(decimalDigits_);
  if (digits.size() < decimals + 1) digits.insert(0, decimals + 1 - digits.size(), '0');
  if (decimals > 0) digits.insert(digits.size() - decimals, ".");
  return operand.starts_with('-') ? "-" + digits : digits;
}

std::string CalculateNumberPadView::removeUselessDecimalZero(double value) const {
  if (std::isnan(value)) return std::string(kNoNumber);
  if (std::isinf(value)) return std::string(value > 0 ? kInfinity : kNegativeInfinity);
  // Fifteen digits of it, without what arithmetic left behind them; larger ones have no fraction that counts.
  const auto size = Decimal::of(std::abs(value));
  if (!size) return fmt::format("{:.0f}", std::round(value));
  std::string text = size->text(0);
  if (text.find('.') != std::string::npos)
    text = fmt::format("{:.{}f}", rounded(std::abs(value), decimalDigits_), decimalDigits_);
  const bool isZero = text.find_first_of("123456789") == std::string::npos;
  return value < 0 && !isZero ? "-" + text : text;
}

bool CalculateNumberPadView::decimalDigitsIsFull(std::string_view operand) const {
  const auto point = operand.find('.');
  return point != std::string_view::npos && operand.size() - point > static_cast<std::size_t>(decimalDigits_);
}

void CalculateNumberPadView::clickKey() const {
  if (clickSound) clickSound();
}

void CalculateNumberPadView::evaluate() {
  left_ = removeUselessDecimalZero(combined());
  operator_.clear();
  right_.clear();
}

double CalculateNumberPadView::value() const {
  return right_.empty() ? combined() : valueOfOperand(removeUselessDecimalZero(combined()));
}

double CalculateNumberPadView::combined() const {
  const double left = valueOfOperand(left_);
  if (right_.empty()) return left;
  const double right = valueOfOperand(right_);
  switch (operator_.front()) {
    case '+':
      return left + right;
    case '-':
      return left - right;
    case '*':
      return left * right;
    default:
      return left / right;
  }
}

}  // namespace moniva
