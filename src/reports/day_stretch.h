#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

#include "calendar/calendar.h"

namespace moniva {

/// Some days that follow one another, and which of them a moment is in. The calendar is asked once a day, and
/// not at all where there is no moment.
class DayStretch {
 public:
  /// By day numbers, both counted in. `calendar` must outlive this object.
  DayStretch(const Calendar& calendar, std::int64_t first, std::int64_t last)
      : calendar_(&calendar), first_(first), size_(static_cast<std::size_t>(last - first + 1)) {}

  std::size_t size() const { return size_; }
  /// Where the day begins; its end is its last 23:59:59.
  Date begin(std::size_t day) {
    reckon();
    return Date{begins_[day]};
  }
  /// False for a day that the zone left out.
  bool exists(std::size_t day) {
    reckon();
    return begins_[day] <= ends_[day];
  }

  /// Calls `take` with the place of each day the moment is in: none within the second that ends a day, two
  /// where the clock showed midnight twice. Moments may come in any order; cheapest are those that rise.
  template <class Take>
  void cut(double moment, const Take& take) {
    reckon();
    if (moment > ends_[at_]) {
      while (at_ + 1 < size_ && moment > ends_[at_]) ++at_;
    } else if (at_ > 0 && moment <= ends_[at_ - 1]) {
      at_ = static_cast<std::size_t>(std::lower_bound(ends_.begin(), ends_.end(), moment) - ends_.begin());
    }
    if (moment > ends_[at_]) return;
    for (std::size_t day = at_; day < size_ && begins_[day] <= moment; ++day) take(day);
  }

 private:
  void reckon() {
    if (!begins_.empty()) return;
    begins_.reserve(size_);
    ends_.reserve(size_);
    for (std::size_t day = 0; day < size_; ++day) {
      const std::int64_t number = first_ + static_cast<std::int64_t>(day);
      begins_.push_back(calendar_->beginOfDay(number).secondsSince1970);
      ends_.push_back(calendar_->endOfDay(number).secondsSince1970);
    }
  }

  const Calendar* calendar_;
  std::int64_t first_;
  std::size_t size_;
  std::size_t at_ = 0;
  std::vector<double> begins_;
  std::vector<double> ends_;
};

}  // namespace moniva
