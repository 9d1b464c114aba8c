#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "platform/platform.h"

namespace moniva {

/// Answers what a test tells it to, by URL; whatever else is asked is refused. Keeps what it was asked.
class ScriptedHttp final : public HttpClient {
 public:
  Result<HttpReply> get(const std::string& url, const HttpLimits&) override {
    if (before) before(url);
    const std::scoped_lock lock(mutex);
    asked.push_back(url);
    const auto found = bodies.find(url);
    if (found == bodies.end()) return refuse("no answer of {}", url);
    return HttpReply{.status = 200, .body = found->second, .headers = {}};
  }

  std::function<void(const std::string& url)> before;  ///< runs before each answer, where it is set
  std::mutex mutex;
  std::map<std::string, std::string> bodies;
  std::vector<std::string> asked;
};

/// A platform in memory: its clock stands still, its settings live with it, its log can be read.
class Machine {
 public:
  explicit Machine(const std::string& zone = "Europe/Berlin", const std::string& locale = "en_US") {
    platform.calendar = Calendar::make(zone, locale).value();
    platform.clock = std::make_unique<FixedClock>(Date{1.7e9});
    platform.userDefaults = std::make_unique<MemoryUserDefaults>();
    platform.log.setSink([this](std::string_view line) { log_.append(line).append("\n"); });
  }

  void pass(double seconds) {
    static_cast<FixedClock&>(*platform.clock).set(platform.now().plusSeconds(seconds));
  }
  /// What was logged so far; only while no refresh runs.
  const std::string& logged() const { return log_; }

 private:
  std::string log_;

 public:
  Platform platform;
};

}  // namespace moniva
