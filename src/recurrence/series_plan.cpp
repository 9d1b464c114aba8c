#include "recurrence/series_plan.h"

#include <algorithm>
#include <array>
#include <set>
#include <span>

#include "calendar/date_texts.h"
#include "model/entry_checks.h"
#include "model/transaction_type.h"
#include "recurrence/spend_repeat.h"

namespace moniva {
namespace {

/// More rows than these with one date and one edit are a mass of copies.
constexpr int kCopiesKept = 10;

/// Numbers of reasons, by which one can tell what removed a record.
constexpr int kLiveOfDay = 580;
constexpr int kDeletedOfDay = 663;
constexpr int kItemInSweep = 306;
constexpr int kPaymentInSweep = 327;

int reasonOfDay(int first, const SeriesRecord& record) {
  switch (rowsOf(record)) {
    case RowsOf::payment:
      return first;
    case RowsOf::pair:
      return first + 1;
    case RowsOf::group:
      return first + 2;
    case RowsOf::row:
      break;
  }
  return first + 3;
}

int reasonInSweep(const SeriesRecord& record) {
  const int first = record.isItem ? kItemInSweep : kPaymentInSweep;
  switch (rowsOf(record)) {
    case RowsOf::pair:
      return first;
    case RowsOf::group:
      return first + 1;
    case RowsOf::row:
    case RowsOf::payment:
      break;
  }
  return first + 2;
}

/// Whether the record was made for another day than the one it is on, so that a person dated it anew. Records
/// that came from the series this one was divided from tell the day they had there.
bool isDatedAnew(const SeriesRecord& record) {
  const auto made = dayToldBy(record.eid);
  return made && record.day && *made != *record.day;
}

/// Whether this series made the record for another day than the one it is on.
bool isOfAnotherDay(std::string_view seed, const SeriesRecord& record) {
  return isDatedAnew(record) && dayMadeFor(seed, record.eid);
}

using Slot = std::span<const SeriesRecord* const>;

/// The records that know their day, those of a day and sort together, each slot in the order in which they
/// would stay: live ones first, then those a person deleted, then removed ones, and the newest edit first.
std::vector<const SeriesRecord*> ordered(const SeriesKind& kind, const SeriesRecords& records) {
  std::vector<const SeriesRecord*> order;
  order.reserve(records.occurrences.size());
  for (const auto& one : records.occurrences) {
    if (!one.day || (!one.isItem && kind.type != 0 && one.type != kind.type)) continue;
    order.push_back(&one);
  }
  std::ranges::sort(order, [](const SeriesRecord* a, const SeriesRecord* b) {
    if (a->sort() != b->sort()) return a->sort() < b->sort();
    if (*a->day != *b->day) return *a->day < *b->day;
    if (a->deleted != b->deleted) return a->deleted < b->deleted;
    if (a->edited != b->edited) return a->edited > b->edited;
    return a->eid < b->eid;
  });
  return order;
}

template <class Take>
void forEachSlot(const std::vector<const SeriesRecord*>& order, Take take) {
  for (auto first = order.begin(); first != order.end();) {
    const auto last = std::find_if(first, order.end(), [&](const SeriesRecord* one) {
      return one->sort() != (*first)->sort() || *one->day != *(*first)->day;
    });
    take(Slot(first, last));
    first = last;
  }
}

/// Those of the slot with a `deleted` in that range that were made for the day.
std::vector<const SeriesRecord*> ofTheDay(Slot slot, int fromDeleted, int toDeleted) {
  std::vector<const SeriesRecord*> found;
  for (const auto* one : slot) {
    if (one->deleted >= fromDeleted && one->deleted <= toDeleted) found.push_back(one);
  }
  if (found.size() > 1) std::erase_if(found, [](const auto* one) { return isDatedAnew(*one); });
  return found;
}

/// Removes all but the first.
template <class Reason>
void removeSurplus(RepairPlan& plan, const std::vector<const SeriesRecord*>& records, int fromDeleted,
                   int toDeleted, Reason reason) {
  for (std::size_t place = 1; place < records.size(); ++place) {
    RepairAction action;
    action.record = *records[place];
    action.reason = reason(action.record);
    action.keptAmount = records.front()->amount;
    action.fromDeleted = fromDeleted;
    action.toDeleted = toDeleted;
    plan.push_back(std::move(action));
  }
}

bool isPresentIn(Slot slot) {
  return slot.front()->isPresent();
}

/// The newest record of the slot that a repair removed and that belongs to the day; null when there is none.
/// What stayed for the day then and went in another way since, as with its account, went for good.
const SeriesRecord* newestRemoved(std::string_view seed, Slot slot) {
  const auto found = std::ranges::find_if(slot, [&](const SeriesRecord* one) {
    return one->byRepair && !one->isPresent() && !isOfAnotherDay(seed, *one);
  });
  if (found == slot.end()) return nullptr;
  const bool isOver = std::ranges::any_of(slot, [&](const SeriesRecord* one) {
    return !one->isPresent() && !one->byRepair && one->edited >= (*found)->edited;
  });
  return isOver ? nullptr : *found;
}

RepairAction revivalOf(const SeriesRecord& record) {
  RepairAction action;
  action.what = RepairAction::What::revive;
  action.record = record;
  return action;
}

/// Half of the days between two records of the rule, as far as it is less than any two are apart.
std::int64_t halfARound(const std::optional<RepeatRule>& rule) {
  constexpr std::array<std::int64_t, kRepeatRules.size()> kFewestDays = {1, 7, 14, 28, 59, 90, 181, 365};
  return rule ? (kFewestDays[static_cast<std::size_t>(*rule)] - 1) / 2 : 0;
}

}  // namespace

RowsOf rowsOf(const SeriesRecord& record) {
  if (record.isTransfer()) return record.other.empty() ? RowsOf::group : RowsOf::pair;
  if (!record.isItem) return RowsOf::payment;
  return record.group.empty() ? RowsOf::row : RowsOf::group;
}

RepairPlan planOfDay(std::string_view seed, const SeriesKind& kind, std::int64_t day,
                     const SeriesRecords& records) {
  RepairPlan plan;
  forEachSlot(ordered(kind, records), [&](Slot slot) {
    // After a journey records of two days may be dated on one.
    if (*slot.front()->day != day) return;
    const int state = slot.front()->deleted;
    if (!isPresentIn(slot)) {
      if (const auto* back = newestRemoved(seed, slot)) plan.push_back(revivalOf(*back));
      return;
    }
    const int first = state == 0 ? kLiveOfDay : kDeletedOfDay;
    removeSurplus(plan, ofTheDay(slot, state, state), state, state,
                  [&](const SeriesRecord& record) { return reasonOfDay(first, record); });
  });
  return plan;
}

RepairPlan planOfSweep(const SeriesKind& kind, const SeriesRecords& records) {
  RepairPlan plan;
  forEachSlot(ordered(kind, records), [&](Slot slot) {
    if (slot.size() < 2 || !slot[1]->isPresent()) return;
    removeSurplus(plan, ofTheDay(slot, 0, 1), 0, 1, reasonInSweep);
  });
  return plan;
}

bool isServed(std::string_view seed, const SeriesRecords& records, std::int64_t day) {
  return std::ranges::any_of(records.occurrences, [&](const SeriesRecord& one) {
    return one.isPresent() && dayMadeFor(seed, one.eid) == day;
  });
}

RepairPlan planOfRevival(std::string_view seed, const SeriesKind& kind, const SeriesRecords& records) {
  std::vector<const SeriesRecord*> candidates;
  std::set<std::pair<int, std::int64_t>> present;
  const auto order = ordered(kind, records);
  forEachSlot(order, [&](Slot slot) {
    if (isPresentIn(slot)) return;
    if (const auto* back = newestRemoved(seed, slot)) candidates.push_back(back);
  });
  if (candidates.empty()) return {};
  for (const auto* one : order) {
    if (one->isPresent()) present.emplace(one->sort(), *one->day);
  }
  std::set<std::int64_t> served;
  for (const auto& one : records.occurrences) {
    if (!one.isPresent()) continue;
    if (const auto made = dayMadeFor(seed, one.eid)) served.insert(*made);
  }
  RepairPlan plan;
  const auto half = halfARound(kind.rule);
  for (const auto* back : candidates) {
    const auto near = present.lower_bound({back->sort(), *back->day - half});
    if (near != present.end() && near->first == back->sort() && near->second <= *back->day + half) continue;
    if (served.contains(*back->day)) continue;
    present.emplace(back->sort(), *back->day);
    plan.push_back(revivalOf(*back));
  }
  return plan;
}

RepairPlan planOfPurge(const SeriesRecords& records, const RepairPlan& revival) {
  RepairPlan plan;
  for (const auto& copies : records.copies) {
    RepairAction action;
    action.what = RepairAction::What::purge;
    action.copies = copies;
    for (const auto& back : revival) {
      const bool isOfThem = back.record.datetime == copies.datetime && back.record.edited == copies.edited;
      if (isOfThem) action.copies.rows -= back.record.rows;
    }
    if (action.copies.rows > kCopiesKept) plan.push_back(std::move(action));
  }
  return plan;
}

SeriesFindings findingsOf(const Calendar& calendar, std::string_view seed, const RepairPlan& plan) {
  const auto dayText = [&](std::int64_t day) {
    return stringOfDateMediumStyle(calendar, calendar.beginOfDay(day));
  };
  /// Days on which the same was found.
  struct Days {
    int records = 0;
    std::int64_t first = 0;
    std::int64_t last = 0;
    void note(std::int64_t day) {
      first = records == 0 ? day : std::min(first, day);
      last = records == 0 ? day : std::max(last, day);
      ++records;
    }
  };
  SeriesFindings findings;
  const auto tell = [&](Phrase what, int records) {
    findings.push_back({std::string(seed), std::move(what), records});
  };
  Days surplus;
  Days back;
  int copies = 0;
  for (const auto& action : plan) {
    if (action.what == RepairAction::What::purge) {
      copies += action.copies.rows;
    } else if (action.what == RepairAction::What::revive) {
      back.note(*action.record.day);
    } else if (difference(action.record.amount, action.keptAmount) == 0) {
      surplus.note(*action.record.day);
    } else {
      tell(phrase("{} has more than one record: the one of {} is surplus, that of {} was edited last",
                  dayText(*action.record.day), action.record.amount, action.keptAmount),
           1);
    }
  }
  if (surplus.records > 0) {
    tell(surplus.first == surplus.last
             ? phrase("{} has more than one record: the one edited last stays", dayText(surplus.first))
             : phrase("days from {} to {} have more than one record: the one edited last stays",
                      dayText(surplus.first), dayText(surplus.last)),
         surplus.records);
  }
  if (back.records > 0) {
    tell(back.first == back.last
             ? phrase("{} has no record: one that a repair removed comes back", dayText(back.first))
             : phrase("days from {} to {} have no record: those that a repair removed come back",
                      dayText(back.first), dayText(back.last)),
         back.records);
  }
  if (copies > 0) tell(phrase("copies of removed records, which leave the file"), copies);
  return findings;
}

}  // namespace moniva
