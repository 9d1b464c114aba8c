#pragma once

#include <unicode/locid.h>
#include <unicode/numberformatter.h>

#include <map>
#include <string>
#include <string_view>
#include <utility>

#include "base/result.h"

namespace moniva {

/// Amounts as a person of one locale reads them: the locale's digits and grouping, the currency's number of
/// decimals, halves rounded away from zero. Zero carries no sign, also when it was -0.001 before rounding.
/// A code that is no currency of ICU's ("POINTS", "") is shown as it stands after a two-decimal number.
/// What is not finite prints as the locale's "NaN" or "∞" without a currency.
///
/// Formatters are made once per currency and kept, so use one object from one thread at a time.
class AmountFormat {
 public:
  /// For a locale such as "de_DE", "pt-BR" or "en_US.UTF-8"; "C" and "POSIX" give the neutral format of no
  /// country. Refuses what `localeNamed` does.
  static Result<AmountFormat> make(std::string_view localeName);

  /// With the currency's symbol where the locale puts it: "$1,234.50", "1.234,50 €".
  std::string format(double amount, std::string_view currencyCode) const;
  /// The same with "+" before what is above zero.
  std::string formatSigned(double amount, std::string_view currencyCode) const;
  /// A number with as many decimals: "1,234.500".
  std::string formatNumber(double number, int decimals) const;
  /// A number with that many digits at most, and no more than it has: "0.9206", "1,234,570" of 1234567 with
  /// six.
  std::string formatSignificant(double number, int digits) const;
  /// Per cent with one decimal, "+" before what is above zero where `isSigned`: "49,7 %".
  std::string formatPercent(double percent, bool isSigned) const;
  /// With the currency's code instead of the symbol: "USD 1,234.50", "1.234,50 EUR".
  std::string formatWithCode(double amount, std::string_view currencyCode) const;
  /// The number alone, with the currency's decimals: "1,234.50".
  std::string formatPlain(double amount, std::string_view currencyCode) const;

 private:
  enum class Form { symbol, signedSymbol, code, plain };
  struct Formatter {
    icu::number::LocalizedNumberFormatter number;
    std::string suffix;  ///< the code, where ICU cannot place it
  };

  explicit AmountFormat(icu::Locale locale);
  std::string print(double amount, std::string_view currencyCode, Form form) const;
  /// A number without a currency, by the kept formatter of that precision.
  enum class Count { decimals, significantDigits };
  std::string printNumber(double number, Count count, int digits) const;
  Formatter build(std::string_view currencyCode, Form form) const;

  icu::Locale locale_;
  mutable std::map<std::string, Formatter, std::less<>> formatters_[4];  ///< by Form, then by code
  mutable std::map<std::pair<Count, int>, icu::number::LocalizedNumberFormatter> numbers_;
};

}  // namespace moniva
