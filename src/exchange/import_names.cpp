#include "exchange/import_names.h"

#include "base/text.h"
#include "model/entry_checks.h"
#include "model/transaction_type.h"

namespace moniva {
namespace {

std::optional<Phrase> whyNoRecords(const MonivaAccount& row) {
  if (row.isGroup) {
    return row.isBook() ? phrase("'{}' is a group of books; name one of them", excerpt(row.title))
                        : phrase("'{}' is a group of accounts; name one of them", excerpt(row.title));
  }
  if (row.enabled) return std::nullopt;
  return row.isBook()
             ? phrase("the book '{}' is closed; open it with: moniva book reopen NAME", excerpt(row.title))
             : phrase("the account '{}' is closed; open it with: moniva account reopen NAME",
                      excerpt(row.title));
}

}  // namespace

const std::optional<Phrase>& ImportNames::obstacle(int aKind, const std::string& title) {
  const auto [known, isFirst] = obstacles_.try_emplace({aKind, title});
  if (!isFirst || title.empty()) return known->second;
  const auto row = aKind == kBookKind ? MonivaAccount::getBookWithTitle(root_, title)
                                      : MonivaAccount::getAccountWithTitle(root_, title);
  if (row && row->isDeleted == 0) known->second = whyNoRecords(*row);
  return known->second;
}

const std::optional<Phrase>& ImportNames::untracked(const std::string& account, int recordType) {
  const auto [known, isFirst] = untracked_.try_emplace({recordType, account});
  if (!isFirst || account.empty()) return known->second;
  if (const auto row = MonivaAccount::getAccountWithTitle(root_, account)) {
    if (auto tracked = checkTracked(*row, recordType); !tracked) known->second = *tracked.error().phrase;
  }
  return known->second;
}

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
    const auto added = made.add();
    if (!added) return tl::make_unexpected(added.error());
    (*added == MonivaAccount::Added::revived ? revivedBooks : newBooks).push_back(made.title);
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
    const auto added = made.add();
    if (!added) return tl::make_unexpected(added.error());
    (*added == MonivaAccount::Added::revived ? revivedAccounts : newAccounts).push_back(title);
    account = std::move(made);
  }
  return &accounts_.emplace(title, std::move(*account)).first->second;
}

Result<std::string> ImportNames::categoryBelow(int type, const std::string& title,
                                               const std::string& parentKey, const std::string& shownAs) {
  const auto name = std::make_pair(type, std::make_pair(parentKey, title));
  if (const auto known = categories_.find(name); known != categories_.end()) return known->second;
  auto found = MVCategory::withTitle(root_, title, type, parentKey);
  if (!found) return tl::make_unexpected(found.error());
  auto category = std::move(*found);
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
  if (title.empty() || Vendor::isNoVendorTitle(root_, title)) return std::string();
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
