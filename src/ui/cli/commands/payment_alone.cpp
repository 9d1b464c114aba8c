#include <boost/json.hpp>

#include "model/entry_checks.h"
#include "recurrence/spend_repeat.h"
#include "ui/cli/command_error.h"
#include "ui/cli/commands/payment_commands.h"
#include "ui/cli/commands/reminder_fields.h"
#include "ui/cli/commands/repeat_fields.h"
#include "ui/cli/entry_options.h"
#include "ui/cli/record_texts.h"
#include "ui/cli/records.h"
#include "ui/cli/typed_text.h"

namespace moniva {
namespace {

struct AloneOptions {
  std::string amount;
  std::string account;
  std::string date;
  std::string note;
  bool income = false;
  bool remind = false;
  RepeatFields repeat;
  AmountOptions amounts;
};

/// Writes the payment, or the series that it begins; answers the series.
std::string writePayment(Session& session, const AloneOptions& options, Payment& payment, bool repeats,
                         Spend& first) {
  const auto account = accountNamed(session, options.account, Meant::open);
  done(checkTracked(account, payment.type));
  payment.account = account.pk;
  payment.amount = amountTyped(session, options.amount, account.currency, options.amounts);
  if (!repeats) {
    done(payment.add());
    return {};
  }
  first.bid = kPaymentRow;
  first.type = payment.type;
  first.amount = payment.amount;
  first.account = payment.account;
  first.datetime = payment.datetime;
  first.note = payment.note;
  first.paid = payment.paid;
  return done(recordRepeating(session.root(), first));
}

void answerAlone(Session& session, Payment& payment, const Spend& first, const std::string& seed) {
  const auto say = [&](const std::string& what) { return session.text("Added the payment {}.", what); };
  if (seed.empty()) return answerPayment(session, payment, payment.eid, say);

  const NewSeries series(session, seed);
  if (series.liesAhead()) return series.answerAhead();
  payment = *Payment::paymentFromEID(session.root(), first.eid);
  if (!session.options().json) {
    return answerPayment(session, payment, payment.eid,
                         [&](const std::string& what) { return say(what) + series.course(); });
  }
  RecordNames names(session.root());
  auto object = jsonOf(session, names, wholeRecord(session, payment.eid).head);
  series.addTo(object);
  session.printJson(object);
}

void enterPayment(Session& session, const AloneOptions& options) {
  Payment payment(session.root());
  payment.type = options.income ? kind::kIncome : kind::kExpense;
  payment.datetime = momentTyped(session, options.date);
  payment.note = asTyped(options.note, "the note");
  payment.paid = isPaidAt(payment.datetime, session.now());
  Spend first(session.root());
  const bool repeats = fillRepeat(session, options.repeat, first.repeat, first.repeatEndDate);
  std::string seed;
  changeStore(session, [&] { seed = writePayment(session, options, payment, repeats, first); });
  answerAlone(session, payment, first, seed);
  if (options.remind) remindOfNew(session, repeats ? seed : payment.eid);
}

}  // namespace

void addPaymentAlone(CommandLine& line, CLI::App& family) {
  CLI::App* alone = line.add(family, "alone");
  auto options = std::make_shared<AloneOptions>();
  alone->add_option("AMOUNT", options->amount, "What is paid, above zero")->required();
  alone->add_option("-a,--account", options->account, "The account it is paid from, or into")
      ->type_name("NAME")
      ->required();
  alone->add_flag("--income", options->income, "Into the account instead of from it");
  alone->add_option("-d,--date", options->date, "When (else now)")->type_name("DATE");
  alone->add_option("-n,--note", options->note, "A note")->type_name("TEXT");
  addRoundOption(*alone, options->amounts);
  addRepeatFields(*alone, options->repeat);
  addRemindOption(*alone, options->remind);
  line.onRun(alone, [options](Session& session) { enterPayment(session, *options); });
}

}  // namespace moniva
