#include <unistd.h>

#include <boost/json.hpp>
#include <cerrno>

#include "app/demo_data.h"
#include "platform/posix/host.h"
#include "reports/category_report.h"
#include "reports/transaction_report.h"
#include "ui/cli/bars.h"
#include "ui/cli/command_error.h"
#include "ui/cli/command_line.h"
#include "ui/cli/commands/budget_commands.h"
#include "ui/cli/commands/import_command.h"
#include "ui/cli/commands/report_commands.h"
#include "ui/cli/records.h"
#include "ui/cli/table.h"

namespace moniva {
namespace {

namespace fs = std::filesystem;

/// A folder of its own that goes with the object.
class ThrowAwayFolder {
 public:
  ThrowAwayFolder() {
    const fs::path above = temporaryFolder();
    std::string name = (above / "moniva-demo-XXXXXX").string();
    if (::mkdtemp(name.data()) == nullptr) {
      throw refused("cannot make a folder for the demo in '{}': {}", above.string(),
                    std::generic_category().message(errno));
    }
    path_ = name;
  }
  ~ThrowAwayFolder() {
    std::error_code ignored;
    fs::remove_all(path_, ignored);
  }
  ThrowAwayFolder(const ThrowAwayFolder&) = delete;
  ThrowAwayFolder& operator=(const ThrowAwayFolder&) = delete;
  const fs::path& path() const { return path_; }

 private:
  fs::path path_;
};

void printLargestCategories(Session& session, const MonivaAccount& book, Date from, Date to) {
  const auto root = MVCategory::rootCateForType(session.root(), kind::kExpense);
  const auto categories = done(getSubCategoryReportFor(root, book, from, to));
  Table table({{.title = session.text("Largest categories")},
               {.title = session.text("Records"), .align = Align::right},
               {.title = session.text("Expense"), .align = Align::right},
               {.title = session.text("Share"), .align = Align::right},
               {.title = ""}});
  for (const auto& category : categories.listArray) {
    table.addRow(
        {category.title, fmt::format("{}", category.expenseCount),
         session.amounts().formatPlain(category.expenseAmount, book.currency),
         session.amounts().formatPercent(100 * category.expenseAmount / categories.expenseAmount, false),
         Cell(bar(category.expenseAmount, categories.maxOutSumAmount, 24), ink::dim)});
  }
  session.out() << table.render(session.style(), session.width());
}

void show(Session& session) {
  const auto outcome =
      runImport(session, [&](auto progress) { return insertDemoData(session.root(), std::move(progress)); });
  const MonivaAccount book = bookNamed(session, "Household");
  const BookPeriods periods(session.calendar(), book.periodStarts(), session.now());
  const Date from = periods.firstDateOfFiscalYear(2024);
  const Date to = periods.lastDateOfFiscalYear(2024);
  TransactionReport report(session.root());
  report.setMonivaAccount(book);
  report.setTransactionType(1112);
  report.setBeginDate(from);
  report.setEndDate(to);
  const auto months = done(report.reportByMonth());
  if (session.options().json) return session.printJson(jsonOf(session, months));
  session.answer(session.text(
      "Imported {} records of a household into a store that is thrown away at the end.", outcome.added()));
  session.out() << '\n';
  printPeriods(session, months, book, {.unit = session.text("Month")});
  session.out() << '\n';
  listAccounts(session);
  session.out() << '\n';
  printLargestCategories(session, book, from, to);
  auto budget = done(BudgetHistoricalRemaining(book).months());
  std::erase_if(budget, [](const BudgetMonth& month) { return month.year != 2024 || month.month < 10; });
  if (budget.empty()) return;
  session.out() << '\n';
  printBudgetMonths(session, book, budget, session.text("Month"));
}

void demo(Session& outer) {
  const ThrowAwayFolder folder;
  // The records were made in Berlin; there, and at the end of their last year, the demo shows the same every
  // time.
  GlobalOptions options = outer.options();
  options.data = folder.path().string();
  if (options.timezone.empty()) options.timezone = "Europe/Berlin";
  // Known by now, and what there was to say of it is said.
  if (options.locale.empty()) options.locale = outer.calendar().locale();
  if (options.now.empty()) options.now = "2025-01-01 12:00";
  Session session(options, outer.terminal());
  session.prepare();
  session.launch();
  show(session);
  session.leave();
}

}  // namespace

void addDemoCommand(CommandLine& line) {
  line.onRun(line.add(line.app(), "demo"), demo, false);
}

}  // namespace moniva
