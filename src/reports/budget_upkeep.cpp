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

/// What is amiss with rows of monthly budgets.
struct Amiss {
  std::vector<std::pair<std::string, std::int64_t>> keys;   ///< rows and their right month keys
  std::vector<std::pair<std::string, MonthLabel>> doubled;  ///< the row to stay, and its month
  bool ahead = false;                                       ///< there is one of a month to come
  bool any() const { return !keys.empty() || !doubled.empty() || ahead; }
};

Result<Amiss> whatIsAmiss(Connection& db, const MonivaAccount& book, MonthLabel last) {
  Amiss amiss;
  {
    Run run = db.query("SELECT eid, syear, smonth, sday, datetime FROM transactions where type = 61");
    while (run.next()) {
      const MonthLabel month{static_cast<int>(run.integer(1)), static_cast<int>(run.integer(2))};
      const bool isLabelled = month.year > 0 && month.month > 0;
      if (isLabelled && run.integer(3) != month.key()) amiss.keys.emplace_back(run.text(0), month.key());
    }
    if (!run.ok()) return tl::make_unexpected(db.refusal());
  }
  Run run = db.query(
      "select eid, syear, smonth from transactions where type = ? and book = ? and deleted = 0 order by"
      " syear, smonth, editDate, eid",
      {kind::kMonthlyBudget, book.pk});
  std::string former;
  MonthLabel formerMonth;
  while (run.next()) {
    const MonthLabel month{static_cast<int>(run.integer(1)), static_cast<int>(run.integer(2))};
    if (!former.empty() && month == formerMonth) {
      if (!amiss.doubled.empty() && amiss.doubled.back().second == month) amiss.doubled.pop_back();
      amiss.doubled.emplace_back(run.text(0), month);
    }
    former = run.text(0);
    formerMonth = month;
    amiss.ahead = amiss.ahead || month > last;
  }
  if (!run.ok()) return tl::make_unexpected(db.refusal());
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
  // A device in another zone may be in the next month already: its budget is not to be removed.
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
    for (const auto& [eid, key] : amiss->keys) {
      if (done) {
        done = write(root, "update transactions set sday = ?, editDate = ?, edit_ipid = ? where eid = ?", key,
                     root.editStamp(), root.itsUDID(), eid);
      }
    }
    for (const auto& [eid, month] : amiss->doubled) {
      if (done) {
        done = logRemovedRows(root, "type = ? and book = ? and syear = ? and smonth = ? and eid != ?",
                              {kind::kMonthlyBudget, book.pk, month.year, month.month, eid});
      }
      if (done) {
        done = write(root,
                     "delete from transactions where type = ? and book = ? and syear = ? and smonth = ? and"
                     " eid != ?",
                     kind::kMonthlyBudget, book.pk, month.year, month.month, eid);
      }
    }
    if (done && amiss->ahead) {
      done = logRemovedRows(root, "type = ? and book = ? and (syear > ? or (syear = ? and smonth > ?))",
                            {kind::kMonthlyBudget, book.pk, last.year, last.year, last.month});
      if (done) {
        done = write(root,
                     "delete from transactions where type = ? and book = ? and (syear > ? or (syear = ? and"
                     " smonth > ?))",
                     kind::kMonthlyBudget, book.pk, last.year, last.year, last.month);
      }
    }
    return done;
  });
}

void leaveForLater(MVAppRoot& root, const Result<>& written) {
  if (!written) root.platform().log.line(fmt::format("== budget: {}", written.error().why));
}

}  // namespace moniva
