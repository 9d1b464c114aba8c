#include "model/mv_category.h"

#include "model/category_rows.h"
#include "storage/transaction.h"

namespace moniva {

MVCategory MVCategory::rootCateForType(MVAppRoot& root, int type) {
  MVCategory category(root);
  category.title = kRootKey;
  category.pk = kRootKey;
  category.parent.clear();
  category.type = type;
  return category;
}

MVCategory MVCategory::costCate(MVAppRoot& root) {
  MVCategory category(root);
  category.title = root.platform().localized("Amortization");
  category.type = kind::kExpense;
  return category;
}

std::optional<MVCategory> MVCategory::getCategory(MVAppRoot& root, std::string_view key, int type) {
  Connection* db = root.db().getDatabase();
  if (db == nullptr || key.empty() || key == kNoCategory) return std::nullopt;
  // Vendors and groups may have the key too, and income and expense may share it.
  static const std::string sql = fmt::format(
      "select {} from category where oldTitle = ? and type in (11,12) order by type != ?, deleted, pk",
      kCategoryColumns);
  Run run = db->query(sql, {key, type});
  if (!run.next()) return std::nullopt;
  return categoryOfRow(root, run);
}

Result<std::optional<MVCategory>> MVCategory::withTitle(MVAppRoot& root, std::string_view title, int type,
                                                        std::string_view parent) {
  return liveSibling(root, title, type, parent, "");
}

std::string MVCategory::cateString() const {
  if (!isSubCate()) return title;
  const auto loaded = supcategory ? std::nullopt : getCategory(*root_, parent, type);
  const MVCategory* above = supcategory ? supcategory.get() : loaded ? &*loaded : nullptr;
  if (above == nullptr || above->title == title) return title;
  return fmt::format("{} - {}", above->title, title);
}

Result<> MVCategory::associateWithAccount(const MonivaAccount& account) {
  Connection* db = root_->db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  Transaction transaction(*db);
  if (!transaction.began()) return tl::make_unexpected(db->refusal());
  if (auto live = liveCategory(*root_, pk, type); !live) return tl::make_unexpected(live.error());
  if (!account.pk.empty()) {
    const auto known = MonivaAccount::getAccountWithPK(*root_, account.pk);
    if (!known || known->isDeleted != 0 || !known->isAccount() || known->isGroup) {
      return refuse("'{}' is no payment account in use", account.title);
    }
  }
  if (!root_->executeUpdate(
          "update category set account = ?, editDate = ?, edit_ipid = ? where oldTitle = ? and type = ?",
          account.pk, root_->editStamp(), root_->itsUDID(), pk, type) ||
      !transaction.commit()) {
    return tl::make_unexpected(db->refusal());
  }
  return {};
}

Result<std::int64_t> MVCategory::recordCount() const {
  const auto kinds = kindsOf(*root_, pk, type);
  if (!kinds) return tl::make_unexpected(kinds.error());
  return recordsOf(*root_, pk, *kinds);
}

Result<std::optional<MonivaAccount>> MVCategory::getAssociatedAccount() const {
  Connection* db = root_->db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  std::string key;
  {
    Run run = db->query(
        "select account from category where oldTitle = ? and type in (11,12) order by type != ?", {pk, type});
    if (run.next()) key = run.text(0);
    if (!run.ok()) return tl::make_unexpected(db->refusal());
  }
  auto account = MonivaAccount::getAccountWithPK(*root_, key);
  if (account && account->isDeleted != 0) account.reset();
  return account;
}

}  // namespace moniva
