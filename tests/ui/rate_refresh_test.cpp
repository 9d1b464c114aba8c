#include <gtest/gtest.h>

#include <chrono>
#include <sstream>

#include "support/loopback_server.h"
#include "support/temporary_folder.h"
#include "ui/cli/command_line.h"
#include "ui/cli/rates.h"

namespace moniva {
namespace {

using namespace std::chrono_literals;

constexpr const char* kTable = "/v4/latest/USD";
constexpr const char* kSecondTable = "/latest?base=USD";

/// A store whose exchange rates come from a server of this machine.
class RateRefresh : public testing::Test {
 protected:
  void SetUp() override {
    server.on(kTable, Script::json(R"({"rates":{"EUR":0.5,"JPY":150}})"));
    server.on(kSecondTable, Script::json(R"({"rates":{"EUR":0.6}})"));
    ASSERT_EQ(run({"rate", "services", "--primary", server.url(), "--secondary", server.url(), "-q"}), 0)
        << err.str();
    out.str("");
  }
  int run(std::vector<std::string> arguments) {
    for (const auto& word : {folder.path().string(), std::string("--data")})
      arguments.insert(arguments.begin(), word);
    err.str("");
    return CommandLine().run(arguments, {.out = out, .err = err});
  }

  TemporaryFolder folder;
  LoopbackServer server;
  std::ostringstream out;
  std::ostringstream err;
};

TEST_F(RateRefresh, tellsWhatCameOfEachService) {
  EXPECT_EQ(run({"rate", "refresh"}), 0);
  EXPECT_EQ(err.str() + out.str(), "Fetched 3 exchange rates.\n");
  server.on(kSecondTable, Script::reply(404, ""));
  out.str("");
  EXPECT_EQ(run({"rate", "refresh", "--json", "--now", "2024-06-15", "--timezone", "UTC"}), 0);
  EXPECT_EQ(err.str(), "One service gave no rates: 127.0.0.1 answered with status 404.\n");
  EXPECT_EQ(out.str(), R"({
  "lastRefresh": "2024-06-15T00:00:00+00:00",
  "isOld": false,
  "file": "",
  "failure": "127.0.0.1 answered with status 404",
  "exchangeRates": {
    "EUR": 0.5,
    "JPY": 150,
    "USD": 1
  }
}
)");
}

TEST_F(RateRefresh, servicesThatStallAreWaitedForOnce) {
  ASSERT_EQ(run({"rate", "refresh", "--now", "2024-06-15"}), 0);
  const struct {
    const char* stalling;
    const char* now;
    std::chrono::milliseconds patience;
    const char* said;
    const char* why;
  } cases[] = {
      {kTable, "2024-06-17", 400ms, "", "what the other answers is taken"},
      {kSecondTable, "2024-06-19", 100ms,
       "The exchange rates could not be brought up to date; those of Jun 17, 2024 are used.\n",
       "both stall now"},
  };
  for (const auto& c : cases) {
    server.on(c.stalling, Script::silence());
    err.str("");
    GlobalOptions options;
    options.data = folder.path().string();
    options.now = c.now;
    options.locale = "en_US";
    Session session(options, {.out = out, .err = err});
    session.prepare();
    session.launch();
    freshenRates(session, c.patience);
    const auto begin = std::chrono::steady_clock::now();
    freshenRates(session, 20s);
    EXPECT_DOUBLE_EQ(rateBetween(session, "USD", "EUR"), 0.6) << c.why;
    EXPECT_LT(std::chrono::steady_clock::now() - begin, 10s) << c.why;
    EXPECT_FALSE(session.rates().exchangeRates().contains("JPY")) << c.why;
    EXPECT_EQ(err.str(), c.said) << c.why;
  }
}

}  // namespace
}  // namespace moniva
