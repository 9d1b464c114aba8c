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
    if constexpr (std::is_same_v<Entry, Spend>) {
      if (!entry.addImages.empty()) {
        auto names = saveImages(root, entry.addImages, entry.eid);
        if (!names) return tl::make_unexpected(names.error());
        entry.images = std::move(*names);
      }
    }
    EntryUpkeep upkeep(root);
    upkeep.note(entry);
    return upkeep.write(EntryUpkeep::Balances::byAmount);
  });
}

}  // namespace

void EntryUpkeep::note(const Spend& spend) {
  noteUses(spend, 1);
  if (spend.paid) noteChange(spend.book, spend.type, spend.amount);
  if (spend.paid) noteChange(spend.account, spend.type, spend.amount);
}

void EntryUpkeep::noteUses(const Spend& spend, int times) {
  if (!spend.category.empty()) categoryUses_[{spend.category, spend.book, spend.type}] += times;
  if (!spend.subcategory.empty() && spend.subcategory != spend.category) {
    categoryUses_[{spend.subcategory, spend.book, spend.type}] += times;
  }
  if (spend.vendor.empty()) return;
  auto& use = vendors_[spend.vendor];
  use.type = spend.type;
  use.entered += times;
  use.anyLess = use.anyLess || times < 0;
}

void EntryUpkeep::note(const Payment& payment) {
  if (payment.paid) noteChange(payment.account, payment.type, payment.amount);
}

void EntryUpkeep::note(const Transfer& transfer) {
  if (transfer.paid) noteChange(transfer.accountA, kind::kTransferOut, transfer.amountA);
  if (transfer.paid) noteChange(transfer.accountB, kind::kTransferIn, transfer.amountB);
}

void EntryUpkeep::noteChange(const std::string& holder, int transactionType, double amount) {
  if (!holder.empty()) changes_[{holder, transactionType}] += amount;
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
    if (uses == 0) continue;
    const auto& [key, bookKey, type] = keys;
    auto category = MVCategory::getCategory(*root_, key, type);
    const auto book = MonivaAccount::getAccountWithPK(*root_, bookKey);
    if (category && !category->updateUsingCount(book.value_or(MonivaAccount(*root_)), uses))
      return refusalOfStore(*root_);
  }
  for (const auto& [key, use] : vendors_) {
    auto vendor = Vendor::getVendor(*root_, key, use.type);
    if (!vendor) continue;
    // A vendor of many records is not counted anew for each that comes; where some go or change, it is.
    const bool counted =
        use.anyLess ? vendor->updateUsingCount(use.type) : vendor->addToUsingCount(use.entered);
    if (!counted) return refusalOfStore(*root_);
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

namespace {
/// The outermost change under way on this thread.
thread_local RecordChange* underWay = nullptr;
}  // namespace

RecordChange::RecordChange(MVAppRoot& root)
    : root_(&root),
      former_(underWay),
      outer_(former_ != nullptr && former_->root_ == &root ? former_ : nullptr) {
  if (outer_ == nullptr) underWay = this;
}

RecordChange::~RecordChange() {
  if (underWay == this) underWay = former_;
}

Result<> RecordChange::read(MVAppRoot& root, const RecordScope& scope, Rows& rows) {
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  // Each by its own index. What is pending or deleted is in no balance.
  const std::pair<std::string_view, const std::string*> ways[] = {
      {"select eid, account, book, type, case when deleted = 0 and (paid = 1 or type = 50) then amount end "
       "from"
       " transactions where eid = ?",
       &scope.eid},
      {"select eid, account, book, type, case when deleted = 0 and (paid = 1 or type = 50) then amount end "
       "from"
       " transactions where transferEID = ?",
       &scope.group},
      {"select eid, account, book, type, case when deleted = 0 and (paid = 1 or type = 50) then amount end "
       "from"
       " transactions where repeat_seed = ?",
       &scope.series}};
  for (const auto& [sql, key] : ways) {
    if (key->empty()) continue;
    Run run = db->query(sql, {*key});
    while (run.next()) {
      rows.emplace(run.text(0), Row{std::string(run.text(1)), std::string(run.text(2)),
                                    static_cast<int>(run.integer(3)), run.real(4)});
    }
    if (!run.ok()) return tl::make_unexpected(db->refusal());
  }
  return {};
}

Result<> RecordChange::begin(const RecordScope& scope) {
  RecordChange& all = outer_ != nullptr ? *outer_ : *this;
  all.scopes_.push_back(scope);
  return read(*root_, scope, all.before_);
}

Result<> RecordChange::end() {
  if (outer_ != nullptr) return {};
  Rows after;
  for (const auto& scope : scopes_) {
    if (auto done = read(*root_, scope, after); !done) return done;
  }
  for (const auto& [eid, row] : before_) {
    if (after.contains(eid)) continue;
    if (auto done = read(*root_, RecordScope{eid, {}, {}}, after); !done) return done;
  }
  EntryUpkeep upkeep(*root_);
  for (const auto& [rows, sign] : {std::pair{&before_, -1}, std::pair{&after, 1}}) {
    for (const auto& [eid, row] : *rows) {
      upkeep.noteChange(row.account, row.type, sign * row.amount);
      upkeep.noteChange(row.book, row.type, sign * row.amount);
    }
  }
  return upkeep.write(EntryUpkeep::Balances::byAmount);
}

Result<> recordEntry(MVAppRoot& root, Spend& spend) {
  return record(root, spend);
}

Result<> recordEntry(MVAppRoot& root, Transfer& transfer) {
  return record(root, transfer);
}

Result<bool> leaveDeletedSeries(MVAppRoot& root, const std::string& eid, const std::string& group) {
  auto left =
      write(root,
            "update transactions set repeat_seed = '', editDate = ?, edit_ipid = ? where (eid = ? or"
            " (transferEID = ? and transferEID != '')) and deleted = 0 and repeat_seed != '' and not"
            " exists (select 1 from transactions as seed where seed.eid = transactions.repeat_seed and"
            " seed.type = 85 and seed.deleted < 2)",
            root.editStamp(), root.itsUDID(), eid, group);
  if (!left) return tl::make_unexpected(left.error());
  return root.db().getDatabase()->changes() > 0;
}

void entriesChanged(MVAppRoot& root) {
  root.markRecentEditDate();
  root.platform().notifications.post(notification::kExpenseChanged);
}

}  // namespace moniva
