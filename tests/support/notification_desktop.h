#pragma once

#include <sys/wait.h>
#include <systemd/sd-bus.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <cstdlib>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "support/temporary_folder.h"

namespace moniva {

/// A session bus of a test's own, which the program finds in its environment.
class SessionBus {
 public:
  SessionBus() : address_("unix:path=" + (folder_ / "bus").string()) {
    int ends[2];
    EXPECT_EQ(::pipe(ends), 0);
    daemon_ = ::fork();
    if (daemon_ == 0) {
      ::dup2(ends[1], 1);
      ::execlp("dbus-daemon", "dbus-daemon", "--session", "--nofork", "--print-address=1",
               ("--address=" + address_).c_str(), nullptr);
      ::_exit(127);
    }
    ::close(ends[1]);
    char first = 0;
    EXPECT_EQ(::read(ends[0], &first, 1), 1) << "no bus";
    ::close(ends[0]);
    ::setenv("DBUS_SESSION_BUS_ADDRESS", address_.c_str(), 1);
  }
  ~SessionBus() {
    ::kill(daemon_, SIGKILL);
    ::waitpid(daemon_, nullptr, 0);
  }
  SessionBus(const SessionBus&) = delete;
  SessionBus& operator=(const SessionBus&) = delete;

  const std::string& address() const { return address_; }
  int daemon() const { return daemon_; }

 private:
  TemporaryFolder folder_;
  std::string address_;
  int daemon_ = 0;
};

/// A notification service on it, which takes down what it is given to show and refuses a body "FULL".
class FakeNotificationService {
 public:
  enum class Manner { shows, hangs };

  explicit FakeNotificationService(const SessionBus& bus) {
    EXPECT_GE(sd_bus_new(&bus_), 0);
    EXPECT_GE(sd_bus_set_address(bus_, bus.address().c_str()), 0);
    EXPECT_GE(sd_bus_set_bus_client(bus_, 1), 0);
    EXPECT_GE(sd_bus_start(bus_), 0);
    EXPECT_GE(sd_bus_add_object(bus_, nullptr, "/org/freedesktop/Notifications", called, this), 0);
    EXPECT_GE(sd_bus_request_name(bus_, "org.freedesktop.Notifications", 0), 0);
    thread_ = std::thread([this] {
      while (!ends_) {
        if (sd_bus_process(bus_, nullptr) == 0) sd_bus_wait(bus_, 20'000);
      }
    });
  }
  ~FakeNotificationService() {
    ends_ = true;
    thread_.join();
    sd_bus_flush_close_unref(bus_);
  }
  FakeNotificationService(const FakeNotificationService&) = delete;
  FakeNotificationService& operator=(const FakeNotificationService&) = delete;

  std::atomic<Manner> manner = Manner::shows;
  /// "TITLE|BODY", each once.
  std::vector<std::string> takeShown() {
    const std::scoped_lock lock(mutex_);
    return std::exchange(shown_, {});
  }

 private:
  static int called(sd_bus_message* message, void* self, sd_bus_error*) {
    return static_cast<FakeNotificationService*>(self)->answer(message);
  }
  int answer(sd_bus_message* message) {
    if (sd_bus_message_is_method_call(message, nullptr, "GetCapabilities") > 0)
      return sd_bus_reply_method_return(message, "as", 2U, "body", "body-markup");
    if (manner == Manner::hangs) return 1;
    const char* app = nullptr;
    const char* icon = nullptr;
    const char* title = nullptr;
    const char* body = nullptr;
    std::uint32_t replaces = 0;
    EXPECT_GE(sd_bus_message_read(message, "susss", &app, &replaces, &icon, &title, &body), 0);
    if (std::string_view(body) == "FULL")
      return sd_bus_reply_method_errorf(message, "org.example.Full", "the screen is full");
    {
      const std::scoped_lock lock(mutex_);
      shown_.push_back(std::string(title) + "|" + body);
    }
    return sd_bus_reply_method_return(message, "u", 1U);
  }

  sd_bus* bus_ = nullptr;
  std::atomic<bool> ends_ = false;
  std::mutex mutex_;
  std::vector<std::string> shown_;
  std::thread thread_;
};

}  // namespace moniva
