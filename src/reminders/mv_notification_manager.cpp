#include "reminders/mv_notification_manager.h"

namespace moniva {

Result<> MVNotificationManager::scheduleNotificationWithTitle(std::string_view title,
                                                              std::string_view message, Date date,
                                                              std::string_view identifier) {
  Platform& platform = root_->platform();
  LocalNotifications& host = *platform.localNotifications;
  constexpr unsigned kAsked = LocalNotifications::kAlert | LocalNotifications::kSound;
  if (auto allowed = host.requestPermission(kAsked); !allowed) return allowed;
  return host.add({.identifier = std::string(identifier),
                   .title = std::string(title),
                   .body = std::string(message),
                   .hasDefaultSound = true,
                   .userInfo = {{"identifier", std::string(identifier)}},
                   .trigger = platform.calendar->civilTime(date)});
}

Result<> MVNotificationManager::cancelNotificationWithIdentifier(std::string_view identifier) {
  return root_->platform().localNotifications->removePending(identifier);
}

Result<> MVNotificationManager::cancelAllNotifications() {
  return root_->platform().localNotifications->removeAllPending();
}

}  // namespace moniva
