#include "reports/alerts.h"

#include <algorithm>

#include "calendar/date_texts.h"
#include "model/mv_transaction.h"
#include "model/record_list.h"
#include "storage/writes.h"

namespace moniva {
namespace {

std::string joinedAlert(const std::string& what, const std::string& when) {
  return fmt::format("{} / {}", what, when);
}

Result<std::vector<BillAlert>> billAlerts(MVAppRoot& root, Connection& db, const BillAmount& billAmount) {
  std::vector<std::string> keys;
  {
    Run run = db.query(
        "select oldTitle from account where type = '_DebtAccount' and deleted = 0 and enabled = 1 and"
        " kind = 1 and isGroup = 0");
    while (run.next()) keys.emplace_back(run.text(0));
    if (!run.ok()) return tl::make_unexpected(db.refusal());
  }
  const Calendar& calendar = root.calendar();
  std::vector<BillAlert> bills;
  for (const auto& key : keys) {
    const auto account = MonivaAccount::getAccountWithPK(root, key);
    if (!account) continue;
    const BookPeriods periods(calendar, account->periodStarts(), root.now());
    BillAlert bill;
    bill.endDate = calendar.getPreviouslyDay(periods.firstDateOfMonth());
    bill.beginDate = periods.firstDateOfMonth(bill.endDate);
    const auto amount = billAmount(*account, bill.beginDate, bill.endDate);
    if (!amount) return tl::make_unexpected(amount.error());
    if (*amount <= 0) continue;
    bill.account = key;
    bill.title = account->title;
    bill.currency = account->currency;
    bill.dueDate = periods.dueDate(bill.beginDate);
    bill.lastMonthBileAmount = *amount;
    const Date month = periods.namesakeOfMonth(bill.beginDate);
    bill.text = joinedAlert(account->title,
                            fmt::format("{}, {}", stringOfMonthName(calendar, month), calendar.year(month)));
    bills.push_back(std::move(bill));
  }
  return bills;
}

/// What a plan is for, how far it is paid, and its currency.
Result<> describePlan(MVAppRoot& root, RecordNames& names, InstallmentAlert& alert) {
  const auto whole = RecordWhole::of(root, alert.eid);
  if (!whole) return tl::make_unexpected(whole.error());
  const auto item = MVTransaction::transactionFromEID(root, alert.eid, &names);
  if (!*whole || !item) return refusalOfStore(root);
  const auto& items = (*whole)->group.items;
  alert.parts = static_cast<int>(items.size());
  alert.paidCount = static_cast<int>(std::ranges::count(items, true, &TransactionItem::paid));
  alert.currency = (*whole)->currency(names);
  const std::string& what = !item->categoryString.empty() ? item->categoryString
                            : !item->note.empty()         ? item->note
                                                          : item->vendorString;
  alert.text = joinedAlert(what, stringOfDateMediumStyle(root.calendar(), alert.datetime));
  return {};
}

Result<std::vector<InstallmentAlert>> installmentAlerts(MVAppRoot& root, Connection& db) {
  std::vector<InstallmentAlert> alerts;
  {
    Run run = db.query(
        // Beside min() the other columns are those of its row.
        "select transferEID, count(eid), sum(amount), min(datetime) as first, eid from transactions where"
        " paid = 0 and deleted = 0 and (type = ? or type = ?) and syear = 1003 and bid = 20 and"
        " datetime <= ? and transferEID != '' group by transferEID order by first",
        {kind::kIncome, kind::kExpense, root.calendar().dateEnd(root.now())});
    while (run.next()) {
      auto& alert = alerts.emplace_back();
      alert.transferEID = run.text(0);
      alert.count = static_cast<int>(run.integer(1));
      alert.amount = run.real(2);
      alert.datetime = run.date(3);
      alert.eid = run.text(4);
    }
    if (!run.ok()) return tl::make_unexpected(db.refusal());
  }
  RecordNames names(root);
  for (auto& alert : alerts) {
    if (auto read = describePlan(root, names, alert); !read) return tl::make_unexpected(read.error());
  }
  return alerts;
}

}  // namespace

Result<double> spentLessRefunded(const MonivaAccount& account, Date from, Date to) {
  Connection* db = account.root().db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  const Calendar& calendar = account.root().calendar();
  Run run = db->query(
      "select sum(amount) as amount from transactions where ? <= datetime and datetime <= ? and account = ?"
      " and deleted = 0 and paid = 1 and type = ?",
      {calendar.dateBegin(from), calendar.dateEnd(to), account.pk, kind::kExpense});
  if (!run.next()) return tl::make_unexpected(db->refusal());
  return run.real(0);
}

Result<AlertInfo> allAlertInfo(MVAppRoot& root, const BillAmount& billAmount) {
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  const ReadTransaction snapshot(*db);
  auto bills = billAlerts(root, *db, billAmount);
  if (!bills) return tl::make_unexpected(bills.error());
  auto installments = installmentAlerts(root, *db);
  if (!installments) return tl::make_unexpected(installments.error());
  return AlertInfo{std::move(*bills), std::move(*installments)};
}

}  // namespace moniva
