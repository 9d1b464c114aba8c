#include <boost/json.hpp>

#include "base/amount.h"
#include "calendar/parse_date.h"
#include "currency/amount_format.h"
#include "model/mv_category.h"
#include "model/record_entry.h"
#include "model/vendor.h"
#include "storage/transaction.h"
#include "ui/cli/command_error.h"
#include "ui/cli/command_line.h"
#include "ui/cli/did_you_mean.h"
#include "ui/cli/records.h"
#include "ui/cli/text_width.h"
#include "ui/cli/typed_text.h"

namespace moniva {
namespace {

struct SpendAddOptions {
  std::string amount;
  bool income = false;
  std::string category;
  std::string subcategory;
  std::string vendor;
  std::string account;
  std::string book;
  std::string date;
  std::string note;
  std::pair<std::string, std::string> foreign;  ///< amount and code; empty for none
  bool create = false;
};

Refusal noCategory(const std::string& title, const std::optional<std::string>& meant) {
  return Refusal(meant ? phrase("there is no category '{}'; did you mean '{}'? (--create makes a new one)",
                                printable(title), printable(*meant))
                       : phrase("there is no category '{}'; --create makes it", printable(title)));
}

Refusal noSubcategory(const std::string& title, const std::string& above,
                      const std::optional<std::string>& meant) {
  return Refusal(
      meant ? phrase("'{}' has no subcategory '{}'; did you mean '{}'? (--create makes a new one)",
                     printable(above), printable(title), printable(*meant))
            : phrase("'{}' has no subcategory '{}'; --create makes it", printable(above), printable(title)));
}

MVCategory categoryNamed(Session& session, const std::string& title, const MVCategory& above,
                         const MonivaAccount& book, bool create) {
  MVAppRoot& root = session.root();
  if (auto found = done(MVCategory::withTitle(root, title, above.type, above.pk))) return *found;
  if (!create) {
    std::vector<std::string> titles;
    const auto known = done(above.getAllSubcategoryList());
    for (const auto& category : known) titles.push_back(category.title);
    const auto meant = didYouMean(title, titles);
    throw CommandError(CommandError::kRefused,
                       above.isRoot() ? noCategory(title, meant) : noSubcategory(title, above.title, meant));
  }
  if (title.find('/') != std::string::npos) {
    throw refused("there is no category '{}'; a subcategory is named with -s: -c Food -s Bakery",
                  printable(title));
  }
  MVCategory made(root);
  made.title = title;
  made.type = above.type;
  made.parent = above.pk;
  done(made.addCate());
  // One that comes back may be off in the book that uses it now.
  if (MVCategory::booksDiffer(root)) done(made.enabledForBook(book));
  return made;
}

/// "Feb 29, 2024 14:30", with a mark where the record waits for its day.
std::string dayOf(Session& session, Date date, bool paid) {
  return paid ? dateText(session, date) : session.text("{} (pending)", dateText(session, date));
}

/// The moment a record is made for: typed with a time, or that day at the present time of day.
Date momentTyped(Session& session, const std::string& text) {
  if (text.empty()) return session.now();
  const auto parsed = typed(parseDate(text, session.calendar(), session.now()));
  if (!parsed.hasTime && parsed.movedByClockChange) {
    throw refused("there is no {} in {}: the calendar went past that day there", printable(text),
                  session.calendar().zone());
  }
  if (!parsed.hasTime) return session.calendar().dateWithTime(parsed.date, session.now());
  if (parsed.movedByClockChange) {
    session.say(
        session.text("The clock skips that time of day; {} is taken.", dateText(session, parsed.date)));
  }
  if (parsed.ambiguous) {
    session.say(session.text("The clock shows that time twice on that day; the first is taken."));
  }
  return parsed.date;
}

double amountTyped(const std::string& text) {
  const double amount = typed(parseAmount(text));
  if (amount <= 0) throw notUnderstood("an amount must be above zero; '{}' is not", printable(text));
  return amount;
}

void addSpend(Session& session, const SpendAddOptions& options) {
  MVAppRoot& root = session.root();
  Spend spend(root);
  spend.type = options.income ? kind::kIncome : kind::kExpense;
  spend.amount = amountTyped(options.amount);
  spend.datetime = momentTyped(session, options.date);
  if (const auto& [amount, code] = options.foreign; !amount.empty() || !code.empty()) {
    spend.foreignAmount = amountTyped(amount);
    spend.foreignCurrency = code;
    if (!isCurrencyCode(spend.foreignCurrency)) {
      throw notUnderstood("'{}' is no currency; codes have three capital letters, such as USD",
                          printable(spend.foreignCurrency));
    }
  }
  if (!options.subcategory.empty() && options.category.empty()) {
    throw notUnderstood("a subcategory needs its --category");
  }
  spend.note = asTyped(options.note, "the note");
  spend.paid = isPaidByDate(session.calendar(), spend.datetime, session.now());

  Connection* db = root.db().getDatabase();
  Transaction transaction(*db);
  if (!transaction.began()) throw CommandError(CommandError::kRefused, db->refusal());
  const MonivaAccount book = bookNamed(session, options.book, Meant::open);
  spend.book = book.pk;
  std::optional<MonivaAccount> account;
  if (!options.account.empty()) {
    account = accountNamed(session, options.account, Meant::open);
    spend.account = account->pk;
  }
  std::string categoryText;
  if (!options.category.empty()) {
    const auto above = categoryNamed(session, wellFormed(options.category, "the category"),
                                     MVCategory::rootCateForType(root, spend.type), book, options.create);
    const auto chosen = options.subcategory.empty()
                            ? above
                            : categoryNamed(session, wellFormed(options.subcategory, "the subcategory"),
                                            above, book, options.create);
    spend.category = above.pk;
    spend.subcategory = chosen.pk;
    categoryText = chosen.cateString();
  }
  std::string vendorText;
  if (!options.vendor.empty()) {
    Vendor vendor(root);
    vendor.title = wellFormed(options.vendor, "the vendor");
    vendor.type = Vendor::typeFor(spend.type);
    done(vendor.add());
    spend.vendor = vendor.pk;
    vendorText = printable(vendor.title);
  }
  done(recordEntry(root, spend));
  if (!transaction.commit()) throw CommandError(CommandError::kRefused, db->refusal());
  entriesChanged(root);

  if (session.options().json) return session.printJson(jsonOf(session, spend));
  const std::string& currency = account ? account->currency : book.currency;
  std::string amount = session.amounts().format(spend.amount, currency);
  if (!spend.foreignCurrency.empty()) {
    amount +=
        fmt::format(" ({})", session.amounts().formatWithCode(spend.foreignAmount, spend.foreignCurrency));
  }
  std::string line =
      options.income ? session.text("Added income {}", amount) : session.text("Added an expense {}", amount);
  if (!categoryText.empty()) line += ", " + printable(categoryText);
  if (!vendorText.empty()) line += options.income ? session.text(", from {}", vendorText) : ", " + vendorText;
  if (account) {
    const std::string title = printable(account->title);
    line += options.income ? session.text(", to {}", title) : session.text(", paid from {}", title);
  }
  line +=
      session.text(", on {}, in '{}'.", dayOf(session, spend.datetime, spend.paid), printable(book.title));
  if (account && account->currency != book.currency) {
    line += " " + session.text("'{}' is kept in {}; the amount counts there as it stands.",
                               printable(book.title), book.currency);
  }
  session.out() << line << '\n';
}

struct TransferAddOptions {
  std::string amount;
  std::string from;
  std::string to;
  std::string toAmount;
  std::string date;
  std::string note;
};

void addTransfer(Session& session, const TransferAddOptions& options) {
  MVAppRoot& root = session.root();
  Transfer transfer(root);
  transfer.amountA = amountTyped(options.amount);
  transfer.amountB = options.toAmount.empty() ? transfer.amountA : amountTyped(options.toAmount);
  transfer.datetime = momentTyped(session, options.date);
  const auto from = accountNamed(session, options.from, Meant::open);
  const auto to = accountNamed(session, options.to, Meant::open);
  transfer.acrossCurrencies = from.currency != to.currency;
  if (transfer.acrossCurrencies && options.toAmount.empty()) {
    throw refused("'{}' is kept in {} and '{}' in {}; say with --to-amount what arrives",
                  printable(from.title), from.currency, printable(to.title), to.currency);
  }
  if (!transfer.acrossCurrencies && transfer.amountA != transfer.amountB) {
    throw refused("'{}' and '{}' are both kept in {}, so what leaves one arrives in the other",
                  printable(from.title), printable(to.title), from.currency);
  }
  transfer.accountA = from.pk;
  transfer.accountB = to.pk;
  transfer.note = asTyped(options.note, "the note");
  transfer.paid = isPaidByDate(session.calendar(), transfer.datetime, session.now());

  done(recordEntry(root, transfer));
  entriesChanged(root);

  if (session.options().json) return session.printJson(jsonOf(session, transfer));
  std::string amount = session.amounts().format(transfer.amountA, from.currency);
  if (transfer.acrossCurrencies) amount += " -> " + session.amounts().format(transfer.amountB, to.currency);
  session.answer(session.text("Moved {} from {} to {}, on {}.", amount, printable(from.title),
                              printable(to.title), dayOf(session, transfer.datetime, transfer.paid)));
}

}  // namespace

void addSpendCommands(CommandLine& line) {
  CLI::App* spend = line.add(line.app(), "spend");
  spend->require_subcommand(1);
  CLI::App* add = line.add(*spend, "add");
  auto options = std::make_shared<SpendAddOptions>();
  add->add_option("AMOUNT", options->amount,
                  "The amount, above zero, such as 12.50 (the decimal mark is '.')")
      ->required();
  add->add_flag("--income", options->income, "Income instead of an expense");
  add->add_option("-c,--category", options->category, "The category")->type_name("NAME");
  add->add_option("-s,--subcategory", options->subcategory, "The subcategory")->type_name("NAME");
  add->add_option("--vendor,--payee,--payer", options->vendor, "Who was paid, or who paid; added when new")
      ->type_name("NAME");
  add->add_option("-a,--account", options->account, "The account it was paid from, or into")
      ->type_name("NAME");
  add->add_option("-b,--book", options->book, "The book (else the current one)")->type_name("NAME");
  add->add_option("-d,--date", options->date,
                  "When, such as 2024-02-29, \"2024-02-29 14:30\" or yesterday (else now)")
      ->type_name("DATE");
  add->add_option("-n,--note", options->note, "A note")->type_name("TEXT");
  add->add_option("--foreign", options->foreign,
                  "What it was in another currency: amount and code, such as 20 USD")
      ->type_name("AMOUNT CODE");
  add->add_flag("--create", options->create, "Make the category or subcategory when it is new");
  line.onRun(add, [options](Session& session) { addSpend(session, *options); });
}

void addTransferCommands(CommandLine& line) {
  CLI::App* transfer = line.add(line.app(), "transfer");
  transfer->require_subcommand(1);
  CLI::App* add = line.add(*transfer, "add");
  auto options = std::make_shared<TransferAddOptions>();
  add->add_option("AMOUNT", options->amount,
                  "What leaves the first account, such as 12.50 (the decimal mark is '.')")
      ->required();
  add->add_option("FROM", options->from, "Name of the account the money leaves")->required();
  add->add_option("TO", options->to, "Name of the account it arrives in")->required();
  add->add_option("--to-amount", options->toAmount,
                  "What arrives, when the accounts keep different currencies")
      ->type_name("AMOUNT");
  add->add_option("-d,--date", options->date, "When (else now)")->type_name("DATE");
  add->add_option("-n,--note", options->note, "A note")->type_name("TEXT");
  line.onRun(add, [options](Session& session) { addTransfer(session, *options); });
}

}  // namespace moniva
