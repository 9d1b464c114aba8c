#pragma once

#include "model/debt.h"

// What the operations on the rows of debts share; no part of what others use.
namespace moniva {

/// Whether debts of the type are borrowed money, older ones kept as income too.
inline bool isBorrowedType(int type) {
  return type == kind::kBorrowed || type == kind::kIncome;
}

/// Amounts nearer than this are the same: below what any currency counts, and never below what sums of
/// doubles of that size can tell apart.
double debtTolerance(double amount);
/// What is left of the amount, 0 when it is covered.
double leftOf(double amount, double covered);

/// The currency of a debt on the account of that key; of the current book for a blank one.
std::string currencyOfDebt(MVAppRoot& root, const std::string& account);
/// Whether debts in the two can be set against each other; a currency nobody knows goes with any.
bool sameCurrency(const std::string& one, const std::string& other);

/// Takes the blanks around the name away, which nobody sees. Refused: no name, and one too long.
Result<> checkPerson(std::string& person);
/// Refused: money that cannot have changed hands, by its amount, its date, and its account, for a row of the
/// debt's type.
Result<> checkMoney(MVAppRoot& root, const Debt& money);

/// Which rows the note of money that changed hands was meant for. Where there are none of them the others
/// have it, so that it is never lost.
enum class NoteOf { repayments, debt };

/// Repays the open debts with the money, one by one, and adds what is left of it as the debt that `money`
/// describes. `currency` is that of the open debts. To be called within a transaction.
Result<DebtOutcome> handOver(MVAppRoot& root, Debt& money, const std::vector<Debt>& open,
                             const std::string& currency, NoteOf noteOf);

}  // namespace moniva
