#pragma once

#include <optional>
#include <string_view>

#include "model/vendor.h"

// What the operations on vendors' rows share; no part of what others use.
namespace moniva {

/// The columns `vendorOfRow` reads, in its order.
inline constexpr std::string_view kVendorColumns =
    "oldTitle, title, type, orderString, usedTimes, orderID, deleted, familyUser, ipid";

/// Which of several rows of one title counts: one with a key, then a live one, then the one edited last. Rows
/// of equal stamps are told apart by their keys, so that every device decides alike.
inline constexpr std::string_view kVendorRowOrder =
    "order by coalesce(oldTitle, '') = '', deleted != 0, editDate DESC, oldTitle, pk";

inline constexpr int kVendorColumnCount = 9;

/// The vendor of the row a query for `kVendorColumns` stands on.
Vendor vendorOfRow(MVAppRoot& root, const Run& run);

/// The vendor of that title and type, with a key: one without gets it now. Nothing when there is none.
Result<std::optional<Vendor>> vendorWithKey(MVAppRoot& root, std::string_view title, int type);

/// Gives a key to every vendor without one, as an edit; one whose title stands under a key as well is left
/// for the clean-up, which makes the two one. Answers how many.
Result<int> giveVendorsKeys(MVAppRoot& root);

/// The condition for the records that are a vendor's among those of its key, from " and" on: the ones of its
/// kind where a vendor of the other type has the key as well, else all but those that name an account or a
/// person in the vendor's place: transfers and debts, with which an older key, a title, may coincide.
std::string_view ownRecords(MVAppRoot& root, std::string_view key, int type);

enum class Relabelling {
  silent,    ///< each device does it by itself
  edit,      ///< stamped
  batchEdit  ///< stamped, and marked as a bulk edit
};

/// Gives the records of a vendor to another; false when a write failed.
bool relabelRecords(MVAppRoot& root, const Vendor& from, std::string_view key, Relabelling how);

}  // namespace moniva
