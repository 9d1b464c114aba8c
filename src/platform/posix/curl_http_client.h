#pragma once

#include <atomic>
#include <mutex>
#include <set>
#include <string>

#include "platform/http_client.h"

namespace moniva {

/// Requests made by libcurl, which is loaded with the first one. Each has connections of its own; nothing is
/// kept from one to the next. Requests over https take the proxy that the environment names, those to this
/// machine none.
class CurlHttpClient final : public HttpClient {
 public:
  /// `authorities` are certificates (PEM) to trust in place of those the host trusts; "" for the host's.
  explicit CurlHttpClient(std::string authorities = {}) : authorities_(std::move(authorities)) {}

  /// Addresses with a user name or a password in them are refused too. A redirect is followed from https to
  /// https and from http of this machine to the same or to https.
  Result<HttpReply> get(const std::string& url, const HttpLimits& limits) override;
  void cancel() override;

 private:
  class UnderWay;

  std::string authorities_;
  std::atomic<bool> cancelled_ = false;
  std::mutex mutex_;
  std::set<void*> underWay_;  ///< what is to be woken when they are to end
};

}  // namespace moniva
