#include "model/transaction_type.h"
#include "reports/transaction_report.h"
#include "storage/transaction.h"

// Summaries and records that need no report object.
namespace moniva {
namespace {

ReportQueries ofCurrency(std::string_view currency) {
  return {
      "account in (select oldTitle from account where currency=? and deleted = 0 and kind = 1 and isGroup ="
      " 0)",
      std::string(currency),
      {ReportFigure::income("type = 11"), ReportFigure::expense("type = 12")}};
}

/// The queries by which a report of the type counts; of any other type the rows of that kind.
ReportQueries ofType(const MonivaAccount& book, int type) {
  TransactionReport report(book.root());
  report.setMonivaAccount(book);
  report.setTransactionType(type);
  ReportQueries queries = report.queries();
  if (!queries.figures().empty()) return queries;
  return {accountQuerySQL(book), book.pk, {ReportFigure::income(fmt::format("type = {}", type))}};
}

Result<TransReportSummary> sumOf(MVAppRoot& root, const ReportQueries& queries, TransReportSummary summary) {
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  const ReadTransaction snapshot(*db);
  const Calendar& calendar = root.calendar();
  auto done = queries.sum(*db, calendar.dateBegin(summary.beginDate), calendar.dateEnd(summary.endDate),
                          Paid::yes, summary);
  if (!done) return tl::make_unexpected(done.error());
  return summary;
}

Result<std::vector<MVTransaction>> recordsOf(MVAppRoot& root, const ReportQueries& queries, Date date) {
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  const Calendar& calendar = root.calendar();
  const auto records = queries.records(*db, calendar.dateBegin(date), calendar.dateEnd(date), Paid::yes);
  if (!records) return tl::make_unexpected(records.error());
  RecordNames names(root);
  std::vector<MVTransaction> loaded;
  for (const auto& record : *records) {
    if (auto row = MVTransaction::transactionFromEID(root, record.eid, &names))
      loaded.push_back(std::move(*row));
  }
  return loaded;
}

TransReportSummary between(int type, Date from, Date to) {
  TransReportSummary summary;
  summary.transactionType = type;
  summary.beginDate = from;
  summary.endDate = to;
  return summary;
}

}  // namespace

Result<TransReportSummary> TransactionReport::getSummaryFor(const MonivaAccount& book, int type, Date from,
                                                            Date to) {
  MVAppRoot& root = book.root();
  TransReportSummary summary = between(type, from, to);
  summary.takeLabels(BookPeriods(root.calendar(), book.periodStarts(), root.now()));
  return sumOf(root, ReportQueries::ofFixedKinds(book), std::move(summary));
}

Result<std::vector<MVTransaction>> TransactionReport::getTransactionListFor(const MonivaAccount& book,
                                                                            int type, Date date) {
  return recordsOf(book.root(), ofType(book, type), date);
}

Result<TransReportSummary> TransactionReport::getSummaryForCurrency(MVAppRoot& root,
                                                                    std::string_view currency, Date date) {
  TransReportSummary summary = between(1112, date, date);
  summary.currency = currency;
  PeriodWalk(root.calendar(), BookPeriods(root.calendar(), {}, root.now()), PeriodUnit::day, date, date)
      .name(summary);
  return sumOf(root, ofCurrency(currency), std::move(summary));
}

Result<std::vector<MVTransaction>> TransactionReport::getTransactionListForCurrency(MVAppRoot& root,
                                                                                    std::string_view currency,
                                                                                    Date date) {
  return recordsOf(root, ofCurrency(currency), date);
}

}  // namespace moniva
