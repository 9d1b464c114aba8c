#include "ui/cli/commands/debt_commands.h"

#include <boost/json.hpp>
#include <optional>

#include "ui/cli/command_error.h"
#include "ui/cli/entry_options.h"
#include "ui/cli/records.h"
#include "ui/cli/text_width.h"
#include "ui/cli/typed_text.h"

namespace moniva {
namespace {

namespace json = boost::json;

/// Money that changes hands, as typed.
struct DebtOptions {
  std::string amount;
  std::string person;
  std::string eid;
  std::string account;
  std::string date;
  std::string note;
  bool apart = false;
  bool borrowed = false;
  bool lent = false;
  bool excess = false;
  AmountOptions amounts;
};

json::object outcomeJson(Session& session, const DebtOutcome& outcome) {
  json::array parts;
  for (const auto& part : outcome.repaid) {
    parts.push_back(
        {{"eid", part.eid}, {"debt", part.debt}, {"amount", part.amount}, {"settles", part.settles}});
  }
  json::value debt;
  if (const auto made = Debt::debtFromEID(session.root(), outcome.debt)) debt = jsonOf(session, *made);
  return {{"repaid", std::move(parts)},
          {"repaidAmount", outcome.repaidAmount},
          {"remainder", outcome.remainder},
          {"debt", std::move(debt)}};
}

/// " 2 debts are settled."; nothing for none.
std::string settledText(Session& session, const DebtOutcome& outcome) {
  const auto settled = std::ranges::count_if(outcome.repaid, &DebtOutcome::Part::settles);
  if (settled == 0) return {};
  return " " + session.count("{} debt is settled.", "{} debts are settled.", settled);
}

void addDebt(Session& session, const DebtOptions& options, int type) {
  Debt debt(session.root());
  debt.type = type;
  debt.person = wellFormed(options.person, "the name");
  debt.note = asTyped(options.note, "the note");
  debt.datetime = momentTyped(session, options.date);
  double amount = 0;
  DebtOutcome outcome;
  changeStore(session, [&] {
    std::string currency = session.defaultCurrency();
    if (!options.account.empty()) {
      const auto account = accountNamed(session, options.account, Meant::open);
      debt.paymentAccount = account.pk;
      currency = account.currency;
    }
    debt.amount = amount = amountTyped(session, options.amount, currency, options.amounts);
    outcome = done(debt.add(options.apart ? Debt::Offsetting::apart : Debt::Offsetting::againstOpenDebts));
  });
  if (session.options().json) return session.printJson(outcomeJson(session, outcome));
  debt.amount = amount;
  std::string line = debtSentence(session, debt);
  if (outcome.repaidAmount > 0) {
    const std::string repaid = session.amounts().format(outcome.repaidAmount, debt.currency);
    const std::string person = printable(debt.person);
    line += " " + (type == kind::kBorrowed
                       ? session.text("{} of it pays back what {} owed you.", repaid, person)
                       : session.text("{} of it pays back what you owed {}.", repaid, person));
    line += settledText(session, outcome);
    line += " " + (outcome.remainder > 0
                       ? session.text("The other {} is a new debt.",
                                      session.amounts().format(outcome.remainder, debt.currency))
                       : session.text("No new debt is left."));
  }
  session.answer(line);
}

/// The open debts of the person in the direction that is meant. Ends the command when that is not clear and
/// when there are none.
std::vector<Debt> openDebtsMeant(Session& session, const DebtOptions& options, const std::string& person) {
  auto debts = done(Debt::list(session.root(), Debt::Which::open, person));
  std::vector<Debt> borrowed;
  std::vector<Debt> lent;
  bool older = false;
  for (auto& debt : debts) {
    const bool isOlder = debt.type != kind::kBorrowed && debt.type != kind::kLent;
    older = older || isOlder;
    if (!isOlder) (debt.isBorrowed() ? borrowed : lent).push_back(std::move(debt));
  }
  if (!borrowed.empty() && !lent.empty() && !options.borrowed && !options.lent) {
    throw refused(
        "you owe '{}', who owes you as well; say --borrowed for what you pay back, or --lent for what is"
        " paid back to you",
        printable(person));
  }
  const bool isBorrowed = options.borrowed || (!options.lent && !borrowed.empty());
  auto& meant = isBorrowed ? borrowed : lent;
  if (!meant.empty()) return std::move(meant);
  if (older) {
    throw refused("the debts of '{}' are older records; name one with --debt EID", printable(person));
  }
  throw options.borrowed ? refused("you owe '{}' nothing", printable(person))
  : options.lent         ? refused("'{}' owes you nothing", printable(person))
                         : refused("nothing is owed between you and '{}'", printable(person));
}

std::string repaidSentence(Session& session, const Debt& debt, const std::string& amount,
                           const std::string& account, const std::string& day) {
  const std::string person = printable(debt.person);
  if (account.empty()) {
    return debt.isBorrowed() ? session.text("Paid {} back to {}, on {}.", amount, person, day)
                             : session.text("{} paid {} back, on {}.", person, amount, day);
  }
  return debt.isBorrowed() ? session.text("Paid {} back to {}, from {}, on {}.", amount, person, account, day)
                           : session.text("{} paid {} back, into {}, on {}.", person, amount, account, day);
}

void repayDebt(Session& session, const DebtOptions& options) {
  if (options.person.empty() == options.eid.empty()) {
    throw notUnderstood("say whose debt is repaid: a PERSON, or one debt with --debt EID");
  }
  MVAppRoot& root = session.root();
  const Date moment = momentTyped(session, options.date);
  const std::string& note = asTyped(options.note, "the note");
  Debt debt(root);
  std::string account;
  std::string accountTitle;
  double amount = 0;
  DebtOutcome outcome;
  const auto shown = [&](double value) { return session.amounts().format(value, debt.currency); };
  changeStore(session, [&] {
    if (!options.eid.empty()) {
      debt = debtTyped(session, options.eid);
    } else {
      debt = openDebtsMeant(session, options, debtorNamed(session, options.person)).front();
    }
    if (!options.account.empty()) {
      const auto row = accountNamed(session, options.account, Meant::open);
      account = row.pk;
      accountTitle = printable(row.title);
      if (options.eid.empty()) debt.currency = row.currency;
    }
    amount = amountTyped(session, options.amount, debt.currency, options.amounts);
    outcome = options.eid.empty()
                  ? done(Debt::repaidTo(root, debt.person, debt.type, amount, moment, note, account))
                  : done(debt.repaid(amount, moment, note, account));
    if (outcome.remainder == 0 || options.excess) return;
    if (outcome.repaidAmount == 0) {
      throw debt.isBorrowed()
          ? refused("nothing is owed to '{}' in {}; --excess records the {} as lent to them",
                    printable(debt.person), debt.currency, shown(amount))
          : refused("nothing is owed by '{}' in {}; --excess records the {} as borrowed from them",
                    printable(debt.person), debt.currency, shown(amount));
    }
    const std::string owed = shown(outcome.repaidAmount);
    const std::string rest = shown(outcome.remainder);
    throw debt.isBorrowed()
        ? refused("you owe '{}' {}; the other {} would be lent to them, which --excess records",
                  printable(debt.person), owed, rest)
        : refused("'{}' owes you {}; the other {} would be borrowed from them, which --excess records",
                  printable(debt.person), owed, rest);
  });
  if (session.options().json) return session.printJson(outcomeJson(session, outcome));
  std::string line = repaidSentence(session, debt, shown(amount), accountTitle, dateText(session, moment));
  line += settledText(session, outcome);
  if (outcome.remainder > 0) {
    line += " " + (debt.isBorrowed() ? session.text("{} of it was more than was owed and is lent now.",
                                                    shown(outcome.remainder))
                                     : session.text("{} of it was more than was owed and is borrowed now.",
                                                    shown(outcome.remainder)));
  } else {
    double owed = 0;
    const auto open = done(Debt::list(root, Debt::Which::open, debt.person));
    for (const auto& each : open) {
      if (each.isBorrowed() == debt.isBorrowed() && each.currency == debt.currency) owed += each.owed();
    }
    line += " " + (owed > 0 ? session.text("{} is still owed.", shown(owed))
                            : session.text("Nothing more is owed."));
  }
  session.answer(line);
}

/// Account, date and note, which all money that changes hands has.
void addMoneyOptions(CLI::App& command, DebtOptions& options) {
  command.add_option("-a,--account", options.account, "The account it went through (else none)")
      ->type_name("NAME");
  command.add_option("-d,--date", options.date, "When, today at the latest (else now)")->type_name("DATE");
  command.add_option("-n,--note", options.note, "A note")->type_name("TEXT");
  addRoundOption(command, options.amounts);
}

}  // namespace

std::string debtSentence(Session& session, const Debt& debt) {
  const std::string amount = session.amounts().format(debt.amount, debt.currency);
  const std::string person = printable(debt.person);
  const std::string day = dateText(session, debt.datetime);
  if (debt.paymentAccount.empty()) {
    return debt.isBorrowed() ? session.text("Borrowed {} from {}, on {}.", amount, person, day)
                             : session.text("Lent {} to {}, on {}.", amount, person, day);
  }
  const std::string account = printable(accountText(session, debt.paymentAccount));
  return debt.isBorrowed()
             ? session.text("Borrowed {} from {}, into {}, on {}.", amount, person, account, day)
             : session.text("Lent {} to {}, from {}, on {}.", amount, person, account, day);
}

void addDebtCommands(CommandLine& line) {
  CLI::App* debt = line.add(line.app(), "debt");
  debt->require_subcommand(1);
  for (const int type : {kind::kBorrowed, kind::kLent}) {
    const bool borrows = type == kind::kBorrowed;
    CLI::App* add = line.add(*debt, borrows ? "borrow" : "lend");
    auto options = std::make_shared<DebtOptions>();
    add->add_option("AMOUNT", options->amount, "The amount, above zero, such as 50 or 12.50")->required();
    add->add_option("PERSON", options->person,
                    borrows ? toTranslate("Who lends it to you") : toTranslate("Whom you lend it to"))
        ->required();
    add->add_flag("--apart", options->apart, "Do not set it against what is owed the other way");
    addMoneyOptions(*add, *options);
    line.onRun(add, [options, type](Session& session) { addDebt(session, *options, type); });
  }
  CLI::App* repay = line.add(*debt, "repay");
  auto options = std::make_shared<DebtOptions>();
  repay->add_option("AMOUNT", options->amount, "What is paid back, above zero")->required();
  repay->add_option("PERSON", options->person, "Whom you pay back, or who pays you back");
  auto* one = repay->add_option("--debt", options->eid, "One debt, as 'moniva debt list' shows its record")
                  ->type_name("EID");
  auto* borrowed =
      repay->add_flag("--borrowed", options->borrowed, "What you borrowed is paid back")->excludes(one);
  repay->add_flag("--lent", options->lent, "What you lent is paid back")->excludes(borrowed)->excludes(one);
  repay->add_flag("--excess", options->excess, "Record what is more than is owed as a debt the other way");
  addMoneyOptions(*repay, *options);
  line.onRun(repay, [options](Session& session) { repayDebt(session, *options); });

  addDebtViewCommands(line, *debt);
  addDebtEditCommands(line, *debt);
}

}  // namespace moniva
