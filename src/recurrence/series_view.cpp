#include "recurrence/series_view.h"

#include <map>

#include "model/entry_checks.h"
#include "model/repeat_rule.h"
#include "recurrence/repeat_step.h"
#include "recurrence/series_days.h"
#include "recurrence/spend_repeat.h"
#include "storage/writes.h"

namespace moniva {
namespace {

/// The seed that the row names, by itself or by its group; blank for none, nothing where there is no row.
Result<std::optional<std::string>> seedNamedBy(MVAppRoot& root, std::string_view eid) {
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  std::string group;
  {
    Run run = db->query("select type, repeat_seed, transferEID from transactions where eid = ?", {eid});
    if (!run.next()) {
      if (!run.ok()) return tl::make_unexpected(db->refusal());
      return std::nullopt;
    }
    if (run.integer(0) == kind::kRepeatSeed) return std::string(eid);
    if (!run.text(1).empty()) return std::string(run.text(1));
    group = run.text(2);
  }
  if (group.empty()) return std::string();
  Run run = db->query(
      "select repeat_seed from transactions where transferEID = ? and repeat_seed != '' limit 1", {group});
  std::string seed = run.next() ? std::string(run.text(0)) : std::string();
  if (!run.ok()) return tl::make_unexpected(db->refusal());
  return seed;
}

}  // namespace

Result<std::vector<SeriesOccurrence>> occurrencesOf(MVAppRoot& root, std::string_view seed) {
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  std::vector<SeriesOccurrence> found;
  std::map<std::string, std::size_t, std::less<>> groups;
  OwnDays days(root.calendar());
  // Of the rows of one record those in use, items, and the side the money leaves come first.
  Run run = db->query(
      "select eid, transferEID, type, bid, datetime, amount, deleted, barcode, sday from transactions where"
      " repeat_seed = ? and repeat_seed != '' and deleted < 2 order by datetime, deleted, bid desc, type "
      "desc, eid",
      {seed});
  while (run.next()) {
    SeriesOccurrence one{std::string(run.text(0)),
                         std::string(run.text(1)),
                         static_cast<int>(run.integer(2)),
                         run.integer(3) == kPaymentRow,
                         run.date(4),
                         run.real(5),
                         static_cast<int>(run.integer(6)),
                         days.of(run.date(4), run.text(7), run.integer(8))};
    if (!one.group.empty() && !groups.emplace(one.group, found.size()).second) {
      // A record is in use while one of its rows is.
      auto& first = found[groups[one.group]];
      if (one.deleted < first.deleted) first = std::move(one);
      continue;
    }
    found.push_back(std::move(one));
  }
  if (!run.ok()) return tl::make_unexpected(db->refusal());
  return found;
}

Result<MVTransaction> seedOfSeries(MVAppRoot& root, std::string_view eid) {
  const auto named = seedNamedBy(root, eid);
  if (!named) return tl::make_unexpected(named.error());
  if (!*named) return refuse("there is no record '{}'", eid);
  if ((*named)->empty()) return refuse("the record is of no series");
  auto seed = MVTransaction::transactionFromEID(root, **named);
  if (!seed || seed->type() != kind::kRepeatSeed || seed->deleted > 1) {
    return refuse("the series of that record is gone");
  }
  if (seed->advancedType == advanced::kInstallment) return refuse("a plan of instalments is no series");
  return std::move(*seed);
}

namespace {

Date dayFrom(const Calendar& home, const Calendar& here, Date date) {
  const auto number = home.dayNumber(date);
  return here.dayNumber(date) == number ? date : here.beginOfDay(number);
}

}  // namespace

Date dayHere(const MVTransaction& seed, Date date) {
  const Calendar& here = seed.root().calendar();
  return date == Date{} ? date : dayFrom(*homeCalendar(here, seed.timeZone), here, date);
}

Result<std::vector<Date>> comingDates(const MVTransaction& seed, Date end, std::size_t most) {
  std::vector<Date> dates;
  if (seed.deleted != 0) return dates;
  const Calendar& calendar = seed.root().calendar();
  const auto rule = repeatRuleFrom(seed.repeat);
  if (!rule) return refuse("'{}' is no rule of repeating", seed.repeat);
  if (auto checked = checkRecordDate(calendar, seed.datetime); !checked) {
    return tl::make_unexpected(checked.error());
  }
  const auto firstDay = firstDayOf(seed);
  if (!firstDay) return tl::make_unexpected(firstDay.error());
  const auto home = homeCalendar(calendar, seed.timeZone);
  const bool openEnded = seed.repeatEndDate == Date{};
  for (Date date = seed.datetime; dates.size() < most; date = nextRepeatDate(*home, *rule, date, *firstDay)) {
    const Date day = dayFrom(*home, calendar, date);
    if (day >= end || (!openEnded && home->isAfterDay(date, seed.repeatEndDate))) break;
    dates.push_back(day);
  }
  return dates;
}

Result<std::vector<MVTransaction>> stoppedSeries(MVAppRoot& root) {
  std::vector<MVTransaction> stopped;
  const Value arguments[] = {kind::kRepeatSeed, advanced::kInstallment};
  auto read = MVTransaction::transactionsWhere(
      root, "deleted = 1 and type = ? and (syear != ? or syear is NULL) order by datetime desc, eid",
      arguments, [&](MVTransaction seed) { stopped.push_back(std::move(seed)); });
  if (!read) return tl::make_unexpected(read.error());
  return stopped;
}

}  // namespace moniva
