#include <boost/json.hpp>

#include "base/amount.h"
#include "calendar/parse_date.h"
#include "currency/amount_format.h"
#include "model/account_balance.h"
#include "model/mv_category.h"
#include "model/spend.h"
#include "model/vendor.h"
#include "storage/transaction.h"
#include "ui/cli/command_error.h"
#include "ui/cli/command_line.h"
#include "ui/cli/did_you_mean.h"
#include "ui/cli/records.h"

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
  std::vector<std::string> foreign;
  bool create = false;
};

MVCategory categoryNamed(Session& session, const std::string& title, const MVCategory& above, bool create) {
  MVAppRoot& root = session.root();
  if (auto found = MVCategory::withTitle(root, title, above.type, above.pk)) return *found;
  if (!create) {
    std::vector<std::string> titles;
    for (const auto& category : above.getAllSubcategoryList()) titles.push_back(category.title);
    const auto meant = didYouMean(title, titles);
    const std::string where =
        above.isRoot() ? "category" : fmt::format("subcategory of '{}' named", above.title);
    throw CommandError(CommandError::kRefused,
                       meant
                           ? fmt::format("there is no {} '{}'; did you mean '{}'? (--create makes a new one)",
                                         where, title, *meant)
                           : fmt::format("there is no {} '{}'; --create makes it", where, title));
  }
  MVCategory made(root);
  made.title = title;
  made.type = above.type;
  made.parent = above.pk;
  done(made.addCate());
  return made;
}

/// The moment a record is made for: typed with a time, or that day at the present time of day.
Date momentTyped(Session& session, const std::string& text) {
  if (text.empty()) return session.now();
  const auto parsed = typed(parseDate(text, session.calendar(), session.now()));
  if (!parsed.hasTime) return session.calendar().dateWithTime(parsed.date, session.now());
  if (parsed.movedByClockChange) {
    session.say(
        fmt::format("The clock skips that time of day; {} is taken.", dateText(session, parsed.date)));
  }
  if (parsed.ambiguous) session.say("The clock shows that time twice on that day; the first is taken.");
  return parsed.date;
}

double amountTyped(const std::string& text) {
  const double amount = typed(parseAmount(text));
  if (amount <= 0)
    throw CommandError(CommandError::kUsage, fmt::format("an amount must be above zero; '{}' is not", text));
  return amount;
}

void addSpend(Session& session, const SpendAddOptions& options) {
  MVAppRoot& root = session.root();
  Spend spend(root);
  spend.type = options.income ? kind::kIncome : kind::kExpense;
  spend.amount = amountTyped(options.amount);
  spend.datetime = momentTyped(session, options.date);
  if (!options.foreign.empty()) {
    spend.foreignAmount = amountTyped(options.foreign[0]);
    spend.foreignCurrency = options.foreign[1];
    if (!isCurrencyCode(spend.foreignCurrency)) {
      throw CommandError(CommandError::kUsage,
                         fmt::format("'{}' is no currency; codes have three capital letters, such as USD",
                                     spend.foreignCurrency));
    }
  }
  if (!options.subcategory.empty() && options.category.empty()) {
    throw CommandError(CommandError::kUsage, "a subcategory needs its --category");
  }
  const MonivaAccount book = bookNamed(session, options.book);
  spend.book = book.pk;
  std::optional<MonivaAccount> account;
  if (!options.account.empty()) {
    account = accountNamed(session, options.account);
    spend.account = account->pk;
  }
  spend.note = options.note;
  spend.paid = isPaidByDate(session.calendar(), spend.datetime, session.now());

  Connection* db = root.db().getDatabase();
  Transaction transaction(*db);
  if (!transaction.began()) throw CommandError(CommandError::kRefused, db->refusal().why);
  std::string categoryText;
  if (!options.category.empty()) {
    const auto above = categoryNamed(session, options.category, MVCategory::rootCateForType(root, spend.type),
                                     options.create);
    auto chosen = options.subcategory.empty()
                      ? above
                      : categoryNamed(session, options.subcategory, above, options.create);
    spend.category = above.pk;
    spend.subcategory = chosen.pk;
    categoryText = chosen.cateString();
    chosen.updateUsingCount(book);
  }
  std::optional<Vendor> vendor;
  if (!options.vendor.empty()) {
    vendor.emplace(root);
    vendor->title = options.vendor;
    vendor->type = Vendor::typeFor(spend.type);
    done(vendor->add());
    spend.vendor = vendor->pk;
  }
  done(spend.add());
  if (vendor) vendor->updateUsingCount(spend.type);
  if (spend.paid) {
    const double change = options.income ? spend.amount : -spend.amount;
    auto counted = book;
    addToTotalBalance(counted, change);
    if (account) addToTotalBalance(*account, change);
  }
  if (!transaction.commit()) throw CommandError(CommandError::kRefused, db->refusal().why);
  root.markRecentEditDate();
  root.platform().notifications.post(notification::kExpenseChanged);

  if (session.options().json) return session.printJson(jsonOf(session, spend));
  const std::string& currency = account ? account->currency : book.currency;
  std::string line = fmt::format("Added {} {}", options.income ? "income" : "an expense",
                                 session.amounts().format(spend.amount, currency));
  if (!spend.foreignCurrency.empty()) {
    line +=
        fmt::format(" ({})", session.amounts().formatWithCode(spend.foreignAmount, spend.foreignCurrency));
  }
  if (!categoryText.empty()) line += ", " + categoryText;
  if (!options.vendor.empty()) line += (options.income ? ", from " : ", ") + options.vendor;
  if (account) line += (options.income ? ", to " : ", paid from ") + account->title;
  line += fmt::format(", on {}{}, in '{}'.", dateText(session, spend.datetime),
                      spend.paid ? "" : " (pending)", book.title);
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
  auto from = accountNamed(session, options.from);
  auto to = accountNamed(session, options.to);
  transfer.acrossCurrencies = from.currency != to.currency;
  if (transfer.acrossCurrencies && options.toAmount.empty()) {
    throw CommandError(CommandError::kRefused,
                       fmt::format("'{}' is kept in {} and '{}' in {}; say with --to-amount what arrives",
                                   from.title, from.currency, to.title, to.currency));
  }
  if (!transfer.acrossCurrencies && transfer.amountA != transfer.amountB) {
    throw CommandError(
        CommandError::kRefused,
        fmt::format("'{}' and '{}' are both kept in {}, so what leaves one arrives in the other", from.title,
                    to.title, from.currency));
  }
  transfer.accountA = from.pk;
  transfer.accountB = to.pk;
  transfer.note = options.note;
  transfer.paid = isPaidByDate(session.calendar(), transfer.datetime, session.now());

  Connection* db = root.db().getDatabase();
  Transaction transaction(*db);
  if (!transaction.began()) throw CommandError(CommandError::kRefused, db->refusal().why);
  done(transfer.add());
  if (transfer.paid) {
    addToTotalBalance(from, -transfer.amountA);
    addToTotalBalance(to, transfer.amountB);
  }
  if (!transaction.commit()) throw CommandError(CommandError::kRefused, db->refusal().why);
  root.markRecentEditDate();
  root.platform().notifications.post(notification::kExpenseChanged);

  if (session.options().json) return session.printJson(jsonOf(session, transfer));
  std::string amount = session.amounts().format(transfer.amountA, from.currency);
  if (transfer.acrossCurrencies) amount += " -> " + session.amounts().format(transfer.amountB, to.currency);
  session.out() << fmt::format("Moved {} from {} to {}, on {}{}.\n", amount, from.title, to.title,
                               dateText(session, transfer.datetime), transfer.paid ? "" : " (pending)");
}

}  // namespace

void addSpendCommands(CommandLine& line) {
  CLI::App* spend = line.add(line.app(), "spend");
  spend->require_subcommand(1);
  CLI::App* add = line.add(*spend, "add");
  auto options = std::make_shared<SpendAddOptions>();
  add->add_option("AMOUNT", options->amount, "The amount, above zero, such as 12.50")->required();
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
      ->type_name("AMOUNT CODE")
      ->expected(2);
  add->add_flag("--create", options->create, "Make the category or subcategory when it is new");
  line.onRun(add, [options](Session& session) { addSpend(session, *options); });
}

void addTransferCommands(CommandLine& line) {
  CLI::App* transfer = line.add(line.app(), "transfer");
  transfer->require_subcommand(1);
  CLI::App* add = line.add(*transfer, "add");
  auto options = std::make_shared<TransferAddOptions>();
  add->add_option("AMOUNT", options->amount, "What leaves the first account")->required();
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
