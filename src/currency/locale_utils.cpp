#include "currency/locale_utils.h"

#include <unicode/locid.h>
#include <unicode/strenum.h>
#include <unicode/timezone.h>
#include <unicode/ucurr.h>
#include <unicode/unistr.h>

#include <array>
#include <memory>

#include "calendar/locale_name.h"

namespace moniva {
namespace {

constexpr std::string_view kWholeWorld = "001";
constexpr std::string_view kNoCurrency = "XXX";

icu::Locale knownLocale(std::string_view name) {
  return localeNamed(name).value_or(icu::Locale::getRoot());
}

/// The currency paid with in the locale's country; "" without one, and where none is (Antarctica has "XXX").
std::string currencyIn(const icu::Locale& locale) {
  if (*locale.getCountry() == '\0') return "";
  std::array<char16_t, 4> code{};
  UErrorCode status = U_ZERO_ERROR;
  const int32_t length = ucurr_forLocale(locale.getName(), code.data(), int32_t{4}, &status);
  if (U_FAILURE(status) || length != 3) return "";
  const std::string currency(code.begin(), code.begin() + length);
  return currency == kNoCurrency ? "" : currency;
}

std::map<std::string, std::string, std::less<>> makeZoneMap() {
  UErrorCode status = U_ZERO_ERROR;
  const std::unique_ptr<icu::StringEnumeration> zones(
      icu::TimeZone::createTimeZoneIDEnumeration(UCAL_ZONE_TYPE_ANY, nullptr, nullptr, status));
  std::map<std::string, std::string, std::less<>> currencies;
  std::map<std::string, std::string, std::less<>> ofCountries;
  while (U_SUCCESS(status)) {
    const icu::UnicodeString* zone = zones->snext(status);
    if (zone == nullptr) break;
    std::array<char, 4> country{};
    UErrorCode noCountry = U_ZERO_ERROR;
    icu::TimeZone::getRegion(*zone, country.data(), int32_t{4}, noCountry);
    if (U_FAILURE(noCountry) || country.data() == kWholeWorld) continue;
    auto [known, isNew] = ofCountries.try_emplace(country.data());
    if (isNew) known->second = currencyIn(icu::Locale("und", country.data()));
    std::string name;
    if (!known->second.empty()) currencies.emplace(zone->toUTF8String(name), known->second);
  }
  return currencies;
}

/// The currency of the time zone's country; "" where it has none.
std::string currencyOfZone(const std::string& zone) {
  const auto& known = LocaleUtils::timeZoneToCurrencyMap();
  const auto found = known.find(zone);
  return found == known.end() ? std::string() : found->second;
}

}  // namespace

std::string LocaleUtils::getCountryCode(std::string_view locale) {
  const std::string country = knownLocale(locale).getCountry();
  // Three digits are a part of the world: "es_419" is Latin America's Spanish.
  return country.size() == 2 ? country : "";
}

std::string LocaleUtils::getLanguageCode(std::string_view locale) {
  return knownLocale(locale).getLanguage();
}

std::string LocaleUtils::getCurrencyCode(std::string_view locale) {
  return currencyIn(knownLocale(locale));
}

std::string LocaleUtils::getCurrencySymbol(std::string_view locale) {
  const std::string code = getCurrencyCode(locale);
  return code.empty() ? code : symbolOfCurrency(locale, code);
}

const std::map<std::string, std::string, std::less<>>& LocaleUtils::timeZoneToCurrencyMap() {
  static const auto map = makeZoneMap();
  return map;
}

std::string LocaleUtils::currencyCodeFromSystemTimeZone(Platform& platform) {
  const std::string& zone = platform.calendar->zone();
  if (auto currency = currencyOfZone(zone); !currency.empty()) return currency;
  platform.log.line(fmt::format("警告：找不到时区 {} 对应的货币代码，使用默认货币 USD", zone));
  return "USD";
}

LocaleUtils::Guess LocaleUtils::guess(Platform& platform) {
  const icu::Locale locale = knownLocale(platform.calendar->locale());
  if (auto currency = currencyIn(locale); !currency.empty()) return {currency, Guess::By::locale};
  if (auto currency = currencyOfZone(platform.calendar->zone()); !currency.empty())
    return {currency, Guess::By::zone};
  icu::Locale likely = locale;
  UErrorCode status = U_ZERO_ERROR;
  likely.addLikelySubtags(status);
  if (*locale.getLanguage() != '\0' && U_SUCCESS(status)) {
    if (auto currency = currencyIn(likely); !currency.empty()) return {currency, Guess::By::language};
  }
  return {currencyCodeFromSystemTimeZone(platform), Guess::By::nothing};
}

}  // namespace moniva
