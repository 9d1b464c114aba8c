#pragma once

#include <map>
#include <set>
#include <string>

#include "model/moniva_account.h"

/// Balances: what is in an account, from its opening balance, its settled transactions and its corrections.
/// Which transactions come in and go out follows from what the row tracks:
///
///     tracks       comes in                       goes out
///     1050, 2312   income (11), 22 to 28          expense (12), 32 to 38
///     1112         income (11)                    expense (12)
///     11           income (11)
///     12                                          expense (12)
///
/// where 22 to 28 are money borrowed, repaid to us and transferred in, 32 to 38 money lent, repaid by us and
/// transferred out. A row that tracks anything else counts as its kind does: 1050 an account, 1112 a book.
/// Deleted rows and pending ones do not count; corrections (50) have a sign of their own and count always.
namespace moniva {

/// What the transactions of a row come to, each part by itself; parts that the row does not track are 0.
struct AccountTotals {
  double income = 0;   ///< without transfers
  double expense = 0;  ///< without transfers
  double transferIn = 0;
  double transferOut = 0;
  double adjusted = 0;  ///< corrections, above or below zero

  AccountTotals& operator+=(const AccountTotals& other);
  double balance() const { return income + transferIn - expense - transferOut + adjusted; }
};

/// The totals of a book or an account, computed in one pass; of a group those of its members together.
Result<AccountTotals> totalsOf(const MonivaAccount& account);
/// What the balance was when that moment came: what is dated before it counts. For a group over its members.
Result<double> balanceBefore(const MonivaAccount& account, Date moment);
double getTheTotalIncome(const MonivaAccount& account);
double getTheTotalExpense(const MonivaAccount& account);
double getTheTotalTransferIn(const MonivaAccount& account);
double getTheTotalTransferOut(const MonivaAccount& account);
/// The balance of the row, computed; for a group over its members, with their opening balances.
double getTheTotalBalance(const MonivaAccount& account);
/// Keeps the totals and the balance in the object; the row is not written.
Result<> getAllStatistics(MonivaAccount& account);

/// Computes the balance, caches it in the row and in the current book if it is this one, and does the same
/// for every group that contains the row. Refused, with nothing kept, when it cannot be read or written.
Result<> countTheTotalBalance(MonivaAccount& account);
/// The same for the books and accounts of the keys; keys that name nothing are passed over.
Result<> countTheTotalBalances(MVAppRoot& root, const std::set<std::string>& keys);
/// The report type by which the row's balance counts; a code it cannot have stands for that of its kind.
int countedType(const MonivaAccount& account);
/// What a settled transaction of the type does to the balance of the row: 1 comes in, -1 goes out, 0 does not
/// count.
int balanceSign(const MonivaAccount& account, int transactionType);
/// The same for one more settled transaction of that type, without counting everything again.
Result<> addToTotalBalance(MonivaAccount& account, int transactionType, double amount);

/// Makes the balance what it is found to be, by a correction dated now: a row of type 50 that is no income
/// and no expense. Answers what was added (below zero when it was too much); 0 writes nothing. A group is
/// refused.
Result<double> correctBalanceTo(MonivaAccount& account, double balance);

/// What all accounts' transactions come to, by account key, in one pass; opening balances are not in it.
Result<std::map<std::string, double, std::less<>>> sumsOfAllAccounts(MVAppRoot& root);

}  // namespace moniva
