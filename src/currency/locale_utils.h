#pragma once

#include <map>
#include <string>
#include <string_view>

#include "platform/platform.h"

namespace moniva {

/// What ICU knows of a locale and of time zones. A locale is given by name ("de_DE", "en-US"); that of the
/// user is `platform.calendar->locale()`.
class LocaleUtils {
 public:
  /// "DE"; "" for a locale without a country.
  static std::string getCountryCode(std::string_view locale);
  /// "de"; "" for the neutral one.
  static std::string getLanguageCode(std::string_view locale);
  /// The currency of the locale's country; "" without one.
  static std::string getCurrencyCode(std::string_view locale);
  /// How the locale writes that currency: "€"; "" without one.
  static std::string getCurrencySymbol(std::string_view locale);

  /// The currency of its country for each time zone name that has one, former names too; made once.
  static const std::map<std::string, std::string, std::less<>>& timeZoneToCurrencyMap();
  /// The currency of the user's time zone's country; "USD", with a line in the log, where it has none.
  static std::string currencyCodeFromSystemTimeZone(Platform& platform);

  /// The currency a person most likely counts in: of the locale's country, else of the time zone's, else of
  /// the country most speakers of the language live in, else US dollars.
  static std::string guessedCurrency(Platform& platform) { return guess(platform).code; }
  /// The same with what it goes by.
  struct Guess {
    enum class By { locale, zone, language, nothing };
    std::string code;
    By by;
  };
  static Guess guess(Platform& platform);
};

}  // namespace moniva
