#include "recurrence/series_seed.h"

#include "base/text.h"
#include "model/entry_checks.h"
#include "model/transaction_type.h"
#include "storage/writes.h"

namespace moniva {
namespace {

/// Dates that are no numbers, as very old programs wrote them, tell nothing.
constexpr std::string_view kSeedColumns =
    "select deleted, syear, bid, repeat,"
    " case when typeof(datetime) in ('real', 'integer') then datetime else 0 end,"
    " case when typeof(repeat_end_date) in ('real', 'integer') then repeat_end_date else 0 end,"
    " case when typeof(payDate) in ('real', 'integer') then payDate else 0 end, sday"
    " from transactions where eid = ? and type = ?";

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
  return seed;
}

namespace {

/// The date of the first occurrence, those a person deleted too; 0 without any.
Result<Date> firstOccurrence(MVAppRoot& root, std::string_view seed) {
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  Run run = db->query(
      "select datetime from transactions where repeat_seed = ? and deleted < 2 order by datetime limit 1",
      {seed});
  const Date first = run.next() ? run.date(0) : Date{};
  if (!run.ok()) return tl::make_unexpected(db->refusal());
  return first;
}

}  // namespace

Result<Date> beginOfSeries(MVAppRoot& root, const SeriesSeed& seed) {
  if (seed.begun != Date{}) return seed.begun;
  auto first = firstOccurrence(root, seed.eid);
  if (first && *first == Date{}) return seed.datetime;
  return first;
}

Result<int> firstDayOf(MVAppRoot& root, const SeriesSeed& seed) {
  const auto first = firstOccurrence(root, seed.eid);
  if (!first) return tl::make_unexpected(first.error());
  const Calendar& calendar = root.calendar();
  if (*first != Date{}) return calendar.day(*first);
  if (seed.begun != Date{}) return calendar.day(seed.begun);
  return seed.sday >= 1 && seed.sday <= 31 ? seed.sday : calendar.day(seed.datetime);
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
