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
    : root_(root), monivaAccount_(root), beginDate_(root.now()), endDate_(beginDate_), now_(beginDate_) {}

void TransactionReport::setTransactionType(int type) {
  transactionType_ = type;
  composeSums();
}

void TransactionReport::setCategory(std::optional<MVCategory> category) {
  category_ = std::move(category);
  if (category_) transactionType_ = category_->type;
  composeSums();
}

void TransactionReport::setMonivaAccount(const MonivaAccount& account) {
  monivaAccount_ = account;
  xctj_account_ = accountQuerySQL(account);
  composeSums();
}

BookPeriods TransactionReport::periods() const {
  return BookPeriods(root_.calendar(), monivaAccount_.periodStarts(), now_);
}

void TransactionReport::composeSums() {
  sums_.clear();
  if (xctj_account_.empty()) return;
  using Summary = TransReportSummary;
  constexpr std::string_view kSettled =
      "select sum(amount) as amount, count(eid) as eid_count from transactions where deleted = 0 and paid = 1"
      " and ? <= datetime and datetime <= ?";
  if (category_) {
    const bool isIncome = category_->type == kind::kIncome;
    sums_ = {{fmt::format("{} and {} = ? and (type = {} or type = {}) and {}", kSettled,
                          category_->isSubCate() ? "subcategory" : "category",
                          isIncome ? kind::kIncome : kind::kExpense,
                          isIncome ? kind::kFurtherIncome : kind::kFurtherExpense, xctj_account_),
              isIncome ? &Summary::incomeCount : &Summary::expenseCount,
              isIncome ? &Summary::incomeAmount : &Summary::expenseAmount}};
    return;
  }
  const int code = transactionType_;
  if (monivaAccount_.isAccount() && isOneOf(code, {1050, 2333, 112129, 23, 2312})) {
    sums_.push_back({fmt::format("{} and type = {} and {}", kSettled, kind::kTransferIn, xctj_account_),
                     &Summary::transferinCount, &Summary::transferinAmount});
  }
  if (monivaAccount_.isAccount() && isOneOf(code, {1050, 2333, 123139, 33})) {
    sums_.push_back({fmt::format("{} and type = {} and {}", kSettled, kind::kTransferOut, xctj_account_),
                     &Summary::transferoutCount, &Summary::transferoutAmount});
  }
  const bool isWhole = isOneOf(code, {1050, 2312});
  if (isWhole || isOneOf(code, {1112, kind::kIncome})) {
    sums_.push_back({fmt::format("{} and {} and {}", kSettled, xctj_account_,
                                 isWhole ? "(type = 11 or (type > 21 and type < 29))" : "type = 11"),
                     &Summary::incomeCount, &Summary::incomeAmount});
  }
  if (isWhole || isOneOf(code, {1112, kind::kExpense})) {
    sums_.push_back({fmt::format("{} and type != 33 and {} and {}", kSettled, xctj_account_,
                                 isWhole ? "(type = 12 or (type > 31 and type < 39))" : "type = 12"),
                     &Summary::expenseCount, &Summary::expenseAmount});
  }
}

Result<TransReportSummary> TransactionReport::summed(Connection& db, Date from, Date to) const {
  TransReportSummary summary;
  summary.transactionType = transactionType_;
  summary.category = category_;
  summary.beginDate = from;
  summary.endDate = to;
  const Date begin = root_.calendar().dateBegin(from);
  const Date end = root_.calendar().dateEnd(to);
  const std::string& key = monivaAccount_.pk;
  for (const Sum& sum : sums_) {
    Run run = category_ ? db.query(sum.sql, {begin, end, category_->pk, key})
                        : db.query(sum.sql, {begin, end, key});
    if (run.next()) {
      summary.*sum.amount = run.real(0);
      summary.*sum.count = static_cast<int>(run.integer(1));
      summary.count += summary.*sum.count;
    }
    // A sum that could not be read must not pass for nothing.
    if (!run.ok()) return tl::make_unexpected(db.refusal());
  }
  return summary;
}

Result<TransReportSummary> TransactionReport::getSummaryFrom(Date from, Date to) const {
  Connection* db = root_.db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  auto summary = summed(*db, from, to);
  if (summary) summary->takeLabels(periods());
  return summary;
}

void TransactionReport::name(Unit unit, const BookPeriods& book, TransReportSummary& summary) const {
  const Calendar& calendar = root_.calendar();
  const Date start = summary.beginDate;
  switch (unit) {
    case Unit::year:
      summary.year = book.getFiscalYear(start);
      summary.title = fmt::format("{}", summary.year);
      return;
    case Unit::month: {
      // A month cut by the bounds of the list keeps the name of the whole one.
      const Date month = book.namesakeOfMonth(start);
      summary.month = calendar.month(month);
      summary.year = calendar.year(month);
      summary.title = fmt::format("{}, {}", stringOfMonthName(calendar, month), summary.year);
      return;
    }
    case Unit::day:
      break;
  }
  const DaySystem::Parts at = calendar.days().parts(calendar.dayNumber(start));
  summary.year = at.year;
  summary.month = at.month;
  summary.day = at.day;
  summary.title =
      fmt::format("{} {}", stringOfDateMediumStyle(calendar, start), stringOfWeekdayName(calendar, start));
}

Result<TransReportSummary> TransactionReport::walk(Connection& db, Unit unit) {
  const Calendar& calendar = root_.calendar();
  const auto book = periods();
  TransReportSummary list;
  list.transactionType = transactionType_;
  list.category = category_;
  list.beginDate = beginDate_;
  list.endDate = endDate_;
  list.takeLabels(book);
  const int firstYear = book.getFiscalYear(beginDate_);
  const int lastYear = book.getFiscalYear(endDate_);
  list.title =
      firstYear == lastYear ? fmt::format("{}", firstYear) : fmt::format("{} -- {}", firstYear, lastYear);

  const ReadTransaction snapshot(db);
  Date start = beginDate_;
  while (!calendar.isAfterDay(start, endDate_) && !stopLoadingData_) {
    Date end = unit == Unit::year    ? book.lastDateOfYear(start)
               : unit == Unit::month ? book.lastDateOfMonth(start)
                                     : start;
    if (calendar.isAfterDay(end, endDate_)) end = endDate_;
    auto found = summed(db, start, end);
    if (!found) return found;
    TransReportSummary& summary = *found;
    if (includeEmpty_ || summary.count > 0) {
      name(unit, book, summary);
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
  root_.db().dispatchInDatabase("TransactionReport", [this, unit](Connection& db) {
    auto list = std::make_shared<const Result<TransReportSummary>>(walk(db, unit));
    if (!*list) root_.db().faultLog().line(fmt::format("== TransactionReport {}", list->error().why));
    root_.platform().mainQueue.dispatch([delegate = delegate_, list] {
      const auto listener = delegate.lock();
      if (!listener) return;
      if (*list) {
        listener->transactionReportQueryFinished(**list);
      } else {
        listener->transactionReportQueryFailed(list->error());
      }
    });
  });
}

Result<TransReportSummary> TransactionReport::waited(Unit unit) {
  stopLoadingData_ = false;
  Result<TransReportSummary> list = refuse("the store cannot be read: it is closed or busy with other work");
  root_.db().inDatabase("TransactionReport", [&](Connection& db) { list = walk(db, unit); });
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

Result<TransReportSummary> TransactionReport::reportByYear() {
  return waited(Unit::year);
}
Result<TransReportSummary> TransactionReport::reportByMonth() {
  return waited(Unit::month);
}
Result<TransReportSummary> TransactionReport::reportByDay() {
  return waited(Unit::day);
}

}  // namespace moniva
