#pragma once

#include "reports/book_budget.h"
#include "reports/budget_historical_remaining.h"
#include "reports/moniva_account_budget.h"
#include "reports/mv_category_budget.h"
#include "support/household.h"

namespace moniva {

/// A household whose book has budgets; it is noon on 15 June 2024.
class Budgeting : public Household {
 public:
  Budgeting() {
    setClock("2024-06-15 12:00:00");
    EXPECT_TRUE(setBudgetOpened(*home, true));
  }

  void done(const Result<>& result) { EXPECT_TRUE(result) << result.error().why; }
  BookBudget monthly(int year, int month, double amount, bool inherits = false) {
    BookBudget budget(*home);
    budget.year = year;
    budget.month = month;
    budget.amount = amount;
    budget.inheritRemaining = inherits;
    done(budget.add());
    return budget;
  }
  BookBudget oneTime(const std::string& from, const std::string& to, double amount) {
    BookBudget budget(*home);
    budget.type = kind::kOneTimeBudget;
    budget.budgetBeginDate = on(from);
    budget.budgetEndDate = on(to);
    budget.amount = amount;
    done(budget.add());
    return budget;
  }
  void row(int type, double amount, const std::string& when, int paid = 1, int syear = 0,
           const std::string& seed = "", const std::string& category = "") {
    ASSERT_TRUE(
        sql("insert into transactions (eid, bid, type, amount, datetime, paid, syear, repeat_seed,"
            " category, book) values (?, 20, ?, ?, ?, ?, ?, ?, ?, ?)",
            {root.newIdentifier(), type, amount, on(when), paid, syear, seed, category, home->pk}));
  }
  BookBudget main() {
    const auto budget = getMainBudget(*home);
    EXPECT_TRUE(budget) << budget.error().why;
    EXPECT_TRUE(*budget);
    return budget && *budget ? **budget : BookBudget(*home);
  }
  std::optional<BookBudget> ofMonth(int year, int month) {
    auto budget = getMonthlyBudgetForYear(*home, year, month);
    EXPECT_TRUE(budget) << budget.error().why;
    return budget.value_or(std::nullopt);
  }
  /// "month amount-spent+carried in=remaining", a star for a row of its own, for each month of the history.
  std::string story() {
    const auto months = BudgetHistoricalRemaining(*home).months();
    EXPECT_TRUE(months) << months.error().why;
    std::string text;
    for (const auto& month : *months) {
      text += fmt::format("{}{}{}{} {}-{}+{}={}", text.empty() ? "" : ", ", month.month,
                          month.isOwn ? "*" : "", month.inheritRemaining ? ">" : "", month.amount,
                          month.expense, month.rollover, month.remaining);
    }
    return text;
  }
  std::string live(int type) {
    return rows(
        "select syear || '/' || smonth || ' ' || cast(amount as text) from transactions where type ="
        " ? and book = ? and deleted = 0 order by sday",
        {type, home->pk});
  }
  BudgetHistoricalRemaining history() { return BudgetHistoricalRemaining(*home); }
  std::int64_t writes() { return connection().totalChanges(); }
};

}  // namespace moniva
