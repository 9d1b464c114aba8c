#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "reports/period_walk.h"
#include "reports/report_queries.h"

namespace moniva {

/// Hears of a report's results, always on the main thread.
class TransactionReportDelegate {
 public:
  virtual ~TransactionReportDelegate() = default;
  /// The list of periods, in date order, is in the summary's `listArray`.
  virtual void transactionReportQueryFinished(const TransReportSummary& summary) = 0;
  /// The periods read so far of a list that is under way; the more there are, the less often.
  virtual void transactionReportQueryUpdate(const TransReportSummary& /*partial*/) {}
  /// The summary of a day; its records are in `transactions`.
  virtual void transactionReportUpdateDailySummary(const TransReportSummary& /*summary*/) {}
  /// The store could not be read; there is no result then. The fault log has it too.
  virtual void transactionReportQueryFailed(const Refusal& /*refusal*/) {}
};

/// How much came in and went out for one book, one account or a group of either, over one period or split
/// into years, months, weeks or days. Periods follow the book's own first day of week, month and year; both
/// bounds count whole days.
class TransactionReport {
 public:
  /// Of an empty book; both dates are the present until they are set.
  explicit TransactionReport(MVAppRoot& root);

  /// 11 income, 12 expense, 1112 both, 1050 everything, 2312 prepaid; of accounts also 23 and 33 transfers in
  /// and out, 2333 both, 112129 and 123139 the same two as parts of wider lists. Any other has no figures.
  void setTransactionType(int type);
  int transactionType() const { return transactionType_; }
  /// Restricts the report to a category; its type becomes the report's.
  void setCategory(std::optional<MVCategory> category);
  void setMonivaAccount(const MonivaAccount& account);
  const MonivaAccount& monivaAccount() const { return monivaAccount_; }
  void setBeginDate(Date date) { beginDate_ = date; }
  void setEndDate(Date date) { endDate_ = date; }
  /// Whether periods without transactions stay in a list.
  void setIncludeEmpty(bool include) { includeEmpty_ = include; }
  /// Whether summaries tell what is pending besides: counts, sums and the records. What is pending of
  /// transfers goes with income and expense. A period in which something is pending is not empty.
  void setIncludePending(bool include) { includePending_ = include; }
  void setDelegate(std::weak_ptr<TransactionReportDelegate> delegate) { delegate_ = std::move(delegate); }
  /// Ends a running list at its next period; the list says that it is partial. Safe from any thread.
  void setStopLoadingData(bool stop) { stoppedUpTo_ = stop ? asked_.load() : 0; }
  /// The same where that is set, by whomever; null for none. It has to outlive the report.
  void setStopFlag(const std::atomic<bool>* flag) { stopFlag_ = flag; }

  /// The summary of one period, now, on the calling thread's connection; all zero without a book. Refused
  /// when the store cannot be read.
  Result<TransReportSummary> getSummaryFrom(Date from, Date to) const;

  // Lists of periods, made on the database queue; the delegate hears of the parts and of the end. The report
  // must live until the queue is through with it.
  void getReportByYear() { dispatch(PeriodUnit::year); }
  void getReportByMonth() { dispatch(PeriodUnit::month); }
  void getReportByWeek() { dispatch(PeriodUnit::week); }
  void getReportByDay() { dispatch(PeriodUnit::day); }
  /// The summary of one day with its records, likewise.
  void getDailySummary(Date date);
  /// Whether the last of these has been delivered, and what it was.
  bool queryFinished() const { return delivered_->finished; }
  const TransReportSummary& resultSummary() const { return delivered_->summary; }

  // The same, waited for; each in one snapshot of the store. Refused when it cannot be read.
  Result<TransReportSummary> reportBy(PeriodUnit unit);
  Result<TransReportSummary> reportByYear() { return reportBy(PeriodUnit::year); }
  Result<TransReportSummary> reportByMonth() { return reportBy(PeriodUnit::month); }
  Result<TransReportSummary> reportByDay() { return reportBy(PeriodUnit::day); }
  Result<TransReportSummary> dailySummary(Date date);
  /// Summaries of some periods, with their bounds alone.
  Result<std::vector<TransReportSummary>> summariesOf(const std::vector<PeriodWalk::Period>& periods);

  /// The queries its settings come to; without figures where they come to nothing.
  ReportQueries queries() const;

  // On the calling thread's connection, refused when it cannot be read.

  /// What an account's money comes to by its fixed kinds: income with what was borrowed and repaid to it,
  /// expense with what was lent and repaid by it, and transfers. The type is kept in the summary.
  static Result<TransReportSummary> getSummaryFor(const MonivaAccount& book, int type, Date from, Date to);
  /// The settled records of a day that a report of that type counts, the earliest first; a type that is no
  /// report's is a kind of record.
  static Result<std::vector<MVTransaction>> getTransactionListFor(const MonivaAccount& book, int type,
                                                                  Date date);
  /// Income and expense of a day on all accounts that are kept in that currency, groups apart; and the
  /// records.
  static Result<TransReportSummary> getSummaryForCurrency(MVAppRoot& root, std::string_view currency,
                                                          Date date);
  static Result<std::vector<MVTransaction>> getTransactionListForCurrency(MVAppRoot& root,
                                                                          std::string_view currency,
                                                                          Date date);

 private:
  using Hear = std::function<void(const TransReportSummary&)>;
  /// The length a list has when it is heard of first; then each time it has doubled.
  static constexpr std::size_t kFirstHeard = 12;
  struct Delivered {
    bool finished = false;
    TransReportSummary summary;
  };

  /// Fills the fragments from the settings.
  void compose();
  /// Gives a summary the settings and its bounds.
  void setUp(TransReportSummary& summary, Date from, Date to) const;
  /// The figures of one period, without its labels; pending records are named and not yet loaded.
  Result<TransReportSummary> summed(Connection& db, const ReportQueries& queries, Date from, Date to) const;
  Result<TransReportSummary> summaryOfDay(Connection& db, Date date) const;
  /// A list of periods; `hear` is told of parts of it, if it is set.
  Result<TransReportSummary> walk(Connection& db, PeriodUnit unit, const Hear& hear, int run) const;
  /// Adds all days to the list, each figure read in one go.
  Result<> walkDays(Connection& db, const PeriodWalk& names, TransReportSummary& list, const Hear& hear,
                    int run) const;
  void dispatch(PeriodUnit unit);
  /// Has the work done on the queue and its result kept and handed to the delegate.
  void deliver(std::function<Result<TransReportSummary>(Connection&)> work,
               void (TransactionReportDelegate::*tell)(const TransReportSummary&));
  BookPeriods periods() const;
  /// Whether the list that was asked for as number `run` is to end.
  bool isToStop(int run) const { return run <= stoppedUpTo_ || (stopFlag_ != nullptr && *stopFlag_); }

  MVAppRoot& root_;
  MonivaAccount monivaAccount_;
  Date beginDate_;
  Date endDate_;
  /// The present, taken once for the whole report.
  Date now_;
  std::optional<MVCategory> category_;
  int transactionType_ = 12;
  bool includeEmpty_ = false;
  bool includePending_ = false;
  std::atomic<int> asked_ = 0;        ///< lists asked for so far
  std::atomic<int> stoppedUpTo_ = 0;  ///< those up to that one are stopped
  const std::atomic<bool>* stopFlag_ = nullptr;
  std::weak_ptr<TransactionReportDelegate> delegate_;
  std::shared_ptr<Delivered> delivered_ = std::make_shared<Delivered>();
  // Conditions by the settings; blank until a book is set, and where the type has none.
  std::string_view xctj_type_in_;
  std::string_view xctj_type_out_;
  std::string_view xctj_account_;
};

}  // namespace moniva
