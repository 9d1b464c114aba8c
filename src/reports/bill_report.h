#pragma once

#include <atomic>
#include <functional>
#include <memory>
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
  /// What is to be paid of it now: the amounts above take a payment for the bill whose stretch it was made
  /// in. Here one made before that bill has closed pays what the bill before lacks, and what is paid above a
  /// bill pays older ones. "Now" is the last bill that was read.
  double openAmount = 0;
  double earlierNeedReayAmount = 0;  ///< the same of all bills before it

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
  /// Set, it ends what `getDailySummary` was called for last.
  std::shared_ptr<std::atomic<bool>> stopLoadingData = std::make_shared<std::atomic<bool>>(false);

  /// Refused: an account that is no credit account, a month that does not exist, an unreadable store.
  Result<BillReportSummary> getBillForYear(int year, int Month);
  /// The bill of the month that holds the date. Each day is in one bill, and each repayment counts for one:
  /// where months begin on the 29th to 31st, a bill has the days that are called after its month.
  Result<BillReportSummary> getBillForDate(Date date);
  /// The bills of so many months (up to 1,200) up to that one, the latest first, in `listArray`; what was
  /// paid above all bills, older ones too, is the list's `thisRepayMoreAmount`.
  Result<BillReportSummary> getBillsUpTo(int year, int month, int count);
  /// The bill with what is open of it by the present bill, late payments counted.
  Result<BillReportSummary> getBillAsOfNow(int year, int month);
  /// What the settled records of a kind come to in those days.
  Result<double> transactionSumFrom(Date from, Date toDate, int Type) const;

  /// What was carried over in those days and then what was paid back, in the order of time.
  Result<std::vector<RepayLine>> repayList(Date from, Date toDate) const;
  /// What was carried over to the bill and then what was paid back in its stretch.
  Result<std::vector<RepayLine>> repaymentsOf(const BillReportSummary& bill) const;
  /// The charges of those days.
  Result<std::vector<MVTransaction>> chargeList(Date from, Date toDate) const;

  // The same made on the database queue; `completion` is called on the main thread, where the report may be
  // gone by then.
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

/// The bills of a credit account as of now; what is to be paid is their `openAmount`.
struct CorrentBill {
  Date lastDueDate;                    ///< when the last closed month is to be paid
  Date dueDate;                        ///< when the present month is to be paid
  double thisMonthBileAmount = 0;      ///< charged in the present month so far
  double thisMonthNeedReayAmount = 0;  ///< to be paid of it
  double lastMonthBileAmount = 0;      ///< charged in the last closed month
  double lastMonthNeedReayAmount = 0;  ///< to be paid of it
  double lastMonthLateAmount = 0;      ///< paid of it after it was due
  double earlierNeedReayAmount = 0;    ///< to be paid of older ones
  Date earlierDueDate;                 ///< when the newest of those was to be paid
  BillReportSummary lastMonth;
  BillReportSummary thisMonth;
};
/// Refused as bills are.
Result<CorrentBill> getCorrentBill(const MonivaAccount& account);

/// The credit accounts that are not closed, in the order of the list.
Result<std::vector<MonivaAccount>> openCreditAccounts(MVAppRoot& root);

}  // namespace moniva
