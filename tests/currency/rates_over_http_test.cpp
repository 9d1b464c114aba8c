#include <gtest/gtest.h>

#include "currency/currency_manager.h"
#include "currency/support.h"
#include "platform/posix/curl_http_client.h"
#include "support/loopback_server.h"
#include "support/temporary_folder.h"

namespace moniva {
namespace {

using namespace std::chrono_literals;

TEST(RatesOverHttp, areTakenFromAServerThatServes) {
  LoopbackServer server;
  server.on("/v4/latest/USD", Script::json(R"({"rates":{"EUR":0.9}})"));
  server.on("/v1/latest?base=USD", Script::redirect("/moved"));
  server.on("/moved", Script::json(R"({"rates":{"CHF":0.88}})"));
  Machine machine;
  machine.platform.http = std::make_unique<CurlHttpClient>();
  machine.platform.userDefaults->setString(server.url("/"), RateServices::kPrimaryKey);
  machine.platform.userDefaults->setString(server.url("/v1"), RateServices::kSecondaryKey);
  CurrencyManager manager(machine.platform);
  ASSERT_TRUE(manager.waitForRefresh(10s));
  EXPECT_EQ(manager.exchangeRates(), (RateTable{{"CHF", 0.88F}, {"EUR", 0.9F}, {"USD", 1.0F}}))
      << machine.logged();
}

TEST(RatesOverHttp, stayAsTheyAreWhateverAServerDoes) {
  const std::string good = R"({"rates":{"EUR":0.9,"JPY":150}})";
  const TemporaryFolder folder;
  putBytes(folder / "rates.json", good);
  const struct {
    Script script;
    std::string failure;  ///< a part of it
    const char* why;
  } cases[] = {
      {Script::raw("HTTP/1.1 200 OK\r\nContent-Length: 1000\r\n\r\n" + good), "broke off",
       "cut, though what came could be read"},
      {{{{"HTTP/1.1 200 OK\r\n\r\n{\"rates\":{\"EUR\":0.9"}, {std::string(65'536, '0')}},
        Script::Then::repeatLast},
       "answers with more than",
       "a body without end"},
      {Script::json("{\"rates\":{\"EUR\":0.9},\"x\":\"\xFF\"}"), "is no JSON text", "no text"},
      {Script::reply(500, good), "status 500", "an error that has rates"},
      {Script::redirect("file://" + (folder / "rates.json").string()), "which is not asked",
       "a file of this machine that has rates"},
  };
  LoopbackServer server;
  Machine machine;
  machine.platform.http = std::make_unique<CurlHttpClient>();
  machine.platform.userDefaults->setString(server.url(), RateServices::kPrimaryKey);
  machine.platform.userDefaults->setString("", RateServices::kSecondaryKey);
  CurrencyManager manager(machine.platform, FirstFetch::whenAsked);
  const RateTable old{{"GBP", 0.8F}, {"USD", 1.0F}};
  manager.finishRefreshWithExchangeRates(old);
  const Date before = manager.lastRefresh();
  for (const auto& c : cases) {
    machine.pass(1);
    const auto begin = machine.logged().size();
    server.on("/v4/latest/USD", c.script);
    manager.forceRefresh();
    ASSERT_TRUE(manager.waitForRefresh(20s)) << c.why;
    EXPECT_EQ(manager.exchangeRates(), old) << c.why;
    EXPECT_EQ(manager.lastRefresh(), before) << c.why;
    ASSERT_TRUE(manager.refreshFailure()) << c.why;
    const std::string& said = manager.refreshFailure()->why;
    EXPECT_TRUE(said.starts_with("127.0.0.1")) << said;
    EXPECT_NE(said.find(c.failure), std::string::npos) << c.why << ": " << said;
    EXPECT_NE(machine.logged().find(said, begin), std::string::npos) << c.why;
  }
}

}  // namespace
}  // namespace moniva
