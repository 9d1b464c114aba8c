#pragma once

#include <vector>

#include "model/mv_category.h"

/// Which categories a book (or an account, or a group of either) uses, for pickers and budgets. All are read,
/// now, on the calling thread's connection, and refused when the store cannot be read.
namespace moniva {

/// The categories of the type (11 income, 12 expense) that settled records of the period name, whole days: a
/// top-level one, then those below it, each in the order of titles. Records that name a subcategory in the
/// place of its parent are mended on the way: they name the parent, stamped as edits.
Result<std::vector<MVCategory>> usedCategoriesOf(const MonivaAccount& book, int type, Date from, Date toDate);
/// The same and, behind the used ones of each, those that are on in the book.
Result<std::vector<MVCategory>> enabledCategoriesAndUsedCategoriesOf(const MonivaAccount& book, int type,
                                                                     Date from, Date toDate);
/// The same for the book's month that holds the date.
Result<std::vector<MVCategory>> enabledCategoriesAndUsedCategoriesOf(const MonivaAccount& book, int type,
                                                                     Date forMonthOf);
/// The expense categories in use that have a budget in the book, in the order of lists.
Result<std::vector<MVCategory>> budgetCategories(const MonivaAccount& book);
/// The subcategories of plain records of the last ninety days, the one used last first; of several with one
/// title the one used last. Of a book, no group.
Result<std::vector<MVCategory>> getLatestUsedCategory(const MonivaAccount& book, int type);

}  // namespace moniva
