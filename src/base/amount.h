#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "base/result.h"

namespace moniva {

/// Reads an amount as a person or a file writes it: digits, with an optional fraction after `decimalMark`
/// ('.' or ','), and optionally grouped in threes by the other mark, an apostrophe or a space (the no-break
/// and thin ones too). Blanks around it are allowed, ".5" too, and so is zero: callers decide on that one.
///
/// Refused, with a sentence that quotes the text: nothing at all, anything but the above (currency signs,
/// exponents, hexadecimal, "inf"), groups of another size, a sign, and more than 15 significant digits, for
/// which a double has no room. The locale of the process plays no part.
Result<double> parseAmount(std::string_view text, char decimalMark = '.');
/// The same for columns that give the direction by a sign: "-12.50", "+3", and U+2212 for the minus.
Result<double> parseSignedAmount(std::string_view text, char decimalMark = '.');

/// Digits a double has room for.
inline constexpr int kMostAmountDigits = 15;

/// How amounts are written somewhere.
struct AmountForm {
  std::string decimalMark = ".";
  std::string groupMark = ",";  ///< one beside apostrophes and spaces; "" for none
  int groupSize = 3;            ///< digits of the group before the decimal mark; 0 where nothing groups
  int furtherGroupSize = 3;     ///< digits of the groups before that
};

enum class AmountFault { none, empty, notDigits, badGroups, tooManyDigits };

/// A reading without a sentence, for who reads a text in several ways and expects some of them to fail.
struct AmountReading {
  double value = 0;
  AmountFault fault = AmountFault::none;
  int decimals = 0;  ///< digits after the mark, noughts at the end too
};

/// Reads as parseAmount does, in another form; with a sign where that is allowed.
AmountReading readAmount(std::string_view text, const AmountForm& form, bool withSign);

/// The sentences for a text that was not read; `decimalMark` is the one expected.
tl::unexpected<Refusal> refusalOfAmount(AmountFault fault, std::string_view text,
                                        std::string_view decimalMark);
/// The same for one that has a sign where none is allowed.
tl::unexpected<Refusal> refusalOfSign(std::string_view text);

/// How the fractions of a file are written, when a person says so.
enum class DecimalMark { automatic, point, comma };

/// Finds the decimal mark of a column from what stands in it. A text that is an amount with one mark only
/// ("12.50", "1 234,5") settles the question, one that is two different amounts ("1,234") leaves it open, and
/// one that is no amount either way says nothing.
class DecimalMarkSurvey {
 public:
  /// Takes one text of the column into account; a sign is allowed. `line` is where a message places it.
  void add(std::string_view text, std::size_t line);

  /// '.' or ','. A column without any mark has '.'. Refused when texts contradict each other or when all with
  /// a mark can be read both ways; the sentence names them and their lines.
  [[nodiscard]] Result<char> decide() const;

 private:
  struct Witness {
    std::string text;
    std::size_t line;
  };

  std::optional<Witness> point_;
  std::optional<Witness> comma_;
  std::optional<Witness> unclear_;
};

}  // namespace moniva
