#include "model/entry_checks.h"
#include "ui/cli/command_error.h"
#include "ui/cli/commands/entry_fields.h"
#include "ui/cli/commands/spend_commands.h"
#include "ui/cli/records.h"
#include "ui/cli/text_width.h"
#include "ui/cli/typed_text.h"

namespace moniva {
namespace {

/// What may be typed for a record that is there. What is not given stays as it is.
struct SpendEdit {
  std::string eid;
  std::string code;  ///< behind the amount
  std::optional<std::string> amount;
  std::pair<std::string, std::string> foreign;
  bool noForeign = false;
  std::optional<std::string> category;
  std::optional<std::string> subcategory;
  bool noCategory = false;
  std::optional<std::string> vendor;
  bool noVendor = false;
  std::optional<std::string> account;
  bool noAccount = false;
  std::optional<std::string> book;
  bool noBook = false;
  std::optional<std::string> date;
  std::optional<std::string> note;
  bool reimburse = false;
  bool noReimburse = false;
  bool create = false;
  AmountOptions amounts;

  bool isEmpty() const {
    const bool flags = noForeign || noCategory || noVendor || noAccount || noBook || reimburse ||
                       noReimburse || !amounts.rate.empty();
    return !flags && !amount && foreign.first.empty() && !category && !subcategory && !vendor && !account &&
           !book && !date && !note;
  }
};

/// A name that is given; a blank one is a slip, as there is an option that takes it off.
const std::string& nameGiven(const std::string& name, const char* off) {
  if (wellFormed(name, "the name").empty()) throw notUnderstood("a blank name is none; {} takes it off", off);
  return name;
}

void changeAccount(Session& session, Spend& spend, const SpendEdit& edit, int type) {
  if (edit.noAccount) return done(spend.updateAccount(""));
  if (!edit.account) return;
  const auto account = accountNamed(session, nameGiven(*edit.account, "--no-account"), Meant::open);
  done(checkTracked(account, type));
  done(spend.updateAccount(account.pk));
}

void changeBook(Session& session, Spend& spend, const SpendEdit& edit) {
  if (edit.noBook) return done(spend.updateBook(""));
  if (!edit.book) return;
  done(spend.updateBook(bookNamed(session, nameGiven(*edit.book, "--no-book"), Meant::open).pk));
}

/// Ends the command for a row that paid for a record, or came back of it: that has commands of its own.
void requireNoPart(const RecordWhole& whole, const std::string& eid) {
  if (!whole.isCompound()) return;
  const auto& payments = whole.group.payments;
  const auto part = std::ranges::find(payments, eid, &TransactionItem::eid);
  if (part == payments.end()) return;
  throw part->isRefund() ? refused("this is a refund; change it with: moniva refund edit {}", shortEid(eid))
  : part->isRest()
      ? refused("this is what is still to be paid; pay it with: moniva payment add {} AMOUNT ACCOUNT",
                shortEid(eid))
      : refused("this is a payment; change it with: moniva payment edit {}", shortEid(eid));
}

/// A record in its account and book as typed, and the currencies it was and is kept in.
struct PlacedRecord {
  std::string eid;
  Spend spend;
  int type;
  std::string before;
  std::string currency;

  /// What it came to, with what came back of it since, which is what its foreign figure was for.
  EntryAmount had() const {
    EntryAmount amounts;
    amounts.amount = spend.amount;
    for (const auto& refund : done(spend.refunds())) amounts.amount -= refund.amount;
    amounts.amount = withoutNoise(amounts.amount);
    if (currency != before) return amounts;
    amounts.foreignAmount = spend.foreignAmount;
    amounts.foreignCurrency = spend.foreignCurrency;
    return amounts;
  }
};

PlacedRecord placed(Session& session, const SpendEdit& edit) {
  std::string eid;
  const auto whole = wholeTyped(session, edit.eid, &eid);
  requireNoPart(whole, eid);
  PlacedRecord record{eid, spendOf(session, eid), whole.type(), currencyOf(session, whole), {}};
  changeAccount(session, record.spend, edit, record.type);
  changeBook(session, record.spend, edit);
  record.currency = currencyOf(session, wholeRecord(session, eid));
  return record;
}

/// Changes the amounts of a record that is in its place by now; answers the sentence about that.
std::string changeAmounts(Session& session, PlacedRecord& record, const SpendEdit& edit) {
  Spend& spend = record.spend;
  const auto& currency = record.currency;
  const bool keepsForeign = edit.foreign.first.empty() && !edit.noForeign;
  if (!edit.amounts.rate.empty() && (!edit.amount || !keepsForeign)) {
    throw notUnderstood("--rate belongs to an --amount in another currency, such as 20 USD");
  }
  if (!edit.amount && currency != record.before) {
    throw refused("the record is kept in {} and would be in {}; say with --amount what it comes to",
                  record.before, currency);
  }
  if (!edit.amount && keepsForeign) return {};
  double amount = spend.amount;
  if (edit.amount) {
    const auto had = record.had();
    const auto entry = entryAmountTyped(session, *edit.amount, currency, edit.amounts, had);
    if (entry.isForeign() && !keepsForeign) {
      throw notUnderstood("--amount says what it was in {}; leave out --foreign and --no-foreign",
                          entry.foreignCurrency);
    }
    if (entry.isForeign()) {
      const double left = withoutNoise(entry.amount - withoutNoise(had.amount - spend.amount));
      if (left < 0) {
        throw refused("{} is less than what was refunded",
                      session.amounts().formatWithCode(entry.amount, currency));
      }
      done(spend.updateAmount(left, entry.foreignAmount, entry.foreignCurrency));
      return entry.note(session);
    }
    amount = entry.amount;
  }
  if (!edit.foreign.first.empty()) {
    const auto code = foreignTyped(session, edit.foreign.second, currency);
    done(spend.updateAmount(amount, amountTyped(session, edit.foreign.first, code, edit.amounts), code));
    return {};
  }
  // What it was in a currency that is its own by now would only contradict it.
  if (edit.noForeign || spend.foreignCurrency == currency) {
    done(spend.updateAmount(amount, 0, ""));
    return {};
  }
  done(spend.updateAmount(amount));
  if (spend.foreignCurrency.empty()) return {};
  return " " + session.text("{} stays as its foreign amount; --no-foreign takes it off.",
                            session.amounts().formatWithCode(spend.foreignAmount, spend.foreignCurrency));
}

void changeCategory(Session& session, Spend& spend, const SpendEdit& edit, int type) {
  if (edit.noCategory) return done(spend.updateCategory("", ""));
  if (!edit.category && !edit.subcategory) return;
  std::string top = edit.category ? nameGiven(*edit.category, "--no-category") : std::string();
  if (!edit.category) {
    const auto present = MVCategory::getCategory(session.root(), spend.category, type);
    if (!present) throw notUnderstood("a subcategory needs its --category");
    top = present->title;
  }
  const auto book = MonivaAccount::getAccountWithPK(session.root(), spend.book);
  const auto chosen = categoryChosen(session, top, edit.subcategory.value_or(""), type,
                                     book ? *book : MonivaAccount(session.root()), edit.create);
  if (chosen) done(spend.updateCategory(chosen->category, chosen->subcategory));
}

void editSpend(Session& session, const SpendEdit& edit) {
  if (edit.isEmpty()) throw notUnderstood("say what to change, such as --amount 12.50 or --note \"...\"");
  prepareRates(session, edit.amount.value_or(""), edit.amounts, [&](const std::string& code) {
    bool needsRate = false;
    // In which currency it will be is known for sure where it is.
    tryStore(
        session,
        [&] {
          const auto record = placed(session, edit);
          needsRate = code != record.currency && !record.had().hasRateOf(code);
        },
        [] {});
    return needsRate;
  });
  std::string eid;
  std::string note;
  changeStore(session, [&] {
    auto record = placed(session, edit);
    eid = record.eid;
    note = changeAmounts(session, record, edit);
    Spend& spend = record.spend;
    changeCategory(session, spend, edit, record.type);
    if (edit.vendor) {
      nameGiven(*edit.vendor, "--no-vendor");
      done(spend.updateVendor(vendorChosen(session, *edit.vendor, record.type)));
    }
    if (edit.noVendor) done(spend.updateVendor(""));
    if (edit.date) {
      spend.timeZone = session.calendar().zone();
      if (trimBlanks(*edit.date).empty()) throw notUnderstood("a record needs a date");
      done(spend.updateDate(momentTyped(session, *edit.date)));
    }
    if (edit.note) done(spend.updateNote(asTyped(*edit.note, "the note")));
    if ((edit.reimburse || edit.noReimburse) && record.type == kind::kIncome) {
      throw refused("income is not reimbursed");
    }
    if (edit.reimburse || edit.noReimburse) done(spend.updateReimburse(edit.reimburse));
  });
  answerChanged(session, eid, [&](const RecordTexts& texts) {
    return session.text("Changed. It is now {}", texts.now(eid)) + note;
  });
}

void addSpendEdit(CommandLine& line, CLI::App& spend) {
  CLI::App* app = line.add(spend, "edit");
  auto edit = std::make_shared<SpendEdit>();
  app->add_option("EID", edit->eid, "The record: its eid, or the end of it")->required();
  app->add_option("CODE", edit->code, "The currency of --amount, when it is another than the record's");
  // An option that sets, and the flag that takes off.
  const auto pair = [&](CLI::Option* set, const char* flag, bool& off, const char* help) {
    app->add_flag(flag, off, help)->excludes(set);
  };
  app->add_option("--amount", edit->amount, "The amount, above zero, such as 12.50 or 20 USD")
      ->type_name("AMOUNT")
      ->check(notEmpty());
  addRateOption(*app, edit->amounts);
  pair(app->add_option("--foreign", edit->foreign, "What it was in another currency: amount and code")
           ->type_name("AMOUNT CODE")
           ->check(notEmpty()),
       "--no-foreign", edit->noForeign, toTranslate("In no other currency"));
  auto* category = app->add_option("-c,--category", edit->category, "The category")->type_name("NAME");
  auto* subcategory =
      app->add_option("-s,--subcategory", edit->subcategory, "The subcategory")->type_name("NAME");
  app->add_flag("--no-category", edit->noCategory, "In no category")
      ->excludes(category)
      ->excludes(subcategory);
  pair(app->add_option("--vendor,--payee,--payer", edit->vendor, "Who was paid, or who paid")
           ->type_name("NAME"),
       "--no-vendor", edit->noVendor, toTranslate("No vendor"));
  pair(app->add_option("-a,--account", edit->account, "The account it was paid from, or into")
           ->type_name("NAME"),
       "--no-account", edit->noAccount, toTranslate("From no account"));
  pair(app->add_option("-b,--book", edit->book, "The book")->type_name("NAME"), "--no-book", edit->noBook,
       toTranslate("In no book: it becomes a payment by itself, without a category"));
  app->add_option("-d,--date", edit->date, "When")->type_name("DATE");
  app->add_option("-n,--note", edit->note, "The note; \"\" for none")->type_name("TEXT");
  auto* reimburse = app->add_flag("--reimburse", edit->reimburse, "To be reimbursed");
  pair(reimburse, "--no-reimburse", edit->noReimburse, toTranslate("Not to be reimbursed"));
  app->add_flag("--create", edit->create, "Make the category or subcategory when it is new");
  addRoundOption(*app, edit->amounts);
  line.onRun(app, [edit](Session& session) {
    auto amount = edit->amount.value_or("");
    takeCode(edit->eid, edit->code, amount);
    if (edit->amount) edit->amount = amount;
    editSpend(session, *edit);
  });
}

void markSpend(Session& session, const std::string& text, bool paid) {
  std::string eid;
  bool changed = false;
  changeStore(session, [&] {
    const auto whole = wholeTyped(session, text, &eid);
    const auto& payments = whole.group.payments;
    if (whole.isCompound() && std::ranges::find(payments, eid, &TransactionItem::eid) != payments.end()) {
      throw paid ? refused("this is a payment; mark it with: moniva payment paid {}", shortEid(eid))
                 : refused("this is a payment; mark it with: moniva payment pending {}", shortEid(eid));
    }
    Spend spend = spendOf(session, eid);
    const bool wasPaid = spend.paid;
    if (wasPaid == paid && !whole.isCompound()) return;
    done(paid ? spend.paidIt() : spend.unpaidIt());
    changed = spendOf(session, eid).paid != wasPaid || wholeRecord(session, eid).open() != whole.open();
  });
  answerChanged(session, eid, [&](const RecordTexts& texts) {
    const auto now = texts.now(eid);
    if (!changed) return session.text("Nothing was changed: it is {}", now);
    if (paid) return session.text("Marked as paid: {}", now);
    return session.text("Marked as pending: {}", now) + settledSoonText(session, texts.whole());
  });
}

struct ToBook {
  std::string eid;
  std::string book;
};

MonivaAccount bookOf(Session& session, const ToBook& to) {
  if (to.book.empty()) throw notUnderstood("--book needs the name of a book");
  return bookNamed(session, to.book, Meant::open);
}

void copySpend(Session& session, const ToBook& to) {
  std::string copy;
  changeStore(session, [&] {
    const auto whole = wholeTyped(session, to.eid);
    const auto book = bookOf(session, to);
    copy = done(spendOf(session, whole.head.eid).copyToBook(book.pk));
    const auto before = currencyOf(session, whole);
    const auto currency = currencyOf(session, wholeRecord(session, copy));
    if (currency != before) {
      throw refused("the record is kept in {} and its copy would be in {}; enter it there with its amount",
                    before, currency);
    }
  });
  answerChanged(session, copy,
                [&](const RecordTexts& texts) { return session.text("Copied: {}", texts.described()); });
}

void moveSpend(Session& session, const ToBook& to) {
  std::string eid;
  changeStore(session, [&] {
    const auto whole = wholeTyped(session, to.eid, &eid);
    const auto book = bookOf(session, to);
    if (spendOf(session, eid).bid == kPaymentRow && whole.isCompound()) eid = whole.head.eid;
    const auto before = currencyOf(session, whole);
    done(spendOf(session, eid).moveToBook(book.pk));
    const auto currency = currencyOf(session, wholeRecord(session, eid));
    if (currency != before) {
      throw refused(
          "the record is kept in {} and would be in {}; say what it comes to: moniva spend edit {} --book "
          "'{}' "
          "--amount AMOUNT",
          before, currency, shortEid(eid), printable(to.book));
    }
  });
  answerChanged(session, eid,
                [&](const RecordTexts& texts) { return session.text("Moved: {}", texts.described()); });
}

}  // namespace

void addSpendEdits(CommandLine& line, CLI::App& spend) {
  addSpendEdit(line, spend);
  for (const bool paid : {true, false}) {
    CLI::App* mark = line.add(spend, paid ? "paid" : "pending");
    auto eid = std::make_shared<std::string>();
    mark->add_option("EID", *eid, "The record: its eid, or the end of it")->required();
    line.onRun(mark, [eid, paid](Session& session) { markSpend(session, *eid, paid); });
  }
  const auto toBook = [&](const char* name, void (*run)(Session&, const ToBook&)) {
    CLI::App* command = line.add(spend, name);
    auto options = std::make_shared<ToBook>();
    command->add_option("EID", options->eid, "The record: its eid, or the end of it")->required();
    command->add_option("-b,--book", options->book, "The book")->type_name("NAME")->required();
    line.onRun(command, [options, run](Session& session) { run(session, *options); });
  };
  toBook("copy", copySpend);
  toBook("move", moveSpend);
}

}  // namespace moniva
