#pragma once

#include <map>
#include <string>

#include "model/moniva_account.h"

/// Balances: what is in an account, from its opening balance and its settled transactions. Money comes in by
/// income (11, 13), borrowing (24), being repaid (25) and transfers in (23); it goes out by expense (12, 14),
/// lending (34), repaying (35) and transfers out (33). Deleted rows and pending ones do not count.
namespace moniva {

/// The balance of the row, computed; for a group over its members.
double getTheTotalBalance(const MonivaAccount& account);

/// Computes the balance, caches it in the row and in the current book if it is this one, and does the same
/// for every group that contains the row. False when it could not be written.
bool countTheTotalBalance(MonivaAccount& account);

/// The same for one more amount (below zero for one that goes out), without counting everything again.
bool addToTotalBalance(MonivaAccount& account, double amount);

/// What all accounts' transactions come to, by account key, in one pass; opening balances are not in it.
std::map<std::string, double, std::less<>> sumsOfAllAccounts(MVAppRoot& root);

}  // namespace moniva
