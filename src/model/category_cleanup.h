#pragma once

#include "base/result.h"
#include "storage/mv_app_root.h"

/// Repairs of the tree of categories, each one transaction: refused, nothing has changed.
namespace moniva {

/// What the first clean-up took away for good.
struct RemovedCategoryRows {
  int untitled = 0;    ///< rows of `category` without a usable title
  int incomplete = 0;  ///< rows of a book without category or book
  int duplicates = 0;  ///< rows of a book beyond the newest of a category
};

/// Removes rows nobody can use. With `change`, a row of a book that had duplicates gets a new stamp, so that
/// other devices hear which one is kept.
Result<RemovedCategoryRows> clearDuplicatedItemChangeEditDate(MVAppRoot& root, bool change);

/// Makes categories of one type, parent and title one: one in use goes before a deleted one, then the one
/// edited last. What refers to the others refers to it afterwards; their rows are removed for good. Answers
/// how many were.
Result<int> clearDuplicateCategory(MVAppRoot& root);

/// Gives categories that share their key with another row of the table a key of their own, all but one where
/// only categories share it (the one in use, then the first made). Their transactions follow as far as they
/// can be told apart: by the category above for a subcategory, by income and expense for a top-level one.
/// Answers how many were.
Result<int> clearDuplicateCategoryPK(MVAppRoot& root);

}  // namespace moniva
