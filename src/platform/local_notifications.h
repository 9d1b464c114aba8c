#pragma once

#include <map>
#include <mutex>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "base/result.h"
#include "calendar/civil_time.h"

namespace moniva {

/// What a person is to be told at a moment of their day.
struct NotificationRequest {
  /// The key of what it is of, '_' and its moment. A request of the same identifier takes the place of the
  /// one before.
  std::string identifier;
  std::string title;
  std::string body;
  bool hasDefaultSound = true;
  std::map<std::string, std::string> userInfo;
  /// The year, month, day, hour, minute and second of the wall clock at which it is shown, once.
  CivilTime trigger;
};

/// The key in an identifier; all of it where it has no '_'.
std::string_view notificationOwner(std::string_view identifier);

/// The host's centre of local notifications: it keeps requests and shows each at its time, whether or not the
/// program runs then. Every call is refused, in words, where the host has no such service or will not.
class LocalNotifications {
 public:
  /// What permission is asked for; the numbers are added up.
  static constexpr unsigned kSound = 2;
  static constexpr unsigned kAlert = 4;

  virtual ~LocalNotifications() = default;
  /// Asks the person, or remembers what they said. Refused when they do not want to be told.
  virtual Result<> requestPermission(unsigned options) = 0;
  virtual Result<> add(const NotificationRequest& request) = 0;
  /// Takes back what was not shown yet; an identifier that is not known is no fault.
  virtual Result<> removePending(std::string_view identifier) = 0;
  virtual Result<> removeAllPending() = 0;
  /// What was not shown yet, the earliest first.
  virtual Result<std::vector<NotificationRequest>> pending() = 0;

  // See NotificationChanges. They nest.
  virtual void beginChanges() {}
  virtual Result<> endChanges() { return {}; }
  virtual void dropChanges() {}
};

/// While it lives a host that keeps its requests in one place may hold changes back, to make them at once: by
/// end() alone. What was not ended is given up where it was held back.
class NotificationChanges {
 public:
  explicit NotificationChanges(LocalNotifications& host) : host_(&host) { host.beginChanges(); }
  ~NotificationChanges() {
    if (host_ != nullptr) host_->dropChanges();
  }
  NotificationChanges(const NotificationChanges&) = delete;
  NotificationChanges& operator=(const NotificationChanges&) = delete;

  /// Makes them, or leaves that to the changes they are part of. Refused, with none of them made, where the
  /// host cannot.
  Result<> end() { return host_ != nullptr ? std::exchange(host_, nullptr)->endChanges() : Result<>(); }

 private:
  LocalNotifications* host_;
};

/// Keeps requests in memory and shows none.
class MemoryLocalNotifications : public LocalNotifications {
 public:
  Result<> requestPermission(unsigned) override { return {}; }
  Result<> add(const NotificationRequest& request) override;
  Result<> removePending(std::string_view identifier) override;
  Result<> removeAllPending() override;
  Result<std::vector<NotificationRequest>> pending() override;

 private:
  std::mutex mutex_;
  std::map<std::string, NotificationRequest, std::less<>> requests_;
};

}  // namespace moniva
