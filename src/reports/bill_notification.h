#pragma once

#include <map>
#include <string>

#include "storage/mv_app_root.h"

namespace moniva {

/// What the store was like at a moment, to tell later which accounts' bills may have changed since.
struct BillBasis {
  /// Not after the moment: rows stamped from then on count as changed.
  Date since{};
  /// Of the credit accounts, by key: what left an account leaves its mark there alone.
  std::map<std::string, double, std::less<>> balances;
};
/// As of now, rows stamped from `since` on counting as changed. Refused when the store cannot be read.
Result<BillBasis> billBasis(MVAppRoot& root, Date since);

/// `BillReport::createBillNotifaction` for the accounts that changed since, or for all where nothing is
/// given.
Result<> remindOfBillsChangedSince(MVAppRoot& root, const BillBasis* basis);

}  // namespace moniva
