#include <boost/json.hpp>

#include "model/entry_checks.h"
#include "ui/cli/command_error.h"
#include "ui/cli/command_line.h"
#include "ui/cli/commands/entry_fields.h"
#include "ui/cli/commands/show_record.h"
#include "ui/cli/records.h"

namespace moniva {
namespace {

/// What the commands on refunds take, each the part it needs.
struct RefundOptions {
  std::string eid;
  std::string amount;
  std::string account;
  std::string date;
  bool all = false;
  std::optional<std::string> newAmount;
  AmountOptions amounts;
};

/// The item of the record typed that a refund is for.
Spend expenseTyped(Session& session, const std::string& text, RecordWhole* whole) {
  std::string eid;
  *whole = wholeTyped(session, text, &eid);
  for (const auto& item : whole->group.items) {
    if (item.eid == eid) return spendOf(session, eid);
  }
  if (whole->group.items.size() == 1 && !whole->group.seed) {
    return spendOf(session, whole->group.items.front().eid);
  }
  if (whole->isCart()) {
    throw refused("the cart has several items; name the one that came back, as in: moniva show {}",
                  shortEid(eid));
  }
  return spendOf(session, whole->head.eid);
}

/// Where the money comes back to unless that is said: the account that paid. Ends the command where there
/// are several.
std::string accountThatPaid(Session& session, const RecordWhole& whole) {
  const auto accounts = whole.accounts();
  if (accounts.size() > 1) {
    throw refused("the expense was paid from several accounts; say which one the money came back to");
  }
  if (accounts.empty()) return {};
  if (const auto account = MonivaAccount::getAccountWithPK(session.root(), accounts.front())) {
    requireOpen(*account);
  }
  return accounts.front();
}

/// Ends the command where more would come back than there is.
void requireLeft(Session& session, const RecordWhole& whole, double amount, double left) {
  if (withoutNoise(amount - left) <= 0) return;
  RecordNames names(session.root());
  const RecordTexts texts(session, names, whole);
  throw refused("{} is more than the {} that is left of the expense", texts.money(amount), texts.money(left));
}

/// "€3.00 to Cash, on Jun 15, 2024 12:00"
std::string refundText(Session& session, const RecordTexts& texts, const TransactionItem& refund) {
  const auto amount = texts.money(-refund.amount);
  const auto account = texts.account(refund.account);
  const auto date = dateText(session, refund.datetime);
  return account.empty() ? session.text("{} to no account, on {}", amount, date)
                         : session.text("{} to {}, on {}", amount, account, date);
}

/// Ends a command that changed the refund: it as JSON, or what was done and what is left of the expense.
void answerRefund(Session& session, const TransactionItem& refund, const std::string& expense,
                  const std::function<std::string(const std::string&)>& say) {
  RecordNames names(session.root());
  if (session.options().json) return session.printJson(jsonOf(session, names, refund));
  const auto whole = wholeRecord(session, expense);
  const RecordTexts texts(session, names, whole);
  auto left = whole.total() > 0 ? session.text("{} of the expense is left.", texts.money(whole.total()))
                                : session.text("Nothing of the expense is left.");
  for (const auto& item : whole.group.items) {
    if (!whole.isCart() || item.eid != expense) continue;
    if (item.amount <= 0) {
      left = session.text("Nothing of that item is left.");
      break;
    }
    RecordWhole alone;
    alone.group.items.push_back(item);
    const auto what = RecordTexts(session, names, alone).categories();
    left = what.empty() ? session.text("{} of that item is left.", texts.money(item.amount))
                        : session.text("{} of the item {} is left.", texts.money(item.amount), what);
  }
  session.answer(say(refundText(session, texts, refund)) + " " + left + texts.stillOpen() +
                 texts.currencyNotes());
}

TransactionItem rowOf(Session& session, const std::string& eid) {
  auto row = TransactionItem::fromEID(session.root(), eid);
  if (!row) throw refused("there is no record '{}'", eid);
  return std::move(*row);
}

void addRefund(Session& session, const RefundOptions& options) {
  // With --all there is no amount, and what stands in its place is the account.
  if (!options.all && options.amount.empty()) throw notUnderstood("say how much came back, or --all");
  if (options.all && !options.account.empty()) {
    throw notUnderstood("--all stands in the place of an amount; leave out '{}'", options.amount);
  }
  const std::string& accountName = options.all ? options.amount : options.account;
  const Date date = momentTyped(session, options.date);
  std::string refund;
  std::string expense;
  changeStore(session, [&] {
    RecordWhole whole;
    Spend spend = expenseTyped(session, options.eid, &whole);
    if (options.all && spend.amount <= 0) throw refused("nothing is left of the expense to be refunded");
    const double amount =
        options.all ? spend.amount
                    : amountTyped(session, options.amount, currencyOf(session, whole), options.amounts);
    const auto account = accountName.empty() ? accountThatPaid(session, whole)
                                             : accountNamed(session, accountName, Meant::open).pk;
    requireLeft(session, whole, amount, spend.amount);
    expense = spend.eid;
    refund = done(spend.refund(amount, date, account));
  });
  answerRefund(session, rowOf(session, refund), expense,
               [&](const std::string& what) { return session.text("Refunded {}.", what); });
}

void listRefunds(Session& session, const RefundOptions& options) {
  const auto whole = wholeTyped(session, options.eid);
  RecordNames names(session.root());
  if (session.options().json) {
    boost::json::array list;
    for (const auto& row : whole.refunds()) list.push_back(jsonOf(session, names, row));
    return session.printJson(list);
  }
  const RecordTexts texts(session, names, whole);
  if (whole.refunds().empty()) {
    return session.answer(session.text("Nothing was refunded: it is {}", texts.described()));
  }
  session.out() << session.text("Refunds of {}", texts.described()) << ' '
                << session.text("Refunded: {} of {}.", texts.money(whole.refunded()),
                                texts.money(whole.total() + whole.refunded()))
                << '\n';
  showRefunds(session, whole);
}

/// The refund typed, and the expense it is of.
TransactionItem refundTyped(Session& session, const std::string& text, std::string* expense) {
  const auto eid = recordTyped(session, text);
  auto row = rowOf(session, eid);
  if (!row.isRefund() || row.isDeleted != 0) {
    throw refused("'{}' is no refund; see those of an expense with: moniva refund list EID", shortEid(eid));
  }
  const auto whole = wholeRecord(session, eid);
  *expense = whole.head.eid;
  for (const auto& item : whole.group.items) {
    const auto own = done(spendOf(session, item.eid).refunds());
    if (std::ranges::any_of(own, [&](const auto& refund) { return refund.eid == eid; })) *expense = item.eid;
  }
  return row;
}

void editRefund(Session& session, const RefundOptions& options) {
  if (!options.newAmount && options.account.empty() && options.date.empty()) {
    throw notUnderstood("say what to change, such as --amount 12.50 or --account Cash");
  }
  std::string expense;
  std::string eid;
  changeStore(session, [&] {
    const auto refund = refundTyped(session, options.eid, &expense);
    eid = refund.eid;
    const auto whole = wholeRecord(session, eid);
    const double amount = options.newAmount ? amountTyped(session, *options.newAmount,
                                                          currencyOf(session, whole), options.amounts)
                                            : -refund.amount;
    requireLeft(session, whole, amount, withoutNoise(spendOf(session, expense).amount - refund.amount));
    const Date date = options.date.empty() ? refund.datetime : momentTyped(session, options.date);
    const auto account =
        options.account.empty() ? refund.account : accountNamed(session, options.account, Meant::open).pk;
    done(spendOf(session, expense).updateRefund(eid, amount, date, account));
  });
  answerRefund(session, rowOf(session, eid), expense,
               [&](const std::string& what) { return session.text("The refund is now {}.", what); });
}

void removeRefund(Session& session, const RefundOptions& options) {
  std::string expense;
  std::optional<TransactionItem> gone;
  changeStore(session, [&] {
    gone = refundTyped(session, options.eid, &expense);
    done(spendOf(session, expense).deleteRefund(gone->eid));
  });
  answerRefund(session, *gone, expense,
               [&](const std::string& what) { return session.text("Took away the refund {}.", what); });
}

}  // namespace

void addRefundCommands(CommandLine& line) {
  CLI::App* family = line.add(line.app(), "refund");
  family->require_subcommand(1);
  const auto command = [&](const char* name, const char* argument, const char* help,
                           void (*run)(Session&, const RefundOptions&)) {
    CLI::App* app = line.add(*family, name);
    auto options = std::make_shared<RefundOptions>();
    app->add_option(argument, options->eid, help)->required();
    line.onRun(app, [options, run](Session& session) { run(session, *options); });
    return std::pair(app, options);
  };
  constexpr const char* kExpense =
      toTranslate("The expense, or one item of a cart: its eid, or the end of it");
  constexpr const char* kRefund = toTranslate("The refund: its eid, or the end of it");

  const auto [add, added] = command("add", "EXPENSE", kExpense, addRefund);
  add->add_option("AMOUNT", added->amount, "What came back, above zero; not with --all");
  add->add_option("ACCOUNT", added->account, "Where it came back to (else the account that paid)");
  add->add_flag("--all", added->all, "All that is left of the expense");
  add->add_option("-d,--date", added->date, "When (else now)")->type_name("DATE");
  addRoundOption(*add, added->amounts);

  command("list", "EXPENSE", kExpense, listRefunds);

  const auto [edit, edited] = command("edit", "REFUND", kRefund, editRefund);
  edit->add_option("--amount", edited->newAmount, "What came back, above zero")->type_name("AMOUNT");
  edit->add_option("-a,--account", edited->account, "Where it came back to")
      ->type_name("NAME")
      ->check(notEmpty());
  edit->add_option("-d,--date", edited->date, "When")->type_name("DATE")->check(notEmpty());
  addRoundOption(*edit, edited->amounts);

  command("remove", "REFUND", kRefund, removeRefund);
}

}  // namespace moniva
