#pragma once

#include <atomic>
#include <functional>
#include <string>
#include <vector>

#include "model/mv_transaction.h"
#include "reports/trans_report_summary.h"

namespace moniva {

/// The bill of a credit account for one book month. Amounts are in the account's currency.
struct BillReportSummary {
  int year = 0;
  int month = 0;
  Date beginDate;  ///< first and last day of what is billed
  Date endDate;
  Date dueDate;
  Date payoffBaginDate;  ///< first and last day on which a repayment counts for this bill
  Date payoffEndDate;
  double bileAmount = 0;           ///< what was charged
  double repayAmount = 0;          ///< what was paid back
  double needReayAmount = 0;       ///< what is still to be paid
  double lastRepayMoreAmount = 0;  ///< paid above the bill before, counted for this one
  double thisRepayMoreAmount = 0;  ///< paid above this bill, counted for the next one
  bool repayComplete = false;

  // Of a list of bills.
  double maxBillAmount = 0;
  std::vector<BillReportSummary> listArray;
  int count = 0;

  std::string printLog(const Calendar& calendar) const;
};

/// A line of what was paid back: a payment, or what was carried over from the bill before.
struct RepayLine {
  std::string eid;
  int type = 0;
  Date datetime;
  double amount = 0;
  bool isCarried = false;
};

/// The bills of one credit account. A bill follows from the account's records alone: what is carried from
/// bill to bill is counted from the first record on and kept, for lists, in rows of a kind of their own,
/// which are rewritten where they differ.
class BillReport {
 public:
  explicit BillReport(MonivaAccount account);

  MonivaAccount monivaAccount;
  Date beginDate;
  Date endDate;
  std::atomic<bool> stopLoadingData = false;

  /// Refused: an account that is no credit account, a month that does not exist, an unreadable store.
  Result<BillReportSummary> getBillForYear(int year, int Month);
  /// The bill of the month that holds the date. Each day is in one bill, and each repayment counts for one:
  /// where months begin on the 29th to 31st, a bill has the days that are called after its month.
  Result<BillReportSummary> getBillForDate(Date date);
  /// The bills of so many months (up to 1,200) up to that one, the latest first, in `listArray`.
  Result<BillReportSummary> getBillsUpTo(int year, int month, int count);
  /// What the settled records of a kind come to in those days.
  Result<double> transactionSumFrom(Date from, Date toDate, int Type) const;

  /// What was carried over in those days and then what was paid back, in the order of time.
  Result<std::vector<RepayLine>> repayList(Date from, Date toDate) const;
  /// The charges of those days.
  Result<std::vector<MVTransaction>> chargeList(Date from, Date toDate) const;

  // The same made on the database queue; `completion` is called on the main thread. The report has to live
  // until then.
  void getRepayListFromDate(Date from, Date toDate,
                            std::function<void(const Result<std::vector<RepayLine>>&)> completion);
  /// What was charged and paid back on the day, with the charges.
  void getSummaryForDate(Date date, std::function<void(const Result<TransReportSummary>&)> completion);
  /// The same of each day between `beginDate` and `endDate` on which something was charged, in `listArray`.
  /// `stopLoadingData` ends it at the next day; the list says that it is partial.
  void getDailySummary(std::function<void(const Result<TransReportSummary>&)> completion);

  /// Schedules the reminders of what is to be paid back to each open credit account that wants them, and
  /// cancels those of bills that are paid. Refused when the store cannot be read.
  static Result<> createBillNotifaction(MVAppRoot& root);
};

/// The bill of a credit account as of now.
struct CorrentBill {
  Date lastDueDate;                    ///< when the last closed month is to be paid
  Date dueDate;                        ///< when the present month is to be paid
  double thisMonthBileAmount = 0;      ///< charged in the present month so far
  double thisMonthNeedReayAmount = 0;  ///< of it, what no overpayment covers
  double lastMonthBileAmount = 0;      ///< charged in the last closed month
  double lastMonthNeedReayAmount = 0;  ///< still to be paid of it
  Date lastBeginDate;                  ///< first and last day of the last closed month
  Date lastEndDate;
};
/// Refused as bills are.
Result<CorrentBill> getCorrentBill(const MonivaAccount& account);

}  // namespace moniva
