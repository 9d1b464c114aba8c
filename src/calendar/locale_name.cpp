#include "calendar/locale_name.h"

#include <unicode/ucal.h>
#include <unicode/uchar.h>
#include <unicode/uenum.h>

#include <algorithm>
#include <memory>

namespace moniva {
namespace {

constexpr std::size_t kLongestName = 120;

bool isWritable(char c) {
  const bool letter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
  return letter || (c >= '0' && c <= '9') || std::string_view("_-@=;").find(c) != std::string_view::npos;
}

/// "en_US.UTF-8@euro" names a character set too, which means nothing here.
std::string withoutCharacterSet(std::string_view typed) {
  const auto dot = typed.find('.');
  if (dot == std::string_view::npos) return std::string(typed);
  const auto at = typed.find('@', dot);
  return std::string(typed.substr(0, dot)).append(at == std::string_view::npos ? "" : typed.substr(at));
}

icu::Locale parsed(const std::string& name) {
  if (name == "C" || name == "POSIX") return icu::Locale::createCanonical("en_US_POSIX");
  if (name.find('-') == std::string::npos || name.find('@') != std::string::npos)
    return icu::Locale::createCanonical(name.c_str());
  UErrorCode status = U_ZERO_ERROR;
  icu::Locale locale = icu::Locale::forLanguageTag(name, status);
  if (U_FAILURE(status)) locale.setToBogus();
  return locale;
}

bool isKnownCountry(const icu::Locale& locale) {
  const std::string_view country = locale.getCountry();
  const auto isDigit = [](char c) { return c >= '0' && c <= '9'; };
  // A region of the world ("es_419" is Latin America) is three digits.
  const bool region = country.size() == 3 && std::all_of(country.begin(), country.end(), isDigit);
  return country.empty() || region || *locale.getISO3Country() != '\0';
}

bool isKnownScript(const icu::Locale& locale) {
  return *locale.getScript() == '\0' ||
         u_getPropertyValueEnum(UCHAR_SCRIPT, locale.getScript()) != UCHAR_INVALID_CODE;
}

bool isKnownCalendar(const std::string& calendar) {
  UErrorCode status = U_ZERO_ERROR;
  const std::unique_ptr<UEnumeration, decltype(&uenum_close)> known(
      ucal_getKeywordValuesForLocale("calendar", "root", false, &status), &uenum_close);
  while (U_SUCCESS(status)) {
    const char* name = uenum_next(known.get(), nullptr, &status);
    if (name == nullptr) break;
    if (calendar == name) return true;
  }
  return false;
}

}  // namespace

Result<std::string> localeName(std::string_view typed) {
  const auto unknown = [&](const Phrase& what) {
    return refuse("'{}' is not a known locale: {}; one looks like 'en_US' or 'de-DE'", typed, what);
  };
  const std::string name = withoutCharacterSet(typed.substr(0, kLongestName));
  if (typed.empty()) return unknown("it is empty");
  if (name.empty() || typed.size() > kLongestName || !std::all_of(name.begin(), name.end(), isWritable))
    return unknown("it is not written like one");

  const icu::Locale locale = parsed(name);
  if (locale.isBogus()) return unknown("it is not written like one");
  if (*locale.getLanguage() == '\0' || *locale.getISO3Language() == '\0')
    return unknown("there is no such language");
  if (!isKnownScript(locale)) return unknown("there is no such script");
  if (!isKnownCountry(locale)) return unknown("there is no such country");

  UErrorCode status = U_ZERO_ERROR;
  const auto calendar = locale.getKeywordValue<std::string>("calendar", status);
  if (U_SUCCESS(status) && !calendar.empty() && !isKnownCalendar(calendar))
    return unknown("there is no such calendar");
  return std::string(locale.getName());
}

Result<icu::Locale> localeNamed(std::string_view typed) {
  return localeName(typed).map([](const std::string& name) {
    const icu::Locale locale(name.c_str());
    return std::string_view(locale.getVariant()) == "POSIX" ? icu::Locale::getRoot() : locale;
  });
}

}  // namespace moniva
