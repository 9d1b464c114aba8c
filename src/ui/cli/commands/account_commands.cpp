#include <boost/json.hpp>
#include <cmath>

#include "base/amount.h"
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

struct AccountAddOptions {
  std::string name;
  std::string type = "saving";
  std::string currency;
  std::string openingBalance;
  std::string note;
};

const std::map<std::string, std::string> kTypes = {{"saving", "_SavingAccount"},
                                                   {"debt", "_DebtAccount"},
                                                   {"prepaid", "_PrepaidAccount"},
                                                   {"discount", "_DiscountAccount"}};

std::string typeText(const std::string& type) {
  for (const auto& [word, text] : kTypes) {
    if (text == type) return word;
  }
  return type;
}

void addAccount(Session& session, const AccountAddOptions& options) {
  MonivaAccount account(session.root());
  account.aKind = kAccountKind;
  account.title = wellFormed(options.name, "the name");
  account.setType(kTypes.at(options.type));
  account.currency = currencyTyped(session, options.currency);
  if (!options.openingBalance.empty())
    account.beginBalance = typed(parseSignedAmount(options.openingBalance));
  account.note = wellFormed(options.note, "the note");
  auto existing = MonivaAccount::getAccountWithTitle(session.root(), options.name);
  if (existing && existing->isDeleted == 0) {
    throw CommandError(CommandError::kRefused, fmt::format("there is an account '{}' already", options.name));
  }
  done(account.add());
  countTheTotalBalance(account);
  session.root().markRecentEditDate();
  if (session.options().json) return session.printJson(jsonOf(session, account));
  session.answer(session.text("Added the account '{}' in {}.", account.title, account.currency));
}

void showAccount(Session& session, const std::string& name) {
  MonivaAccount account = accountNamed(session, name);
  account.totalBalance = getTheTotalBalance(account);
  if (session.options().json) return session.printJson(jsonOf(session, account));
  Table table({{.title = ""}, {.title = ""}});
  const auto line = [&](const char* what, const std::string& value) {
    table.addRow({Cell(what, ink::dim), value});
  };
  line("Account", account.title);
  line("Kind", typeText(account.aType));
  line("Currency", account.currency);
  if (!account.note.empty()) line("Note", account.note);
  line("Opening balance", session.amounts().format(account.beginBalance, account.currency));
  line("Balance", session.amounts().format(account.totalBalance, account.currency));
  if (const auto first = done(getTheDateOfFirstTransaction(account)))
    line("First record", dateText(session, *first));
  if (const auto last = done(getTheDateOfLastTransaction(account)))
    line("Last record", dateText(session, *last));
  session.out() << table.render(session.style(), session.width());
}

}  // namespace

void listAccounts(Session& session) {
  auto accounts = MonivaAccount::list(session.root(), kAccountKind);
  const auto sums = done(sumsOfAllAccounts(session.root()));
  std::map<std::string, double> totals;
  for (auto& account : accounts) {
    const auto sum = sums.find(account.pk);
    account.totalBalance = account.beginBalance + (sum == sums.end() ? 0 : sum->second);
    totals[account.currency] += account.totalBalance;
  }
  if (session.options().json) {
    boost::json::array list;
    for (const auto& account : accounts) list.push_back(jsonOf(session, account));
    return session.printJson(list);
  }
  if (accounts.empty()) return session.say("There is no account yet. Add one with: moniva account add NAME");
  Table table({{.title = "Account"},
               {.title = "Kind"},
               {.title = "Currency"},
               {.title = "Balance", .align = Align::right}});
  const auto amount = [&](double value, const std::string& currency) {
    return Cell(session.amounts().formatPlain(value, currency), value < 0 ? ink::red : ink::plain);
  };
  for (const auto& account : accounts) {
    table.addRow({account.title, Cell(typeText(account.aType), ink::dim), account.currency,
                  amount(account.totalBalance, account.currency)});
  }
  for (const auto& [currency, total] : totals)
    table.addTotal({"Total", "", currency, amount(total, currency)});
  session.out() << table.render(session.style(), session.width());
}

void addAccountCommands(CommandLine& line) {
  CLI::App* account = line.add(line.app(), "account");
  account->require_subcommand(1);

  CLI::App* add = line.add(*account, "add");
  auto options = std::make_shared<AccountAddOptions>();
  add->add_option("NAME", options->name, "Name of the account")->required();
  add->add_option("--type", options->type, "Kind of account (else saving)")
      ->type_name("KIND")
      ->check(oneOf({"saving", "debt", "prepaid", "discount"}));
  add->add_option("--currency", options->currency, "Currency of the account (else that of the locale)")
      ->type_name("CODE");
  add->add_option("--opening-balance", options->openingBalance, "What was in it at the beginning")
      ->type_name("AMOUNT");
  add->add_option("--note", options->note, "A note")->type_name("TEXT");
  line.onRun(add, [options](Session& session) { addAccount(session, *options); });

  line.onRun(line.add(*account, "list"), listAccounts);

  CLI::App* show = line.add(*account, "show");
  auto shown = std::make_shared<std::string>();
  show->add_option("NAME", *shown, "Name of the account")->required();
  line.onRun(show, [shown](Session& session) { showAccount(session, *shown); });
}

}  // namespace moniva
