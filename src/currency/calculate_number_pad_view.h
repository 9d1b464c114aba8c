#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

#include "platform/user_defaults.h"

namespace moniva {

/// The keypad amounts are typed on, which is a calculator of four functions too: its keys, its state, what it
/// shows and what that comes to. The look of it is a front end's.
///
/// The expression is three texts: the left operand, the operator ("+", "-", "*", "/" or none) and the right
/// operand; operands are written with '.' whatever the locale. It is evaluated strictly from left to right,
/// one operation at a time: 2+3×4 gives 20.
class CalculateNumberPadView {
 public:
  static constexpr int kMostDigits = 6;
  /// Digits of a number a double keeps; none is taken beyond them.
  static constexpr std::ptrdiff_t kMostSignificant = 15;
  static constexpr std::string_view kAutoFillKey = "AutoFillDecimalDot";
  static constexpr std::string_view kStyleKey = "numberKeypadStyle";

  /// Called after every change with the display text and the value.
  std::function<void(const std::string& display, double result)> click;
  /// Called for every key pressed.
  std::function<void()> clickSound;

  CalculateNumberPadView() = default;
  /// With the settings "AutoFillDecimalDot" and "numberKeypadStyle" of the device.
  explicit CalculateNumberPadView(const UserDefaults& defaults);

  /// Opens the keypad with an amount; zero is an empty left operand.
  void setOriginalAmount(double amount);
  /// A currency's code; sets the decimals it is counted in.
  void setCurrency(std::string_view code);
  /// 0 to kMostDigits; what is beyond is taken for the nearest of them.
  void setDecimalDigits(int digits);
  void setAutoFillDecimalEnable(bool enable) { autoFillDecimalEnable_ = enable; }

  /// A digit, 0 to 9; other numbers do nothing.
  void addNumber(int digit);
  void addZero() { addNumber(0); }
  void addOne() { addNumber(1); }
  void addTwo() { addNumber(2); }
  void addThree() { addNumber(3); }
  void addFour() { addNumber(4); }
  void addFive() { addNumber(5); }
  void addSix() { addNumber(6); }
  void addSeven() { addNumber(7); }
  void addEight() { addNumber(8); }
  void addNine() { addNumber(9); }
  void addDot();
  void add();
  void subtract();
  void multiply();
  void divide();
  void del();
  /// Clears the whole expression.
  void delLong();

  /// Evaluates the expression: its value becomes the left operand.
  void calculateField();
  /// Works the value out anew and tells `click`.
  void updateResultString();

  /// The digits of an operand with the point before the last `decimalDigits` of them: "5" is "0.05".
  std::string addDecimal(std::string_view operand) const;
  /// A result as an operand: without a fraction where it has none, else with `decimalDigits` decimals, halves
  /// away from zero.
  std::string removeUselessDecimalZero(double value) const;
  bool decimalDigitsIsFull(std::string_view operand) const;

  std::string displayText() const { return left_ + operator_ + right_; }
  double resultAmount() const { return resultAmount_; }
  double originalAmount() const { return originalAmount_; }
  int decimalDigits() const { return decimalDigits_; }
  bool autoFillDecimalEnable() const { return autoFillDecimalEnable_; }
  const std::string& currency() const { return currency_; }
  const std::string& leftOperand() const { return left_; }
  const std::string& operatorText() const { return operator_; }
  const std::string& rightOperand() const { return right_; }
  int numberKeyboardType() const { return numberKeyboardType_; }

 private:
  void clickKey() const;
  /// The value of the expression becomes the left operand.
  void evaluate();
  std::string& operand() { return operator_.empty() ? left_ : right_; }
  void setOperator(char sign);
  /// What the expression comes to, and what of that is told: as evaluating leaves it.
  double combined() const;
  double value() const;

  std::string left_;
  std::string operator_;
  std::string right_;
  double resultAmount_ = 0;
  double originalAmount_ = 0;
  int decimalDigits_ = 2;
  std::string currency_;
  bool autoFillDecimalEnable_ = false;
  int numberKeyboardType_ = 0;
};

}  // namespace moniva
