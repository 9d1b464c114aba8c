#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace moniva {

/// The program's own texts in the person's language. The English text is the key to its translation; what is
/// not translated stays English.
class Localization {
 public:
  virtual ~Localization() = default;

  /// The text in the person's language.
  virtual std::string localized(std::string_view text) const { return std::string(text); }
  /// Of a text that counts `n` things the form for that number: `one` or `many` in English.
  virtual std::string localized(std::string_view one, std::string_view many, std::int64_t n) const {
    return std::string(n == 1 ? one : many);
  }
  /// The language of the texts: "en", "de" or "zh-Hans".
  virtual std::string language() const { return "en"; }
};

/// What a currency is called in the language of the locale ("US Dollar"); its code when it has no name.
std::string currencyDisplayName(std::string_view code, std::string_view locale);
/// How the locale writes a currency, unlike all others ("US$" in Canada); the code itself where it has no
/// sign.
std::string symbolOfCurrency(std::string_view locale, std::string_view code);
/// The same without what tells it from others of that sign: "$" for CAD, "kr" for SEK.
std::string shortSymbolOfCurrency(std::string_view locale, std::string_view code);

}  // namespace moniva
