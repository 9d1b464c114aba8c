#pragma once

#include "exchange/importer.h"

namespace moniva {

/// Fills the store with three years of records of a household, kept in euros: the file "household.csv" of the
/// resources. `progress` is told now and then how many rows are done, and of how many. Records that are there
/// already are not added again. Its book has a budget of its months from January 2024 on.
Result<ImportOutcome> insertDemoData(MVAppRoot& root,
                                     std::function<void(std::size_t, std::size_t)> progress = nullptr);

}  // namespace moniva
