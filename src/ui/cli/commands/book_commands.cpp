#include <boost/json.hpp>

#include "model/account_balance.h"
#include "model/account_dates.h"
#include "model/transaction_type.h"
#include "storage/writes.h"
#include "ui/cli/command_error.h"
#include "ui/cli/command_line.h"
#include "ui/cli/commands/account_rows.h"
#include "ui/cli/commands/period_options.h"
#include "ui/cli/records.h"
#include "ui/cli/table.h"
#include "ui/cli/typed_text.h"

namespace moniva {
namespace {

struct BookAddOptions {
  std::string name;
  std::string currency;
  std::optional<std::string> note;
  PeriodStarts starts = kNoStarts;
};

void addBook(Session& session, const BookAddOptions& options) {
  auto& root = session.root();
  MonivaAccount book(root);
  book.aKind = kBookKind;
  book.title = wellFormed(options.name, "the name");
  book.setType("_Book");
  book.currency = currencyTyped(session, options.currency);
  const auto in = takenCurrencyText(session, options.currency, book.currency);
  book.note = asTyped(options.note.value_or(""), "the note");
  bool isFirst = false;
  const auto answer = done(atomically(root, [&](Connection&) -> Result<std::string> {
    requireFreeTitle(session, kBookKind, book.title);
    isFirst = MonivaAccount::list(root, kBookKind).empty();
    if (done(book.add()) == MonivaAccount::Added::revived) {
      std::string also;
      if (!options.currency.empty()) also = changeCurrency(session, book, options.currency);
      if (options.note) done(book.updateNote(*options.note));
      writeStarts(book, options.starts);
      return session.text("The deleted book '{}' is back with {}.", book.title,
                          ownRecordsText(session, book)) +
             also;
    }
    PeriodStarts starts = options.starts;
    // A new book's week begins as weeks do where the user lives; one that comes back keeps its own.
    if (starts.weekStartsOn == 0) starts.weekStartsOn = session.calendar().firstWeekday();
    writeStarts(book, starts);
    return session.text("Added the book '{}' in {}.", book.title, in);
  }));
  root.markRecentEditDate();
  if (isFirst) {
    book.saveToLocal();
    refreshUsingMonivaAccount(root);
  }
  if (session.options().json) return session.printJson(jsonNow(session, book));
  session.answer(isFirst ? answer + " " + session.text("It is the current book.") : answer);
}

void listBooks(Session& session) {
  auto books = MonivaAccount::list(session.root(), kBookKind);
  const std::string current = session.root().monivaAccount ? session.root().monivaAccount->pk : "";
  if (session.options().json) {
    boost::json::array list;
    for (auto& book : books) list.push_back(jsonNow(session, book));
    return session.printJson(list);
  }
  if (books.empty()) {
    return session.say(session.text("There is no book yet. Add one with: moniva book add NAME"));
  }
  Table table({{.title = ""},
               {.title = session.text("Book")},
               {.title = session.text("Currency")},
               {.title = session.text("Month begins")},
               {.title = session.text("Note")}});
  for (const auto& book : books) {
    table.addRow({book.pk == current ? Cell("*", ink::bold) : Cell(""), titleCell(session, book),
                  book.currency, monthBeginsText(session, book), book.note});
  }
  session.out() << table.render(session.style(), session.width());
}

void showBook(Session& session, const std::string& name) {
  MonivaAccount book = bookNamed(session, name);
  done(getAllStatistics(book));
  done(getAllPeriod(book));
  if (session.options().json) return session.printJson(jsonWithGroups(session, book));
  const PresentPeriods present(session, book);
  Facts facts(session);
  facts.add(session.text("Book"), book.title);
  facts.add(session.text("Currency"), book.currency);
  facts.addState(book);
  facts.add(session.text("Tracks"), trackingText(session, book));
  facts.add(session.text("Dashboard"), dashboardText(session, book));
  facts.add(session.text("Profit"), book.showProfitForSummary == "0" ? session.text("not in summaries")
                                                                     : session.text("in summaries"));
  facts.add(session.text("Week begins"), present.firstWeekday);
  facts.add(session.text("Month begins"), monthBeginsText(session, book));
  facts.add(session.text("Year begins"), yearBeginsText(session, book));
  facts.add(session.text("This week"), present.week);
  facts.add(session.text("This month"), present.month);
  facts.add(session.text("This year"), present.year);
  if (book.beginBalance != 0) {
    facts.add(session.text("Opening balance"), session.amounts().format(book.beginBalance, book.currency));
  }
  facts.addTotals(book);
  facts.addDates(book);
  facts.print();
}

void useBook(Session& session, const std::string& name) {
  MonivaAccount book = bookNamed(session, name, Meant::open);
  book.saveToLocal();
  done(session.platform().userDefaults->synchronize());
  refreshUsingMonivaAccount(session.root());
  if (session.options().json) return session.printJson(jsonNow(session, book));
  session.answer(session.text("'{}' is the current book now.", book.title));
}

}  // namespace

void addBookCommands(CommandLine& line) {
  CLI::App* book = line.add(line.app(), "book");
  book->require_subcommand(1);

  CLI::App* add = line.add(*book, "add");
  auto options = std::make_shared<BookAddOptions>();
  add->add_option("NAME", options->name, "Name of the book")->required();
  add->add_option("--currency", options->currency,
                  "Currency of the book (else the current book's, or the one of your country)")
      ->type_name("CODE");
  add->add_option("--note", options->note, "A note")->type_name("TEXT");
  addPeriodOptions(*add, options->starts);
  line.onRun(add, [options](Session& session) { addBook(session, *options); });

  CLI::App* list = line.add(*book, "list");
  auto deleted = std::make_shared<bool>(false);
  list->add_flag("--deleted", *deleted, "Those that were deleted");
  line.onRun(list, [deleted](Session& session) {
    return *deleted ? listDeleted(session, kBookKind) : listBooks(session);
  });

  CLI::App* show = line.add(*book, "show");
  auto shown = std::make_shared<std::string>();
  show->add_option("NAME", *shown, "Name of the book (else the current one)");
  line.onRun(show, [shown](Session& session) { showBook(session, *shown); });

  CLI::App* use = line.add(*book, "use");
  auto used = std::make_shared<std::string>();
  use->add_option("NAME", *used, "Name of the book")->required();
  line.onRun(use, [used](Session& session) { useBook(session, *used); });

  const RowFamily family{line, *book, kBookKind};
  addRowSettings(family);
  addRowUpkeep(family);
}

}  // namespace moniva
