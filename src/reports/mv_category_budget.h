#pragma once

#include <string_view>
#include <vector>

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
/// What each category has been given that has something, the most first; also of those that were deleted
/// since.
Result<std::vector<CategoryBudget>> allocations(const BookBudget& budget);

/// What a category has been given in one of the books.
struct CategoryShare {
  MonivaAccount book;
  double amount = 0;
};
/// That of the category in all books that there are, those of categories below it not counted in.
Result<std::vector<CategoryShare>> allocationsOfCategory(MVAppRoot& root, std::string_view categoryKey);

/// Gives the category of the book an amount; refused: nothing or less, a category of income.
Result<> updateBudget(const MVCategory& category, const MonivaAccount& book, double amount);
/// Takes it back. Refused where it has none.
Result<> removeBudget(const MVCategory& category, const MonivaAccount& book);

}  // namespace moniva
