#include "reports/transaction_report.h"

#include <algorithm>

#include "calendar/date_texts.h"
#include "model/transaction_type.h"
#include "storage/transaction.h"

namespace moniva {
namespace {

bool isOneOf(int code, std::initializer_list<int> codes) {
  return std::ranges::find(codes, code) != codes.end();
}

}  // namespace

TransactionReport::TransactionReport(MVAppRoot& root)
    : root_(root), monivaAccount_(root), beginDate_(root.now()), endDate_(beginDate_), now_(beginDate_) {
  setTransactionType(transactionType_);
}

void TransactionReport::setTransactionType(int type) {
  transactionType_ = type;
  xctj_type_in_.clear();
  xctj_type_out_.clear();
  switch (type) {
    case 1050:
    case 2312:
      xctj_type_ = "(type > 10 and type < 50) ";
      xctj_type_in_ = "(type = 11 or (type > 21 and type < 29)) ";
      xctj_type_out_ = "(type = 12 or (type > 31 and type < 39)) ";
      return;
    case 1112:
      xctj_type_ = "(type = 11 or type = 12)";
      xctj_type_in_ = "type = 11 ";
      xctj_type_out_ = "type = 12 ";
      return;
    case kind::kIncome:
      xctj_type_in_ = "type = 11 ";
      break;
    case kind::kExpense:
      xctj_type_out_ = "type = 12 ";
      break;
    default:
      break;
  }
  xctj_type_ = xctj_type_in_.empty() ? xctj_type_out_ : xctj_type_in_;
}

void TransactionReport::setCategory(std::optional<MVCategory> category) {
  category_ = std::move(category);
  if (category_) setTransactionType(category_->type);
}

void TransactionReport::setMonivaAccount(const MonivaAccount& account) {
  monivaAccount_ = account;
  xctj_account_ = accountQuerySQL(account);
  xctj_paid_ = " and paid = 1";
}

BookPeriods TransactionReport::periods() const {
  return BookPeriods(root_.calendar(), monivaAccount_.periodStarts(), now_);
}

void TransactionReport::label(TransReportSummary& summary) const {
  const auto book = periods();
  const Date begin = summary.beginDate;
  const Date end = summary.endDate;
  if (book.getFiscalYear(begin) == book.getFiscalYear(end)) summary.year = book.getFiscalYear(begin);
  if (book.getFiscalMonth(begin) == book.getFiscalMonth(end) &&
      book.getYearForFiscalMonth(begin) == book.getYearForFiscalMonth(end)) {
    summary.month = book.getFiscalMonth(begin);
    summary.year = book.getYearForFiscalMonth(begin);
  }
}

void TransactionReport::sum(Connection& db, TransReportSummary& summary, std::string_view sql,
                            std::initializer_list<Value> arguments, int& count, double& amount) const {
  Run run = db.query(sql, arguments);
  if (!run.next()) return;
  const int found = static_cast<int>(run.integer(1));
  if (found > 0) {
    summary.count += found;
    count = found;
  }
  amount = run.real(0);
}

TransReportSummary TransactionReport::getSummaryFrom(Date from, Date to) {
  TransReportSummary summary;
  summary.transactionType = transactionType_;
  summary.category = category_;
  summary.beginDate = from;
  summary.endDate = to;
  label(summary);
  Connection* db = root_.db().getDatabase();
  if (db == nullptr || xctj_account_.empty()) return summary;
  const Date begin = root_.calendar().dateBegin(from);
  const Date end = root_.calendar().dateEnd(to);
  const std::string& key = monivaAccount_.pk;

  if (category_) {
    const bool isIncome = category_->type == kind::kIncome;
    const int item = isIncome ? kind::kIncome : kind::kExpense;
    const int furtherItem = isIncome ? kind::kFurtherIncome : kind::kFurtherExpense;
    sum(*db, summary,
        fmt::format(
            "select sum(amount) as amount, count(eid) as eid_count from transactions where deleted = 0{} and"
            " ? <= datetime and datetime <= ? and {} = ? and (type = ? or type = ?) and {} ",
            xctj_paid_, category_->isSubCate() ? "subcategory" : "category", xctj_account_),
        {begin, end, category_->pk, item, furtherItem, key},
        isIncome ? summary.incomeCount : summary.expenseCount,
        isIncome ? summary.incomeAmount : summary.expenseAmount);
    return summary;
  }
  if (monivaAccount_.isAccount()) {
    const std::string transfers = fmt::format(
        "select sum(amount) as amount, count(eid) as eid_count from transactions where deleted = 0 and paid "
        "= 1 and"
        " ? <= datetime and datetime <= ? and type = ? and {}",
        xctj_account_);
    if (isOneOf(transactionType_, {1050, 2333, 112129, 23, 2312})) {
      sum(*db, summary, transfers, {begin, end, kind::kTransferIn, key}, summary.transferinCount,
          summary.transferinAmount);
    }
    if (isOneOf(transactionType_, {1050, 2333, 123139, 33})) {
      sum(*db, summary, transfers, {begin, end, kind::kTransferOut, key}, summary.transferoutCount,
          summary.transferoutAmount);
    }
  }
  if (transactionType_ != kind::kTransferIn && !xctj_type_in_.empty()) {
    sum(*db, summary,
        fmt::format(
            "select sum(amount) as amount, count(eid) as eid_count from transactions where deleted = 0{} and"
            " ? <= datetime and datetime <= ? and {} and {}",
            xctj_paid_, xctj_account_, xctj_type_in_),
        {begin, end, key}, summary.incomeCount, summary.incomeAmount);
  }
  if (transactionType_ != kind::kTransferOut && !xctj_type_out_.empty()) {
    sum(*db, summary,
        fmt::format(
            "select sum(amount) as amount, count(eid) as eid_count from transactions where deleted = 0{} and"
            " type != 33 and ? <= datetime and datetime <= ? and {} and {}",
            xctj_paid_, xctj_account_, xctj_type_out_),
        {begin, end, key}, summary.expenseCount, summary.expenseAmount);
  }
  return summary;
}

Date TransactionReport::periodEnd(Unit unit, Date start) const {
  switch (unit) {
    case Unit::year:
      return periods().lastDateOfYear(start);
    case Unit::month:
      return periods().lastDateOfMonth(start);
    case Unit::day:
      break;
  }
  return start;
}

std::string TransactionReport::title(Unit unit, const TransReportSummary& summary, Date start) const {
  const Calendar& calendar = root_.calendar();
  switch (unit) {
    case Unit::year:
      return fmt::format("{}", periods().getFiscalYear(start));
    case Unit::month:
      return fmt::format("{}, {}",
                         stringOfMonthName(calendar, calendar.dateWithYear(summary.year, summary.month, 1)),
                         summary.year);
    case Unit::day:
      break;
  }
  return fmt::format("{} {}", stringOfDateMediumStyle(calendar, start), stringOfWeekdayName(calendar, start));
}

TransReportSummary TransactionReport::walk(Unit unit) {
  const Calendar& calendar = root_.calendar();
  const auto book = periods();
  TransReportSummary list;
  list.transactionType = transactionType_;
  list.category = category_;
  list.beginDate = beginDate_;
  list.endDate = endDate_;
  label(list);
  const int firstYear = book.getFiscalYear(beginDate_);
  const int lastYear = book.getFiscalYear(endDate_);
  list.title =
      firstYear == lastYear ? fmt::format("{}", firstYear) : fmt::format("{} -- {}", firstYear, lastYear);

  Connection* db = root_.db().getDatabase();
  if (db == nullptr) return list;
  const ReadTransaction snapshot(*db);
  Date start = beginDate_;
  while (!calendar.isAfterDay(start, endDate_) && !stopLoadingData_) {
    Date end = periodEnd(unit, start);
    if (calendar.isAfterDay(end, endDate_)) end = endDate_;
    auto summary = getSummaryFrom(start, end);
    if (includeEmpty_ || summary.count > 0) {
      if (unit == Unit::month) {
        // A month cut by the bounds of the list keeps the label of the whole one.
        summary.month = book.getFiscalMonth(start);
        summary.year = book.getYearForFiscalMonth(start);
      } else if (unit == Unit::year) {
        summary.year = book.getFiscalYear(start);
        summary.month = 0;
      } else {
        summary.year = calendar.year(start);
        summary.month = calendar.month(start);
        summary.day = calendar.day(start);
      }
      summary.title = title(unit, summary, start);
      list.count += summary.count;
      list.incomeCount += summary.incomeCount;
      list.expenseCount += summary.expenseCount;
      list.transferinCount += summary.transferinCount;
      list.transferoutCount += summary.transferoutCount;
      list.incomeAmount += summary.incomeAmount;
      list.expenseAmount += summary.expenseAmount;
      list.transferinAmount += summary.transferinAmount;
      list.transferoutAmount += summary.transferoutAmount;
      list.maxInSumAmount = std::max(list.maxInSumAmount, summary.incomeAmount);
      list.maxOutSumAmount = std::max(list.maxOutSumAmount, summary.expenseAmount);
      list.listArray.push_back(std::move(summary));
    }
    start = calendar.getNextDay(end);
  }
  if (stopLoadingData_ && unit == Unit::day) {
    root_.platform().log.line("== TransactionReport getReportByDay 查询被中断");
  }
  return list;
}

void TransactionReport::dispatch(Unit unit) {
  stopLoadingData_ = false;
  root_.db().dispatchInDatabase("TransactionReport", [this, unit](Connection&) {
    auto list = std::make_shared<TransReportSummary>(walk(unit));
    root_.platform().mainQueue.dispatch([delegate = delegate_, list] {
      if (const auto listener = delegate.lock()) listener->transactionReportQueryFinished(*list);
    });
  });
}

TransReportSummary TransactionReport::waited(Unit unit) {
  stopLoadingData_ = false;
  TransReportSummary list;
  root_.db().inDatabase("TransactionReport", [&](Connection&) { list = walk(unit); });
  return list;
}

void TransactionReport::getReportByYear() {
  dispatch(Unit::year);
}
void TransactionReport::getReportByMonth() {
  dispatch(Unit::month);
}
void TransactionReport::getReportByDay() {
  dispatch(Unit::day);
}

TransReportSummary TransactionReport::reportByYear() {
  return waited(Unit::year);
}
TransReportSummary TransactionReport::reportByMonth() {
  return waited(Unit::month);
}
TransReportSummary TransactionReport::reportByDay() {
  return waited(Unit::day);
}

}  // namespace moniva
