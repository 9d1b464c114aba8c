#include "recurrence/series_seed.h"

#include "base/text.h"
#include "model/entry_checks.h"
#include "model/transaction_type.h"
#include "recurrence/series_days.h"
#include "storage/writes.h"

namespace moniva {
namespace {

/// Dates that are no numbers, as very old programs wrote them, tell nothing.
constexpr std::string_view kSeedColumns =
    "select deleted, syear, bid, repeat,"
    " case when typeof(datetime) in ('real', 'integer') then datetime else 0 end,"
    " case when typeof(repeat_end_date) in ('real', 'integer') then repeat_end_date else 0 end,"
    " case when typeof(payDate) in ('real', 'integer') then payDate else 0 end, sday, barcode,"
    " account, ipid"
    " from transactions where eid = ? and type = ?";

/// The kind of the newest record of the series, of a transfer that of the side on the seed's account; 0
/// without any.
Result<int> kindOfNewest(Connection& db, std::string_view seed, std::string_view account) {
  Run run = db.query(
      "select type from transactions where repeat_seed = ? and type in (11, 12, 23, 33) order by datetime"
      " desc, account = ? desc limit 1",
      {seed, account});
  const int kind = run.next() ? static_cast<int>(run.integer(0)) : 0;
  if (!run.ok()) return tl::make_unexpected(db.refusal());
  return kind;
}

/// A date in 1970 stands for one that was never set.
bool wasSet(const Calendar& calendar, Date date) {
  return date != Date{} && calendar.civilTime(date).year != 1970;
}

}  // namespace

bool SeriesSeed::makesTransfers() const {
  return makes == kind::kTransferOut || makes == kind::kTransferIn;
}

Result<> SeriesSeed::checkKind() const {
  if (makesTransfers() || makes == kind::kIncome || makes == kind::kExpense) return {};
  return refuse("a series makes income, expenses or transfers, and {} is none of these", makes);
}

Result<SeriesSeed> SeriesSeed::of(MVAppRoot& root, std::string_view eid) {
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  Run run = db->query(kSeedColumns, {eid, kind::kRepeatSeed});
  if (!run.next()) {
    if (!run.ok()) return tl::make_unexpected(db->refusal());
    return refuse("there is no series '{}'", eid);
  }
  SeriesSeed seed;
  seed.eid = eid;
  seed.deleted = static_cast<int>(run.integer(0));
  seed.makes = static_cast<int>(run.integer(1));
  seed.isPayment = run.integer(2) == kPaymentRow;
  seed.repeat = run.text(3);
  seed.datetime = run.date(4);
  if (const Date end = run.date(5); wasSet(root.calendar(), end)) seed.end = end;
  if (const Date begun = run.date(6); wasSet(root.calendar(), begun)) seed.begun = begun;
  seed.sday = static_cast<int>(run.integer(7));
  seed.home = homeCalendar(root.calendar(), run.text(8));
  seed.ipid = run.text(10);
  seed.isKindTold = seed.makes != 0;
  if (seed.isKindTold) return seed;
  const auto kind = kindOfNewest(*db, eid, run.text(9));
  if (!kind) return tl::make_unexpected(kind.error());
  seed.makes = *kind;
  return seed;
}

namespace {

/// The date of the first occurrence, those a person deleted too; 0 without any. One that was made in another
/// zone is of the day it had there.
Result<Date> firstOccurrence(MVAppRoot& root, const SeriesSeed& seed) {
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  Run run = db->query(
      "select datetime, barcode, sday from transactions where repeat_seed = ? and deleted < 2 order by"
      " datetime limit 1",
      {seed.eid});
  if (!run.next()) return run.ok() ? Result<Date>(Date{}) : tl::make_unexpected(db->refusal());
  const Date first = run.date(0);
  const auto day = OwnDays(root.calendar()).of(first, run.text(1), run.integer(2));
  return seed.home->dayNumber(first) == day ? first : seed.home->beginOfDay(day);
}

}  // namespace

Result<Date> beginOfSeries(MVAppRoot& root, const SeriesSeed& seed) {
  if (seed.begun != Date{}) return seed.begun;
  auto first = firstOccurrence(root, seed);
  if (first && *first == Date{}) return seed.datetime;
  return first;
}

Result<int> firstDayOf(MVAppRoot& root, const SeriesSeed& seed) {
  // What becomes of its first record is no change of the series.
  const bool isKept = seed.sday >= 1 && seed.sday <= 31;
  if (seed.begun != Date{} && isKept) return seed.sday;
  const auto first = firstOccurrence(root, seed);
  if (!first) return tl::make_unexpected(first.error());
  if (*first != Date{}) return seed.home->day(*first);
  if (seed.begun != Date{}) return seed.home->day(seed.begun);
  return isKept ? seed.sday : seed.home->day(seed.datetime);
}

Result<RepeatRule> ruleOf(const SeriesSeed& seed) {
  if (const auto rule = repeatRuleFrom(seed.repeat)) return *rule;
  return refuse("'{}' is no rule of repeating", excerpt(seed.repeat));
}

Result<> checkSeriesDate(const Calendar& calendar, Date date) {
  if (date == Date{}) return refuse("the series does not say when it is due");
  return checkRecordDate(calendar, date);
}

}  // namespace moniva
