#include "base/text.h"

#include <algorithm>
#include <array>

namespace moniva {
namespace {

constexpr std::array<std::string_view, 18> wideBlanks = {
    "\u00A0", "\u2000", "\u2001", "\u2002", "\u2003", "\u2004", "\u2005", "\u2006", "\u2007",
    "\u2008", "\u2009", "\u200A", "\u202F", "\u205F", "\u3000", "\uFEFF", "\u2028", "\u2029"};

constexpr bool isAsciiBlank(char c) {
  return c == ' ' || (c >= '\t' && c <= '\r');
}

constexpr bool continuesCharacter(char c) {
  return (static_cast<unsigned char>(c) & 0xC0U) == 0x80U;
}

std::size_t blankAtFront(std::string_view text) {
  if (isAsciiBlank(text.front())) return 1;
  if (static_cast<unsigned char>(text.front()) < 0x80U) return 0;
  for (const auto blank : wideBlanks) {
    if (text.starts_with(blank)) return blank.size();
  }
  return 0;
}

std::size_t blankAtBack(std::string_view text) {
  if (isAsciiBlank(text.back())) return 1;
  if (static_cast<unsigned char>(text.back()) < 0x80U) return 0;
  for (const auto blank : wideBlanks) {
    if (text.ends_with(blank)) return blank.size();
  }
  return 0;
}

}  // namespace

std::string_view trimBlanks(std::string_view text) {
  while (!text.empty()) {
    const auto blank = blankAtFront(text);
    if (blank == 0) break;
    text.remove_prefix(blank);
  }
  while (!text.empty()) {
    const auto blank = blankAtBack(text);
    if (blank == 0) break;
    text.remove_suffix(blank);
  }
  return text;
}

std::string excerpt(std::string_view text, std::size_t most) {
  std::string shown;
  std::size_t characters = 0;
  for (const char c : text) {
    if (!continuesCharacter(c) && characters++ == most) return shown + "…";
    shown += static_cast<unsigned char>(c) < 0x20U || c == '\x7F' ? ' ' : c;
  }
  return shown;
}

std::size_t characterCount(std::string_view text) {
  return static_cast<std::size_t>(
      std::count_if(text.begin(), text.end(), [](char c) { return !continuesCharacter(c); }));
}

}  // namespace moniva
