#include "ui/cli/commands/budget_commands.h"

#include <algorithm>
#include <boost/json.hpp>

#include "calendar/parse_date.h"
#include "reports/budget_historical_remaining.h"
#include "ui/cli/amount_typed.h"
#include "ui/cli/categories.h"
#include "ui/cli/commands/category_commands.h"
#include "ui/cli/confirm.h"
#include "ui/cli/records.h"
#include "ui/cli/report_target.h"
#include "ui/cli/text_width.h"

namespace moniva {
namespace {

struct BudgetOptions {
  std::string amount;
  std::string book;
  std::string category;
  std::string month;
  std::string from;
  std::string to;
  AmountOptions amounts;
  CarryOptions carry;
  bool yes = false;

  bool hasRange() const { return !from.empty() || !to.empty(); }
};

/// The first and the last day of --from and --to: of those missing the other's month ends, or today begins.
ParsedPeriod rangeTyped(Session& session, const MonivaAccount& book, const BudgetOptions& options,
                        const std::optional<ParsedPeriod>& before = {}) {
  const auto& calendar = session.calendar();
  const auto part = [&](const std::string& text) { return periodTyped(session, book, text); };
  ParsedPeriod range = before.value_or(ParsedPeriod{session.now(), session.now()});
  if (!options.from.empty()) range.first = part(options.from).first;
  if (!options.to.empty()) {
    range.last = part(options.to).last;
  } else if (!before) {
    range.last = BookPeriods(calendar, book.periodStarts(), session.now()).lastDateOfMonth(range.first);
  }
  range = {calendar.dateBegin(range.first), calendar.dateBegin(range.last)};
  if (range.last < range.first) {
    throw notUnderstood("the budget would end before it begins: {}", periodText(session, range));
  }
  return range;
}

void requireAlone(const BudgetOptions& options) {
  if (!options.category.empty() && (options.hasRange() || !options.month.empty() || options.carry.typed())) {
    throw notUnderstood("what a category has goes with the budget of the book: --category stands alone");
  }
  if (options.hasRange() && options.carry.typed()) {
    throw notUnderstood("a one-time budget has no next month to carry what is left into");
  }
  if (options.hasRange() && !options.month.empty()) {
    throw notUnderstood("--month is for monthly budgets, --from and --to for a one-time budget");
  }
}

/// " The categories have €450.00 together, €50.00 more than the budget."
std::string allocatedNote(Session& session, MonivaAccount& book) {
  const auto budget = done(getMainBudget(book));
  if (!budget) {
    return " " + (done(budgetWasSwitchedOff(book))
                      ? session.text("That budget is switched off; to switch it on: {}",
                                     budgetCommand(session, book, "on"))
                      : session.text("The book itself has none yet; to set one: {}",
                                     budgetCommand(session, book, "set AMOUNT")));
  }
  const double sum = done(budget->getAllocateValue());
  if (sum <= budget->amount) return {};
  return " " + session.text("The categories have {} together, {} more than the budget.",
                            session.amounts().format(sum, book.currency),
                            session.amounts().format(sum - budget->amount, book.currency));
}

void setCategory(Session& session, MonivaAccount& book, const BudgetOptions& options, double amount) {
  const auto category = categoryTyped(session, options.category, kind::kExpense);
  std::string also;
  inOneGo(session, [&] {
    done(updateBudget(category, book, amount));
    also = allocatedNote(session, book);
  });
  if (session.options().json) {
    const auto budget = done(getMainBudget(book));
    return session.printJson(jsonOf(done(getBudget(category, budget ? *budget : BookBudget(book)))));
  }
  session.answer(session.text("'{}' has {} of the budget of '{}' now.", category.cateString(),
                              session.amounts().format(amount, book.currency), book.title) +
                 also);
}

/// What goes on after the months that were set: the next one with an amount of its own.
std::string laterNote(Session& session, const MonivaAccount& book, const NamedMonth& month) {
  for (const auto& later : done(BudgetHistoricalRemaining(book).months())) {
    if (later.isOwn && std::pair(later.year, later.month) > std::pair(month.year, month.month)) {
      return " " + session.text("From {} on it is {}, as it was.",
                                monthNamed(session, book, later.year, later.month).text,
                                session.amounts().format(later.amount, book.currency));
    }
  }
  return {};
}

/// One that waits to be switched on is not passed over: it is there again before another takes its place.
void takeUpBudget(MonivaAccount& book) {
  if (done(budgetWasSwitchedOff(book))) done(setBudgetOpened(book, true));
}

std::string setMonthly(Session& session, MonivaAccount& book, const BudgetOptions& options, double amount) {
  const auto month =
      options.month.empty() ? presentMonth(session, book) : budgetMonthTyped(session, book, options.month);
  takeUpBudget(book);
  std::string also;
  if (const auto oneTime = done(getOneTimeBudget(book))) {
    also =
        " " + session.text("It takes the place of the one-time budget, {}.", budgetText(session, *oneTime));
    auto gone = *oneTime;
    done(gone.delete_());
  }
  auto kept = done(getMonthlyBudgetForYear(book, month.year, month.month));
  BookBudget budget = kept ? *kept : BookBudget(book);
  budget.year = month.year;
  budget.month = month.month;
  budget.amount = amount;
  budget.inheritRemaining = options.carry.typed().value_or(budget.inheritRemaining);
  done(kept ? budget.update() : budget.add());
  if (!book.budgetEnabled) done(setBudgetOpened(book, true));
  return session.text("The budget of '{}' is {} from {} on.", book.title, budgetText(session, budget),
                      month.text) +
         " " + carryText(session, budget.inheritRemaining) + laterNote(session, book, month) + also;
}

std::string setOneTime(Session& session, MonivaAccount& book, const BudgetOptions& options, double amount) {
  const auto range = rangeTyped(session, book, options);
  takeUpBudget(book);
  const auto monthly = book.budgetEnabled ? done(getMonthlyBudget(book)) : std::nullopt;
  const auto kept = done(getOneTimeBudget(book));
  BookBudget budget = kept ? *kept : BookBudget(book);
  budget.type = kind::kOneTimeBudget;
  budget.year = budget.month = 0;
  budget.inheritRemaining = false;
  budget.amount = amount;
  budget.budgetBeginDate = range.first;
  budget.budgetEndDate = range.last;
  done(kept ? budget.update() : budget.add());
  if (!book.budgetEnabled) done(setBudgetOpened(book, true));
  std::string also;
  if (kept)
    also = " " + session.text("It takes the place of the one-time budget, {}.", budgetText(session, *kept));
  if (monthly) {
    also += " " + session.text("The monthly one of {} waits until this one is deleted.",
                               session.amounts().format(monthly->amount, book.currency));
  }
  return session.text("The one-time budget of '{}' is {}.", book.title, budgetText(session, budget)) + also;
}

/// Changes the budget of the book and tells it: with --json as it is then, null for none.
void changeBudget(Session& session, MonivaAccount& book, const std::function<std::string()>& work) {
  std::string answer;
  inOneGo(session, [&] { answer = work(); });
  if (session.options().json) return session.printJson(jsonOfMainBudget(session, book));
  session.answer(answer);
}

void setBudget(Session& session, const BudgetOptions& options) {
  requireAlone(options);
  auto book = bookNamed(session, options.book, Meant::open);
  const double amount = amountTyped(session, options.amount, book.currency, options.amounts);
  if (!options.category.empty()) return setCategory(session, book, options, amount);
  changeBudget(session, book, [&] {
    const auto answer = options.hasRange() ? setOneTime(session, book, options, amount)
                                           : setMonthly(session, book, options, amount);
    return answer + allocatedNote(session, book);
  });
}

/// A category that has been given something, also one that is deleted; ends the command for others.
MVCategory categoryWithBudget(Session& session, const MonivaAccount& book, const std::string& name) {
  const auto list = done(allocations(BookBudget(book)));
  const auto gone = std::ranges::find_if(list, [&](const CategoryBudget& given) {
    const auto& category = given.category;
    return category.deleted != 0 && (category.cateString() == name || pathOf(category) == name);
  });
  if (gone != list.end()) return gone->category;
  const auto category = categoryTyped(session, name, kind::kExpense);
  if (std::ranges::none_of(list, [&](const auto& given) { return given.category.pk == category.pk; })) {
    throw refused("'{}' has no part of the budget of '{}'", category.cateString(), printable(book.title));
  }
  return category;
}

void editBudget(Session& session, const BudgetOptions& options) {
  requireAlone(options);
  const auto carry = options.carry.typed();
  if (options.amount.empty() && (!options.category.empty() || (!carry && !options.hasRange()))) {
    throw notUnderstood("say what to change, such as: moniva budget edit 450");
  }
  auto book = bookNamed(session, options.book, Meant::open);
  double amount = 0;
  if (!options.amount.empty()) {
    amount = amountTyped(session, options.amount, book.currency, options.amounts);
  }
  if (!options.category.empty()) {
    categoryWithBudget(session, book, options.category);
    return setCategory(session, book, options, amount);
  }
  changeBudget(session, book, [&] {
    auto budget = budgetInForce(session, book);
    if (budget.isMonthly() && options.hasRange()) {
      throw refused("the budget of '{}' is monthly; a one-time budget is set with: {}", printable(book.title),
                    budgetCommand(session, book, "set AMOUNT --from DAY --to DAY"));
    }
    if (!budget.isMonthly() && carry) {
      throw refused("the budget of '{}' is a one-time budget, with no next month to carry what is left into",
                    printable(book.title));
    }
    if (amount > 0) budget.amount = amount;
    if (carry) budget.inheritRemaining = *carry;
    if (options.hasRange()) {
      const auto range =
          rangeTyped(session, book, options, ParsedPeriod{budget.budgetBeginDate, budget.budgetEndDate});
      budget.budgetBeginDate = range.first;
      budget.budgetEndDate = range.last;
    }
    done(budget.update());
    return session.text("The budget of '{}' is {} now.", book.title, budgetText(session, budget)) +
           (budget.isMonthly() ? " " + carryText(session, budget.inheritRemaining) : std::string()) +
           allocatedNote(session, book);
  });
}

std::string deleteMonthly(Session& session, MonivaAccount& book) {
  const auto month = presentMonth(session, book);
  const auto months = done(BudgetHistoricalRemaining(book).months()).size();
  // What was before can come back; what is in force now goes for good.
  done(BudgetHistoricalRemaining(book).recalculateFrom(month.year, month.month));
  auto budget = budgetInForce(session, book);
  const auto text = budgetText(session, budget);
  done(budget.delete_());
  done(setBudgetOpened(book, false));
  const auto answer = session.text("Deleted the budget of '{}', {}.", book.title, text);
  if (months < 2) return answer;
  return answer + " " +
         session.text("To bring back the budgets of earlier months: {}",
                      budgetCommand(session, book, "history restore"));
}

std::string deleteOneTime(Session& session, MonivaAccount& book, BookBudget budget) {
  const auto answer =
      session.text("Deleted the one-time budget of '{}', {}.", book.title, budgetText(session, budget));
  done(budget.delete_());
  // A monthly one that is not there any more is not to come back by itself.
  if (done(BudgetHistoricalRemaining(book).months()).empty()) {
    done(setBudgetOpened(book, false));
    return answer;
  }
  return answer + " " + session.text("It is {} again.", budgetText(session, budgetInForce(session, book)));
}

void deleteBudget(Session& session, const BudgetOptions& options) {
  auto book = bookNamed(session, options.book);
  if (!options.category.empty()) {
    const auto category = categoryWithBudget(session, book, options.category);
    confirmDelete(session, options.yes,
                  refused("this would take the part of '{}' of the budget of '{}' away; if so, say --yes",
                          category.cateString(), printable(book.title)));
    return changeBudget(session, book, [&] {
      done(removeBudget(category, book));
      return session.text("'{}' has no part of the budget of '{}' any more.", category.cateString(),
                          book.title);
    });
  }
  const auto asked = budgetInForce(session, book);
  confirmDelete(session, options.yes,
                refused("this would delete the budget of '{}', {}; if so, say --yes", printable(book.title),
                        budgetText(session, asked)));
  changeBudget(session, book, [&] {
    // Another device may have changed it while the person was asked.
    const auto budget = budgetInForce(session, book);
    return budget.isMonthly() ? deleteMonthly(session, book) : deleteOneTime(session, book, budget);
  });
}

void switchBudget(Session& session, const BudgetOptions& options, bool opened) {
  auto book = bookNamed(session, options.book);
  changeBudget(session, book, [&] {
    const auto title = printable(book.title);
    if (opened == book.budgetEnabled) {
      const auto budget = done(getMainBudget(book));
      if (opened && budget) throw refused("the budget of '{}' is on already", title);
      if (!opened && !budget) throw refused("the budget of '{}' is off already", title);
    }
    done(setBudgetOpened(book, opened));
    if (!opened) {
      return session.text("The budget of '{}' is off; to bring it back: {}", book.title,
                          budgetCommand(session, book, "on"));
    }
    const auto budget = done(getMainBudget(book));
    if (!budget) {
      throw refused("'{}' has no budget; set one with: {}", title,
                    budgetCommand(session, book, "set AMOUNT"));
    }
    return session.text("The budget of '{}' is on: {}.", book.title, budgetText(session, *budget));
  });
}

}  // namespace

void addBudgetCommands(CommandLine& line) {
  CLI::App* budget = line.add(line.app(), "budget");
  const auto above = addBudgetViewCommands(line, *budget);
  const auto command = [&](const char* name, std::function<void(Session&, const BudgetOptions&)> run) {
    CLI::App* added = line.add(*budget, name);
    auto options = std::make_shared<BudgetOptions>();
    added->add_option("-b,--book", options->book, "The book (else the current book)")
        ->type_name("NAME")
        ->check(notEmpty());
    line.onRun(added, [options, above, run](Session& session) {
      options->book = bookBelow(*above, options->book);
      run(session, *options);
    });
    return std::make_pair(added, options);
  };
  const auto addCategory = [](CLI::App& app, BudgetOptions& options) {
    app.add_option("-c,--category", options.category, "What this category has of it instead: Food/Bakery")
        ->type_name("CATEGORY")
        ->check(notEmpty());
  };
  const auto addFields = [&](CLI::App& app, BudgetOptions& options) {
    options.carry.addTo(app);
    app.add_option("--from", options.from, "First day of a one-time budget (else today)")
        ->type_name("DAY")
        ->check(notEmpty());
    app.add_option("--to", options.to, "Last day of a one-time budget (else the end of that month)")
        ->type_name("DAY")
        ->check(notEmpty());
    addCategory(app, options);
    addRoundOption(app, options.amounts);
  };
  {
    const auto [set, options] = command("set", setBudget);
    set->add_option("AMOUNT", options->amount, "The amount, or a sum such as 300+50")->required();
    set->add_option("--month", options->month, "The month it begins with: 2024-03 (else the present one)")
        ->type_name("MONTH")
        ->check(notEmpty());
    addFields(*set, *options);
  }
  {
    const auto [edit, options] = command("edit", editBudget);
    edit->add_option("AMOUNT", options->amount, "The new amount, or a sum such as 300+50")->check(notEmpty());
    addFields(*edit, *options);
  }
  command("on", [](Session& session, const BudgetOptions& options) { switchBudget(session, options, true); });
  command("off",
          [](Session& session, const BudgetOptions& options) { switchBudget(session, options, false); });
  {
    const auto [removal, options] = command("delete", deleteBudget);
    addCategory(*removal, *options);
    removal->add_flag("--yes", options->yes, "Delete it indeed, without being asked");
  }
  addBudgetHistoryCommands(line, *budget, above);
}

}  // namespace moniva
