#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/result.h"
#include "storage/mv_app_root.h"

// What the store has of a series, as its repair looks at it.
namespace moniva {

/// One record that a series made: its row, or the rows of its group, which are one record.
struct SeriesRecord {
  std::string eid;    ///< of its item, else of its first row
  std::string other;  ///< the second row of a transfer
  std::string group;  ///< their `transferEID`; blank for a plain row
  bool isItem = false;
  /// Its kind; a transfer's is that of the money that leaves (33).
  int type = 0;
  int rows = 0;
  int deleted = 0;  ///< of several rows the least
  /// Removed, by a repair of its series.
  bool byRepair = false;
  /// The day it is of, as of `Calendar::dayNumber`, where it was made. Nothing for one without a date.
  std::optional<std::int64_t> day;
  Date datetime;
  Date edited;
  double amount = 0;

  bool isPresent() const { return deleted < 2; }
  /// Items of a day are told from payments by themselves, and those by what they are of.
  int sort() const { return isItem ? 0 : type; }
  bool isTransfer() const;
};

/// Removed rows of one date and one edit.
struct Copies {
  Date datetime;
  Date edited;
  int rows = 0;
};

/// Rows that were removed, and when the first and last of them are dated.
struct RemovedRows {
  int rows = 0;
  Date first;
  Date last;

  void note(Date date);
};

struct SeriesRecords {
  std::vector<SeriesRecord> occurrences;
  std::vector<Copies> copies;
  Date latest;
  int present = 0;  ///< rows, those that a person deleted too
  RemovedRows byRepair;
  RemovedRows otherwise;  ///< without any reason told
};

/// The records of a series, or those dated on the day of `day` alone, here and now.
Result<SeriesRecords> recordsOfSeries(MVAppRoot& root, std::string_view seed);
Result<SeriesRecords> recordsOfSeries(MVAppRoot& root, std::string_view seed, Date day);
/// Hands the records of every series to `take`, one series after the other, in one pass over the rows.
Result<> recordsOfAllSeries(
    MVAppRoot& root, const std::function<void(const std::string& seed, const SeriesRecords& records)>& take);

}  // namespace moniva
