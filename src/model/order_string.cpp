#include <unicode/translit.h>

#include <algorithm>
#include <memory>
#include <mutex>

#include "model/mv_category.h"

namespace moniva {

std::string orderStringOf(std::string_view title) {
  // Most titles need no transliteration, and loading its rules costs more than a small import.
  if (std::ranges::all_of(title, [](unsigned char c) { return c < 0x80; })) {
    std::string lower(title);
    for (char& c : lower) {
      if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    }
    return lower;
  }
  // Made once: loading the rules costs milliseconds. A transliterator is not to be used by two threads at
  // once.
  static std::mutex mutex;
  static const std::unique_ptr<icu::Transliterator> toLatin = [] {
    UErrorCode status = U_ZERO_ERROR;
    return std::unique_ptr<icu::Transliterator>(
        icu::Transliterator::createInstance("Any-Latin; Latin-ASCII; Lower", UTRANS_FORWARD, status));
  }();
  icu::UnicodeString text =
      icu::UnicodeString::fromUTF8(icu::StringPiece(title.data(), static_cast<std::int32_t>(title.size())));
  if (toLatin) {
    const std::scoped_lock lock(mutex);
    toLatin->transliterate(text);
  }
  std::string utf8;
  return text.toUTF8String(utf8);
}

}  // namespace moniva
