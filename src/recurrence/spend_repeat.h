#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "base/result.h"
#include "model/mv_transaction.h"
#include "model/spend.h"
#include "model/transfer.h"
#include "recurrence/repeat_step.h"

// A series that repeats: one seed row (type 85), which says when and what, and a row or pair of rows for each
// occurrence that has come due. Functions that take a seed want it loaded
// (`MVTransaction::transactionFromEID`) and refuse what is no seed of a series, in words. The days of a
// series are those of the zone in which it was begun, wherever the user is; a record begins with its day, and
// is due with it, in the zone the user is in then.
namespace moniva {

/// Most occurrences that a series is given at once; what is due beyond them comes at the next run. Ten years
/// of days.
inline constexpr int kMostOccurrencesAtOnce = 3700;

/// The identifier of the occurrence that a series has on the day of `day` (in the user's zone), the same on
/// every device. `part` tells rows of one occurrence apart: "" for the row itself, "A" and "B" for the sides
/// of a transfer, "AB" for the UUID they share, "P" for that of a payment.
std::string occurrenceIdentifier(const Calendar& calendar, std::string_view seed, Date day,
                                 std::string_view part = {});

/// The number of the day (as of `Calendar::dayNumber`) for which the series made the row of that `eid`;
/// nothing for a row whose identifier does not tell. It stays what it is when a person dates the row anew.
std::optional<std::int32_t> dayMadeFor(std::string_view seed, std::string_view eid);
/// The day for which any series made the row of that `eid`, such as the one it was divided from.
std::optional<std::int64_t> dayToldBy(std::string_view eid);

/// The day of month by which rules that count months go: that of the day the series began, as its seed has
/// it; of one that does not, that of the first occurrence, those a person deleted too.
Result<int> firstDayOf(const MVTransaction& seed);

/// The date on which the series began.
Result<Date> beginOfSeries(const MVTransaction& seed);

/// The date after `latest`, the date of the latest occurrence.
Result<Date> getNextRepeatDate(const MVTransaction& seed, Date latest);

/// What bringing a series up to date came to.
struct SeriesProgress {
  int made = 0;        ///< new occurrences; a transfer counts once
  bool ended = false;  ///< its last date has passed
  Date next{};         ///< the date it waits for
  bool more = false;   ///< there is more due than is made at once
};
/// Makes the occurrences that are missing from the day of `from`, a date of the series, to that of `to`,
/// which is taken in the user's zone, both counted in, and moves the seed to the first date after them, in
/// one transaction: an interruption leaves the series before or after. A day that has an occurrence is left
/// alone, also one whose occurrence a person deleted or dated otherwise. An occurrence begins with its day,
/// is settled (a payment without an account is pending) and brings balances and use counts along. A series
/// whose end lies before its next date is over. Refused, with nothing changed: a rule that is none, a date
/// that is none, what cannot be added (an account that is gone).
Result<SeriesProgress> createRepeatItemsFrom(const MVTransaction& seed, Date from, Date to);

/// Ends a series at the person's request; what it has made stays. Refused for one that is over.
Result<> stopRepeat(const MVTransaction& seed);
/// Removes a series with everything it has made; answers how many records (a pair counts once) went.
Result<int> deletedAllRepeatTransaction(const MVTransaction& seed);
/// Whether another live seed says the same: what it makes, of how much, for what and when.
Result<bool> hasDuplicateRepeatSeed(const MVTransaction& seed);

/// Records an expense or income (or, with `bid` 10, a payment of no record) that repeats: its seed, the
/// record itself with its photos as the first occurrence when its day has come, and what is due since.
/// Answers the seed's `eid`; `spend.eid` stays blank where nothing is due yet. Refused, with nothing written:
/// what `recordEntry` refuses, a rule that is none, an end before the beginning, and more than
/// `kMostOccurrencesAtOnce` at once.
Result<std::string> recordRepeating(MVAppRoot& root, Spend& spend);
/// The same for a transfer.
Result<std::string> recordRepeating(MVAppRoot& root, Transfer& transfer);

}  // namespace moniva
