#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "base/amount.h"
#include "base/result.h"

namespace moniva {

/// One operand or operator of an amount as typed: "12.50", "+", "3", "×", "4".
struct AmountToken {
  enum class Kind { number, add, subtract, multiply, divide };
  Kind kind = Kind::number;
  double number = 0;  ///< of a number
  std::string text;   ///< as typed
  int decimals = 0;   ///< of a number: digits after its mark, noughts at the end too
};

/// Whether the sign only says in which direction text runs; amounts are printed with some, and read without.
bool isDirectionMark(char32_t c);

/// Reads amounts as people of one locale type them: its decimal mark, its separators of thousands, its
/// digits. Plain digits with '.' before a fraction and nothing between thousands are understood in every
/// locale. What may be two different numbers ("1.234" in German) is refused, with both.
class AmountReader {
 public:
  /// For a locale such as "de_DE"; the neutral one for a name nobody knows.
  explicit AmountReader(std::string_view localeName);

  /// An amount without a sign; refusals as of parseAmount.
  Result<double> read(std::string_view text) const;
  /// The same with a sign.
  Result<double> readSigned(std::string_view text) const;

  /// Whether the text is more than one number: has an operator behind its first sign.
  bool isExpression(std::string_view text) const;
  /// The numbers and operators ("+", "-", "−", "*", "×", "/", "÷") of an expression, in turn, a number first
  /// and last; a number that begins the text may have a sign. Refused, with the place, for anything else.
  Result<std::vector<AmountToken>> tokens(std::string_view text) const;

  /// The decimal mark of the locale, in UTF-8.
  const std::string& decimalMark() const { return decimalMark_; }

 private:
  /// A way in which the locale's people write numbers.
  struct Form {
    std::string decimalMark;
    std::string groupMark;
    int groupSize;
    int furtherGroupSize;
  };

  void addForm(std::string decimalMark, std::string groupMark, int groupSize, int furtherGroupSize);
  AmountReading readAs(const Form& form, std::string_view digits, bool withSign) const;
  Result<AmountToken> number(std::string_view text, bool withSign) const;
  tl::unexpected<Refusal> refusalOf(std::string_view text, std::string_view digits, bool withSign) const;
  std::string written(const AmountReading& reading) const;

  std::string decimalMark_;
  std::vector<Form> forms_;  ///< the locale's own first
};

}  // namespace moniva
