#include "model/order_string.h"

#include <unicode/translit.h>
#include <unicode/uscript.h>

#include <algorithm>
#include <memory>
#include <mutex>

#include "base/text.h"

namespace moniva {
namespace {

icu::UnicodeString wideTitle(std::string_view title) {
  return icu::UnicodeString::fromUTF8(
      icu::StringPiece(title.data(), static_cast<std::int32_t>(title.size())));
}

/// The text in small Latin letters; what has none there stays.
std::string latin(icu::UnicodeString text) {
  // Made once: loading the rules costs milliseconds. A transliterator is not to be used by two threads at
  // once.
  static std::mutex mutex;
  static const std::unique_ptr<icu::Transliterator> toLatin = [] {
    UErrorCode status = U_ZERO_ERROR;
    return std::unique_ptr<icu::Transliterator>(
        icu::Transliterator::createInstance("Any-Latin; Latin-ASCII; Lower", UTRANS_FORWARD, status));
  }();
  if (toLatin) {
    const std::scoped_lock lock(mutex);
    toLatin->transliterate(text);
  }
  std::string utf8;
  return text.toUTF8String(utf8);
}

}  // namespace

std::string orderStringOf(std::string_view title) {
  // Most titles need no transliteration, and loading its rules costs more than a small import.
  if (std::ranges::all_of(title, [](unsigned char c) { return c < 0x80; })) {
    std::string lower(title);
    for (char& c : lower) {
      if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    }
    return lower;
  }
  return latin(wideTitle(title));
}

std::string pinyinFirstLetter(std::string_view title) {
  title = trimBlanks(title);
  if (title.empty() || static_cast<unsigned char>(title.front()) < 0x80U) return {};
  const UChar32 first = wideTitle(title.substr(0, 4)).char32At(0);
  UErrorCode status = U_ZERO_ERROR;
  if (uscript_getScript(first, &status) != USCRIPT_HAN) return {};
  const std::string reading = latin(icu::UnicodeString(first));
  if (reading.empty() || reading[0] < 'a' || reading[0] > 'z') return {};
  return std::string(1, static_cast<char>(reading[0] - 'a' + 'A'));
}

}  // namespace moniva
