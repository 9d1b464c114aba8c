#include "recurrence/seed_check.h"

#include <algorithm>
#include <array>

#include "calendar/date_texts.h"
#include "model/record_entry.h"
#include "recurrence/spend_repeat.h"

namespace moniva {
namespace {

/// Dates up to here, in the year 1970, were never set.
constexpr Date kUnsetDate{31'536'000};
/// The reason of a series that ended begins so; one that a person deleted tells another.
constexpr std::string_view kStopped = "stopRepeat";
/// Those of a series that ended with a day, its last or that before it was divided.
constexpr std::array<std::string_view, 2> kEndedWithADay = {"stopRepeat by Date", "stopRepeat by division"};
/// A seed that went with its account or book was not deleted as a series.
constexpr std::string_view kCleared = "delete by clear ";

SeriesKind kindFrom(std::int64_t makes, std::string_view rule) {
  SeriesKind kind;
  if (makes == kind::kTransferIn || makes == kind::kTransferOut) {
    kind.type = kind::kTransferOut;
  } else if (makes == kind::kIncome || makes == kind::kExpense) {
    kind.type = static_cast<int>(makes);
  }
  kind.rule = repeatRuleFrom(rule);
  return kind;
}

void traceSeed(MVAppRoot& root, const SeedRow& seed, const SeriesSight& sight) {
  const auto day = [&](Date date) {
    return date > kUnsetDate ? stringOfDateForCSV(root.calendar(), date) : std::string("none");
  };
  const auto removed = [&](const RemovedRows& rows) {
    if (rows.rows == 0) return std::string("0");
    return fmt::format("{} ({} to {})", rows.rows, day(rows.first), day(rows.last));
  };
  std::string line =
      fmt::format("==[Fix Repeat] {} '{}' {} {}: deleted {}, next {}, end {}, latest {}, present {}",
                  seed.eid, seed.note, seed.repeat, seed.amount, seed.deleted, day(seed.datetime),
                  day(seed.end), day(sight.latest), sight.present);
  if (seed.deleted != 3) {
    line += fmt::format(", removed by repairs {}, without a reason {}", removed(sight.byRepair),
                        removed(sight.otherwise));
  }
  root.platform().log.line(line);
}

/// Removes all that is there of the series. Other devices that have its seed do the same by themselves, so
/// the rows keep their stamp.
Result<> removeRestOf(MVAppRoot& root, const std::string& seed) {
  return changeRecords(root, {.eid = {}, .group = {}, .series = seed}, [&](Connection& db) -> Result<> {
    const auto groups = groupsOfSeries(db, seed);
    if (!groups) return tl::make_unexpected(groups.error());
    for (const auto& group : *groups) {
      auto removed = changeRecords(root, {.eid = {}, .group = group, .series = {}}, [&](Connection&) {
        return write(root,
                     "update transactions set deleted = 3, ipid = '' where transferEID = ? and deleted = 0",
                     group);
      });
      if (!removed) return removed;
    }
    return write(root, "update transactions set deleted = 3, ipid = '' where repeat_seed = ?", seed);
  });
}

/// A stopped series that has nothing to keep its seed for: no record of it is there or could be restored, and
/// it could make none if it went on.
bool isOrphaned(const Calendar& calendar, const SeedRow& seed, const SeriesSight& sight, Date now) {
  if (seed.deleted != 1 || sight.present > 0) return false;
  const bool isOver = seed.end > kUnsetDate && calendar.isBeforeDay(seed.end, now);
  return isOver || seed.datetime <= kUnsetDate;
}

/// A live seed that cannot go on.
std::optional<Phrase> faultOf(const SeedRow& seed) {
  if (seed.deleted != 0) return std::nullopt;
  if (seed.datetime <= kUnsetDate) return phrase("the series has no next date, so it makes nothing");
  if (!seed.kind.rule)
    return phrase("'{}' is no rule of repeating, so the series makes nothing", seed.repeat);
  return std::nullopt;
}

/// Whether a device made the record that did not know the series to be over: it was made for a later day, or
/// does not tell for which and is dated on one.
bool isAfter(const Calendar& calendar, Date end, const SeriesRecord& record) {
  const auto last = calendar.dayNumber(end);
  return record.day && *record.day > last && record.datetime > end &&
         dayToldBy(record.eid).value_or(*record.day) > last;
}

bool wasDeletedAsASeries(const SeedRow& seed) {
  return seed.deleted == 3 && !seed.ipid.starts_with(kStopped) && !seed.ipid.starts_with(kCleared);
}

}  // namespace

SeriesSight sightOf(const Calendar& calendar, const Seeds& seeds, const std::string& seed,
                    const SeriesRecords& found) {
  SeriesSight sight;
  sight.latest = found.latest;
  sight.present = found.present;
  sight.byRepair = found.byRepair;
  sight.otherwise = found.otherwise;
  const auto known = seeds.find(seed);
  const bool ended = known != seeds.end() && known->second.deleted == 1 && known->second.end > kUnsetDate &&
                     std::ranges::any_of(kEndedWithADay, [&](std::string_view reason) {
                       return known->second.ipid.starts_with(reason);
                     });
  for (const auto& one : found.occurrences) {
    sight.records += one.isPresent() ? 1 : 0;
    if (one.deleted != 0) continue;
    ++sight.live;
    if (ended && isAfter(calendar, known->second.end, one)) ++sight.late;
  }
  return sight;
}

Result<std::set<std::string>> groupsOfSeries(Connection& db, const std::string& seed) {
  std::set<std::string> groups;
  for (const std::string_view sql :
       {"select transferEID from transactions where repeat_seed = ? and account = '' and transferEID !=''",
        // What was divided later is told by the row that stands for the whole, which keeps its account.
        "select transferEID from transactions where repeat_seed = ? and type = 86 and transferEID != ''"}) {
    Run run = db.query(sql, {seed});
    while (run.next()) groups.emplace(run.text(0));
    if (!run.ok()) return tl::make_unexpected(db.refusal());
  }
  return groups;
}

Result<Seeds> loadSeeds(MVAppRoot& root) {
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  Seeds seeds;
  Run run = db->query(
      "SELECT eid, datetime, sday, deleted, repeat_end_date, repeat, amount, note, editDate, ipid, syear FROM"
      " transactions where type = ?",
      {kind::kRepeatSeed});
  while (run.next()) {
    SeedRow seed;
    seed.eid = run.text(0);
    seed.datetime = run.date(1);
    seed.deleted = static_cast<int>(run.integer(3));
    seed.end = run.date(4);
    seed.repeat = run.text(5);
    seed.amount = run.real(6);
    seed.note = run.text(7);
    seed.ipid = run.text(9);
    seed.kind = kindFrom(run.integer(10), seed.repeat);
    seeds.emplace(run.text(0), std::move(seed));
  }
  if (!run.ok()) return tl::make_unexpected(db->refusal());
  return seeds;
}

Result<SeriesKind> kindOfSeries(MVAppRoot& root, std::string_view seed) {
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  Run run = db->query("select syear, repeat from transactions where eid = ? and type = ?",
                      {seed, kind::kRepeatSeed});
  if (run.next()) return kindFrom(run.integer(0), run.text(1));
  if (!run.ok()) return tl::make_unexpected(db->refusal());
  return SeriesKind{};
}

Result<SeriesFindings> checkSeeds(MVAppRoot& root, const Seeds& seeds, const SeriesSights& sights,
                                  Repair repair) {
  SeriesFindings findings;
  const Date now = root.now();
  for (const auto& [eid, seed] : seeds) {
    const auto found = sights.find(eid);
    const SeriesSight sight = found == sights.end() ? SeriesSight() : found->second;
    traceSeed(root, seed, sight);
    if (wasDeletedAsASeries(seed) && sight.present > 0) {
      findings.push_back(
          {eid, phrase("the series was deleted: what is left of it is removed"), std::max(1, sight.records)});
      if (repair == Repair::lookOnly) continue;
      if (auto removed = removeRestOf(root, eid); !removed) return tl::make_unexpected(removed.error());
    } else if (isOrphaned(root.calendar(), seed, sight, now)) {
      findings.push_back({eid, phrase("the series ended and nothing of it is left: it is removed"), 1});
      if (repair == Repair::lookOnly) continue;
      if (auto removed =
              write(root, "update transactions set deleted = 3 where eid = ? and deleted = 1", eid);
          !removed) {
        return tl::make_unexpected(removed.error());
      }
    } else if (auto fault = faultOf(seed)) {
      findings.push_back({eid, std::move(*fault), 1, false});
    } else if (sight.late > 0) {
      findings.push_back({eid, phrase("records after the last day of the series; they stay as they are"),
                          sight.late, false});
    }
  }
  for (const auto& [eid, sight] : sights) {
    if (sight.live == 0 || seeds.contains(eid)) continue;
    findings.push_back({eid, phrase("the series of these records does not exist: they stay as they are"),
                        sight.live, false});
  }
  return findings;
}

}  // namespace moniva
