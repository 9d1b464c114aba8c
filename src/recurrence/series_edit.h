#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "base/result.h"
#include "storage/mv_app_root.h"

// Changing what a series makes and has made. Each is one transaction; balances, groups and use counts follow.
namespace moniva {

/// How far a change reaches: one record, that record (or the next one to come) and those after it, or all.
/// What lies before stays as it was, to the last bit.
enum class Reach { one, following, all };

/// What is to change; what is not set stays. Accounts, books, categories and vendors are given by key, and
/// checked as by the editors of records.
struct SeriesChange {
  std::optional<double> amount;        ///< of a transfer what is moved, its charge on top as it is
  double foreignAmount = 0;            ///< what that is in another currency
  std::string foreignCurrency;         ///< blank for none: another amount drops what there was
  std::optional<double> arrives;       ///< of a transfer across currencies
  std::optional<std::string> account;  ///< of a transfer the one the money leaves
  std::optional<std::string> to;       ///< of a transfer the one it arrives in
  std::optional<std::string> book;
  std::optional<std::pair<std::string, std::string>> category;  ///< top-level one and the one chosen
  std::optional<std::string> vendor;
  std::optional<std::string> note;
  std::optional<std::string> rule;
  std::optional<Date> end;   ///< the last day; `Date{}` for none
  std::optional<Date> date;  ///< the day of the record named, or of the next one to come

  bool hasValues() const { return amount || arrives || account || to || book || category || vendor || note; }
};

/// What a change has come to.
struct SeriesOutcome {
  std::string seed;    ///< of the series as it goes on
  std::string former;  ///< of the one that ended where another goes on; blank where it goes on itself
  int changed = 0;     ///< records that are there already
  int made = 0;        ///< records that came due by it
  int beyondEnd = 0;   ///< records in use after the end that was set, which stay
  bool ended = false;  ///< the series makes nothing more
  bool more = false;   ///< there is more due than is made at once
  bool whole = false;  ///< the one that goes on apart has all records; nothing is left of the former
  Date next{};         ///< the date it waits for
};

/// Changes the series of the row `eid`, or of what it made that row alone. A row of the seed stands for the
/// next record to come. Values are written by the editors of the records in reach; what a person deleted
/// keeps its own.
///
/// Another rule or day divides a series that has records: it ends the day before, and a new one goes on with
/// the records from there, which stay as they are. With another day under the same rule they are dated as the
/// new days have it, but for those that a person had dated otherwise; with another rule only days after the
/// latest of them are new.
///
/// Refused, with nothing changed: what the editors refuse; what the record is not (a transfer has no
/// category); a rule that is none, a day that would pass another record of the series, an end before the
/// beginning, more than `kMostOccurrencesAtOnce` that would be due; a rule, day or end for one record alone
/// or for what is past, and for a series that is over.
Result<SeriesOutcome> editSeries(MVAppRoot& root, std::string_view eid, Reach reach,
                                 const SeriesChange& change);

/// Takes up a series that was stopped or is over, with another end where one is set. It goes on with the
/// first day of its rule after today; with `fill` it makes what the gap lacks. Refused for a series that
/// goes on, one that was divided and so goes on as another, and where its end has passed.
Result<SeriesOutcome> resumeSeries(MVAppRoot& root, std::string_view eid, std::optional<Date> end, bool fill);

/// Removes a series with everything it has made, one that is over too; answers how many records went.
Result<int> deleteSeries(MVAppRoot& root, std::string_view eid);

}  // namespace moniva
