#include "app/refresh_reminders.h"

#include "app/do_db_updater.h"
#include "reminders/reminder_upkeep.h"
#include "reports/bill_report.h"

namespace moniva {

Result<> refreshReminders(MVAppRoot& root) {
  if (!root.db().isOpen() || root.db().isReadOnly() || lacksColumns(root)) return {};
  auto done = BillReport::createBillNotifaction(root);
  const auto changes = bringRemindersUpToDate(root);
  if (!changes && done) done = tl::make_unexpected(changes.error());
  return done;
}

}  // namespace moniva
