#include <algorithm>
#include <boost/json.hpp>

#include "reports/budget_historical_remaining.h"
#include "ui/cli/amount_typed.h"
#include "ui/cli/commands/budget_commands.h"
#include "ui/cli/commands/category_commands.h"
#include "ui/cli/confirm.h"
#include "ui/cli/csv_out.h"
#include "ui/cli/records.h"
#include "ui/cli/text_width.h"

namespace moniva {
namespace {

struct BudgetHistoryOptions {
  std::string book;
  std::string month;
  std::string amount;
  AmountOptions amounts;
  CarryOptions carry;
  bool fromHereOn = false;
  bool yes = false;
  bool csv = false;
};

boost::json::array jsonOf(Session& session, const std::vector<BudgetMonth>& months) {
  boost::json::array list;
  for (const auto& month : months) {
    list.push_back({{"year", month.year},
                    {"month", month.month},
                    {"title", month.title},
                    {"beginDate", isoBegin(session, month.beginDate)},
                    {"endDate", isoEnd(session, month.endDate)},
                    {"amount", month.amount},
                    {"expense", month.expense},
                    {"rollover", month.rollover},
                    {"remaining", month.remaining},
                    {"inheritRemaining", month.inheritRemaining},
                    {"isOwn", month.isOwn},
                    {"isCurrent", month.isCurrent}});
  }
  return list;
}

std::vector<BudgetMonth> historyOf(Session& session, const MonivaAccount& book) {
  auto months = done(BudgetHistoricalRemaining(book).months());
  if (months.empty()) {
    throw refused("'{}' has no history of budgets; a monthly budget begins one: {}", printable(book.title),
                  budgetCommand(session, book, "set AMOUNT"));
  }
  return months;
}

void showHistory(Session& session, const BudgetHistoryOptions& options) {
  const auto book = bookNamed(session, options.book);
  const auto months = historyOf(session, book);
  if (options.csv) return printCsv(session, jsonOf(session, months));
  if (session.options().json) return session.printJson(jsonOf(session, months));
  session.out() << session.style().bold(
                       fmt::format("{} · {}", printable(book.title), session.text("Budget history")))
                << "  " << session.style().dim(book.currency) << "\n\n";
  printBudgetMonths(session, book, months, session.text("Month"));
  if (!book.budgetEnabled) {
    session.out() << session.style().dim(session.text("The budget is switched off now.")) << '\n';
  }
}

/// The month as the history has it by now.
BudgetMonth monthInHistory(Session& session, const MonivaAccount& book, const NamedMonth& which) {
  for (auto& month : historyOf(session, book)) {
    if (month.year == which.year && month.month == which.month) return std::move(month);
  }
  throw refused("{} is not in the history of the budget of '{}'", which.text, printable(book.title));
}

/// Changes the history and tells it: with --json as it is then.
void changeHistory(Session& session, MonivaAccount& book, const std::function<std::string()>& work) {
  std::string answer;
  inOneGo(session, [&] {
    answer = work();
    // What follows from it is kept too.
    done(getMainBudget(book));
  });
  if (session.options().json) {
    return session.printJson(jsonOf(session, done(BudgetHistoricalRemaining(book).months())));
  }
  session.answer(answer);
}

/// How many months have an amount of their own, but for that one.
std::int64_t ownMonths(const MonivaAccount& book, const NamedMonth& without = {}) {
  return std::ranges::count_if(done(BudgetHistoricalRemaining(book).months()), [&](const BudgetMonth& month) {
    return month.isOwn && (month.year != without.year || month.month != without.month);
  });
}

std::string carriedToPresent(Session& session, const MonivaAccount& book) {
  const auto months = done(BudgetHistoricalRemaining(book).months());
  if (months.empty()) return {};
  return " " + session.text("Carried into the present month: {}.",
                            session.amounts().format(months.back().rollover, book.currency));
}

/// What the first month of the history is called.
std::string firstMonth(Session& session, const MonivaAccount& book) {
  const auto first = historyOf(session, book).front();
  return monthNamed(session, book, first.year, first.month).text;
}

/// " It brought back the budget of 1 month that was set aside; the history begins with April, 2024."
std::string broughtBack(Session& session, const MonivaAccount& book, std::int64_t months) {
  if (months <= 0) return {};
  return " " + session.count(
                   "It brought back the budget of {} month that was set aside; the history begins with {}.",
                   "It brought back the budgets of {} months that were set aside; the history begins with"
                   " {}.",
                   months, months, firstMonth(session, book));
}

void editMonth(Session& session, const BudgetHistoryOptions& options) {
  const auto carry = options.carry.typed();
  if (options.amount.empty() && !carry) {
    throw notUnderstood("say what to change: the AMOUNT, --carry or --no-carry");
  }
  if (options.fromHereOn && options.amount.empty()) throw notUnderstood("--from-here-on needs an AMOUNT");
  auto book = bookNamed(session, options.book);
  const auto month = budgetMonthTyped(session, book, options.month);
  double amount = 0;
  if (!options.amount.empty()) {
    amount = amountTyped(session, options.amount, book.currency, options.amounts);
  }
  changeHistory(session, book, [&] {
    monthInHistory(session, book, month);
    BudgetHistoricalRemaining history(book);
    const auto before = ownMonths(book, month);
    if (options.fromHereOn) {
      done(calculateHistoryBudgetFrom(book, month.year, month.month, amount));
    } else if (amount > 0) {
      done(history.editAmount(month.year, month.month, amount));
    }
    if (carry) done(history.editInherit(month.year, month.month, *carry));
    const auto now = monthInHistory(session, book, month);
    const auto budget = session.amounts().format(now.amount, book.currency);
    const auto left = session.amounts().format(now.remaining, book.currency);
    return (options.fromHereOn
                ? session.text("The budget from {} on is {}; {} is left of that month.", month.text, budget,
                               left)
                : session.text("The budget of {} is {}; {} is left of it.", month.text, budget, left)) +
           (carry ? " " + (*carry ? session.text("That goes into the next month.")
                                  : session.text("That is not carried on."))
                  : std::string()) +
           broughtBack(session, book, ownMonths(book, month) - before) + carriedToPresent(session, book);
  });
}

void deleteMonth(Session& session, const BudgetHistoryOptions& options) {
  auto book = bookNamed(session, options.book);
  const auto which = budgetMonthTyped(session, book, options.month);
  const auto month = monthInHistory(session, book, which);
  if (!month.isOwn) {
    throw refused("{} has no amount of its own to delete: that of an earlier month goes on", which.text);
  }
  const auto amount = session.amounts().format(month.amount, book.currency);
  confirmDelete(session, options.yes,
                refused("this would delete the amount of {}: {}; if so, say --yes", which.text, amount));
  changeHistory(session, book, [&] {
    done(BudgetHistoricalRemaining(book).deleteMonth(which.year, which.month));
    return session.text("Deleted the amount of {}: {}.", which.text, amount) +
           carriedToPresent(session, book);
  });
}

void restartFrom(Session& session, const BudgetHistoryOptions& options) {
  auto book = bookNamed(session, options.book);
  const auto month = budgetMonthTyped(session, book, options.month);
  changeHistory(session, book, [&] {
    monthInHistory(session, book, month);
    done(BudgetHistoricalRemaining(book).recalculateFrom(month.year, month.month));
    return session.text("The remainder is recalculated starting from {}, into which nothing is carried.",
                        month.text) +
           carriedToPresent(session, book) + " " +
           session.text("To bring back what was before: {}", budgetCommand(session, book, "history restore"));
  });
}

void restoreHistory(Session& session, const BudgetHistoryOptions& options) {
  auto book = bookNamed(session, options.book);
  changeHistory(session, book, [&] {
    const auto before = ownMonths(book);
    done(BudgetHistoricalRemaining(book).restore());
    if (!book.budgetEnabled) done(setBudgetOpened(book, true));
    const auto added = ownMonths(book) - before;
    if (added <= 0) throw refused("nothing of the history of '{}' is set aside", printable(book.title));
    return session.count("Restored the budget of {} month; the history begins with {}.",
                         "Restored the budgets of {} months; the history begins with {}.", added, added,
                         firstMonth(session, book)) +
           carriedToPresent(session, book);
  });
}

}  // namespace

void printBudgetMonths(Session& session, const MonivaAccount& book, std::span<const BudgetMonth> months,
                       const std::string& heading) {
  const auto plain = [&](double amount) { return session.amounts().formatPlain(amount, book.currency); };
  const auto inkOf = [](double amount) { return amount < 0 ? ink::red : ink::plain; };
  std::size_t titles = displayWidth(heading);
  for (const auto& month : months) titles = std::max(titles, displayWidth(month.title));
  constexpr std::size_t kFigures = 46;
  const auto cells = cellsForBar(session, titles + kFigures);
  Table table({{.title = heading, .isWhole = true},
               {.title = session.text("Budget"), .align = Align::right},
               {.title = session.text("Expense"), .align = Align::right},
               {.title = session.text("Rollover"), .align = Align::right},
               {.title = session.text("Left"), .align = Align::right},
               {.title = ""}});
  for (const auto& month : months) {
    table.addRow({Cell(month.title, month.isCurrent ? ink::bold : ink::plain),
                  Cell(plain(month.amount), month.isOwn ? ink::plain : ink::dim), plain(month.expense),
                  Cell(plain(month.rollover), inkOf(month.rollover)),
                  Cell(plain(month.remaining), inkOf(month.remaining)),
                  spentBar(month.expense, month.amount, cells)});
  }
  session.out() << table.render(session.style(), session.width());
}

void addBudgetHistoryCommands(CommandLine& line, CLI::App& budget,
                              const std::shared_ptr<const BudgetShowOptions>& above) {
  CLI::App* history = line.add(budget, "history");
  auto shown = std::make_shared<BudgetHistoryOptions>();
  const auto addBook = [](CLI::App& command, BudgetHistoryOptions& options) {
    command.add_option("-b,--book", options.book, "The book (else the current book)")
        ->type_name("NAME")
        ->check(notEmpty());
  };
  addBook(*history, *shown);
  addCsv(*history, shown->csv);
  line.onRun(history, [shown, above](Session& session) {
    shown->book = bookBelow(*above, shown->book);
    showHistory(session, *shown);
  });
  const auto command = [&](const char* name, void (*run)(Session&, const BudgetHistoryOptions&),
                           bool ofMonth) {
    CLI::App* added = line.add(*history, name);
    auto options = std::make_shared<BudgetHistoryOptions>();
    if (ofMonth) {
      added->add_option("MONTH", options->month, "The month: 2024-03")->required()->check(notEmpty());
    }
    addBook(*added, *options);
    line.onRun(added, [options, shown, above, run](Session& session) {
      if (shown->csv)
        throw notUnderstood("--csv is for lists: moniva budget show --all, moniva budget history");
      options->book = bookBelow(*above, options->book.empty() ? shown->book : options->book);
      run(session, *options);
    });
    return std::make_pair(added, options);
  };
  const auto [edit, edited] = command("edit", editMonth, true);
  edit->add_option("AMOUNT", edited->amount, "The new amount, or a sum such as 300+50")->check(notEmpty());
  edit->add_flag("--from-here-on", edited->fromHereOn, "All later months have that amount too");
  edited->carry.addTo(*edit);
  addRoundOption(*edit, edited->amounts);
  const auto [deleted, deletion] = command("delete", deleteMonth, true);
  deleted->add_flag("--yes", deletion->yes, "Delete it indeed, without being asked");
  command("restart", restartFrom, true);
  command("restore", restoreHistory, false);
}

}  // namespace moniva
