#include "ui/cli/progress.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>
#include <utility>

#include "ui/cli/text_width.h"

namespace moniva {
namespace {

TEST(Progress, drawsTenTimesASecondAndClearsItsLine) {
  std::ostringstream out;
  double now = 5;
  {
    Progress progress(
        {out, true, 50, {}}, [&] { return now; }, "Importing", 10000);
    progress.moveTo(3700);
    EXPECT_EQ(out.str(), "\r\x1b[KImporting  █████▏           37 %  3,700 of 10,000");
    for (int row = 0; row < 1000; ++row, now += 0.001) progress.advance();
    const std::string lines = std::exchange(out, std::ostringstream()).str();
    EXPECT_NEAR(static_cast<double>(std::count(lines.begin(), lines.end(), '\r')), 10, 1);
  }
  EXPECT_EQ(out.str(), "\r\x1b[K");
}

TEST(Progress, isSilentWhereNobodyLooks) {
  std::ostringstream out;
  int asked = 0;
  {
    Progress hidden(
        {out, false, 80, {}}, [&] { return ++asked; }, "Importing", 10);
    hidden.advance(5);
  }
  EXPECT_EQ(out.str(), "");
  EXPECT_EQ(asked, 0) << "the clock costs time as well";
}

TEST(Progress, staysInsideEveryTerminal) {
  for (std::size_t width = 0; width < 90; ++width) {
    for (const std::uint64_t total : {0u, 3u}) {
      std::ostringstream out;
      Progress progress(
          {out, true, width, {}}, [] { return 0.0; }, "Einträge werden gelesen", total);
      progress.advance(7);
      const std::string line = out.str().substr(std::string("\r\x1b[K").size());
      EXPECT_LT(displayWidth(line), std::max<std::size_t>(width, 2)) << "width " << width;
      if (width == 89) {
        EXPECT_EQ(line.find("100 %") != std::string::npos, total == 3) << line;
      }
    }
  }
}

}  // namespace
}  // namespace moniva
