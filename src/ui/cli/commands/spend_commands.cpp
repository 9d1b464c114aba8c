#include "model/entry_checks.h"
#include "model/record_entry.h"
#include "ui/cli/command_error.h"
#include "ui/cli/command_line.h"
#include "ui/cli/entry_options.h"
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
  AmountOptions amounts;
};

void addSpend(Session& session, const SpendAddOptions& options) {
  MVAppRoot& root = session.root();
  Spend spend(root);
  spend.type = options.income ? kind::kIncome : kind::kExpense;
  spend.datetime = momentTyped(session, options.date);
  spend.note = asTyped(options.note, "the note");
  spend.paid = isPaidAt(spend.datetime, session.now());

  std::optional<MonivaAccount> account;
  std::optional<ChosenCategory> category;
  std::string currency;
  MonivaAccount book(root);
  changeStore(session, [&] {
    book = bookNamed(session, options.book, Meant::open);
    spend.book = book.pk;
    currency = book.currency;
    if (!options.account.empty()) {
      account = accountNamed(session, options.account, Meant::open);
      done(checkTracked(*account, spend.type));
      spend.account = account->pk;
      currency = account->currency;
    }
    spend.amount = amountTyped(session, options.amount, currency, options.amounts);
    if (const auto& [amount, code] = options.foreign; !amount.empty() || !code.empty()) {
      spend.foreignCurrency = foreignCurrencyTyped(code);
      spend.foreignAmount = amountTyped(session, amount, code, options.amounts);
    }
    category =
        categoryChosen(session, options.category, options.subcategory, spend.type, book, options.create);
    if (category) {
      spend.category = category->category;
      spend.subcategory = category->subcategory;
    }
    spend.vendor = vendorChosen(session, options.vendor, spend.type);
    done(recordEntry(root, spend));
  });

  if (session.options().json) return session.printJson(jsonOf(session, spend));
  std::string amount = session.amounts().format(spend.amount, currency);
  if (!spend.foreignCurrency.empty()) {
    amount +=
        fmt::format(" ({})", session.amounts().formatWithCode(spend.foreignAmount, spend.foreignCurrency));
  }
  std::string line =
      options.income ? session.text("Added income {}", amount) : session.text("Added an expense {}", amount);
  if (category) line += ", " + printable(category->text);
  const std::string vendorText = printable(wellFormed(options.vendor, "the vendor"));
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
  addRoundOption(*add, options->amounts);
  line.onRun(add, [options](Session& session) { addSpend(session, *options); });
}

}  // namespace moniva
