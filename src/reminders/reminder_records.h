#pragma once

#include <string>
#include <vector>

#include "storage/mv_app_root.h"

/// The records of what is scheduled: rows of `category` of type 98. They are of this device alone and never
/// travel: their `oldTitle` is empty.
namespace moniva {

struct ReminderRecord {
  std::string identifier;  ///< column `parent`: the owner's key, '_' and the wall-clock time it is shown at
  std::string owner;       ///< column `oldParent`: a transaction's `eid` or an account's `pk`
  std::string title;
  Date fireDate;
  Date scheduledAt;  ///< column `editDate`
};

/// The live records, the one shown first first. Refused when the store cannot be read.
Result<std::vector<ReminderRecord>> reminderRecords(MVAppRoot& root);
/// Those of one transaction or account.
Result<std::vector<ReminderRecord>> reminderRecordsOf(MVAppRoot& root, std::string_view owner);

}  // namespace moniva
