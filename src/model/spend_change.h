#pragma once

#include <utility>

#include "model/record_entry.h"
#include "model/spend.h"

// How the editor's changes begin; for its own sources.
namespace moniva {

/// Refused: a record that is deleted, and one that is not there.
inline Result<TransactionItem> liveRow(MVAppRoot& root, std::string_view eid) {
  auto row = TransactionItem::fromEID(root, eid);
  if (!row || row->isDeleted > 1) return refuse("there is no record '{}'", eid);
  if (row->isDeleted == 1) return refuse("the record is deleted; restore it first");
  return std::move(*row);
}

/// What the object says of its row and place becomes what the store says: another object, or another program,
/// may have changed it since.
inline void refresh(Spend& spend, const TransactionItem& row) {
  spend.type = row.type;
  spend.bid = row.bid;
  spend.advancedType = row.advancedType;
  spend.connectionUUID = row.connectionUUID;
  spend.amount = row.amount;
  spend.account = row.account;
  spend.book = row.book;
  spend.category = row.category;
  spend.subcategory = row.subcategory;
  spend.vendor = row.vendor;
  spend.paid = row.paid;
}

/// The kind of what a seed makes or stands for; else the record's own.
inline int kindInGroup(const Spend& spend, const TransactionGroup& group) {
  if (spend.type == kind::kRepeatSeed) return spend.advancedType;
  if (spend.type == kind::kInstallmentSeed && !group.items.empty()) return group.items.front().type;
  return spend.type;
}

/// Runs a change of a live record, with the object as the store has it, and marks it edited. The work takes
/// the row.
template <class Work>
Result<> changeSpend(Spend& spend, Work&& work) {
  MVAppRoot& root = spend.root();
  return atomically(root, [&](Connection&) -> Result<> {
    const auto row = liveRow(root, spend.eid);
    if (!row) return tl::make_unexpected(row.error());
    refresh(spend, *row);
    const RecordScope scope{spend.eid, row->connectionUUID,
                            row->type == kind::kRepeatSeed ? spend.eid : std::string()};
    auto changed = changeRecords(root, scope, [&](Connection&) { return work(*row); });
    if (changed) spend.edited = true;
    return changed;
  });
}

}  // namespace moniva
