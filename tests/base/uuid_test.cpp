#include "base/uuid.h"

#include <gtest/gtest.h>

#include <cmath>
#include <set>
#include <thread>
#include <vector>

namespace moniva {
namespace {

constexpr UuidEntropy allOnes = {255, 255, 255, 255, 255, 255, 255, 255, 255, 255};

TEST(UuidV7, putsTimeVersionVariantAndRandomBitsInTheirPlaces) {
  struct Case {
    double seconds;
    UuidEntropy random;
    std::string_view text;
    std::string_view why;
  };
  for (const auto& [seconds, random, text, why] : {
           Case{1645557742.0,
                {0x0C, 0xC3, 0x18, 0xC4, 0xDC, 0x0C, 0x0C, 0x07, 0x39, 0x8F},
                "017f22e2-79b0-7cc3-98c4-dc0c0c07398f",
                "the example of RFC 9562"},
           Case{0, allOnes, "00000000-0000-7fff-bfff-ffffffffffff",
                "random bits stay off version and variant"},
           Case{
               1640995200.001, {}, "017e12ef-9c01-7000-8000-000000000000", "a fraction that no double holds"},
           Case{-5, {}, "00000000-0000-7000-8000-000000000000", "before 1970"},
           Case{std::nan(""), {}, "00000000-0000-7000-8000-000000000000", "no time"},
           Case{1e300, {}, "ffffffff-ffff-7000-8000-000000000000", "beyond the last"},
       })
    EXPECT_EQ(uuidV7(seconds, random), text) << why;
}

TEST(NameBasedUuidV7, followsFromItsArgumentsAlone) {
  // SHA-1 of sixteen zero bytes and the name, taken with another tool: the ids are in people's stores.
  EXPECT_EQ(nameBasedUuidV7(0, "moniva"), "00000000-0000-72d0-ac0b-01cc78fba011");
}

TEST(UuidGenerator, ascendsWithinAMillisecondAndOverAClockSetBack) {
  UuidGenerator generator;
  const std::vector<std::pair<double, UuidEntropy>> calls = {
      {100.0, {1}},  {100.0, {}},        {100.0, {0, 0, 9}}, {99.0, allOnes}, {99.0, {}},
      {100.001, {}}, {100.001, allOnes}, {100.001, allOnes}, {50.0, allOnes}, {200.0, {}},
  };
  std::string last;
  for (const auto& [seconds, random] : calls) {
    const auto uuid = generator.next(seconds, random);
    EXPECT_LT(last, uuid);
    last = uuid;
  }
  EXPECT_EQ(last, uuidV7(200.0, {})) << "a new millisecond starts afresh";
  generator.next(200.007, allOnes);
  EXPECT_EQ(generator.next(200.007, {}), uuidV7(200.008, {})) << "its bits used up, it carries into the next";
}

TEST(UuidGenerator, givesThreadsDifferentOnes) {
  UuidGenerator generator;
  constexpr std::size_t each = 2000;
  std::vector<std::vector<std::string>> taken(4);
  {
    std::vector<std::jthread> threads;
    for (auto& list : taken) {
      threads.emplace_back([&generator, &list] {
        for (std::size_t i = 0; i < each; ++i) list.push_back(generator.next(1.0, {}));
      });
    }
  }
  std::set<std::string> all;
  for (const auto& list : taken) all.insert(list.begin(), list.end());
  EXPECT_EQ(all.size(), taken.size() * each);
}

}  // namespace
}  // namespace moniva
