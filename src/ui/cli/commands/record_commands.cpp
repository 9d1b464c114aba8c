#include <boost/json.hpp>

#include "model/mv_transaction.h"
#include "model/record_template.h"
#include "ui/cli/command_error.h"
#include "ui/cli/command_line.h"
#include "ui/cli/commands/account_rows.h"
#include "ui/cli/commands/debt_commands.h"
#include "ui/cli/commands/entry_fields.h"
#include "ui/cli/commands/repeat_texts.h"
#include "ui/cli/commands/show_record.h"
#include "ui/cli/commands/transfer_texts.h"
#include "ui/cli/records.h"
#include "ui/cli/text_width.h"

namespace moniva {
namespace {

/// Any record by its row; ends the command for what the program removed, and what no person entered.
MVTransaction transactionTyped(Session& session, const std::string& text) {
  const auto eid = recordTyped(session, text);
  auto transaction = MVTransaction::transactionFromEID(session.root(), eid);
  if (!transaction || transaction->deleted > 1) throw refused("there is no record '{}'", printable(text));
  return std::move(*transaction);
}

std::string plainAmountOf(Session& session, const MVTransaction& row) {
  const auto currency = row.currency.empty() ? session.defaultCurrency() : row.currency;
  return session.amounts().format(row.amount, currency);
}

/// What rows are that no command enters by itself, or that have no view of their own.
std::string kindOfRow(const Session& session, const MVTransaction& row) {
  switch (row.type()) {
    case kind::kBalanceCorrection:
      return session.text("correction of a balance");
    case kind::kOneTimeBudget:
      return session.text("one-time budget");
    case kind::kMonthlyBudget:
      return session.text("budget of a month");
    case kind::kCategoryAllocation:
      return session.text("budget of a category");
    case kind::kBudgetCarry:
      return session.text("remainder of a budget");
    case kind::kOverpayment:
      return session.text("Payoff more last month");
    case kind::kRepeatSeed:
      return session.text("series of records");
    case kind::kIncomeTemplate:
    case kind::kExpenseTemplate:
    case kind::kTransferTemplate:
      return session.text("template");
    default:
      break;
  }
  if (row.isPayment) return session.text("payment of a record that is gone");
  return session.text("record of type {}", row.type());
}

bool isReckoned(const MVTransaction& row) {
  return row.type() == kind::kBudgetCarry || row.type() == kind::kOverpayment;
}

/// The month or the days that a budget is for; others have a date.
void addDays(Session& session, const MVTransaction& row, Facts& facts) {
  Connection* db = session.root().db().getDatabase();
  const bool isRange = row.type() == kind::kOneTimeBudget;
  const bool isMonth = row.type() == kind::kMonthlyBudget || row.type() == kind::kBudgetCarry;
  if (db == nullptr || (!isRange && !isMonth)) {
    return facts.add(session.text("Date"), dateText(session, row.datetime));
  }
  Run run = db->query("select syear, smonth, repeat_end_date from transactions where eid = ?", {row.eid});
  if (!run.next()) return;
  if (!isRange) return facts.add(session.text("Month"), fmt::format("{}/{}", run.integer(0), run.integer(1)));
  facts.add(session.text("From"), shortDate(session, row.datetime));
  facts.add(session.text("To"), shortDate(session, run.date(2)));
}

void showOther(Session& session, const MVTransaction& row) {
  if (session.options().json) {
    if (const auto kept = RecordTemplate::templateFromEID(session.root(), row.eid)) {
      return session.printJson(jsonOf(session, *kept));
    }
    RecordNames names(session.root());
    const auto item = TransactionItem::fromEID(session.root(), row.eid);
    return session.printJson(item ? jsonOf(session, names, *item) : boost::json::object());
  }
  Facts facts(session);
  facts.add(session.text("Kind"), kindOfRow(session, row));
  const auto kept = RecordTemplate::templateFromEID(session.root(), row.eid);
  if (kept) facts.add(session.text("Title"), kept->title);
  facts.add(session.text("Amount"), plainAmountOf(session, row));
  // A template has no day of its own.
  if (!kept) addDays(session, row, facts);
  if (!row.categoryString.empty()) facts.add(session.text("Category"), row.categoryString);
  if (row.paymentAccount) facts.add(session.text("Account"), row.paymentAccount->title);
  if (row.bookAccount) facts.add(session.text("Book"), row.bookAccount->title);
  // What is carried over is called by its kind.
  const bool isNamed = row.type() == kind::kOverpayment;
  if (const auto& note = kept ? kept->note : row.noteString; !note.empty() && !isNamed) {
    facts.add(session.text("Note"), note);
  }
  if (row.deleted != 0) facts.add(session.text("State"), session.text("deleted"));
  facts.add(session.text("Record"), row.eid);
  facts.print();
}

void showAny(Session& session, const std::string& text) {
  MVAppRoot& root = session.root();
  const auto row = transactionTyped(session, text);
  if (row.type() == kind::kRepeatSeed) return showSeries(session, row);
  if (const auto whole = done(RecordWhole::of(root, row.eid))) return showRecord(session, *whole, row.eid);
  if (const auto transfer = Transfer::transferFromEID(root, row.eid)) return showTransfer(session, *transfer);
  auto debt = row.isRepayment() ? Debt::debtOfRepayment(root, row.eid)
              : row.isDebt()    ? Debt::debtFromEID(root, row.eid)
                                : std::nullopt;
  if (!debt) return showOther(session, row);
  if (!debt->getRepaid()) throw refused("the repayments of '{}' cannot be read", printable(text));
  showDebt(session, *debt);
}

/// What the record is, for answers to its being deleted or restored: "an expense €12.50, Food, ..."
std::string textOf(Session& session, const MVTransaction& row) {
  MVAppRoot& root = session.root();
  if (const auto whole = done(RecordWhole::of(root, row.eid))) {
    RecordNames names(root);
    return RecordTexts(session, names, *whole).described();
  }
  if (const auto transfer = Transfer::transferFromEID(root, row.eid)) {
    const TransferTexts texts(session, *transfer);
    return session.text("a transfer of {} from {} to {}, on {}.", texts.amount, texts.from, texts.to,
                        dateText(session, transfer->datetime));
  }
  if (const auto debt = row.isDebt() ? Debt::debtFromEID(root, row.eid) : std::nullopt) {
    return session.text("{}, on {}.", debtText(session, *debt), dateText(session, debt->datetime));
  }
  if (row.isRepayment()) {
    return session.text("a repayment of {}, {}, on {}.", plainAmountOf(session, row),
                        printable(row.noteString), dateText(session, row.datetime));
  }
  return session.text("{}, {}.", kindOfRow(session, row), plainAmountOf(session, row));
}

/// "Deleted the cart of 3 items and its 2 payments."
std::string deletedText(Session& session, const RecordWhole& whole) {
  const auto items = static_cast<std::int64_t>(whole.group.items.size());
  const auto payments = static_cast<std::int64_t>(whole.regularPayments().size());
  const auto refunds = static_cast<std::int64_t>(whole.refunds().size());
  RecordNames names(session.root());
  const RecordTexts texts(session, names, whole);
  if (!whole.isCompound()) return session.text("Deleted {}", texts.described());
  std::string line =
      whole.isCart() ? session.count("Deleted the cart of {} item", "Deleted the cart of {} items", items)
      : whole.isPlan()
          ? session.count("Deleted the plan of {} instalment", "Deleted the plan of {} instalments", items)
      : whole.isSpread()              ? session.count("Deleted the cost spread over {} month",
                                                      "Deleted the cost spread over {} months", items)
      : whole.type() == kind::kIncome ? session.text("Deleted the income")
                                      : session.text("Deleted the expense");
  if (refunds > 0 && payments > 0) {
    line += session.count(" with its {} payment", " with its {} payments", payments) +
            session.count(" and {} refund", " and {} refunds", refunds);
  } else if (payments > 0) {
    line += session.count(" and its {} payment", " and its {} payments", payments);
  }
  return line + ": " + texts.amount() + texts.details();
}

/// Whether the row goes alone: a payment or a refund, beside which the record stays.
bool goesAlone(const MVTransaction& row, const std::optional<RecordWhole>& whole) {
  return whole && row.isPayment && whole->isCompound();
}

void requireDeletable(Session& session, const MVTransaction& row, const std::string& text) {
  if (row.deleted != 0) {
    throw refused("'{}' is deleted already; bring it back with: moniva restore {}", printable(text),
                  shortEid(row.eid));
  }
  const bool known = row.isTransfer() || row.isDebt() || row.isRepayment() ||
                     row.type() == kind::kBalanceCorrection ||
                     done(RecordWhole::of(session.root(), row.eid)).has_value();
  if (known) return;
  if (row.type() == kind::kRepeatSeed) {
    const auto eid = shortEid(row.eid);
    throw refused(
        "this is a series of records; end it with: moniva repeat stop {}, or delete it with: moniva "
        "repeat delete {}",
        eid, eid);
  }
  if (isReckoned(row)) throw refused("'{}' is reckoned from the records and not deleted", printable(text));
  throw refused("this is a {}, which has commands of its own", kindOfRow(session, row));
}

void deleteAny(Session& session, const std::string& text) {
  MVAppRoot& root = session.root();
  std::string eid;
  std::string answer;
  changeStore(session, [&] {
    auto row = transactionTyped(session, text);
    eid = row.eid;
    requireDeletable(session, row, text);
    const auto whole = done(RecordWhole::of(root, eid));
    if (!goesAlone(row, whole)) {
      answer = whole ? deletedText(session, *whole) : session.text("Deleted {}", textOf(session, row));
      if (whole && whole->head.eid != eid) answer += " " + session.text("A part was named; the whole went.");
      answer += " " + session.text("Bring it back with: moniva restore {}", shortEid(eid));
      return done(row.delete_());
    }
    const auto part = TransactionItem::fromEID(root, eid);
    done(row.delete_());
    const std::string stays = whole->head.eid;
    const auto left = wholeRecord(session, stays);
    RecordNames names(root);
    const RecordTexts texts(session, names, left);
    const auto amount = texts.money(std::abs(part ? part->amount : row.amount));
    answer = part && part->isRefund() ? session.text("Deleted the refund {}.", amount)
                                      : session.text("Deleted the payment {}.", amount);
    answer += " " + session.text("It is now {}", texts.described()) + texts.stillOpen();
  });
  if (!session.options().json) return session.answer(answer);
  // A part that went by itself can no longer be shown.
  const auto item = TransactionItem::fromEID(root, eid);
  if (!item || item->isDeleted <= 1) return showAny(session, eid);
  RecordNames names(root);
  session.printJson(jsonOf(session, names, *item));
}

void restoreAny(Session& session, const std::string& text) {
  std::string eid;
  changeStore(session, [&] {
    auto row = transactionTyped(session, text);
    eid = row.eid;
    if (row.deleted == 0) throw refused("'{}' is not deleted", printable(text));
    done(row.restore());
  });
  if (session.options().json) return showAny(session, eid);
  session.answer(session.text("Brought back: {}", textOf(session, transactionTyped(session, eid))));
}

}  // namespace

void addRecordCommands(CommandLine& line) {
  const std::pair<const char*, void (*)(Session&, const std::string&)> commands[] = {
      {"show", showAny}, {"delete", deleteAny}, {"restore", restoreAny}};
  for (const auto& [name, run] : commands) {
    CLI::App* command = line.add(line.app(), name);
    auto eid = std::make_shared<std::string>();
    command->add_option("EID", *eid, "The record: its eid, or the end of it")->required();
    line.onRun(command, [eid, run = run](Session& session) { run(session, *eid); });
  }
}

}  // namespace moniva
