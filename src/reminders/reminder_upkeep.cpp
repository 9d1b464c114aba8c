#include "reminders/reminder_upkeep.h"

#include <map>
#include <optional>
#include <set>

#include "model/repeat_rule.h"
#include "model/transaction_type.h"
#include "reminders/bill_reminders.h"
#include "reminders/fire_times.h"
#include "reminders/mv_notification_manager.h"
#include "reminders/reminder_records.h"
#include "reminders/reminder_schedule.h"
#include "reminders/reminder_texts.h"
#include "storage/writes.h"

namespace moniva {
namespace {

/// Days for which records of what was shown are kept.
constexpr int kDaysKept = 40;

/// What of the host and of the records is not as it should be.
struct ReminderPlan {
  std::vector<Reminder> schedule;
  std::vector<ReminderRecord> cancel;
  std::vector<std::string> takeBack;  ///< requests that nothing records
  std::vector<std::int64_t> forget;   ///< rows of records

  bool isEmpty() const { return schedule.empty() && cancel.empty() && takeBack.empty() && forget.empty(); }
};

bool isOpen(const std::shared_ptr<const MonivaAccount>& holder) {
  return !holder || (holder->isDeleted == 0 && holder->enabled);
}

/// Whether the series will make another record: not where its rule or date is none, past its end, or where
/// its book or account is closed or gone.
bool comesAgain(const MVTransaction& seed) {
  return repeatRuleFrom(seed.repeat) && seed.datetime.secondsSince1970 > 0 && isOpen(seed.bookAccount) &&
         isOpen(seed.paymentAccount) && isOpen(seed.paymentAccountB) &&
         (seed.repeatEndDate.secondsSince1970 <= 0 ||
          seed.root().calendar().dateEnd(seed.repeatEndDate) >= seed.datetime);
}

class ReminderPlanner {
 public:
  explicit ReminderPlanner(MVAppRoot& root) : root_(root), texts_(root), now_(root.now()) {}

  Result<ReminderPlan> plan() {
    if (auto read = readOwners(); !read) return tl::make_unexpected(read.error());
    auto records = allReminderRecords(root_);
    if (!records) return tl::make_unexpected(records.error());
    auto pending = root_.platform().localNotifications->pending();
    if (!pending) return tl::make_unexpected(pending.error());
    for (auto& request : *pending) {
      auto identifier = request.identifier;
      pending_.insert_or_assign(std::move(identifier), std::move(request));
    }
    for (auto& record : *records) judge(std::move(record));
    for (auto& [identifier, reminder] : wanted_) {
      if (reminder.fireDate > now_ && isToBeScheduled(reminder))
        plan_.schedule.push_back(std::move(reminder));
    }
    for (const auto& [identifier, request] : pending_) {
      if (!live_.contains(identifier) && !wanted_.contains(identifier)) plan_.takeBack.push_back(identifier);
    }
    return std::move(plan_);
  }

 private:
  /// Pending records and live series that are to be reminded of.
  Result<> readOwners() {
    std::vector<MVTransaction> owners;
    const auto take = [&](MVTransaction owner) { owners.push_back(std::move(owner)); };
    RecordNames names(root_);
    auto read = MVTransaction::transactionsWhere(
        root_, "paid = 0 and needNotify = 1 and deleted = 0 and type < 60 order by datetime, eid", {}, take,
        &names);
    const Value ofSeries[] = {kind::kRepeatSeed, advanced::kInstallment};
    if (read) {
      read = MVTransaction::transactionsWhere(
          root_, "type = ? and needNotify = 1 and deleted = 0 and (syear != ? or syear is NULL)", ofSeries,
          take, &names);
    }
    if (!read) return read;
    // Of a transfer one side is reminded of: the one the money leaves.
    std::set<std::string> leaving;
    for (const auto& owner : owners) {
      if (owner.type() == kind::kTransferOut) leaving.insert(owner.transferEID);
    }
    for (const auto& owner : owners) {
      if (owner.recordKind == RecordKind::repeatSeed && !comesAgain(owner)) continue;
      if (owner.type() == kind::kTransferIn && leaving.contains(owner.transferEID)) continue;
      want(owner);
    }
    return {};
  }

  void want(const MVTransaction& owner) {
    const Date due = dueDateOf(owner);
    const auto text = texts_.ofRecord(owner, due);
    for (auto& time : fireTimesFor(root_.calendar(), owner.eid, due)) {
      wanted_.insert_or_assign(time.identifier, Reminder{.identifier = time.identifier,
                                                         .owner = owner.eid,
                                                         .title = text.title,
                                                         .message = text.message,
                                                         .fireDate = time.date});
    }
  }

  /// What becomes of a record.
  void judge(ReminderRecord record) {
    if (root_.calendar().dateWithDay(record.fireDate, kDaysKept) < now_) {
      plan_.forget.push_back(record.row);
      return;
    }
    if (record.deleted != 0) return;
    if (live_.contains(record.identifier)) {
      plan_.forget.push_back(record.row);
      return;
    }
    const auto wanted = wanted_.find(record.identifier);
    if (wanted != wanted_.end()) {
      wanted->second.row = record.row;
      wanted->second.isRetitled = wanted->second.title != record.title;
      live_.insert(record.identifier);
    } else if (wantsRepayment(record.owner)) {
      live_.insert(record.identifier);
    } else if (record.fireDate > now_ || pending_.contains(record.identifier)) {
      plan_.cancel.push_back(std::move(record));
    }
  }

  /// Which due dates it has is for who knows its bills.
  bool wantsRepayment(const std::string& owner) {
    const auto [known, isNew] = accounts_.try_emplace(owner, false);
    if (isNew) {
      const auto account = MonivaAccount::getAccountWithPK(root_, owner);
      known->second = account && account->isDeleted == 0 && account->enabled && account->isDebtAccount() &&
                      account->repayNotificationEnabled();
    }
    return known->second;
  }

  bool isToBeScheduled(const Reminder& reminder) const {
    const auto request = pending_.find(reminder.identifier);
    return reminder.row == 0 || reminder.isRetitled || request == pending_.end() ||
           request->second.title != reminder.title || request->second.body != reminder.message;
  }

  MVAppRoot& root_;
  ReminderTexts texts_;
  Date now_;
  std::map<std::string, Reminder, std::less<>> wanted_;  ///< with those whose time has come
  std::map<std::string, NotificationRequest, std::less<>> pending_;
  std::set<std::string, std::less<>> live_;
  std::map<std::string, bool> accounts_;
  ReminderPlan plan_;
};

Result<ReminderChanges> carryOut(MVAppRoot& root, const ReminderPlan& plan, std::optional<Refusal>& refused) {
  NotificationChanges changes(*root.platform().localNotifications);
  MVNotificationManager manager(root);
  for (const auto& identifier : plan.takeBack) {
    if (auto taken = manager.cancelNotificationWithIdentifier(identifier); !taken)
      return tl::make_unexpected(taken.error());
  }
  const auto cancelled = cancelReminders(root, plan.cancel);
  if (!cancelled) return tl::make_unexpected(cancelled.error());
  const auto scheduled = scheduleReminders(root, plan.schedule, &refused);
  if (!scheduled) return tl::make_unexpected(scheduled.error());
  for (const auto row : plan.forget) {
    if (auto gone = write(root, "delete from category where pk = ? and type = ?", row, kReminderType); !gone)
      return tl::make_unexpected(gone.error());
  }
  if (auto made = changes.end(); !made) return tl::make_unexpected(made.error());
  return ReminderChanges{.scheduled = *scheduled, .cancelled = *cancelled};
}

}  // namespace

Result<ReminderChanges> bringRemindersUpToDate(MVAppRoot& root) {
  if (root.db().isReadOnly()) return ReminderChanges{};
  const auto seen = ReminderPlanner(root).plan();
  if (!seen || seen->isEmpty()) {
    return seen ? Result<ReminderChanges>(ReminderChanges{}) : tl::make_unexpected(seen.error());
  }
  std::optional<Refusal> refused;
  auto done = atomically(root, [&](Connection&) -> Result<ReminderChanges> {
    // Again, as another program may have done it meanwhile.
    const auto plan = ReminderPlanner(root).plan();
    return plan ? carryOut(root, *plan, refused) : tl::make_unexpected(plan.error());
  });
  if (done && refused) return tl::make_unexpected(*refused);
  return done;
}

}  // namespace moniva
