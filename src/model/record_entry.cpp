#include "model/record_entry.h"

#include <set>

#include "model/account_balance.h"
#include "model/entry_checks.h"
#include "model/mv_category.h"
#include "model/vendor.h"
#include "storage/writes.h"

namespace moniva {
namespace {

template <class Entry>
Result<> record(MVAppRoot& root, Entry& entry) {
  return atomically(root, [&](Connection&) -> Result<> {
    if (auto added = entry.add(); !added) return added;
    EntryUpkeep upkeep(root);
    upkeep.note(entry);
    return upkeep.write(EntryUpkeep::Balances::byAmount);
  });
}

}  // namespace

void EntryUpkeep::note(const Spend& spend) {
  if (!spend.category.empty()) ++categoryUses_[{spend.category, spend.book}];
  if (!spend.subcategory.empty() && spend.subcategory != spend.category) {
    ++categoryUses_[{spend.subcategory, spend.book}];
  }
  if (!spend.vendor.empty()) vendors_[spend.vendor] = spend.type;
  noteChange(spend.book, spend.type, spend.amount, spend.paid);
  noteChange(spend.account, spend.type, spend.amount, spend.paid);
}

void EntryUpkeep::note(const Transfer& transfer) {
  noteChange(transfer.accountA, kind::kTransferOut, transfer.amountA, transfer.paid);
  noteChange(transfer.accountB, kind::kTransferIn, transfer.amountB, transfer.paid);
}

Result<> EntryUpkeep::note(const RecordScope& scope, int sign) {
  Connection* db = root_->db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  const auto noteAll = [&](std::string_view which, std::initializer_list<Value> values) -> Result<> {
    Run run = db->query(
        fmt::format("select account, book, type, amount, paid from transactions where deleted = 0 and {}",
                    which),
        values);
    while (run.next()) {
      const auto type = static_cast<int>(run.integer(2));
      const bool counts = run.integer(4) != 0 || type == kind::kBalanceCorrection;
      for (const int holder : {0, 1}) {
        noteChange(std::string(run.text(holder)), type, sign * run.real(3), counts);
      }
    }
    if (!run.ok()) return tl::make_unexpected(db->refusal());
    return {};
  };
  // Each by its own index, and no row twice.
  Result<> noted = noteAll("eid = ?", {scope.eid});
  if (noted && !scope.group.empty()) {
    noted = noteAll("transferEID = ? and eid != ?", {scope.group, scope.eid});
  }
  if (noted && !scope.series.empty()) {
    noted = noteAll("repeat_seed = ? and eid != ? and (transferEID != ? or transferEID = '')",
                    {scope.series, scope.eid, scope.group});
  }
  return noted;
}

void EntryUpkeep::noteChange(const std::string& account, int transactionType, double amount, bool paid) {
  if (paid && !account.empty()) changes_[{account, transactionType}] += amount;
}

Result<> EntryUpkeep::write(Balances balances) {
  // The current book keeps its balance in memory too, where no transaction takes it back.
  const auto& current = root_->monivaAccount;
  const double before = current ? current->totalBalance : 0;
  auto written = writeAll(balances);
  if (!written && current) current->totalBalance = before;
  return written;
}

Result<> EntryUpkeep::writeAll(Balances balances) {
  for (const auto& [keys, uses] : categoryUses_) {
    auto category = MVCategory::getCategory(*root_, keys.first);
    const auto book = MonivaAccount::getAccountWithPK(*root_, keys.second);
    if (category && !category->updateUsingCount(book.value_or(MonivaAccount(*root_)), uses))
      return refusalOfStore(*root_);
  }
  for (const auto& [key, type] : vendors_) {
    auto vendor = Vendor::getVendor(*root_, key, type);
    if (vendor && !vendor->updateUsingCount(type)) return refusalOfStore(*root_);
  }
  std::set<std::string> keys;
  for (const auto& [key, change] : changes_) keys.insert(key.first);
  if (balances == Balances::afresh) return countTheTotalBalances(*root_, keys);
  for (const auto& [key, change] : changes_) {
    if (withoutNoise(change) == 0) continue;
    auto account = MonivaAccount::getAccountWithPK(*root_, key.first);
    if (!account) continue;
    if (auto added = addToTotalBalance(*account, key.second, change); !added) return added;
  }
  return {};
}

Result<> recordEntry(MVAppRoot& root, Spend& spend) {
  return record(root, spend);
}

Result<> recordEntry(MVAppRoot& root, Transfer& transfer) {
  return record(root, transfer);
}

void entriesChanged(MVAppRoot& root) {
  root.markRecentEditDate();
  root.platform().notifications.post(notification::kExpenseChanged);
}

}  // namespace moniva
