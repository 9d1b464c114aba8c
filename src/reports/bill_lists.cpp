#include <span>

#include "model/record_names.h"
#include "reports/bill_chain.h"
#include "reports/bill_report.h"
#include "reports/period_walk.h"
#include "reports/report_block.h"
#include "storage/transaction.h"

// What makes up a bill: its charges, and what was paid back and carried over.
namespace moniva {
namespace {

constexpr std::string_view kBillReport = "BillReport";
constexpr std::string_view kCharges =
    "deleted = 0  and paid = 1 and ? <= datetime and datetime <= ? and (type = 12 or (type > 31 and type <"
    " 39)) and account = ? order by datetime";

using BillBounds = std::array<Value, 3>;

/// The first and the last moment of the days, and the account.
BillBounds boundsOf(const MonivaAccount& account, Date from, Date to) {
  const Calendar& calendar = account.root().calendar();
  return {calendar.dateBegin(from), calendar.dateEnd(to), account.pk};
}

Result<std::vector<RepayLine>> repayLines(Connection& db, const MonivaAccount& account, Date from, Date to) {
  const auto [begin, end, key] = boundsOf(account, from, to);
  std::vector<RepayLine> lines;
  const ReadTransaction snapshot(db);
  {
    Run run = db.query(
        "select eid, amount, datetime, account, type from transactions where deleted = 0 and type = ? and"
        " ? <= datetime and datetime <= ? and account = ? order by datetime",
        {kind::kOverpayment, begin, end, key});
    while (run.next()) {
      lines.push_back({std::string(run.text(0)), kind::kOverpayment, run.date(2), run.real(1), true});
    }
    if (!run.ok()) return tl::make_unexpected(db.refusal());
  }
  Run run = db.query(
      "select eid, syear, type, transferEID, datetime, amount from transactions where deleted = 0 and paid ="
      " 1 and ? <= datetime and datetime <= ? and (type = 11 or (type > 21 and type < 29)) and account = ?"
      " order by datetime",
      {begin, end, key});
  while (run.next()) {
    lines.push_back({std::string(run.text(0)), static_cast<int>(run.integer(2)), run.date(4), run.real(5)});
  }
  if (!run.ok()) return tl::make_unexpected(db.refusal());
  return lines;
}

/// The day without its records, which are named alone.
Result<TransReportSummary> dayOfBill(Connection& db, const MonivaAccount& account, Date date) {
  MVAppRoot& root = account.root();
  TransReportSummary day;
  day.beginDate = day.endDate = date;
  PeriodWalk(root.calendar(), BookPeriods(root.calendar(), account.periodStarts(), root.now()),
             PeriodUnit::day, date, date)
      .name(day);
  const ReadTransaction snapshot(db);
  const auto repaid = repayLines(db, account, date, date);
  if (!repaid) return tl::make_unexpected(repaid.error());
  for (const auto& line : *repaid) {
    if (line.isCarried) continue;
    ++day.incomeCount;
    day.incomeAmount += line.amount;
  }
  Run run = db.query(fmt::format("select eid, amount from transactions where {}", kCharges),
                     boundsOf(account, date, date));
  while (run.next()) {
    ++day.expenseCount;
    day.expenseAmount += run.real(1);
    day.transactions.emplace_back(root).eid = run.text(0);
  }
  if (!run.ok()) return tl::make_unexpected(db.refusal());
  day.count = day.incomeCount + day.expenseCount;
  return day;
}

/// Hands a result on with its records loaded: reading one may mend it, so nothing else is being read then.
std::function<void(const Result<TransReportSummary>&)> withCharges(
    MVAppRoot& root, std::function<void(const Result<TransReportSummary>&)> completion) {
  return [&root, completion = std::move(completion)](const Result<TransReportSummary>& read) {
    if (!read) return completion(read);
    Result<TransReportSummary> loaded = read;
    RecordNames names(root);
    const auto load = [&](TransReportSummary& day) {
      std::erase_if(day.transactions, [&](MVTransaction& record) { return !record.getAllValue(names); });
    };
    load(*loaded);
    for (auto& day : loaded->listArray) load(day);
    completion(loaded);
  };
}

}  // namespace

Result<std::vector<RepayLine>> BillReport::repayList(Date from, Date toDate) const {
  Connection* db = monivaAccount.root().db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  return repayLines(*db, monivaAccount, from, toDate);
}

Result<std::vector<MVTransaction>> BillReport::chargeList(Date from, Date toDate) const {
  std::vector<MVTransaction> charges;
  const auto read =
      MVTransaction::transactionsWhere(monivaAccount.root(), kCharges, boundsOf(monivaAccount, from, toDate),
                                       [&](MVTransaction record) { charges.push_back(std::move(record)); });
  if (!read) return tl::make_unexpected(read.error());
  return charges;
}

Result<std::vector<RepayLine>> BillReport::repaymentsOf(const BillReportSummary& bill) const {
  auto lines = repayList(bill.payoffBaginDate, bill.payoffEndDate);
  if (!lines) return lines;
  std::erase_if(*lines, [](const RepayLine& line) { return line.isCarried; });
  if (bill.lastRepayMoreAmount <= 0) return lines;
  const auto month = BillMonths(monivaAccount).called(bill.year, bill.month);
  if (!month) return tl::make_unexpected(month.error());
  // Its row may say something else as yet, or be missing where it could not be written.
  const auto row =
      MVTransaction::transactionFromEID(monivaAccount.root(), carryIdentifier(monivaAccount, *month));
  lines->insert(lines->begin(), {row && row->deleted == 0 ? row->eid : std::string(), kind::kOverpayment,
                                 bill.beginDate, bill.lastRepayMoreAmount, true});
  return lines;
}

void BillReport::getRepayListFromDate(Date from, Date toDate,
                                      std::function<void(const Result<std::vector<RepayLine>>&)> completion) {
  reportInBackground<std::vector<RepayLine>>(
      monivaAccount.root(), std::string(kBillReport),
      [account = monivaAccount, from, toDate](Connection& db) {
        return repayLines(db, account, from, toDate);
      },
      std::move(completion));
}

void BillReport::getSummaryForDate(Date date,
                                   std::function<void(const Result<TransReportSummary>&)> completion) {
  MVAppRoot& root = monivaAccount.root();
  reportInBackground<TransReportSummary>(
      root, std::string(kBillReport),
      [account = monivaAccount, date](Connection& db) { return dayOfBill(db, account, date); },
      withCharges(root, std::move(completion)));
}

void BillReport::getDailySummary(std::function<void(const Result<TransReportSummary>&)> completion) {
  MVAppRoot& root = monivaAccount.root();
  stopLoadingData = std::make_shared<std::atomic<bool>>(false);
  reportInBackground<TransReportSummary>(
      root, std::string(kBillReport),
      [account = monivaAccount, stop = stopLoadingData, begin = beginDate,
       end = endDate](Connection& db) -> Result<TransReportSummary> {
        MVAppRoot& in = account.root();
        const ReadTransaction snapshot(db);
        PeriodWalk days(in.calendar(), BookPeriods(in.calendar(), account.periodStarts(), in.now()),
                        PeriodUnit::day, begin, end);
        TransReportSummary list = days.list();
        while (const auto period = days.next()) {
          list.isPartial = *stop;
          if (list.isPartial) break;
          auto day = dayOfBill(db, account, period->begin);
          if (!day) return day;
          if (day->expenseCount > 0) list.take(std::move(*day));
        }
        return list;
      },
      withCharges(root, std::move(completion)));
}

}  // namespace moniva
