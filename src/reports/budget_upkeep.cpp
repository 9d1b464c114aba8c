#include <fmt/format.h>

#include <set>
#include <tuple>

#include "base/uuid.h"
#include "reports/budget_rows.h"
#include "storage/writes.h"

namespace moniva {
namespace {

/// Rows of what is carried, by their months in their order; several of a month are kept alike.
struct CarryRows {
  struct Row {
    std::string eid;
    double amount = 0;
  };
  std::map<MonthLabel, std::vector<Row>> live;
  std::set<std::string, std::less<>> gone;
};

Result<CarryRows> carryRows(Connection& db, const MonivaAccount& book) {
  CarryRows rows;
  Run run = db.query(
      "select eid, amount, syear, smonth, deleted from transactions where type = ? and book = ? order by"
      " editDate, eid",
      {kind::kBudgetCarry, book.pk});
  while (run.next()) {
    if (run.integer(4) != 0) {
      rows.gone.emplace(run.text(0));
    } else {
      rows.live[{static_cast<int>(run.integer(2)), static_cast<int>(run.integer(3))}].push_back(
          {std::string(run.text(0)), run.real(1)});
    }
  }
  if (!run.ok()) return tl::make_unexpected(db.refusal());
  return rows;
}

bool areAlike(double one, double other) {
  return static_cast<float>(one) == static_cast<float>(other);
}

/// A row to be written, by its key; one that is not live is brought back or made.
struct CarryWrite {
  std::string eid;
  Carried what;
  bool isLive = false;
};

std::vector<CarryWrite> carriesToWrite(const CarryRows& rows, const MonivaAccount& book,
                                       const std::vector<Carried>& carried) {
  std::vector<CarryWrite> writes;
  // What is in force before a month of which no row is kept.
  std::map<MonthLabel, double> kept;
  for (const auto& [month, some] : rows.live) kept[month] = some.back().amount;
  for (const auto& into : carried) {
    const auto own = rows.live.find(into.month);
    if (own != rows.live.end()) {
      for (const auto& row : own->second) {
        if (!areAlike(row.amount, into.amount)) writes.push_back({row.eid, into, true});
      }
    } else {
      const auto after = kept.lower_bound(into.month);
      const double before = after == kept.begin() ? 0 : std::prev(after)->second;
      if (!into.inherited && areAlike(before, into.amount)) continue;
      // Every device makes the same row.
      writes.push_back(
          {nameBasedUuidV7(1, fmt::format("budget carry\n{}\n{}", book.pk, into.month.key())), into, false});
    }
    kept[into.month] = into.amount;
  }
  return writes;
}

Result<> writeCarry(MVAppRoot& root, const MonivaAccount& book, const CarryWrite& row, bool isGone) {
  if (row.isLive) {
    return write(root, "update transactions set amount = ?, editDate = ?, edit_ipid = ? where eid = ?",
                 row.what.amount, root.editStamp(), root.itsUDID(), row.eid);
  }
  if (isGone) {
    return write(root,
                 "update transactions set amount = ?, deleted = 0, ipid = '', editDate = ?, edit_ipid = ?"
                 " where eid = ?",
                 row.what.amount, root.editStamp(), root.itsUDID(), row.eid);
  }
  return write(root,
               "insert into transactions (amount, type, syear, smonth, sday, editDate, eid, book, paid,"
               " edit_ipid) values (?, ?, ?, ?, ?, ?, ?, ?, 0,?)",
               row.what.amount, kind::kBudgetCarry, row.what.month.year, row.what.month.month,
               row.what.month.key(), root.editStamp(), row.eid, book.pk, root.itsUDID());
}

struct LabelledRow {
  std::string eid;
  MonthLabel month;
  Date editDate;
};

/// What is amiss with the rows of a book's monthly budget.
struct Amiss {
  std::vector<LabelledRow> keys;     ///< with a wrong month key
  std::vector<std::string> doubled;  ///< beside a newer one of the month
  std::vector<std::string> ahead;    ///< of a month to come
  std::vector<LabelledRow> due;      ///< set aside as such, of a month that has come
  bool any() const { return !keys.empty() || !doubled.empty() || !ahead.empty() || !due.empty(); }
};

/// When a person deleted a monthly budget of the book last.
Result<Date> lastDeletion(Connection& db, const MonivaAccount& book) {
  Run run = db.query("select max(editDate) from transactions where type = ? and book = ? and deleted = 4",
                     {kind::kMonthlyBudget, book.pk});
  if (!run.next()) return tl::make_unexpected(db.refusal());
  return run.date(0);
}

Result<Amiss> whatIsAmiss(Connection& db, const MonivaAccount& book, MonthLabel last) {
  Amiss amiss;
  std::set<MonthLabel> months;
  std::vector<LabelledRow> waiting;
  {
    Run run = db.query(
        "select eid, syear, smonth, sday, editDate, deleted from transactions where type = ? and book = ? and"
        " (deleted = 0 or (deleted = 3 and ipid = ?)) order by editDate desc, eid desc",
        {kind::kMonthlyBudget, book.pk, budget_mark::kAhead});
    while (run.next()) {
      const LabelledRow row{std::string(run.text(0)),
                            {static_cast<int>(run.integer(1)), static_cast<int>(run.integer(2))},
                            run.date(4)};
      if (row.month.year <= 0 || row.month.month <= 0) continue;
      if (run.integer(5) != 0) {
        if (row.month <= last) waiting.push_back(row);
      } else if (row.month > last) {
        amiss.ahead.push_back(row.eid);
      } else if (months.insert(row.month).second) {
        if (run.integer(3) != row.month.key()) amiss.keys.push_back(row);
      } else {
        amiss.doubled.push_back(row.eid);
      }
    }
    if (!run.ok()) return tl::make_unexpected(db.refusal());
  }
  if (waiting.empty()) return amiss;
  Date gone;
  if (months.empty()) {
    const auto deletion = lastDeletion(db, book);
    if (!deletion) return tl::make_unexpected(deletion.error());
    gone = *deletion;
  }
  // What was set meanwhile for that month or a later one stands.
  const MonthLabel latest = months.empty() ? MonthLabel{} : *months.rbegin();
  for (const auto& row : waiting) {
    if (row.month > latest && row.editDate > gone && months.insert(row.month).second)
      amiss.due.push_back(row);
  }
  return amiss;
}

}  // namespace

Result<> keepCarried(const MonivaAccount& book, const std::vector<Carried>& carried) {
  MVAppRoot& root = book.root();
  Connection* connection = root.db().getDatabase();
  if (connection == nullptr) return refuse("the store is not open");
  const auto rows = carryRows(*connection, book);
  if (!rows) return tl::make_unexpected(rows.error());
  if (carriesToWrite(*rows, book, carried).empty()) return {};
  return atomically(root, [&](Connection& db) -> Result<> {
    // As they are now, with the write lock in hand.
    const auto present = carryRows(db, book);
    if (!present) return tl::make_unexpected(present.error());
    for (const auto& row : carriesToWrite(*present, book, carried)) {
      if (auto done = writeCarry(root, book, row, present->gone.contains(row.eid)); !done) return done;
    }
    return {};
  });
}

Result<> mendMonthlyRows(const MonivaAccount& book) {
  MVAppRoot& root = book.root();
  const BudgetMonths months(book);
  // A device in another zone may be in the next month already: its budget is not to be set aside.
  constexpr double kTwoDays = 2 * 86'400;
  MonthLabel last = months.current();
  if (months.begin(months.plus(last, 1)) <= root.now().plusSeconds(kTwoDays)) last = months.plus(last, 1);

  Connection* connection = root.db().getDatabase();
  if (connection == nullptr) return refuse("the store is not open");
  const auto found = whatIsAmiss(*connection, book, last);
  if (!found) return tl::make_unexpected(found.error());
  if (!found->any() || root.db().isReadOnly()) return {};
  return atomically(root, [&](Connection& db) -> Result<> {
    const auto amiss = whatIsAmiss(db, book, last);
    if (!amiss) return tl::make_unexpected(amiss.error());
    Result<> done;
    for (const auto& row : amiss->keys) {
      if (done) {
        done = write(root, "update transactions set sday = ?, editDate = ?, edit_ipid = ? where eid = ?",
                     row.month.key(), justAbove(root, row.editDate), root.itsUDID(), row.eid);
      }
    }
    for (const auto& eid : amiss->doubled) {
      if (done) done = setAside(root, eid, budget_mark::kReplaced);
    }
    for (const auto& eid : amiss->ahead) {
      if (done) done = setAside(root, eid, budget_mark::kAhead);
    }
    for (const auto& row : amiss->due) {
      if (done) {
        done = write(root,
                     "update transactions set deleted = 0, ipid = '', sday = ?, editDate = ?, edit_ipid = ?"
                     " where eid = ?",
                     row.month.key(), justAbove(root, row.editDate), root.itsUDID(), row.eid);
      }
    }
    return done;
  });
}

void leaveForLater(MVAppRoot& root, const Result<>& written) {
  if (!written) root.platform().log.line(fmt::format("== budget: {}", written.error().why));
}

}  // namespace moniva
