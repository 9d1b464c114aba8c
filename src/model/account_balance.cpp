#include "model/account_balance.h"

#include <functional>
#include <set>

namespace moniva {
namespace {

/// What came in and what went out, as the columns of a query.
constexpr std::string_view kInAndOut =
    "sum(case when type in (11, 13, 23, 24, 25) then amount end), sum(case when type in (12, 14, 33, 34, 35) "
    "then amount"
    " end)";

double openingBalance(const MonivaAccount& account) {
  if (!account.isGroup) return account.beginBalance;
  Connection* db = account.root().db().getDatabase();
  if (db == nullptr) return 0;
  Run run = db->query(
      "select sum(beginBalance) as beginBalance from account where oldTitle in (select title from category "
      "where"
      " parent=? and type=7 and deleted = 0) and deleted = 0",
      {account.pk});
  return run.next() ? run.real(0) : 0;
}

/// Applies `change` to the row and to every group that contains it, each once.
bool forRowAndItsGroups(MonivaAccount& account, const std::function<bool(MonivaAccount&)>& change,
                        std::set<std::string>& changed) {
  changed.insert(account.pk);
  MVAppRoot& root = account.root();
  bool kept = change(account);
  if (root.monivaAccount && root.monivaAccount->pk == account.pk) {
    root.monivaAccount->totalBalance = account.totalBalance;
  }
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return false;
  Run run = db->query("select parent from category where title = ? and type = ? and deleted = 0",
                      {account.pk, account.isBook() ? 8 : 7});
  while (run.next()) {
    auto group = MonivaAccount::getAccountWithPK(root, run.text(0));
    // A group that came to contain itself by a merge must not go round for ever.
    if (group && !changed.contains(group->pk)) kept = forRowAndItsGroups(*group, change, changed) && kept;
  }
  return kept;
}

}  // namespace

double getTheTotalBalance(const MonivaAccount& account) {
  Connection* db = account.root().db().getDatabase();
  if (db == nullptr) return 0;
  Run run = db->query(fmt::format("select {} from transactions where {} and deleted = 0 and paid = 1",
                                  kInAndOut, accountQuerySQL(account)),
                      {account.pk});
  return openingBalance(account) + (run.next() ? run.real(0) - run.real(1) : 0);
}

bool countTheTotalBalance(MonivaAccount& account) {
  std::set<std::string> changed;
  return forRowAndItsGroups(
      account, [](MonivaAccount& row) { return row.updateTotalBalance(getTheTotalBalance(row)); }, changed);
}

bool addToTotalBalance(MonivaAccount& account, double amount) {
  std::set<std::string> changed;
  return forRowAndItsGroups(
      account, [amount](MonivaAccount& row) { return row.addToTotalBalance(amount); }, changed);
}

std::map<std::string, double, std::less<>> sumsOfAllAccounts(MVAppRoot& root) {
  std::map<std::string, double, std::less<>> sums;
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return sums;
  Run run =
      db->query(fmt::format("select account, {} from transactions where account != '' and deleted = 0 and "
                            "paid = 1 group by account",
                            kInAndOut));
  while (run.next()) sums.emplace(run.text(0), run.real(1) - run.real(2));
  return sums;
}

}  // namespace moniva
