#include "ui/cli/commands/spend_commands.h"
#include "model/entry_checks.h"
#include "model/record_entry.h"
#include "recurrence/spend_repeat.h"
#include "ui/cli/command_error.h"
#include "ui/cli/command_line.h"
#include "ui/cli/commands/entry_fields.h"
#include "ui/cli/commands/reminder_fields.h"
#include "ui/cli/commands/repeat_fields.h"
#include "ui/cli/records.h"
#include "ui/cli/typed_text.h"

namespace moniva {
namespace {

struct SpendAddOptions {
  std::string amount;
  std::string code;                             ///< behind it
  std::string amountNamed;                      ///< by --amount
  std::pair<std::string, std::string> foreign;  ///< amount and code; empty for none
  bool reimburse = false;
  std::vector<std::string> photos;
  EntryFields fields;
  RepeatFields repeat;
};

/// What was added, up to the full stop.
std::string addedText(Session& session, const RecordTexts& texts, bool income) {
  const auto amount = texts.amount();
  return (income ? session.text("Added income {}", amount) : session.text("Added an expense {}", amount)) +
         texts.details();
}

/// The amount as one text: of "20 USD", of --amount 20 USD.
std::string amountOf(const SpendAddOptions& options) {
  if (options.amountNamed.empty()) {
    if (options.amount.empty()) throw notUnderstood("say the amount, such as: moniva spend add 12.50");
    return amountWithCode(options.amount, options.code);
  }
  if (!options.code.empty() || (!options.amount.empty() && !isThreeLetters(options.amount))) {
    throw notUnderstood("say the amount once: '{}' or '{}'", printable(options.amountNamed),
                        printable(options.amount));
  }
  return amountWithCode(options.amountNamed, options.amount);
}

/// Fills in the amount, with what it was in another currency; answers the sentence about that.
std::string fillAmount(Session& session, const SpendAddOptions& options, const std::string& typedAmount,
                       const std::string& currency, Spend& spend) {
  const auto& amounts = options.fields.amounts;
  const auto& [foreign, code] = options.foreign;
  if (foreign.empty() && code.empty()) {
    const auto entry = entryAmountTyped(session, typedAmount, currency, amounts);
    spend.amount = entry.amount;
    spend.foreignAmount = entry.foreignAmount;
    spend.foreignCurrency = entry.foreignCurrency;
    return entry.note(session);
  }
  if (!amounts.rate.empty())
    throw notUnderstood("--foreign says both amounts, which leaves nothing to --rate");
  spend.amount = amountTyped(session, typedAmount, currency, amounts);
  spend.foreignCurrency = foreignTyped(session, code, currency);
  spend.foreignAmount = amountTyped(session, foreign, spend.foreignCurrency, amounts);
  return {};
}

void answerSeries(Session& session, const Spend& first, const std::string& seed, bool income,
                  const std::string& note) {
  const NewSeries series(session, seed);
  if (series.liesAhead()) return series.answerAhead();
  RecordNames names(session.root());
  const auto whole = wholeRecord(session, first.eid);
  if (session.options().json) {
    auto object = jsonOf(session, names, whole);
    series.addTo(object);
    return session.printJson(object);
  }
  const RecordTexts texts(session, names, whole);
  session.answer(addedText(session, texts, income) + series.course() + note + texts.currencyNotes());
}

void addSpend(Session& session, const SpendAddOptions& options) {
  MVAppRoot& root = session.root();
  const auto& fields = options.fields;
  if (options.reimburse && fields.income) throw notUnderstood("income is not reimbursed");
  Spend spend(root);
  spend.datetime = momentTyped(session, fields.date);
  spend.note = asTyped(fields.note, "the note");
  spend.paid = !fields.pending && isPaidAt(spend.datetime, session.now());
  spend.needReimburse = options.reimburse;
  const bool repeats = fillRepeat(session, options.repeat, spend.repeat, spend.repeatEndDate);
  if (repeats && !fields.payments.empty()) {
    throw notUnderstood("what is paid from several accounts does not repeat; name one with --account");
  }
  if (repeats && fields.pending) {
    throw notUnderstood("what repeats is paid when its day has come; leave out --pending");
  }
  for (const auto& path : options.photos) spend.addImages.push_back(imageFileTyped(path));

  const auto amount = amountOf(options);
  prepareRates(session, amount, fields.amounts,
               [&](const std::string& code) { return code != namesTyped(session, fields).currency; });
  std::string seed;
  std::string note;
  changeStore(session, [&] {
    const auto names = fillEntry(session, fields, spend);
    note = fillAmount(session, options, amount, names.currency, spend);
    if (repeats) {
      seed = done(recordRepeating(root, spend));
      return;
    }
    if (fields.payments.empty()) return done(recordEntry(root, spend));
    auto payments = paymentsTyped(session, fields, names, spend, spend.amount);
    done(spend.addWithPayments(payments));
    if (!spend.addImages.empty()) done(saveImages(root, spend.addImages, spend.eid));
  });
  if (repeats) {
    answerSeries(session, spend, seed, fields.income, note);
  } else {
    answerChanged(session, spend.eid, [&](const RecordTexts& texts) {
      return addedText(session, texts, fields.income) + texts.stillOpen() + note;
    });
  }
  if (fields.remind) remindOfNew(session, repeats ? seed : spend.eid);
}

}  // namespace

void addSpendCommands(CommandLine& line) {
  CLI::App* spend = line.add(line.app(), "spend");
  spend->require_subcommand(1);
  CLI::App* add = line.add(*spend, "add");
  auto options = std::make_shared<SpendAddOptions>();
  add->add_option("AMOUNT", options->amount, "The amount, above zero, such as 12.50 or 12.50+3");
  add->add_option("CODE", options->code, "Its currency, when it is another than the record's, such as USD");
  add->add_option("--amount", options->amountNamed, "The amount, as an option")
      ->type_name("AMOUNT")
      ->check(notEmpty());
  addCategoryFields(*add, options->fields);
  addAccountFields(*add, options->fields, true);
  addEntryFields(*add, options->fields);
  addRateOption(*add, options->fields.amounts);
  add->add_option("--foreign", options->foreign,
                  "What it was in another currency: amount and code, such as 20 USD")
      ->type_name("AMOUNT CODE")
      ->check(notEmpty());
  add->add_flag("--pending", options->fields.pending, kNotPaidYet);
  add->add_flag("--reimburse", options->reimburse, "To be reimbursed");
  add->add_option("--photo", options->photos, "An image to attach, such as the receipt")
      ->type_name("PATH")
      ->allow_extra_args(false);
  addRepeatFields(*add, options->repeat);
  line.onRun(add, [options](Session& session) { addSpend(session, *options); });
  addSpendEdits(line, *spend);
  addSpendList(line, *spend);
}

}  // namespace moniva
