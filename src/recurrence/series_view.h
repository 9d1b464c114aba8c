#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "base/result.h"
#include "model/mv_transaction.h"

// A series as a person looks at it: its seed, what it has made, and what it will make.
namespace moniva {

/// One record that a series made, by the row that stands for it: of a transfer the side the money leaves, of
/// a record with payments its first item.
struct SeriesOccurrence {
  std::string eid;
  std::string group;  ///< its `transferEID`; blank for a plain one
  int type = 0;
  bool isPayment = false;
  Date datetime;
  double amount = 0;
  int deleted = 0;  ///< 1 where a person deleted it
  /// The number of its day, where it was made.
  std::int64_t day = 0;
};
/// What the series has made, those a person deleted too, the earliest first.
Result<std::vector<SeriesOccurrence>> occurrencesOf(MVAppRoot& root, std::string_view seed);

/// The seed of the series that the row of `eid` is of: the seed itself, or one of what it made. Refused: no
/// such row, one of no series (a plan of instalments is none), and a series that is gone.
Result<MVTransaction> seedOfSeries(MVAppRoot& root, std::string_view eid);

/// A date of the series, which goes by the zone it was begun in, as a date of the same day in the user's.
Date dayHere(const MVTransaction& seed, Date date);

/// The days on which a live series will make records, from the next one on, as of `dayHere`: those before
/// `end`, and `most` at most. None for a series that was stopped. Refused for a rule or a next date that is
/// none.
Result<std::vector<Date>> comingDates(const MVTransaction& seed, Date end, std::size_t most);

/// The series that are over, by their end or because a person stopped them, the latest first.
Result<std::vector<MVTransaction>> stoppedSeries(MVAppRoot& root);

}  // namespace moniva
