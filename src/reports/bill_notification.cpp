#include "reports/bill_notification.h"

#include <set>

#include "platform/local_notifications.h"
#include "reminders/repay_reminders.h"
#include "reports/bill_report.h"

namespace moniva {
namespace {

Result<> remindOfBill(const MonivaAccount& account) {
  const auto bill = getCorrentBill(account);
  if (!bill) return tl::make_unexpected(bill.error());
  std::vector<Date> owed;
  // What is charged now may be due before the program is opened again.
  for (const auto& [due, amount] : {std::pair(bill->lastDueDate, bill->lastMonthNeedReayAmount),
                                    std::pair(bill->dueDate, bill->thisMonthNeedReayAmount)}) {
    if (amount > 0) owed.push_back(due);
  }
  const auto cancelled = keepRepayNotifications(account, owed);
  if (!cancelled) return tl::make_unexpected(cancelled.error());
  for (const Date due : owed) {
    const auto scheduled = addRepayNotificationForDate(account, due);
    if (!scheduled) return tl::make_unexpected(scheduled.error());
  }
  return {};
}

/// The keys of accounts whose bills may have changed since.
Result<std::set<std::string>> changedSince(MVAppRoot& root, const BillBasis& basis) {
  auto now = billBasis(root, basis.since);
  if (!now) return tl::make_unexpected(now.error());
  std::set<std::string> keys;
  for (const auto& [key, balance] : now->balances) {
    const auto before = basis.balances.find(key);
    if (before == basis.balances.end() || before->second != balance) keys.insert(key);
  }
  Connection* db = root.db().getDatabase();
  // The sign keeps the index of accounts out, which would be read whole.
  for (const char* sql : {"select distinct +account from transactions where editDate >= ?",
                          "select oldTitle from account where editDate >= ?"}) {
    Run run = db->query(sql, {basis.since});
    while (run.next()) keys.emplace(run.text(0));
    if (!run.ok()) return tl::make_unexpected(db->refusal());
  }
  return keys;
}

}  // namespace

Result<BillBasis> billBasis(MVAppRoot& root, Date since) {
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  BillBasis basis{since, {}};
  Run run = db->query("select oldTitle, totalBalance from account where kind = 1 and type = '_DebtAccount'");
  while (run.next()) basis.balances.insert_or_assign(std::string(run.text(0)), run.real(1));
  if (!run.ok()) return tl::make_unexpected(db->refusal());
  return basis;
}

Result<> BillReport::createBillNotifaction(MVAppRoot& root) {
  return remindOfBillsChangedSince(root, nullptr);
}

Result<> remindOfBillsChangedSince(MVAppRoot& root, const BillBasis* basis) {
  auto accounts = openCreditAccounts(root);
  if (!accounts) return tl::make_unexpected(accounts.error());
  if (basis != nullptr && !accounts->empty()) {
    const auto changed = changedSince(root, *basis);
    if (!changed) return tl::make_unexpected(changed.error());
    std::erase_if(*accounts, [&](const MonivaAccount& account) { return !changed->contains(account.pk); });
  }
  // One account that fails does not keep the others from being reminded of.
  NotificationChanges changes(*root.platform().localNotifications);
  Result<> done;
  for (const auto& account : *accounts) {
    if (!account.repayNotificationEnabled()) continue;
    auto reminded = remindOfBill(account);
    if (!reminded && done) done = std::move(reminded);
  }
  if (auto made = changes.end(); done) done = std::move(made);
  return done;
}

}  // namespace moniva
