#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "base/result.h"
#include "model/mv_transaction.h"

// How a series stands: whether it makes anything, and what there is of its records.
namespace moniva {

/// Why a series makes nothing, though nobody stopped it, in the words in which bringing it up to date refuses
/// it: a rule, date or kind that is none, or a book or account that is gone or closed. A date before 1971 was
/// never set.
Result<> checkMakes(const MVTransaction& seed);

/// The live series whose rule is none, so that no list by rule has them.
Result<std::vector<MVTransaction>> seriesWithoutRule(MVAppRoot& root);
/// The live series whose next date is missing or a text, so that no list by date has them.
Result<std::vector<MVTransaction>> seriesWithoutDate(MVAppRoot& root);

/// When the latest record in use of the series is dated; nothing without one.
Result<std::optional<Date>> latestRecordOf(MVAppRoot& root, std::string_view seed);
/// How many records of the series are pending, a pair or group counted once.
Result<std::int64_t> pendingRecordsOf(MVAppRoot& root, std::string_view seed);
/// How many live series of the book or account of that key have records due by the end of today.
Result<std::int64_t> seriesBehind(MVAppRoot& root, std::string_view key);

}  // namespace moniva
