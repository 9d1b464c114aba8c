#include <unistd.h>

#include <algorithm>
#include <boost/json.hpp>
#include <iostream>

#include "calendar/date_texts.h"
#include "platform/posix/host.h"
#include "ui/cli/bars.h"
#include "ui/cli/commands/budget_commands.h"
#include "ui/cli/did_you_mean.h"
#include "ui/cli/records.h"
#include "ui/cli/report_target.h"
#include "ui/cli/text_width.h"

namespace moniva {
namespace {

namespace json = boost::json;

TypedMonth monthHolding(Session& session, const BookPeriods& periods, Date date) {
  const int year = periods.getYearForFiscalMonth(date);
  const auto name = stringOfMonthName(session.calendar(), periods.namesakeOfMonth(date));
  return {year, periods.getFiscalMonth(date), fmt::format("{} {}", name, year)};
}

BookPeriods periodsOf(Session& session, const MonivaAccount& book) {
  return {session.calendar(), book.periodStarts(), session.now()};
}

}  // namespace

TypedMonth monthTyped(Session& session, const MonivaAccount& book, const std::string& text) {
  std::string plain = text;
  if (std::ranges::count(plain, '/') == 1) std::ranges::replace(plain, '/', '-');
  const auto period = periodTyped(session, book, plain);
  const auto periods = periodsOf(session, book);
  const auto& calendar = session.calendar();
  if (!calendar.isSameDay(periods.firstDateOfMonth(period.first), period.first) ||
      !calendar.isSameDay(periods.lastDateOfMonth(period.first), period.last)) {
    throw notUnderstood("'{}' is no month: write it as 2024-03", printable(text));
  }
  auto month = monthHolding(session, periods, period.first);
  const BookBudget present(book);
  if (std::pair(month.year, month.month) > std::pair(present.year, present.month)) {
    throw refused("{} is still to come", month.text);
  }
  return month;
}

TypedMonth monthOf(Session& session, const BookBudget& budget) {
  return monthHolding(session, periodsOf(session, budget.book), budget.budgetBeginDate);
}

TypedMonth presentMonth(Session& session, const MonivaAccount& book) {
  return monthOf(session, BookBudget(book));
}

void CarryOptions::addTo(CLI::App& command) {
  CLI::Option* carry = command.add_flag("--carry", on, "What is left of a month goes into the next one");
  command.add_flag("--no-carry", off, "Each month begins anew")->excludes(carry);
}

CommandError noBudget(Session& session, const MonivaAccount& book) {
  const auto title = printable(book.title);
  Connection* db = session.root().db().getDatabase();
  if (db != nullptr && !book.budgetEnabled) {
    // What was deleted by a person is marked so; the switch leaves another mark.
    Run run = db->query(
        "select deleted from transactions where type in (60, 61) and book = ? order by editDate desc, "
        "deleted "
        "desc limit 1",
        {book.pk});
    if (run.next() && run.integer(0) != 4) {
      return refused("the budget of '{}' is switched off; switch it on with: moniva budget on", title);
    }
  }
  return refused("'{}' has no budget; set one with: moniva budget set AMOUNT", title);
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

double leftWithCarry(const BookBudget& budget) {
  return budget.lastMonthRolloverAmount + budget.amount - budget.monivaAmount - budget.recurringAmount -
         budget.installmentAmount;
}

std::vector<CategoryBudget> allocationsOf(Session& session, const BookBudget& budget) {
  MVAppRoot& root = session.root();
  // Counting them leaves one row a category.
  done(budget.getAllocateValue());
  std::vector<std::string> keys;
  if (Connection* db = root.db().getDatabase()) {
    Run run = db->query(
        "select category from transactions where deleted = 0 and type = 62 and book = ? order by amount "
        "desc, "
        "datetime",
        {budget.book.pk});
    while (run.next()) keys.emplace_back(run.text(0));
    if (!run.ok()) throw CommandError(CommandError::kRefused, db->refusal());
  }
  std::vector<CategoryBudget> list;
  for (const auto& key : keys) {
    if (const auto category = MVCategory::getCategory(root, key)) {
      list.push_back(done(getBudget(*category, budget)));
    }
  }
  return list;
}

json::object jsonOf(const CategoryBudget& given) {
  return {{"category", {{"pk", given.category.pk}, {"title", given.category.cateString()}}},
          {"categoryBudgetAmount", given.categoryBudgetAmount},
          {"amount", given.amount},
          {"spent", given.spent},
          {"left", given.left}};
}

json::value jsonOf(Session& session, const BookBudget& budget) {
  json::array categories;
  for (const auto& given : allocationsOf(session, budget)) categories.push_back(jsonOf(given));
  return json::object{{"eid", budget.eid},
                      {"amount", budget.amount},
                      {"type", budget.type},
                      {"budgetBeginDate", isoDate(session, budget.budgetBeginDate)},
                      {"budgetEndDate", isoDate(session, budget.budgetEndDate)},
                      {"book", {{"pk", budget.book.pk}, {"title", budget.book.title}}},
                      {"inheritRemaining", budget.inheritRemaining},
                      {"monivaAmount", budget.monivaAmount},
                      {"leftAmount", budget.leftAmount},
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

void confirmDelete(Session& session, bool yes, const CommandError& why) {
  if (yes) return;
  if (!isTerminal(STDIN_FILENO) || !session.terminal().errIsTerminal) throw why;
  session.terminal().err << session.text("Are you sure to delete?") << " [y/N] " << std::flush;
  std::string word;
  std::getline(std::cin, word);
  if (!isSameWord(word, "y") && !isSameWord(word, "yes") && !isSameWord(word, session.text("yes"))) {
    throw refused("nothing was deleted");
  }
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
