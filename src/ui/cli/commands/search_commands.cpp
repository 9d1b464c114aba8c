#include <boost/json.hpp>

#include "reports/keyword_forms.h"
#include "reports/search.h"
#include "ui/cli/command_error.h"
#include "ui/cli/did_you_mean.h"
#include "ui/cli/entry_options.h"
#include "ui/cli/records.h"
#include "ui/cli/text_width.h"
#include "ui/cli/transaction_rows.h"

namespace moniva {
namespace {

struct SearchOptions {
  std::vector<std::string> words;
  std::string amount;
  std::string book;
  std::string account;
  std::string from;
  std::string to;
  std::string in = "all";
  std::int64_t saved = 0;
  std::int64_t page = 0;
  std::int64_t pageSize = 50;
  std::string after;
  bool csv = false;
};

const std::map<std::string, SearchIn> kSearchKinds = {
    {"records", SearchIn::records}, {"expenses", SearchIn::expenses}, {"transfers", SearchIn::transfers},
    {"debts", SearchIn::debts},     {"payments", SearchIn::payments}, {"costs", SearchIn::costs},
    {"all", SearchIn::all}};

std::string joinedWords(const std::vector<std::string>& words) {
  std::string text;
  for (const auto& word : words) text += (text.empty() ? "" : " ") + word;
  return text;
}

std::string savedText(Session& session, std::int64_t number) {
  const auto texts = done(getSearchList(session.root()));
  if (texts.empty()) throw refused("no search is saved yet; save one with: moniva searches save TEXT");
  const auto count = static_cast<std::int64_t>(texts.size());
  if (number > count) throw refused("there is no saved search {}; the last one is {}", number, count);
  return texts[static_cast<std::size_t>(number - 1)];
}

SearchQuery queryTypedFor(Session& session, const SearchOptions& options) {
  SearchQuery query{kSearchKinds.at(options.in)};
  query.uncategorised = true;
  query.pageMax = options.pageSize;
  query.page = std::max<std::int64_t>(options.page, 1) - 1;
  query.keyword = options.saved > 0 ? savedText(session, options.saved) : joinedWords(options.words);
  if (query.keyword.empty() && !options.words.empty()) throw notUnderstood("the text to look for is blank");
  typed(checkKeyword(query.keyword));
  if (const auto amount = session.amountReader().read(query.keyword)) query.keywordAmount = *amount;
  if (!options.amount.empty()) query.amount = figureTyped(session, options.amount);
  if (!options.book.empty()) query.account = bookNamed(session, options.book, Meant::groupsToo);
  if (!options.account.empty()) query.account = accountNamed(session, options.account, Meant::groupsToo);
  if (!options.from.empty()) query.from = boundTyped(session, options.from, false);
  if (!options.to.empty()) query.to = boundTyped(session, options.to, true);
  if (query.from && query.to && *query.to < *query.from) {
    throw notUnderstood("the search ends before it begins");
  }
  if (!options.after.empty()) {
    query.after = done(searchPlaceOf(session.root(), recordTyped(session, options.after)));
  }
  return query;
}

/// Which records of all the page has, and how to see more of them.
std::string pageLine(Session& session, const SearchOptions& options, const SearchQuery& query,
                     const SearchPage& page) {
  const auto count = static_cast<std::int64_t>(page.found.size());
  const auto next = page.last ? page.last->eid : std::string();
  if (query.after) {
    return page.more
               ? session.text("{} records more; --after {} goes on.", count, next)
               : session.count("{} record more, the last.", "{} records more, the last of them.", count);
  }
  const auto first = query.page * options.pageSize + 1;
  if (page.more) {
    return session.text("Page {}, records {} to {}; --page {} or --after {} goes on.", query.page + 1, first,
                        first + count - 1, query.page + 2, next);
  }
  return query.page == 0
             ? session.count("{} record.", "{} records.", count)
             : session.text("Page {}, records {} to {}, the last.", query.page + 1, first, first + count - 1);
}

void runSearch(Session& session, const SearchOptions& options) {
  const auto query = queryTypedFor(session, options);
  const auto page = done(searchPage(session.root(), query));
  if (page.found.empty() && query.page > 0) {
    const auto count = done(searchCount(session.root(), query));
    if (count > 0) {
      throw refused("there is no page {}: {} are found, the last on page {}", query.page + 1, count,
                    (count - 1) / options.pageSize + 1);
    }
  }
  TransactionRows rows(session, options.csv);
  rows.markHits(keywordForms(query.keyword, session.calendar().locale()));
  for (const auto& eid : page.found) rows.addRow(eid);
  rows.print(query.after ? session.text("Nothing more was found.") : session.text("Nothing was found."));
  if (!page.found.empty()) session.say(pageLine(session, options, query, page));
}

CLI::Validator countingNumber() {
  return CLI::Validator(
      [](const std::string& text) {
        const bool isCount = !text.empty() && text.size() < 10 && text.front() != '0' &&
                             text.find_first_not_of("0123456789") == std::string::npos;
        return std::string(isCount ? "" : toTranslate("it is a whole number from 1 on"));
      },
      "");
}

void addSearch(CommandLine& line) {
  CLI::App* search = line.add(line.app(), "search");
  auto options = std::make_shared<SearchOptions>();
  search->add_option("TEXT", options->words,
                     "What to look for in notes, categories, vendors and the names of people; a number is "
                     "looked for as an amount too");
  auto* amount = search->add_option("--amount", options->amount, "Of exactly that amount only")
                     ->type_name("AMOUNT")
                     ->check(notEmpty());
  auto* book = search->add_option("-b,--book", options->book, "Of that book or group of books only")
                   ->type_name("NAME")
                   ->check(notEmpty());
  auto* account =
      search->add_option("-a,--account", options->account, "Through that account or group of accounts only")
          ->type_name("NAME")
          ->check(notEmpty())
          ->excludes(book);
  auto* from = search->add_option("--from", options->from, "From that day or moment on")
                   ->type_name("DATE")
                   ->check(notEmpty());
  auto* to = search->add_option("--to", options->to, "Up to that day, itself included, or moment")
                 ->type_name("DATE")
                 ->check(notEmpty());
  auto* in = search->add_option("--in", options->in, "What to look through (else all)")
                 ->type_name("KIND")
                 ->check(oneOf({"records", "expenses", "transfers", "debts", "payments", "costs", "all"}));
  auto* saved =
      search->add_option("--saved", options->saved, "A saved search, by its number in 'moniva searches list'")
          ->type_name("N")
          ->check(countingNumber());
  auto* page = search->add_option("--page", options->page, "Which page (else the first)")
                   ->type_name("N")
                   ->check(countingNumber());
  search->add_option("--page-size", options->pageSize, "Records on a page (else 50)")
      ->type_name("N")
      ->check(countingNumber());
  search->add_option("--after", options->after, "Go on behind that record; quick however far it is")
      ->type_name("EID")
      ->check(notEmpty())
      ->excludes(page);
  addCsv(*search, options->csv);
  line.onRun(search, [=](Session& session) {
    if (options->saved > 0 && !options->words.empty()) {
      throw notUnderstood("give a text or the number of a saved search, not both");
    }
    const bool asks = !options->words.empty();
    const auto given = [](const CLI::Option* option) { return option->count() > 0; };
    if (!asks && !std::ranges::any_of(std::array{amount, book, account, from, to, in, saved}, given)) {
      throw notUnderstood("say what to look for: a text, --amount, --account, --from or --in");
    }
    runSearch(session, *options);
  });
}

struct SavedOptions {
  std::vector<std::string> words;
  bool all = false;
  bool csv = false;
};

void listSearches(Session& session, const SavedOptions& options) {
  const auto texts = done(getSearchList(session.root()));
  boost::json::array list;
  Table table({{.title = "", .align = Align::right}, {.title = session.text("Text"), .maxWidth = 60}});
  for (const auto& text : texts) {
    list.push_back({{"number", list.size() + 1}, {"title", text}});
    table.addRow({Cell(std::to_string(list.size()), ink::dim), printable(text)});
  }
  if (options.csv) return printCsv(session, list);
  if (session.options().json) return session.printJson(list);
  if (table.empty()) return session.say(session.text("No search is saved."));
  session.out() << table.render(session.style(), session.width());
}

void forgetSearches(Session& session, const SavedOptions& options) {
  if (options.all == !options.words.empty()) throw notUnderstood("name the text to forget, or --all");
  const auto text = joinedWords(options.words);
  const auto known = done(getSearchList(session.root()));
  if (!options.all && std::ranges::find(known, text) == known.end()) {
    const auto meant = didYouMean(text, known);
    throw meant
        ? refused("there is no saved search '{}'; did you mean '{}'?", printable(text), printable(*meant))
        : refused("there is no saved search '{}'; see: moniva searches list", printable(text));
  }
  const auto count =
      done(options.all ? clearAllSearchHistory(session.root()) : deleteSearch(session.root(), text));
  session.root().markRecentEditDate();
  if (session.options().json) return session.printJson(boost::json::object{{"count", count}});
  session.answer(options.all ? session.count("Forgot {} saved search.", "Forgot {} saved searches.", count)
                             : session.text("Forgot the saved search '{}'.", text));
}

void addSavedSearches(CommandLine& line) {
  CLI::App* searches = line.add(line.app(), "searches");
  searches->require_subcommand(1);
  auto options = std::make_shared<SavedOptions>();
  CLI::App* list = line.add(*searches, "list");
  addCsv(*list, options->csv);
  line.onRun(list, [options](Session& session) { listSearches(session, *options); });
  CLI::App* save = line.add(*searches, "save");
  save->add_option("TEXT", options->words, "The text to look for")->required();
  line.onRun(save, [options](Session& session) {
    const auto text = joinedWords(options->words);
    if (text.empty()) throw notUnderstood("the text to look for is blank");
    typed(checkKeyword(text));
    done(saveSearch(session.root(), text));
    session.root().markRecentEditDate();
    if (session.options().json) return session.printJson(boost::json::object{{"title", text}});
    session.answer(session.text("Saved the search '{}'; 'moniva search --saved 1' runs it.", text));
  });
  CLI::App* forget = line.add(*searches, "forget");
  forget->add_option("TEXT", options->words, "The text, as it was saved");
  forget->add_flag("--all", options->all, "All of them");
  line.onRun(forget, [options](Session& session) { forgetSearches(session, *options); });
}

}  // namespace

void addSearchCommands(CommandLine& line) {
  addSearch(line);
  addSavedSearches(line);
}

}  // namespace moniva
