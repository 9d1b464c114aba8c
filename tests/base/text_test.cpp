#include "base/text.h"

#include <gtest/gtest.h>

namespace moniva {
namespace {

TEST(TrimBlanks, takesBlanksOfEveryScriptOffTheEndsOnly) {
  EXPECT_EQ(trimBlanks("\uFEFF \u3000\t菜 市\u00A0场\u2009\r\n"), "菜 市\u00A0场");
  EXPECT_EQ(trimBlanks(" \u00A0 "), "");
  EXPECT_EQ(trimBlanks("\u00E0"), "\u00E0") << "ends in the byte a no-break space ends in";
}

TEST(Excerpt, cutsBetweenCharactersAndStaysOnOneLine) {
  EXPECT_EQ(excerpt("a\nb\tc"), "a b c");
  EXPECT_EQ(excerpt("菜市场", 3), "菜市场");
  EXPECT_EQ(excerpt("菜市场", 2), "菜市…");
}

}  // namespace
}  // namespace moniva
