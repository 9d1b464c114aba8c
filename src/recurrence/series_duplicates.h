#pragma once

#include <string_view>

#include "storage/mv_app_root.h"

namespace moniva {

/// Removes what a series made twice for one day, as when two devices brought it up to date before they met:
/// of each day's records the one edited last stays. One in use stays before one that a person deleted, so
/// that what a person sorted out by hand is not undone. The two sides of a transfer, and other rows of one
/// group, are one record; one that a person dated anew is no duplicate. Balances follow. Answers how many
/// records were removed; refused, with nothing changed, when the store cannot be read or written.
Result<int> clearDuplicateRecurringItemFor(MVAppRoot& root, std::string_view seed);

}  // namespace moniva
