#include "reports/account_query.h"

#include <algorithm>

#include "model/entry_checks.h"
#include "reports/breakdown.h"

namespace moniva {
namespace {

AccountQuery::Titles titlesOf(const AccountQuery::Rows& rows) {
  if (!rows) return tl::make_unexpected(rows.error());
  std::vector<std::string> titles;
  for (const auto& row : *rows) titles.push_back(row.title);
  return titles;
}

}  // namespace

AccountQuery::Rows AccountQuery::rows(int aKind, bool withGroups) const {
  Connection* db = root_->db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  const std::string& type = aKind == kBookKind ? std::string() : accountType;
  const auto keys = keysOf(
      *db,
      "select oldTitle from account where kind = ?1 and deleted = 0 and enabled = 1 and (isGroup = 0 or"
      " isGroup = ?2) and (?3 = '' or currency = ?3) and (?4 = '' or type = ?4 or isGroup = 1) order by"
      " isGroup, orderID, eid",
      {aKind, withGroups, currency, type});
  if (!keys) return tl::make_unexpected(keys.error());
  std::vector<MonivaAccount> found;
  for (const auto& key : *keys) {
    if (auto row = MonivaAccount::getAccountWithPK(*root_, key)) found.push_back(std::move(*row));
  }
  return found;
}

AccountQuery::Rows AccountQuery::taking(int transactionType, std::string_view type) const {
  auto found = rows(kAccountKind, false);
  if (!found) return found;
  std::erase_if(*found, [&](const MonivaAccount& account) {
    return !checkTracked(account, transactionType) || (!type.empty() && account.aType != type);
  });
  return found;
}

AccountQuery::Titles AccountQuery::accountsTitleArray() const {
  return titlesOf(accountsArray());
}

AccountQuery::Titles AccountQuery::booksTitleArray() const {
  return titlesOf(rows(kBookKind, includeGroup));
}

Result<std::optional<MonivaAccount>> AccountQuery::paymentAccountForCurrency(MVAppRoot& root,
                                                                             const std::string& currency) {
  AccountQuery query(root);
  query.currency = currency;
  auto found = query.accountWithoutGroupArray();
  if (!found) return tl::make_unexpected(found.error());
  if (found->empty()) return std::nullopt;
  return std::move(found->front());
}

Result<std::map<std::string, std::vector<MonivaAccount>>> AccountQuery::accountsDictExceptCurrency(
    MVAppRoot& root, const std::string& currency) {
  auto found = AccountQuery(root).accountWithoutGroupArray();
  if (!found) return tl::make_unexpected(found.error());
  std::map<std::string, std::vector<MonivaAccount>> byCurrency;
  for (auto& account : *found) {
    if (account.currency != currency) byCurrency[account.currency].push_back(std::move(account));
  }
  return byCurrency;
}

Result<std::int64_t> AccountQuery::allAvailabledBooksCount() const {
  AccountQuery all(*root_);
  const auto books = all.bookWithoutGroupArray();
  if (!books) return tl::make_unexpected(books.error());
  return static_cast<std::int64_t>(books->size());
}

}  // namespace moniva
