#pragma once

#include <optional>
#include <string_view>
#include <vector>

#include "model/repeat_rule.h"
#include "recurrence/series_records.h"
#include "recurrence/series_repair.h"

// What the repair of a series has to do, told from its records alone: nothing is read or written here.
namespace moniva {

/// How the rows of a record are told in a statement.
enum class RowsOf { row, payment, pair, group };
RowsOf rowsOf(const SeriesRecord& record);

/// One statement of a repair.
struct RepairAction {
  enum class What { remove, revive, purge };

  What what = What::remove;
  /// Stands in the reason a removed record gets, and tells which statement removed it.
  int reason = 0;
  SeriesRecord record;
  /// What the record comes to that stays for the day.
  double keptAmount = 0;
  /// Only rows with a `deleted` from the one to the other are removed.
  int fromDeleted = 0;
  int toDeleted = 0;
  /// What is purged.
  Copies copies;
};
using RepairPlan = std::vector<RepairAction>;

/// What a series makes, as its seed has it.
struct SeriesKind {
  int type = 0;  ///< of the records it makes; 0 where the seed does not tell
  std::optional<RepeatRule> rule;
};

/// The surplus of one day, from the records dated on it: live ones besides that edited last, else of those a
/// person deleted, else the newest one that a repair removed comes back.
RepairPlan planOfDay(std::string_view seed, const SeriesKind& kind, std::int64_t day,
                     const SeriesRecords& records);
/// The surplus of every day of a series.
RepairPlan planOfSweep(const SeriesKind& kind, const SeriesRecords& records);
/// What comes back of days that have nothing but records removed by a repair. A day is served by a record
/// that was made for it, wherever it is dated now; and by one nearer than half a round of the series, since
/// older identifiers do not tell. A day stays empty whose record went in another way since.
RepairPlan planOfRevival(std::string_view seed, const SeriesKind& kind, const SeriesRecords& records);
/// Whether the series has a record that was made for the day, wherever it is dated now.
bool isServed(std::string_view seed, const SeriesRecords& records, std::int64_t day);
/// The masses of removed copies, less what is to come back.
RepairPlan planOfPurge(const SeriesRecords& records, const RepairPlan& revival);

/// The actions in words for the person; what is equal is told once.
SeriesFindings findingsOf(const Calendar& calendar, std::string_view seed, const RepairPlan& plan);

}  // namespace moniva
