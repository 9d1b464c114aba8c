#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "calendar/book_periods.h"
#include "model/mv_category.h"
#include "reports/trans_report_summary.h"

namespace moniva {

/// Hears of a report's results, always on the main thread.
class TransactionReportDelegate {
 public:
  virtual ~TransactionReportDelegate() = default;
  /// The list of periods, in date order, is in the summary's `listArray`.
  virtual void transactionReportQueryFinished(const TransReportSummary& summary) = 0;
};

/// How much came in and went out for one book or account, over one period or split into years, months or
/// days. Periods follow the book's own first day of week, month and year; both bounds count whole days.
class TransactionReport {
 public:
  /// Both dates are the present until they are set.
  explicit TransactionReport(MVAppRoot& root);

  /// 11 income, 12 expense, 1112 both, 1050 everything, 2312 prepaid, 23 and 33 transfers in and out, 2333
  /// both transfers, 112129 income with transfers in, 123139 expense with transfers out.
  void setTransactionType(int type);
  /// Restricts the report to a category; its type becomes the report's.
  void setCategory(std::optional<MVCategory> category);
  void setMonivaAccount(const MonivaAccount& account);
  void setBeginDate(Date date) { beginDate_ = date; }
  void setEndDate(Date date) { endDate_ = date; }
  /// Whether periods without transactions stay in a list.
  void setIncludeEmpty(bool include) { includeEmpty_ = include; }
  void setDelegate(std::weak_ptr<TransactionReportDelegate> delegate) { delegate_ = std::move(delegate); }
  /// Ends a running walk at its next period.
  void setStopLoadingData(bool stop) { stopLoadingData_ = stop; }

  /// The summary of one period, now, on the calling thread's connection.
  TransReportSummary getSummaryFrom(Date from, Date to);

  // Lists of periods, made on the database queue; the delegate hears of the end. The report must live until
  // then.
  void getReportByYear();
  void getReportByMonth();
  void getReportByDay();

  /// The same lists, waited for; each in one snapshot of the store.
  TransReportSummary reportByYear();
  TransReportSummary reportByMonth();
  TransReportSummary reportByDay();

 private:
  enum class Unit { year, month, day };
  TransReportSummary walk(Unit unit);
  void dispatch(Unit unit);
  TransReportSummary waited(Unit unit);
  Date periodEnd(Unit unit, Date start) const;
  std::string title(Unit unit, const TransReportSummary& summary, Date start) const;
  void label(TransReportSummary& summary) const;
  BookPeriods periods() const;
  /// Sums one query's row into `count` and `amount` of a kind.
  void sum(Connection& db, TransReportSummary& summary, std::string_view sql,
           std::initializer_list<Value> arguments, int& count, double& amount) const;

  MVAppRoot& root_;
  MonivaAccount monivaAccount_;
  Date beginDate_;
  Date endDate_;
  /// The present, taken once for the whole report.
  Date now_;
  std::optional<MVCategory> category_;
  int transactionType_ = 12;
  bool includeEmpty_ = false;
  std::atomic<bool> stopLoadingData_ = false;
  std::weak_ptr<TransactionReportDelegate> delegate_;
  std::string xctj_type_;
  std::string xctj_type_in_;
  std::string xctj_type_out_;
  std::string xctj_account_;
  std::string xctj_paid_;
};

}  // namespace moniva
