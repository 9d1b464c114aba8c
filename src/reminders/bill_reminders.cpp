#include "reminders/bill_reminders.h"

#include "reminders/fire_times.h"
#include "reminders/reminder_records.h"
#include "reminders/reminder_schedule.h"
#include "reminders/reminder_texts.h"
#include "storage/writes.h"

namespace moniva {

namespace {

/// Nothing where there is no such row.
Result<std::optional<bool>> wishOf(const MVTransaction& transaction) {
  Connection* db = transaction.root().db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  Run run = db->query("select needNotify from transactions where eid = ?", {transaction.eid});
  std::optional<bool> wish;
  if (run.next()) wish = run.integer(0) != 0;
  if (!run.ok()) return tl::make_unexpected(db->refusal());
  return wish;
}

}  // namespace

Result<bool> notificationEnabled(const MVTransaction& transaction) {
  return wishOf(transaction).map([](const auto& wish) { return wish.value_or(false); });
}

Result<> setNotificationEnabled(const MVTransaction& transaction, bool enabled) {
  MVAppRoot& root = transaction.root();
  return atomically(root, [&](Connection&) -> Result<> {
    const auto wish = wishOf(transaction);
    if (!wish) return tl::make_unexpected(wish.error());
    if (!*wish) return refuse("there is no record '{}'", transaction.eid);
    Result<> done;
    // The stamp is of the whole row, so a row that says so already is not written.
    if (**wish != enabled) {
      done = write(root, "update transactions set needNotify = ?, editDate = ?, edit_ipid = ? where eid = ?",
                   enabled, root.editStamp(), root.itsUDID(), transaction.eid);
    }
    if (!done || enabled) return done;
    if (auto cancelled = deleteNotification(transaction); !cancelled)
      return tl::make_unexpected(cancelled.error());
    return {};
  });
}

Date dueDateOf(const MVTransaction& transaction) {
  if (transaction.recordKind == RecordKind::repeatSeed) {
    const Calendar& here = transaction.root().calendar();
    if (transaction.timeZone.empty() || transaction.timeZone == here.zone()) return transaction.datetime;
    const auto home = Calendar::make(transaction.timeZone, here.locale());
    return home ? here.beginOfDay((*home)->dayNumber(transaction.datetime)) : transaction.datetime;
  }
  const bool hasDay = transaction.isPayment && !transaction.paid && transaction.payDate.secondsSince1970 > 0;
  return hasDay ? transaction.payDate : transaction.datetime;
}

Result<int> scheduleNotificationForDate(const MVTransaction& transaction, Date date) {
  MVAppRoot& root = transaction.root();
  const Date now = root.now();
  const auto text = ReminderTexts(root).ofRecord(transaction, date);
  std::vector<Reminder> missing;
  for (const auto& time : fireTimesFor(root.calendar(), transaction.eid, date)) {
    if (time.date <= now) continue;
    const auto known = isReminderRecorded(root, time.identifier);
    if (!known) return tl::make_unexpected(known.error());
    if (*known) continue;
    missing.push_back({.identifier = time.identifier,
                       .owner = transaction.eid,
                       .title = text.title,
                       .message = text.message,
                       .fireDate = time.date});
  }
  return scheduleReminders(root, missing);
}

Result<int> deleteNotification(const MVTransaction& transaction) {
  const auto records = reminderRecordsOf(transaction.root(), transaction.eid);
  return records ? cancelReminders(transaction.root(), *records) : tl::make_unexpected(records.error());
}

}  // namespace moniva
