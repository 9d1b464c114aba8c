#include "currency/locale_utils.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "currency/currency_manager.h"
#include "currency/support.h"

namespace moniva {
namespace {

TEST(LocaleUtils, knowsTheMoneyOfALocale) {
  const struct {
    const char* locale;
    const char* country;
    const char* language;
    const char* currency;
    const char* symbol;
    const char* why;
  } cases[] = {
      {"de-AT", "AT", "de", "EUR", "€", "BCP 47"},
      {"en_GB.UTF-8", "GB", "en", "GBP", "£", "with an encoding"},
      {"zh_Hans_CN", "CN", "zh", "CNY", "¥", "with a script"},
      {"en_CA", "CA", "en", "CAD", "$", "its own dollar"},
      {"fr_CA", "CA", "fr", "CAD", "$", "in the other language"},
      {"ja", "", "ja", "", "", "a language alone"},
      {"es_419", "", "es", "", "", "a part of the world"},
      {"C", "", "", "", "", "the portable locale is not America's"},
      {"what?", "", "", "", "", "no locale"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(LocaleUtils::getCountryCode(c.locale), c.country) << c.why;
    EXPECT_EQ(LocaleUtils::getLanguageCode(c.locale), c.language) << c.why;
    EXPECT_EQ(LocaleUtils::getCurrencyCode(c.locale), c.currency) << c.why;
    EXPECT_EQ(LocaleUtils::getCurrencySymbol(c.locale), c.symbol) << c.why;
  }
  EXPECT_EQ(symbolOfCurrency("en_CA", "USD"), "US$") << "never the sign of another";
}

TEST(LocaleUtils, guessesFromCountryThenZoneThenLanguage) {
  const struct {
    const char* locale;
    const char* zone;
    const char* guess;
    const char* ofZone;
    const char* why;
  } cases[] = {
      {"de_CH", "Europe/Berlin", "CHF", "EUR", "the country comes first"},
      {"en_US_POSIX", "Asia/Tokyo", "JPY", "JPY", "no country: the zone's"},
      {"en", "Europe/Berlin", "EUR", "EUR", "English of no country, which is for who says none"},
      {"en", "Asia/Calcutta", "INR", "INR", "a former name of a zone"},
      {"ja", "UTC", "JPY", "USD", "no zone's country: where the language is spoken"},
      {"en_US_POSIX", "Etc/GMT+5", "USD", "USD", "nothing to go by"},
  };
  for (const auto& c : cases) {
    Machine machine(c.zone, c.locale);
    EXPECT_EQ(LocaleUtils::guessedCurrency(machine.platform), c.guess) << c.why;
    EXPECT_EQ(LocaleUtils::currencyCodeFromSystemTimeZone(machine.platform), c.ofZone) << c.why;
  }
  Machine nowhere("Etc/UTC", "de_DE");
  LocaleUtils::currencyCodeFromSystemTimeZone(nowhere.platform);
  EXPECT_EQ(nowhere.logged(), "警告：找不到时区 Etc/UTC 对应的货币代码，使用默认货币 USD\n");
}

TEST(LocaleUtils, everyPlacesZoneHasMoney) {
  const auto& map = LocaleUtils::timeZoneToCurrencyMap();
  EXPECT_GT(map.size(), 500U);
  EXPECT_FALSE(map.contains("Antarctica/Troll") || map.contains("Etc/UTC"));
  const auto all = CurrencyManager::currenciesInTender({1.7e9});
  for (const auto& [zone, code] : map)
    EXPECT_TRUE(std::binary_search(all.begin(), all.end(), code)) << zone << ": " << code;
}

TEST(Currencies, inTenderAreThoseToPickFrom) {
  const auto now = CurrencyManager::currenciesInTender({1.7e9});
  const auto& without = CurrencyManager::noDecimalDigitsCurrencies();
  const auto has = [](const std::vector<std::string>& codes, const char* code) {
    return std::binary_search(codes.begin(), codes.end(), code);
  };
  for (const char* code : {"USD", "EUR", "GBP", "INR", "KWD", "XOF", "CNY"})
    EXPECT_TRUE(has(now, code)) << code;
  for (const char* code : {"DEM", "XXX", "XTS", "XAU", "XDR", "CHE", "HRK"})
    EXPECT_FALSE(has(now, code)) << code;
  EXPECT_TRUE(has(CurrencyManager::availableCurrencies(), "DEM"));
  EXPECT_TRUE(has(without, "JPY") && !has(without, "EUR"));
}

}  // namespace
}  // namespace moniva
