#include <boost/json.hpp>

#include "model/category_rows.h"
#include "reports/used_categories.h"
#include "ui/cli/categories.h"
#include "ui/cli/command_error.h"
#include "ui/cli/commands/category_commands.h"
#include "ui/cli/records.h"
#include "ui/cli/report_target.h"
#include "ui/cli/table.h"

namespace moniva {
namespace {

struct CategoryUseOptions {
  std::string period;
  HolderOptions of;
  std::string book;
  bool income = false;
  bool all = false;
  int type() const { return income ? kind::kIncome : kind::kExpense; }
};

/// One a line, what is below a category behind it; the path where that is not above it.
void printCategories(Session& session, const std::vector<MVCategory>& categories, const std::string& none) {
  if (session.options().json) {
    boost::json::array list;
    for (const auto& category : categories) list.push_back(jsonOf(session, category));
    return session.printJson(list);
  }
  if (categories.empty()) return session.say(none);
  Table table({{.title = session.text("Category")}});
  std::string top;
  for (const auto& category : categories) {
    if (!category.isSubCate()) top = category.pk;
    table.addRow(
        {category.isSubCate() && category.parent == top ? "  " + category.title : category.cateString()});
  }
  session.out() << table.render(session.style(), session.width());
}

void usedCategories(Session& session, const CategoryUseOptions& options) {
  const auto of = options.of.chosen(session);
  const auto period = options.period.empty() ? usualPeriod(session, of, PeriodUnit::day)
                                             : periodTyped(session, of, options.period);
  printCategories(
      session,
      done(options.all ? enabledCategoriesAndUsedCategoriesOf(of, options.type(), period.first, period.last)
                       : usedCategoriesOf(of, options.type(), period.first, period.last)),
      session.text("No category was used from {}.", periodText(session, period)));
}

void recentCategories(Session& session, const CategoryUseOptions& options) {
  const auto book = bookNamed(session, options.book);
  printCategories(session, done(getLatestUsedCategory(book, options.type())),
                  session.text("No category was used in the last ninety days."));
}

void budgetedCategories(Session& session, const CategoryUseOptions& options) {
  const auto book = bookNamed(session, options.book, Meant::groupsToo);
  printCategories(session, done(budgetCategories(book)),
                  session.text("No category has a budget in '{}'.", book.title));
}

}  // namespace

void addCategoryUseCommands(CommandLine& line, CLI::App& category) {
  const auto command = [&](const char* name, void (*run)(Session&, const CategoryUseOptions&)) {
    CLI::App* added = line.add(category, name);
    auto options = std::make_shared<CategoryUseOptions>();
    line.onRun(added, [options, run](Session& session) { run(session, *options); });
    return std::make_pair(added, options);
  };
  constexpr const char* kIncome = toTranslate("Categories of income instead of expenses");
  constexpr const char* kBook = toTranslate("The book (else the current one)");
  {
    const auto [used, options] = command("used", usedCategories);
    used->add_option("PERIOD", options->period,
                     "A year, a month or a day, or two of these joined by \"..\" (else the present month)");
    options->of.addTo(*used);
    used->add_flag("--all", options->all, "And those that are on in the book");
    used->add_flag("--income", options->income, kIncome);
  }
  {
    const auto [recent, options] = command("recent", recentCategories);
    recent->add_option("-b,--book", options->book, kBook)->type_name("NAME");
    recent->add_flag("--income", options->income, kIncome);
  }
  {
    const auto [budgeted, options] = command("budgeted", budgetedCategories);
    budgeted->add_option("-b,--book", options->book, kBook)->type_name("NAME");
  }
}

}  // namespace moniva
