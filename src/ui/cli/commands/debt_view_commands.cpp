#include <algorithm>
#include <boost/json.hpp>

#include "ui/cli/command_error.h"
#include "ui/cli/commands/account_rows.h"
#include "ui/cli/commands/debt_commands.h"
#include "ui/cli/did_you_mean.h"
#include "ui/cli/entry_options.h"
#include "ui/cli/records.h"
#include "ui/cli/table.h"
#include "ui/cli/text_width.h"
#include "ui/cli/typed_text.h"

namespace moniva {
namespace {

namespace json = boost::json;

struct DebtListOptions {
  std::string person;
  bool all = false;
  bool settled = false;
};

json::value accountJson(Session& session, const std::string& key) {
  if (key.empty()) return nullptr;
  const auto account = MonivaAccount::getAccountWithPK(session.root(), key);
  return json::object{{"pk", key}, {"title", account ? account->title : key}};
}

/// The debts of one direction; nothing where there are none.
std::string debtTable(Session& session, const std::vector<DebtReport>& reports, int direction) {
  const auto report = std::ranges::find(reports, direction, &DebtReport::debtType);
  if (report == reports.end()) return {};
  Table table({{.title = report->heading},
               {.title = session.text("Date")},
               {.title = session.text("Amount"), .align = Align::right},
               {.title = session.text("Repaid"), .align = Align::right},
               {.title = session.text("Still owed"), .align = Align::right},
               {.title = session.text("Note"), .maxWidth = 30},
               {.title = session.text("Record")}});
  std::string before;
  const auto amount = [&](double value, const std::string& currency) {
    return value == 0 ? std::string() : session.amounts().format(value, currency);
  };
  for (const auto& debt : report->debtArray) {
    table.addRow({debt.person == before && !table.empty() ? "" : Cell(debt.person, ink::bold),
                  dateText(session, debt.datetime), session.amounts().format(debt.amount, debt.currency),
                  amount(debt.repaidAmount, debt.currency),
                  debt.repaidFinished ? Cell(session.text("settled"), ink::dim)
                                      : Cell(session.amounts().format(debt.owed(), debt.currency)),
                  debt.note, Cell(shortEid(debt.eid), ink::dim)});
    before = debt.person;
  }
  table.addRule();
  const auto total = [&](double value, const std::string& currency) {
    return Cell(amount(value, currency), ink::bold);
  };
  for (const auto& sum : report->currencyArray) {
    table.addRow({Cell(session.text("Total"), ink::bold), "", total(sum.amount, sum.currency),
                  total(sum.repaidAmount, sum.currency),
                  Cell(session.amounts().format(sum.owed, sum.currency), ink::bold)});
  }
  return table.render(session.style(), session.width());
}

void listDebts(Session& session, const DebtListOptions& options) {
  const std::string person = options.person.empty() ? "" : debtorNamed(session, options.person);
  const auto which = options.all       ? Debt::Which::all
                     : options.settled ? Debt::Which::settled
                                       : Debt::Which::open;
  auto debts = done(Debt::list(session.root(), which, person));
  if (session.options().json) {
    return session.printJson(jsonOf(session, debtsByPerson(session.root(), std::move(debts))));
  }
  if (debts.empty()) {
    return session.say(options.settled ? session.text("There is no settled debt.")
                       : options.all   ? session.text("There is no debt.")
                                       : session.text("There is no open debt."));
  }
  const auto reports = debtsByDirection(session.root(), std::move(debts));
  const std::string borrowed = debtTable(session, reports, kind::kBorrowed);
  const std::string lent = debtTable(session, reports, kind::kLent);
  session.out() << borrowed << (borrowed.empty() || lent.empty() ? "" : "\n") << lent;
}

}  // namespace

void showDebt(Session& session, const Debt& debt) {
  if (session.options().json) return session.printJson(jsonOf(session, debt));
  const auto amount = [&](double value) { return session.amounts().format(value, debt.currency); };
  Facts facts(session);
  facts.add(debt.isBorrowed() ? session.text("Borrow from") : session.text("Lend to"), debt.person);
  facts.add(session.text("Amount"), amount(debt.amount));
  facts.add(session.text("Repaid"), amount(debt.repaidAmount));
  facts.add(session.text("Still owed"), amount(debt.owed()));
  facts.add(session.text("Date"), dateText(session, debt.datetime));
  facts.add(session.text("Account"), accountText(session, debt.paymentAccount));
  if (!debt.note.empty()) facts.add(session.text("Note"), debt.note);
  facts.add(session.text("State"), debt.isDeleted != 0   ? session.text("deleted")
                                   : debt.repaidFinished ? session.text("settled")
                                                         : session.text("open"));
  facts.add(session.text("Record"), debt.eid);
  facts.print();
  if (debt.repaidList.empty()) return;
  Table table({{.title = session.text("Repaid")},
               {.title = session.text("Amount"), .align = Align::right},
               {.title = session.text("Account")},
               {.title = session.text("Note"), .maxWidth = 30},
               {.title = session.text("Record")}});
  for (const auto& part : debt.repaidList) {
    table.addRow({dateText(session, part.datetime), amount(part.amount), accountText(session, part.account),
                  part.note, Cell(shortEid(part.eid), ink::dim)});
  }
  session.out() << '\n' << table.render(session.style(), session.width());
}

Debt debtTyped(Session& session, const std::string& eid, DebtState state) {
  const std::string record = recordTyped(session, eid);
  auto debt = Debt::debtFromEID(session.root(), record);
  if (!debt) {
    if (const auto repaid = Debt::debtOfRepayment(session.root(), record)) {
      throw refused("the record '{}' is a repayment; its debt is {}", printable(eid), repaid->eid);
    }
    throw refused("the record '{}' is no debt", printable(eid));
  }
  if (debt->isDeleted > 1 && state != DebtState::any) {
    throw refused("the debt '{}' went for good, as with its account when that was cleared", printable(eid));
  }
  if (state == DebtState::inUse && debt->isDeleted != 0) {
    throw refused("the debt '{}' is deleted; bring it back with: moniva debt restore EID", printable(eid));
  }
  if (state == DebtState::deleted && debt->isDeleted == 0) {
    throw refused("the debt '{}' is not deleted", printable(eid));
  }
  if (!debt->getRepaid()) throw refused("the repayments of '{}' cannot be read", printable(eid));
  return std::move(*debt);
}

std::string debtorNamed(Session& session, const std::string& name) {
  const std::string person = wellFormed(name, "the name");
  const auto people = done(Debt::people(session.root()));
  if (std::ranges::find(people, person) != people.end()) return person;
  if (people.empty()) throw refused("there is no debt yet; add one with: moniva debt borrow AMOUNT PERSON");
  if (const auto meant = didYouMean(person, people)) {
    throw refused("there is no debt of '{}'; did you mean '{}'?", printable(person), printable(*meant));
  }
  throw refused("there is no debt of '{}'; see: moniva debt list --all", printable(person));
}

std::string debtText(const Session& session, const Debt& debt) {
  const std::string amount = session.amounts().format(debt.amount, debt.currency);
  return debt.isBorrowed() ? session.text("{} borrowed from {}", amount, printable(debt.person))
                           : session.text("{} lent to {}", amount, printable(debt.person));
}

std::string accountText(Session& session, const std::string& account) {
  if (account.empty()) return session.text("no account");
  const auto row = MonivaAccount::getAccountWithPK(session.root(), account);
  return row ? row->title : account;
}

json::object jsonOf(Session& session, const Debt& debt) {
  json::array repaid;
  for (const auto& part : debt.repaidList) {
    repaid.push_back({{"eid", part.eid},
                      {"amount", part.amount},
                      {"datetime", isoDate(session, part.datetime)},
                      {"note", part.note},
                      {"account", accountJson(session, part.account)}});
  }
  return {{"eid", debt.eid},
          {"type", debt.type},
          {"person", debt.person},
          {"amount", debt.amount},
          {"repaidAmount", debt.repaidAmount},
          {"repaidFinished", debt.repaidFinished},
          {"currency", debt.currency},
          {"datetime", isoDate(session, debt.datetime)},
          {"timeZone", debt.timeZone},
          {"paymentAccount", accountJson(session, debt.paymentAccount)},
          {"note", debt.note},
          {"isDeleted", debt.isDeleted},
          {"repaidList", std::move(repaid)}};
}

json::array jsonOf(Session& session, const std::vector<DebtReport>& reports) {
  json::array debtors;
  for (const auto& report : reports) {
    json::array list;
    for (const auto& debt : report.debtArray) list.push_back(jsonOf(session, debt));
    json::array currencies;
    for (const auto& [currency, amount, repaid, owed] : report.currencyArray) {
      currencies.push_back(
          {{"currency", currency}, {"amount", amount}, {"repaidAmount", repaid}, {"owed", owed}});
    }
    debtors.push_back({{"person", report.person},
                       {"debtType", report.debtType},
                       {"debtArray", std::move(list)},
                       {"currencyArray", std::move(currencies)}});
  }
  return debtors;
}

void addDebtViewCommands(CommandLine& line, CLI::App& debt) {
  CLI::App* list = line.add(debt, "list");
  auto options = std::make_shared<DebtListOptions>();
  list->add_option("PERSON", options->person, "Whose debts (else everybody's)");
  auto* all = list->add_flag("--all", options->all, "Open and settled debts");
  list->add_flag("--settled", options->settled, "Only debts that were repaid")->excludes(all);
  line.onRun(list, [options](Session& session) { listDebts(session, *options); });

  CLI::App* show = line.add(debt, "show");
  auto eid = std::make_shared<std::string>();
  show->add_option("EID", *eid, "The record, as 'moniva debt list' shows it")->required();
  line.onRun(show, [eid](Session& session) { showDebt(session, debtTyped(session, *eid, DebtState::any)); });
}

}  // namespace moniva
