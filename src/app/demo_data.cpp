#include "app/demo_data.h"

#include "reports/moniva_account_budget.h"
#include "storage/writes.h"

namespace moniva {
namespace {

/// A month without a budget is given one, for as long as it has begun.
Result<> addBudget(MVAppRoot& root) {
  constexpr int kYear = 2024;
  constexpr double kAmount = 2850;
  auto book = MonivaAccount::getBookWithTitle(root, "Household");
  if (!book || book->isDeleted != 0) return {};
  const BookPeriods periods(root.calendar(), book->periodStarts(), root.now());
  if (periods.firstDateOfFiscalYear(kYear, 1) > root.now()) return {};
  return atomically(root, [&](Connection&) -> Result<> {
    const auto kept = getMonthlyBudgetForYear(*book, kYear, 1);
    if (!kept) return tl::make_unexpected(kept.error());
    if (*kept) return {};
    BookBudget budget(*book);
    budget.year = kYear;
    budget.month = 1;
    budget.amount = kAmount;
    budget.inheritRemaining = true;
    if (auto added = budget.add(); !added) return added;
    return setBudgetOpened(*book, true);
  });
}

}  // namespace

Result<ImportOutcome> insertDemoData(MVAppRoot& root,
                                     std::function<void(std::size_t, std::size_t)> progress) {
  ImportRequest request;
  request.currency = "EUR";
  request.progress = std::move(progress);
  auto outcome = importFile(root, root.platform().directories.resources / "household.csv", request);
  if (!outcome) return outcome;
  if (auto added = addBudget(root); !added) return tl::make_unexpected(added.error());
  return outcome;
}

}  // namespace moniva
