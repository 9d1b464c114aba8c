#include "model/title_order.h"

#include <unicode/uchar.h>
#include <unicode/uniset.h>
#include <unicode/usetiter.h>
#include <unicode/utf8.h>

#include <algorithm>
#include <array>

#include "base/text.h"
#include "model/order_string.h"

namespace moniva {
namespace {

icu::StringPiece piece(std::string_view text) {
  return {text.data(), static_cast<std::int32_t>(text.size())};
}

bool writesWith(const icu::Locale& locale, UScriptCode script) {
  std::array<UScriptCode, 8> scripts{};
  UErrorCode status = U_ZERO_ERROR;
  const auto count = uscript_getCode(locale.getName(), scripts.data(), scripts.size(), &status);
  return U_SUCCESS(status) &&
         std::find(scripts.begin(), scripts.begin() + count, script) != scripts.begin() + count;
}

/// The bytes that the sign at the beginning of the text takes, with the marks on it.
std::size_t firstSign(std::string_view text, UChar32& first) {
  const auto* bytes = reinterpret_cast<const std::uint8_t*>(text.data());
  const auto size = static_cast<std::int32_t>(text.size());
  std::int32_t end = 0;
  U8_NEXT(bytes, end, size, first);
  for (std::int32_t next = end; next < size; end = next) {
    UChar32 mark = 0;
    U8_NEXT(bytes, next, size, mark);
    if (mark < 0x300 || u_getCombiningClass(mark) == 0) break;
  }
  return static_cast<std::size_t>(end);
}

/// The bytes of the first signs of a text: as many as a language makes one letter of.
std::size_t signsOfOneLetter(std::string_view text) {
  constexpr int kMost = 3;
  std::size_t end = 0;
  UChar32 sign = 0;
  for (int i = 0; i < kMost && end < text.size(); ++i) end += firstSign(text.substr(end), sign);
  return end;
}

/// The plain letters that begin what a language orders as one letter.
std::string beginningsOfLetters(const icu::Collator& collator) {
  std::string letters;
  UErrorCode status = U_ZERO_ERROR;
  const std::unique_ptr<icu::UnicodeSet> tailored(collator.getTailoredSet(status));
  if (U_FAILURE(status) || tailored == nullptr) return letters;
  icu::UnicodeSetIterator each(*tailored);
  each.skipToStrings();
  while (each.next()) {
    const UChar32 first = each.getString().char32At(0);
    if (each.getString().countChar32() > 1 && first < 0x80) letters += static_cast<char>(first);
  }
  return letters;
}

}  // namespace

std::shared_ptr<const TitleOrder> TitleOrder::forLocale(const std::string& locale) {
  static std::mutex mutex;
  static std::map<std::string, std::shared_ptr<const TitleOrder>> kept;
  const std::scoped_lock lock(mutex);
  auto& order = kept[locale];
  if (!order) order = std::make_shared<TitleOrder>(locale);
  return order;
}

TitleOrder::TitleOrder(const std::string& locale) : locale_(icu::Locale::createFromName(locale.c_str())) {
  const std::string_view language = locale_.getLanguage();
  UErrorCode status = U_ZERO_ERROR;
  collator_.reset(icu::Collator::createInstance(locale_, status));
  if (U_FAILURE(status)) collator_.reset();
  if (collator_) unsettled_ = beginningsOfLetters(*collator_);
  // With its dot and without it is two letters.
  if (language == "tr" || language == "az") unsettled_ += 'i';
}

std::string TitleOrder::letterOf(std::string_view title) const {
  title = trimBlanks(title);
  if (title.empty()) return std::string(kNoLetter);
  UChar32 first = 0;
  std::size_t end = firstSign(title, first);
  if (first < 0 || !u_isalpha(first)) return std::string(kNoLetter);
  const bool isUnsettled = first < 0x80 && unsettled_.find(static_cast<char>(first)) != std::string::npos;
  if (end == 1 && !isUnsettled) return std::string(1, static_cast<char>(u_toupper(first)));
  if (isUnsettled) end = signsOfOneLetter(title);
  const std::string beginning(title.substr(0, end));
  const std::scoped_lock lock(mutex_);
  const auto [found, isNew] = known_.try_emplace(beginning);
  if (isNew) found->second = findLetter(beginning, first);
  return found->second;
}

std::string TitleOrder::findLetter(std::string_view beginning, UChar32 first) const {
  UErrorCode status = U_ZERO_ERROR;
  const auto script = uscript_getScript(first, &status);
  if (script == USCRIPT_HAN) {
    auto letter = pinyinFirstLetter(beginning);
    return letter.empty() ? std::string(kNoLetter) : letter;
  }
  std::string utf8;
  if (const Letters* letters = lettersOf(script)) {
    const auto* bucket =
        letters->getBucket(letters->getBucketIndex(icu::UnicodeString::fromUTF8(piece(beginning)), status));
    if (U_SUCCESS(status) && bucket != nullptr && bucket->getLabelType() == U_ALPHAINDEX_NORMAL)
      return bucket->getLabel().toUTF8String(utf8);
  }
  return icu::UnicodeString(u_totitle(first)).toUTF8String(utf8);
}

const TitleOrder::Letters* TitleOrder::lettersOf(UScriptCode script) const {
  const auto [found, isNew] = letters_.try_emplace(script);
  if (!isNew) return found->second.get();
  UErrorCode status = U_ZERO_ERROR;
  icu::Locale language = locale_;
  if (!writesWith(locale_, script)) {
    language = icu::Locale((std::string("und_") + uscript_getShortName(script)).c_str());
    language.addLikelySubtags(status);
    language = icu::Locale(language.getLanguage());
  }
  icu::AlphabeticIndex index(language, status);
  if (U_FAILURE(status)) return nullptr;
  found->second.reset(index.buildImmutableIndex(status));
  if (U_FAILURE(status)) found->second.reset();
  return found->second.get();
}

int TitleOrder::compare(std::string_view left, std::string_view right) const {
  if (!collator_) return left.compare(right) < 0 ? -1 : left.compare(right) > 0 ? 1 : 0;
  UErrorCode status = U_ZERO_ERROR;
  return collator_->compareUTF8(piece(left), piece(right), status);
}

}  // namespace moniva
