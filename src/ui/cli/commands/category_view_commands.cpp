#include <algorithm>
#include <boost/json.hpp>
#include <map>

#include "calendar/parse_date.h"
#include "model/book_categories.h"
#include "model/category_rows.h"
#include "ui/cli/categories.h"
#include "ui/cli/command_error.h"
#include "ui/cli/commands/category_budgets.h"
#include "ui/cli/commands/category_commands.h"
#include "ui/cli/records.h"

namespace moniva {
namespace {

struct CategoryViewOptions {
  std::string name;
  std::vector<std::string> names;
  std::string word;  ///< a mode, or an account
  std::string from;
  std::string to;
  std::string book;
  bool income = false;
  bool only = false;
  bool none = false;
  int type() const { return income ? kind::kIncome : kind::kExpense; }
};

bool booksDiffer(Session& session) {
  return session.root().objectForKey(kPerBookSetting) == "1";
}

/// Tells a change of where the category is on, with the budgets that went with it.
void tellSwitched(Session& session, const MVCategory& category, CategoryBudgets& budgets,
                  const std::string& line) {
  if (!booksDiffer(session)) tellBooksShare(session);
  if (!session.options().json) return session.answer(line + budgets.lostText());
  auto object = jsonOf(session, category);
  object["lostBudgets"] = budgets.lostJson();
  session.printJson(object);
}

void enableCategory(Session& session, const CategoryViewOptions& options) {
  auto category = categoryTyped(session, options.name, options.type());
  const auto book = bookNamed(session, options.book);
  std::optional<CategoryBudgets> budgets;
  inOneGo(session, [&] {
    budgets.emplace(session, category);
    done(options.only ? category.enabledForBookOnly(book) : category.enabledForBook(book));
  });
  tellSwitched(session, category, *budgets,
               options.only
                   ? session.text("The category '{}' is on in '{}' and off in every other book.",
                                  category.cateString(), book.title)
                   : session.text("The category '{}' is on in '{}'.", category.cateString(), book.title));
}

void disableCategory(Session& session, const CategoryViewOptions& options) {
  auto category = categoryTyped(session, options.name, options.type());
  const auto book = bookNamed(session, options.book);
  std::optional<CategoryBudgets> budgets;
  inOneGo(session, [&] {
    budgets.emplace(session, category);
    done(category.disabledForBook(book));
  });
  category.enabled = false;
  tellSwitched(session, category, *budgets,
               session.text("The category '{}' is off in '{}'.", category.cateString(), book.title));
}

void orderCategories(Session& session, const CategoryViewOptions& options) {
  std::vector<MVCategory> list;
  for (const auto& name : options.names) {
    auto category = categoryTyped(session, name, options.type());
    if (!list.empty() && category.parent != list.front().parent) {
      throw refused("'{}' and '{}' are not side by side: order the categories of one parent",
                    pathOf(list.front()), pathOf(category));
    }
    if (std::ranges::find(list, category.pk, &MVCategory::pk) != list.end()) {
      throw notUnderstood("'{}' is named twice", pathOf(category));
    }
    list.push_back(std::move(category));
  }
  auto above = list.front().supcategory ? *list.front().supcategory
                                        : MVCategory::rootCateForType(session.root(), options.type());
  if (!options.book.empty()) above.book = std::make_shared<MonivaAccount>(bookNamed(session, options.book));
  // Those that are not named keep their order behind the others.
  const std::size_t named = list.size();
  for (auto& sibling : done(above.getAllSubcategoryList())) {
    if (std::ranges::find(list, sibling.pk, &MVCategory::pk) == list.end())
      list.push_back(std::move(sibling));
  }
  done(above.book ? saveCustomCategoryOrder(*above.book, list)
                  : MVCategory::saveCustomCategoryOrder(session.root(), list));
  session.root().markRecentEditDate();
  if (above.book && !above.isOfBook()) {
    tellBooksShare(session);
  } else if ((above.isOfBook()
                  ? above.book->getCategoryOrder(above.type)
                  : std::to_string(MVCategory::getOrderType(session.root(), above.type))) != "0") {
    const std::string command =
        fmt::format("moniva category order-by custom{}{}", options.income ? " --income" : "",
                    options.book.empty() ? std::string() : fmt::format(" --book '{}'", options.book));
    session.say(session.text("They are listed in another order now; to change that: {}", command));
  }
  if (session.options().json) {
    boost::json::array printed;
    for (const auto& category : list) printed.push_back(jsonOf(session, category));
    return session.printJson(printed);
  }
  session.answer(session.text(
      "Put {} in order.", session.count("{} category", "{} categories", static_cast<std::int64_t>(named))));
}

void orderBy(Session& session, const CategoryViewOptions& options) {
  static const std::map<std::string, std::string> modes = {{"custom", "0"}, {"use", "1"}, {"name", "2"}};
  const std::string& mode = modes.at(options.word);
  const int type = options.type();
  const std::string shown = options.word == "custom" ? session.text("by hand")
                            : options.word == "use"  ? session.text("by use")
                                                     : session.text("by name");
  const std::string what =
      options.income ? session.text("Income categories") : session.text("Expense categories");
  std::string bookTitle;
  if (options.book.empty()) {
    done(MVCategory::setOrderType(session.root(), type, std::stoi(mode)));
  } else {
    auto book = bookNamed(session, options.book);
    bookTitle = book.title;
    done(book.setCategoryOrder(mode, type));
    if (!booksDiffer(session)) tellBooksShare(session);
  }
  session.root().markRecentEditDate();
  if (session.options().json) return session.printJson(boost::json::object{{"mode", mode}, {"type", type}});
  session.answer(options.book.empty()
                     ? session.text("{} are listed {} now.", what, shown)
                     : session.text("{} of '{}' are listed {} now.", what, bookTitle, shown));
}

void perBook(Session& session, const CategoryViewOptions& options) {
  if (!options.word.empty()) {
    if (!session.root().setObject(options.word == "on" ? "1" : "0", kPerBookSetting)) {
      throw refused("the setting could not be written");
    }
    session.root().markRecentEditDate();
  }
  const bool on = booksDiffer(session);
  if (session.options().json) {
    return session.printJson(boost::json::object{{kPerBookSetting, on}});
  }
  session.answer(on ? session.text("Each book has its own view of the categories.")
                    : session.text("All books share their categories."));
}

void associateCategory(Session& session, const CategoryViewOptions& options) {
  if (options.none == !options.word.empty()) {
    throw notUnderstood("name the account that goes with the category, or say --none");
  }
  auto category = categoryTyped(session, options.name, options.type());
  const auto account = options.none ? MonivaAccount(session.root()) : accountNamed(session, options.word);
  done(category.associateWithAccount(account));
  session.root().markRecentEditDate();
  if (session.options().json) return session.printJson(jsonOf(session, category));
  session.answer(options.none ? session.text("No account goes with the category '{}'.", category.cateString())
                              : session.text("The account '{}' goes with the category '{}'.", account.title,
                                             category.cateString()));
}

void recountCategories(Session& session, const CategoryViewOptions& options) {
  // Without a range every record counts, also one whose stamp a clock that runs ahead has made.
  Date from{-1e15};
  Date to{1e15};
  if (!options.from.empty()) from = typed(parsePeriod(options.from, session.calendar(), session.now())).first;
  if (!options.to.empty()) to = typed(parsePeriod(options.to, session.calendar(), session.now())).last;
  const std::int64_t wrong = done(MVCategory::updateUsingCountFromDate(session.root(), from, to));
  if (session.options().json) return session.printJson(boost::json::object{{"changed", wrong}});
  session.answer(wrong == 0 ? session.text("All counts are right.")
                            : session.text("Corrected {}.", session.count("{} count", "{} counts", wrong)));
}

void tidyCategories(Session& session, const CategoryViewOptions&) {
  RemovedCategoryRows removed;
  std::int64_t keys = 0;
  std::int64_t merged = 0;
  inOneGo(session, [&] {
    keys = done(MVCategory::clearDuplicateCategoryPK(session.root()));
    merged = done(MVCategory::clearDuplicateCategory(session.root()));
    removed = done(MVCategory::clearDuplicatedItemChangeEditDate(session.root(), true));
  });
  if (session.options().json) {
    return session.printJson(boost::json::object{{"keys", keys},
                                                 {"merged", merged},
                                                 {"untitled", removed.untitled},
                                                 {"incomplete", removed.incomplete},
                                                 {"duplicates", removed.duplicates}});
  }
  std::string line;
  const auto add = [&](std::int64_t count, const std::string& text) {
    if (count > 0) line += (line.empty() ? "" : " ") + text;
  };
  const std::int64_t rows = removed.untitled + removed.incomplete + removed.duplicates;
  add(keys,
      session.count("Gave {} category a key of its own.", "Gave {} categories keys of their own.", keys));
  add(merged, session.count("Merged {} category into its double.", "Merged {} categories into their doubles.",
                            merged));
  add(rows, session.count("Removed {} row nothing could use.", "Removed {} rows nothing could use.", rows));
  session.answer(line.empty() ? session.text("The categories are tidy.") : line);
}

}  // namespace

void addCategoryViewCommands(CommandLine& line, CLI::App& category) {
  using Options = std::shared_ptr<CategoryViewOptions>;
  const auto command = [&](const char* name, void (*run)(Session&, const CategoryViewOptions&)) {
    CLI::App* added = line.add(category, name);
    auto options = std::make_shared<CategoryViewOptions>();
    line.onRun(added, [options, run](Session& session) { run(session, *options); });
    return std::make_pair(added, options);
  };
  const auto income = [](CLI::App* of, const Options& options) {
    of->add_flag("--income", options->income, "A category of income instead of expenses");
  };
  const auto book = [](CLI::App* of, const Options& options, const char* what) {
    of->add_option("-b,--book", options->book, what)->type_name("NAME");
  };
  constexpr const char* kName = toTranslate("The category: Food, or Food/Bakery");
  for (const bool on : {true, false}) {
    const auto [of, options] = command(on ? "enable" : "disable", on ? enableCategory : disableCategory);
    of->add_option("NAME", options->name, kName)->required();
    book(of, options, "The book (else the current one)");
    if (on) of->add_flag("--only", options->only, "And off in every other book");
    income(of, options);
  }
  {
    const auto [of, options] = command("order", orderCategories);
    of->add_option("NAME", options->names, "The categories that come first, in their order")->required();
    book(of, options, "In this book (else in general)");
    income(of, options);
  }
  {
    const auto [of, options] = command("order-by", orderBy);
    of->add_option("MODE", options->word, "What they are listed by")
        ->required()
        ->check(oneOf({"custom", "use", "name"}));
    book(of, options, "In this book (else in general)");
    income(of, options);
  }
  {
    const auto [of, options] = command("per-book", perBook);
    of->add_option("STATE", options->word, "on or off; without it the command tells how it is")
        ->check(oneOf({"on", "off"}));
  }
  {
    const auto [of, options] = command("associate", associateCategory);
    of->add_option("NAME", options->name, kName)->required();
    of->add_option("ACCOUNT", options->word, "The account");
    of->add_flag("--none", options->none, "No account");
    income(of, options);
  }
  {
    const auto [of, options] = command("recount", recountCategories);
    of->add_option("--from", options->from, "Only what was entered or edited then or later")
        ->type_name("DATE");
    of->add_option("--to", options->to, "Only what was entered or edited then or earlier")->type_name("DATE");
  }
  command("tidy", tidyCategories);
}

}  // namespace moniva
