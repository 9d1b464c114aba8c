#include "app/refresh_reminders.h"

#include "app/do_db_updater.h"
#include "reminders/reminder_upkeep.h"

namespace moniva {

Result<> refreshReminders(MVAppRoot& root, const BillBasis* basis) {
  if (!root.db().isOpen() || root.db().isReadOnly() || lacksColumns(root)) return {};
  auto done = remindOfBillsChangedSince(root, basis);
  const auto changes = bringRemindersUpToDate(root);
  if (!changes && done) done = tl::make_unexpected(changes.error());
  return done;
}

}  // namespace moniva
