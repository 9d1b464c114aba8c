#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "model/moniva_account.h"

namespace moniva {

/// A budget of a book: an amount for each book month, which can carry what is left into the next one, or for
/// a range of days. Kept as rows of `transactions` of reserved kinds. A row of a month stays in force until
/// one of a later month takes its place.
class BookBudget {
 public:
  /// A monthly budget of the book for the present book month, with no row yet.
  explicit BookBudget(const MonivaAccount& book);

  /// The row's key; "" for one that has no row. The row can be of an earlier month than `year` and `month`.
  std::string eid;
  double amount = 0;
  int type = kind::kMonthlyBudget;
  /// First and last day: of the book month, which ends where the next one begins, or of the range.
  Date budgetBeginDate;
  Date budgetEndDate;
  MonivaAccount book;
  /// What is left goes into the next month; monthly budgets only.
  bool inheritRemaining = false;

  // Counted by calculateRemaining, in the book's currency.
  double monivaAmount = 0;  ///< settled expenses of the period
  double leftAmount = 0;
  double lastMonthRolloverAmount = 0;  ///< carried in; loaded with the row
  double todayAvailableAmount = 0;
  double recurringAmount = 0;
  double installmentAmount = 0;
  double dividedAmount = 0;  ///< expenses entered for days after today
  /// Of the instalments still due, what the expected expenses have counted already.
  double installmentsCountedTwice = 0;

  /// Labels of the book month; 0 for a range.
  int year = 0;
  int month = 0;

  bool isMonthly() const { return type == kind::kMonthlyBudget; }
  /// Whether today is in the period.
  bool isCurrent() const;

  /// Writes the budget as a new row. Refused: an amount of nothing or less, a range that ends before it
  /// begins, what the store refuses.
  Result<> add();
  /// Writes the values into the row. Refused as by `add`.
  Result<> update();
  /// Deletes the row and with it the rows of its month.
  Result<> delete_();
  /// Loads the row of `eid`; false when there is none.
  Result<bool> getAllValue();
  /// What the book's categories have been given of it; a category given twice keeps what was given last.
  Result<double> getAllocateValue() const;

  /// Counts what was spent, what is left and what may be spent today.
  Result<> calculateRemaining();
  /// What is left with what was carried in and everything counted once; after calculateRemaining. Below zero
  /// for what is gone beyond the budget.
  double availableAmount() const;
  /// Carries what is left into the next month, in single precision; nothing without a row. Writes only what
  /// differs from what is kept. `calculateRemaining` goes before it.
  Result<> calculateBalanceRollover();
  /// Nothing is carried into this month any more.
  Result<> clearLastBudgetRollover();

  /// The key of a month, yyyyMM.
  static std::int64_t integerOfYear(int year, int month);
  BookBudget copyWithZone() const { return *this; }
  /// All there is to know, for the log.
  std::string printLog() const;
};

}  // namespace moniva
