#include "platform/posix/notification_service.h"

#if __has_include(<systemd/sd-bus.h>)
#include <systemd/sd-bus.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "platform/posix/loaded_library.h"

namespace moniva {
namespace {

using BusClock = std::chrono::steady_clock;

constexpr const char* kService = "org.freedesktop.Notifications";
constexpr const char* kObject = "/org/freedesktop/Notifications";

/// The functions of libsystemd that are used.
struct BusLibrary : LoadedLibrary {
  decltype(&sd_bus_open_user) openUser = nullptr;
  decltype(&sd_bus_close_unref) closeUnref = nullptr;
  decltype(&sd_bus_is_ready) isReady = nullptr;
  decltype(&sd_bus_process) process = nullptr;
  decltype(&sd_bus_wait) wait = nullptr;
  decltype(&sd_bus_set_method_call_timeout) setTimeout = nullptr;
  decltype(&sd_bus_call_method) callMethod = nullptr;
  decltype(&sd_bus_message_unref) unref = nullptr;
  decltype(&sd_bus_message_read_strv) readTexts = nullptr;
  decltype(&sd_bus_error_free) freeError = nullptr;

  BusLibrary() : LoadedLibrary("libsystemd.so.0") {
    find("sd_bus_open_user", openUser);
    find("sd_bus_close_unref", closeUnref);
    find("sd_bus_is_ready", isReady);
    find("sd_bus_process", process);
    find("sd_bus_wait", wait);
    find("sd_bus_set_method_call_timeout", setTimeout);
    find("sd_bus_call_method", callMethod);
    find("sd_bus_message_unref", unref);
    find("sd_bus_message_read_strv", readTexts);
    find("sd_bus_error_free", freeError);
  }
};

const BusLibrary& bus() {
  static const BusLibrary loaded;
  return loaded;
}

std::uint64_t microsecondsTo(BusClock::time_point deadline) {
  const auto left = std::chrono::duration_cast<std::chrono::microseconds>(deadline - BusClock::now()).count();
  return left > 0 ? static_cast<std::uint64_t>(left) : 0;
}

/// What a call came to: the reply, or what is wrong.
struct BusReply {
  BusReply() = default;
  BusReply(const BusReply&) = delete;
  BusReply& operator=(const BusReply&) = delete;
  ~BusReply() {
    bus().unref(message);
    bus().freeError(&error);
  }

  std::string_view name() const { return error.name != nullptr ? error.name : ""; }
  bool isSilent(int status) const {
    return status == -ETIMEDOUT || name() == "org.freedesktop.DBus.Error.NoReply" ||
           name() == "org.freedesktop.DBus.Error.Timeout";
  }
  bool isAbsent() const {
    return name() == "org.freedesktop.DBus.Error.ServiceUnknown" ||
           name() == "org.freedesktop.DBus.Error.NameHasNoOwner" ||
           name().starts_with("org.freedesktop.DBus.Error.Spawn.");
  }

  Result<> outcome(int status) const {
    if (status >= 0) return {};
    if (isSilent(status)) return refuse("the notification service does not answer");
    if (isAbsent()) return refuse("no notification service is running");
    return refuse("the notification service refused: {}",
                  error.message != nullptr ? error.message : std::strerror(-status));
  }

  sd_bus_message* message = nullptr;
  sd_bus_error error{};
};

std::string withoutMarkup(std::string_view text) {
  std::string plain;
  for (const char c : text) {
    switch (c) {
      case '&':
        plain += "&amp;";
        break;
      case '<':
        plain += "&lt;";
        break;
      case '>':
        plain += "&gt;";
        break;
      default:
        plain += c;
    }
  }
  return plain;
}

}  // namespace

Result<NotificationService> NotificationService::open(std::chrono::milliseconds patience) {
  if (!bus().missing().empty()) return refuse("notifications cannot be shown: {}", bus().missing());
  const Deadline deadline = BusClock::now() + patience;
  sd_bus* opened = nullptr;
  int status = bus().openUser(&opened);
  Bus held(opened, bus().closeUnref);
  // Until the bus has greeted us; the library itself would wait for minutes.
  while (status >= 0 && (status = bus().isReady(opened)) == 0) {
    status = bus().process(opened, nullptr);
    if (status != 0) continue;
    const auto left = microsecondsTo(deadline);
    status = left > 0 ? bus().wait(opened, left) : -ETIMEDOUT;
  }
  if (status == -ETIMEDOUT) return refuse("the session bus does not answer");
  if (status < 0) return refuse("there is no session bus to show notifications through");
  NotificationService service(std::move(held), deadline);
  if (auto read = service.readCapabilities(); !read) return tl::make_unexpected(read.error());
  return service;
}

Result<> NotificationService::readCapabilities() {
  BusReply reply;
  bus().setTimeout(bus_.get(), std::max<std::uint64_t>(microsecondsTo(deadline_), 1));
  const int status = bus().callMethod(bus_.get(), kService, kObject, kService, "GetCapabilities",
                                      &reply.error, &reply.message, "");
  if (auto done = reply.outcome(status); !done) return done;
  char** texts = nullptr;
  if (bus().readTexts(reply.message, &texts) >= 0 && texts != nullptr) {
    for (char** text = texts; *text != nullptr; ++text) {
      readsMarkup_ = readsMarkup_ || std::string_view(*text) == "body-markup";
      std::free(*text);
    }
    std::free(texts);
  }
  return {};
}

Result<> NotificationService::show(const std::string& title, const std::string& body, bool withSound) {
  const auto left = microsecondsTo(deadline_);
  if (left == 0) {
    // A call that nobody waits for might be shown, and would be shown again.
    isLost_ = true;
    return refuse("the notification service does not answer");
  }
  const std::string text = readsMarkup_ ? withoutMarkup(body) : body;
  BusReply reply;
  bus().setTimeout(bus_.get(), left);
  const auto notify = [&](auto... hints) {
    return bus().callMethod(bus_.get(), kService, kObject, kService, "Notify", &reply.error, &reply.message,
                            "susssasa{sv}i", "Moniva", 0U, "", title.c_str(), text.c_str(), 0U, hints..., -1);
  };
  const int status = withSound ? notify(1U, "sound-name", "s", "message-new-instant") : notify(0U);
  isLost_ = status < 0 && (reply.isSilent(status) || reply.isAbsent() || bus().isReady(bus_.get()) <= 0);
  return reply.outcome(status);
}

}  // namespace moniva

#else

namespace moniva {

Result<NotificationService> NotificationService::open(std::chrono::milliseconds) {
  return refuse("this program was built without notifications");
}

/// Never reached: none is ever opened.
Result<> NotificationService::show(const std::string&, const std::string&, bool) {
  return refuse("this program was built without notifications");
}

}  // namespace moniva

#endif
