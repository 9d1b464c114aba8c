#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "base/phrase.h"
#include "base/result.h"
#include "storage/mv_app_root.h"

// Mending what two devices, or a fault of an earlier version, left of a series: two records for one day,
// records of a series that is gone, masses of removed copies. What is surplus is marked as removed with the
// reason; only rows that are removed already leave the file. A healthy series is only read.
namespace moniva {

/// Whether findings are only told, or mended too.
enum class Repair { lookOnly, mend };

/// One thing found, in words for the person, and how many records it concerns.
struct SeriesFinding {
  std::string seed;
  Phrase what;
  int records = 0;
  /// What a repair does something about; else it is the person's to decide.
  bool mendable = true;
};
using SeriesFindings = std::vector<SeriesFinding>;

/// Makes the day of `day` hold one occurrence of the series: of live ones that edited last; of deleted ones,
/// where none is live, that edited last; and where there is none, the newest that a repair removed comes
/// back. Records that a person moved onto the day from another one are no duplicates of it.
Result<SeriesFindings> fixRecurrenItemFor(MVAppRoot& root, std::string_view seed, Date day,
                                          Repair repair = Repair::mend);
/// The same sweep over all days of a series, then the purge of mass copies: more than ten removed rows of one
/// date and one edit. The file is compacted after a purge, unless a transaction is open.
Result<SeriesFindings> recurringTransactionsHistory(MVAppRoot& root, std::string_view seed,
                                                    Repair repair = Repair::mend);
/// Looks over every seed, writes what it sees to the log, removes what is left of series that were deleted
/// and seeds that make nothing any more.
Result<SeriesFindings> fixAllRecurringItemForAllRepeatSeed(MVAppRoot& root, Repair repair = Repair::mend);

/// All of it, for every series of the store: what `moniva repair` does. Each series is a transaction of its
/// own; what was mended before a refusal stays mended. Records of a series that does not exist are only told.
Result<SeriesFindings> repairAllSeries(MVAppRoot& root, Repair repair);

}  // namespace moniva
