#pragma once

#include <cstddef>

#include "storage/mv_app_root.h"

namespace moniva {

/// Adds the categories that a new store begins with, titled in the person's language, unless the store has
/// any income or expense category, a deleted one included. Answers how many were added.
///
/// A category of the set has the same key on every device and in every language, and is stamped as older than
/// any edit: when two devices come together there is one set, and what a person made of it stays.
///
/// Refused, with nothing added, when the file of the set cannot be used; the refusal names file and place.
Result<std::size_t> insertAllCategoryIfNeed(MVAppRoot& root);

/// The same in any store: adds those of the set whose keys the store does not have.
Result<std::size_t> insertAllCategory(MVAppRoot& root);

}  // namespace moniva
