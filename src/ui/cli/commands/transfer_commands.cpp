#include "calendar/parse_date.h"
#include "model/entry_checks.h"
#include "model/record_entry.h"
#include "recurrence/spend_repeat.h"
#include "ui/cli/command_error.h"
#include "ui/cli/command_line.h"
#include "ui/cli/commands/account_rows.h"
#include "ui/cli/commands/reminder_fields.h"
#include "ui/cli/commands/repeat_fields.h"
#include "ui/cli/commands/repeat_texts.h"
#include "ui/cli/commands/transfer_texts.h"
#include "ui/cli/entry_options.h"
#include "ui/cli/records.h"
#include "ui/cli/text_width.h"
#include "ui/cli/typed_text.h"

namespace moniva {
namespace {

/// What the commands on transfers take, each the part it needs.
struct TransferOptions {
  std::string eid;
  std::string amount;
  std::string from;
  std::string to;
  std::string toAmount;
  std::string fee;
  std::string date;
  std::optional<std::string> note;
  std::string account;
  std::int64_t limit = 50;
  bool deleted = false;
  bool remind = false;
  AmountOptions amounts;
  RepeatFields repeat;
};

/// A fee may be nothing, unlike any other amount.
double feeTyped(Session& session, const TransferOptions& options, const std::string& currency) {
  return options.fee.empty() ? 0 : amountOrNothingTyped(session, options.fee, currency, options.amounts);
}

CommandError needsToAmount(const MonivaAccount& from, const MonivaAccount& to) {
  return refused("'{}' is kept in {} and '{}' in {}; say with --to-amount what arrives",
                 printable(from.title), from.currency, printable(to.title), to.currency);
}

void requireSame(double moved, double arrives, const MonivaAccount& from, const MonivaAccount& to) {
  if (difference(moved, arrives) == 0) return;
  throw refused("'{}' and '{}' are both kept in {}, so what leaves one arrives in the other",
                printable(from.title), printable(to.title), from.currency);
}

void answerAdded(Session& session, const Transfer& transfer, const std::string& seed) {
  std::optional<NewSeries> series;
  if (!seed.empty()) series.emplace(session, seed);
  if (series && series->liesAhead()) return series->answerAhead();
  if (session.options().json) {
    auto object = jsonOf(session, transfer);
    if (series) series->addTo(object);
    return session.printJson(object);
  }
  const TransferTexts texts(session, transfer);
  session.answer(session.text("Moved {} from {} to {}, on {}.", texts.amount, texts.from, texts.to,
                              dayOf(session, transfer.datetime, transfer.paid)) +
                 texts.ofFee() + (series ? series->course() : std::string()));
}

void addTransfer(Session& session, const TransferOptions& options) {
  MVAppRoot& root = session.root();
  Transfer transfer(root);
  transfer.datetime = momentTyped(session, options.date);
  transfer.note = asTyped(options.note.value_or(""), "the note");
  transfer.paid = isPaidAt(transfer.datetime, session.now());
  const bool repeats = fillRepeat(session, options.repeat, transfer.repeat, transfer.repeatEndDate);
  std::string seed;
  changeStore(session, [&] {
    const auto from = accountNamed(session, options.from, Meant::open);
    const auto to = accountNamed(session, options.to, Meant::open);
    done(checkTracked(from, kind::kTransferOut));
    done(checkTracked(to, kind::kTransferIn));
    transfer.acrossCurrencies = from.currency != to.currency;
    if (transfer.acrossCurrencies && options.toAmount.empty()) throw needsToAmount(from, to);
    const double moved = amountTyped(session, options.amount, from.currency, options.amounts);
    transfer.serviceCharge = feeTyped(session, options, from.currency);
    transfer.amountA = withoutNoise(moved + transfer.serviceCharge);
    transfer.amountB = moved;
    if (!options.toAmount.empty()) {
      transfer.amountB = amountTyped(session, options.toAmount, to.currency, options.amounts);
      if (!transfer.acrossCurrencies) requireSame(moved, transfer.amountB, from, to);
    }
    transfer.accountA = from.pk;
    transfer.accountB = to.pk;
    if (repeats)
      seed = done(recordRepeating(root, transfer));
    else
      done(recordEntry(root, transfer));
  });

  answerAdded(session, transfer, seed);
  if (options.remind) remindOfNew(session, repeats ? seed : transfer.eidA);
}

/// Writes the accounts typed; ends the command where amounts would no longer say what they are of.
void changeAccounts(Session& session, Transfer& transfer, const TransferOptions& options) {
  if (options.from.empty() && options.to.empty()) return;
  MVAppRoot& root = session.root();
  const auto before = [&](const std::string& key) {
    const auto row = MonivaAccount::getAccountWithPK(root, key);
    return row ? *row : MonivaAccount(root);
  };
  const MonivaAccount oldFrom = before(transfer.accountA);
  const MonivaAccount oldTo = before(transfer.accountB);
  const auto from = options.from.empty() ? oldFrom : accountNamed(session, options.from, Meant::open);
  const auto to = options.to.empty() ? oldTo : accountNamed(session, options.to, Meant::open);
  if (from.pk == oldTo.pk && to.pk == oldFrom.pk) {
    throw refused("a transfer is not turned round; delete it and add it the other way");
  }
  if (from.currency != oldFrom.currency) {
    if (options.amount.empty()) {
      throw refused("'{}' is kept in {}; say with --amount what leaves it", printable(from.title),
                    from.currency);
    }
    if (transfer.serviceCharge > 0 && options.fee.empty()) {
      throw refused("'{}' is kept in {}; say with --fee what the fee was", printable(from.title),
                    from.currency);
    }
  }
  if (from.currency != to.currency && options.toAmount.empty() &&
      (to.currency != oldTo.currency || oldFrom.currency == oldTo.currency)) {
    throw needsToAmount(from, to);
  }
  // The one that makes room for the other goes first.
  const bool toFirst = from.pk == oldTo.pk;
  if (toFirst && !options.to.empty()) done(transfer.updateAccountB(to.pk));
  if (!options.from.empty()) done(transfer.updateAccountA(from.pk));
  if (!toFirst && !options.to.empty()) done(transfer.updateAccountB(to.pk));
}

void changeTransferAmounts(Session& session, Transfer& transfer, const TransferOptions& options) {
  MVAppRoot& root = session.root();
  const auto from = MonivaAccount::getAccountWithPK(root, transfer.accountA);
  const auto to = MonivaAccount::getAccountWithPK(root, transfer.accountB);
  if (!from || !to) throw refused("an account of the transfer is gone");
  if (!options.fee.empty()) done(transfer.updateServiceCharge(feeTyped(session, options, from->currency)));
  if (!options.amount.empty()) {
    done(transfer.updateMoved(amountTyped(session, options.amount, from->currency, options.amounts)));
  }
  if (options.toAmount.empty()) return;
  const double arrives = amountTyped(session, options.toAmount, to->currency, options.amounts);
  if (!transfer.acrossCurrencies) return requireSame(transfer.amountB, arrives, *from, *to);
  done(transfer.updateAmountB(arrives));
}

/// Looks the transfer up and makes the change of it as one transaction.
Transfer changedTransfer(Session& session, const TransferOptions& options,
                         const std::function<void(Transfer&)>& work) {
  Transfer transfer(session.root());
  changeStore(session, [&] {
    transfer = transferTyped(session, options.eid);
    work(transfer);
  });
  return transfer;
}

void editTransfer(Session& session, const TransferOptions& options) {
  if (options.amount.empty() && options.toAmount.empty() && options.fee.empty() && options.from.empty() &&
      options.to.empty() && options.date.empty() && !options.note) {
    throw notUnderstood("say what is to change; see: moniva transfer edit --help");
  }
  std::optional<Date> date;
  if (!options.date.empty()) date = momentTyped(session, options.date);
  const auto transfer = changedTransfer(session, options, [&](Transfer& one) {
    if (one.isHalf()) {
      throw refused("one side of that transfer went when its account was cleared, so it is not changed");
    }
    if (one.isDeleted != 0) {
      throw refused("that transfer is deleted; bring it back with: moniva transfer restore {}",
                    shortEid(one.eidA));
    }
    changeAccounts(session, one, options);
    if (!options.fee.empty() || !options.amount.empty() || !options.toAmount.empty()) {
      changeTransferAmounts(session, one, options);
    }
    if (date) done(one.updateDate(*date));
    if (options.note) done(one.updateNote(asTyped(*options.note, "the note")));
  });
  if (session.options().json) return session.printJson(jsonOf(session, transfer));
  const TransferTexts texts(session, transfer);
  session.answer(session.text("Changed the transfer: {} from {} to {}, on {}.", texts.amount, texts.from,
                              texts.to, dayOf(session, transfer.datetime, transfer.paid)) +
                 texts.ofFee());
}

void showTyped(Session& session, const TransferOptions& options) {
  showTransfer(session, transferTyped(session, options.eid));
}

void listTransfers(Session& session, const TransferOptions& options) {
  TransferQuery query;
  if (!options.account.empty()) query.account = accountNamed(session, options.account).pk;
  if (!options.from.empty())
    query.from = typed(parsePeriod(options.from, session.calendar(), session.now())).first;
  if (!options.to.empty()) query.to = typed(parsePeriod(options.to, session.calendar(), session.now())).last;
  query.deleted = options.deleted;
  // One more than shown tells that there are more.
  query.limit = options.limit > 0 ? options.limit + 1 : -1;
  auto transfers = done(Transfer::list(session.root(), query));
  const bool more = options.limit > 0 && transfers.size() > static_cast<std::size_t>(options.limit);
  if (more) transfers.pop_back();
  if (session.options().json) {
    boost::json::array list;
    for (const auto& transfer : transfers) list.push_back(jsonOf(session, transfer));
    return session.printJson(list);
  }
  if (transfers.empty()) {
    return session.say(options.deleted ? session.text("There is no deleted transfer.")
                                       : session.text("There is no such transfer."));
  }
  Table table({{.title = session.text("Date")},
               {.title = session.text("From")},
               {.title = session.text("To")},
               {.title = session.text("Sent"), .align = Align::right},
               {.title = session.text("Arrived"), .align = Align::right},
               {.title = session.text("Note"), .maxWidth = 60},
               {.title = session.text("Record")}});
  for (const auto& transfer : transfers) {
    const TransferTexts texts(session, transfer);
    table.addRow({dayOf(session, transfer.datetime, transfer.paid), texts.from, texts.to, texts.left,
                  texts.arrived, transfer.note, Cell(shortEid(transfer.eidA), ink::dim)});
  }
  session.out() << table.render(session.style(), session.width());
  if (more) session.say(session.text("There are more; --limit 0 lists all of them."));
}

void deleteTransfer(Session& session, const TransferOptions& options) {
  const auto transfer = changedTransfer(session, options, [](Transfer& one) { done(one.delete_()); });
  if (session.options().json) return session.printJson(jsonOf(session, transfer));
  const TransferTexts texts(session, transfer);
  session.answer(
      session.text("Deleted the transfer of {} from {} to {}; to bring it back: moniva transfer restore {}",
                   texts.amount, texts.from, texts.to, shortEid(transfer.eidA)));
}

void restoreTransfer(Session& session, const TransferOptions& options) {
  const auto transfer = changedTransfer(session, options, [](Transfer& one) { done(one.restore()); });
  if (session.options().json) return session.printJson(jsonOf(session, transfer));
  const TransferTexts texts(session, transfer);
  session.answer(session.text("Brought back the transfer of {} from {} to {}, on {}.", texts.amount,
                              texts.from, texts.to, dayOf(session, transfer.datetime, transfer.paid)));
}

}  // namespace

void showTransfer(Session& session, const Transfer& transfer) {
  if (session.options().json) return session.printJson(jsonOf(session, transfer));
  const TransferTexts texts(session, transfer);
  Facts facts(session);
  facts.add(session.text("From"), texts.from);
  facts.add(session.text("To"), texts.to);
  facts.add(session.text("Sent"), texts.left);
  facts.add(session.text("Arrived"), texts.arrived);
  if (transfer.serviceCharge > 0) facts.add(session.text("Fee"), texts.fee);
  facts.add(session.text("Date"), dayOf(session, transfer.datetime, transfer.paid));
  if (!transfer.note.empty()) facts.add(session.text("Note"), transfer.note);
  if (transfer.isDeleted != 0) {
    facts.add(session.text("State"), transfer.isHalf()
                                         ? session.text("one side went when its account was cleared")
                                         : session.text("deleted"));
  }
  if (const auto repeats = repeatsText(session, transfer.repeatSeed); !repeats.empty()) {
    facts.add(session.text("Repeats"), repeats);
  }
  facts.add(session.text("Record"), shortEid(transfer.eidA));
  facts.print();
}

void addTransferCommands(CommandLine& line) {
  CLI::App* transfer = line.add(line.app(), "transfer");
  transfer->require_subcommand(1);
  const auto command = [&](const char* name, void (*action)(Session&, const TransferOptions&)) {
    CLI::App* app = line.add(*transfer, name);
    auto options = std::make_shared<TransferOptions>();
    line.onRun(app, [options, action](Session& session) { action(session, *options); });
    return std::pair(app, options);
  };
  const auto details = [](CLI::App* app, TransferOptions& options) {
    app->add_option("--to-amount", options.toAmount,
                    "What arrives, when the accounts keep different currencies")
        ->type_name("AMOUNT");
    app->add_option("--fee", options.fee, "What the bank took for it from the first account, on top")
        ->type_name("AMOUNT");
    app->add_option("-n,--note", options.note, "A note")->type_name("TEXT");
    addRoundOption(*app, options.amounts);
  };
  {
    const auto [add, options] = command("add", addTransfer);
    add->add_option("AMOUNT", options->amount, "What is moved, such as 12.50; a fee comes on top")
        ->required();
    add->add_option("FROM", options->from, "Name of the account the money leaves")->required();
    add->add_option("TO", options->to, "Name of the account it arrives in")->required();
    add->add_option("-d,--date", options->date, "When (else now)")->type_name("DATE");
    details(add, *options);
    addRepeatFields(*add, options->repeat);
    addRemindOption(*add, options->remind);
  }
  constexpr const char* kRecord = toTranslate("The record of either side, or the end of it as lists show it");
  {
    const auto [edit, options] = command("edit", editTransfer);
    edit->add_option("RECORD", options->eid, kRecord)->required();
    edit->add_option("--amount", options->amount, "What is moved, without the fee")->type_name("AMOUNT");
    edit->add_option("--from", options->from, "The account the money leaves")->type_name("NAME");
    edit->add_option("--to", options->to, "The account it arrives in")->type_name("NAME");
    edit->add_option("-d,--date", options->date, "When")->type_name("DATE");
    details(edit, *options);
    for (const char* changed : {"--amount", "--from", "--to", "--date", "--to-amount", "--fee"}) {
      edit->get_option(changed)->check(notEmpty());
    }
  }
  {
    const auto [list, options] = command("list", listTransfers);
    list->add_option("ACCOUNT", options->account, "Those of this account alone");
    list->add_option("--from", options->from, "Those of this day, month or year and later")
        ->type_name("DATE");
    list->add_option("--to", options->to, "Those of this day, month or year and earlier")->type_name("DATE");
    list->add_option("--limit", options->limit, "How many at most; 0 for all")
        ->type_name("COUNT")
        ->check(CLI::NonNegativeNumber);
    list->add_flag("--deleted", options->deleted, "Those that were deleted");
  }
  for (const auto& [name, action] :
       {std::pair("show", &showTyped), {"delete", &deleteTransfer}, {"restore", &restoreTransfer}}) {
    const auto [app, options] = command(name, action);
    app->add_option("RECORD", options->eid, kRecord)->required();
  }
}

}  // namespace moniva
