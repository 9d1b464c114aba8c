#include "reports/alerts.h"

#include <algorithm>

#include "calendar/date_texts.h"
#include "model/mv_transaction.h"
#include "model/record_list.h"
#include "reports/bill_report.h"
#include "storage/writes.h"

namespace moniva {
namespace {

std::string joinedAlert(const std::string& what, const std::string& when) {
  return fmt::format("{} / {}", what, when);
}

Result<std::vector<BillAlert>> billAlerts(MVAppRoot& root) {
  const auto accounts = openCreditAccounts(root);
  if (!accounts) return tl::make_unexpected(accounts.error());
  const Calendar& calendar = root.calendar();
  std::vector<BillAlert> bills;
  Result<> readAll;
  bool readAny = false;
  for (const auto& account : *accounts) {
    const auto billed = getCorrentBill(account);
    if (!billed) {
      // The others are to be told of all the same.
      root.platform().log.line(fmt::format("== bill of {}: {}", account.title, billed.error().why));
      if (readAll) readAll = tl::make_unexpected(billed.error());
      continue;
    }
    readAny = true;
    if (billed->lastMonthNeedReayAmount <= 0 && billed->earlierNeedReayAmount <= 0) continue;
    BillAlert bill;
    bill.account = account.pk;
    bill.title = account.title;
    bill.currency = account.currency;
    bill.beginDate = billed->lastMonth.beginDate;
    bill.endDate = billed->lastMonth.endDate;
    bill.dueDate = billed->lastDueDate;
    bill.lastMonthBileAmount = billed->lastMonthBileAmount;
    bill.needReayAmount = billed->lastMonthNeedReayAmount;
    bill.earlierNeedReayAmount = billed->earlierNeedReayAmount;
    bill.earlierDueDate = billed->earlierDueDate;
    const Date month =
        BookPeriods(calendar, account.periodStarts(), root.now()).namesakeOfMonth(bill.beginDate);
    bill.text = joinedAlert(account.title,
                            fmt::format("{}, {}", stringOfMonthName(calendar, month), calendar.year(month)));
    bills.push_back(std::move(bill));
  }
  if (!readAll && !readAny) return tl::make_unexpected(readAll.error());
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

Result<AlertInfo> allAlertInfo(MVAppRoot& root) {
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  // Reading bills may write what they carry over, which a snapshot would not allow.
  auto bills = billAlerts(root);
  if (!bills) return tl::make_unexpected(bills.error());
  const ReadTransaction snapshot(*db);
  auto installments = installmentAlerts(root, *db);
  if (!installments) return tl::make_unexpected(installments.error());
  return AlertInfo{std::move(*bills), std::move(*installments)};
}

}  // namespace moniva
