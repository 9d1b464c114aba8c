#include "reports/budget_historical_remaining.h"

#include <fmt/format.h>

#include <set>

#include "model/entry_checks.h"
#include "reports/budget_rows.h"
#include "reports/moniva_account_budget.h"
#include "reports/report_block.h"
#include "storage/transaction.h"
#include "storage/writes.h"

namespace moniva {
namespace {

constexpr std::string_view kHistory = "BudgetHistoricalRemaining";

void tellOfBudget(MVAppRoot& root) {
  root.platform().notifications.post(notification::kDefaultAccountBudgetChanged);
}

/// The first month that has a budget; nothing where none has.
std::optional<MonthLabel> firstMonth(const MonthlyRows& rows, MonthLabel current) {
  if (rows.empty() || rows.begin()->first > current) return std::nullopt;
  return rows.begin()->first;
}

Result<CountedMonths> countHistory(const MonivaAccount& book) {
  Connection* db = book.root().db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  const ReadTransaction snapshot(*db);
  const auto rows = monthlyRows(book);
  if (!rows) return tl::make_unexpected(rows.error());
  const BudgetMonths months(book);
  const MonthLabel current = months.current();
  const auto first = firstMonth(*rows, current);
  if (!first) return CountedMonths();
  return countMonths(book, *rows, *first, months.plus(current, 1));
}

/// Keeps what is carried into that month and every later one up to the present.
Result<> countAgain(const MonivaAccount& book, MonthLabel from = {}) {
  auto counted = countHistory(book);
  if (!counted) return tl::make_unexpected(counted.error());
  if (counted->carried.empty()) return {};
  // What the present month has left is known when it is over.
  counted->carried.pop_back();
  std::erase_if(counted->carried, [&](const Carried& into) { return into.month < from; });
  return keepCarried(book, counted->carried);
}

/// The rows of monthly budgets, of which the month is one of the history.
Result<MonthlyRows> rowsAround(const MonivaAccount& book, MonthLabel month) {
  const BudgetMonths months(book);
  if (auto checked = months.check(month); !checked) return tl::make_unexpected(checked.error());
  auto rows = monthlyRows(book);
  if (!rows) return rows;
  if (month > months.current()) {
    return refuse("{} has not begun; the history of a budget ends with the present month",
                  months.title(month));
  }
  if (inForce(*rows, month) == rows->end()) {
    return refuse("'{}' had no budget in {}", book.title, months.title(month));
  }
  return rows;
}

/// Runs a change of the history of which the month is part, counts again and tells.
template <class Work>
Result<> changeHistory(const MonivaAccount& book, Work&& work) {
  MVAppRoot& root = book.root();
  auto done = atomically(root, [&](Connection& db) -> Result<> {
    if (auto mended = mendMonthlyRows(book); !mended) return mended;
    if (auto changed = work(db); !changed) return changed;
    return countAgain(book);
  });
  if (done) tellOfBudget(root);
  return done;
}

/// The month after goes on as before the change, unless it has a row of its own or is still to come.
Result<> goOnAfter(const MonivaAccount& book, const MonthlyRows& rows, MonthLabel month) {
  const BudgetMonths months(book);
  const MonthLabel next = months.plus(month, 1);
  if (next > months.current() || rows.contains(next)) return {};
  return copyMonthlyRow(book, next, inForce(rows, month)->second);
}

Result<> writeAmount(const MonivaAccount& book, MonthLabel month, double amount) {
  MVAppRoot& root = book.root();
  return write(root,
               "update transactions set amount = ?, editDate = ?, edit_ipid = ? where type = ? and book = ?"
               " and syear = ? and smonth = ? and deleted = 0",
               amount, root.editStamp(), root.itsUDID(), kind::kMonthlyBudget, book.pk, month.year,
               month.month);
}

/// Of each month without a live row the one that went last comes back; a live one that is a mere copy gives
/// way to it. What went before a person deleted that month stays away.
Result<> reviveRows(Connection& db, const MonivaAccount& book, int type) {
  struct Found {
    std::string eid;
    bool isLive = false;
    bool isDeleted = false;
    bool wasSetAside = false;
  };
  std::map<MonthLabel, Found> found;
  {
    Run run = db.query(
        "select eid, syear, smonth, deleted, ipid from transactions where type = ? and book = ? order by"
        " editDate, eid",
        {type, book.pk});
    while (run.next()) {
      const MonthLabel label{static_cast<int>(run.integer(1)), static_cast<int>(run.integer(2))};
      const auto mark = run.text(4);
      const bool isSetAside = mark == budget_mark::kRecalculated || mark == budget_mark::kSwitchedOff;
      const bool isGone = mark == budget_mark::kReplaced || mark == budget_mark::kAhead;
      if (label.year == 0 || label.month == 0) continue;
      Found& month = found[label];
      switch (run.integer(3)) {
        case 0:
          month.isLive = true;
          break;
        case 4:
          month.isDeleted = true;
          month.eid.clear();
          break;
        default:
          if (!isSetAside && (isGone || month.isDeleted || mark == budget_mark::kDeleted)) break;
          month.eid = run.text(0);
          month.wasSetAside = isSetAside;
      }
    }
    if (!run.ok()) return tl::make_unexpected(db.refusal());
  }
  MVAppRoot& root = book.root();
  const auto live = type == kind::kMonthlyBudget ? monthlyRows(book) : MonthlyRows();
  if (!live) return tl::make_unexpected(live.error());
  for (const auto& [label, month] : found) {
    if (month.eid.empty()) continue;
    if (month.isLive) {
      const auto copy = live->find(label);
      if (copy == live->end() || !copy->second.isCopy || !month.wasSetAside) continue;
      auto done = setAside(root, copy->second.eid, budget_mark::kReplaced);
      if (!done) return done;
    }
    auto done = write(root,
                      "update transactions set deleted = 0, ipid = '', editDate = ?, edit_ipid = ? where type"
                      " = ? and book = ? and deleted !=4 and eid = ?",
                      root.editStamp(), root.itsUDID(), type, book.pk, month.eid);
    if (!done) return done;
  }
  return {};
}

Result<> bringBackHistory(Connection& db, const MonivaAccount& book) {
  for (const int type : {kind::kMonthlyBudget, kind::kBudgetCarry}) {
    if (auto done = reviveRows(db, book, type); !done) return done;
  }
  MVAppRoot& root = book.root();
  return write(root,
               "update transactions set deleted = 3, ipid = ?, editDate = ?, edit_ipid = ? where (type = ? or"
               " type = ?) and (syear = 0 or smonth = 0) and book = ? and deleted = 0",
               budget_mark::kUnlabelled, root.editStamp(), root.itsUDID(), kind::kMonthlyBudget,
               kind::kBudgetCarry, book.pk);
}

}  // namespace

Result<std::vector<BudgetMonth>> BudgetHistoricalRemaining::months() const {
  auto counted = countHistory(book_);
  if (!counted) return tl::make_unexpected(counted.error());
  const BudgetMonths names(book_);
  for (auto& month : counted->months) month.title = names.title({month.year, month.month});
  return std::move(counted->months);
}

Result<> BudgetHistoricalRemaining::calculateHistoryBudgetRolloverFrom(int year, int month) {
  auto done = countAgain(book_, {year, month});
  if (done) tellOfBudget(book_.root());
  return done;
}

void BudgetHistoricalRemaining::calculateHistoryBudgetRolloverFrom(
    int year, int month, std::function<void(const Result<>&)> completion) {
  MVAppRoot& root = book_.root();
  reportInBackground<void>(
      root, std::string(kHistory),
      [book = book_, year, month](Connection&) {
        return countAgain(book, {year, month});
      },
      [&root, completion = std::move(completion)](const Result<>& done) {
        if (done) tellOfBudget(root);
        if (completion) completion(done);
      });
}

Result<> BudgetHistoricalRemaining::editAmount(int year, int month, double amount) {
  if (auto checked = checkAmount(amount); !checked) return checked;
  return changeHistory(book_, [&](Connection&) -> Result<> {
    const MonthLabel label{year, month};
    const auto rows = rowsAround(book_, label);
    if (!rows) return tl::make_unexpected(rows.error());
    if (auto kept = goOnAfter(book_, *rows, label); !kept) return kept;
    if (rows->contains(label)) return writeAmount(book_, label, amount);
    const auto added = addMonthlyRow(book_, label, amount, inForce(*rows, label)->second.inherits);
    return added ? Result<>() : tl::make_unexpected(added.error());
  });
}

Result<> BudgetHistoricalRemaining::editInherit(int year, int month, bool inherits) {
  return changeHistory(book_, [&](Connection&) -> Result<> {
    const MonthLabel label{year, month};
    const auto rows = rowsAround(book_, label);
    if (!rows) return tl::make_unexpected(rows.error());
    if (auto kept = goOnAfter(book_, *rows, label); !kept) return kept;
    const MonthlyRow& row = inForce(*rows, label)->second;
    MVAppRoot& root = book_.root();
    if (rows->contains(label)) {
      return write(root, "update transactions set paid = ?, editDate = ?, edit_ipid = ? where eid = ?",
                   inherits, root.editStamp(), root.itsUDID(), row.eid);
    }
    const auto added = addMonthlyRow(book_, label, row.amount, inherits);
    return added ? Result<>() : tl::make_unexpected(added.error());
  });
}

Result<> BudgetHistoricalRemaining::deleteMonth(int year, int month) {
  return changeHistory(book_, [&](Connection&) -> Result<> {
    const MonthLabel label{year, month};
    const auto rows = rowsAround(book_, label);
    if (!rows) return tl::make_unexpected(rows.error());
    const BudgetMonths months(book_);
    const auto own = rows->find(label);
    if (own == rows->end()) {
      return refuse("{} has no budget of its own; it goes on with that of {}", months.title(label),
                    months.title(inForce(*rows, label)->first));
    }
    if (rows->size() == 1) {
      return refuse("{} has the only budget of '{}'; delete that budget itself", months.title(label),
                    book_.title);
    }
    BookBudget budget(book_);
    budget.eid = own->second.eid;
    return budget.delete_();
  });
}

Result<> BudgetHistoricalRemaining::recalculateFrom(int year, int month) {
  return changeHistory(book_, [&](Connection&) -> Result<> {
    const MonthLabel label{year, month};
    const auto rows = rowsAround(book_, label);
    if (!rows) return tl::make_unexpected(rows.error());
    if (!rows->contains(label)) {
      auto added = copyMonthlyRow(book_, label, inForce(*rows, label)->second);
      if (!added) return added;
    }
    MVAppRoot& root = book_.root();
    auto done = write(root,
                      "update transactions set deleted = 3, ipid = ?, editDate = ?, edit_ipid = ? where (type"
                      " = ? or type = ?) and book = ? and deleted = 0 and sday < ?",
                      budget_mark::kRecalculated, root.editStamp(), root.itsUDID(), kind::kMonthlyBudget,
                      kind::kBudgetCarry, book_.pk, label.key());
    if (!done) return done;
    BookBudget budget(book_);
    budget.year = year;
    budget.month = month;
    return budget.clearLastBudgetRollover();
  });
}

Result<> BudgetHistoricalRemaining::restore() {
  return changeHistory(book_, [&](Connection& db) { return bringBackHistory(db, book_); });
}

Result<> calculateHistoryBudgetFrom(MonivaAccount& book, int year, int month, double newAmount) {
  if (auto checked = checkAmount(newAmount); !checked) return checked;
  return changeHistory(book, [&](Connection& db) -> Result<> {
    if (auto back = bringBackHistory(db, book); !back) return back;
    const MonthLabel label{year, month};
    const auto rows = rowsAround(book, label);
    if (!rows) return tl::make_unexpected(rows.error());
    if (!rows->contains(label)) {
      const auto added = addMonthlyRow(book, label, newAmount, inForce(*rows, label)->second.inherits);
      if (!added) return tl::make_unexpected(added.error());
    }
    for (auto row = rows->lower_bound(label); row != rows->end(); ++row) {
      if (auto done = writeAmount(book, row->first, newAmount); !done) return done;
    }
    return {};
  });
}

}  // namespace moniva
