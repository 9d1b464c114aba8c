#include <algorithm>
#include <boost/json.hpp>
#include <functional>
#include <limits>

#include "calendar/date_texts.h"
#include "ui/cli/commands/budget_commands.h"
#include "ui/cli/csv_out.h"
#include "ui/cli/records.h"
#include "ui/cli/report_target.h"
#include "ui/cli/text_width.h"

namespace moniva {
namespace {

Ink inkOfLeft(double left) {
  return left < 0 ? ink::red : ink::plain;
}

/// What is left in truth is not in `leftAmount`: something was carried in, or instalments were counted twice.
bool isLeftElsewhere(const BookBudget& budget) {
  return budget.lastMonthRolloverAmount != 0 || budget.installmentsCountedTwice != 0;
}

/// What may be spent today.
double forToday(Session& session, const BookBudget& budget) {
  if (!isLeftElsewhere(budget)) return budget.todayAvailableAmount;
  const auto& calendar = session.calendar();
  const auto days = calendar.dayNumber(budget.budgetEndDate) - calendar.dayNumber(session.now()) + 1;
  return budget.availableAmount() / static_cast<double>(std::max<std::int64_t>(days, 1));
}

/// One budget on a screen.
class BudgetPage {
 public:
  BudgetPage(Session& session, const BookBudget& budget)
      : session_(session), budget_(budget), isCurrent_(budget.isCurrent()) {}

  void print() {
    const auto& style = session_.style();
    const auto& currency = budget_.book.currency;
    const auto period = periodText(session_, {budget_.budgetBeginDate, budget_.budgetEndDate});
    session_.out() << style.bold(fmt::format(
                          "{} · {}", printable(budget_.book.title),
                          budget_.isMonthly() ? session_.text("Budget of {}", monthOf(session_, budget_).text)
                                              : session_.text("One-time budget")))
                   << "  " << style.dim(fmt::format("{}, {}", currency, period)) << "\n\n";
    printFigures();
    printTruth();
    printCategories();
  }

 private:
  std::string plain(double amount) const {
    return session_.amounts().formatPlain(amount, budget_.book.currency);
  }
  std::string money(double amount) const { return session_.amounts().format(amount, budget_.book.currency); }
  void printFigures() {
    Table table({{.title = ""},
                 {.title = "", .align = Align::right},
                 {.title = "", .align = Align::right},
                 {.title = ""}});
    const auto row = [&](const std::string& name, double amount, const Ink& ink = {}) {
      table.addRow({Cell(name, ink::dim), Cell(plain(amount), ink)});
    };
    const double carried = budget_.lastMonthRolloverAmount;
    row(session_.text("Budget Amount"), budget_.amount);
    if (budget_.isMonthly() && (carried != 0 || budget_.inheritRemaining)) {
      row(session_.text("Carried in"), carried, inkOfLeft(carried));
    }
    // A row of another program may have no amount.
    table.addRow({Cell(session_.text("Spent"), ink::dim), plain(budget_.monivaAmount),
                  budget_.amount > 0
                      ? session_.amounts().formatPercent(100 * budget_.monivaAmount / budget_.amount, false)
                      : std::string(),
                  spentBar(budget_.monivaAmount, budget_.amount, cellsForBar(session_, 52))});
    if (budget_.dividedAmount != 0) row(session_.text("of it after today"), budget_.dividedAmount);
    if (budget_.recurringAmount != 0) {
      table.addRow({Cell(session_.text("Still expected"), ink::dim), plain(budget_.recurringAmount), Cell(),
                    Cell(session_.text("series, pending, instalments"), ink::dim)});
    }
    if (budget_.installmentAmount != 0) {
      row(budget_.installmentsCountedTwice != 0 ? session_.text("of it instalments")
                                                : session_.text("Instalments still due"),
          budget_.installmentAmount);
    }
    row(session_.text("Left"), budget_.leftAmount,
        (isLeftElsewhere(budget_) && budget_.leftAmount > 0 ? Ink(ink::yellow)
                                                            : inkOfLeft(budget_.leftAmount)) |
            ink::bold);
    if (isCurrent_ && !isLeftElsewhere(budget_)) {
      row(session_.text("For today"), budget_.todayAvailableAmount, inkOfLeft(budget_.todayAvailableAmount));
    }
    session_.out() << table.render(session_.style(), session_.width());
  }

  /// What the figures do not say by themselves.
  void printTruth() {
    std::vector<std::string> lines;
    if (isLeftElsewhere(budget_)) {
      session_.out() << session_.style().paint(inkOfLeft(budget_.availableAmount()), truthText()) << '\n';
    }
    if (budget_.isMonthly()) lines.push_back(carryText(session_, budget_.inheritRemaining));
    if (!budget_.isMonthly() && !isCurrent_ && budget_.budgetBeginDate > session_.now()) {
      lines.push_back(session_.text("It has not begun."));
    } else if (!budget_.isMonthly() && !isCurrent_) {
      lines.push_back(session_.text("It is over; to make room for the monthly one: {}",
                                    budgetCommand(session_, budget_.book, "delete")));
    }
    for (const auto& line : lines) session_.out() << session_.style().dim(line) << '\n';
  }

  std::string truthText() const {
    const double left = budget_.availableAmount();
    if (left < 0) {
      return session_.text("In all {} too much is gone, carried over and everything counted once.",
                           money(-left));
    }
    if (!isCurrent_ || left == 0) {
      return session_.text("In all {} is left, carried over and everything counted once.", money(left));
    }
    return session_.text("In all {} is left, carried over and everything counted once: {} a day.",
                         money(left), money(forToday(session_, budget_)));
  }

  void printCategories() {
    const auto list = done(allocations(budget_));
    if (list.empty()) return;
    std::size_t used = 44;
    for (const auto& given : list) used = std::max(used, 44 + displayWidth(given.category.cateString()));
    const auto cells = cellsForBar(session_, used);
    Table table({{.title = session_.text("Category")},
                 {.title = session_.text("Budget"), .align = Align::right},
                 {.title = session_.text("Spent"), .align = Align::right},
                 {.title = session_.text("Left"), .align = Align::right},
                 {.title = ""}});
    for (const auto& given : list) {
      const auto title = printable(given.category.cateString());
      table.addRow(
          {given.category.deleted == 0 ? Cell(title) : Cell(session_.text("{} (deleted)", title), ink::dim),
           plain(given.categoryBudgetAmount), plain(given.spent),
           Cell(plain(given.left), inkOfLeft(given.left)),
           spentBar(given.spent, given.categoryBudgetAmount, cells)});
    }
    const double sum = done(budget_.getAllocateValue());
    table.addTotal({session_.text("Allocated"), plain(sum)});
    session_.out() << '\n' << table.render(session_.style(), session_.width());
    if (sum > budget_.amount) {
      session_.out() << session_.style().yellow(session_.text("The categories have {} more than the budget.",
                                                              money(sum - budget_.amount)))
                     << '\n';
    }
  }

  Session& session_;
  const BookBudget& budget_;
  bool isCurrent_;
};

BookBudget budgetOf(Session& session, MonivaAccount& book, const std::string& typedMonth) {
  if (typedMonth.empty()) return budgetInForce(session, book);
  const auto month = budgetMonthTyped(session, book, typedMonth);
  auto budget = done(getMonthlyBudgetForYear(book, month.year, month.month));
  if (!budget) throw refused("'{}' has no budget of {}", printable(book.title), month.text);
  done(budget->calculateRemaining());
  return *budget;
}

/// One column of the list of all budgets: its heading, and under it a cell for each budget.
struct BudgetColumn {
  Column heading;
  std::vector<Cell> cells;

  std::size_t width() const {
    std::size_t most = displayWidth(heading.title);
    for (const Cell& cell : cells) most = std::max(most, displayWidth(cell.text));
    return most + 2;
  }
  bool isBlank() const {
    return std::ranges::all_of(cells, [](const Cell& cell) { return cell.text.empty(); });
  }
};

void printAllBudgets(Session& session, const std::vector<BookBudget>& budgets) {
  const std::string period = session.text("Period");
  const std::string carriedIn = session.text("Carried in");
  std::vector<BudgetColumn> columns;
  const auto add = [&](Column heading, const std::function<Cell(const BookBudget&)>& cellOf) {
    auto& column = columns.emplace_back(BudgetColumn{std::move(heading), {}});
    for (const auto& budget : budgets) column.cells.push_back(cellOf(budget));
  };
  const auto addAmount = [&](std::string title,
                             const std::function<std::optional<double>(const BookBudget&)>& of,
                             bool isInk = false) {
    add({.title = std::move(title), .align = Align::right}, [&](const BookBudget& budget) {
      const auto amount = of(budget);
      if (!amount) return Cell();
      return Cell(session.amounts().format(*amount, budget.book.currency),
                  isInk ? inkOfLeft(*amount) : Ink(ink::plain));
    });
  };
  add({.title = session.text("Book")},
      [](const BookBudget& budget) { return Cell(printable(budget.book.title)); });
  add({.title = period}, [&](const BookBudget& budget) {
    return Cell(periodText(session, {budget.budgetBeginDate, budget.budgetEndDate}), ink::dim);
  });
  addAmount(session.text("Budget"), [](const BookBudget& budget) { return budget.amount; });
  addAmount(carriedIn, [](const BookBudget& budget) {
    const double carried = budget.lastMonthRolloverAmount;
    return carried == 0 ? std::nullopt : std::optional(carried);
  });
  addAmount(session.text("Spent"), [](const BookBudget& budget) { return budget.monivaAmount; });
  addAmount(
      session.text("Left"), [](const BookBudget& budget) { return budget.availableAmount(); }, true);
  addAmount(
      session.text("For today"),
      [&](const BookBudget& budget) {
        return budget.isCurrent() ? std::optional(forToday(session, budget)) : std::nullopt;
      },
      true);

  std::erase_if(columns, [](const BudgetColumn& column) { return column.isBlank(); });
  const auto used = [&](std::size_t mostOfBook = std::numeric_limits<std::size_t>::max()) {
    std::size_t sum = std::min(columns.front().width(), mostOfBook);
    for (std::size_t i = 1; i < columns.size(); ++i) sum += columns[i].width();
    return sum;
  };
  const auto dropIfPast = [&](std::size_t cells, const std::string& title) {
    if (cells - 2 <= session.width()) return;
    std::erase_if(columns, [&](const BudgetColumn& column) { return column.heading.title == title; });
  };
  // The days of a budget are there where there is room: most end with the month. What was carried in is in
  // what is left, and goes before the names are cut to nothing.
  constexpr std::size_t kFewCells = 16;
  dropIfPast(used(), period);
  dropIfPast(used(kFewCells), carriedIn);
  const auto cells = cellsForBar(session, used());
  add({.title = ""},
      [&](const BookBudget& budget) { return spentBar(budget.monivaAmount, budget.amount, cells); });

  std::vector<Column> headings;
  for (const auto& column : columns) headings.push_back(column.heading);
  Table table(std::move(headings));
  for (std::size_t i = 0; i < budgets.size(); ++i) {
    std::vector<Cell> row;
    for (const auto& column : columns) row.push_back(column.cells[i]);
    table.addRow(std::move(row));
  }
  session.out() << table.render(session.style(), session.width());
}

void showAllBudgets(Session& session, const BudgetShowOptions& options) {
  std::vector<BookBudget> budgets;
  for (auto& book : MonivaAccount::list(session.root(), kBookKind)) {
    if (const auto budget = done(getMainBudget(book))) budgets.push_back(*budget);
  }
  if (session.options().json || options.csv) {
    boost::json::array list;
    for (const auto& budget : budgets) list.push_back(jsonOf(session, budget));
    return options.csv ? printCsv(session, list) : session.printJson(list);
  }
  if (budgets.empty()) {
    return session.say(session.text("No book has a budget. Set one with: moniva budget set AMOUNT"));
  }
  printAllBudgets(session, budgets);
}

void showBudget(Session& session, const BudgetShowOptions& options) {
  if (options.all) {
    if (!options.book.empty() || !options.month.empty()) {
      throw notUnderstood("--all shows the budgets in force of all books; leave out --book and --month");
    }
    return showAllBudgets(session, options);
  }
  if (options.csv) throw notUnderstood("--csv goes with --all");
  auto book = bookNamed(session, options.book);
  const auto budget = budgetOf(session, book, options.month);
  if (session.options().json) return session.printJson(jsonOf(session, budget));
  BudgetPage(session, budget).print();
}

}  // namespace

std::shared_ptr<const BudgetShowOptions> addBudgetViewCommands(CommandLine& line, CLI::App& budget) {
  const auto addOptions = [](CLI::App& command) {
    auto options = std::make_shared<BudgetShowOptions>();
    command.add_option("-b,--book", options->book, "The book (else the current book)")
        ->type_name("NAME")
        ->check(notEmpty());
    command.add_option("--month", options->month, "Of that month instead: 2024-03")
        ->type_name("MONTH")
        ->check(notEmpty());
    command.add_flag("--all", options->all, "A line for each book that has a budget");
    command.add_flag("--csv", options->csv, "With --all, print the rows as comma-separated values");
    return options;
  };
  const auto above = addOptions(budget);
  line.onRun(&budget, [above](Session& session) { showBudget(session, *above); });
  CLI::App* show = line.add(budget, "show");
  const auto options = addOptions(*show);
  line.onRun(show, [above, options](Session& session) {
    BudgetShowOptions asked = *options;
    if (asked.book.empty()) asked.book = above->book;
    if (asked.month.empty()) asked.month = above->month;
    asked.all = asked.all || above->all;
    asked.csv = asked.csv || above->csv;
    showBudget(session, asked);
  });
  return above;
}

}  // namespace moniva
