#include "reports/bill_report.h"

#include <algorithm>

#include "calendar/date_texts.h"
#include "reports/bill_chain.h"
#include "storage/transaction.h"

namespace moniva {
namespace {

Result<> checkBilled(const MonivaAccount& account) {
  if (account.isGroup) return refuse("'{}' is a group; name one of its members", account.title);
  if (!account.isDebtAccount()) return refuse("'{}' is no credit account and has no bills", account.title);
  return {};
}

BillReportSummary summaryOf(const ChainedBill& bill) {
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
  return summary;
}

/// The bill of the month, its own figures asked for one kind at a time.
Result<BillReportSummary> billOf(const BillReport& report, const BillMonth& month) {
  const MonivaAccount& account = report.monivaAccount;
  Connection* db = account.root().db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  Result<BillChain> chain;
  {
    const ReadTransaction snapshot(*db);
    chain = readBillChain(account, month, 1);
    if (!chain) return tl::make_unexpected(chain.error());
    ChainedBill& bill = chain->bills.back();
    for (std::size_t i = 0; i < kChargedTypes.size(); ++i) {
      const auto charged = report.transactionSumFrom(month.begin, month.end, kChargedTypes.at(i));
      if (!charged) return tl::make_unexpected(charged.error());
      const auto repaid = report.transactionSumFrom(month.payoffBegin, month.payoffEnd, kRepaidTypes.at(i));
      if (!repaid) return tl::make_unexpected(repaid.error());
      bill.charged.at(i) = *charged;
      bill.repaid.at(i) = *repaid;
    }
  }
  if (auto kept = keepCarryRows(account, *chain); !kept) return tl::make_unexpected(kept.error());
  return summaryOf(chain->bills.back());
}

Result<BillReportSummary> billsUpTo(const MonivaAccount& account, const BillMonth& month, int count) {
  const auto chain = readBillChain(account, month, count);
  if (!chain) return tl::make_unexpected(chain.error());
  if (auto kept = keepCarryRows(account, *chain); !kept) return tl::make_unexpected(kept.error());
  BillReportSummary list;
  list.count = count;
  const auto& bills = chain->bills;
  for (auto bill = bills.rbegin(); bill != bills.rbegin() + count; ++bill) {
    list.listArray.push_back(summaryOf(*bill));
    list.maxBillAmount = std::max(list.maxBillAmount, list.listArray.back().bileAmount);
  }
  return list;
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
  return billOf(*this, *month);
}

Result<BillReportSummary> BillReport::getBillForDate(Date date) {
  if (auto billed = checkBilled(monivaAccount); !billed) return tl::make_unexpected(billed.error());
  return billOf(*this, BillMonths(monivaAccount).holding(date));
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
  const auto bills = billsUpTo(account, BillMonths(account).holding(account.root().now()), 2);
  if (!bills) return tl::make_unexpected(bills.error());
  const auto& present = bills->listArray.at(0);
  const auto& closed = bills->listArray.at(1);
  return CorrentBill{.lastDueDate = closed.dueDate,
                     .dueDate = present.dueDate,
                     .thisMonthBileAmount = present.bileAmount,
                     .thisMonthNeedReayAmount = present.needReayAmount,
                     .lastMonthBileAmount = closed.bileAmount,
                     .lastMonthNeedReayAmount = closed.needReayAmount,
                     .lastBeginDate = closed.beginDate,
                     .lastEndDate = closed.endDate};
}

}  // namespace moniva
