#pragma once

#include <string_view>

#include "storage/mv_app_root.h"

namespace moniva {

/// Schedules local notifications with the host's notification centre and takes them back. What is scheduled
/// is also recorded in the store, so that nothing is scheduled twice: see reminder_records.h.
class MVNotificationManager {
 public:
  explicit MVNotificationManager(MVAppRoot& root) : root_(&root) {}

  /// Asks for permission (alert and sound) and adds one request that is shown at the date, by the wall clock
  /// of the user's zone to the second, once. Refused where the host has no notifications or will not have
  /// this one.
  Result<> scheduleNotificationWithTitle(std::string_view title, std::string_view message, Date date,
                                         std::string_view identifier);
  /// Takes back the pending request of that identifier; one that is not known is no fault.
  Result<> cancelNotificationWithIdentifier(std::string_view identifier);
  /// Takes back all pending requests.
  Result<> cancelAllNotifications();

 private:
  MVAppRoot* root_;
};

}  // namespace moniva
