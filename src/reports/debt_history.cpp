#include "reports/debt_history.h"

#include <algorithm>

namespace moniva {
namespace {

Debt::Which whichDebts(bool repaid) {
  return repaid ? Debt::Which::settled : Debt::Which::open;
}

void takeDebt(DebtReport& report, Debt debt) {
  auto& sums = report.currencyArray;
  auto sum = std::ranges::lower_bound(sums, debt.currency, {}, &DebtReport::Sum::currency);
  if (sum == sums.end() || sum->currency != debt.currency) {
    sum = sums.insert(sum, DebtReport::Sum{debt.currency});
  }
  sum->amount += debt.amount;
  sum->repaidAmount += debt.repaidAmount;
  sum->owed += debt.owed();
  report.debtArray.push_back(std::move(debt));
}

/// `apart`: a heading for each person, not only for each direction.
std::vector<DebtReport> underHeadings(MVAppRoot& root, std::vector<Debt> debts, bool apart) {
  std::vector<DebtReport> reports;
  for (auto& debt : debts) {
    const int type = debt.isBorrowed() ? kind::kBorrowed : kind::kLent;
    if (reports.empty() || reports.back().debtType != type ||
        (apart && reports.back().person != debt.person)) {
      DebtReport& report = reports.emplace_back();
      report.debtType = type;
      report.heading =
          root.platform().localized(debt.isBorrowed() ? toTranslate("Borrow from") : toTranslate("Lend to"));
      if (apart) report.person = debt.person;
    }
    takeDebt(reports.back(), std::move(debt));
  }
  return reports;
}

}  // namespace

std::vector<DebtReport> debtsByDirection(MVAppRoot& root, std::vector<Debt> debts) {
  return underHeadings(root, std::move(debts), false);
}

std::vector<DebtReport> debtsByPerson(MVAppRoot& root, std::vector<Debt> debts) {
  return underHeadings(root, std::move(debts), true);
}

Result<std::int64_t> recentDebtCount(MVAppRoot& root) {
  return Debt::count(root, Debt::Which::open);
}

Result<bool> hasHistoryDebtTransactions(MVAppRoot& root) {
  const auto count = Debt::count(root, Debt::Which::settled);
  if (!count) return tl::make_unexpected(count.error());
  return *count > 0;
}

Result<std::vector<Debt>> allDebtTransactionsRepaid(MVAppRoot& root, bool repaid) {
  return Debt::list(root, whichDebts(repaid));
}

Result<std::vector<DebtReport>> recentDebtTransactions(MVAppRoot& root) {
  auto debts = allDebtTransactionsRepaid(root, false);
  if (!debts) return tl::make_unexpected(debts.error());
  return debtsByDirection(root, std::move(*debts));
}

Result<std::vector<DebtReport>> historyDebtTransactions(MVAppRoot& root) {
  return debtorReportWithRepaid(root, true);
}

Result<std::vector<DebtReport>> debtorReportWithRepaid(MVAppRoot& root, bool repaid) {
  return debtReportWithDebtor(root, {}, repaid);
}

Result<std::vector<DebtReport>> debtReportWithDebtor(MVAppRoot& root, std::string_view debtor, bool repaid) {
  auto debts = Debt::list(root, whichDebts(repaid), debtor);
  if (!debts) return tl::make_unexpected(debts.error());
  return debtsByPerson(root, std::move(*debts));
}

Result<std::vector<std::string>> allDebter(MVAppRoot& root) {
  return Debt::people(root);
}

}  // namespace moniva
