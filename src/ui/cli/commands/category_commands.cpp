#include <fmt/ranges.h>

#include <boost/json.hpp>

#include "calendar/parse_date.h"
#include "storage/transaction.h"
#include "ui/cli/categories.h"
#include "ui/cli/command_error.h"
#include "ui/cli/command_line.h"
#include "ui/cli/commands/category_budgets.h"
#include "ui/cli/commands/category_commands.h"
#include "ui/cli/records.h"
#include "ui/cli/table.h"
#include "ui/cli/typed_text.h"

namespace moniva {
namespace {

struct CategoryOptions {
  std::string name;
  std::string other;  ///< the second name: a new title, a parent, where records go
  std::string from;
  std::string to;
  std::string book;
  bool income = false;
  bool byUse = false;
  bool only = false;
  bool top = false;
  bool merge = false;
  int type() const { return income ? kind::kIncome : kind::kExpense; }
};

void listCategories(Session& session, const CategoryOptions& options) {
  auto root = MVCategory::rootCateForType(session.root(), options.type());
  if (!options.book.empty()) root.book = std::make_shared<MonivaAccount>(bookNamed(session, options.book));
  const bool isOfBook = root.isOfBook();
  const auto tree = done(options.byUse ? root.getAllSubcategoryTreeUseTimes() : root.getAllSubcategoryTree());
  if (!options.book.empty() && !isOfBook) tellBooksShare(session);
  if (session.options().json) {
    boost::json::array list;
    for (const auto& category : tree) list.push_back(jsonOf(session, category));
    return session.printJson(list);
  }
  if (tree.empty()) {
    return session.say(session.text("There is no such category yet. Add one with: moniva category add NAME"));
  }
  std::vector<Column> columns{{.title = session.text("Category")},
                              {.title = session.text("Used"), .align = Align::right}};
  if (isOfBook) columns.push_back({.title = root.book->title});
  Table table(columns);
  const auto line = [&](const MVCategory& category, const char* indent) {
    table.addRow({Cell(indent + category.title, category.enabled ? ink::plain : ink::dim),
                  std::to_string(category.usedTimes),
                  category.enabled ? session.text("on") : Cell(session.text("off"), ink::dim)});
  };
  for (const auto& top : tree) {
    line(top, "");
    for (const auto* below : {&top.subcategoryArray, &top.diabledSubcategoryArray}) {
      for (const auto& child : *below) line(child, "  ");
    }
  }
  session.out() << table.render(session.style(), session.width());
}

/// Titles of the live books it is switched off in.
std::vector<std::string> booksWithout(Session& session, const MVCategory& category) {
  std::vector<std::string> titles;
  for (const auto& key : done(category.getBelongBookList())) {
    const auto book = MonivaAccount::getAccountWithPK(session.root(), key);
    if (book && book->isDeleted == 0) titles.push_back(book->title);
  }
  return titles;
}

void showCategory(Session& session, const CategoryOptions& options) {
  auto category = categoryTyped(session, options.name, options.type());
  const auto account = done(category.getAssociatedAccount());
  const auto records = done(category.recordCount());
  const auto off = booksWithout(session, category);
  if (session.options().json) {
    auto object = jsonOf(session, category);
    object["records"] = records;
    if (account) object["account"] = {{"pk", account->pk}, {"title", account->title}};
    object["getBelongBookList"] = boost::json::value_from(off);
    return session.printJson(object);
  }
  Table table({{.title = ""}, {.title = ""}});
  const auto line = [&](const std::string& what, const std::string& value) {
    table.addRow({Cell(what, ink::dim), value});
  };
  line(session.text("Category"), category.cateString());
  line(session.text("Kind"), options.income ? session.text("income") : session.text("expenses"));
  for (const auto& child : category.subcategoryArray) line(session.text("Subcategory"), child.title);
  if (account) line(session.text("Account"), account->title);
  line(session.text("Records"), std::to_string(records));
  line(session.text("Used"), std::to_string(category.usedTimes));
  for (const auto& book : off) line(session.text("Off in"), book);
  session.out() << table.render(session.style(), session.width());
}

void addCategory(Session& session, const CategoryOptions& options) {
  MVAppRoot& root = session.root();
  MVCategory made(root);
  made.title = wellFormed(options.name, "the name");
  made.type = options.type();
  std::optional<MVCategory> above;
  if (!options.other.empty()) {
    above = categoryTyped(session, options.other, made.type);
  } else if (const auto slash = made.title.find('/'); slash != std::string::npos) {
    // A slip in the first half must not make a category of the whole.
    above = categoryTyped(session, made.title.substr(0, slash), made.type);
    made.title.erase(0, slash + 1);
  }
  if (above) made.parent = above->pk;
  if (const auto known = done(MVCategory::withTitle(root, made.title, made.type, made.parent))) {
    throw refused("there is a category '{}' already", known->cateString());
  }
  std::optional<MonivaAccount> book;
  if (!options.book.empty()) book = bookNamed(session, options.book);
  if (options.only && !book) {
    throw notUnderstood("--only needs the --book that is to have the category");
  }
  inOneGo(session, [&] {
    done(made.addCate());
    if (book) done(options.only ? made.enabledForBookOnly(*book) : made.enabledForBook(*book));
  });
  if (book && !MVCategory::booksDiffer(root)) tellBooksShare(session);
  if (session.options().json) return session.printJson(jsonOf(session, made));
  session.answer(
      book ? session.text("Added the category '{}'; it is on in '{}'.", made.cateString(), book->title)
           : session.text("Added the category '{}'.", made.cateString()));
  // One that comes back is still off where its deletion switched it off.
  const auto off = booksWithout(session, made);
  if (!book && !off.empty() && MVCategory::booksDiffer(root)) {
    session.say(session.text("It is off in {}; to change that: moniva category enable NAME --book BOOK",
                             fmt::format("'{}'", fmt::join(off, "', '"))));
  }
}

void deleteCategory(Session& session, const CategoryOptions& options) {
  auto category = categoryTyped(session, options.name, options.type());
  const std::string shown = category.cateString();
  std::int64_t records = 0;
  std::size_t children = 0;
  std::optional<CategoryBudgets> budgets;
  inOneGo(session, [&] {
    budgets.emplace(session, category);
    records = done(category.recordCount());
    if (category.isSuperCate()) children = done(category.getAllSubcategoryList()).size();
    done(category.delCate());
  });
  if (session.options().json) {
    auto object = jsonOf(session, category);
    object["lostBudgets"] = budgets->lostJson();
    return session.printJson(object);
  }
  std::string line = session.text("Deleted the category '{}'.", shown);
  if (children > 0) {
    line = session.text(
        "Deleted the category '{}' and its {}.", shown,
        session.count("{} subcategory", "{} subcategories", static_cast<std::int64_t>(children)));
  }
  if (records > 0) {
    line += " " + session.text("Still named by {}.", session.count("{} record", "{} records", records));
  }
  session.answer(line + budgets->lostText());
}

/// Carries out a change that makes the category one with another of the title below `parent`, if there is
/// such; that has to be asked for. `budgets` hears what the category had before.
CategoryChange changed(Session& session, bool merge, const MVCategory& category, const std::string& title,
                       const std::string& parent, std::optional<CategoryBudgets>& budgets,
                       const std::function<Result<CategoryChange>()>& change) {
  CategoryChange made;
  inOneGo(session, [&] {
    const auto into = done(MVCategory::withTitle(session.root(), title, category.type, parent));
    if (into && into->pk != category.pk) budgets.emplace(session, category, into);
    made = done(change());
    if (made.merged && !merge) {
      throw refused(
          "there is a category of that name there already; --merge makes the two one, which"
          " cannot be undone");
    }
  });
  return made;
}

void tellChange(Session& session, const MVCategory& category, const CategoryChange& change,
                std::optional<CategoryBudgets>& budgets, const std::string& line) {
  if (session.options().json) {
    auto object = jsonOf(session, category);
    object["merged"] = change.merged;
    object["records"] = change.records;
    object["subcategories"] = change.subcategories;
    if (budgets) object["lostBudgets"] = budgets->lostJson();
    return session.printJson(object);
  }
  session.answer(budgets ? line + budgets->lostText() : line);
}

std::string followers(Session& session, const CategoryChange& change) {
  const auto records = session.count("{} record", "{} records", change.records);
  if (change.subcategories == 0) return records;
  return session.text("{} and {}", records,
                      session.count("{} subcategory", "{} subcategories", change.subcategories));
}

void renameCategory(Session& session, const CategoryOptions& options) {
  auto category = categoryTyped(session, options.name, options.type());
  const std::string before = category.cateString();
  std::string title = wellFormed(options.other, "the new name");
  // As it can be typed everywhere else, with the category above.
  if (category.supcategory && title.starts_with(category.supcategory->title + "/")) {
    title.erase(0, category.supcategory->title.size() + 1);
  }
  if (title.find('/') != std::string::npos) {
    throw refused("'{}' names a place in the tree; a category is moved with: moniva category move", title);
  }
  std::optional<CategoryBudgets> budgets;
  const auto change = changed(session, options.merge, category, title, category.parent, budgets,
                              [&] { return category.rename(title); });
  tellChange(session, category, change, budgets,
             change.merged
                 ? session.text("Merged the category '{}' into '{}'; with it went {}.", before,
                                category.cateString(), followers(session, change))
                 : session.text("Renamed the category '{}' to '{}'.", before, category.cateString()));
}

void moveCategory(Session& session, const CategoryOptions& options) {
  if (options.top == !options.other.empty()) {
    throw notUnderstood("say where it goes: --under PARENT, or --top");
  }
  auto category = categoryTyped(session, options.name, options.type());
  const auto above = options.top ? MVCategory::rootCateForType(session.root(), options.type())
                                 : categoryTyped(session, options.other, options.type());
  const std::string before = category.cateString();
  std::optional<CategoryBudgets> budgets;
  const auto change = changed(session, options.merge, category, category.title, above.pk, budgets,
                              [&] { return category.moveTo(above); });
  tellChange(session, category, change, budgets,
             change.merged ? session.text("Merged the category '{}' into '{}'; with it went {}.", before,
                                          pathOf(category), followers(session, change))
                           : session.text("Moved the category '{}'; it is '{}' now, with {}.", before,
                                          pathOf(category), followers(session, change)));
}

void moveCategoryRecords(Session& session, const CategoryOptions& options) {
  std::optional<Date> from;
  std::optional<Date> to;
  if (!options.from.empty()) from = typed(parsePeriod(options.from, session.calendar(), session.now())).first;
  if (!options.to.empty()) to = typed(parsePeriod(options.to, session.calendar(), session.now())).last;
  auto category = categoryTyped(session, options.name, options.type());
  const auto target = categoryTyped(session, options.other, options.type());
  const auto records = done(category.moveDataTo(target, from, to));
  session.root().markRecentEditDate();
  if (session.options().json) return session.printJson(boost::json::object{{"records", records}});
  session.answer(session.text("Moved {} from '{}' to '{}'.",
                              session.count("{} record", "{} records", records), category.cateString(),
                              target.cateString()));
}

}  // namespace

void inOneGo(Session& session, const std::function<void()>& changes) {
  Connection* db = session.root().db().getDatabase();
  if (db == nullptr) throw refused("the store is not open");
  Transaction transaction(*db);
  if (!transaction.began()) throw CommandError(CommandError::kRefused, db->refusal());
  changes();
  if (!transaction.commit()) throw CommandError(CommandError::kRefused, db->refusal());
  session.root().markRecentEditDate();
}

void tellBooksShare(Session& session) {
  session.say(
      session.text("All books share their categories now; to change that: moniva category per-book on"));
}

void addCategoryCommands(CommandLine& line) {
  CLI::App* category = line.add(line.app(), "category");
  category->require_subcommand(1);
  const auto command = [&](const char* name, void (*run)(Session&, const CategoryOptions&)) {
    CLI::App* added = line.add(*category, name);
    auto options = std::make_shared<CategoryOptions>();
    added->add_flag("--income", options->income, "A category of income instead of expenses");
    line.onRun(added, [options, run](Session& session) { run(session, *options); });
    return std::make_pair(added, options);
  };
  const auto named = [&](const char* name, void (*run)(Session&, const CategoryOptions&), const char* what) {
    auto made = command(name, run);
    made.first->add_option("NAME", made.second->name, what)->required();
    return made;
  };
  constexpr const char* kName = toTranslate("The category: Food, or Food/Bakery");
  {
    const auto [list, options] = command("list", listCategories);
    list->add_option("-b,--book", options->book, "As a book has them, with what is switched off in it")
        ->type_name("NAME");
    list->add_flag("--by-use", options->byUse, "The most used first");
  }
  named("show", showCategory, kName);
  {
    const auto [add, options] =
        named("add", addCategory, "Name of the category; Food/Bakery goes under Food");
    add->add_option("--under", options->other, "The category it goes under")->type_name("PARENT");
    add->add_option("-b,--book", options->book, "Switch it on in this book")->type_name("NAME");
    add->add_flag("--only", options->only, "And off in every other book");
  }
  named("delete", deleteCategory, kName);
  {
    const auto [rename, options] = named("rename", renameCategory, kName);
    rename->add_option("NEW", options->other, "Its new name")->required();
    rename->add_flag("--merge", options->merge, "Make it one with the category that has the name already");
  }
  {
    const auto [move, options] = named("move", moveCategory, kName);
    move->add_option("--under", options->other, "The category it goes under")->type_name("PARENT");
    move->add_flag("--top", options->top, "Make it a top-level category");
    move->add_flag("--merge", options->merge, "Make it one with the category of its name there");
  }
  {
    const auto [records, options] = command("move-records", moveCategoryRecords);
    records->add_option("FROM", options->name, "The category they have, or have a subcategory of")
        ->required();
    records->add_option("TO", options->other, "The category they get")->required();
    records->add_option("--from", options->from, "Those of this day, month or year and later")
        ->type_name("DATE");
    records->add_option("--to", options->to, "Those of this day, month or year and earlier")
        ->type_name("DATE");
  }
  addCategoryViewCommands(line, *category);
  addCategoryUseCommands(line, *category);
}

}  // namespace moniva
