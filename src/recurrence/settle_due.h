#pragma once

#include "base/result.h"
#include "storage/mv_app_root.h"

namespace moniva {

/// Settles pending rows of an account that have come due by now, items of a compound record with the payments
/// that settle them. Balances follow. Answers how many records that are in use something was settled of,
/// those of several rows counted once; writes nothing when none is due.
Result<int> makeMonivasPaid(MVAppRoot& root);

}  // namespace moniva
