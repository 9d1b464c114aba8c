#pragma once

#include <filesystem>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/phrase.h"
#include "calendar/date.h"
#include "platform/local_notifications.h"

namespace moniva {

/// What came of showing what was to be shown.
struct NotificationDelivery {
  int shown = 0;
  std::optional<Refusal> refused;  ///< the first there was
};

/// Which notifications are to be shown: those whose time has come save what was tried a moment ago, or those
/// too.
enum class NotificationTry { due, allThatWait };

/// Notifications of a desktop, which keeps none for later: requests wait in a file of the data folder until
/// the program runs at their time or after it, and are shown by the notification service then. Programs may
/// share the file. Safe to use from several threads.
class DesktopNotifications final : public LocalNotifications {
 public:
  /// `now` dates a damaged file that is set aside.
  DesktopNotifications(std::filesystem::path file, Date now) : file_(std::move(file)), now_(now) {}

  /// A desktop asks nobody.
  Result<> requestPermission(unsigned) override { return {}; }
  Result<> add(const NotificationRequest& request) override;
  Result<> removePending(std::string_view identifier) override;
  Result<> removeAllPending() override;
  Result<std::vector<NotificationRequest>> pending() override;
  void beginChanges() override;
  Result<> endChanges() override;
  void dropChanges() override;

  /// Shows what is to be shown by now, of one owner the last alone. What cannot be shown stays and is tried
  /// again ten minutes later at the earliest; what one is refused for holds up no other. Where nothing is to
  /// be shown this reads the lines that wait to be tried again and one more.
  NotificationDelivery deliverDue(const CivilTime& now, NotificationTry which = NotificationTry::due);
  /// Shows a notification at once.
  static Result<> showNow(const std::string& title, const std::string& body);

  /// What the person should be told of the file; taken away by the reader.
  std::optional<Phrase> takeNotice();

 private:
  struct Waiting {
    NotificationRequest request;
    CivilTime next;  ///< when it is to be shown, or to be tried again
  };
  using Requests = std::map<std::string, Waiting, std::less<>>;
  /// What is to become of the request of that identifier: without one it goes. A blank identifier is that of
  /// all requests.
  struct Change {
    std::string identifier;
    std::optional<NotificationRequest> request;
  };

  Result<> make(Change change);
  /// A file that is damaged, or far too large to be read by every command, is set aside.
  Result<Requests> read();
  /// Whether reading the file is worth while.
  bool mayHaveDue(const CivilTime& now, NotificationTry which) const;
  NotificationDelivery deliver(Requests& requests, const CivilTime& now, NotificationTry which) const;
  /// Whether anything changed.
  bool apply(Requests& requests) const;
  Result<> write(const Requests& requests) const;
  Result<> flush();

  std::filesystem::path file_;
  Date now_;
  std::mutex mutex_;
  std::vector<Change> changes_;      ///< held back, in their order
  std::vector<std::size_t> begins_;  ///< how many there were as each of the changes under way began
  std::optional<Phrase> notice_;
};

}  // namespace moniva
