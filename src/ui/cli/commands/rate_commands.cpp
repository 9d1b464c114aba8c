#include "ui/cli/commands/rate_commands.h"

#include <algorithm>
#include <boost/json.hpp>

#include "currency/currency_manager.h"
#include "model/currency_list.h"
#include "ui/cli/command_error.h"
#include "ui/cli/currency_names.h"
#include "ui/cli/entry_options.h"
#include "ui/cli/rates.h"
#include "ui/cli/records.h"
#include "ui/cli/table.h"
#include "ui/cli/text_width.h"

namespace moniva {
namespace {

namespace json = boost::json;

struct RateShowOptions {
  std::string from;
  std::string to;
  bool all = false;
  bool direct = false;
};

struct RateConvertOptions {
  std::string amount;
  std::string from;
  std::string to;
  AmountOptions amounts;
};

/// What a table shows of a rate: six digits are enough to compare.
std::string shortRate(Session& session, double rate) {
  return rateText(session, rate, 6);
}

json::object jsonOfPairs(Session& session, json::array pairs) {
  auto object = jsonOfSource(session);
  object["pairs"] = std::move(pairs);
  return object;
}

/// `rate` is null where it is not known.
json::object jsonOfPair(const std::string& from, const std::string& to, const json::value& rate) {
  return {{"from", from}, {"to", to}, {"rate", rate}};
}

/// The currencies of the person's list, books and accounts, or all that have a rate, without the own one.
std::vector<std::string> currenciesToShow(Session& session, const std::string& own, bool all) {
  std::vector<std::string> codes;
  if (all) {
    for (const auto& [code, rate] : session.rates().exchangeRates()) codes.push_back(code);
  } else {
    codes = DoDB::getCurrencyList(session.root());
    for (const auto& [code, use] : done(currencyUses(session.root()))) {
      if (use.books + use.accounts > 0) codes.push_back(code);
    }
    std::ranges::sort(codes);
    codes.erase(std::unique(codes.begin(), codes.end()), codes.end());
  }
  std::erase(codes, own);
  return codes;
}

void showRateTable(Session& session, bool all) {
  const std::string own = session.defaultCurrency();
  freshenRates(session);
  auto& rates = session.rates();
  // Ends the command.
  if (rates.exchangeRates().empty()) rateBetween(session, own, own == "USD" ? "EUR" : "USD", false);
  sayWhereOld(session);
  json::array list;
  Table table({{.title = session.text("Currency"), .isWhole = true},
               {.title = session.text("Name")},
               {.title = session.text("1 {} is", own), .align = Align::right},
               {.title = session.text("1 of it is"), .align = Align::right}});
  const auto cell = [&](const std::string& from, const std::string& to) {
    const auto rate = rateKnown(session, from, to);
    list.push_back(jsonOfPair(from, to, rate ? json::value(*rate) : json::value()));
    return rate ? Cell(fmt::format("{} {}", shortRate(session, *rate), to))
                : Cell(session.text("not known"), ink::dim);
  };
  const auto codes = currenciesToShow(session, own, all);
  for (const auto& code : codes)
    table.addRow({code, currencyNamed(session, code).name, cell(own, code), cell(code, own)});
  if (session.options().json) return session.printJson(jsonOfPairs(session, std::move(list)));
  if (codes.empty()) {
    return session.answer(
        session.text("Your list has no other currency than {}; add one with: moniva currency add CODE", own));
  }
  session.out() << table.render(session.style(), session.width());
  session.answer(sourceText(session));
}

void showRatePair(Session& session, const RateShowOptions& options) {
  const std::string from = currencyCodeTyped(session, options.from);
  const std::string to =
      options.to.empty() ? session.defaultCurrency() : currencyCodeTyped(session, options.to);
  if (from == to) throw notUnderstood("{} would be compared with itself; name another currency", from);
  double rate = 0;
  double back = 0;
  if (options.direct) {
    rate = decimalOf(done(CurrencyManager::exchangeRateFromCurrency(session.platform(), from, to)));
    back = decimalOf(static_cast<float>(1 / rate));
  } else {
    freshenRates(session);
    rate = rateBetween(session, from, to, false);
    back = rateBetween(session, to, from, false);
  }
  if (session.options().json) {
    if (options.direct) return session.printJson(jsonOfPair(from, to, rate));
    return session.printJson(jsonOfPairs(session, {jsonOfPair(from, to, rate), jsonOfPair(to, from, back)}));
  }
  const auto sentence = session.text("1 {} is {} {}, and 1 {} is {} {}.", from, rateText(session, rate), to,
                                     to, shortRate(session, back), from);
  session.answer(options.direct ? sentence : sentence + " " + sourceText(session));
}

void showRates(Session& session, const RateShowOptions& options) {
  if (!options.from.empty()) return showRatePair(session, options);
  if (options.direct) throw notUnderstood("--direct asks for one pair; name its currencies, such as USD EUR");
  showRateTable(session, options.all);
}

void convertAmount(Session& session, const RateConvertOptions& options) {
  const std::string from = currencyCodeTyped(session, options.from);
  const std::string to =
      options.to.empty() ? session.defaultCurrency() : currencyCodeTyped(session, options.to);
  const double amount = amountTyped(session, options.amount, from, options.amounts);
  if (from != to) freshenRates(session);
  const double rate = rateBetween(session, from, to, false);
  const double result = converted(amount, rate, currencyDigits(to));
  if (session.options().json) {
    auto object = jsonOfPair(from, to, rate);
    object["amount"] = amount;
    object["converted"] = result;
    if (from != to) {
      for (auto& member : jsonOfSource(session)) object[member.key()] = std::move(member.value());
    }
    return session.printJson(object);
  }
  const auto& amounts = session.amounts();
  if (from == to) {
    return session.answer(session.text("{} is {}: both are in the same currency.",
                                       amounts.formatWithCode(amount, from),
                                       amounts.formatWithCode(result, to)));
  }
  if (result == 0) {
    return session.answer(session.text("{} is nothing in {}. The rate of {} is {}.",
                                       amounts.formatWithCode(amount, from), to, ratesDay(session),
                                       rateText(session, rate)));
  }
  session.answer(session.text("{} is {}. The rate of {} is {}.", amounts.formatWithCode(amount, from),
                              amounts.formatWithCode(result, to), ratesDay(session),
                              rateText(session, rate)));
}

}  // namespace

void addRateCommands(CommandLine& line) {
  CLI::App* rate = line.add(line.app(), "rate");
  rate->require_subcommand(1);

  CLI::App* show = line.add(*rate, "show");
  auto shown = std::make_shared<RateShowOptions>();
  auto* from = show->add_option("FROM", shown->from, "A currency's code (else those of your list)");
  show->add_option("TO", shown->to, "The code of the other one (else your own currency)");
  show->add_flag("--all", shown->all, "Every rate known")->excludes(from);
  show->add_flag("--direct", shown->direct, "Ask the first service for the rate now");
  line.onRun(show, [shown](Session& session) { showRates(session, *shown); });

  CLI::App* conversion = line.add(*rate, "convert");
  auto asked = std::make_shared<RateConvertOptions>();
  conversion->add_option("AMOUNT", asked->amount, "The amount")->required();
  conversion->add_option("FROM", asked->from, "The code of its currency")->required();
  conversion->add_option("TO", asked->to, "The code of the other one (else your own currency)");
  addRoundOption(*conversion, asked->amounts);
  line.onRun(conversion, [asked](Session& session) { convertAmount(session, *asked); });

  addRateSources(line, *rate);
}

}  // namespace moniva
