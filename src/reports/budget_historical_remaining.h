#pragma once

#include <functional>
#include <string>
#include <vector>

#include "reports/book_budget.h"

namespace moniva {

/// One month of the history of a book's budget.
struct BudgetMonth {
  int year = 0;
  int month = 0;
  std::string title;  ///< "2024/3 March"
  Date beginDate;
  Date endDate;
  double amount = 0;     ///< of the budget in force
  double expense = 0;    ///< settled expenses of the month
  double rollover = 0;   ///< carried in
  double remaining = 0;  ///< what is left, carried out where the budget carries it
  bool inheritRemaining = false;
  /// The month has a row of its own, and does not just go on with that of an earlier one.
  bool isOwn = false;
  bool isCurrent = false;
};

/// The history of what was left of a monthly budget: from the first month that has one to the present.
class BudgetHistoricalRemaining {
 public:
  explicit BudgetHistoricalRemaining(const MonivaAccount& book) : book_(book) {}

  /// All months in their order, the earliest first. Counted from the records, whatever is kept; writes
  /// nothing.
  Result<std::vector<BudgetMonth>> months() const;
  /// Counts every month from that one on and keeps what is carried into each where it differs from what was
  /// kept; then tells "defaultAccountBudgetChanged".
  Result<> calculateHistoryBudgetRolloverFrom(int year, int month);
  /// The same on the database queue; `completion` is called on the main thread.
  void calculateHistoryBudgetRolloverFrom(int year, int month,
                                          std::function<void(const Result<>&)> completion);

  // Each refuses a month that is none of the history, and counts the remainders again.
  /// That month alone has this amount. Refused: nothing or less.
  Result<> editAmount(int year, int month, double amount);
  /// Whether what is left of that month is carried on, for that month alone.
  Result<> editInherit(int year, int month, bool inherits);
  /// The month's own row goes; an earlier one is in force again. Refused where the month has none, or the
  /// only one there is.
  Result<> deleteMonth(int year, int month);
  /// The history begins with that month, into which nothing is carried; what went before is set aside.
  Result<> recalculateFrom(int year, int month);
  /// Brings back what was set aside.
  Result<> restore();

 private:
  MonivaAccount book_;
};

}  // namespace moniva
