#pragma once

#include <optional>
#include <vector>

#include "model/mv_category.h"

/// What a book keeps of its categories, and what it was used with last.
namespace moniva {

/// Writes the positions of the list as the book's own order by hand. Refused with a key that is none, and for
/// what is no book.
Result<> saveCustomCategoryOrder(const MonivaAccount& book, const std::vector<MVCategory>& list);

// Of the record of that type (11 income, otherwise expense) that was entered or edited last in the book: its
// category, the chosen one, and the account it was paid from or into. One that is not in use any more is
// passed over; nothing when there is none.
Result<std::optional<MVCategory>> getLastUsedCategory(const MonivaAccount& book, int type);
Result<std::optional<MonivaAccount>> getLastUsedPayment(const MonivaAccount& book, int type);

}  // namespace moniva
