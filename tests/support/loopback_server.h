#pragma once

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

namespace moniva {

/// What a LoopbackServer does with a request: pieces of bytes that go out as they stand, and then its end.
struct Script {
  enum class Then {
    close,       ///< ends the connection
    repeatLast,  ///< sends the last piece again and again until the client has gone
    stall,       ///< sends nothing more and leaves the connection open until the client has gone
  };
  struct Piece {
    std::string bytes;
    std::chrono::milliseconds pauseBefore{0};
  };

  std::vector<Piece> pieces;
  Then then = Then::close;

  /// A whole answer. `headers` are further lines, each with "\r\n" at its end.
  static Script reply(int status, std::string_view body, const std::string& headers = {}) {
    std::string text = "HTTP/1.1 " + std::to_string(status) + " Status\r\nConnection: close\r\n" + headers +
                       "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n";
    return raw(text.append(body));
  }
  static Script json(std::string_view body) { return reply(200, body, "Content-Type: application/json\r\n"); }
  static Script redirect(const std::string& to, int status = 302) {
    return reply(status, "", "Location: " + to + "\r\n");
  }
  /// Bytes as they stand: answers that are cut, that lie, or that are no HTTP.
  static Script raw(std::string bytes, Then then = Then::close) { return {{{std::move(bytes)}}, then}; }
  /// Reads the request and never answers.
  static Script silence() { return {{}, Then::stall}; }
};

/// A real HTTP server on 127.0.0.1, on a free port, with threads of its own. What it answers is set for each
/// request target; any other gets 404. It ends at once with the object, whatever clients still wait for.
class LoopbackServer {
 public:
  /// How bytes come and go on a connection.
  class Channel {
   public:
    explicit Channel(int socket) : socket_(socket) {}
    virtual ~Channel() = default;
    /// The number of bytes moved; 0 or less at the end.
    virtual long read(char* bytes, std::size_t size) { return ::recv(socket_, bytes, size, 0); }
    virtual long write(const char* bytes, std::size_t size) { return ::send(socket_, bytes, size, 0); }

   protected:
    int socket_;
  };
  /// Makes the channel of an accepted connection.
  using Channels = std::function<std::unique_ptr<Channel>(int socket)>;

  explicit LoopbackServer(
      Channels channels = [](int socket) { return std::make_unique<Channel>(socket); },
      std::string scheme = "http")
      : channels_(std::move(channels)), scheme_(std::move(scheme)) {
    listener_ = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    auto* generic = reinterpret_cast<sockaddr*>(&address);
    if (::bind(listener_, generic, size) != 0 || ::listen(listener_, 64) != 0 ||
        ::getsockname(listener_, generic, &size) != 0) {
      ADD_FAILURE() << "no server on loopback";
    }
    port_ = ntohs(address.sin_port);
    accepting_ = std::thread([this] { accept(); });
  }
  ~LoopbackServer() {
    ::shutdown(listener_, SHUT_RDWR);
    accepting_.join();
    for (const auto& [socket, thread] : connections_) ::shutdown(socket, SHUT_RDWR);
    for (auto& [socket, thread] : connections_) {
      thread.join();
      ::close(socket);
    }
    ::close(listener_);
  }
  LoopbackServer(const LoopbackServer&) = delete;
  LoopbackServer& operator=(const LoopbackServer&) = delete;

  /// What requests for that target ("/latest?base=USD") get from now on.
  void on(const std::string& target, Script script) {
    const std::scoped_lock lock(mutex_);
    scripts_[target] = std::move(script);
  }
  /// "http://127.0.0.1:PORT" and the target.
  std::string url(const std::string& target = {}, const std::string& host = "127.0.0.1") const {
    return scheme_ + "://" + host + ":" + std::to_string(port_) + target;
  }
  /// The requests that came, each with its headers, in their order.
  std::vector<std::string> requests() const {
    const std::scoped_lock lock(mutex_);
    return requests_;
  }
  /// Waits until that many requests have come; for threads that are to meet a request under way.
  void awaitRequests(std::size_t count) const {
    while (requests().size() < count) std::this_thread::yield();
  }

 private:
  void accept() {
    for (;;) {
      const int socket = ::accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
      if (socket < 0) return;
      connections_.emplace_back(socket, std::thread([this, socket] { serve(socket); }));
    }
  }

  void serve(int socket) {
    // Writing to a client that has gone is an error here, not the end of the program.
    sigset_t brokenPipe;
    sigemptyset(&brokenPipe);
    sigaddset(&brokenPipe, SIGPIPE);
    ::pthread_sigmask(SIG_BLOCK, &brokenPipe, nullptr);
    if (const auto channel = channels_(socket)) play(socket, *channel, scriptFor(*channel));
    ::shutdown(socket, SHUT_RDWR);
  }

  Script scriptFor(Channel& channel) {
    std::string request;
    for (char byte = 0; request.find("\r\n\r\n") == std::string::npos; request += byte) {
      if (channel.read(&byte, 1) <= 0) return {};
    }
    const auto begin = request.find(' ') + 1;
    const std::string target = request.substr(begin, request.find(' ', begin) - begin);
    const std::scoped_lock lock(mutex_);
    requests_.push_back(std::move(request));
    const auto known = scripts_.find(target);
    return known == scripts_.end() ? Script::reply(404, "not here") : known->second;
  }

  static void play(int socket, Channel& channel, const Script& script) {
    const auto gone = [socket](int milliseconds) {
      pollfd watched{socket, POLLRDHUP, 0};
      return ::poll(&watched, 1, milliseconds) != 0;
    };
    const auto sent = [&](const Script::Piece& piece) {
      if (piece.pauseBefore.count() > 0 && gone(static_cast<int>(piece.pauseBefore.count()))) return false;
      for (std::size_t at = 0; at < piece.bytes.size();) {
        const long moved = channel.write(piece.bytes.data() + at, piece.bytes.size() - at);
        if (moved <= 0) return false;
        at += static_cast<std::size_t>(moved);
      }
      return true;
    };
    for (const auto& piece : script.pieces) {
      if (!sent(piece)) return;
    }
    if (script.then == Script::Then::repeatLast) {
      while (sent(script.pieces.back())) continue;
    }
    if (script.then == Script::Then::stall) gone(-1);
  }

  Channels channels_;
  std::string scheme_;
  int listener_ = -1;
  unsigned port_ = 0;
  mutable std::mutex mutex_;
  std::map<std::string, Script> scripts_;
  std::vector<std::string> requests_;
  std::vector<std::pair<int, std::thread>> connections_;  ///< of the accepting thread until it has ended
  std::thread accepting_;
};

}  // namespace moniva
