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

TEST(Bars, drawValuesOnTheirScale) {
  const auto line = [](const std::vector<double>& values) { return sparkline(values); };
  const struct {
    std::string drawn;
    const char* bar;
    const char* why;
  } cases[] = {
      {bar(3, 8, 1), "▍", "three eighths of a cell"},
      {bar(0.0001, 100, 4), "▏", "little is not nothing"},
      {bar(5, 0, 4), "", "no scale"},
      {bar(notANumber, 100, 4), "", "no number"},
      {bar(5, 10, 0), "", "no room"},
      {bar(largest, largest, 2), "██", "the largest figure"},
      {pairedBars(0, 100, 100, 4), "    │████", "the axis in its column"},
      {pairedBars(37.5, 0, 100, 4), "  ▐█│", "half a cell at the left end"},
      {pairedBars(0.1, 0.1, 100, 4), "   ▐│▏", "little on both sides"},
      {pairedBars(-1, notANumber, 100, 4), "    │", "nothing to draw"},
      {line({0, 1, 2, 3, 4, 5, 6, 7}), "▁▂▃▄▅▆▇█", "every height"},
      {line({90, 100}), "▇█", "measured from zero, not from the smallest"},
      {line({-10, 0, 10}), "▁▅█", "from the smallest below zero"},
      {line({1, notANumber, 1}), "█ █", "a gap"},
      {line({-largest, largest}), "▁█", "a range beyond doubles"},
  };
  for (const auto& c : cases) EXPECT_EQ(c.drawn, c.bar) << c.why;
}

RC_GTEST_PROP(Bars, longerMeansMore, (unsigned a, unsigned b)) {
  const double max = 4294967296.0;
  const auto cells = *rc::gen::inRange<std::size_t>(1, 40);
  const std::string shorter = bar(std::min(a, b), max, cells);
  const std::string longer = bar(std::max(a, b), max, cells);
  RC_ASSERT(displayWidth(shorter) <= displayWidth(longer));
  RC_ASSERT(displayWidth(longer) <= cells);
}

}  // namespace
}  // namespace moniva
