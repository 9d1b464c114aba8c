#include "reports/keyword_forms.h"

#include <unicode/locid.h>
#include <unicode/translit.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>

#include <algorithm>
#include <map>
#include <memory>
#include <mutex>

#include "base/text.h"

namespace moniva {
namespace {

constexpr std::size_t kMostForms = 3;

icu::UnicodeString unicode(std::string_view text) {
  return icu::UnicodeString::fromUTF8({text.data(), static_cast<std::int32_t>(text.size())});
}

std::string utf8(const icu::UnicodeString& text) {
  std::string bytes;
  return text.toUTF8String(bytes);
}

bool isAscii(std::string_view text) {
  return std::ranges::all_of(text, [](char c) { return static_cast<unsigned char>(c) < 0x80U; });
}

char smallLetter(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool isSameToLike(char a, char b) {
  return smallLetter(a) == smallLetter(b);
}

/// The rules of that name, made once. Making the first takes the library ten milliseconds, so texts without
/// East Asian signs must not come here. Null where they cannot be had.
const icu::Transliterator* rulesNamed(const char* name) {
  static std::mutex mutex;
  static std::map<std::string, std::unique_ptr<const icu::Transliterator>, std::less<>> made;
  const std::scoped_lock lock(mutex);
  const auto [rules, isNew] = made.try_emplace(name);
  UErrorCode status = U_ZERO_ERROR;
  if (isNew) rules->second.reset(icu::Transliterator::createInstance(name, UTRANS_FORWARD, status));
  return rules->second.get();
}

std::string changedBy(const char* name, std::string_view text) {
  const auto* rules = rulesNamed(name);
  if (rules == nullptr) return std::string(text);
  icu::UnicodeString changed = unicode(text);
  rules->transliterate(changed);
  return utf8(changed);
}

bool isWide(UChar32 sign) {
  const int width = u_getIntPropertyValue(sign, UCHAR_EAST_ASIAN_WIDTH);
  return width == U_EA_FULLWIDTH || width == U_EA_WIDE;
}

/// Whether there is a sign of the text of which `is` holds.
template <class Is>
bool hasSign(const icu::UnicodeString& text, const Is& is) {
  for (std::int32_t at = 0; at < text.length(); at = text.moveIndex32(at, 1)) {
    if (is(text.char32At(at))) return true;
  }
  return false;
}

std::string fullWidthOfAscii(std::string_view text) {
  icu::UnicodeString wide;
  for (const char c : text) wide.append(c == ' ' ? u'\u3000' : static_cast<char16_t>(c - '!' + u'\uFF01'));
  return utf8(wide);
}

/// Full-width signs as half-width ones; of a text without such, all as full-width ones, or none.
std::string otherWidth(std::string_view text) {
  if (isAscii(text)) {
    const bool hasControl = std::ranges::any_of(text, [](char c) { return c < ' ' || c == '\x7F'; });
    return hasControl ? std::string(text) : fullWidthOfAscii(text);
  }
  const auto signs = unicode(text);
  if (!hasSign(signs, [](UChar32 sign) {
        return isWide(sign) || u_getIntPropertyValue(sign, UCHAR_EAST_ASIAN_WIDTH) == U_EA_HALFWIDTH;
      })) {
    return std::string(text);
  }
  auto half = changedBy("Fullwidth-Halfwidth", text);
  if (half != text) return half;
  auto full = changedBy("Halfwidth-Fullwidth", text);
  return hasSign(unicode(full), [](UChar32 sign) { return !isWide(sign); }) ? std::string(text) : full;
}

std::string otherScript(std::string_view text) {
  const auto isHan = [](UChar32 sign) { return u_hasBinaryProperty(sign, UCHAR_IDEOGRAPHIC) != 0; };
  if (isAscii(text) || !hasSign(unicode(text), isHan)) return std::string(text);
  auto simplified = changedBy("Traditional-Simplified", text);
  return simplified != text ? simplified : changedBy("Simplified-Traditional", text);
}

/// The text in letter cases that LIKE tells from its own; the nearest comes first: small letters, or capitals
/// where all are small already.
std::vector<std::string> otherCases(std::string_view text, const std::string& locale) {
  std::vector<std::string> cases;
  // LIKE knows the cases of ASCII letters, but not those of the two i of these languages.
  const std::string_view language = std::string_view(locale).substr(0, 2);
  if (isAscii(text) && language != "tr" && language != "az") return cases;
  const icu::Locale rules(locale.c_str());
  const auto typed = unicode(text);
  const auto lower = icu::UnicodeString(typed).toLower(rules);
  const auto first = icu::UnicodeString(typed, 0, typed.moveIndex32(0, 1)).toUpper(rules);
  const auto rest = icu::UnicodeString(lower).remove(0, lower.moveIndex32(0, 1));
  for (const auto& letters : {lower, icu::UnicodeString(typed).toUpper(rules), first + rest}) {
    auto form = utf8(letters);
    if (!std::ranges::equal(form, text, isSameToLike)) cases.push_back(std::move(form));
  }
  return cases;
}

/// A pattern differs from another where LIKE tells them apart.
void addForm(std::vector<std::string>& forms, const std::string& form) {
  const bool isKnown = std::ranges::any_of(
      forms, [&](const std::string& known) { return std::ranges::equal(known, form, isSameToLike); });
  if (!isKnown && forms.size() < kMostForms) forms.push_back(form);
}

}  // namespace

Result<> checkKeyword(std::string_view keyword) {
  if (keyword.empty()) return {};
  if (keyword.size() > kLongestKeyword) {
    return refuse("the text to look for has {} bytes; {} are the most", keyword.size(), kLongestKeyword);
  }
  if (trimBlanks(keyword).empty()) return refuse("the text to look for is blank");
  if (keyword.find('\0') != std::string_view::npos) return refuse("the text to look for has a NUL in it");
  if (utf8(unicode(keyword)) != keyword) return refuse("the text to look for is not UTF-8");
  return {};
}

std::vector<std::string> keywordForms(std::string_view keyword, const std::string& locale) {
  std::vector<std::string> forms;
  if (keyword.empty()) return forms;
  const auto cases = otherCases(keyword, locale);
  const auto width = otherWidth(keyword);
  forms.emplace_back(keyword);
  if (!cases.empty()) addForm(forms, cases.front());
  if (isAscii(keyword)) {
    for (const auto& form : cases) addForm(forms, form);
  }
  addForm(forms, width);
  addForm(forms, otherScript(keyword));
  for (const auto& form : cases) addForm(forms, form);
  for (const auto& form : otherCases(width, locale)) addForm(forms, form);
  return forms;
}

std::string likePattern(std::string_view text) {
  std::string pattern = "%";
  for (const char c : text) {
    if (c == '%' || c == '_' || c == '\\') pattern += '\\';
    pattern += c;
  }
  return pattern += '%';
}

std::pair<std::size_t, std::size_t> findForm(std::string_view text, const std::vector<std::string>& forms) {
  std::pair<std::size_t, std::size_t> first{std::string_view::npos, 0};
  for (const std::string& form : forms) {
    const auto at = std::search(text.begin(), text.end(), form.begin(), form.end(), isSameToLike);
    const auto place = static_cast<std::size_t>(at - text.begin());
    if (!form.empty() && at != text.end() && place < first.first) first = {place, form.size()};
  }
  return first;
}

}  // namespace moniva
