#include "platform/localization.h"

#include <unicode/ucurr.h>
#include <unicode/unistr.h>

namespace moniva {

std::string currencyDisplayName(std::string_view code, std::string_view locale) {
  const auto wide =
      icu::UnicodeString::fromUTF8(icu::StringPiece(code.data(), static_cast<std::int32_t>(code.size())));
  std::int32_t length = 0;
  UErrorCode status = U_ZERO_ERROR;
  icu::UnicodeString terminated(wide);
  const char16_t* name = ucurr_getName(terminated.getTerminatedBuffer(), std::string(locale).c_str(),
                                       UCURR_LONG_NAME, nullptr, &length, &status);
  if (U_FAILURE(status) || name == nullptr) return std::string(code);
  std::string utf8;
  return icu::UnicodeString(name, length).toUTF8String(utf8);
}

}  // namespace moniva
