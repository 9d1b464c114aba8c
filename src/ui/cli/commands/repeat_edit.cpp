#include <algorithm>
#include <boost/json.hpp>

#include "model/entry_checks.h"
#include "model/spend.h"
#include "recurrence/series_edit.h"
#include "recurrence/series_standing.h"
#include "recurrence/series_view.h"
#include "ui/cli/command_error.h"
#include "ui/cli/commands/account_rows.h"
#include "ui/cli/commands/entry_fields.h"
#include "ui/cli/commands/list_lines.h"
#include "ui/cli/commands/repeat_texts.h"
#include "ui/cli/record_texts.h"
#include "ui/cli/records.h"
#include "ui/cli/transaction_rows.h"
#include "ui/cli/typed_text.h"

namespace moniva {
namespace {

/// What may be typed for a series. What is not given stays as it is.
struct SeriesEditOptions {
  std::string record;
  bool one = false;
  bool following = false;
  bool all = false;
  std::string amount;
  std::string code;  ///< behind it
  std::string toAmount;
  std::string account;
  std::string to;
  std::string book;
  std::string category;
  std::string subcategory;
  std::string vendor;
  std::optional<std::string> note;
  std::string rule;
  std::string until;
  std::string date;
  bool create = false;
  bool dryRun = false;
  bool fill = false;
  AmountOptions amounts;

  bool isEmpty() const {
    return amount.empty() && toAmount.empty() && account.empty() && to.empty() && book.empty() &&
           category.empty() && subcategory.empty() && vendor.empty() && !note && rule.empty() &&
           until.empty() && date.empty() && amounts.rate.empty();
  }
};

Reach reachTyped(const SeriesEditOptions& options) {
  if (int{options.one} + int{options.following} + int{options.all} != 1) {
    throw notUnderstood(
        "say how far the change reaches: --this record alone, --following for it and those after, or --all");
  }
  return options.one ? Reach::one : options.following ? Reach::following : Reach::all;
}

/// The last day typed; "never" for none.
std::optional<Date> endTyped(Session& session, const std::string& text) {
  if (text.empty()) return std::nullopt;
  return text == "never" ? Date{} : dayTyped(session, text);
}

/// Whether its records can have an amount in another currency too.
bool keepsForeign(const MVTransaction& seed) {
  return !seed.paymentAccountB && !seed.isPayment;
}

/// Who keeps the amounts, by what was typed and by what the series has.
std::string currencyTyped(Session& session, const SeriesEditOptions& options, const MVTransaction& seed,
                          SeriesChange& change) {
  std::string currency = seed.currency.empty() ? session.defaultCurrency() : seed.currency;
  std::optional<MonivaAccount> holder;
  if (!options.book.empty()) {
    const auto book = bookNamed(session, options.book, Meant::open);
    change.book = book.pk;
    if (!seed.paymentAccount) holder = book;
  }
  if (!options.account.empty()) {
    holder = accountNamed(session, options.account, Meant::open);
    change.account = holder->pk;
  }
  if (!options.to.empty()) change.to = accountNamed(session, options.to, Meant::open).pk;
  if (!holder || holder->currency == currency) return currency;
  if (options.amount.empty()) {
    throw refused("'{}' is kept in {} and the series in {}; say with --amount what it comes to",
                  holder->title, holder->currency, currency);
  }
  return holder->currency;
}

void fileTyped(Session& session, const SeriesEditOptions& options, const MVTransaction& seed,
               SeriesChange& change) {
  const int type = seed.advancedType;
  if (!options.category.empty() || !options.subcategory.empty()) {
    std::string top = options.category;
    if (top.empty()) {
      const auto spend = Spend::spendFromEID(session.root(), seed.eid);
      const auto present =
          spend ? MVCategory::getCategory(session.root(), spend->category, type) : std::nullopt;
      if (!present) throw notUnderstood("a subcategory needs its --category");
      top = present->title;
    }
    const auto book = change.book        ? MonivaAccount::getAccountWithPK(session.root(), *change.book)
                      : seed.bookAccount ? std::optional(*seed.bookAccount)
                                         : std::nullopt;
    const auto chosen = categoryChosen(session, top, options.subcategory, type,
                                       book ? *book : MonivaAccount(session.root()), options.create);
    if (chosen) change.category = {chosen->category, chosen->subcategory};
  }
  if (!options.vendor.empty()) change.vendor = vendorChosen(session, options.vendor, type);
}

/// What the series has had, for the rate between the two.
EntryAmount amountOfSeries(const MVTransaction& seed, const std::string& currency) {
  if (currency != seed.currency) return {};
  return {
      .amount = seed.amount, .foreignAmount = seed.foreignAmount, .foreignCurrency = seed.foreignCurrency};
}

/// Fills in the amount; answers the sentence about a conversion.
std::string amountTypedInto(Session& session, const SeriesEditOptions& options, const MVTransaction& seed,
                            const std::string& currency, SeriesChange& change) {
  if (options.amount.empty()) {
    if (options.amounts.rate.empty()) return {};
    throw notUnderstood("--rate belongs to an --amount in another currency, such as 20 USD");
  }
  if (!keepsForeign(seed)) {
    if (!options.amounts.rate.empty()) {
      throw refused("only expenses and income keep what they were in another currency");
    }
    change.amount = amountTyped(session, options.amount, currency, options.amounts);
    return {};
  }
  const auto entry =
      entryAmountTyped(session, options.amount, currency, options.amounts, amountOfSeries(seed, currency));
  change.amount = entry.amount;
  change.foreignAmount = entry.foreignAmount;
  change.foreignCurrency = entry.foreignCurrency;
  return entry.note(session);
}

/// `note` is set to the sentence about a conversion.
SeriesChange changeTyped(Session& session, const SeriesEditOptions& options, const MVTransaction& seed,
                         std::string& note) {
  SeriesChange change;
  const bool isTransfer = seed.paymentAccountB != nullptr;
  if (isTransfer && (!options.category.empty() || !options.subcategory.empty() || !options.vendor.empty() ||
                     !options.book.empty())) {
    throw refused("a transfer has no book, category or vendor");
  }
  const auto currency = currencyTyped(session, options, seed, change);
  note = amountTypedInto(session, options, seed, currency, change);
  if (!options.toAmount.empty()) {
    if (!isTransfer) throw refused("only a transfer goes to another account");
    change.arrives = amountTyped(session, options.toAmount, seed.paymentAccountB->currency, options.amounts);
  }
  if (isTransfer && change.amount && !change.arrives && seed.paymentAccount &&
      seed.paymentAccount->currency != seed.paymentAccountB->currency) {
    throw refused("'{}' is kept in {} and '{}' in {}; say with --to-amount what arrives",
                  seed.paymentAccount->title, seed.paymentAccount->currency, seed.paymentAccountB->title,
                  seed.paymentAccountB->currency);
  }
  fileTyped(session, options, seed, change);
  if (options.note) change.note = asTyped(*options.note, "the note");
  if (!options.rule.empty()) change.rule = ruleTyped(session, options.rule);
  change.end = endTyped(session, options.until);
  if (!options.date.empty()) change.date = dayTyped(session, options.date);
  return change;
}

MVTransaction rowNow(Session& session, const std::string& eid) {
  auto row = MVTransaction::transactionFromEID(session.root(), eid);
  if (!row) throw refused("there is no record '{}'", eid);
  return std::move(*row);
}

/// What is said of a series after a change: what is due by it, its end, and its next record.
std::string courseText(Session& session, const MVTransaction& seed, const SeriesOutcome& outcome) {
  std::string text;
  if (outcome.made > 0) {
    text += " " + session.count("{} record came due and was added.", "{} records came due and were added.",
                                outcome.made);
  }
  if (outcome.ended) {
    text += " " + session.text("It is over.");
  } else if (outcome.next != Date{}) {
    text +=
        " " + session.text("Its next record is due on {}.", shortDate(session, dayHere(seed, outcome.next)));
    if (seed.repeatEndDate != Date{}) {
      text +=
          " " + session.text("The last day is {}.", shortDate(session, dayHere(seed, seed.repeatEndDate)));
    }
  }
  if (outcome.more) {
    text += " " + session.text("More is due: moniva repeat refill {}", shortEid(seed.eid));
  }
  if (outcome.beyondEnd > 0) {
    text += " " + session.count("{} record after its end stays.", "{} records after its end stay.",
                                outcome.beyondEnd);
  }
  return text;
}

/// The records of the series that are pending, of a divided one those of both.
std::int64_t pendingOf(Session& session, const SeriesOutcome& outcome) {
  std::int64_t pending = done(pendingRecordsOf(session.root(), outcome.seed));
  if (!outcome.former.empty()) pending += done(pendingRecordsOf(session.root(), outcome.former));
  return pending;
}

/// `unsettled` records have become pending, as their new day lies ahead; `note` is about a conversion.
void answerEdit(Session& session, Reach reach, const std::string& eid, const SeriesOutcome& outcome,
                std::int64_t unsettled, const std::string& note) {
  const auto seed = rowNow(session, outcome.seed);
  if (session.options().json) {
    auto object = seriesJson(session, seed);
    object["former"] = outcome.former;
    object["changed"] = outcome.changed;
    object["made"] = outcome.made;
    object["beyondEnd"] = outcome.beyondEnd;
    object["ended"] = outcome.ended;
    object["unsettled"] = unsettled;
    if (reach == Reach::one) object["record"] = jsonOf(session, rowNow(session, eid));
    return session.printJson(object);
  }
  if (reach == Reach::one) {
    const auto row = rowNow(session, eid);
    const auto with = withText(row);
    return session.answer(
        session.text("Changed this record alone. It is now {}, {}{}, on {}.",
                     amountText(session, row) + foreignText(session, row.foreignAmount, row.foreignCurrency),
                     whatText(session, row), with.empty() ? with : ", " + with,
                     dayOf(session, row.datetime, row.paid)) +
        note + currencyNotes(session, row));
  }
  const auto what = seriesText(session, seed);
  std::string line =
      outcome.former.empty() ? session.text("The series is now {}.", what)
      : outcome.whole
          ? session.text("The series goes on as {}: {}.", shortEid(outcome.seed), what)
          : session.text("Divided the series. What lies before stays; from there on {} goes on: {}.",
                         shortEid(outcome.seed), what);
  if (outcome.changed > 0) {
    line += " " + session.count("{} record was changed with it.", "{} records were changed with it.",
                                outcome.changed);
  }
  if (unsettled > 0) {
    line += " " + session.count("{} record is pending until its day.",
                                "{} records are pending until their day.", unsettled);
  }
  session.answer(line + courseText(session, seed, outcome) + note + currencyNotes(session, seed));
}

void editSeriesTyped(Session& session, const SeriesEditOptions& words) {
  auto options = words;
  takeCode(options.record, options.code, options.amount);
  const Reach reach = reachTyped(options);
  if (options.isEmpty()) throw notUnderstood("say what to change, such as --amount 12.50 or --rule Weekly");
  prepareRates(session, options.amount, options.amounts, [&](const std::string& code) {
    const auto seed = seriesTyped(session, options.record);
    SeriesChange change;
    const auto currency = currencyTyped(session, options, seed, change);
    return keepsForeign(seed) && code != currency && !amountOfSeries(seed, currency).hasRateOf(code);
  });
  std::string eid;
  std::string note;
  SeriesOutcome outcome;
  std::int64_t unsettled = 0;
  changeOrTry(
      session, options.dryRun,
      [&] {
        const auto seed = seriesTyped(session, options.record, &eid);
        unsettled = -done(pendingRecordsOf(session.root(), seed.eid));
        outcome = done(editSeries(session.root(), eid, reach, changeTyped(session, options, seed, note)));
        unsettled += pendingOf(session, outcome);
      },
      [&] { answerEdit(session, reach, eid, outcome, std::max<std::int64_t>(unsettled, 0), note); });
}

void resumeTyped(Session& session, const SeriesEditOptions& options) {
  SeriesOutcome outcome;
  changeOrTry(
      session, options.dryRun,
      [&] {
        const auto seed = seriesTyped(session, options.record);
        outcome =
            done(resumeSeries(session.root(), seed.eid, endTyped(session, options.until), options.fill));
      },
      [&] {
        const auto seed = rowNow(session, outcome.seed);
        if (session.options().json) {
          auto object = seriesJson(session, seed);
          object["made"] = outcome.made;
          object["more"] = outcome.more;
          return session.printJson(object);
        }
        session.answer(session.text("Took up the series {}.", seriesText(session, seed)) +
                       courseText(session, seed, outcome));
      });
}

void addEndOption(CLI::App& command, SeriesEditOptions& options) {
  command.add_option("--until", options.until, "Its last day, or \"never\"")
      ->type_name("DATE")
      ->check(notEmpty());
}

}  // namespace

void addRepeatEdit(CommandLine& line, CLI::App& family) {
  CLI::App* edit = line.add(family, "edit");
  auto options = std::make_shared<SeriesEditOptions>();
  edit->add_option("RECORD", options->record,
                   "A record of the series, or the series itself, which stands for its next record")
      ->required();
  edit->add_option("CODE", options->code, "The currency of --amount, when it is another than the record's");
  auto* one = edit->add_flag("--this", options->one, "Change this record alone");
  auto* following = edit->add_flag("--following", options->following, "This record and those after it");
  edit->add_flag("--all", options->all, "All records of the series, past ones too")
      ->excludes(one)
      ->excludes(following);
  following->excludes(one);
  const auto set = [&](const char* names, std::string& value, const char* help, const char* type) {
    edit->add_option(names, value, help)->type_name(type)->check(notEmpty());
  };
  set("--amount", options->amount, toTranslate("The amount, above zero"), "AMOUNT");
  set("-a,--account,--from", options->account, toTranslate("The account it is paid from, or into"), "NAME");
  set("--to", options->to, toTranslate("Of a transfer the account it arrives in"), "NAME");
  set("--to-amount", options->toAmount,
      toTranslate("What arrives, when the accounts keep different currencies"), "AMOUNT");
  set("-b,--book", options->book, toTranslate("The book"), "NAME");
  set("-c,--category", options->category, toTranslate("The category"), "NAME");
  set("-s,--subcategory", options->subcategory, toTranslate("The subcategory"), "NAME");
  set("--vendor,--payee,--payer", options->vendor, toTranslate("Who was paid, or who paid; added when new"),
      "NAME");
  edit->add_option("-n,--note", options->note, "The note; \"\" for none")->type_name("TEXT");
  set("--rule", options->rule,
      toTranslate("How often: Daily, Weekly, Biweekly, Monthly, Bimonthly, Quarterly, "
                  "Half-yearly or Yearly"),
      "RULE");
  addEndOption(*edit, *options);
  set("-d,--date", options->date, toTranslate("The day of this record, by which those after it go"), "DATE");
  edit->add_flag("--create", options->create, "Make the category or subcategory when it is new");
  addRoundOption(*edit, options->amounts);
  addRateOption(*edit, options->amounts);
  addDryRun(*edit, options->dryRun);
  line.onRun(edit, [options](Session& session) { editSeriesTyped(session, *options); });

  CLI::App* resume = line.add(family, "resume");
  auto resumed = std::make_shared<SeriesEditOptions>();
  resume
      ->add_option("SERIES", resumed->record, "The series, or one of its records: the eid, or the end of it")
      ->required();
  addEndOption(*resume, *resumed);
  resume->add_flag("--fill", resumed->fill, "Add what would have come due meanwhile");
  addDryRun(*resume, resumed->dryRun);
  line.onRun(resume, [resumed](Session& session) { resumeTyped(session, *resumed); });
}

}  // namespace moniva
