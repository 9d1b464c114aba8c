#include <set>

#include "model/group_balance.h"
#include "model/mv_category.h"
#include "model/spend.h"
#include "model/spend_change.h"
#include "model/vendor.h"
#include "storage/writes.h"

// What a record is filed under: its category and its vendor.
namespace moniva {
namespace {

/// A record's own key of a category, checked: it is in use and of the record's type.
Result<> checkCategoryKey(MVAppRoot& root, const std::string& key, int type) {
  if (key.empty()) return {};
  const auto category = MVCategory::getCategory(root, key, type);
  if (!category || category->deleted != 0) return refuse("there is no category with the key '{}'", key);
  if (category->type != type) return refuse("'{}' is no category for records of this kind", category->title);
  return {};
}

/// The item is used in its new categories, and no longer in its former ones.
void noteFiledAnew(EntryUpkeep& upkeep, const TransactionItem& item, const std::string& category,
                   const std::string& subcategory, MVAppRoot& root) {
  Spend use(root);
  use.type = item.type;
  use.book = item.book;
  use.category = item.category;
  use.subcategory = item.subcategory;
  upkeep.noteUses(use, -1);
  use.category = category;
  use.subcategory = subcategory;
  upkeep.noteUses(use, 1);
}

}  // namespace

Result<> Spend::updateCategory(std::string newCategory, std::string newSubcategory) {
  return changeSpend(*this, [&](const TransactionItem& row) -> Result<> {
    const auto group = TransactionGroup::of(*root_, row.connectionUUID);
    if (!group) return tl::make_unexpected(group.error());
    const int ofType = kindInGroup(*this, *group);
    for (const auto* key : {&newCategory, &newSubcategory}) {
      if (auto checked = checkCategoryKey(*root_, *key, ofType); !checked) return checked;
    }
    if (row.isPayment()) return refuse("a payment has no category of its own");
    const auto set = [&](std::string_view where, std::string_view key) {
      return write(
          *root_,
          fmt::format("update transactions set category = ?, subcategory = ?, ipid = '', editDate = ?,"
                      " edit_ipid = ? where {}",
                      where),
          newCategory, newSubcategory.empty() ? kNoCategory : std::string_view(newSubcategory),
          root_->editStamp(), root_->itsUDID(), key);
    };
    const bool split = advancedType == advanced::kCost || advancedType == advanced::kInstallment;
    const bool wholePlan = split && !row.connectionUUID.empty();
    EntryUpkeep upkeep(*root_);
    std::vector<TransactionItem> made;
    if (isSeriesSeed()) {
      auto occurrences = itemsWhere(*root_, "repeat_seed = ? and bid = 20 and deleted = 0", {eid});
      if (!occurrences) return tl::make_unexpected(occurrences.error());
      made = std::move(*occurrences);
      for (const auto& one : made) noteFiledAnew(upkeep, one, newCategory, newSubcategory, *root_);
    } else {
      Spend use = *this;
      use.type = ofType;
      const int uses = wholePlan ? static_cast<int>(group->items.size()) : 1;
      use.vendor.clear();
      upkeep.noteUses(use, -uses);
      use.category = newCategory;
      use.subcategory = newSubcategory;
      upkeep.noteUses(use, uses);
    }
    auto written = set("eid = ?", eid);
    if (written && isSeriesSeed()) written = set("repeat_seed = ? and bid = 20", eid);
    if (written && wholePlan) written = set("transferEID = ? and bid = 20", row.connectionUUID);
    if (!written) return written;
    category = newCategory;
    subcategory = newSubcategory;
    std::set<std::string> groups{row.connectionUUID};
    for (const auto& one : made) groups.insert(one.connectionUUID);
    for (const auto& uuid : groups) {
      written = settlePayments(*root_, uuid, SolePayment::stays);
      if (!written) return written;
    }
    return upkeep.write(EntryUpkeep::Balances::byAmount);
  });
}

Result<> Spend::updateVendor(std::string newVendor) {
  return changeSpend(*this, [&](const TransactionItem& row) -> Result<> {
    if (row.isPayment() && !row.connectionUUID.empty()) return refuse("a payment has no vendor of its own");
    const auto group = TransactionGroup::of(*root_, row.connectionUUID);
    if (!group) return tl::make_unexpected(group.error());
    const int ofType = kindInGroup(*this, *group);
    auto written = write(
        *root_, "update transactions set vendor = ?, ipid = '', editDate = ?, edit_ipid = ? where eid = ?",
        newVendor, root_->editStamp(), root_->itsUDID(), eid);
    const bool split = advancedType == advanced::kCost || advancedType == advanced::kInstallment;
    if (written && split && !row.connectionUUID.empty()) {
      written =
          write(*root_,
                "update transactions set vendor = ?, ipid = '', editDate = ?, edit_ipid = ? where transferEID"
                " = ? and bid = 20",
                newVendor, root_->editStamp(), root_->itsUDID(), row.connectionUUID);
    } else if (written && !row.connectionUUID.empty() && !row.vendor.empty()) {
      written =
          write(*root_,
                "update transactions set vendor = ?, ipid = '', editDate = ?, edit_ipid = ? where transferEID"
                " = ? and type = ? and vendor = ?",
                newVendor, root_->editStamp(), root_->itsUDID(), row.connectionUUID, ofType, row.vendor);
    }
    if (!written) return written;
    vendor = newVendor;
    for (const std::string& key : {row.vendor, newVendor}) {
      auto used = key.empty() ? std::nullopt : Vendor::getVendor(*root_, key, ofType);
      if (used && !used->updateUsingCount(ofType)) return refusalOfStore(*root_);
    }
    return {};
  });
}

}  // namespace moniva
