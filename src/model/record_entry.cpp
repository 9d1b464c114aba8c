#include "model/record_entry.h"

#include <set>

#include "model/account_balance.h"
#include "model/mv_category.h"
#include "model/vendor.h"
#include "storage/writes.h"

namespace moniva {
namespace {

template <class Entry>
Result<> record(MVAppRoot& root, Entry& entry) {
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  Transaction transaction(*db);
  if (!transaction.began()) return tl::make_unexpected(db->refusal());
  if (auto added = entry.add(); !added) return added;
  EntryUpkeep upkeep(root);
  upkeep.note(entry);
  if (auto written = upkeep.write(EntryUpkeep::Balances::byAmount); !written) return written;
  if (!transaction.commit()) return tl::make_unexpected(db->refusal());
  return {};
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
