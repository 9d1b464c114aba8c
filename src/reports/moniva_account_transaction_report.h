#pragma once

#include "model/account_balance.h"
#include "reports/transaction_report.h"

namespace moniva {

/// The report of one book or account of all that it tracks, with nothing else to choose.
class MonivaAccountTransactionReport {
 public:
  explicit MonivaAccountTransactionReport(const MonivaAccount& account) : report_(account.root()) {
    report_.setMonivaAccount(account);
    report_.setTransactionType(countedType(account));
  }

  void setBeginDate(Date date) { report_.setBeginDate(date); }
  void setEndDate(Date date) { report_.setEndDate(date); }
  void setDelegate(std::weak_ptr<TransactionReportDelegate> delegate) {
    report_.setDelegate(std::move(delegate));
  }
  Result<TransReportSummary> getSummaryFrom(Date from, Date to) const {
    return report_.getSummaryFrom(from, to);
  }
  /// The report itself, for its lists.
  TransactionReport& report() { return report_; }

 private:
  TransactionReport report_;
};

}  // namespace moniva
