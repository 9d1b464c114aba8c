#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "base/result.h"
#include "recurrence/series_repair.h"

namespace moniva {

/// A repair of damage that programs of earlier versions did here and there, beside the upgrades that every
/// older store gets. On a store without such damage it changes nothing.
struct FurtherRepair {
  std::string_view name;
  /// What it does, for people; in English.
  std::string_view purpose;
  /// Key in `monivaSys` that is '1' once it has run; blank for one that may run again.
  std::string_view flag;
  Result<> (*run)(MVAppRoot&);
};

/// All of them, in the order in which they run.
const std::vector<FurtherRepair>& furtherRepairs();

/// What came of one: how many rows it wrote besides its flag.
struct FurtherRepairOutcome {
  const FurtherRepair* repair = nullptr;
  std::int64_t rows = 0;
};

/// Runs them all in one transaction, which is undone where only a look was asked for. Answers those that had
/// something to do. Refused, with nothing changed, where one of them is.
Result<std::vector<FurtherRepairOutcome>> runFurtherRepairs(MVAppRoot& root, Repair repair);

}  // namespace moniva
