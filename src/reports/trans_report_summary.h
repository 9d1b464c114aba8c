#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "calendar/book_periods.h"
#include "model/mv_category.h"
#include "model/mv_transaction.h"
#include "model/vendor.h"

namespace moniva {

/// What one period comes to: counts and sums of income, expense and transfers, with its label and bounds.
/// Lists of periods and breakdowns are summaries with child summaries. A plain record: it can be copied and
/// kept.
struct TransReportSummary {
  std::string title;
  /// Label of the fiscal year, the fiscal month, and the day; 0 where the period has none.
  int year = 0;
  int month = 0;
  int day = 0;
  Date beginDate;
  Date endDate;
  /// The report type code the summary was made for.
  int transactionType = 12;
  // What the summary is restricted to, when it is: the member of a breakdown.
  std::optional<MVCategory> category;
  std::optional<Vendor> vendor;
  /// Null where it is about no account; records without one are about `MonivaAccount::getNoneAccount`.
  std::shared_ptr<const MonivaAccount> paymentAccount;
  std::string currency;
  /// The member's key names nothing any more: the key stands for its title. Of a breakdown: such a row is in
  /// it.
  bool unnamed = false;

  /// Transactions of each kind, and the four counts added up. In a whole report of an account (1050, 2312)
  /// what came in by transfer is income as well and so is counted twice.
  int count = 0;
  int incomeCount = 0;
  int expenseCount = 0;
  int transferinCount = 0;
  int transferoutCount = 0;

  double incomeAmount = 0;
  double expenseAmount = 0;
  double transferinAmount = 0;
  double transferoutAmount = 0;

  /// In a list of periods: the largest income and the largest expense of any of them.
  double maxInSumAmount = 0;
  double maxOutSumAmount = 0;
  /// A stored total.
  double sumAmount = 0;

  // What is still pending of the period, beside the settled figures above; filled when it is asked for.
  int incomePendingCount = 0;
  int expensePendingCount = 0;
  double incomePendingAmount = 0;
  double expensePendingAmount = 0;
  std::vector<MVTransaction> pendinglistArray;

  /// The periods of a list, or the rows of a breakdown.
  std::vector<TransReportSummary> listArray;
  /// Whether a list was stopped before its last period.
  bool isPartial = false;
  /// The records of a single day, when they are asked for.
  std::vector<MVTransaction> transactions;
  /// Amounts by currency code.
  std::map<std::string, double, std::less<>> incomeAmountCurrencyDict;
  std::map<std::string, double, std::less<>> expenseAmountCurrencyDict;

  /// Nothing was counted, and nothing is pending as far as that was asked for.
  bool isEmpty() const { return count == 0 && incomePendingCount == 0 && expensePendingCount == 0; }

  /// Takes a period into the list: its counts and sums are added up, its income and expense become the
  /// largest where they are, and it goes to the end of `listArray`.
  void take(TransReportSummary period);
  /// The same for a period that is in `listArray` already.
  void addUp(const TransReportSummary& period);

  /// Takes the year's label when both bounds are in one fiscal year, the month's and its year's when they are
  /// in one book month.
  void takeLabels(const BookPeriods& periods);

  /// The amount the summary is about: by its category's type, else by its vendor's (payers 9 income, payees 6
  /// expense), else by the report type (11 and 23 income, 12 and 33 expense; 0 for codes that hold both).
  double amount() const;
  /// The same choice between the two maxima.
  double maxAmount() const;
};

}  // namespace moniva
