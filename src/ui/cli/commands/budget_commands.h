#pragma once

#include <boost/json/object.hpp>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "reports/budget_historical_remaining.h"
#include "reports/moniva_account_budget.h"
#include "reports/mv_category_budget.h"
#include "ui/cli/command_error.h"
#include "ui/cli/command_line.h"
#include "ui/cli/table.h"

/// What the commands for budgets have in common.
namespace moniva {

/// A book month, by the calendar month it is called after.
struct NamedMonth {
  int year = 0;
  int month = 0;
  std::string text;  ///< "March, 2024"
};
NamedMonth monthNamed(Session& session, const MonivaAccount& book, int year, int month);
/// The month of the book as typed. Ends the command for what is none, and for one that is still to come.
NamedMonth budgetMonthTyped(Session& session, const MonivaAccount& book, const std::string& text);
/// The month of a monthly budget, and the present one of the book.
NamedMonth monthOf(Session& session, const BookBudget& budget);
NamedMonth presentMonth(Session& session, const MonivaAccount& book);

/// What `moniva budget` and `moniva budget show` are asked for. A command below the first gets what it does
/// not take itself there.
struct BudgetShowOptions {
  std::string book;
  std::string month;
  bool all = false;
  bool csv = false;
};
/// The book typed with the command, else before it. Ends the command for what only `moniva budget` takes.
std::string bookBelow(const BudgetShowOptions& above, const std::string& book);

/// The flags --carry and --no-carry.
struct CarryOptions {
  bool on = false;
  bool off = false;
  void addTo(CLI::App& command);
  std::optional<bool> typed() const { return on || off ? std::optional(on) : std::nullopt; }
};

/// The budget in force of a book. Ends the command for a book that has none, or whose budget is switched off.
BookBudget budgetInForce(Session& session, MonivaAccount& book);
/// Why a book has none: nothing was set, or it is switched off.
CommandError noBudget(Session& session, const MonivaAccount& book);
/// "moniva budget on", with the book where that is not the current one.
std::string budgetCommand(Session& session, const MonivaAccount& book, std::string_view words);
/// "€400.00 a month", "€900.00 from Jul 1, 2026 to Jul 31, 2026".
std::string budgetText(Session& session, const BookBudget& budget);
/// Whether what is left goes on, as a sentence.
std::string carryText(Session& session, bool inherits);
/// The budget with its figures and categories; null for a book without one.
boost::json::value jsonOf(Session& session, const BookBudget& budget);
boost::json::object jsonOf(const CategoryBudget& given);
boost::json::value jsonOfMainBudget(Session& session, MonivaAccount& book);

/// The first and the last second of the days from one to the other, for --json.
boost::json::value isoBegin(Session& session, Date day);
boost::json::value isoEnd(Session& session, Date day);

/// The bar of what is spent of an amount; full, and red, once it is more.
Cell spentBar(double spent, double amount, std::size_t cells);
/// Cells there are for a small bar beside so many cells of figures; 0 for none.
std::size_t cellsForBar(const Session& session, std::size_t used);

/// Months of a budget as a table with that heading.
void printBudgetMonths(Session& session, const MonivaAccount& book, std::span<const BudgetMonth> months,
                       const std::string& heading);

/// Makes `budget` show a budget, and adds the command for that; what is typed with `budget` is read into the
/// answer.
std::shared_ptr<const BudgetShowOptions> addBudgetViewCommands(CommandLine& line, CLI::App& budget);
void addBudgetHistoryCommands(CommandLine& line, CLI::App& budget,
                              const std::shared_ptr<const BudgetShowOptions>& above);

}  // namespace moniva
