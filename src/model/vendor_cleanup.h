#pragma once

#include <cstdint>

#include "base/result.h"
#include "storage/mv_app_root.h"

namespace moniva {

/// What a clean-up of vendors did.
struct VendorCleanup {
  int titles = 0;            ///< that stood more than once in a type
  int removed = 0;           ///< rows that are gone
  std::int64_t records = 0;  ///< transactions, deleted ones too, that have the remaining row now
  int keys = 0;              ///< rows that had no key and have one now
};

/// Makes one row of those that share title and type, as merges leave them: the newest live one stays, else
/// the newest deleted one, but never one without a key where another has one. Transactions of the others are
/// given to it, and the others removed for good. Vendors that are left without a key get one.
/// With `changeEditDate` the transactions count as edited, so that other devices hear of it; without, each
/// device is to find the same by itself. All or nothing.
Result<VendorCleanup> clearDuplicatedItemChangeEditDate(MVAppRoot& root, bool changeEditDate);

/// The repair of a store that is to be the same on all devices: the above with edited transactions.
Result<VendorCleanup> clearDuplicateVendor(MVAppRoot& root);

}  // namespace moniva
