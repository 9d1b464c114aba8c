#include <algorithm>

#include "app/do_db_updater.h"
#include "app/upgrade_support.h"
#include "model/account_balance.h"
#include "model/transaction_type.h"

namespace moniva {
namespace {

struct HolderRow {
  std::int64_t eid = 0;
  std::string key;
  std::string title;
  std::string type;
  std::string currency;
  int kind = 0;
  bool isGroup = false;
  bool isLive = false;
  double opening = 0;

  bool isAlike(const HolderRow& other) const { return kind == other.kind && isGroup == other.isGroup; }
};

/// Of rows alike the one that stays comes first: in use, then edited last. Accounts come before books, which
/// fewer columns name. Where rows are to get keys (`byWhatTheyAre`) the time of an edit, which may differ
/// from device to device, decides among doubles alone.
Result<std::vector<HolderRow>> holderRows(MVAppRoot& root, bool byWhatTheyAre = false) {
  return loaded(
      root,
      fmt::format("select eid, oldTitle, title, type, currency, kind, isGroup, deleted, beginBalance from"
                  " account order by kind, isGroup, coalesce(deleted, 0) != 0,{} typeof(editDate) = 'text',"
                  " editDate DESC, eid",
                  byWhatTheyAre ? " ifnull(oldTitle, '') = '', type, currency," : ""),
      {}, [](const Run& run) {
        return HolderRow{run.integer(0),           std::string(run.text(1)), std::string(run.text(2)),
                         std::string(run.text(3)), std::string(run.text(4)), static_cast<int>(run.integer(5)),
                         run.integer(6) != 0,      run.integer(7) == 0,      run.real(8)};
      });
}

/// The key that the row is to have: its title where no row has it, else one that follows from what it is.
std::string keyFor(const HolderRow& row, const std::vector<HolderRow>& rows) {
  const auto isFree = [&](const std::string& key) {
    return !key.empty() && std::ranges::find(rows, key, &HolderRow::key) == rows.end();
  };
  if (isFree(row.title)) return row.title;
  const std::string kind = fmt::format("{} {}", row.kind, row.isGroup ? "group" : "row");
  for (const std::string& key : {derivedKey({"account", kind, row.title}),
                                 derivedKey({"account", kind, row.title, row.type, row.currency})}) {
    if (!row.title.empty() && isFree(key)) return key;
  }
  for (int number = 1;; ++number) {
    const std::string key = derivedKey({"account", kind, row.title, row.type, row.currency,
                                        std::to_string(row.eid), std::to_string(number)});
    if (isFree(key)) return key;
  }
}

Result<> writeKey(MVAppRoot& root, const HolderRow& row) {
  return write(root, "update account set oldTitle = ?, editDate = ?, edit_ipid = ? where eid = ?", row.key,
               root.editStamp(), root.itsUDID(), row.eid);
}

/// What is in use of the two: also the opening balance where the row that stays has none.
Result<> takeOpening(MVAppRoot& root, HolderRow& stays, const HolderRow& goes) {
  if (!goes.isLive || stays.opening != 0 || goes.opening == 0) return {};
  stays.opening = goes.opening;
  return write(root, "update account set beginBalance = ?, editDate = ?, edit_ipid = ? where eid = ?",
               stays.opening, root.editStamp(), root.itsUDID(), stays.eid);
}

}  // namespace

Result<> giveAccountKeys(MVAppRoot& root, std::vector<std::int64_t>& doubles,
                         std::set<std::string>& touched) {
  auto rows = holderRows(root, true);
  if (!rows) return tl::make_unexpected(rows.error());
  for (auto& row : *rows) {
    if (!row.key.empty()) continue;
    const auto same = std::ranges::find_if(*rows, [&](const HolderRow& other) {
      return !other.key.empty() && other.isAlike(row) && !row.title.empty() && other.title == row.title &&
             other.type == row.type && other.currency == row.currency && (other.isLive || !row.isLive);
    });
    const bool isDouble = same != rows->end();
    if (isDouble) {
      doubles.push_back(row.eid);
      if (auto done = takeOpening(root, *same, row); !done) return done;
    }
    // Records that name the title are another's where that is another's key.
    const bool isNamedByTitle =
        !row.title.empty() && std::ranges::none_of(*rows, [&](const HolderRow& other) {
          return other.isAlike(row) && other.key == row.title;
        });
    row.key = isDouble ? same->key : keyFor(row, *rows);
    if (auto done = writeKey(root, row); !done) return done;
    if (isNamedByTitle && row.key != row.title) {
      if (auto done = repointHolder(root, row.kind, row.isGroup, row.title, row.key); !done) return done;
    }
    touched.insert(row.key);
  }
  return {};
}

Result<> clearDuplicateAccountWithSamePK(MVAppRoot& root) {
  return atomically(root, [&](Connection&) -> Result<> {
    auto rows = holderRows(root);
    if (!rows) return tl::make_unexpected(rows.error());
    std::set<std::string> touched;
    for (auto row = rows->begin(); row != rows->end(); ++row) {
      if (row->key.empty()) continue;
      const auto first = std::ranges::find(rows->begin(), row, row->key, &HolderRow::key);
      if (first == row) continue;
      touched.insert(row->key);
      const auto stays = std::find_if(rows->begin(), row, [&](const HolderRow& other) {
        return other.key == row->key && other.isAlike(*row);
      });
      if (stays != row) {
        if (auto done = takeOpening(root, *stays, *row); !done) return done;
        if (auto done = removeAccountRow(root, row->eid); !done) return done;
        continue;
      }
      // A book and an account are never the same, and records tell them apart.
      const std::string shared = row->key;
      row->key =
          derivedKey({"account", fmt::format("{} {}", row->kind, row->isGroup ? "group" : "row"), shared});
      for (auto& other : *rows) {
        if (&other == &*row || other.key != shared || !other.isAlike(*row)) continue;
        other.key = row->key;
        if (auto done = writeKey(root, other); !done) return done;
      }
      if (auto done = writeKey(root, *row); !done) return done;
      if (auto done = repointHolder(root, row->kind, row->isGroup, shared, row->key); !done) return done;
      touched.insert(row->key);
    }
    return countTheTotalBalances(root, touched);
  });
}

}  // namespace moniva
