#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "base/result.h"
#include "calendar/calendar.h"
#include "model/repeat_rule.h"
#include "storage/mv_app_root.h"

// What the sources of this room share of seeds and their occurrences; no part of what others use.
namespace moniva {

/// Why a series is over that was divided: what came after goes on as another one.
inline constexpr std::string_view kDividedMark = "stopRepeat by division";

/// The seed of a series as the store has it now.
struct SeriesSeed {
  std::string eid;
  int deleted = 0;
  /// Kind of what it makes; 33 or 23 for transfers. Where the seed does not say, that of its newest record.
  int makes = 0;
  bool isKindTold = true;  ///< the seed itself says what it makes
  bool isPayment = false;
  std::string repeat;
  Date datetime;            ///< of the next occurrence; 0 for none that can be read
  std::optional<Date> end;  ///< on that day the last occurrence may be
  Date begun;               ///< as kept in the seed; 0 where it never was
  int sday = 0;
  std::string ipid;
  std::shared_ptr<const Calendar> home;  ///< by which its days go; never null

  bool makesTransfers() const;
  /// Refused: a kind of record that no series makes.
  Result<> checkKind() const;
  /// Nothing when there is no seed of a series with that `eid`.
  static Result<SeriesSeed> of(MVAppRoot& root, std::string_view eid);
};

/// The date on which the series began: as the seed has it, else that of its first occurrence, else its own.
Result<Date> beginOfSeries(MVAppRoot& root, const SeriesSeed& seed);
Result<int> firstDayOf(MVAppRoot& root, const SeriesSeed& seed);
/// The rule of the series; refused where it is none.
Result<RepeatRule> ruleOf(const SeriesSeed& seed);
/// Refused: a date of a series that is missing or no date of a record.
Result<> checkSeriesDate(const Calendar& calendar, Date date);

/// `occurrenceIdentifier` for the number of a day.
std::string identifierOfDay(std::string_view seed, std::int64_t dayNumber, std::string_view part = {});

}  // namespace moniva
