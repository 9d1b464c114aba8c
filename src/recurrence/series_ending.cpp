#include <set>

#include "calendar/date_texts.h"
#include "model/record_entry.h"
#include "recurrence/seed_check.h"
#include "recurrence/series_seed.h"
#include "recurrence/spend_repeat.h"

// The end of a series, and what tells two of them apart.
namespace moniva {
namespace {

/// A seed that can still be changed: live, or stopped and there.
Result<SeriesSeed> seedToEnd(const MVTransaction& seed) {
  auto stored = SeriesSeed::of(seed.root(), seed.eid);
  if (stored && stored->deleted > 1) return refuse("the series was deleted");
  return stored;
}

/// Of the rows of a series, and of groups they belong to, what the removal changes besides them.
struct SeriesRows {
  std::set<std::string> records;  ///< live ones; a pair by the UUID it shares
  std::set<std::string> groups;   ///< whose rows go with them
  EntryUpkeep uses;
};

/// Takes note of the live rows that a condition selects.
Result<> readSeriesRows(MVAppRoot& root, Connection& db, std::string_view sql, const std::string& key,
                        SeriesRows& rows) {
  Run run = db.query(sql, {key});
  while (run.next()) {
    const std::string_view group = run.text(1);
    rows.records.emplace(group.empty() ? run.text(0) : group);
    const int type = static_cast<int>(run.integer(2));
    const bool isItem = run.integer(3) == kItemRow && (type == kind::kIncome || type == kind::kExpense);
    // What is in a group is counted with the group.
    if (!isItem || (rows.groups.contains(std::string(group)) && key != group)) continue;
    Spend spend(root);
    spend.type = type;
    spend.book = run.text(4);
    spend.category = run.text(5);
    spend.subcategory = run.text(6) == kNoCategory ? std::string_view() : run.text(6);
    spend.vendor = run.text(7);
    rows.uses.noteUses(spend, -1);
  }
  return run.ok() ? Result<>() : tl::make_unexpected(db.refusal());
}

constexpr std::string_view kRowsOfSeries =
    "select eid, transferEID, type, bid, book, category, subcategory, vendor from transactions where"
    " repeat_seed = ? and deleted = 0";
constexpr std::string_view kRowsOfGroup =
    "select eid, transferEID, type, bid, book, category, subcategory, vendor from transactions where"
    " transferEID = ? and deleted = 0";

/// Removes the rows of the groups, each as a change of its own, so that balances follow, then the series.
Result<> removeSeriesRows(MVAppRoot& root, const std::string& seed, const std::set<std::string>& groups,
                          const std::string& reason) {
  for (const auto& group : groups) {
    auto gone = changeRecords(root, {.eid = {}, .group = group, .series = {}}, [&](Connection&) {
      return write(root,
                   "update transactions set deleted = 3, ipid = ?, editDate = ?, edit_ipid = ? where"
                   " transferEID = ? and deleted = 0",
                   reason, root.editStamp(), root.itsUDID(), group);
    });
    if (!gone) return gone;
  }
  auto gone = write(root,
                    "update transactions set deleted = 3, ipid = ?, editDate = ?, edit_ipid = ? where"
                    " repeat_seed = ? and deleted = 0",
                    reason, root.editStamp(), root.itsUDID(), seed);
  if (!gone) return gone;
  return write(root,
               "update transactions set deleted = 3, ipid = ?, editDate = ?, edit_ipid = ? where eid = ? and"
               " deleted = 0",
               reason, root.editStamp(), root.itsUDID(), seed);
}

}  // namespace

Result<> stopRepeat(const MVTransaction& seed) {
  MVAppRoot& root = seed.root();
  return atomically(root, [&](Connection&) -> Result<> {
    const auto stored = seedToEnd(seed);
    if (!stored) return tl::make_unexpected(stored.error());
    if (stored->deleted != 0) return refuse("the series is over");
    return write(root,
                 "update transactions set deleted = 1, ipid = 'stopRepeat by user', editDate = ?,"
                 " edit_ipid = ? where eid = ?",
                 root.editStamp(), root.itsUDID(), seed.eid);
  });
}

Result<int> deletedAllRepeatTransaction(const MVTransaction& seed) {
  MVAppRoot& root = seed.root();
  const std::string reason = fmt::format("delete with deletedRepeatTransaction on {}",
                                         stringOfDatetime(root.calendar(), root.now()));
  return changeRecords(
      root, {.eid = seed.eid, .group = {}, .series = seed.eid}, [&](Connection& db) -> Result<int> {
        const auto stored = seedToEnd(seed);
        if (!stored) return tl::make_unexpected(stored.error());
        auto groups = groupsOfSeries(db, seed.eid);
        if (!groups) return tl::make_unexpected(groups.error());
        SeriesRows rows{.records = {}, .groups = std::move(*groups), .uses = EntryUpkeep(root)};
        auto done = readSeriesRows(root, db, kRowsOfSeries, seed.eid, rows);
        for (const auto& group : rows.groups) {
          if (done) done = readSeriesRows(root, db, kRowsOfGroup, group, rows);
        }
        if (done) done = removeSeriesRows(root, seed.eid, rows.groups, reason);
        if (done) done = rows.uses.write(EntryUpkeep::Balances::byAmount);
        if (!done) return tl::make_unexpected(done.error());
        return static_cast<int>(rows.records.size());
      });
}

Result<bool> hasDuplicateRepeatSeed(const MVTransaction& seed) {
  MVAppRoot& root = seed.root();
  const auto stored = SeriesSeed::of(root, seed.eid);
  if (!stored) return tl::make_unexpected(stored.error());
  if (stored->makesTransfers()) {
    const auto transfer = Transfer::transferFromSeed(root, seed.eid);
    return transfer && transfer->hasDuplicateRepeatSeed();
  }
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  Run run = db->query(
      "select 1 from transactions as one join transactions as other on other.type = one.type and"
      " other.eid != one.eid and other.deleted = 0 and other.syear = one.syear and other.bid = one.bid and"
      " other.amount = one.amount and other.repeat = one.repeat and ifnull(other.account, '') ="
      " ifnull(one.account, '') and ifnull(other.book, '') = ifnull(one.book, '') and"
      " ifnull(other.category, '') = ifnull(one.category, '') and ifnull(other.subcategory, '') ="
      " ifnull(one.subcategory, '') and ifnull(other.vendor, '') = ifnull(one.vendor, '') and"
      " ifnull(other.note, '') = ifnull(one.note, '') and ifnull(nullif(other.repeat_end_date, ''), 0) ="
      " ifnull(nullif(one.repeat_end_date, ''), 0) where one.eid = ? limit 1",
      {seed.eid});
  const bool found = run.next();
  if (!run.ok()) return tl::make_unexpected(db->refusal());
  return found;
}

}  // namespace moniva
