#include "ui/cli/commands/payment_commands.h"

#include <boost/json.hpp>

#include "model/entry_checks.h"
#include "ui/cli/command_error.h"
#include "ui/cli/commands/entry_fields.h"
#include "ui/cli/commands/reminder_fields.h"
#include "ui/cli/commands/show_record.h"
#include "ui/cli/records.h"
#include "ui/cli/text_width.h"
#include "ui/cli/typed_text.h"

namespace moniva {
namespace {

/// What the commands on payments take, each the part it needs.
struct PaymentOptions {
  std::string eid;
  std::string amount;
  std::string account;
  std::string date;
  std::string note;
  std::string fee;
  bool pending = false;
  bool noAccount = false;
  bool remind = false;
  std::optional<std::string> newAmount;
  std::optional<std::string> newAccount;
  std::optional<std::string> newNote;
  AmountOptions amounts;
};

/// A payment as an answer says it: "€10.00 from Cash, on Jun 15, 2024 12:00".
std::string paymentText(Session& session, const RecordTexts& texts, const Payment& payment) {
  const auto amount = texts.money(payment.amount);
  const auto account = texts.account(payment.account);
  const auto date = dayOf(session, payment.datetime, payment.paid);
  if (account.empty()) return session.text("{} of no account, on {}", amount, date);
  return payment.type == kind::kIncome ? session.text("{} to {}, on {}", amount, account, date)
                                       : session.text("{} from {}, on {}", amount, account, date);
}

/// What of the record is still to be paid; nothing is said for a payment by itself.
std::string restText(Session& session, const RecordTexts& texts) {
  if (!texts.whole().isCompound()) return {};
  return texts.whole().open() > 0 ? texts.stillOpen() : " " + session.text("Nothing is left to be paid.");
}

/// The payment in use whose row is typed.
Payment paymentTyped(Session& session, const std::string& text, bool deleted = false) {
  const auto eid = recordTyped(session, text);
  auto payment = Payment::paymentFromEID(session.root(), eid);
  if (payment && payment->isDeleted > 1) {
    throw refused("what was taken from a record is not brought back; add the payment again");
  }
  if (!payment) {
    throw refused("'{}' is no payment; see those of a record with: moniva payment list EID", shortEid(eid));
  }
  if (!deleted && payment->isDeleted == 1) {
    throw refused("the payment is deleted; bring it back with: moniva restore {}", shortEid(eid));
  }
  if (payment->amount < 0) {
    throw refused("this is a refund; change it with: moniva refund edit {}", shortEid(eid));
  }
  return std::move(*payment);
}

}  // namespace

void answerPayment(Session& session, const Payment& payment, const std::string& ofRecord,
                   const std::function<std::string(const std::string&)>& say) {
  RecordNames names(session.root());
  if (session.options().json) {
    const auto row = TransactionItem::fromEID(session.root(), payment.eid);
    return session.printJson(row ? jsonOf(session, names, *row) : boost::json::object());
  }
  const auto whole = wholeRecord(session, ofRecord);
  const RecordTexts texts(session, names, whole);
  session.answer(say(paymentText(session, texts, payment)) + restText(session, texts) +
                 texts.currencyNotes());
}

namespace {

void addPayment(Session& session, const PaymentOptions& options) {
  MVAppRoot& root = session.root();
  Payment payment(root);
  payment.datetime = momentTyped(session, options.date);
  payment.note = asTyped(options.note, "the note");
  payment.paid = !options.pending && isPaidAt(payment.datetime, session.now());
  if (!payment.paid && options.account.empty()) {
    throw refused("a pending payment needs an account; what none pays is still to be paid anyway");
  }
  changeStore(session, [&] {
    const auto whole = wholeTyped(session, options.eid);
    const auto& item = whole.group.items.empty() ? whole.head : whole.group.items.front();
    if (!whole.isCompound() && !whole.head.account.empty()) {
      throw refused("the record is paid from its own account; first: moniva spend edit {} --no-account",
                    shortEid(whole.head.eid));
    }
    payment.type = whole.type();
    std::string currency = currencyOf(session, whole);
    if (!options.account.empty()) {
      const auto account = accountNamed(session, options.account, Meant::open);
      payment.account = account.pk;
      if (whole.accounts().empty()) currency = account.currency;
    }
    payment.amount = amountTyped(session, options.amount, currency, options.amounts);
    if (!options.fee.empty()) {
      payment.serviceFeeAmount = amountTyped(session, options.fee, currency, options.amounts);
      if (payment.serviceFeeAmount > payment.amount) {
        throw refused("the fee is part of what is paid, and not more than that");
      }
    }
    done(payment.addNew(item.eid));
  });
  answerPayment(session, payment, payment.eid,
                [&](const std::string& what) { return session.text("Added the payment {}.", what); });
  if (options.remind) remindOfNew(session, payment.eid);
}

void listPayments(Session& session, const PaymentOptions& options) {
  const auto whole = wholeTyped(session, options.eid);
  RecordNames names(session.root());
  if (session.options().json) {
    boost::json::array list;
    for (const auto& row : whole.group.payments) list.push_back(jsonOf(session, names, row));
    return session.printJson(list);
  }
  const RecordTexts texts(session, names, whole);
  if (whole.group.payments.empty())
    return session.answer(session.text("It has no payments: it is {}", texts.described()));
  session.out() << session.text("Payments of {}", texts.described()) << restText(session, texts) << '\n';
  showPayments(session, whole);
  showRefunds(session, whole);
}

void editPayment(Session& session, const PaymentOptions& options) {
  if (!options.newAmount && !options.newAccount && !options.noAccount && options.date.empty() &&
      !options.newNote && options.fee.empty()) {
    throw notUnderstood("say what to change, such as --amount 12.50 or --account Cash");
  }
  std::string eid;
  changeStore(session, [&] {
    Payment payment = paymentTyped(session, options.eid);
    eid = payment.eid;
    const auto row = TransactionItem::fromEID(session.root(), eid);
    const bool isOfRecord = wholeRecord(session, eid).isCompound();
    const bool isRest = row && row->isRest() && isOfRecord;
    if (isRest && !options.newAccount) {
      throw refused("this is what is still to be paid; pay it with: moniva payment add {} AMOUNT ACCOUNT",
                    shortEid(eid));
    }
    if (options.noAccount && !payment.paid && isOfRecord) {
      throw refused("a pending payment needs an account; take it away with: moniva payment remove {}",
                    shortEid(eid));
    }
    if (options.newAccount) {
      const auto account = accountNamed(session, *options.newAccount, Meant::open);
      done(payment.updateAccount(account.pk));
    }
    if (options.noAccount) done(payment.updateAccount(""));
    const auto currency = currencyOf(session, wholeRecord(session, eid));
    if (options.newAmount) {
      done(payment.updateAmount(amountTyped(session, *options.newAmount, currency, options.amounts)));
    }
    if (!options.fee.empty()) {
      payment.serviceFeeAmount = amountTyped(session, options.fee, currency, options.amounts);
      done(payment.update());
    }
    if (!options.date.empty()) {
      payment.timeZone = session.calendar().zone();
      done(payment.updateDate(momentTyped(session, options.date)));
    }
    if (payment.serviceFeeAmount > payment.amount) {
      throw refused("the fee is part of what is paid, and not more than that");
    }
    if (options.newNote) done(payment.updateNote(asTyped(*options.newNote, "the note")));
  });
  answerPayment(session, paymentTyped(session, eid), eid,
                [&](const std::string& what) { return session.text("The payment is now {}.", what); });
}

void markPayment(Session& session, const std::string& text, bool paid) {
  std::string eid;
  bool changed = false;
  changeStore(session, [&] {
    Payment payment = paymentTyped(session, text);
    eid = payment.eid;
    changed = payment.paid != paid;
    if (changed) done(paid ? payment.paidIt() : payment.unpaidIt());
  });
  answerPayment(session, paymentTyped(session, eid), eid, [&](const std::string& what) {
    if (!changed) return session.text("Nothing was changed: {}.", what);
    if (paid) return session.text("Marked as paid: {}.", what);
    return session.text("Marked as pending: {}.", what) + settledSoonText(session, wholeRecord(session, eid));
  });
}

void removePayment(Session& session, const PaymentOptions& options) {
  std::string ofRecord;
  bool byItself = false;
  std::optional<Payment> gone;
  changeStore(session, [&] {
    Payment payment = paymentTyped(session, options.eid);
    const auto whole = wholeRecord(session, payment.eid);
    byItself = !whole.isCompound();
    ofRecord = whole.head.eid;
    gone = payment;
    done(payment.delete_());
  });
  answerPayment(session, *gone, ofRecord, [&](const std::string& what) {
    auto line = session.text("Removed the payment {}.", what);
    if (byItself) {
      line += " " + session.text("Bring it back with: moniva payment restore {}", shortEid(gone->eid));
    }
    return line;
  });
}

void restorePayment(Session& session, const PaymentOptions& options) {
  std::string eid;
  changeStore(session, [&] {
    Payment payment = paymentTyped(session, options.eid, true);
    eid = payment.eid;
    done(payment.restore());
  });
  answerPayment(session, paymentTyped(session, eid), eid,
                [&](const std::string& what) { return session.text("Brought back the payment {}.", what); });
}

}  // namespace

void addPaymentCommands(CommandLine& line) {
  CLI::App* family = line.add(line.app(), "payment");
  family->require_subcommand(1);
  const auto command = [&](const char* name, const char* argument, const char* help,
                           std::function<void(Session&, const PaymentOptions&)> run) {
    CLI::App* app = line.add(*family, name);
    auto options = std::make_shared<PaymentOptions>();
    app->add_option(argument, options->eid, help)->required();
    line.onRun(app, [options, run = std::move(run)](Session& session) { run(session, *options); });
    return std::pair(app, options);
  };
  constexpr const char* kRecord = toTranslate("The record: its eid, or the end of it");
  constexpr const char* kPayment = toTranslate("The payment: its eid, or the end of it");

  const auto [add, added] = command("add", "RECORD", kRecord, addPayment);
  add->add_option("AMOUNT", added->amount, "What is paid, above zero")->required();
  add->add_option("ACCOUNT", added->account, "The account it is paid from, or into (else none)");
  add->add_option("-d,--date", added->date, "When (else now)")->type_name("DATE");
  add->add_option("-n,--note", added->note, "A note")->type_name("TEXT");
  add->add_option("--fee", added->fee, "How much of the amount is a fee")->type_name("AMOUNT");
  add->add_flag("--pending", added->pending, kNotPaidYet);
  addRemindOption(*add, added->remind);
  addRoundOption(*add, added->amounts);
  addPaymentAlone(line, *family);

  command("list", "RECORD", kRecord, listPayments);

  const auto [edit, edited] = command("edit", "PAYMENT", kPayment, editPayment);
  edit->add_option("--amount", edited->newAmount, "What is paid, above zero")->type_name("AMOUNT");
  auto* account = edit->add_option("-a,--account", edited->newAccount, "The account it is paid from, or into")
                      ->type_name("NAME");
  edit->add_flag("--no-account", edited->noAccount, "From no account")->excludes(account);
  edit->add_option("-d,--date", edited->date, "When")->type_name("DATE")->check(notEmpty());
  edit->add_option("-n,--note", edited->newNote, "The note; \"\" for none")->type_name("TEXT");
  edit->add_option("--fee", edited->fee, "How much of the amount is a fee")
      ->type_name("AMOUNT")
      ->check(notEmpty());
  addRoundOption(*edit, edited->amounts);

  command("paid", "PAYMENT", kPayment,
          [](Session& session, const PaymentOptions& options) { markPayment(session, options.eid, true); });
  command("pending", "PAYMENT", kPayment,
          [](Session& session, const PaymentOptions& options) { markPayment(session, options.eid, false); });
  command("remove", "PAYMENT", kPayment, removePayment);
  command("restore", "PAYMENT", kPayment, restorePayment);
}

}  // namespace moniva
