#include "platform/internet_date.h"

#include <gtest/gtest.h>

#include "platform/posix/curl_http_client.h"
#include "support/loopback_server.h"

namespace moniva {
namespace {

TEST(HttpDate, isReadInItsOneForm) {
  struct Case {
    const char* why;
    const char* text;
    std::optional<double> expected;
  };
  const Case cases[] = {
      {"as written by servers", "Sun, 06 Nov 1994 08:49:37 GMT", 784111777},
      {"a leap day", "Thu, 29 Feb 2024 23:59:59 GMT", 1709251199},
      {"a leap second", "Sat, 31 Dec 2016 23:59:60 GMT", 1483228800},
      {"before 1970", "Wed, 31 Dec 1969 23:59:59 GMT", -1},
      {"no leap year", "Wed, 29 Feb 2023 00:00:00 GMT", {}},
      {"another weekday", "Mon, 06 Nov 1994 08:49:37 GMT", {}},
      {"letters of two names", "Sun, 06 anF 1994 08:49:37 GMT", {}},
      {"the day 0", "Mon, 00 Nov 1994 08:49:37 GMT", {}},
      {"the 24th hour", "Sun, 06 Nov 1994 24:00:00 GMT", {}},
      {"a sign", "Sun, 06 Nov 1994 08:-9:37 GMT", {}},
      {"another zone", "Sun, 06 Nov 1994 08:49:37 CET", {}},
      {"an old form", "Sunday, 06-Nov-94 08:49:37 GMT", {}},
      {"cut", "Sun, 06 Nov 1994 08:49:37", {}},
      {"nothing", "", {}},
  };
  for (const auto& [why, text, expected] : cases) {
    const auto date = parseHttpDate(text);
    ASSERT_EQ(date.has_value(), expected.has_value()) << why;
    EXPECT_EQ(date.value_or(Date{0}).secondsSince1970, expected.value_or(0)) << why;
  }
}

TEST(InternetDate, isComparedWithTheDeviceAndLogged) {
  LoopbackServer server;
  server.on("/", Script::reply(200, "x", "Date: Sun, 06 Nov 1994 08:49:37 GMT\r\n"));
  server.on("/none", Script::reply(200, "x"));
  server.on("/odd", Script::reply(200, "x", "Date: noon\r\n"));
  Platform platform;
  std::vector<std::string> log;
  platform.log.setSink([&](std::string_view line) { log.emplace_back(line); });
  platform.calendar = *Calendar::make("Europe/Berlin", "en_US");
  platform.clock = std::make_unique<FixedClock>(Date{784111777 - 90.5});
  platform.userDefaults = std::make_unique<MemoryUserDefaults>();
  platform.http = std::make_unique<CurlHttpClient>();
  EXPECT_EQ(checkInternetDate(platform, server.url("/none")).error().why,
            "'" + server.url("/none") + "' does not say what time it is");
  EXPECT_EQ(checkInternetDate(platform, server.url("/odd")).error().why,
            "'" + server.url("/odd") + "' says that it is 'noon', which is no date");
  EXPECT_TRUE(log.empty()) << "only a success is logged";
  platform.userDefaults->setString(server.url("/"), kNetworkTimeServerKey);
  const auto check = checkInternetDate(platform);
  ASSERT_TRUE(check) << check.error().why;
  EXPECT_EQ(check->seconds(), -90.5) << "behind";
  EXPECT_EQ(log, std::vector{"33333-==== [" + server.url("/") +
                             "] [1994-11-06 08:49:37] [1994-11-06 08:48:06] -90.500000"});
}

}  // namespace
}  // namespace moniva
