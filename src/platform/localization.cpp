#include "platform/localization.h"

#include <unicode/ucurr.h>
#include <unicode/unistr.h>

#include "calendar/locale_name.h"

namespace moniva {
namespace {

/// What ICU answers for a code it does not know lies in the text asked with, so that has to live on.
std::string nameOfCurrency(std::string_view code, const std::string& locale, UCurrNameStyle style) {
  auto wide = icu::UnicodeString::fromUTF8({code.data(), static_cast<std::int32_t>(code.size())});
  std::int32_t length = 0;
  UErrorCode status = U_ZERO_ERROR;
  const char16_t* name =
      ucurr_getName(wide.getTerminatedBuffer(), locale.c_str(), style, nullptr, &length, &status);
  if (U_FAILURE(status) || name == nullptr) return std::string(code);
  std::string text;
  return icu::UnicodeString(name, length).toUTF8String(text);
}

}  // namespace

std::string currencyDisplayName(std::string_view code, std::string_view locale) {
  return nameOfCurrency(code, std::string(locale), UCURR_LONG_NAME);
}

std::string symbolOfCurrency(std::string_view locale, std::string_view code) {
  const auto known = localeNamed(locale);
  return nameOfCurrency(code, known ? known->getName() : "", UCURR_SYMBOL_NAME);
}

std::string shortSymbolOfCurrency(std::string_view locale, std::string_view code) {
  const auto known = localeNamed(locale);
  return nameOfCurrency(code, known ? known->getName() : "", UCURR_NARROW_SYMBOL_NAME);
}

}  // namespace moniva
