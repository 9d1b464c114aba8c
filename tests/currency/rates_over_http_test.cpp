#include <gtest/gtest.h>

#include "currency/currency_manager.h"
#include "currency/support.h"
#include "platform/posix/curl_http_client.h"
#include "support/loopback_server.h"

namespace moniva {
namespace {

using namespace std::chrono_literals;

/// The real client with less patience.
class Impatient final : public HttpClient {
 public:
  Result<HttpReply> get(const std::string& url, const HttpLimits& limits) override {
    HttpLimits less = limits;
    less.connect = less.total = 400ms;
    return client_.get(url, less);
  }
  void cancel() override { client_.cancel(); }

 private:
  CurlHttpClient client_;
};

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
  const std::string head = "HTTP/1.1 200 OK\r\nContent-Length: 1000\r\n\r\n";
  const std::string endless = "HTTP/1.1 200 OK\r\n\r\n{\"rates\":{\"EUR\":0.9";
  const struct {
    Script script;
    const char* why;
  } cases[] = {
      {Script::silence(), "a stall"},
      {Script::raw(head + good), "cut, though what came could be read"},
      {{{{head}, {good, 300ms}, {" ", 300ms}}, Script::Then::stall}, "slower than anybody waits"},
      {{{{endless}, {std::string(65'536, '0')}}, Script::Then::repeatLast}, "a body without end"},
      {Script::reply(200, "", "Content-Encoding: gzip\r\n"), "nothing, packed"},
      {Script::raw("\x16\x03\x01 garbage"), "no HTTP"},
      {Script::json("\xFF\xFE garbage"), "no text"},
      {Script::reply(500, good), "an error that has rates"},
      {Script::redirect("file:///etc/hostname"), "a file of this machine"},
      {Script::redirect("/v4/latest/USD"), "a redirect to itself"},
  };
  LoopbackServer server;
  Machine machine;
  machine.platform.http = std::make_unique<Impatient>();
  machine.platform.userDefaults->setString(server.url(), RateServices::kPrimaryKey);
  machine.platform.userDefaults->setString("", RateServices::kSecondaryKey);
  server.on("/v4/latest/USD", Script::json(R"({"rates":{"GBP":0.8}})"));
  CurrencyManager manager(machine.platform);
  ASSERT_TRUE(manager.waitForRefresh(10s));
  const RateTable old{{"GBP", 0.8F}, {"USD", 1.0F}};
  ASSERT_EQ(manager.exchangeRates(), old) << machine.logged();
  const Date before = manager.lastRefresh();
  for (const auto& c : cases) {
    machine.pass(1);
    server.on("/v4/latest/USD", c.script);
    manager.forceRefresh();
    ASSERT_TRUE(manager.waitForRefresh(10s)) << c.why;
    EXPECT_EQ(manager.exchangeRates(), old) << c.why;
    EXPECT_EQ(manager.lastRefresh(), before) << c.why;
    ASSERT_TRUE(manager.refreshFailure()) << c.why;
    EXPECT_NE(manager.refreshFailure()->why.find("127.0.0.1"), std::string::npos) << c.why;
    EXPECT_NE(machine.logged().find(manager.refreshFailure()->why), std::string::npos) << c.why;
  }
}

}  // namespace
}  // namespace moniva
