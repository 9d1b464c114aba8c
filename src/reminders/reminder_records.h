#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "storage/mv_app_root.h"

/// The records of what is scheduled: rows of `category` of type 98. They are of this device alone and never
/// travel: their `oldTitle` is empty.
namespace moniva {

inline constexpr int kReminderType = 98;

struct ReminderRecord {
  std::string identifier;  ///< column `parent`: the owner's key, '_' and the wall-clock time it is shown at
  std::string owner;       ///< column `oldParent`: a transaction's `eid` or an account's `pk`
  std::string title;
  Date fireDate{};
  Date scheduledAt{};  ///< column `editDate`
  std::int64_t row = 0;
  int deleted = 0;
};

/// The live records, the one shown first first. Refused when the store cannot be read.
Result<std::vector<ReminderRecord>> reminderRecords(MVAppRoot& root);
/// Those of one transaction or account.
Result<std::vector<ReminderRecord>> reminderRecordsOf(MVAppRoot& root, std::string_view owner);
/// The live ones and those that were cancelled.
Result<std::vector<ReminderRecord>> allReminderRecords(MVAppRoot& root);

/// Whether there is a live record with that identifier.
Result<bool> isReminderRecorded(MVAppRoot& root, std::string_view identifier);
/// Writes the record of a reminder scheduled at that moment, a stamp.
Result<> recordReminder(MVAppRoot& root, const ReminderRecord& record);
/// Takes the reminders back from the host and marks their records deleted, all or nothing. Answers how many.
Result<int> cancelReminders(MVAppRoot& root, const std::vector<ReminderRecord>& records);

}  // namespace moniva
