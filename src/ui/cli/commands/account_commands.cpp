#include <algorithm>
#include <boost/json.hpp>

#include "model/account_balance.h"
#include "model/account_dates.h"
#include "model/transaction_type.h"
#include "reports/account_query.h"
#include "storage/writes.h"
#include "ui/cli/command_error.h"
#include "ui/cli/command_line.h"
#include "ui/cli/commands/account_rows.h"
#include "ui/cli/commands/bill_rows.h"
#include "ui/cli/commands/report_commands.h"
#include "ui/cli/entry_options.h"
#include "ui/cli/rates.h"
#include "ui/cli/records.h"
#include "ui/cli/table.h"
#include "ui/cli/typed_text.h"

namespace moniva {
namespace {

struct AccountAddOptions {
  std::string name;
  std::string type;
  std::string currency;
  std::string openingBalance;
  std::optional<std::string> note;
};

/// What was typed goes into an account that came back, too; what was not stays as it was.
std::string writeTyped(Session& session, MonivaAccount& account, const AccountAddOptions& options,
                       double openingBalance) {
  std::string also;
  if (!options.currency.empty()) also = changeCurrency(session, account, options.currency);
  if (!options.type.empty()) {
    done(account.updateType(keptFor(accountTypeWords(), options.type)));
    done(account.updateTrackingType(account.trackingType));
  }
  if (!options.openingBalance.empty()) done(account.updateBeginBalance(openingBalance));
  if (options.note) done(account.updateNote(*options.note));
  return also;
}

void addAccount(Session& session, const AccountAddOptions& options) {
  auto& root = session.root();
  MonivaAccount account(root);
  account.aKind = kAccountKind;
  account.title = wellFormed(options.name, "the name");
  account.setType(keptFor(accountTypeWords(), options.type));
  account.currency = currencyTyped(session, options.currency);
  const auto in = takenCurrencyText(session, options.currency, account.currency);
  const double opening = options.openingBalance.empty()
                             ? 0
                             : signedAmountTyped(session, options.openingBalance, account.currency);
  account.beginBalance = opening;
  account.note = asTyped(options.note.value_or(""), "the note");
  const auto answer = done(atomically(root, [&](Connection&) -> Result<std::string> {
    requireFreeTitle(session, kAccountKind, account.title);
    const bool isBack = done(account.add()) == MonivaAccount::Added::revived;
    const std::string also = isBack ? writeTyped(session, account, options, opening) : "";
    if (!countTheTotalBalance(account)) return refusalOfStore(root);
    if (!isBack) return session.text("Added the account '{}' in {}.", account.title, in);
    return session.text("The deleted account '{}' is back with {}.", account.title,
                        ownRecordsText(session, account)) +
           also;
  }));
  root.markRecentEditDate();
  if (session.options().json) return session.printJson(jsonNow(session, account));
  session.answer(answer);
}

void showAccount(Session& session, const std::string& name) {
  MonivaAccount account = accountNamed(session, name);
  done(getAllStatistics(account));
  done(getAllPeriod(account));
  if (session.options().json) return session.printJson(jsonWithGroups(session, account));
  Facts facts(session);
  facts.add(session.text("Account"), account.title);
  facts.add(session.text("Kind"), typeText(session, account));
  facts.add(session.text("Currency"), account.currency);
  facts.addState(account);
  facts.add(session.text("Tracks"), trackingText(session, account));
  if (account.isDebtAccount()) {
    facts.add(session.text("Bills close on"), closingDayText(session, account));
    facts.add(session.text("Bills are due on"), dueDayText(session, account));
    facts.add(session.text("Reminders"),
              account.repayNotificationEnabled() ? session.text("on") : session.text("off"));
  }
  facts.add(session.text("Opening balance"),
            session.amounts().format(account.beginBalance, account.currency));
  facts.addTotals(account);
  facts.addDates(account);
  facts.print();
}

void printAccounts(Session& session, const std::vector<MonivaAccount>& accounts, const std::string& none) {
  std::map<std::string, double> totals;
  for (const auto& account : accounts) totals[account.currency] += account.totalBalance;
  if (session.options().json) {
    boost::json::array list;
    for (const auto& account : accounts) list.push_back(jsonOf(session, account));
    return session.printJson(list);
  }
  if (accounts.empty()) return session.say(none);
  Table table({{.title = session.text("Account")},
               {.title = session.text("Kind")},
               {.title = session.text("Currency")},
               {.title = session.text("Balance"), .align = Align::right}});
  for (const auto& account : accounts) {
    table.addRow({titleCell(session, account), Cell(typeText(session, account), ink::dim), account.currency,
                  amountCell(session, account.totalBalance, account.currency)});
  }
  for (const auto& [currency, total] : totals)
    table.addTotal({session.text("Total"), "", currency, amountCell(session, total, currency)});
  session.out() << table.render(session.style(), session.width());
}

struct AccountListOptions {
  bool deleted = false;
  std::string use;
  std::string currency;
};

/// What an account may be wanted for, and which ones will do.
struct AccountUse {
  const char* word;
  AccountQuery::Rows (AccountQuery::*list)() const;
};
constexpr AccountUse kAccountUses[] = {{"pay", &AccountQuery::accountsArrayForPayCard},
                                       {"transfer-out", &AccountQuery::accountsArrayForTransferOut},
                                       {"transfer-in", &AccountQuery::accountsArrayForTransferIn},
                                       {"top-up", &AccountQuery::accountsArrayForRecharge},
                                       {"repay", &AccountQuery::accountsArrayForCreditCardRepay},
                                       {"lend", &AccountQuery::accountsArrayForLend},
                                       {"borrow", &AccountQuery::accountsArrayForBorrow}};

void listAccountsFor(Session& session, const AccountListOptions& options) {
  AccountQuery query(session.root());
  if (!options.currency.empty()) query.currency = currencyCodeTyped(session, options.currency);
  const auto use = std::ranges::find(kAccountUses, options.use, &AccountUse::word);
  const auto accounts =
      done(use == std::end(kAccountUses) ? query.accountWithoutGroupArray() : (query.*use->list)());
  printAccounts(session, accounts, session.text("No open account will do."));
}

}  // namespace

void listAccounts(Session& session) {
  printAccounts(session, MonivaAccount::list(session.root(), kAccountKind),
                session.text("There is no account yet. Add one with: moniva account add NAME"));
}

void addAccountCommands(CommandLine& line) {
  CLI::App* account = line.add(line.app(), "account");
  account->require_subcommand(1);

  CLI::App* add = line.add(*account, "add");
  auto options = std::make_shared<AccountAddOptions>();
  add->add_option("NAME", options->name, "Name of the account")->required();
  add->add_option("--type", options->type, "Kind of account (else saving)")
      ->type_name("KIND")
      ->check(oneOf(wordsOf(accountTypeWords())));
  add->add_option("--currency", options->currency,
                  "Currency of the account (else the current book's, or the one of your country)")
      ->type_name("CODE");
  add->add_option("--opening-balance", options->openingBalance, "What was in it at the beginning")
      ->type_name("AMOUNT");
  add->add_option("--note", options->note, "A note")->type_name("TEXT");
  line.onRun(add, [options](Session& session) { addAccount(session, *options); });

  CLI::App* list = line.add(*account, "list");
  auto listed = std::make_shared<AccountListOptions>();
  auto* deleted = list->add_flag("--deleted", listed->deleted, "Those that were deleted");
  std::vector<std::string> uses;
  for (const auto& use : kAccountUses) uses.emplace_back(use.word);
  list->add_option("--for", listed->use, "The open ones that will do for that")
      ->type_name("USE")
      ->check(oneOf(uses))
      ->excludes(deleted);
  list->add_option("--currency", listed->currency, "The open ones in that currency")
      ->type_name("CODE")
      ->excludes(deleted);
  line.onRun(list, [listed](Session& session) {
    if (listed->deleted) return listDeleted(session, kAccountKind);
    if (listed->use.empty() && listed->currency.empty()) return listAccounts(session);
    listAccountsFor(session, *listed);
  });

  CLI::App* show = line.add(*account, "show");
  auto shown = std::make_shared<std::string>();
  show->add_option("NAME", *shown, "Name of the account")->required();
  line.onRun(show, [shown](Session& session) { showAccount(session, *shown); });

  const RowFamily family{line, *account, kAccountKind};
  addRowSettings(family);
  addRowUpkeep(family);
}

}  // namespace moniva
