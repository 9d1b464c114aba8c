#include "reminders/reminder_records.h"

#include <algorithm>

#include "reminders/fire_times.h"
#include "reminders/mv_notification_manager.h"
#include "storage/writes.h"

namespace moniva {
namespace {

Result<std::vector<ReminderRecord>> recordsWhere(MVAppRoot& root, std::string_view condition,
                                                 std::initializer_list<Value> arguments) {
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  std::vector<ReminderRecord> list;
  Run run = db->query(
      fmt::format("select parent, oldParent, title, editDate, pk, deleted from category where {}", condition),
      arguments);
  while (run.next()) {
    list.push_back({.identifier = std::string(run.text(0)),
                    .owner = std::string(run.text(1)),
                    .title = std::string(run.text(2)),
                    .fireDate = fireDateOf(root.calendar(), run.text(0)),
                    .scheduledAt = run.date(3),
                    .row = run.integer(4),
                    .deleted = static_cast<int>(run.integer(5))});
  }
  if (!run.ok()) return tl::make_unexpected(db->refusal());
  std::ranges::stable_sort(list, {}, &ReminderRecord::fireDate);
  return list;
}

}  // namespace

Result<std::vector<ReminderRecord>> reminderRecords(MVAppRoot& root) {
  return recordsWhere(root, "deleted = 0 and type = ?", {kReminderType});
}

Result<std::vector<ReminderRecord>> reminderRecordsOf(MVAppRoot& root, std::string_view owner) {
  // The range is that of the identifiers which begin with the owner's key, for the index.
  return recordsWhere(root,
                      "deleted = 0 and type = ? and parent > ? and parent < ? and oldParent = ? order by pk",
                      {kReminderType, fmt::format("{}_", owner), fmt::format("{}`", owner), owner});
}

Result<std::vector<ReminderRecord>> allReminderRecords(MVAppRoot& root) {
  return recordsWhere(root, "type = ? order by pk", {kReminderType});
}

Result<bool> isReminderRecorded(MVAppRoot& root, std::string_view identifier) {
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  Run run = db->query("select parent from category where deleted = 0 and type = ? and parent = ?",
                      {kReminderType, identifier});
  const bool found = run.next();
  if (!run.ok()) return tl::make_unexpected(db->refusal());
  return found;
}

Result<> recordReminder(MVAppRoot& root, const ReminderRecord& record) {
  return write(
      root,
      "insert into category (title, oldParent, parent, type, oldTitle, editDate) values (?, ?, ?, ?, ?, ?)",
      record.title, record.owner, record.identifier, kReminderType, "", record.scheduledAt);
}

Result<int> cancelReminders(MVAppRoot& root, const std::vector<ReminderRecord>& records) {
  if (records.empty()) return 0;
  return atomically(root, [&](Connection&) -> Result<int> {
    MVNotificationManager manager(root);
    NotificationChanges changes(*root.platform().localNotifications);
    Result<> done;
    for (const auto& record : records) {
      if (done) done = manager.cancelNotificationWithIdentifier(record.identifier);
    }
    if (auto made = changes.end(); done) done = std::move(made);
    for (const auto& record : records) {
      if (!done) break;
      done = write(root, "update category set deleted = 1, editDate = ?, edit_ipid = ? where pk = ?",
                   root.editStamp(), root.itsUDID(), record.row);
    }
    if (!done) return tl::make_unexpected(done.error());
    return static_cast<int>(records.size());
  });
}

}  // namespace moniva
