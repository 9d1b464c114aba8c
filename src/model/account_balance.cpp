#include "model/account_balance.h"

#include <set>

#include "model/transaction_type.h"

namespace moniva {
namespace {

/// +1 for kinds that bring money in, -1 for kinds that take it out, 0 for rows that are no money movement.
int signOf(std::int64_t type) {
  switch (type) {
    case kind::kIncome:
    case kind::kFurtherIncome:
    case kind::kTransferIn:
    case kind::kBorrowed:
    case kind::kRepaidToUs:
      return 1;
    case kind::kExpense:
    case kind::kFurtherExpense:
    case kind::kTransferOut:
    case kind::kLent:
    case kind::kRepaidByUs:
      return -1;
    default:
      return 0;
  }
}

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

bool count(MonivaAccount& account, std::set<std::string>& counted) {
  counted.insert(account.pk);
  MVAppRoot& root = account.root();
  bool kept = account.updateTotalBalance(getTheTotalBalance(account));
  if (root.monivaAccount && root.monivaAccount->pk == account.pk) {
    root.monivaAccount->totalBalance = account.totalBalance;
  }
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return false;
  Run run = db->query("select parent from category where title = ? and type = ? and deleted = 0",
                      {account.pk, account.isBook() ? 8 : 7});
  while (run.next()) {
    auto group = MonivaAccount::getAccountWithPK(root, run.text(0));
    // A group that came to contain itself by a merge must not count for ever.
    if (group && !counted.contains(group->pk)) kept = count(*group, counted) && kept;
  }
  return kept;
}

}  // namespace

double getTheTotalBalance(const MonivaAccount& account) {
  Connection* db = account.root().db().getDatabase();
  if (db == nullptr) return 0;
  double balance = openingBalance(account);
  Run run =
      db->query(fmt::format("select type, sum(amount) as amount from transactions where {} and deleted = 0"
                            " and paid = 1 and type > 10 and type < 50 group by type",
                            accountQuerySQL(account)),
                {account.pk});
  while (run.next()) balance += signOf(run.integer(0)) * run.real(1);
  return balance;
}

bool countTheTotalBalance(MonivaAccount& account) {
  std::set<std::string> counted;
  return count(account, counted);
}

std::map<std::string, double, std::less<>> sumsOfAllAccounts(MVAppRoot& root) {
  std::map<std::string, double, std::less<>> sums;
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return sums;
  Run run = db->query(
      "select account, type, sum(amount) from transactions where account != '' and deleted = 0 and paid = 1"
      " and type > 10 and type < 50 group by account, type");
  while (run.next()) sums[std::string(run.text(0))] += signOf(run.integer(1)) * run.real(2);
  return sums;
}

}  // namespace moniva
