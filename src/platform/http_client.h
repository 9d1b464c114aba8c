#pragma once

#include <chrono>
#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "base/result.h"

namespace moniva {

/// What a web server answered.
struct HttpReply {
  int status = 0;
  std::string body;
  /// Names in lower case, in the order they came; of the last answer, after redirects.
  std::vector<std::pair<std::string, std::string>> headers;

  /// The value of the first header of that name (in lower case); "" for none.
  std::string header(std::string_view name) const {
    for (const auto& [known, value] : headers) {
      if (known == name) return value;
    }
    return {};
  }
};

/// Whether a host is this machine itself: "localhost", "[::1]" and the numbers from 127.0.0.0 on, written as
/// four. What only begins like one of them is another machine.
bool isThisMachine(std::string_view host);

/// What one request may take. A server that goes beyond it is given up.
struct HttpLimits {
  std::chrono::milliseconds connect{5'000};
  std::chrono::milliseconds total{15'000};
  std::size_t bytes = 1 << 20;  ///< of the body, after decompression
  int redirects = 3;
  bool headersOnly = false;  ///< the body is not waited for
};

/// Requests to web servers. Only https, and http to this machine itself; a certificate that cannot be
/// verified ends the request, and so does a redirect to anything else.
class HttpClient {
 public:
  virtual ~HttpClient() = default;

  /// GET; blocks its caller, so it is not for the main thread but where a person waits for it. May be called
  /// from several threads at once. Refused, with the reason in words that name the URL's host: another kind
  /// of URL, no connection, a status other than 200 to 299, limits exceeded, and what `cancel` ended.
  virtual Result<HttpReply> get(const std::string& url, const HttpLimits& limits = {}) = 0;
  /// Ends all requests under way within a moment and refuses those to come; callable from any thread.
  virtual void cancel() {}
};

/// A host without a network.
class NoHttpClient final : public HttpClient {
 public:
  Result<HttpReply> get(const std::string&, const HttpLimits&) override {
    return refuse("there is no network here");
  }
};

}  // namespace moniva
