#include "ui/cli/table.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <sstream>

#include "ui/cli/text_width.h"

namespace moniva {
namespace {

TEST(Table, alignsWideSignsAndCutsTheWidestTextToFit) {
  Table table({{"Category", Align::left}, {"Vendor", Align::left}, {"Spent", Align::right}});
  table.addRow({"Groceries", "Corner shop of the Miller family", "412.10"});
  table.addRow({"食費", "", "38.00"});
  table.addTotal({"Total", "", "450.10"});
  EXPECT_EQ(table.render({}, 30),
            "Category   Vendor        Spent\n"
            "──────────────────────────────\n"
            "Groceries  Corner sho…  412.10\n"
            "食費                     38.00\n"
            "──────────────────────────────\n"
            "Total                   450.10\n");
}

TEST(Table, neverCutsAFigure) {
  Table table({{"", Align::left}, {"", Align::right}});
  table.addRow({"Rent of the flat", "1234567890.00"});
  EXPECT_EQ(table.render({}, 10), "Rent…   1234567890.00\n") << "no titles, so no headings either";
  Table limited({{"Note", Align::left, 7}, {"Sum", Align::right, 2}});
  limited.addRow({"birthday present", "12.50"});
  EXPECT_EQ(limited.render(), "Note       Sum\n──────────────\nbirthd…  12.50\n");
}

TEST(Table, keepsWhatIsTypedAgainWhole) {
  Table table({{.title = "", .isWhole = true}, {.title = "", .minWidth = 8}, {.title = ""}});
  table.addRow({"1a2b3c4d", "Rent of the flat", "Household"});
  EXPECT_EQ(table.render({}, 20), "1a2b3c4d  Rent of…  House…\n");
}

TEST(Table, isPrintedInPartsAsWideAsTheFirst) {
  Table table({{.title = "What", .minWidth = 6}, {.title = "Sum", .align = Align::right}});
  table.addRow({"tea", "1.00"});
  EXPECT_EQ(table.renderPart(), "What     Sum\n────────────\ntea     1.00\n");
  table.addRow({"a longer text", "12345.00"});
  EXPECT_EQ(table.renderPart(), "a lon…  12345.00\n") << "no headings again, and no row twice";
}

TEST(Table, marksWhatWasLookedFor) {
  Table table({{.title = "", .isSearched = true}, {.title = ""}});
  table.markHits({"ab", "é"});
  table.addRow({"xAbéab", "ab"});
  const auto marked = [](const std::string& text) { return "\x1b[1m\x1b[4m" + text + "\x1b[24m\x1b[22m"; };
  EXPECT_EQ(table.render(Style(ColorMode::always, {})),
            "x" + marked("Ab") + marked("é") + marked("ab") + "  ab\n");
  EXPECT_EQ(table.render(), "xAbéab  ab\n");
}

TEST(Table, takesRowsOfAnyLength) {
  Table table({{"a"}, {"b"}});
  table.addRow({"only"});
  table.addRow({"one", "two", "three"});
  table.addRow({"line\nfeed", "\x1b[1m"});
  EXPECT_EQ(table.render(), "a          b\n───────────────\nonly\none        two\nline␊feed  ␛[1m\n");
}

TEST(Table, paintsCellsWithoutMovingThem) {
  Table table({{"A", Align::left}, {"B", Align::right}});
  table.addRow({Cell("x", ink::green), Cell("-1", ink::red)});
  EXPECT_EQ(table.render(Style(ColorMode::always, {})),
            "\x1b[1mA\x1b[22m   \x1b[1mB\x1b[22m\n\x1b[2m─────\x1b[22m\n"
            "\x1b[32mx\x1b[39m  \x1b[31m-1\x1b[39m\n");
}

RC_GTEST_PROP(Table, fitsTheTerminal, (const std::vector<std::vector<std::string>>& rows)) {
  const auto width = *rc::gen::inRange<std::size_t>(22, 60);
  Table table({{"first"}, {"second"}, {"third"}});
  for (const auto& row : rows) table.addRow({row.begin(), row.end()});
  std::istringstream lines(table.render({}, width));
  std::size_t count = 0;
  for (std::string line; std::getline(lines, line); ++count) {
    RC_ASSERT(displayWidth(line) <= width);
  }
  RC_ASSERT(count == rows.size() + 2);
}

}  // namespace
}  // namespace moniva
