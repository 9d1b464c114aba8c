#include "exchange/journal_names.h"

#include <fmt/format.h>
#include <unicode/uchar.h>
#include <unicode/utf8.h>

#include <algorithm>

namespace moniva {

std::string journalText(std::string_view text) {
  std::string clean;
  clean.reserve(text.size());
  bool afterBlank = false;
  const auto* bytes = reinterpret_cast<const std::uint8_t*>(text.data());
  const auto length = static_cast<std::int32_t>(text.size());
  for (std::int32_t at = 0; at < length;) {
    UChar32 character = 0;
    const std::int32_t begin = at;
    U8_NEXT(bytes, at, length, character);
    if (character >= 0 && (u_isUWhiteSpace(character) != 0 || u_iscntrl(character) != 0)) {
      afterBlank = !clean.empty();
      continue;
    }
    if (afterBlank) clean += ' ';
    afterBlank = false;
    if (character < 0) {
      clean += "\uFFFD";
    } else if (character == ';') {
      clean += ',';
    } else {
      clean.append(text, static_cast<std::size_t>(begin), static_cast<std::size_t>(at - begin));
    }
  }
  return clean;
}

std::string journalSegment(std::string_view title) {
  std::string segment = journalText(title);
  std::ranges::replace(segment, ':', '-');
  return segment;
}

std::string journalCommodity(std::string_view code) {
  const auto isCapital = [](char c) { return c >= 'A' && c <= 'Z'; };
  if (!code.empty() && std::ranges::all_of(code, isCapital)) return std::string(code);
  std::string symbol = journalText(code);
  std::erase(symbol, '"');
  std::erase(symbol, '\\');
  // XXX is the code that stands for no currency.
  return symbol.empty() ? "XXX" : fmt::format("\"{}\"", symbol);
}

const std::string& JournalNames::below(const std::string& parent, std::string_view key,
                                       std::string_view title) {
  auto [given, isNew] = given_.try_emplace({parent, std::string(key)});
  if (!isNew) return given->second;
  const std::string above = parent.empty() ? parent : parent + ":";
  std::string plain = above + journalSegment(title);
  if (plain == above) plain += "Unnamed";
  given->second = plain;
  for (int n = 2; !taken_.insert(given->second).second; ++n) given->second = fmt::format("{} {}", plain, n);
  return given->second;
}

}  // namespace moniva
