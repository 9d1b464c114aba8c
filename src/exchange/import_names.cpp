#include "exchange/import_names.h"

#include "model/transaction_type.h"

namespace moniva {

Result<const MonivaAccount*> ImportNames::book(const std::string& title) {
  if (const auto known = books_.find(title); known != books_.end()) return &known->second;
  if (title.empty() && root_.monivaAccount && !root_.monivaAccount->pk.empty()) {
    return &books_.emplace(title, *root_.monivaAccount).first->second;
  }
  auto book = title.empty() ? std::nullopt : MonivaAccount::getBookWithTitle(root_, title);
  if (!book || book->isDeleted != 0) {
    MonivaAccount made(root_);
    made.aKind = kBookKind;
    if (!title.empty()) made.title = title;
    made.setType("_Book");
    made.currency = currency_;
    if (auto added = made.add(); !added) return tl::make_unexpected(added.error());
    newBooks.push_back(made.title);
    book = std::move(made);
  }
  return &books_.emplace(title, std::move(*book)).first->second;
}

Result<const MonivaAccount*> ImportNames::account(const std::string& title, const std::string& currency) {
  if (title.empty()) return nullptr;
  if (const auto known = accounts_.find(title); known != accounts_.end()) return &known->second;
  auto account = MonivaAccount::getAccountWithTitle(root_, title);
  if (!account || account->isDeleted != 0) {
    MonivaAccount made(root_);
    made.aKind = kAccountKind;
    made.title = title;
    made.setType("_SavingAccount");
    made.currency = currency;
    if (auto added = made.add(); !added) return tl::make_unexpected(added.error());
    newAccounts.push_back(title);
    account = std::move(made);
  }
  return &accounts_.emplace(title, std::move(*account)).first->second;
}

Result<std::string> ImportNames::categoryBelow(int type, const std::string& title,
                                               const std::string& parentKey, const std::string& shownAs) {
  const auto name = std::make_pair(type, std::make_pair(parentKey, title));
  if (const auto known = categories_.find(name); known != categories_.end()) return known->second;
  auto category = MVCategory::withTitle(root_, title, type, parentKey);
  if (!category) {
    MVCategory made(root_);
    made.title = title;
    made.type = type;
    made.parent = parentKey;
    if (auto added = made.addCate(); !added) return tl::make_unexpected(added.error());
    newCategories.push_back(shownAs);
    category = std::move(made);
  }
  return categories_.emplace(name, category->pk).first->second;
}

Result<ImportNames::CategoryKeys> ImportNames::category(int type, const std::string& title,
                                                        const std::string& subtitle) {
  CategoryKeys keys;
  if (title.empty()) return keys;
  auto above = categoryBelow(type, title, "_rootCate", title);
  if (!above) return tl::make_unexpected(above.error());
  keys.category = keys.subcategory = std::move(*above);
  if (subtitle.empty()) return keys;
  auto chosen = categoryBelow(type, subtitle, keys.category, fmt::format("{} - {}", title, subtitle));
  if (!chosen) return tl::make_unexpected(chosen.error());
  keys.subcategory = std::move(*chosen);
  return keys;
}

Result<std::string> ImportNames::vendor(int transactionType, const std::string& title) {
  // Files that lists were exported to name the entry for no vendor.
  if (title.empty() || Vendor::isNoVendorTitle(title)) return std::string();
  const auto name = std::make_pair(Vendor::typeFor(transactionType), title);
  if (const auto known = vendors_.find(name); known != vendors_.end()) return known->second;
  Vendor vendor(root_);
  vendor.title = title;
  vendor.type = name.first;
  const bool isNew = !vendor.isExist();
  if (auto added = vendor.add(); !added) return tl::make_unexpected(added.error());
  if (isNew) newVendors.push_back(title);
  return vendors_.emplace(name, vendor.pk).first->second;
}

}  // namespace moniva
