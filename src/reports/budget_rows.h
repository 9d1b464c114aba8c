#pragma once

#include <compare>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "calendar/book_periods.h"
#include "model/moniva_account.h"
#include "reports/budget_historical_remaining.h"

// What budgets and their history share: the months of a book, its rows, and what is carried from month to
// month. No part of what others use.
namespace moniva {

/// Why rows of budgets were taken away by the program; in `ipid`.
namespace budget_mark {
inline constexpr std::string_view kSwitchedOff = "set aside by switch";
inline constexpr std::string_view kRecalculated = "set aside by recalculation";
inline constexpr std::string_view kDeleted = "delete with budget";
/// Another row stands in its place: that of the month, or of the range.
inline constexpr std::string_view kReplaced = "set aside for another";
/// Its month is still to come; it is taken up then.
inline constexpr std::string_view kAhead = "set aside ahead of time";
inline constexpr std::string_view kUnlabelled = "set aside without month";
}  // namespace budget_mark

/// What a book month is called.
struct MonthLabel {
  int year = 0;
  int month = 0;

  friend auto operator<=>(const MonthLabel&, const MonthLabel&) = default;
  std::int64_t key() const { return BookBudget::integerOfYear(year, month); }
};

/// The months of a book, one after the other without a gap, so that each expense is in one of them.
class BudgetMonths {
 public:
  explicit BudgetMonths(const MonivaAccount& book);

  /// Whether the calendar has a month of that name, in the years that records can have.
  bool exists(MonthLabel month) const;
  Result<> check(MonthLabel month) const;
  MonthLabel current() const;
  /// So many months later.
  MonthLabel plus(MonthLabel month, int months) const;
  /// First and last day; a month ends where the next one begins.
  Date begin(MonthLabel month) const;
  Date end(MonthLabel month) const;
  /// "2024/3 March".
  std::string title(MonthLabel month) const;

 private:
  std::int64_t firstOfCalendarMonth(MonthLabel month) const;
  MonthLabel labelOf(std::int64_t day) const;

  const Calendar* calendar_;
  BookPeriods periods_;
  Date now_;
};

/// A live row of a monthly budget.
struct MonthlyRow {
  std::string eid;
  double amount = 0;
  bool inherits = false;
  Date editDate;
  /// The program made it of an earlier row, and nobody has edited it.
  bool isCopy = false;
};
/// Those of a book by their months; of several in one month the one changed last.
using MonthlyRows = std::map<MonthLabel, MonthlyRow>;

Result<MonthlyRows> monthlyRows(const MonivaAccount& book);
/// The row in force in the month, its own or the latest before; `end()` for none.
MonthlyRows::const_iterator inForce(const MonthlyRows& rows, MonthLabel month);

/// What is carried into a month.
struct Carried {
  MonthLabel month;
  double amount = 0;
  /// The month before carries what it has left.
  bool inherited = false;
};
struct CountedMonths {
  std::vector<BudgetMonth> months;
  /// Into each of them, and into the month behind the last.
  std::vector<Carried> carried;
};
/// Counts the months from `first` on, which has a row in force and into which nothing is carried, up to the
/// one before `end`.
Result<CountedMonths> countMonths(const MonivaAccount& book, const MonthlyRows& rows, MonthLabel first,
                                  MonthLabel end);
/// The month from which on to count for what is carried into `month`: the month itself where that is nothing.
MonthLabel chainBegin(const MonthlyRows& rows, MonthLabel month);
/// What is left is carried as this, in single precision, written with no more digits than that has; nothing
/// where both come to nothing but for noise.
double carryOf(double carriedIn, double left);
/// Keeps what is carried where it differs from what the store has; else nothing is written.
Result<> keepCarried(const MonivaAccount& book, const std::vector<Carried>& carried);

/// Adds a row that a person set for the month. Answers its key.
Result<std::string> addMonthlyRow(const MonivaAccount& book, MonthLabel month, double amount, bool inherits);
/// Has the month go on with what `former` says. Every device makes the same row, which is no newer than it
/// must be, lest it stand before one that was set elsewhere.
Result<> copyMonthlyRow(const MonivaAccount& book, MonthLabel month, const MonthlyRow& former);
/// A stamp for what the program makes of a row by itself: above the row's own, below what people do later.
Date justAbove(MVAppRoot& root, Date editDate);
/// Sets a live row aside.
Result<> setAside(MVAppRoot& root, std::string_view eid, std::string_view mark);
/// Mends month keys, two rows of a month and rows of months to come; a sound store is only read.
Result<> mendMonthlyRows(const MonivaAccount& book);
/// Reading goes on where it cannot write what it found amiss, as while another program writes; only the log
/// hears of it.
void leaveForLater(MVAppRoot& root, const Result<>& written);

}  // namespace moniva
