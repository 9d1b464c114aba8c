#include "base/uuid.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
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
  const std::vector<Case> cases = {
      {1645557742.0,
       {0x0C, 0xC3, 0x18, 0xC4, 0xDC, 0x0C, 0x0C, 0x07, 0x39, 0x8F},
       "017f22e2-79b0-7cc3-98c4-dc0c0c07398f",
       "the example of RFC 9562"},
      {0, {}, "00000000-0000-7000-8000-000000000000", "nothing but version and variant"},
      {0, allOnes, "00000000-0000-7fff-bfff-ffffffffffff", "random bits stay off both"},
      {0.001, {}, "00000000-0001-7000-8000-000000000000", "one millisecond"},
      {1640995200.001, {}, "017e12ef-9c01-7000-8000-000000000000", "a fraction that no double holds"},
      {-5, {}, "00000000-0000-7000-8000-000000000000", "before 1970"},
      {std::numeric_limits<double>::quiet_NaN(), {}, "00000000-0000-7000-8000-000000000000", "no time"},
      {1e300, {}, "ffffffff-ffff-7000-8000-000000000000", "beyond the last"},
  };
  for (const auto& [seconds, random, text, why] : cases) EXPECT_EQ(uuidV7(seconds, random), text) << why;
}

TEST(NameBasedUuidV7, followsFromItsArgumentsAlone) {
  const auto uuid = nameBasedUuidV7(1645557742.0, "expense 12.50");
  EXPECT_EQ(uuid.substr(0, 15), "017f22e2-79b0-7") << "time and version";
  EXPECT_EQ(uuid, nameBasedUuidV7(1645557742.0, "expense 12.50"));
  EXPECT_NE(uuid.substr(14), nameBasedUuidV7(1645557742.0, "expense 12.51").substr(14));
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
}

TEST(UuidGenerator, carriesIntoTheNextMillisecondWhenItsBitsAreUsedUp) {
  UuidGenerator generator;
  EXPECT_EQ(generator.next(0.007, allOnes), uuidV7(0.007, allOnes));
  EXPECT_EQ(generator.next(0.007, {}), uuidV7(0.008, {}));
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
