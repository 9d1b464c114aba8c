#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "base/result.h"

/// The ways in which a text that is looked for may have been written, as patterns of LIKE.
namespace moniva {

/// Bytes a keyword may have at most: whatever its forms, the engine takes their patterns.
inline constexpr std::size_t kLongestKeyword = 16'000;

/// Refuses what cannot be looked for: blanks alone, a text longer than `kLongestKeyword`, one that is no
/// UTF-8 or has a NUL in it, behind which the engine would not look. An empty text is allowed.
Result<> checkKeyword(std::string_view keyword);

/// At most three forms of the keyword, the typed one first, none for an empty one: it in the other letter
/// case by the rules of the locale, in the other width ("ＡＢＣ" and "ABC") and in simplified or traditional
/// signs, where it has such forms, and in further cases ("Кофе" for "кофе") where there is room. LIKE does
/// not tell A to Z from a to z, so forms that differ in these alone are one.
std::vector<std::string> keywordForms(std::string_view keyword, const std::string& locale);

/// The pattern that a text containing `text` is like, with a backslash as the escape sign: "%", "_" and the
/// backslash stand for themselves.
std::string likePattern(std::string_view text);

/// Where one of the forms begins in the text and how many bytes it takes, of several the first; npos where
/// none does. As LIKE sees it.
std::pair<std::size_t, std::size_t> findForm(std::string_view text, const std::vector<std::string>& forms);

}  // namespace moniva
