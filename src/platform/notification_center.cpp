#include "platform/notification_center.h"

#include <algorithm>

namespace moniva {

NotificationCenter::Token NotificationCenter::observe(std::string_view name, std::function<void()> block) {
  auto observer = std::make_shared<Observer>(Observer{std::string(name), std::move(block)});
  const std::scoped_lock lock(mutex_);
  std::erase_if(observers_, [](const auto& weak) { return weak.expired(); });
  observers_.push_back(observer);
  return observer;
}

void NotificationCenter::post(std::string_view name) {
  std::vector<std::shared_ptr<Observer>> told;
  {
    const std::scoped_lock lock(mutex_);
    for (const auto& weak : observers_) {
      if (auto observer = weak.lock(); observer && observer->name == name)
        told.push_back(std::move(observer));
    }
  }
  for (const auto& observer : told) observer->block();
}

}  // namespace moniva
