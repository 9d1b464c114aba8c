#pragma once

#include <map>
#include <set>
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
  int late = 0;     ///< live records of days after the last one of the series
  RemovedRows byRepair;
  RemovedRows otherwise;
};
using SeriesSights = std::map<std::string, SeriesSight, std::less<>>;

SeriesSight sightOf(const Calendar& calendar, const Seeds& seeds, const std::string& seed,
                    const SeriesRecords& found);
/// The UUIDs of compound records that the series made, or that its records became: carts and the like, plans
/// and spread costs. Rows of them do not all name the series.
Result<std::set<std::string>> groupsOfSeries(Connection& db, const std::string& seed);

Result<Seeds> loadSeeds(MVAppRoot& root);
/// What the seed of that `eid` makes; all unknown when there is none.
Result<SeriesKind> kindOfSeries(MVAppRoot& root, std::string_view seed);
/// What is found of the seeds, and of records without one, mended where that is asked for.
Result<SeriesFindings> checkSeeds(MVAppRoot& root, const Seeds& seeds, const SeriesSights& sights,
                                  Repair repair);

}  // namespace moniva
