#pragma once

#include "model/mv_category.h"
#include "reports/book_budget.h"

/// What a category has been given of its book's budget.
namespace moniva {

struct CategoryBudget {
  MVCategory category;
  double categoryBudgetAmount = 0;  ///< what it has been given
  double amount = 0;                ///< the budget of the book that is in force
  double spent = 0;                 ///< in the category, those below it too, in the period of that budget
  double left = 0;                  ///< given less spent
};

/// Refused where the store cannot be read. `budget` gives the period, and the book.
Result<CategoryBudget> getBudget(const MVCategory& category, const BookBudget& budget);
/// Gives the category of the book an amount; refused: nothing or less, a category of income.
Result<> updateBudget(const MVCategory& category, const MonivaAccount& book, double amount);
/// Takes it back. Refused where it has none.
Result<> removeBudget(const MVCategory& category, const MonivaAccount& book);

}  // namespace moniva
