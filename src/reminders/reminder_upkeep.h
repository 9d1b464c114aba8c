#pragma once

#include "storage/mv_app_root.h"

/// Which reminders should exist, made true: after records were written, whoever wrote them and however.
namespace moniva {

struct ReminderChanges {
  int scheduled = 0;
  int cancelled = 0;
};

/// Schedules what is missing for pending transactions and live series that are to be reminded of, and cancels
/// what is no longer due: of transactions that were deleted, paid, put to another day or no longer wanted,
/// of series that ended, of accounts that were deleted, closed or whose reminders were switched off. All in
/// one transaction; writes nothing where nothing is to be changed. What the host will not schedule is left
/// unrecorded, to be tried again, and told by the refusal.
Result<ReminderChanges> bringRemindersUpToDate(MVAppRoot& root);

}  // namespace moniva
