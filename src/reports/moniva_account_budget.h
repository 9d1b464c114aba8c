#pragma once

#include <memory>
#include <optional>

#include "reports/book_budget.h"

/// Which budget a book has. Reading mends what should not be: two rows of a month, a wrong month key, rows
/// of months to come, which are set aside until then; a sound store is only read.
namespace moniva {

/// Switches the book's budget on or off; refused for a group. What the switch takes away is taken up again
/// when it is switched on.
Result<> setBudgetOpened(MonivaAccount& book, bool opened);
/// Reads the switch anew into the object.
Result<> reloadBudgetEnabled(MonivaAccount& book);

/// The budget in force: a range of days where one is set, else that of the present month; null where the
/// switch is off or nothing was ever set. Kept in `book.mainBudget`, figures counted.
Result<std::shared_ptr<BookBudget>> getMainBudget(MonivaAccount& book);
/// The budget over a range of days; the others of the book, if any, are set aside.
Result<std::optional<BookBudget>> getOneTimeBudget(MonivaAccount& book);
/// The budget of the present book month, its labels and days those of the month also where the row is older.
Result<std::optional<BookBudget>> getMonthlyBudget(MonivaAccount& book);
/// The same for a month; into one that is still to come nothing is carried yet. Refused: a month that does
/// not exist.
Result<std::optional<BookBudget>> getMonthlyBudgetForYear(MonivaAccount& book, int year, int Month);

/// Whether the budget is off and switching it on would bring one back.
Result<bool> budgetWasSwitchedOff(const MonivaAccount& book);
/// Whether the calendar has such a month, in the years that records can have.
bool isBudgetMonth(const MonivaAccount& book, int year, int month);
/// After the book's months were made to begin on another day: where the monthly budget in force is not what
/// it was `before` (of the same book), the present month gets that amount and flag. Answers what is in force.
Result<std::optional<BookBudget>> keepBudgetOverNewPeriods(MonivaAccount& book,
                                                           const std::optional<BookBudget>& before);

/// Makes the amount the budget of that month and of all later ones of the history, brings back what was set
/// aside of the book's history, and counts the remainders again.
Result<> calculateHistoryBudgetFrom(MonivaAccount& book, int year, int month, double newAmount);

}  // namespace moniva
