#include <fmt/ranges.h>

#include <algorithm>
#include <boost/json.hpp>

#include "currency/currency_manager.h"
#include "model/currency_list.h"
#include "storage/writes.h"
#include "ui/cli/command_error.h"
#include "ui/cli/command_line.h"
#include "ui/cli/currency_names.h"
#include "ui/cli/did_you_mean.h"
#include "ui/cli/rates.h"
#include "ui/cli/table.h"
#include "ui/cli/text_width.h"

namespace moniva {
namespace {

namespace json = boost::json;
using Codes = std::vector<std::string>;

struct CurrencyListOptions {
  bool all = false;
  std::string text;
};

bool isAmong(const Codes& codes, const std::string& code) {
  return std::ranges::find(codes, code) != codes.end();
}

Codes withoutRepeats(const Codes& codes) {
  Codes once;
  for (const auto& code : codes) {
    if (!isAmong(once, code)) once.push_back(code);
  }
  return once;
}

Codes listOfOwn(Session& session) {
  auto codes = DoDB::getCurrencyList(session.root());
  if (codes.empty()) throw CommandError(CommandError::kRefused, refusalOfStore(session.root()).value());
  return codes;
}

json::object jsonOfListed(Session& session, const std::string& code, const CurrencyUse& use, bool isListed) {
  return {{"code", code},
          {"name", currencyNamed(session, code).name},
          {"symbol", currencySign(session, code)},
          {"decimals", currencyDigits(code)},
          {"books", use.books},
          {"accounts", use.accounts},
          {"records", use.records},
          {"listed", isListed}};
}

/// "CHF (Swiss Franc), SEK (Swedish Krona)".
std::string namesOf(Session& session, const Codes& codes) {
  Codes names;
  for (const auto& code : codes)
    names.push_back(session.text("{} ({})", code, currencyNamed(session, code).name));
  return fmt::format("{}", fmt::join(names, ", "));
}

void listCurrencies(Session& session, const CurrencyListOptions& options) {
  const auto list = listOfOwn(session);
  auto uses = done(currencyUses(session.root()));
  const auto known = options.all ? CurrencyManager::currenciesInTender(session.now()) : list;
  const auto codes = currenciesLike(session, known, options.text);
  if (session.options().json) {
    json::array rows;
    for (const auto& code : codes)
      rows.push_back(jsonOfListed(session, code, uses[code], isAmong(list, code)));
    return session.printJson(rows);
  }
  if (codes.empty()) {
    throw options.all ? refused("no currency has '{}' in its code or name", printable(options.text))
                      : refused(
                            "no currency of your list has '{}' in its code or name; see: moniva currency "
                            "list --all",
                            printable(options.text));
  }
  std::vector<Column> columns{{.title = session.text("Currency"), .isWhole = true},
                              {.title = session.text("Name")},
                              {.title = session.text("Sign")},
                              {.title = session.text("Decimals"), .align = Align::right}};
  if (options.all) {
    columns.insert(columns.begin(), Column{});
  } else {
    for (auto title : {session.text("Books"), session.text("Accounts"), session.text("Paid in it")})
      columns.push_back({.title = std::move(title), .align = Align::right});
  }
  Table table(std::move(columns));
  const auto counted = [](std::int64_t n) { return Cell(std::to_string(n), n == 0 ? ink::dim : ink::plain); };
  for (const auto& code : codes) {
    std::vector<Cell> row{code, currencyNamed(session, code).name, currencySign(session, code),
                          std::to_string(currencyDigits(code))};
    if (options.all) {
      row.insert(row.begin(), isAmong(list, code) ? Cell("*", ink::bold) : Cell());
    } else {
      const auto& use = uses[code];
      for (const auto n : {use.books, use.accounts, use.records}) row.push_back(counted(n));
    }
    table.addRow(std::move(row));
  }
  session.out() << table.render(session.style(), session.width());
  if (options.all || !options.text.empty()) return;
  Codes unlisted;
  for (const auto& [code, use] : uses) {
    if (!isAmong(list, code)) unlisted.push_back(code);
  }
  if (unlisted.empty()) return;
  session.say(session.text("In use but not in your list: {}. To add it: moniva currency add {}",
                           fmt::format("{}", fmt::join(unlisted, ", ")), unlisted.front()));
}

/// Ends a command that changed the list: the currencies concerned as JSON, or the sentence.
void answerList(Session& session, const Codes& codes, const std::string& sentence) {
  session.root().markRecentEditDate();
  if (!session.options().json) return session.answer(sentence);
  const auto list = listOfOwn(session);
  auto uses = done(currencyUses(session.root()));
  json::array rows;
  for (const auto& code : codes) rows.push_back(jsonOfListed(session, code, uses[code], isAmong(list, code)));
  session.printJson(rows);
}

void addCurrencies(Session& session, const Codes& typed) {
  for (const auto& code : typed) currencyCodeTyped(session, code);
  Codes added;
  Codes present;
  done(atomically(session.root(), [&](Connection&) -> Result<> {
    for (const auto& code : typed) {
      const auto what = addCurrency(session.root(), code);
      if (!what) return tl::make_unexpected(what.error());
      (*what == CurrencyAdded::present ? present : added).push_back(code);
    }
    return {};
  }));
  if (added.empty()) throw refused("in your list already: {}", fmt::format("{}", fmt::join(present, ", ")));
  std::string sentence = session.text("Added to your currencies: {}.", namesOf(session, added));
  if (!present.empty())
    sentence += " " + session.text("There already: {}.", fmt::format("{}", fmt::join(present, ", ")));
  answerList(session, typed, sentence);
}

void removeCurrencies(Session& session, const Codes& typed) {
  const auto list = listOfOwn(session);
  for (const auto& code : typed) {
    if (isAmong(list, code)) continue;
    if (const auto meant = didYouMean(code, list))
      throw refused("'{}' is not in your list; did you mean {}?", printable(code), *meant);
    throw refused("'{}' is not in your list; see: moniva currency list", printable(code));
  }
  done(atomically(session.root(), [&](Connection&) -> Result<> {
    for (const auto& code : typed) {
      if (auto removed = removeCurrency(session.root(), code); !removed) return removed;
    }
    return {};
  }));
  const auto uses = done(currencyUses(session.root()));
  std::string sentence = session.text("Taken off your currencies: {}.", namesOf(session, typed));
  if (std::ranges::any_of(typed, [&](const auto& code) { return uses.contains(code); }))
    sentence += " " + session.text("What is kept in them stays as it is.");
  answerList(session, typed, sentence);
}

}  // namespace

void addCurrencyCommands(CommandLine& line) {
  CLI::App* currency = line.add(line.app(), "currency");
  currency->require_subcommand(1);

  CLI::App* list = line.add(*currency, "list");
  auto listed = std::make_shared<CurrencyListOptions>();
  list->add_option("TEXT", listed->text, "Only those with this in their code or name");
  list->add_flag("--all", listed->all, "Every currency there is today");
  line.onRun(list, [listed](Session& session) { listCurrencies(session, *listed); });

  for (const bool adds : {true, false}) {
    CLI::App* change = line.add(*currency, adds ? "add" : "remove");
    auto codes = std::make_shared<Codes>();
    change->add_option("CODE", *codes, "Codes, such as CHF")->required();
    line.onRun(change, [codes, adds](Session& session) {
      const auto once = withoutRepeats(*codes);
      return adds ? addCurrencies(session, once) : removeCurrencies(session, once);
    });
  }
}

}  // namespace moniva
