#include "reminders/reminder_schedule.h"

#include "reminders/mv_notification_manager.h"
#include "reminders/reminder_records.h"
#include "storage/writes.h"

namespace moniva {
namespace {

Result<> record(MVAppRoot& root, const Reminder& reminder) {
  if (reminder.row == 0) {
    return recordReminder(root, {.identifier = reminder.identifier,
                                 .owner = reminder.owner,
                                 .title = reminder.title,
                                 .scheduledAt = root.editStamp()});
  }
  if (!reminder.isRetitled) return {};
  return write(root, "update category set title = ?, editDate = ?, edit_ipid = ? where pk = ?",
               reminder.title, root.editStamp(), root.itsUDID(), reminder.row);
}

}  // namespace

Result<int> scheduleReminders(MVAppRoot& root, const std::vector<Reminder>& reminders,
                              std::optional<Refusal>* refused) {
  if (reminders.empty()) return 0;
  return atomically(root, [&](Connection&) -> Result<int> {
    MVNotificationManager manager(root);
    NotificationChanges changes(*root.platform().localNotifications);
    std::vector<const Reminder*> scheduled;
    for (const auto& reminder : reminders) {
      auto done = manager.scheduleNotificationWithTitle(reminder.title, reminder.message, reminder.fireDate,
                                                        reminder.identifier);
      if (done) {
        scheduled.push_back(&reminder);
      } else if (refused == nullptr) {
        return tl::make_unexpected(done.error());
      } else if (!*refused) {
        *refused = done.error();
      }
    }
    // Once they are kept, so that there is no record of what nobody will show.
    if (auto kept = changes.end(); !kept) return tl::make_unexpected(kept.error());
    int recorded = 0;
    for (const auto* reminder : scheduled) {
      if (auto done = record(root, *reminder); !done) return tl::make_unexpected(done.error());
      if (reminder->row == 0) ++recorded;
    }
    return recorded;
  });
}

}  // namespace moniva
