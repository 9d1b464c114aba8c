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

/// Records that were named while the store was read. Reading one may mend it, so it is done when nothing else
/// is being read.
void loadRecords(RecordNames& names, std::vector<MVTransaction>& records) {
  std::erase_if(records, [&](MVTransaction& record) { return !record.getAllValue(names); });
}

void loadRecords(MVAppRoot& root, TransReportSummary& summary) {
  RecordNames names(root);
  loadRecords(names, summary.transactions);
  loadRecords(names, summary.pendinglistArray);
  for (auto& period : summary.listArray) loadRecords(names, period.pendinglistArray);
}

Result<TransReportSummary> withRecords(MVAppRoot& root, Result<TransReportSummary> read) {
  if (read) loadRecords(root, *read);
  return read;
}

}  // namespace

TransactionReport::TransactionReport(MVAppRoot& root)
    : root_(root), monivaAccount_(root), beginDate_(root.now()), endDate_(beginDate_), now_(beginDate_) {}

void TransactionReport::setTransactionType(int type) {
  transactionType_ = type;
  compose();
}

void TransactionReport::setCategory(std::optional<MVCategory> category) {
  category_ = std::move(category);
  if (category_) transactionType_ = category_->type;
  compose();
}

void TransactionReport::setMonivaAccount(const MonivaAccount& account) {
  monivaAccount_ = account;
  xctj_account_ = accountQuerySQL(account);
  compose();
}

BookPeriods TransactionReport::periods() const {
  return BookPeriods(root_.calendar(), monivaAccount_.periodStarts(), now_);
}

void TransactionReport::compose() {
  const bool isWhole = isOneOf(transactionType_, {1050, 2312});
  const bool hasIncome = isOneOf(transactionType_, {1112, kind::kIncome});
  const bool hasExpense = isOneOf(transactionType_, {1112, kind::kExpense});
  xctj_type_in_ = isWhole ? "(type = 11 or (type > 21 and type < 29))" : hasIncome ? "type = 11" : "";
  xctj_type_out_ = isWhole ? "(type = 12 or (type > 31 and type < 39))" : hasExpense ? "type = 12" : "";
}

ReportQueries TransactionReport::queries() const {
  if (xctj_account_.empty()) return {};
  std::vector<ReportFigure> figures;
  if (category_) {
    const bool isIncome = category_->type == kind::kIncome;
    auto rows = fmt::format(
        "{} = ? and (type = {} or type = {})", category_->isSubCate() ? "subcategory" : "category",
        isIncome ? kind::kIncome : kind::kExpense, isIncome ? kind::kFurtherIncome : kind::kFurtherExpense);
    figures.push_back(isIncome ? ReportFigure::income(std::move(rows))
                               : ReportFigure::expense(std::move(rows)));
    return {xctj_account_, monivaAccount_.pk, std::move(figures), category_->pk};
  }
  const int code = transactionType_;
  if (monivaAccount_.isAccount() && isOneOf(code, {1050, 2333, 112129, 23, 2312})) {
    figures.push_back(ReportFigure::transferIn("type = 23"));
    // What is pending of them is among the income then.
    if (!xctj_type_in_.empty()) figures.back().pendingCount = nullptr;
  }
  if (monivaAccount_.isAccount() && isOneOf(code, {1050, 2333, 123139, 33})) {
    figures.push_back(ReportFigure::transferOut("type = 33"));
  }
  if (code != kind::kTransferIn && !xctj_type_in_.empty()) {
    figures.push_back(ReportFigure::income(std::string(xctj_type_in_)));
  }
  if (code != kind::kTransferOut && !xctj_type_out_.empty()) {
    figures.push_back(ReportFigure::expense(fmt::format("(type != 33 and {})", xctj_type_out_)));
  }
  return {xctj_account_, monivaAccount_.pk, std::move(figures)};
}

void TransactionReport::setUp(TransReportSummary& summary, Date from, Date to) const {
  summary.transactionType = transactionType_;
  summary.category = category_;
  summary.beginDate = from;
  summary.endDate = to;
}

Result<TransReportSummary> TransactionReport::summed(Connection& db, const ReportQueries& queries, Date from,
                                                     Date to) const {
  TransReportSummary summary;
  setUp(summary, from, to);
  const Date begin = root_.calendar().dateBegin(from);
  const Date end = root_.calendar().dateEnd(to);
  if (auto done = queries.sum(db, begin, end, Paid::yes, summary); !done) {
    return tl::make_unexpected(done.error());
  }
  if (!includePending_) return summary;
  if (auto done = queries.sum(db, begin, end, Paid::no, summary); !done) {
    return tl::make_unexpected(done.error());
  }
  auto pending = queries.records(db, begin, end, Paid::no);
  if (!pending) return tl::make_unexpected(pending.error());
  for (auto& record : *pending) summary.pendinglistArray.emplace_back(root_).eid = std::move(record.eid);
  return summary;
}

Result<TransReportSummary> TransactionReport::getSummaryFrom(Date from, Date to) const {
  Connection* db = root_.db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  Result<TransReportSummary> summary = refuse("the store cannot be read");
  {
    const ReadTransaction snapshot(*db);
    summary = summed(*db, queries(), from, to);
  }
  if (summary) summary->takeLabels(periods());
  return withRecords(root_, std::move(summary));
}

Result<TransReportSummary> TransactionReport::summaryOfDay(Connection& db, Date date) const {
  const ReadTransaction snapshot(db);
  const ReportQueries queries = this->queries();
  auto summary = summed(db, queries, date, date);
  if (!summary) return summary;
  PeriodWalk(root_.calendar(), periods(), PeriodUnit::day, date, date).name(*summary);
  auto records =
      queries.records(db, root_.calendar().dateBegin(date), root_.calendar().dateEnd(date), Paid::yes);
  if (!records) return tl::make_unexpected(records.error());
  for (auto& record : *records) summary->transactions.emplace_back(root_).eid = std::move(record.eid);
  return summary;
}

Result<TransReportSummary> TransactionReport::walk(Connection& db, PeriodUnit unit, const Hear& hear,
                                                   int run) const {
  PeriodWalk periods(root_.calendar(), this->periods(), unit, beginDate_, endDate_);
  TransReportSummary list = periods.list();
  list.transactionType = transactionType_;
  list.category = category_;
  const ReadTransaction snapshot(db);
  if (unit == PeriodUnit::day) {
    if (auto done = walkDays(db, periods, list, hear, run); !done) return tl::make_unexpected(done.error());
    return list;
  }
  const ReportQueries queries = this->queries();
  std::size_t heard = kFirstHeard;
  while (const auto period = periods.next()) {
    list.isPartial = isToStop(run);
    if (list.isPartial) break;
    auto found = summed(db, queries, period->begin, period->end);
    if (!found) return found;
    if (!includeEmpty_ && found->isEmpty()) continue;
    periods.name(*found);
    list.take(std::move(*found));
    if (hear && list.listArray.size() == heard) {
      hear(list);
      heard *= 2;
    }
  }
  return list;
}

void TransactionReport::deliver(std::function<Result<TransReportSummary>(Connection&)> work,
                                void (TransactionReportDelegate::*tell)(const TransReportSummary&)) {
  delivered_ = std::make_shared<Delivered>();
  reportInBackground<TransReportSummary>(root_, "TransactionReport", std::move(work),
                                         [&root = root_, delegate = delegate_, delivered = delivered_,
                                          tell](const Result<TransReportSummary>& answer) {
                                           delivered->finished = true;
                                           if (answer) {
                                             delivered->summary = *answer;
                                             loadRecords(root, delivered->summary);
                                           }
                                           const auto listener = delegate.lock();
                                           if (!listener) return;
                                           if (answer) {
                                             (listener.get()->*tell)(delivered->summary);
                                           } else {
                                             listener->transactionReportQueryFailed(answer.error());
                                           }
                                         });
}

void TransactionReport::dispatch(PeriodUnit unit) {
  const Hear hear = [&root = root_, delegate = delegate_](const TransReportSummary& list) {
    root.platform().mainQueue.dispatch(
        [&root, delegate, partial = std::make_shared<TransReportSummary>(list)] {
          const auto listener = delegate.lock();
          if (!listener) return;
          loadRecords(root, *partial);
          listener->transactionReportQueryUpdate(*partial);
        });
  };
  const int run = ++asked_;
  deliver([this, unit, hear, run](Connection& db) { return walk(db, unit, hear, run); },
          &TransactionReportDelegate::transactionReportQueryFinished);
}

void TransactionReport::getDailySummary(Date date) {
  deliver([this, date](Connection& db) { return summaryOfDay(db, date); },
          &TransactionReportDelegate::transactionReportUpdateDailySummary);
}

Result<TransReportSummary> TransactionReport::reportBy(PeriodUnit unit) {
  const int run = ++asked_;
  return withRecords(root_, reportNow<TransReportSummary>(root_, "TransactionReport", [&](Connection& db) {
                       return walk(db, unit, nullptr, run);
                     }));
}

Result<TransReportSummary> TransactionReport::dailySummary(Date date) {
  return withRecords(root_, reportNow<TransReportSummary>(root_, "TransactionReport", [&](Connection& db) {
                       return summaryOfDay(db, date);
                     }));
}

Result<std::vector<TransReportSummary>> TransactionReport::summariesOf(
    const std::vector<PeriodWalk::Period>& periods) {
  using Found = Result<std::vector<TransReportSummary>>;
  return reportNow<std::vector<TransReportSummary>>(root_, "TransactionReport", [&](Connection& db) -> Found {
    const ReadTransaction snapshot(db);
    const ReportQueries queries = this->queries();
    std::vector<TransReportSummary> found;
    for (const auto& period : periods) {
      auto summary = summed(db, queries, period.begin, period.end);
      if (!summary) return tl::make_unexpected(summary.error());
      found.push_back(std::move(*summary));
    }
    return found;
  });
}

}  // namespace moniva
