#include "app/loading_center.h"

#include <fmt/ranges.h>

#include <algorithm>

namespace moniva {

void MVLoadingDataControllerCenter::beginLoading(std::string_view text) {
  const std::scoped_lock lock(mutex_);
  tasks_.emplace_back(text);
}

void MVLoadingDataControllerCenter::loadingFinished(std::string_view text) {
  const std::scoped_lock lock(mutex_);
  if (const auto found = std::ranges::find(tasks_, text); found != tasks_.end()) tasks_.erase(found);
}

std::string MVLoadingDataControllerCenter::convertLoadingString() const {
  const std::scoped_lock lock(mutex_);
  return fmt::format("{}", fmt::join(tasks_, ", "));
}

}  // namespace moniva
