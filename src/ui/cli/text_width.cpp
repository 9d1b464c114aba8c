#include "ui/cli/text_width.h"

#include <unicode/brkiter.h>
#include <unicode/locid.h>
#include <unicode/uchar.h>
#include <unicode/utext.h>
#include <unicode/utf8.h>

#include <algorithm>
#include <cstdint>
#include <memory>

namespace moniva {
namespace {

constexpr std::string_view replacement = "\uFFFD";
constexpr std::string_view ellipsis = "…";
constexpr UChar32 emojiPresentation = 0xFE0F;

bool isPlainAscii(std::string_view text) {
  return std::all_of(text.begin(), text.end(), [](char c) { return c >= ' ' && c <= '~'; });
}

// ICU's macro narrows bytes in ways our warnings refuse.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wconversion"
#pragma GCC diagnostic ignored "-Wsign-conversion"
#pragma GCC diagnostic ignored "-Wold-style-cast"
/// The code point at `at`, which moves behind it; negative where the bytes are no UTF-8.
UChar32 nextCodePoint(std::string_view text, int32_t& at) {
  UChar32 point = 0;
  U8_NEXT(text.data(), at, static_cast<int32_t>(text.size()), point);
  return point;
}
#pragma GCC diagnostic pop

/// Calls `take(codePoint, bytes)` for each code point; it is negative where the bytes are no UTF-8.
template <class Take>
void forEachCodePoint(std::string_view text, Take take) {
  const auto length = static_cast<int32_t>(text.size());
  for (int32_t at = 0; at < length;) {
    const int32_t begin = at;
    const UChar32 point = nextCodePoint(text, at);
    take(point, text.substr(static_cast<std::size_t>(begin), static_cast<std::size_t>(at - begin)));
  }
}

/// Signs that a terminal may act upon although they are no control characters: line and paragraph
/// separators, and those that override the direction of what follows, beyond the text they stand in.
bool disturbsTheLine(UChar32 point) {
  return point == 0x2028 || point == 0x2029 || (point >= 0x202A && point <= 0x202E) ||
         (point >= 0x2066 && point <= 0x2069);
}

std::size_t codePointWidth(UChar32 point) {
  switch (u_charType(point)) {
    case U_NON_SPACING_MARK:
    case U_ENCLOSING_MARK:
      return 0;
    case U_FORMAT_CHAR:
      return point == 0xAD ? 1 : 0;
    default:
      break;
  }
  switch (u_getIntPropertyValue(point, UCHAR_EAST_ASIAN_WIDTH)) {
    case U_EA_WIDE:
    case U_EA_FULLWIDTH:
      return 2;
    default:
      return 1;
  }
}

/// The cells of one grapheme cluster: as wide as its widest part, or two where an emoji is asked for by its
/// selector or made of a pair of regional indicators.
std::size_t clusterWidth(std::string_view cluster) {
  std::size_t width = 0;
  UChar32 first = -1;
  forEachCodePoint(cluster, [&](UChar32 point, std::string_view) {
    const bool isEmoji =
        point == emojiPresentation && first >= 0 && u_hasBinaryProperty(first, UCHAR_EMOJI) != 0;
    const bool isFlag = first >= 0 && u_hasBinaryProperty(point, UCHAR_REGIONAL_INDICATOR) != 0;
    width = std::max(width, isEmoji || isFlag ? std::size_t{2} : codePointWidth(point));
    if (first < 0) first = point;
  });
  return width;
}

/// Calls `take(piece)` for the pieces between the iterator's boundaries, until it returns false.
template <class Take>
void forEachPiece(icu::BreakIterator& iterator, std::string_view clean, Take take) {
  UErrorCode status = U_ZERO_ERROR;
  UText text = UTEXT_INITIALIZER;
  utext_openUTF8(&text, clean.data(), static_cast<int64_t>(clean.size()), &status);
  iterator.setText(&text, status);
  if (U_SUCCESS(status)) {
    int32_t begin = iterator.first();
    for (int32_t end = iterator.next(); end != icu::BreakIterator::DONE; begin = end, end = iterator.next()) {
      const auto size = static_cast<std::size_t>(end - begin);
      if (!take(clean.substr(static_cast<std::size_t>(begin), size))) break;
    }
  }
  utext_close(&text);
}

/// Iterators are costly to make and not to be shared between threads. The rules looked for are those of no
/// particular language: widths must not change with the user's.
using MakeIterator = icu::BreakIterator* (*)(const icu::Locale&, UErrorCode&);

std::unique_ptr<icu::BreakIterator> made(MakeIterator make) {
  UErrorCode status = U_ZERO_ERROR;
  return std::unique_ptr<icu::BreakIterator>(make(icu::Locale::getRoot(), status));
}

icu::BreakIterator& clusters() {
  thread_local const auto iterator = made(icu::BreakIterator::createCharacterInstance);
  // The analyzer takes the end of the scope for the end of the thread.
  return *iterator;  // NOLINT(clang-analyzer-cplusplus.NewDelete)
}

icu::BreakIterator& lineBreaks() {
  thread_local const auto iterator = made(icu::BreakIterator::createLineInstance);
  // The analyzer takes the end of the scope for the end of the thread.
  return *iterator;  // NOLINT(clang-analyzer-cplusplus.NewDelete)
}

std::size_t cleanWidth(std::string_view clean) {
  if (isPlainAscii(clean)) return clean.size();
  std::size_t width = 0;
  forEachPiece(clusters(), clean, [&](std::string_view cluster) {
    width += clusterWidth(cluster);
    return true;
  });
  return width;
}

/// The longest beginning of the text that fits, in whole clusters.
std::string_view beginningOf(std::string_view clean, std::size_t cells) {
  std::size_t width = 0;
  std::size_t bytes = 0;
  forEachPiece(clusters(), clean, [&](std::string_view cluster) {
    width += clusterWidth(cluster);
    if (width > cells) return false;
    bytes += cluster.size();
    return true;
  });
  return clean.substr(0, bytes);
}

std::string_view withoutTrailingSpace(std::string_view text) {
  return text.substr(0, text.find_last_not_of(' ') + 1);
}

/// Wraps one paragraph that is already printable.
void wrapParagraph(std::string_view clean, std::size_t cells, std::vector<std::string>& lines) {
  std::string line;
  std::size_t width = 0;
  const auto finishLine = [&] {
    lines.emplace_back(withoutTrailingSpace(line));
    line.clear();
    width = 0;
  };
  forEachPiece(lineBreaks(), clean, [&](std::string_view word) {
    if (width > 0 && width + cleanWidth(withoutTrailingSpace(word)) > cells) finishLine();
    while (cleanWidth(withoutTrailingSpace(word)) > cells) {
      const std::string_view part = beginningOf(word, cells);
      if (part.empty()) break;  // a wide sign in a line of one cell has to stick out
      line += part;
      finishLine();
      word.remove_prefix(part.size());
    }
    line += word;
    width += cleanWidth(word);
    return true;
  });
  finishLine();
}

}  // namespace

std::string printable(std::string_view text) {
  if (isPlainAscii(text)) return std::string(text);
  std::string safe;
  safe.reserve(text.size());
  forEachCodePoint(text, [&](UChar32 point, std::string_view bytes) {
    if (point >= 0 && point < 0x20) {
      safe += "\xE2\x90";  // the pictures of control characters begin at U+2400
      safe += static_cast<char>(0x80 + point);
    } else if (point == 0x7F) {
      safe += "\u2421";
    } else if (point < 0 || (point >= 0x80 && point < 0xA0) || disturbsTheLine(point)) {
      safe += replacement;
    } else {
      safe += bytes;
    }
  });
  return safe;
}

std::string wellFormedUtf8(std::string_view text) {
  std::string sound;
  sound.reserve(text.size());
  forEachCodePoint(text,
                   [&](UChar32 point, std::string_view bytes) { sound += point < 0 ? replacement : bytes; });
  return sound;
}

std::size_t displayWidth(std::string_view text) {
  return isPlainAscii(text) ? text.size() : cleanWidth(printable(text));
}

std::string padRight(std::string_view text, std::size_t cells) {
  std::string padded = printable(text);
  const std::size_t width = cleanWidth(padded);
  if (width < cells) padded.append(cells - width, ' ');
  return padded;
}

std::string padLeft(std::string_view text, std::size_t cells) {
  std::string padded = printable(text);
  const std::size_t width = cleanWidth(padded);
  if (width < cells) padded.insert(0, cells - width, ' ');
  return padded;
}

std::string truncateToWidth(std::string_view text, std::size_t cells) {
  std::string clean = printable(text);
  if (cleanWidth(clean) <= cells) return clean;
  if (cells == 0) return "";
  return std::string(withoutTrailingSpace(beginningOf(clean, cells - 1))).append(ellipsis);
}

std::vector<std::string> wrapToWidth(std::string_view text, std::size_t cells) {
  cells = std::max<std::size_t>(cells, 1);
  std::vector<std::string> lines;
  for (std::size_t begin = 0; begin <= text.size();) {
    const std::size_t end = std::min(text.find('\n', begin), text.size());
    wrapParagraph(printable(text.substr(begin, end - begin)), cells, lines);
    begin = end + 1;
  }
  return lines;
}

}  // namespace moniva
