#include "reports/transaction_report.h"

#include <algorithm>

#include "model/transaction_type.h"
#include "reports/report_block.h"
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

Result<TransReportSummary> TransactionReport::walk(Connection& db, PeriodUnit unit) {
  PeriodWalk periods(root_.calendar(), this->periods(), unit, beginDate_, endDate_);
  TransReportSummary list = periods.list();
  list.transactionType = transactionType_;
  list.category = category_;

  const ReadTransaction snapshot(db);
  while (!stopLoadingData_) {
    const auto period = periods.next();
    if (!period) break;
    auto found = summed(db, period->begin, period->end);
    if (!found) return found;
    if (!includeEmpty_ && found->count == 0) continue;
    periods.name(*found);
    list.take(std::move(*found));
  }
  if (stopLoadingData_ && unit == PeriodUnit::day) {
    root_.platform().log.line("== TransactionReport getReportByDay 查询被中断");
  }
  return list;
}

void TransactionReport::dispatch(PeriodUnit unit) {
  stopLoadingData_ = false;
  reportInBackground<TransReportSummary>(
      root_, "TransactionReport", [this, unit](Connection& db) { return walk(db, unit); },
      [delegate = delegate_](const Result<TransReportSummary>& list) {
        const auto listener = delegate.lock();
        if (!listener) return;
        if (list) {
          listener->transactionReportQueryFinished(*list);
        } else {
          listener->transactionReportQueryFailed(list.error());
        }
      });
}

Result<TransReportSummary> TransactionReport::waited(PeriodUnit unit) {
  stopLoadingData_ = false;
  return reportNow<TransReportSummary>(root_, "TransactionReport",
                                       [&](Connection& db) { return walk(db, unit); });
}

void TransactionReport::getReportByYear() {
  dispatch(PeriodUnit::year);
}
void TransactionReport::getReportByMonth() {
  dispatch(PeriodUnit::month);
}
void TransactionReport::getReportByDay() {
  dispatch(PeriodUnit::day);
}

Result<TransReportSummary> TransactionReport::reportByYear() {
  return waited(PeriodUnit::year);
}
Result<TransReportSummary> TransactionReport::reportByMonth() {
  return waited(PeriodUnit::month);
}
Result<TransReportSummary> TransactionReport::reportByDay() {
  return waited(PeriodUnit::day);
}

}  // namespace moniva
