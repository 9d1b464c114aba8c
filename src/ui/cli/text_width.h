#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace moniva {

/// Text as a terminal shows it: how many cells it takes, and cutting, filling and wrapping by cells. Names of
/// books and vendors come in every script; what a person sees as one sign (a letter with its accents, an
/// emoji made of several) is never taken apart. Wide East Asian signs and emoji take two cells.
///
/// Everything returned is safe to print: see printable().

/// The text as UTF-8 that cannot move the cursor, colour the screen or turn the reading direction around:
/// control characters appear as their pictures ("␛", "␊"), bytes that are no UTF-8 and signs that reorder or
/// break lines as "\uFFFD".
std::string printable(std::string_view text);

/// The text with bytes that are no UTF-8 replaced by "\uFFFD" and nothing else changed.
std::string wellFormedUtf8(std::string_view text);

/// Cells that printable(text) takes.
std::size_t displayWidth(std::string_view text);

/// The text followed by spaces up to `cells`; longer text is left as it is.
std::string padRight(std::string_view text, std::size_t cells);

/// The text after as many spaces as fill `cells`; longer text is left as it is.
std::string padLeft(std::string_view text, std::size_t cells);

/// The text when it fits in `cells`, otherwise as much of its beginning as leaves room for "…". The result is
/// never wider than `cells`; it is a cell narrower when a wide sign would not fit.
std::string truncateToWidth(std::string_view text, std::size_t cells);

/// The text in lines of at most `cells`, broken where its script allows; a word longer than a line is cut
/// between signs. Line feeds in the text begin new lines; spaces at line ends are dropped. At least one line.
std::vector<std::string> wrapToWidth(std::string_view text, std::size_t cells);

}  // namespace moniva
