#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "model/debt.h"

/// Debts as lists show them: by direction, by person and by currency, open ones or those that were repaid.
/// All are refused when the store cannot be read.
namespace moniva {

/// Debts under one heading, oldest first, and what they come to.
struct DebtReport {
  /// What the debts come to in one currency.
  struct Sum {
    std::string currency;
    double amount = 0;        ///< borrowed or lent
    double repaidAmount = 0;  ///< of it
    double owed = 0;          ///< still
  };
  /// Blank where the debts are those of everybody.
  std::string person;
  /// 24 borrowed, 34 lent; older rows of other types count as the one they mean.
  int debtType = kind::kBorrowed;
  /// "Borrow from" or "Lend to" in the person's language.
  std::string heading;
  std::vector<Debt> debtArray;
  std::vector<Sum> currencyArray;  ///< in order of the codes
};

/// How many debts are open.
Result<std::int64_t> recentDebtCount(MVAppRoot& root);
/// The open debts of everybody: what was borrowed, then what was lent.
Result<std::vector<DebtReport>> recentDebtTransactions(MVAppRoot& root);
/// Whether there are debts that were repaid.
Result<bool> hasHistoryDebtTransactions(MVAppRoot& root);
/// The debts that were repaid, person by person; what was borrowed first.
Result<std::vector<DebtReport>> historyDebtTransactions(MVAppRoot& root);

/// The debts of each person that were repaid, or that are open; what was borrowed first.
Result<std::vector<DebtReport>> debtorReportWithRepaid(MVAppRoot& root, bool repaid);
/// The same of one person: what was borrowed from them and what was lent to them, as far as there is any.
Result<std::vector<DebtReport>> debtReportWithDebtor(MVAppRoot& root, std::string_view debtor, bool repaid);
/// All debts that were repaid, or that are open: what was borrowed first, by person and date.
Result<std::vector<Debt>> allDebtTransactionsRepaid(MVAppRoot& root, bool repaid);
/// The names of all persons with debts in use, open or repaid.
Result<std::vector<std::string>> allDebter(MVAppRoot& root);

// Debts, sorted as `Debt::list` has them, under a heading for each direction, or for each direction and
// person.
std::vector<DebtReport> debtsByDirection(MVAppRoot& root, std::vector<Debt> debts);
std::vector<DebtReport> debtsByPerson(MVAppRoot& root, std::vector<Debt> debts);

}  // namespace moniva
