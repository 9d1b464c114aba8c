#include "reminders/repay_reminders.h"
#include "reports/bill_report.h"

namespace moniva {
namespace {

Result<> remindOfBill(MVAppRoot& root, const MonivaAccount& account) {
  const auto bill = getCorrentBill(account);
  if (!bill) return tl::make_unexpected(bill.error());
  const Calendar& calendar = root.calendar();
  // After a short month two months may be due on one day.
  const bool isOneDay = calendar.isSameDay(bill->lastDueDate, bill->dueDate);
  const bool owesLast = bill->lastMonthNeedReayAmount > 0;
  const bool owesThis = bill->thisMonthNeedReayAmount > 0;
  Result<> done;
  // It may have another due day by now.
  if (auto kept = keepRepayNotifications(account, {bill->lastDueDate, bill->dueDate}); !kept) {
    done = tl::make_unexpected(kept.error());
  }
  const auto settle = [&](Date due, bool owes) {
    const bool isToCome = owes && !calendar.isHistory(due, root.now());
    const auto changed =
        isToCome ? addRepayNotificationForDate(account, due) : deleteRepayNotificationForDate(account, due);
    if (!changed && done) done = tl::make_unexpected(changed.error());
  };
  if (!isOneDay) settle(bill->lastDueDate, owesLast);
  // It may be due before the program is opened again.
  settle(bill->dueDate, owesThis || (isOneDay && owesLast));
  return done;
}

}  // namespace

Result<> BillReport::createBillNotifaction(MVAppRoot& root) {
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  std::vector<std::string> keys;
  {
    Run run = db->query(
        "select oldTitle from account where kind = 1 and type = '_DebtAccount' and deleted = 0 and enabled ="
        " 1 and oldTitle != '' and isGroup = 0");
    while (run.next()) keys.emplace_back(run.text(0));
    if (!run.ok()) return tl::make_unexpected(db->refusal());
  }
  // One account that fails does not keep the others from being reminded of.
  Result<> done;
  for (const auto& key : keys) {
    const auto account = MonivaAccount::getAccountWithPK(root, key);
    if (!account || !account->repayNotificationEnabled()) continue;
    auto reminded = remindOfBill(root, *account);
    if (!reminded && done) done = std::move(reminded);
  }
  return done;
}

}  // namespace moniva
