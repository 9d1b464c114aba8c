#include "ui/cli/bars.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <limits>
#include <vector>

#include "ui/cli/text_width.h"

namespace moniva {
namespace {

constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
constexpr double largest = std::numeric_limits<double>::max();

TEST(Bars, drawsAValueOnItsScale) {
  const struct {
    double value;
    double max;
    std::size_t cells;
    const char* bar;
    const char* why;
  } cases[] = {
      {3, 8, 1, "▍", "three eighths of a cell"},
      {0.0001, 100, 4, "▏", "little is not nothing"},
      {5, 0, 4, "", "no scale"},
      {notANumber, 100, 4, "", "no number"},
      {5, 10, 0, "", "no room"},
      {largest, largest, 2, "██", "the largest figure"},
  };
  for (const auto& c : cases) EXPECT_EQ(bar(c.value, c.max, c.cells), c.bar) << c.why;
}

TEST(Bars, pairsHaveTheirAxisInOneColumn) {
  const struct {
    double left;
    double right;
    const char* bars;
    const char* why;
  } cases[] = {
      {0, 100, "    │████", "right only"},
      {37.5, 0, "  ▐█│", "half a cell at the left end"},
      {0.1, 0.1, "   ▐│▏", "little on both sides"},
      {-1, notANumber, "    │", "nothing to draw"},
  };
  for (const auto& c : cases) EXPECT_EQ(pairedBars(c.left, c.right, 100, 4), c.bars) << c.why;
}

RC_GTEST_PROP(Bars, longerMeansMore, (unsigned a, unsigned b)) {
  const double max = 4294967296.0;
  const auto cells = *rc::gen::inRange<std::size_t>(1, 40);
  const std::string shorter = bar(std::min(a, b), max, cells);
  const std::string longer = bar(std::max(a, b), max, cells);
  RC_ASSERT(displayWidth(shorter) <= displayWidth(longer));
  RC_ASSERT(displayWidth(longer) <= cells);
}

TEST(Sparkline, showsASeries) {
  const struct {
    std::vector<double> values;
    const char* line;
    const char* why;
  } cases[] = {
      {{}, "", "nothing"},
      {{0, 1, 2, 3, 4, 5, 6, 7}, "▁▂▃▄▅▆▇█", "every height"},
      {{90, 100}, "▇█", "measured from zero, not from the smallest"},
      {{-10, 0, 10}, "▁▅█", "from the smallest below zero"},
      {{1, notANumber, 1}, "█ █", "a gap"},
      {{-largest, largest}, "▁█", "a range beyond doubles"},
  };
  for (const auto& c : cases) EXPECT_EQ(sparkline(c.values), c.line) << c.why;
}

}  // namespace
}  // namespace moniva
