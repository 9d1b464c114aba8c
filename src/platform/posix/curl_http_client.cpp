#include "platform/posix/curl_http_client.h"

#include <curl/curl.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <memory>
#include <optional>
#include <type_traits>

#include "platform/posix/loaded_library.h"

namespace moniva {
namespace {

using Milliseconds = std::chrono::milliseconds;
using SteadyTime = std::chrono::steady_clock::time_point;

constexpr std::size_t kHeaderBytes = 256 << 10;
constexpr long kSlowestBytes = 16;    ///< a second
constexpr long kSlowestSeconds = 10;  ///< for which a server may be slower than that
constexpr unsigned kUrlFlags = CURLU_NON_SUPPORT_SCHEME | CURLU_URLENCODE;

/// The functions of libcurl that are used.
struct CurlLibrary : LoadedLibrary {
  decltype(&curl_global_init) globalInit = nullptr;
  decltype(&curl_easy_init) easyInit = nullptr;
  decltype(&curl_easy_cleanup) easyCleanup = nullptr;
  decltype(&curl_easy_setopt) setOption = nullptr;
  decltype(&curl_easy_strerror) textOf = nullptr;
  decltype(&curl_multi_init) multiInit = nullptr;
  decltype(&curl_multi_cleanup) multiCleanup = nullptr;
  decltype(&curl_multi_add_handle) add = nullptr;
  decltype(&curl_multi_remove_handle) remove = nullptr;
  decltype(&curl_multi_perform) perform = nullptr;
  decltype(&curl_multi_poll) poll = nullptr;
  decltype(&curl_multi_wakeup) wakeUp = nullptr;
  decltype(&curl_multi_info_read) infoRead = nullptr;
  decltype(&curl_url) newUrl = nullptr;
  decltype(&curl_url_cleanup) urlCleanup = nullptr;
  decltype(&curl_url_get) urlGet = nullptr;
  decltype(&curl_url_set) urlSet = nullptr;
  decltype(&curl_free) release = nullptr;

  CurlLibrary() : LoadedLibrary("libcurl.so.4") {
    find("curl_global_init", globalInit);
    find("curl_easy_init", easyInit);
    find("curl_easy_cleanup", easyCleanup);
    find("curl_easy_setopt", setOption);
    find("curl_easy_strerror", textOf);
    find("curl_multi_init", multiInit);
    find("curl_multi_cleanup", multiCleanup);
    find("curl_multi_add_handle", add);
    find("curl_multi_remove_handle", remove);
    find("curl_multi_perform", perform);
    find("curl_multi_poll", poll);
    find("curl_multi_wakeup", wakeUp);
    find("curl_multi_info_read", infoRead);
    find("curl_url", newUrl);
    find("curl_url_cleanup", urlCleanup);
    find("curl_url_get", urlGet);
    find("curl_url_set", urlSet);
    find("curl_free", release);
    if (missing().empty() && globalInit(CURL_GLOBAL_DEFAULT) != CURLE_OK) fail("curl_global_init");
  }
};

const CurlLibrary& curl() {
  static const CurlLibrary loaded;
  return loaded;
}

/// An address as libcurl understands it, so that what is checked is what is asked.
class WebAddress {
 public:
  WebAddress() : url_(curl().newUrl(), curl().urlCleanup) {}

  /// Takes an address, or one relative to what it is now. False when it is none.
  bool go(const std::string& to) {
    return curl().urlSet(url_.get(), CURLUPART_URL, to.c_str(), kUrlFlags) == CURLUE_OK;
  }
  std::string scheme() const { return part(CURLUPART_SCHEME); }
  std::string host() const { return part(CURLUPART_HOST); }
  /// "127.1" and the like have become four numbers when they come out of libcurl.
  bool isLocal() const { return isThisMachine(host()); }
  bool isSecure() const { return scheme() == "https"; }
  bool hasUser() const { return !part(CURLUPART_USER).empty() || !part(CURLUPART_PASSWORD).empty(); }
  bool mayBeAsked() const {
    return !hasUser() && !host().empty() && (isSecure() || (scheme() == "http" && isLocal()));
  }
  CURLU* handle() const { return url_.get(); }

 private:
  std::string part(CURLUPart which) const {
    char* text = nullptr;
    if (curl().urlGet(url_.get(), which, &text, 0) != CURLUE_OK) return {};
    const std::unique_ptr<char, decltype(&curl_free)> owned(text, curl().release);
    return text;
  }

  std::unique_ptr<CURLU, decltype(&curl_url_cleanup)> url_;
};

/// What comes of one request, and why it is given up where we do so.
struct Arrival {
  enum class End { none, enough, tooMuch };

  const HttpLimits& limits;
  HttpReply reply;
  std::size_t headerBytes = 0;
  bool headersAreHere = false;
  End end = End::none;

  bool isRedirect() const {
    return (reply.status >= 301 && reply.status <= 303) || reply.status == 307 || reply.status == 308;
  }
  /// False to give the request up.
  bool takeHeader(std::string_view line) {
    if (headersAreHere) return true;  // trailers
    headerBytes += line.size();
    if (headerBytes > kHeaderBytes) {
      end = End::tooMuch;
      return false;
    }
    while (!line.empty() && (line.back() == '\n' || line.back() == '\r')) line.remove_suffix(1);
    if (line.starts_with("HTTP/")) {
      reply = {};
      const auto code = line.substr(std::min(line.find(' '), line.size() - 1) + 1);
      std::from_chars(code.data(), code.data() + code.size(), reply.status);
    } else if (!line.empty()) {
      addHeader(line);
    } else if (reply.status >= 200) {
      headersAreHere = true;
      if (limits.headersOnly || isRedirect()) end = End::enough;
    }
    return end == End::none;
  }
  bool takeBody(std::string_view bytes) {
    if (bytes.size() > limits.bytes - reply.body.size()) {
      end = End::tooMuch;
      return false;
    }
    reply.body.append(bytes);
    return true;
  }

 private:
  void addHeader(std::string_view line) {
    const auto colon = line.find(':');
    if (colon == std::string_view::npos) return;
    std::string name(line.substr(0, colon));
    std::transform(name.begin(), name.end(), name.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    line.remove_prefix(colon + 1);
    const auto begin = std::min(line.find_first_not_of(" \t"), line.size());
    const auto last = line.find_last_not_of(" \t");
    reply.headers.emplace_back(std::move(name),
                               begin < line.size() ? line.substr(begin, last + 1 - begin) : "");
  }
};

std::size_t headerArrived(char* bytes, std::size_t, std::size_t count, void* arrival) {
  return static_cast<Arrival*>(arrival)->takeHeader({bytes, count}) ? count : 0;
}

std::size_t bodyArrived(char* bytes, std::size_t, std::size_t count, void* arrival) {
  return static_cast<Arrival*>(arrival)->takeBody({bytes, count}) ? count : 0;
}

/// One request and its connection.
class Exchange {
 public:
  Exchange()
      : multi_(curl().multiInit(), curl().multiCleanup), easy_(curl().easyInit(), curl().easyCleanup) {}
  ~Exchange() {
    if (multi_ && easy_) curl().remove(multi_.get(), easy_.get());
  }
  Exchange(const Exchange&) = delete;
  Exchange& operator=(const Exchange&) = delete;

  /// False, where the library knows one of the options not: none of them may be left out.
  bool prepare(const WebAddress& address, const std::string& authorities, Milliseconds time,
               Arrival& arrival) {
    if (!multi_ || !easy_) return false;
    const HttpLimits& limits = arrival.limits;
    set(CURLOPT_CURLU, address.handle());
    set(CURLOPT_PROTOCOLS_STR, address.isSecure() ? "https" : "http");
    set(CURLOPT_SSL_VERIFYPEER, 1L);
    set(CURLOPT_SSL_VERIFYHOST, 2L);
    set(CURLOPT_SSLVERSION, long{CURL_SSLVERSION_TLSv1_2});
    if (!authorities.empty()) {
      curl_blob blob{const_cast<char*>(authorities.data()), authorities.size(), CURL_BLOB_COPY};
      set(CURLOPT_CAINFO_BLOB, &blob);
      set(CURLOPT_CAPATH, static_cast<const char*>(nullptr));
    }
    if (address.isLocal()) set(CURLOPT_NOPROXY, "*");
    set(CURLOPT_SUPPRESS_CONNECT_HEADERS, 1L);
    set(CURLOPT_NOSIGNAL, 1L);
    // A name that is still being looked up is not waited for.
    set(CURLOPT_QUICK_EXIT, 1L);
    set(CURLOPT_CONNECTTIMEOUT_MS, std::max(1L, long{limits.connect.count()}));
    set(CURLOPT_TIMEOUT_MS, std::max(1L, long{time.count()}));
    set(CURLOPT_LOW_SPEED_LIMIT, kSlowestBytes);
    set(CURLOPT_LOW_SPEED_TIME, kSlowestSeconds);
    set(CURLOPT_ACCEPT_ENCODING, "");
    set(CURLOPT_USERAGENT, "moniva");
    // What is said to come is refused before it comes; 0 would be no limit.
    if (!limits.headersOnly) {
      set(CURLOPT_MAXFILESIZE_LARGE, static_cast<curl_off_t>(std::max<std::size_t>(1, limits.bytes)));
    }
    set(CURLOPT_HEADERFUNCTION, &headerArrived);
    set(CURLOPT_HEADERDATA, static_cast<void*>(&arrival));
    set(CURLOPT_WRITEFUNCTION, &bodyArrived);
    set(CURLOPT_WRITEDATA, static_cast<void*>(&arrival));
    set(CURLOPT_ERRORBUFFER, error_.data());
    return sound_ && curl().add(multi_.get(), easy_.get()) == CURLM_OK;
  }
  /// What came of it; nothing when it was cancelled meanwhile.
  std::optional<CURLcode> run(const std::atomic<bool>& cancelled) {
    for (int running = 1; !cancelled;) {
      if (curl().perform(multi_.get(), &running) != CURLM_OK) return CURLE_FAILED_INIT;
      if (running == 0) {
        int left = 0;
        const CURLMsg* message = curl().infoRead(multi_.get(), &left);
        return message != nullptr && message->msg == CURLMSG_DONE ? message->data.result : CURLE_FAILED_INIT;
      }
      curl().poll(multi_.get(), nullptr, 0, 1'000, nullptr);
    }
    return std::nullopt;
  }
  void* wakeable() const { return multi_.get(); }
  /// What libcurl has to say of a failure.
  std::string said(CURLcode code) const {
    return error_[0] != '\0' ? std::string(error_.data()) : curl().textOf(code);
  }

 private:
  template <class Value>
  void set(CURLoption option, Value value) {
    static_assert(!std::is_same_v<Value, int>, "libcurl reads a long");
    sound_ = curl().setOption(easy_.get(), option, value) == CURLE_OK && sound_;
  }

  std::array<char, CURL_ERROR_SIZE> error_{};
  std::unique_ptr<CURLM, decltype(&curl_multi_cleanup)> multi_;
  std::unique_ptr<CURL, decltype(&curl_easy_cleanup)> easy_;
  bool sound_ = true;
};

tl::unexpected<Refusal> refuseTime(const std::string& host) {
  return refuse("{} did not answer in time", host);
}

/// The failure in words for a person.
tl::unexpected<Refusal> refuseCode(CURLcode code, const std::string& host, const Exchange& exchange,
                                   const Arrival& arrival) {
  if (code == CURLE_FILESIZE_EXCEEDED || arrival.end == Arrival::End::tooMuch) {
    return refuse("{} answers with more than {} bytes", host, arrival.limits.bytes);
  }
  switch (code) {
    case CURLE_OPERATION_TIMEDOUT:
      return refuseTime(host);
    case CURLE_COULDNT_RESOLVE_HOST:
      return refuse("{} was not found: there is no such name, or no network", host);
    case CURLE_COULDNT_RESOLVE_PROXY:
      return refuse("{} cannot be reached: the proxy that the environment names was not found", host);
    case CURLE_COULDNT_CONNECT:
      return refuse("{} cannot be reached", host);
    case CURLE_PEER_FAILED_VERIFICATION:
    case CURLE_SSL_CACERT_BADFILE:
    case CURLE_SSL_ISSUER_ERROR:
      return refuse("the certificate of {} cannot be trusted ({})", host, exchange.said(code));
    case CURLE_SSL_CONNECT_ERROR:
      return refuse("no secure connection to {} came about ({})", host, exchange.said(code));
    case CURLE_GOT_NOTHING:
    case CURLE_PARTIAL_FILE:
    case CURLE_RECV_ERROR:
    case CURLE_SEND_ERROR:
      return refuse("{} broke off before its answer was whole", host);
    default:
      return refuse("{} gave no answer that can be read ({})", host, exchange.said(code));
  }
}

}  // namespace

/// An exchange that `cancel` can wake, for as long as this lives.
class CurlHttpClient::UnderWay {
 public:
  UnderWay(CurlHttpClient& client, void* wakeable) : client_(client), wakeable_(wakeable) {
    const std::scoped_lock lock(client_.mutex_);
    client_.underWay_.insert(wakeable_);
  }
  ~UnderWay() {
    const std::scoped_lock lock(client_.mutex_);
    client_.underWay_.erase(wakeable_);
  }
  UnderWay(const UnderWay&) = delete;
  UnderWay& operator=(const UnderWay&) = delete;

 private:
  CurlHttpClient& client_;
  void* wakeable_;
};

Result<HttpReply> CurlHttpClient::get(const std::string& url, const HttpLimits& limits) {
  if (!curl().missing().empty()) return refuse("there is no network here: {}", curl().missing());
  WebAddress address;
  if (!address.go(url)) return refuse("'{}' is no address of a web server", url);
  const std::string first = address.host();
  if (address.hasUser()) {
    return refuse("the address of {} has a user name or a password in it and is not asked", first);
  }
  if (!address.mayBeAsked()) return refuse("'{}' is not asked, because it is no https address", url);
  const SteadyTime end = std::chrono::steady_clock::now() + limits.total;
  for (int redirects = 0;; ++redirects) {
    const std::string host = address.host();
    const auto left = std::chrono::duration_cast<Milliseconds>(end - std::chrono::steady_clock::now());
    if (left.count() <= 0) return refuseTime(host);
    Arrival arrival{limits, {}};
    Exchange exchange;
    if (!exchange.prepare(address, authorities_, left, arrival)) {
      return refuse("{} cannot be asked: libcurl is too old here", host);
    }
    const UnderWay underWay(*this, exchange.wakeable());
    const auto code = exchange.run(cancelled_);
    if (!code) return refuse("the request to {} was given up", host);
    if (*code != CURLE_OK && arrival.end != Arrival::End::enough) {
      auto refusal = refuseCode(*code, host, exchange, arrival);
      if (host != first) return refuse("{} sent on: {}", first, refusal.value());
      return refusal;
    }
    // libcurl takes headers that break off for an answer.
    if (!arrival.headersAreHere) return refuseCode(CURLE_PARTIAL_FILE, host, exchange, arrival);
    const std::string location = arrival.reply.header("location");
    if (!arrival.isRedirect() || location.empty()) {
      if (arrival.reply.status / 100 == 2) return std::move(arrival.reply);
      return refuse("{} answered with status {}", host, arrival.reply.status);
    }
    if (redirects >= limits.redirects) {
      return refuse("{} was sent on more than {} times", first, limits.redirects);
    }
    const bool secure = address.isSecure();
    if (!address.go(location) || !address.mayBeAsked() || (secure && !address.isSecure())) {
      return refuse("{} sends on to '{}', which is not asked", host, location);
    }
  }
}

void CurlHttpClient::cancel() {
  const std::scoped_lock lock(mutex_);
  cancelled_ = true;
  for (void* multi : underWay_) curl().wakeUp(multi);
}

}  // namespace moniva
