#include "reminders/reminder_schedule.h"

#include "reminders/mv_notification_manager.h"
#include "reminders/reminder_records.h"
#include "storage/writes.h"

namespace moniva {
namespace {

/// Answers whether there is a record that was not there before. Another program may have recorded it since
/// the caller looked.
Result<bool> record(MVAppRoot& root, const Reminder& reminder) {
  Result<> done;
  if (reminder.row == 0) {
    const auto known = isReminderRecorded(root, reminder.identifier);
    if (!known || *known) return known.map([](bool) { return false; });
    done = recordReminder(root, {.identifier = reminder.identifier,
                                 .owner = reminder.owner,
                                 .title = reminder.title,
                                 .scheduledAt = root.editStamp()});
  } else if (reminder.isRetitled) {
    done = write(root, "update category set title = ?, editDate = ?, edit_ipid = ? where pk = ?",
                 reminder.title, root.editStamp(), root.itsUDID(), reminder.row);
  }
  return done.map([&] { return reminder.row == 0; });
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
      const auto done = record(root, *reminder);
      if (!done) return tl::make_unexpected(done.error());
      if (*done) ++recorded;
    }
    return recorded;
  });
}

}  // namespace moniva
