#include <algorithm>
#include <boost/json.hpp>

#include "calendar/day_texts.h"
#include "ui/cli/bars.h"
#include "ui/cli/commands/budget_commands.h"
#include "ui/cli/completion_scripts.h"
#include "ui/cli/month_typed.h"
#include "ui/cli/records.h"
#include "ui/cli/report_target.h"
#include "ui/cli/text_width.h"

namespace moniva {
namespace {

namespace json = boost::json;

BookPeriods periodsOf(Session& session, const MonivaAccount& book) {
  return {session.calendar(), book.periodStarts(), session.now()};
}

}  // namespace

NamedMonth monthNamed(Session& session, const MonivaAccount& book, int year, int month) {
  const Calendar& calendar = session.calendar();
  const Date first = periodsOf(session, book).firstDateOfCalendarYear(year, month);
  const auto day = calendar.dayNumber(first);
  return {year, month, DayTexts(calendar).monthAndYear(first, day, calendar.days().parts(day))};
}

NamedMonth budgetMonthTyped(Session& session, const MonivaAccount& book, const std::string& text) {
  const auto [year, month] = monthTypedOf(session, book, text);
  if (!isBudgetMonth(book, year, month)) throw notUnderstood("there is no month {}/{}", year, month);
  auto asked = monthNamed(session, book, year, month);
  const BookBudget present(book);
  if (std::pair(year, month) > std::pair(present.year, present.month)) {
    throw monthAhead(session, book, asked.text, periodsOf(session, book).firstDateOfFiscalYear(year, month));
  }
  return asked;
}

NamedMonth monthOf(Session& session, const BookBudget& budget) {
  return monthNamed(session, budget.book, budget.year, budget.month);
}

NamedMonth presentMonth(Session& session, const MonivaAccount& book) {
  return monthOf(session, BookBudget(book));
}

std::string bookBelow(const BudgetShowOptions& above, const std::string& book) {
  if (!above.month.empty())
    throw notUnderstood("--month is not for this command, but for: moniva budget show");
  if (above.all) throw notUnderstood("--all is not for this command, but for: moniva budget show");
  if (above.csv) {
    throw notUnderstood("--csv is for lists: moniva budget show --all, moniva budget history");
  }
  return book.empty() ? above.book : book;
}

void CarryOptions::addTo(CLI::App& command) {
  CLI::Option* carry = command.add_flag("--carry", on, "What is left of a month goes into the next one");
  command.add_flag("--no-carry", off, "Each month begins anew")->excludes(carry);
}

std::string budgetCommand(Session& session, const MonivaAccount& book, std::string_view words) {
  const auto& current = session.root().monivaAccount;
  const auto command = fmt::format("moniva budget {}", words);
  if (current && current->pk == book.pk) return command;
  return fmt::format("{} -b {}", command, shellQuoted(printable(book.title)));
}

CommandError noBudget(Session& session, const MonivaAccount& book) {
  const auto title = printable(book.title);
  if (done(budgetWasSwitchedOff(book))) {
    return refused("the budget of '{}' is switched off; switch it on with: {}", title,
                   budgetCommand(session, book, "on"));
  }
  return refused("'{}' has no budget; set one with: {}", title, budgetCommand(session, book, "set AMOUNT"));
}

BookBudget budgetInForce(Session& session, MonivaAccount& book) {
  const auto budget = done(getMainBudget(book));
  if (!budget) throw noBudget(session, book);
  return *budget;
}

std::string budgetText(Session& session, const BookBudget& budget) {
  const auto amount = session.amounts().format(budget.amount, budget.book.currency);
  if (budget.isMonthly()) return session.text("{} a month", amount);
  return session.text("{} from {}", amount,
                      periodText(session, {budget.budgetBeginDate, budget.budgetEndDate}));
}

std::string carryText(Session& session, bool inherits) {
  return inherits ? session.text("What is left of a month goes into the next one.")
                  : session.text("What is left of a month is not carried on.");
}

json::object jsonOf(const CategoryBudget& given) {
  return {{"category", {{"pk", given.category.pk}, {"title", given.category.cateString()}}},
          {"categoryBudgetAmount", given.categoryBudgetAmount},
          {"spent", given.spent},
          {"left", given.left},
          {"amount", given.amount}};
}

json::value jsonOf(Session& session, const BookBudget& budget) {
  json::array categories;
  for (const auto& given : done(allocations(budget))) categories.push_back(jsonOf(given));
  return json::object{{"eid", budget.eid},
                      {"amount", budget.amount},
                      {"type", budget.type},
                      {"budgetBeginDate", isoBegin(session, budget.budgetBeginDate)},
                      {"budgetEndDate", isoEnd(session, budget.budgetEndDate)},
                      {"book", {{"pk", budget.book.pk}, {"title", budget.book.title}}},
                      {"inheritRemaining", budget.inheritRemaining},
                      {"monivaAmount", budget.monivaAmount},
                      {"leftAmount", budget.leftAmount},
                      {"availableAmount", budget.availableAmount()},
                      {"lastMonthRolloverAmount", budget.lastMonthRolloverAmount},
                      {"todayAvailableAmount", budget.todayAvailableAmount},
                      {"recurringAmount", budget.recurringAmount},
                      {"installmentAmount", budget.installmentAmount},
                      {"dividedAmount", budget.dividedAmount},
                      {"year", budget.year},
                      {"month", budget.month},
                      {"categories", std::move(categories)},
                      {"allocatedValue", done(budget.getAllocateValue())}};
}

json::value jsonOfMainBudget(Session& session, MonivaAccount& book) {
  const auto budget = done(getMainBudget(book));
  return budget ? jsonOf(session, *budget) : json::value();
}

json::value isoBegin(Session& session, Date day) {
  return isoDate(session, session.calendar().dateBegin(day));
}

json::value isoEnd(Session& session, Date day) {
  return isoDate(session, session.calendar().dateEnd(day));
}

Cell spentBar(double spent, double amount, std::size_t cells) {
  return {bar(spent, amount, cells), spent > amount ? ink::red : ink::dim};
}

std::size_t cellsForBar(const Session& session, std::size_t used) {
  constexpr std::size_t kMost = 20;
  constexpr std::size_t kLeast = 6;
  if (session.width() < used + kLeast) return 0;
  return std::min(kMost, session.width() - used);
}

}  // namespace moniva
