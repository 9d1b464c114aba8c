#include "ui/cli/commands/show_record.h"

#include <boost/json.hpp>

#include "model/photos.h"
#include "model/spend.h"
#include "ui/cli/command_error.h"
#include "ui/cli/commands/account_rows.h"
#include "ui/cli/commands/repeat_texts.h"
#include "ui/cli/entry_options.h"
#include "ui/cli/records.h"
#include "ui/cli/text_width.h"

namespace moniva {
namespace {

/// The tables of a record's rows.
class RecordTables {
 public:
  RecordTables(Session& session, const RecordWhole& whole, std::string marked, RecordView view)
      : session_(session),
        names_(session.root()),
        whole_(whole),
        texts_(session, names_, whole),
        marked_(std::move(marked)),
        isPlan_(view == RecordView::plan) {}

  const RecordTexts& texts() const { return texts_; }

  void items() {
    auto table = begun({{.title = session_.text("Item")},
                        {.title = session_.text("Vendor")},
                        {.title = session_.text("Note")},
                        {.title = session_.text("Amount"), .align = Align::right}});
    for (const auto& item : whole_.group.items) {
      RecordWhole alone;
      alone.group.items.push_back(item);
      const RecordTexts own(session_, names_, alone);
      add(table, item, {own.categories(), own.vendors(), printable(item.note), plain(item.amount)});
    }
    total(table, 4, whole_.total());
    print(table);
  }

  /// Instalments, or the shares of a cost; those have no account of their own.
  void shares() {
    std::vector<Column> columns{{.title = "", .align = Align::right},
                                {.title = session_.text("Date")},
                                {.title = session_.text("Amount"), .align = Align::right}};
    if (whole_.isPlan()) columns.push_back({.title = session_.text("State")});
    auto table = begun(std::move(columns));
    int place = 0;
    for (const auto& item : whole_.group.items) {
      std::vector<Cell> cells{std::to_string(++place), shortDate(session_, item.datetime),
                              plain(item.amount)};
      if (whole_.isPlan()) cells.push_back(state(item));
      add(table, item, std::move(cells));
    }
    total(table, 3, whole_.total());
    print(table);
  }

  void payments() {
    bool fees = false;
    for (const auto& payment : whole_.group.payments) fees = fees || payment.amount2 > 0;
    std::vector<Column> columns{{.title = session_.text("Payment")},
                                {.title = session_.text("Account")},
                                {.title = session_.text("Amount"), .align = Align::right}};
    if (fees) columns.push_back({.title = session_.text("Fee"), .align = Align::right});
    columns.push_back({.title = session_.text("State")});
    columns.push_back({.title = session_.text("Note")});
    auto table = begun(std::move(columns));
    for (const auto& payment : whole_.group.payments) {
      if (payment.isRefund()) continue;
      std::vector<Cell> cells{payment.isRest() ? std::string() : shortDate(session_, payment.datetime),
                              payment.isRest()          ? Cell(session_.text("still to be paid"), ink::yellow)
                              : payment.account.empty() ? Cell(session_.text("no account"), ink::dim)
                                                        : Cell(texts_.account(payment.account)),
                              plain(payment.amount)};
      if (fees) cells.emplace_back(payment.amount2 > 0 ? plain(payment.amount2) : std::string());
      cells.push_back(state(payment));
      cells.emplace_back(printable(payment.note));
      add(table, payment, std::move(cells));
    }
    print(table);
  }

  void refunds() {
    auto table = begun({{.title = session_.text("Refund")},
                        {.title = session_.text("To account")},
                        {.title = session_.text("Amount"), .align = Align::right}});
    for (const auto& refund : whole_.refunds()) {
      add(table, refund,
          {shortDate(session_, refund.datetime), texts_.account(refund.account), plain(-refund.amount)});
    }
    print(table);
  }

 private:
  std::string plain(double amount) const { return texts_.money(amount); }
  Cell state(const TransactionItem& row) const {
    return row.paid ? Cell(session_.text("paid")) : Cell(session_.text("pending"), ink::yellow);
  }

  /// A table whose rows have an `eid`, and a mark where it is that of the row asked for.
  Table begun(std::vector<Column> columns) const {
    if (isPlan_) return Table(std::move(columns));
    columns.insert(columns.begin(), Column{.title = session_.text("Record")});
    columns.emplace_back();
    return Table(std::move(columns));
  }

  void add(Table& table, const TransactionItem& row, std::vector<Cell> cells) const {
    if (!isPlan_) {
      cells.insert(cells.begin(), Cell(shortEid(row.eid), ink::dim));
      if (row.eid == marked_ && row.eid != whole_.head.eid) cells.emplace_back("<-", ink::bold);
    }
    table.addRow(std::move(cells));
  }

  /// The sum below the column of that number, counted without the `eid`.
  void total(Table& table, std::size_t column, double sum) const {
    std::vector<Cell> cells(column + (isPlan_ ? 0 : 1));
    cells[isPlan_ ? 0 : 1] = session_.text("Total");
    cells.back() = plain(sum);
    if (column > 1) table.addTotal(std::move(cells));
  }

  void print(const Table& table) const {
    if (table.empty()) return;
    session_.out() << '\n' << table.render(session_.style(), session_.width());
  }

  Session& session_;
  RecordNames names_;
  const RecordWhole& whole_;
  RecordTexts texts_;
  std::string marked_;
  bool isPlan_;
};

std::string kindText(const Session& session, const RecordWhole& whole) {
  const bool isIncome = whole.type() == kind::kIncome;
  if (whole.isBarePayment()) return session.text("payment by itself, in no book");
  if (whole.isPlan())
    return isIncome ? session.text("income in instalments") : session.text("instalment plan");
  if (whole.isSpread())
    return isIncome ? session.text("income spread over months") : session.text("cost spread over months");
  if (whole.isCart()) return isIncome ? session.text("cart of income") : session.text("cart");
  return isIncome ? session.text("income") : session.text("expense");
}

void addWhenFilled(Facts& facts, const std::string& name, const std::string& value) {
  if (!value.empty()) facts.add(name, value);
}

void showFacts(Session& session, const RecordTexts& texts, RecordView view) {
  const auto& whole = texts.whole();
  const auto& head = whole.head;
  Facts facts(session);
  facts.add(session.text("Kind"), kindText(session, whole));
  facts.add(session.text("Amount"), texts.amount());
  if (whole.refunded() > 0) {
    facts.add(session.text("Refunded"), session.text("{} of {}", texts.money(whole.refunded()),
                                                     texts.money(whole.total() + whole.refunded())));
  }
  if (whole.isCompound()) facts.add(session.text("Still to be paid"), texts.money(whole.open()));
  facts.add(session.text("Date"), dateText(session, head.datetime));
  if (whole.isSpread()) {
    if (const auto seed = Spend::spendFromEID(session.root(), head.eid)) {
      facts.add(session.text("Spread over"), session.text("{} to {}", shortDate(session, seed->payDate),
                                                          shortDate(session, seed->repeatEndDate)));
    }
  }
  if (head.type == kind::kInstallmentSeed && head.amount2 > 0) {
    facts.add(session.text("Fee in it"), texts.money(head.amount2));
  }
  addWhenFilled(facts, session.text("Category"), texts.categories());
  addWhenFilled(facts, whole.type() == kind::kIncome ? session.text("Payer") : session.text("Payee"),
                texts.vendors());
  addWhenFilled(facts, session.text("Account"), texts.accounts());
  addWhenFilled(facts, session.text("Book"), texts.books(""));
  addWhenFilled(facts, session.text("Note"), printable(head.note));
  if (!whole.isCompound()) {
    facts.add(session.text("State"), head.paid ? session.text("paid") : session.text("pending"));
  }
  addWhenFilled(facts, session.text("Repeats"), repeatsText(session, head.repeatSeed));
  if (head.needReimburse) facts.add(session.text("Reimbursement"), session.text("to be reimbursed"));
  auto rows = whole.group.items;
  if (whole.group.seed) rows.push_back(*whole.group.seed);
  for (const auto& row : rows) {
    for (const auto& name : done(getImagesForTransID(session.root(), row.eid))) {
      facts.add(session.text("Photo"), printable(name));
    }
  }
  if (view == RecordView::whole) facts.add(session.text("Record"), head.eid);
  if (head.isDeleted != 0) {
    facts.add(session.text("Deleted"),
              session.text("bring it back with: moniva restore {}", shortEid(head.eid)));
  }
  facts.print();
}

}  // namespace

void showRecord(Session& session, const RecordWhole& whole, const std::string& eid, RecordView view) {
  if (session.options().json) {
    RecordNames names(session.root());
    return session.printJson(jsonOf(session, names, whole));
  }
  RecordTables tables(session, whole, eid, view);
  showFacts(session, tables.texts(), view);
  if (!whole.isCompound()) return;
  if (whole.isCart()) tables.items();
  if (whole.isPlan() || whole.isSpread()) tables.shares();
  if (view == RecordView::plan && whole.isPlan()) return;
  tables.payments();
  tables.refunds();
}

void showPayments(Session& session, const RecordWhole& whole) {
  RecordTables(session, whole, "", RecordView::whole).payments();
}

void showRefunds(Session& session, const RecordWhole& whole) {
  RecordTables(session, whole, "", RecordView::whole).refunds();
}

}  // namespace moniva
