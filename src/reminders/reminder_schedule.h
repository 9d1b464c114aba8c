#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "storage/mv_app_root.h"

// Scheduling with the host and recording it, for the sources of this room.
namespace moniva {

struct Reminder {
  std::string identifier;
  std::string owner;
  std::string title;
  std::string message;
  Date fireDate;
  /// Of its live record; 0 where it has none yet.
  std::int64_t row = 0;
  /// The record has another title.
  bool isRetitled = false;
};

/// Schedules the reminders and then records those without a record, in one transaction. What the host refuses
/// is not recorded: it ends the operation, with nothing recorded, or is put into `refused` (the first one)
/// and passed over, where that is given. Answers how many were recorded.
Result<int> scheduleReminders(MVAppRoot& root, const std::vector<Reminder>& reminders,
                              std::optional<Refusal>* refused = nullptr);

}  // namespace moniva
