#include "ui/cli/text_width.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

namespace moniva {
namespace {

TEST(TextWidth, countsCells) {
  const struct {
    const char* text;
    std::size_t cells;
    const char* why;
  } cases[] = {
      {"Cafe\u0301", 4, "letter and combining accent"},
      {"食費", 4, "wide signs"},
      {"\u1100\u1161\u11A8", 2, "the same from three jamo"},
      {"❤\uFE0F", 2, "made an emoji by its selector"},
      {"1\uFE0F\u20E3", 2, "keycap"},
      {"👨‍👩‍👧‍👦", 2, "family joined of four"},
      {"🇩🇪🇫🇷", 4, "two flags"},
      {"a\u200Bb", 2, "zero width space"},
      {"\x1b[31m", 5, "an escape is shown, not obeyed"},
      {"\xe9\xa3", 1, "a sign cut off"},
  };
  for (const auto& c : cases) EXPECT_EQ(displayWidth(c.text), c.cells) << c.why;
}

TEST(TextWidth, printsSafely) {
  const struct {
    std::string_view text;
    const char* shown;
    const char* why;
  } cases[] = {
      {"\x1b]0;title\a", "␛]0;title␇", "a terminal command"},
      {"two\nlines\t", "two␊lines␉", "would break a table"},
      {std::string_view("a\0b", 3), "a␀b", "a zero byte"},
      {"\u009b31m", "\uFFFD31m", "the eight-bit form of an escape"},
      {"12\u202E34", "12\uFFFD34", "would turn 34 around"},
  };
  for (const auto& c : cases) EXPECT_EQ(printable(c.text), c.shown) << c.why;
  EXPECT_EQ(wellFormedUtf8("\x1b\xff食"), "\x1b\uFFFD食");
}

TEST(TextWidth, truncates) {
  const struct {
    const char* text;
    std::size_t cells;
    const char* result;
    const char* why;
  } cases[] = {
      {"Groceries", 9, "Groceries", "fits exactly"},
      {"食費と雑費", 6, "食費…", "half a sign never shows"},
      {"Cafe\u0301s and bars", 5, "Cafe\u0301…", "accent stays"},
      {"Eating out", 8, "Eating…", "no space before the ellipsis"},
      {"abc", 1, "…", "room for the ellipsis only"},
  };
  for (const auto& c : cases) EXPECT_EQ(truncateToWidth(c.text, c.cells), c.result) << c.why;
}

TEST(TextWidth, wraps) {
  using Lines = std::vector<std::string>;
  EXPECT_EQ(wrapToWidth("one two three", 7), (Lines{"one two", "three"}));
  EXPECT_EQ(wrapToWidth("a\n\nb", 10), (Lines{"a", "", "b"})) << "paragraphs stay apart";
  EXPECT_EQ(wrapToWidth("abcdefghij k", 4), (Lines{"abcd", "efgh", "ij k"})) << "a word that is longer";
  EXPECT_EQ(wrapToWidth("食費と雑費の", 5), (Lines{"食費", "と雑", "費の"})) << "a script without spaces";
  EXPECT_EQ(wrapToWidth("食", 1), Lines{"食"}) << "no room even for one sign";
}

/// Any bytes, with signs of every width more often than chance would bring them.
rc::Gen<std::string> anyText() {
  const auto piece =
      rc::gen::oneOf(rc::gen::string<std::string>(),
                     rc::gen::element<std::string>("食", "e\u0301", "👍🏽", "🇩🇪", " ", "\u200D", "word"));
  return rc::gen::map(rc::gen::container<std::vector<std::string>>(piece),
                      [](const std::vector<std::string>& pieces) {
                        std::string text;
                        for (const auto& one : pieces) text += one;
                        return text;
                      });
}

RC_GTEST_PROP(TextWidth, cutAndPaddedTextKeepsItsWidth, ()) {
  const auto text = *anyText();
  const auto cells = *rc::gen::inRange<std::size_t>(0, 20);
  RC_ASSERT(printable(printable(text)) == printable(text));
  const std::string cut = truncateToWidth(text, cells);
  RC_ASSERT(displayWidth(cut) <= cells);
  const std::string room(cells - displayWidth(cut), ' ');
  RC_ASSERT(padRight(cut, cells) == cut + room);
  RC_ASSERT(padLeft(cut, cells) == room + cut);
}

RC_GTEST_PROP(TextWidth, wrappedLinesFitAndLoseNothingButSpaces, ()) {
  const auto text = wellFormedUtf8(*anyText());
  const auto cells = *rc::gen::inRange<std::size_t>(2, 20);
  const auto lettersOf = [](std::string_view line, std::string& into) {
    for (const char c : line) {
      if (c != ' ') into += c;
    }
  };
  std::string wrapped;
  for (const auto& line : wrapToWidth(text, cells)) {
    RC_ASSERT(displayWidth(line) <= cells);
    lettersOf(line, wrapped);
  }
  std::string whole = text;
  std::erase(whole, '\n');
  std::string expected;
  lettersOf(printable(whole), expected);
  RC_ASSERT(wrapped == expected);
}

}  // namespace
}  // namespace moniva
