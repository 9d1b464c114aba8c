#include "exchange/account_currencies.h"

#include <deque>
#include <optional>

#include "model/moniva_account.h"

namespace moniva {
namespace {

/// The currency of the account in the store, or of the deleted one that would come back in its place.
std::optional<std::string> currencyInStore(MVAppRoot& root, const std::string& title) {
  if (auto account = MonivaAccount::getAccountWithTitle(root, title); account && account->isDeleted == 0) {
    return std::move(account->currency);
  }
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return std::nullopt;
  Run run = db->query(
      "select currency from account where title = ? and kind = 1 and isGroup = 0 and deleted = 1"
      " order by editDate DESC",
      {title});
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
  if (isFirst) known->second = currencyInStore(root_, account).value_or("");
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

const std::string& AccountCurrencies::of(const std::string& account) const {
  const auto known = currencies_.find(account);
  return known == currencies_.end() || known->second.empty() ? otherwise_ : known->second;
}

}  // namespace moniva
