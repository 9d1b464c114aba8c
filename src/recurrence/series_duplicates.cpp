#include "recurrence/series_duplicates.h"

#include <set>
#include <vector>

#include "calendar/date_texts.h"
#include "model/record_entry.h"
#include "recurrence/spend_repeat.h"

namespace moniva {
namespace {

/// One record that a series made: its row, and its group where it is of several rows.
struct Occurrence {
  std::string eid;
  std::string group;
};

/// The days, by their keys, for which the series has more than one row. The query names the row of each that
/// was edited first; the columns beside min() are those of its row.
Result<std::vector<int>> crowdedDays(Connection& db, std::string_view seed) {
  std::vector<int> days;
  Run run = db.query(
      "select eid,transferEID, sday from transactions where repeat_seed = ? and deleted != 3 group by sday,"
      " repeat_seed having count(repeat_seed) > 1 and min(editDate)",
      {seed});
  while (run.next()) {
    // Without a key there is no telling which day a record is of.
    if (const int day = static_cast<int>(run.integer(2)); day != 0) days.push_back(day);
  }
  if (!run.ok()) return tl::make_unexpected(db.refusal());
  return days;
}

/// The day's records besides the one edited last, which stays.
Result<std::vector<Occurrence>> surplusOf(const Calendar& calendar, Connection& db, std::string_view seed,
                                          int day) {
  std::vector<Occurrence> surplus;
  std::set<std::string> seen;
  Run run = db.query(
      "select eid, ifnull(transferEID, '') from transactions where repeat_seed = ? and sday = ? and"
      " deleted < 2 order by deleted, editDate desc, eid",
      {seed, day});
  while (run.next()) {
    Occurrence one{std::string(run.text(0)), std::string(run.text(1))};
    // One that a person dated anew was made for another day.
    const auto made = dayToldBy(one.eid);
    if (made && integerDateOfTimeZone(calendar, calendar.beginOfDay(*made)) != day) continue;
    const bool isNew = seen.insert(one.group.empty() ? one.eid : one.group).second;
    if (isNew && seen.size() > 1) surplus.push_back(std::move(one));
  }
  if (!run.ok()) return tl::make_unexpected(db.refusal());
  return surplus;
}

Result<> removeOccurrence(MVAppRoot& root, const Occurrence& one) {
  return changeRecords(root, {.eid = one.eid, .group = one.group, .series = {}}, [&](Connection&) {
    if (one.group.empty()) {
      return write(root,
                   "update transactions set deleted = 3, ipid = 'delete with clearDuplicateRecurringItemFor"
                   " 758', editDate = ?, edit_ipid = ? where eid=?",
                   root.editStamp(), root.itsUDID(), one.eid);
    }
    // What was removed for another reason before keeps it.
    return write(root,
                 "update transactions set deleted = 3, ipid = 'delete with clearDuplicateRecurringItem 772',"
                 " editDate = ?, edit_ipid = ? where (eid=? or transferEID = ?) and deleted != 3",
                 root.editStamp(), root.itsUDID(), one.eid, one.group);
  });
}

}  // namespace

Result<int> clearDuplicateRecurringItemFor(MVAppRoot& root, std::string_view seed) {
  if (seed.empty()) return 0;
  return changeRecords(root, {.eid = {}, .group = {}, .series = std::string(seed)},
                       [&](Connection& db) -> Result<int> {
                         const auto days = crowdedDays(db, seed);
                         if (!days) return tl::make_unexpected(days.error());
                         int removed = 0;
                         for (const int day : *days) {
                           const auto surplus = surplusOf(root.calendar(), db, seed, day);
                           if (!surplus) return tl::make_unexpected(surplus.error());
                           for (const auto& one : *surplus) {
                             if (auto gone = removeOccurrence(root, one); !gone) {
                               return tl::make_unexpected(gone.error());
                             }
                             ++removed;
                           }
                         }
                         return removed;
                       });
}

}  // namespace moniva
