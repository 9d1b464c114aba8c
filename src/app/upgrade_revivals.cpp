// Records of series that clean-ups of earlier versions removed by mistake come back.

#include <map>
#include <set>

#include "app/do_db_updater.h"
#include "calendar/date_texts.h"
#include "model/entry_checks.h"
#include "model/record_entry.h"
#include "recurrence/spend_repeat.h"

namespace moniva {
namespace {

/// One row that a clean-up removed.
struct RemovedRow {
  std::string eid;
  std::string group;
  Date datetime;
  std::string zone;
};

/// The days that a row may stand for: the one it falls on here, the one where it was made, and the one it was
/// made for, from which a person may have moved it.
class DaysServed {
 public:
  DaysServed(const Calendar& calendar, std::string_view seed) : calendar_(calendar), seed_(seed) {}

  void add(const RemovedRow& row) {
    here_.insert(calendar_.dayNumber(row.datetime));
    there_.insert(integerDateOfTimeZone(calendar_, row.datetime, row.zone));
    if (const auto made = dayMadeFor(seed_, row.eid)) here_.insert(*made);
  }
  bool has(const RemovedRow& row) const {
    const auto made = dayMadeFor(seed_, row.eid);
    return here_.contains(calendar_.dayNumber(row.datetime)) ||
           there_.contains(integerDateOfTimeZone(calendar_, row.datetime, row.zone)) ||
           (made && here_.contains(*made));
  }

 private:
  const Calendar& calendar_;
  std::string_view seed_;
  std::set<std::int64_t> here_;
  std::set<int> there_;
};

RemovedRow rowIn(const Run& run) {
  return {std::string(run.text(0)), std::string(run.text(1)), run.date(2), std::string(run.text(3))};
}

/// The rows that the clean-up removed, by series, each day's latest edit first. `marked` is the condition on
/// the mark it left.
Result<std::map<std::string, std::vector<RemovedRow>>> removedBySeries(MVAppRoot& root, Connection& db,
                                                                       std::string_view marked) {
  std::map<std::string, std::vector<RemovedRow>> series;
  Run run = db.query(
      fmt::format("select eid, ifnull(transferEID, ''), datetime, ifnull(barcode, ''), repeat_seed from"
                  " transactions where deleted = 3 and repeat_seed != '' and typeof(datetime) in ('real',"
                  " 'integer') and datetime != 0 and ({}) order by editDate desc, eid",
                  marked));
  while (run.next()) {
    auto row = rowIn(run);
    if (checkRecordDate(root.calendar(), row.datetime)) {
      series[std::string(run.text(4))].push_back(std::move(row));
    }
  }
  if (!run.ok()) return tl::make_unexpected(db.refusal());
  return series;
}

/// Whether the series is there, going on or ended; with one that was deleted its records went on purpose.
Result<bool> isSeries(Connection& db, const std::string& seed) {
  Run run = db.query("select 1 from transactions where eid = ? and type = 85 and deleted < 2", {seed});
  const bool found = run.next();
  if (!run.ok()) return tl::make_unexpected(db.refusal());
  return found;
}

Result<DaysServed> daysServed(MVAppRoot& root, Connection& db, std::string_view seed) {
  DaysServed days(root.calendar(), seed);
  Run run = db.query(
      "select eid, '', datetime, ifnull(barcode, '') from transactions where repeat_seed = ? and deleted < 2 "
      "and"
      " typeof(datetime) in ('real', 'integer') and datetime != 0",
      {seed});
  while (run.next()) {
    const auto row = rowIn(run);
    if (checkRecordDate(root.calendar(), row.datetime)) days.add(row);
  }
  if (!run.ok()) return tl::make_unexpected(db.refusal());
  return days;
}

/// The rows of the record that come back with the row: of a transfer one for each side, or none where a side
/// is missing; of another group all that went with it.
Result<std::vector<std::string>> wholeOf(Connection& db, const RemovedRow& row, std::string_view marked) {
  if (row.group.empty()) return std::vector{row.eid};
  std::map<int, std::string> sides;
  std::vector<std::string> all;
  Run run =
      db.query(fmt::format("select eid, type from transactions where transferEID = ? and deleted = 3 and"
                           " ({}) order by editDate desc, eid",
                           marked),
               {row.group});
  while (run.next()) {
    all.emplace_back(run.text(0));
    const int type = static_cast<int>(run.integer(1));
    if (type == kind::kTransferIn || type == kind::kTransferOut) sides.emplace(type, run.text(0));
  }
  if (!run.ok()) return tl::make_unexpected(db.refusal());
  if (sides.empty()) return all;
  all.clear();
  if (sides.size() == 2) {
    for (const auto& [type, eid] : sides) all.push_back(eid);
  }
  return all;
}

/// Brings back what the clean-up removed of the days of which nothing is left: the record edited last. Others
/// of the day are true duplicates and stay removed.
Result<> reviveMarked(MVAppRoot& root, std::string_view marked) {
  return atomically(root, [&](Connection& db) -> Result<> {
    const auto series = removedBySeries(root, db, marked);
    if (!series) return tl::make_unexpected(series.error());
    for (const auto& [seed, rows] : *series) {
      const auto isThere = isSeries(db, seed);
      if (!isThere) return tl::make_unexpected(isThere.error());
      if (!*isThere) continue;
      auto days = daysServed(root, db, seed);
      if (!days) return tl::make_unexpected(days.error());
      for (const auto& row : rows) {
        if (days->has(row)) continue;
        const auto whole = wholeOf(db, row, marked);
        if (!whole) return tl::make_unexpected(whole.error());
        if (whole->empty()) continue;
        auto revived = changeRecords(
            root, {.eid = row.eid, .group = row.group, .series = {}}, [&](Connection&) -> Result<> {
              for (const auto& eid : *whole) {
                auto written = write(root, "update transactions set deleted = 0, ipid = '' where eid=?", eid);
                if (!written) return written;
              }
              return {};
            });
        if (!revived) return revived;
        days->add(row);
      }
    }
    return {};
  });
}

/// Seeds that do not say when their series began say it again: at the first record there is, else at the one
/// to come.
Result<> mendBeginnings(MVAppRoot& root, Connection& db) {
  std::vector<std::pair<std::string, Date>> seeds;
  {
    Run run = db.query(
        "select eid, case when typeof(datetime) in ('real', 'integer') then datetime else 0 end from "
        "transactions"
        " where type = 85 and deleted < 2 and ifnull(syear, 0) != 1003 and (typeof(payDate) not in ('real',"
        " 'integer') or (payDate > -86400 and payDate < 31536000))");
    while (run.next()) seeds.emplace_back(run.text(0), run.date(1));
    if (!run.ok()) return tl::make_unexpected(db.refusal());
  }
  for (auto [seed, begun] : seeds) {
    {
      Run run = db.query(
          "select datetime from transactions where repeat_seed = ? and deleted < 2 and typeof(datetime) in"
          " ('real', 'integer') and datetime != 0 order by datetime",
          {seed});
      if (run.next()) begun = run.date(0);
      if (!run.ok()) return tl::make_unexpected(db.refusal());
    }
    if (begun == Date{} || !checkRecordDate(root.calendar(), begun)) continue;
    auto written = write(root, "update transactions set payDate = ?, sday = ? where eid = ?", begun,
                         root.calendar().day(begun), seed);
    if (!written) return written;
  }
  return {};
}

}  // namespace

Result<> fixWrongDeletedByClearDuplicateRecurringItem20210209(MVAppRoot& root) {
  return atomically(root, [&](Connection&) -> Result<> {
    auto revived = reviveMarked(root, "ipid like 'delete with clearDuplicateRecurringItem%'");
    if (!revived) return revived;
    return write(root, "delete from monivaSys where key = 'userRecordID'");
  });
}

Result<> fixWrongDeletedByClearRecurringItem20210412(MVAppRoot& root) {
  return atomically(root, [&](Connection& db) -> Result<> {
    auto revived =
        reviveMarked(root,
                     "ipid = 'delete by fixDuplicateRecurringItem 668' or ipid = 'delete by"
                     " fixDuplicateRecurringItem 669' or ipid = 'delete by fixDuplicateRecurringItem"
                     " 670'");
    return revived ? mendBeginnings(root, db) : revived;
  });
}

Result<> fixWrongDeletedByClearRecurringItem20220719(MVAppRoot& root) {
  return reviveMarked(root,
                      "ipid = 'delete by fixDuplicateRecurringItem 580' or ipid = 'delete by"
                      " fixDuplicateRecurringItem 581' or ipid = 'delete by fixDuplicateRecurringItem 582' or"
                      " ipid = 'delete by fixDuplicateRecurringItem 583'");
}

}  // namespace moniva
