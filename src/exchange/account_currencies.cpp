#include "exchange/account_currencies.h"

#include <deque>
#include <optional>

#include "model/moniva_account.h"

namespace moniva {
namespace {

/// The currency of the account or book in the store, or of the deleted one that would come back in its place.
std::optional<std::string> currencyInStore(MVAppRoot& root, int aKind, const std::string& title) {
  auto live = aKind == kBookKind ? MonivaAccount::getBookWithTitle(root, title)
                                 : MonivaAccount::getAccountWithTitle(root, title);
  if (live && live->isDeleted == 0) return std::move(live->currency);
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return std::nullopt;
  Run run = db->query(
      "select currency from account where title = ? and kind = ? and isGroup = 0 and deleted = 1"
      " order by editDate DESC",
      {title, aKind});
  if (!run.next()) return std::nullopt;
  return std::string(run.text(0));
}

}  // namespace

void AccountCurrencies::note(const ImportRecord& record) {
  noteAccount(record.account, record.currency);
  if (record.kind != ImportKind::transfer) return;
  noteAccount(record.toAccount, "");
  if (record.toAmount) return;
  oneForOne_[record.account].insert(record.toAccount);
  oneForOne_[record.toAccount].insert(record.account);
}

void AccountCurrencies::noteAccount(const std::string& account, const std::string& stated) {
  if (account.empty()) return;
  const auto [known, isFirst] = currencies_.try_emplace(account);
  if (isFirst) known->second = currencyInStore(root_, kAccountKind, account).value_or("");
  if (known->second.empty()) known->second = stated;
}

void AccountCurrencies::settle() {
  std::deque<std::string> spreading;
  for (const auto& [account, currency] : currencies_) {
    if (!currency.empty()) spreading.push_back(account);
  }
  for (; !spreading.empty(); spreading.pop_front()) {
    const auto& currency = currencies_[spreading.front()];
    for (const auto& other : oneForOne_[spreading.front()]) {
      auto& unknown = currencies_[other];
      if (!unknown.empty()) continue;
      unknown = currency;
      spreading.push_back(other);
    }
  }
}

const std::string& AccountCurrencies::of(const std::string& account) {
  noteAccount(account, "");
  const auto known = currencies_.find(account);
  return known == currencies_.end() || known->second.empty() ? otherwise_ : known->second;
}

const std::string& AccountCurrencies::ofBook(const std::string& book) {
  const auto [known, isFirst] = ofBooks_.try_emplace(book);
  if (!isFirst) return known->second;
  const bool isCurrent = book.empty() && root_.monivaAccount && !root_.monivaAccount->pk.empty();
  if (isCurrent) {
    known->second = root_.monivaAccount->currency;
  } else {
    known->second =
        (book.empty() ? std::nullopt : currencyInStore(root_, kBookKind, book)).value_or(otherwise_);
  }
  return known->second;
}

}  // namespace moniva
