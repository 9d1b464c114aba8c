#include "reminders/repay_reminders.h"
#include "reports/bill_report.h"

namespace moniva {
namespace {

Result<> remindOfBill(MVAppRoot& root, const MonivaAccount& account) {
  const auto bill = getCorrentBill(account);
  if (!bill) return tl::make_unexpected(bill.error());
  const Calendar& calendar = root.calendar();
  std::vector<Date> owed;
  // What is charged now may be due before the program is opened again.
  for (const auto& [due, amount] : {std::pair(bill->lastDueDate, bill->lastMonthNeedReayAmount),
                                    std::pair(bill->dueDate, bill->thisMonthNeedReayAmount)}) {
    if (amount > 0 && !calendar.isHistory(due, root.now())) owed.push_back(due);
  }
  const auto cancelled = keepRepayNotifications(account, owed);
  if (!cancelled) return tl::make_unexpected(cancelled.error());
  for (const Date due : owed) {
    const auto scheduled = addRepayNotificationForDate(account, due);
    if (!scheduled) return tl::make_unexpected(scheduled.error());
  }
  return {};
}

}  // namespace

Result<> BillReport::createBillNotifaction(MVAppRoot& root) {
  const auto accounts = openCreditAccounts(root);
  if (!accounts) return tl::make_unexpected(accounts.error());
  // One account that fails does not keep the others from being reminded of.
  Result<> done;
  for (const auto& account : *accounts) {
    if (!account.repayNotificationEnabled()) continue;
    auto reminded = remindOfBill(root, account);
    if (!reminded && done) done = std::move(reminded);
  }
  return done;
}

}  // namespace moniva
