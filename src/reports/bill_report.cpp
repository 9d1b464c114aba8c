#include "reports/bill_report.h"

#include <algorithm>

#include "calendar/date_texts.h"
#include "model/entry_checks.h"
#include "reports/bill_chain.h"
#include "storage/transaction.h"

namespace moniva {
namespace {

Result<> checkBilled(const MonivaAccount& account) {
  if (account.isGroup) return refuse("'{}' is a group; name one of its members", account.title);
  if (!account.isDebtAccount()) return refuse("'{}' is no credit account and has no bills", account.title);
  return {};
}

BillReportSummary summaryOf(const BillChain& chain, std::size_t place) {
  const ChainedBill& bill = chain.bills.at(place);
  BillReportSummary summary;
  summary.year = bill.month.year;
  summary.month = bill.month.month;
  summary.beginDate = bill.month.begin;
  summary.endDate = bill.month.end;
  summary.dueDate = bill.month.due;
  summary.payoffBaginDate = bill.month.payoffBegin;
  summary.payoffEndDate = bill.month.payoffEnd;
  summary.bileAmount = totalOf(bill.charged);
  summary.repayAmount = totalOf(bill.repaid);
  summary.lastRepayMoreAmount = bill.carriedIn;
  summary.needReayAmount = std::max(0.0, bill.left());
  summary.thisRepayMoreAmount = bill.carriedOut();
  summary.repayComplete = summary.needReayAmount <= 0;
  summary.openAmount = bill.open;
  double earlier = 0;
  for (std::size_t i = 0; i < place; ++i) earlier += chain.bills[i].open;
  summary.earlierNeedReayAmount = withoutNoise(earlier);
  return summary;
}

Result<BillChain> keptChain(const MonivaAccount& account, const BillMonth& from, const BillMonth& upTo) {
  auto chain = readBillChain(account, from, upTo);
  if (chain) keepCarryRows(account, *chain);
  return chain;
}

Result<BillReportSummary> billsUpTo(const MonivaAccount& account, const BillMonth& month, int count) {
  const BillMonths months(account);
  BillMonth first = month;
  for (int i = 1; i < count; ++i) first = months.before(first);
  const auto chain = keptChain(account, first, month);
  if (!chain) return tl::make_unexpected(chain.error());
  BillReportSummary list;
  list.count = count;
  list.thisRepayMoreAmount = chain->above;
  for (std::size_t place = chain->bills.size(); list.listArray.size() < static_cast<std::size_t>(count);) {
    list.listArray.push_back(summaryOf(*chain, --place));
    list.maxBillAmount = std::max(list.maxBillAmount, list.listArray.back().bileAmount);
  }
  return list;
}

Result<BillReportSummary> billOf(const MonivaAccount& account, const BillMonth& month) {
  auto bills = billsUpTo(account, month, 1);
  if (!bills) return bills;
  return std::move(bills->listArray.front());
}

}  // namespace

std::string BillReportSummary::printLog(const Calendar& calendar) const {
  const auto day = [&](Date date) { return stringOfDatetime(calendar, date); };
  return fmt::format(
      "---- {}/{}\nbill period {} - {}\nrepay period {} - {}\n"
      "bileAmount {} lastRepayMoreAmount {}  repayAmount {} needRepay {}\n"
      "thisRepayMoreAmount {} repayComplete {:d}\n---------------------------------------",
      year, month, day(beginDate), day(endDate), day(payoffBaginDate), day(payoffEndDate), bileAmount,
      lastRepayMoreAmount, repayAmount, needReayAmount, thisRepayMoreAmount, repayComplete);
}

BillReport::BillReport(MonivaAccount account)
    : monivaAccount(std::move(account)), beginDate(monivaAccount.root().now()), endDate(beginDate) {}

Result<BillReportSummary> BillReport::getBillForYear(int year, int Month) {
  if (auto billed = checkBilled(monivaAccount); !billed) return tl::make_unexpected(billed.error());
  const auto month = BillMonths(monivaAccount).called(year, Month);
  if (!month) return tl::make_unexpected(month.error());
  return billOf(monivaAccount, *month);
}

Result<BillReportSummary> BillReport::getBillForDate(Date date) {
  if (auto billed = checkBilled(monivaAccount); !billed) return tl::make_unexpected(billed.error());
  return billOf(monivaAccount, BillMonths(monivaAccount).holding(date));
}

Result<BillReportSummary> BillReport::getBillAsOfNow(int year, int month) {
  if (auto billed = checkBilled(monivaAccount); !billed) return tl::make_unexpected(billed.error());
  const BillMonths months(monivaAccount);
  const auto called = months.called(year, month);
  if (!called) return tl::make_unexpected(called.error());
  const BillMonth present = months.holding(monivaAccount.root().now());
  if (present.name <= called->name) return billOf(monivaAccount, *called);
  const auto chain = keptChain(monivaAccount, *called, present);
  if (!chain) return tl::make_unexpected(chain.error());
  std::size_t place = 0;
  while (chain->bills.at(place).month.name < called->name) ++place;
  return summaryOf(*chain, place);
}

Result<BillReportSummary> BillReport::getBillsUpTo(int year, int month, int count) {
  constexpr int kMostBills = 1200;
  if (auto billed = checkBilled(monivaAccount); !billed) return tl::make_unexpected(billed.error());
  if (count < 1 || count > kMostBills)
    return refuse("a list has from 1 to {} bills, not {}", kMostBills, count);
  const auto last = BillMonths(monivaAccount).called(year, month);
  if (!last) return tl::make_unexpected(last.error());
  return billsUpTo(monivaAccount, *last, count);
}

Result<double> BillReport::transactionSumFrom(Date from, Date toDate, int Type) const {
  MVAppRoot& root = monivaAccount.root();
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  Run run = db->query(
      "select sum(amount) as amount from transactions where ? <= datetime and datetime <= ? and account = ?"
      " and deleted = 0 and paid = 1 and type = ?",
      {root.calendar().dateBegin(from), root.calendar().dateEnd(toDate), monivaAccount.pk, Type});
  if (!run.next()) return tl::make_unexpected(db->refusal());
  return run.real(0);
}

Result<CorrentBill> getCorrentBill(const MonivaAccount& account) {
  if (auto billed = checkBilled(account); !billed) return tl::make_unexpected(billed.error());
  const BillMonths months(account);
  const BillMonth month = months.holding(account.root().now());
  const auto chain = keptChain(account, months.before(month), month);
  if (!chain) return tl::make_unexpected(chain.error());
  CorrentBill bill;
  const std::size_t closed = chain->bills.size() - 2;
  const auto& last = bill.lastMonth = summaryOf(*chain, closed);
  const auto& present = bill.thisMonth = summaryOf(*chain, closed + 1);
  bill.lastDueDate = last.dueDate;
  bill.dueDate = present.dueDate;
  bill.thisMonthBileAmount = present.bileAmount;
  bill.thisMonthNeedReayAmount = present.openAmount;
  bill.lastMonthBileAmount = last.bileAmount;
  bill.lastMonthNeedReayAmount = last.openAmount;
  bill.lastMonthLateAmount = std::max(0.0, difference(last.needReayAmount, last.openAmount));
  bill.earlierNeedReayAmount = last.earlierNeedReayAmount;
  for (std::size_t i = 0; i < closed; ++i) {
    if (chain->bills[i].open > 0) bill.earlierDueDate = chain->bills[i].month.due;
  }
  return bill;
}

Result<std::vector<MonivaAccount>> openCreditAccounts(MVAppRoot& root) {
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  std::vector<std::string> keys;
  {
    Run run = db->query(
        "select oldTitle from account where kind = 1 and type = '_DebtAccount' and deleted = 0 and enabled ="
        " 1 and oldTitle != '' and isGroup = 0 order by orderID, eid");
    while (run.next()) keys.emplace_back(run.text(0));
    if (!run.ok()) return tl::make_unexpected(db->refusal());
  }
  std::vector<MonivaAccount> accounts;
  for (const auto& key : keys) {
    if (auto account = MonivaAccount::getAccountWithPK(root, key)) accounts.push_back(std::move(*account));
  }
  return accounts;
}

}  // namespace moniva
