#include "ui/cli/did_you_mean.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <vector>

namespace moniva {
namespace {

TEST(DidYouMean, findsTheNearest) {
  const std::vector<std::string> names{"add",      "book", "budget", "transfer", "report",
                                       "Übertrag", "食費", "rm",     "x"};
  const struct {
    const char* wanted;
    const char* found;  // "" for nothing
    const char* why;
  } cases[] = {
      {"tranfser", "transfer", "two swapped in a longer word"},
      {"übertrga", "Übertrag", "case beyond ASCII"},
      {"食品", "食費", "one sign of two"},
      {"trans", "transfer", "the beginning"},
      {"mr", "rm", "swapped, though short"},
      {"y", "", "one sign, wrong"},
      {"b", "", "too short to say"},
      {"accounting", "", "far from everything"},
      {"\xff", "", "no text"},
  };
  for (const auto& c : cases) EXPECT_EQ(didYouMean(c.wanted, names).value_or(""), c.found) << c.why;
  EXPECT_FALSE(didYouMean("book", {}).has_value());
}

RC_GTEST_PROP(DidYouMean, forgivesOneSlip, ()) {
  const auto letters = rc::gen::container<std::string>(rc::gen::inRange('a', 'z'));
  const auto name = *rc::gen::suchThat(letters, [](const std::string& text) { return text.size() >= 2; });
  const auto at = *rc::gen::inRange<std::size_t>(0, name.size());
  std::string dropped = name;
  dropped.erase(at, 1);
  std::string added = name;
  added.insert(at, 1, '7');
  for (const std::string& typed : {name, added}) {
    RC_ASSERT(didYouMean(typed, std::vector<std::string>{"999999", name}) == name);
  }
  if (dropped.size() >= 2) RC_ASSERT(didYouMean(dropped, std::vector<std::string>{"999999", name}) == name);
}

}  // namespace
}  // namespace moniva
