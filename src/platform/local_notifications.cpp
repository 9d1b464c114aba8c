#include "platform/local_notifications.h"

#include <algorithm>

namespace moniva {

std::string_view notificationOwner(std::string_view identifier) {
  return identifier.substr(0, identifier.rfind('_'));
}

Result<> MemoryLocalNotifications::add(const NotificationRequest& request) {
  const std::scoped_lock lock(mutex_);
  requests_.insert_or_assign(request.identifier, request);
  return {};
}

Result<> MemoryLocalNotifications::removePending(std::string_view identifier) {
  const std::scoped_lock lock(mutex_);
  if (const auto at = requests_.find(identifier); at != requests_.end()) requests_.erase(at);
  return {};
}

Result<> MemoryLocalNotifications::removeAllPending() {
  const std::scoped_lock lock(mutex_);
  requests_.clear();
  return {};
}

Result<std::vector<NotificationRequest>> MemoryLocalNotifications::pending() {
  std::vector<NotificationRequest> list;
  const std::scoped_lock lock(mutex_);
  for (const auto& [identifier, request] : requests_) list.push_back(request);
  std::ranges::stable_sort(list, {}, &NotificationRequest::trigger);
  return list;
}

}  // namespace moniva
