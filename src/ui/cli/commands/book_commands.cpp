#include <boost/json.hpp>
#include <charconv>

#include "calendar/book_periods.h"
#include "currency/amount_format.h"
#include "model/account_balance.h"
#include "model/account_dates.h"
#include "model/transaction_type.h"
#include "ui/cli/command_error.h"
#include "ui/cli/command_line.h"
#include "ui/cli/records.h"
#include "ui/cli/table.h"
#include "ui/cli/typed_text.h"

namespace moniva {
namespace {

struct BookAddOptions {
  std::string name;
  std::string currency;
  std::string note;
  int weekStartsOn = 0;
  int monthStartsOn = 0;
  int yearStartsOn = 0;
};

void addBook(Session& session, const BookAddOptions& options) {
  auto existing = MonivaAccount::getBookWithTitle(session.root(), options.name);
  if (existing && existing->isDeleted == 0) {
    throw CommandError(CommandError::kRefused, fmt::format("there is a book '{}' already", options.name));
  }
  MonivaAccount book(session.root());
  book.aKind = kBookKind;
  book.title = wellFormed(options.name, "the name");
  book.setType("_Book");
  book.currency = currencyTyped(session, options.currency);
  book.note = wellFormed(options.note, "the note");
  const bool isFirst = MonivaAccount::list(session.root(), kBookKind).empty();
  // A new book's week begins as weeks do where the user lives; one that comes back keeps its own.
  const int week =
      options.weekStartsOn == 0 && !existing ? session.calendar().firstWeekday() : options.weekStartsOn;
  done(book.addWithPeriods({week, options.monthStartsOn, options.yearStartsOn}));
  session.root().markRecentEditDate();
  if (isFirst) {
    book.saveToLocal();
    refreshUsingMonivaAccount(session.root());
  }
  if (session.options().json) return session.printJson(jsonOf(session, book));
  session.answer(fmt::format("Added the book '{}' in {}.{}", book.title, book.currency,
                             isFirst ? " It is the current book." : ""));
}

void listBooks(Session& session) {
  const auto books = MonivaAccount::list(session.root(), kBookKind);
  const std::string current = session.root().monivaAccount ? session.root().monivaAccount->pk : "";
  if (session.options().json) {
    boost::json::array list;
    for (const auto& book : books) list.push_back(jsonOf(session, book));
    return session.printJson(list);
  }
  if (books.empty()) return session.say("There is no book yet. Add one with: moniva book add NAME");
  Table table({{.title = ""},
               {.title = "Book"},
               {.title = "Currency"},
               {.title = "Month begins"},
               {.title = "Note"}});
  for (const auto& book : books) {
    table.addRow({book.pk == current ? Cell("*", ink::bold) : Cell(""), book.title, book.currency,
                  book.monthStartsOn == 1  ? "day 1"
                  : book.monthStartsOn > 1 ? fmt::format("day {}", book.monthStartsOn)
                                           : fmt::format("day {} before", -book.monthStartsOn),
                  book.note});
  }
  session.out() << table.render(session.style(), session.width());
}

void showBook(Session& session, const std::string& name) {
  const MonivaAccount book = bookNamed(session, name);
  if (session.options().json) return session.printJson(jsonOf(session, book));
  const auto& calendar = session.calendar();
  const BookPeriods periods(calendar, book.periodStarts(), session.now());
  Table table({{.title = ""}, {.title = ""}});
  const auto line = [&](const char* what, const std::string& value) {
    table.addRow({Cell(what, ink::dim), value});
  };
  line("Book", book.title);
  line("Currency", book.currency);
  if (!book.note.empty()) line("Note", book.note);
  // Weeks are counted back in fixed seconds: from noon, a change of the clock leaves them on their day.
  const Date noon = calendar.dateBegin(session.now()).plusSeconds(12 * 3600);
  line("This week", periods.getWeekPeriodShort(noon));
  line("This month", periods.getMonthPeriodMiddle());
  line("This year", periods.getYearPeriodMiddle());
  if (const auto first = done(getTheDateOfFirstTransaction(book)))
    line("First record", dateText(session, *first));
  if (const auto last = done(getTheDateOfLastTransaction(book)))
    line("Last record", dateText(session, *last));
  line("Income less expense",
       session.amounts().format(getTheTotalBalance(book) - book.beginBalance, book.currency));
  session.out() << table.render(session.style(), session.width());
}

void useBook(Session& session, const std::string& name) {
  const MonivaAccount book = bookNamed(session, name);
  book.saveToLocal();
  done(session.platform().userDefaults->synchronize());
  refreshUsingMonivaAccount(session.root());
  if (session.options().json) return session.printJson(jsonOf(session, book));
  session.answer(fmt::format("'{}' is the current book now.", book.title));
}

/// A check that a value is a whole number from 1 to `last`, or from -1 to -`last`; it passes on what it read,
/// since the parser would take a leading zero for an octal number.
CLI::Validator beginning(int last, const std::string& refusal) {
  return CLI::Validator(
      [last, refusal](std::string& text) {
        int number = 0;
        const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
        const bool isWhole = error == std::errc() && end == text.data() + text.size();
        if (!isWhole || number == 0 || std::abs(number) > last) return refusal;
        text = std::to_string(number);
        return std::string();
      },
      "");
}

}  // namespace

void addBookCommands(CommandLine& line) {
  CLI::App* book = line.add(line.app(), "book");
  book->require_subcommand(1);

  CLI::App* add = line.add(*book, "add");
  auto options = std::make_shared<BookAddOptions>();
  add->add_option("NAME", options->name, "Name of the book")->required();
  add->add_option("--currency", options->currency, "Currency of the book (else that of the locale)")
      ->type_name("CODE");
  add->add_option("--note", options->note, "A note")->type_name("TEXT");
  add->add_option("--week-starts", options->weekStartsOn,
                  "Weekday a week begins on: 1 Sunday, 2 Monday, ... 7 Saturday")
      ->type_name("WEEKDAY")
      ->check(CLI::Range(1, 7));
  add->add_option("--month-starts", options->monthStartsOn,
                  "Day a month begins on; a negative one is that day of the month before")
      ->type_name("DAY")
      ->transform(beginning(31, "a month begins on day 1 to 31, or -1 to -31"));
  add->add_option("--year-starts", options->yearStartsOn,
                  "Month a year begins in; a negative one is that month of the year before")
      ->type_name("MONTH")
      ->transform(beginning(12, "a year begins in month 1 to 12, or -1 to -12"));
  line.onRun(add, [options](Session& session) { addBook(session, *options); });

  line.onRun(line.add(*book, "list"), listBooks);

  CLI::App* show = line.add(*book, "show");
  auto shown = std::make_shared<std::string>();
  show->add_option("NAME", *shown, "Name of the book (else the current one)");
  line.onRun(show, [shown](Session& session) { showBook(session, *shown); });

  CLI::App* use = line.add(*book, "use");
  auto used = std::make_shared<std::string>();
  use->add_option("NAME", *used, "Name of the book")->required();
  line.onRun(use, [used](Session& session) { useBook(session, *used); });
}

}  // namespace moniva
