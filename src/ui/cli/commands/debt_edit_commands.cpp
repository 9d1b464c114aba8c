#include <boost/json.hpp>
#include <optional>

#include "ui/cli/command_error.h"
#include "ui/cli/commands/debt_commands.h"
#include "ui/cli/entry_options.h"
#include "ui/cli/records.h"
#include "ui/cli/text_width.h"
#include "ui/cli/typed_text.h"

namespace moniva {
namespace {

struct DebtEditOptions {
  std::string eid;
  std::optional<std::string> amount;
  std::optional<std::string> person;
  std::optional<std::string> account;
  bool noAccount = false;
  std::optional<std::string> date;
  std::optional<std::string> note;
  AmountOptions amounts;
};

void editDebt(Session& session, const DebtEditOptions& options) {
  if (!options.amount && !options.person && !options.account && !options.noAccount && !options.date &&
      !options.note) {
    throw notUnderstood("say what to change: --amount, --person, --account, --no-account, --date or --note");
  }
  std::optional<Date> moment;
  if (options.date) {
    if (options.date->empty()) throw notUnderstood("a record needs a date");
    moment = momentTyped(session, *options.date);
  }
  Debt debt(session.root());
  changeStore(session, [&] {
    debt = debtTyped(session, options.eid);
    const std::string before = debt.currency;
    if (options.account) {
      const auto account = accountNamed(session, *options.account, Meant::open);
      debt.paymentAccount = account.pk;
      debt.currency = account.currency;
    } else if (options.noAccount) {
      debt.paymentAccount.clear();
      debt.currency = session.defaultCurrency();
    }
    if (debt.currency != before && !options.amount) {
      throw refused("the debt is in {} and would be in {}; say with --amount what it comes to", before,
                    debt.currency);
    }
    if (options.amount) debt.amount = amountTyped(session, *options.amount, debt.currency, options.amounts);
    if (options.person) debt.person = wellFormed(*options.person, "the name");
    if (options.note) debt.note = asTyped(*options.note, "the note");
    if (moment) debt.datetime = *moment;
    done(debt.update());
  });
  if (session.options().json) return session.printJson(jsonOf(session, debt));
  session.answer(session.text("Changed the debt. {}", debtSentence(session, debt)));
}

std::string repaymentsText(Session& session, const Debt& debt) {
  return session.count("{} repayment", "{} repayments", static_cast<std::int64_t>(debt.repaidList.size()));
}

void deleteDebt(Session& session, const std::string& eid) {
  Debt debt(session.root());
  changeStore(session, [&] {
    debt = debtTyped(session, eid);
    done(debt.delete_());
  });
  if (session.options().json) return session.printJson(jsonOf(session, debt));
  const std::string what = debtText(session, debt);
  session.answer(debt.repaidList.empty()
                     ? session.text("Deleted {}.", what)
                     : session.text("Deleted {}, with {}.", what, repaymentsText(session, debt)));
}

void restoreDebt(Session& session, const std::string& eid) {
  Debt debt(session.root());
  changeStore(session, [&] {
    debt = debtTyped(session, eid, DebtState::deleted);
    done(debt.restore());
    debt = debtTyped(session, debt.eid);
  });
  if (session.options().json) return session.printJson(jsonOf(session, debt));
  const std::string what = debtText(session, debt);
  session.answer(debt.repaidList.empty()
                     ? session.text("Brought back {}.", what)
                     : session.text("Brought back {}, with {}.", what, repaymentsText(session, debt)));
}

void removeRepayment(Session& session, const std::string& eid) {
  Debt debt(session.root());
  double before = 0;
  changeStore(session, [&] {
    const std::string record = recordTyped(session, eid);
    const auto repaid = Debt::debtOfRepayment(session.root(), record);
    if (!repaid) throw refused("the record '{}' is no repayment", printable(eid));
    debt = debtTyped(session, repaid->eid);
    before = debt.repaidAmount;
    done(debt.deleteRepay(record));
  });
  if (session.options().json) return session.printJson(jsonOf(session, debt));
  const std::string removed = session.amounts().format(before - debt.repaidAmount, debt.currency);
  const std::string owed = session.amounts().format(debt.owed(), debt.currency);
  const std::string person = printable(debt.person);
  session.answer(debt.isBorrowed()
                     ? session.text("Removed the repayment of {}. You owe {} {} of that debt again.", removed,
                                    person, owed)
                     : session.text("Removed the repayment of {}. {} owes you {} of that debt again.",
                                    removed, person, owed));
}

void addEditCommand(CommandLine& line, CLI::App& debt) {
  CLI::App* edit = line.add(debt, "edit");
  auto options = std::make_shared<DebtEditOptions>();
  edit->add_option("EID", options->eid, "The record, as 'moniva debt list' shows it")->required();
  edit->add_option("--amount", options->amount, "Another amount")->type_name("AMOUNT");
  edit->add_option("--person", options->person, "Another person")->type_name("NAME");
  auto* account = edit->add_option("-a,--account", options->account, "Another account")->type_name("NAME");
  edit->add_flag("--no-account", options->noAccount, "No account")->excludes(account);
  edit->add_option("-d,--date", options->date, "Another date, today at the latest")->type_name("DATE");
  edit->add_option("-n,--note", options->note, "Another note")->type_name("TEXT");
  addRoundOption(*edit, options->amounts);
  line.onRun(edit, [options](Session& session) { editDebt(session, *options); });
}

}  // namespace

void addDebtEditCommands(CommandLine& line, CLI::App& debt) {
  addEditCommand(line, debt);
  struct OnRecord {
    const char* name;
    const char* help;
    void (*act)(Session&, const std::string&);
  };
  for (const auto& [name, help, act] :
       {OnRecord{"delete", toTranslate("The record, as 'moniva debt list' shows it"), deleteDebt},
        OnRecord{"restore", toTranslate("The record of the deleted debt"), restoreDebt},
        OnRecord{"unrepay", toTranslate("The repayment's record, as 'moniva debt show' shows it"),
                 removeRepayment}}) {
    CLI::App* command = line.add(debt, name);
    auto eid = std::make_shared<std::string>();
    command->add_option("EID", *eid, help)->required();
    line.onRun(command, [eid, run = act](Session& session) { run(session, *eid); });
  }
}

}  // namespace moniva
