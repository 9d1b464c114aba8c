#pragma once

#include <map>
#include <string>
#include <vector>

#include "recurrence/series_plan.h"
#include "recurrence/series_records.h"
#include "recurrence/series_repair.h"

// The look over all seeds; for the repair of series.
namespace moniva {

/// The seed of a series, as its check sees it.
struct SeedRow {
  std::string eid;
  Date datetime;  ///< of the next occurrence
  Date end;
  std::string repeat;
  std::string note;
  std::string ipid;
  double amount = 0;
  int deleted = 0;
  SeriesKind kind;
};
using Seeds = std::map<std::string, SeedRow, std::less<>>;

/// What there is of a series, without its records.
struct SeriesSight {
  Date latest;
  int present = 0;  ///< rows
  int records = 0;  ///< present ones
  int live = 0;     ///< records
  RemovedRows byRepair;
  RemovedRows otherwise;

  explicit SeriesSight(const SeriesRecords& found);
  SeriesSight() = default;
};
using SeriesSights = std::map<std::string, SeriesSight, std::less<>>;

Result<Seeds> loadSeeds(MVAppRoot& root);
/// What the seed of that `eid` makes; all unknown when there is none.
Result<SeriesKind> kindOfSeries(MVAppRoot& root, std::string_view seed);
/// What is found of the seeds, and of records without one, mended where that is asked for.
Result<SeriesFindings> checkSeeds(MVAppRoot& root, const Seeds& seeds, const SeriesSights& sights,
                                  Repair repair);

}  // namespace moniva
