#include "recurrence/series_repair.h"

#include <algorithm>
#include <iterator>

#include "model/record_entry.h"
#include "recurrence/seed_check.h"
#include "recurrence/series_plan.h"
#include "recurrence/series_records.h"
#include "storage/transaction.h"

namespace moniva {
namespace {

Result<> removeRows(MVAppRoot& root, const RepairAction& action) {
  const SeriesRecord& record = action.record;
  const std::string reason = fmt::format("delete by fixDuplicateRecurringItem {}", action.reason);
  const Date stamp = root.editStamp();
  const auto& device = root.itsUDID();
  switch (rowsOf(record)) {
    case RowsOf::payment:
      return write(root,
                   "update transactions set deleted = 3, ipid = ?, editDate = ?, edit_ipid = ? where type = ?"
                   " and eid = ? and deleted >= ? and deleted <= ?",
                   reason, stamp, device, record.type, record.eid, action.fromDeleted, action.toDeleted);
    case RowsOf::pair:
      return write(root,
                   "update transactions set deleted = 3, ipid = ?, editDate = ?, edit_ipid = ? where (eid = ?"
                   " or eid = ?) and deleted >= ? and deleted <= ?",
                   reason, stamp, device, record.eid, record.other, action.fromDeleted, action.toDeleted);
    case RowsOf::group:
      return write(root,
                   "update transactions set deleted = 3, ipid = ?, editDate = ?, edit_ipid = ? where"
                   " transferEID = ? and deleted >= ? and deleted <= ?",
                   reason, stamp, device, record.group, action.fromDeleted, action.toDeleted);
    case RowsOf::row:
      break;
  }
  return write(root,
               "update transactions set deleted = 3, ipid = ?, editDate = ?, edit_ipid = ? where eid = ? and"
               " deleted >= ? and deleted <= ?",
               reason, stamp, device, record.eid, action.fromDeleted, action.toDeleted);
}

Result<> reviveRows(MVAppRoot& root, const SeriesRecord& record) {
  const Date stamp = root.editStamp();
  const auto& device = root.itsUDID();
  switch (rowsOf(record)) {
    case RowsOf::payment:
      return write(
          root,
          "update transactions set deleted = 0, ipid = '', editDate = ?, edit_ipid = ? where type = ?"
          " and eid = ?",
          stamp, device, record.type, record.eid);
    case RowsOf::pair:
    case RowsOf::group:
      // What was removed of the group for other reasons stays so.
      return write(root,
                   "update transactions set deleted = 0, ipid = '', editDate = ?, edit_ipid = ? where"
                   " transferEID = ? and deleted = 3 and ipid like '%delete by fixDuplicateRecurringItem%'",
                   stamp, device, record.group);
    case RowsOf::row:
      break;
  }
  return write(root,
               "update transactions set deleted = 0, ipid = '', editDate = ?, edit_ipid = ? where eid = ?",
               stamp, device, record.eid);
}

Result<> carryOut(MVAppRoot& root, std::string_view seed, const RepairAction& action) {
  if (action.what == RepairAction::What::purge) {
    return write(
        root,
        "delete from transactions where datetime = ? and editDate = ? and repeat_seed = ? and deleted != 0",
        action.copies.datetime, action.copies.edited, seed);
  }
  const RecordScope scope{action.record.eid, action.record.group, {}};
  return changeRecords(root, scope, [&](Connection&) {
    return action.what == RepairAction::What::remove ? removeRows(root, action)
                                                     : reviveRows(root, action.record);
  });
}

/// Carries out what `plan` answers, which is asked again once nobody else can write; without anything to do
/// nothing is written at all.
template <class Plan>
Result<RepairPlan> carriedOut(MVAppRoot& root, std::string_view seed, Repair repair, Plan plan) {
  Result<RepairPlan> first = plan();
  if (!first || first->empty() || repair == Repair::lookOnly) return first;
  return changeRecords(root, {.eid = {}, .group = {}, .series = std::string(seed)},
                       [&](Connection&) -> Result<RepairPlan> {
                         Result<RepairPlan> actions = plan();
                         if (!actions) return actions;
                         for (const auto& action : *actions) {
                           if (auto done = carryOut(root, seed, action); !done)
                             return tl::make_unexpected(done.error());
                         }
                         return actions;
                       });
}

void addTo(RepairPlan& plan, RepairPlan more) {
  std::move(more.begin(), more.end(), std::back_inserter(plan));
}

RepairPlan planOfAll(std::string_view seed, const SeriesKind& kind, const SeriesRecords& records) {
  RepairPlan plan = planOfSweep(kind, records);
  auto revival = planOfRevival(seed, kind, records);
  auto purge = planOfPurge(records, revival);
  addTo(plan, std::move(revival));
  addTo(plan, std::move(purge));
  return plan;
}

bool purges(const RepairPlan& plan) {
  return std::ranges::any_of(plan,
                             [](const auto& action) { return action.what == RepairAction::What::purge; });
}

/// Gives the room of what left the file back. That the file stays as large is no fault.
void compact(MVAppRoot& root) {
  Connection* db = root.db().getDatabase();
  if (db != nullptr && !db->inTransaction()) (void)db->execute("vacuum");
}

}  // namespace

Result<SeriesFindings> fixRecurrenItemFor(MVAppRoot& root, std::string_view seed, Date day, Repair repair) {
  if (seed.empty()) return SeriesFindings{};
  const auto number = root.calendar().dayNumber(day);
  const auto plan = carriedOut(root, seed, repair, [&]() -> Result<RepairPlan> {
    const auto kind = kindOfSeries(root, seed);
    if (!kind) return tl::make_unexpected(kind.error());
    const auto records = recordsOfSeries(root, seed, day);
    if (!records) return tl::make_unexpected(records.error());
    auto actions = planOfDay(seed, *kind, number, *records);
    const auto isRevival = [](const auto& action) { return action.what == RepairAction::What::revive; };
    if (std::ranges::none_of(actions, isRevival)) return actions;
    const auto all = recordsOfSeries(root, seed);
    if (!all) return tl::make_unexpected(all.error());
    if (isServed(seed, *all, number)) std::erase_if(actions, isRevival);
    return actions;
  });
  if (!plan) return tl::make_unexpected(plan.error());
  return findingsOf(root.calendar(), seed, *plan);
}

Result<SeriesFindings> recurringTransactionsHistory(MVAppRoot& root, std::string_view seed, Repair repair) {
  if (seed.empty()) return SeriesFindings{};
  const auto plan = carriedOut(root, seed, repair, [&]() -> Result<RepairPlan> {
    const auto kind = kindOfSeries(root, seed);
    if (!kind) return tl::make_unexpected(kind.error());
    const auto records = recordsOfSeries(root, seed);
    if (!records) return tl::make_unexpected(records.error());
    auto actions = planOfSweep(*kind, *records);
    addTo(actions, planOfPurge(*records, {}));
    return actions;
  });
  if (!plan) return tl::make_unexpected(plan.error());
  if (repair == Repair::mend && purges(*plan)) compact(root);
  return findingsOf(root.calendar(), seed, *plan);
}

Result<SeriesFindings> fixAllRecurringItemForAllRepeatSeed(MVAppRoot& root, Repair repair) {
  const auto seeds = loadSeeds(root);
  if (!seeds) return tl::make_unexpected(seeds.error());
  SeriesSights sights;
  auto seen = recordsOfAllSeries(root, [&](const std::string& seed, const SeriesRecords& records) {
    sights.emplace(seed, sightOf(root.calendar(), *seeds, seed, records));
  });
  if (!seen) return tl::make_unexpected(seen.error());
  return checkSeeds(root, *seeds, sights, repair);
}

Result<SeriesFindings> repairAllSeries(MVAppRoot& root, Repair repair) {
  const auto seeds = loadSeeds(root);
  if (!seeds) return tl::make_unexpected(seeds.error());
  SeriesSights sights;
  SeriesFindings ofDays;
  std::vector<const SeedRow*> damaged;
  auto seen = recordsOfAllSeries(root, [&](const std::string& eid, const SeriesRecords& records) {
    sights.emplace(eid, sightOf(root.calendar(), *seeds, eid, records));
    const auto seed = seeds->find(eid);
    // Those of a series that is gone, or does not exist, are not for the sweep.
    if (seed == seeds->end() || seed->second.deleted > 1) return;
    const auto plan = planOfAll(eid, seed->second.kind, records);
    if (plan.empty()) return;
    damaged.push_back(&seed->second);
    std::ranges::move(findingsOf(root.calendar(), eid, plan), std::back_inserter(ofDays));
  });
  if (!seen) return tl::make_unexpected(seen.error());
  auto findings = checkSeeds(root, *seeds, sights, repair);
  if (!findings) return findings;
  if (repair == Repair::lookOnly) {
    std::ranges::move(ofDays, std::back_inserter(*findings));
    return findings;
  }
  bool purged = false;
  for (const auto* seed : damaged) {
    const auto plan = carriedOut(root, seed->eid, repair, [&]() -> Result<RepairPlan> {
      const auto records = recordsOfSeries(root, seed->eid);
      if (!records) return tl::make_unexpected(records.error());
      return planOfAll(seed->eid, seed->kind, *records);
    });
    if (!plan) return tl::make_unexpected(plan.error());
    purged = purged || purges(*plan);
    std::ranges::move(findingsOf(root.calendar(), seed->eid, *plan), std::back_inserter(*findings));
  }
  if (purged) compact(root);
  return findings;
}

}  // namespace moniva
