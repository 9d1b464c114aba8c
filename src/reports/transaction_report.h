#pragma once

#include <atomic>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "calendar/book_periods.h"
#include "model/mv_category.h"
#include "reports/period_walk.h"

namespace moniva {

/// Hears of a report's results, always on the main thread.
class TransactionReportDelegate {
 public:
  virtual ~TransactionReportDelegate() = default;
  /// The list of periods, in date order, is in the summary's `listArray`.
  virtual void transactionReportQueryFinished(const TransReportSummary& summary) = 0;
  /// The store could not be read; there is no list then. The fault log has it too.
  virtual void transactionReportQueryFailed(const Refusal& /*refusal*/) {}
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

  /// The summary of one period, now, on the calling thread's connection; all zero without a book. Refused
  /// when the store cannot be read.
  Result<TransReportSummary> getSummaryFrom(Date from, Date to) const;

  // Lists of periods, made on the database queue; the delegate hears of the end. The report must live until
  // then.
  void getReportByYear();
  void getReportByMonth();
  void getReportByDay();

  /// The same lists, waited for; each in one snapshot of the store. Refused when it cannot be read.
  Result<TransReportSummary> reportByYear();
  Result<TransReportSummary> reportByMonth();
  Result<TransReportSummary> reportByDay();

 private:
  /// One query of a summary and where its figures go.
  struct Sum {
    std::string sql;
    int TransReportSummary::*count;
    double TransReportSummary::*amount;
  };
  /// Writes the queries that the settings ask for.
  void composeSums();
  /// The figures and bounds of one period, without its labels.
  Result<TransReportSummary> summed(Connection& db, Date from, Date to) const;
  Result<TransReportSummary> walk(Connection& db, PeriodUnit unit);
  void dispatch(PeriodUnit unit);
  Result<TransReportSummary> waited(PeriodUnit unit);
  BookPeriods periods() const;

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
  /// The condition that selects the book's or account's rows; empty until one is set.
  std::string_view xctj_account_;
  std::vector<Sum> sums_;
};

}  // namespace moniva
