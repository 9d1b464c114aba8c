#include "reminders/repay_reminders.h"

#include <algorithm>
#include <map>
#include <set>

#include "reminders/fire_times.h"
#include "reminders/reminder_records.h"
#include "reminders/reminder_schedule.h"
#include "reminders/reminder_texts.h"

namespace moniva {
namespace {

/// Cancels those of the account's reminders whose identifier is, or is not, one of these. What was shown
/// stays as it is.
Result<int> cancelWhere(const MonivaAccount& account, const std::set<std::string>& identifiers, bool isOne) {
  MVAppRoot& root = account.root();
  auto records = reminderRecordsOf(root, account.pk);
  if (!records) return tl::make_unexpected(records.error());
  std::erase_if(*records,
                [&](const auto& record) { return identifiers.contains(record.identifier) != isOne; });
  const auto isPast = [&](const auto& record) { return record.fireDate <= root.now(); };
  if (std::ranges::any_of(*records, isPast)) {
    const auto pending = root.platform().localNotifications->pending();
    if (!pending) return tl::make_unexpected(pending.error());
    std::set<std::string_view> waiting;
    for (const auto& request : *pending) waiting.insert(request.identifier);
    std::erase_if(*records,
                  [&](const auto& record) { return isPast(record) && !waiting.contains(record.identifier); });
  }
  return cancelReminders(root, *records);
}

std::set<std::string> identifiersFor(const MonivaAccount& account, const std::vector<Date>& dueDates) {
  std::set<std::string> identifiers;
  for (const Date due : dueDates) {
    for (auto& time : fireTimesFor(account.root().calendar(), account.pk, due)) {
      identifiers.insert(std::move(time.identifier));
    }
  }
  return identifiers;
}

}  // namespace

Result<int> addRepayNotificationForDate(const MonivaAccount& account, Date date) {
  if (!account.repayNotificationEnabled()) return 0;
  MVAppRoot& root = account.root();
  const auto records = reminderRecordsOf(root, account.pk);
  if (!records) return tl::make_unexpected(records.error());
  std::map<std::string, const ReminderRecord*, std::less<>> recorded;
  for (const auto& record : *records) recorded.emplace(record.identifier, &record);
  const auto pending = root.platform().localNotifications->pending();
  if (!pending) return tl::make_unexpected(pending.error());
  std::map<std::string_view, const NotificationRequest*> known;
  for (const auto& request : *pending) known.emplace(request.identifier, &request);

  const Date now = root.now();
  std::vector<Reminder> missing;
  for (const auto& time : fireTimesFor(root.calendar(), account.pk, date)) {
    if (time.date <= now) continue;
    const auto text = ReminderTexts(root).ofRepayment(account, date, time.daysLeft);
    const auto record = recorded.find(time.identifier);
    const auto request = known.find(time.identifier);
    // A host may have lost it, or have it with a title the account had before.
    if (record != recorded.end() && request != known.end() && request->second->body == text.message) continue;
    missing.push_back({.identifier = time.identifier,
                       .owner = account.pk,
                       .title = text.title,
                       .message = text.message,
                       .fireDate = time.date,
                       .row = record != recorded.end() ? record->second->row : 0});
  }
  return scheduleReminders(root, missing);
}

Result<int> deleteRepayNotification(const MonivaAccount& account) {
  return cancelWhere(account, {}, false);
}

Result<int> deleteRepayNotificationForDate(const MonivaAccount& account, Date date) {
  return cancelWhere(account, identifiersFor(account, {date}), true);
}

Result<int> keepRepayNotifications(const MonivaAccount& account, const std::vector<Date>& dueDates) {
  return cancelWhere(account, identifiersFor(account, dueDates), false);
}

}  // namespace moniva
