#include "reports/moniva_account_budget.h"

#include <fmt/format.h>

#include "reports/breakdown.h"
#include "reports/budget_rows.h"
#include "storage/writes.h"

namespace moniva {
namespace {

/// The month's budget as the row says that is in force, without what is carried into it.
Result<std::optional<BookBudget>> loadedBudget(const MonivaAccount& book, const std::string& eid,
                                               MonthLabel month) {
  BookBudget budget(book);
  budget.eid = eid;
  const auto found = budget.getAllValue();
  if (!found) return tl::make_unexpected(found.error());
  if (!*found) return std::nullopt;
  if (!budget.isMonthly()) return budget;
  const BudgetMonths months(book);
  budget.year = month.year;
  budget.month = month.month;
  budget.budgetBeginDate = months.begin(month);
  budget.budgetEndDate = months.end(month);
  return budget;
}

/// Where the book has no budget any more, one of the amount it had last is added for the month. False where
/// it never had one.
Result<bool> seedMonth(MonivaAccount& book, MonthLabel month) {
  MVAppRoot& root = book.root();
  if (auto read = reloadBudgetEnabled(book); !read) return tl::make_unexpected(read.error());
  if (!book.budgetEnabled || root.db().isReadOnly()) return false;
  return atomically(root, [&](Connection& db) -> Result<bool> {
    MonthlyRow last;
    {
      // A range in force goes before it; and who deleted one since wanted none at all.
      Run run = db.query(
          "select amount, paid, editDate, exists(select 1 from transactions as other where other.book ="
          " own.book and other.type = 60 and (other.deleted = 0 or (other.deleted = 4 and other.editDate >"
          " own.editDate))) from transactions as own where type = ? and book = ? and deleted > 0 and"
          " coalesce(ipid, '') not in (?, ?) order by sday DESC, editDate DESC, eid DESC limit 1",
          {kind::kMonthlyBudget, book.pk, budget_mark::kReplaced, budget_mark::kAhead});
      if (!run.next()) return run.ok() ? Result<bool>(false) : tl::make_unexpected(db.refusal());
      if (run.integer(3) != 0) return false;
      last.amount = run.real(0);
      last.inherits = run.integer(1) != 0;
      last.editDate = run.date(2);
    }
    if (last.amount <= 0) return false;
    if (auto added = copyMonthlyRow(book, month, last); !added) return tl::make_unexpected(added.error());
    return true;
  });
}

Result<std::optional<BookBudget>> budgetOfMonth(MonivaAccount& book, MonthLabel month) {
  MVAppRoot& root = book.root();
  const MonthLabel current = BudgetMonths(book).current();
  leaveForLater(root, mendMonthlyRows(book));
  auto rows = monthlyRows(book);
  if (!rows) return tl::make_unexpected(rows.error());
  auto row = inForce(*rows, month);
  if (row == rows->end() && month == current) {
    const auto seeded = seedMonth(book, month);
    if (!seeded) return tl::make_unexpected(seeded.error());
    if (*seeded) {
      rows = monthlyRows(book);
      if (!rows) return tl::make_unexpected(rows.error());
      row = inForce(*rows, month);
    }
  }
  if (row == rows->end()) return std::nullopt;

  double carriedIn = 0;
  if (month <= current) {
    const auto counted = countMonths(book, *rows, chainBegin(*rows, month), month);
    if (!counted) return tl::make_unexpected(counted.error());
    if (!root.db().isReadOnly()) leaveForLater(root, keepCarried(book, counted->carried));
    carriedIn = counted->carried.back().amount;
  }
  auto budget = loadedBudget(book, row->second.eid, month);
  if (budget && *budget) (*budget)->lastMonthRolloverAmount = carriedIn;
  return budget;
}

/// What the switch took away last, if that is still what the book would have.
struct SwitchedOff {
  int type = 0;
  MonthLabel month;
  double amount = 0;
  bool inherits = false;
  Date begin;
  Date end;
};

Result<std::optional<SwitchedOff>> switchedOff(Connection& db, const MonivaAccount& book) {
  const auto rows = monthlyRows(book);
  if (!rows) return tl::make_unexpected(rows.error());
  const MonthLabel last = rows->empty() ? MonthLabel{} : rows->rbegin()->first;
  const MonthLabel current = BudgetMonths(book).current();
  const auto present = rows->find(current);
  const Date newest = present == rows->end() ? Date{} : present->second.editDate;
  Run run = db.query(
      "select type, amount, paid, syear, smonth, datetime, repeat_end_date, editDate from transactions as"
      " own where (type = 60 or type = 61) and book = ?1 and deleted = 3 and coalesce(ipid, '') in ('', ?2)"
      " and not exists (select 1 from transactions as other where other.book = ?1 and other.type = own.type"
      " and other.deleted = 4 and other.editDate > own.editDate and (own.type = 60 or (other.syear,"
      " other.smonth) >= (own.syear, own.smonth))) and not exists (select 1 from transactions as live where"
      " live.book = ?1 and live.type = 60 and live.deleted = 0) order by editDate desc, eid desc",
      {book.pk, budget_mark::kSwitchedOff});
  while (run.next()) {
    const SwitchedOff row{static_cast<int>(run.integer(0)),
                          {static_cast<int>(run.integer(3)), static_cast<int>(run.integer(4))},
                          run.real(1),
                          run.integer(2) != 0,
                          run.date(5),
                          run.date(6)};
    const bool stands =
        row.type == kind::kOneTimeBudget ? run.date(7) > newest : last < row.month && row.month <= current;
    if (stands && row.amount > 0) return row;
  }
  if (!run.ok()) return tl::make_unexpected(db.refusal());
  return std::nullopt;
}

Result<> takeUpAgain(Connection& db, const MonivaAccount& book) {
  const auto row = switchedOff(db, book);
  if (!row) return tl::make_unexpected(row.error());
  if (!*row) return {};
  BookBudget budget(book);
  budget.type = (*row)->type;
  budget.amount = (*row)->amount;
  if (budget.isMonthly()) {
    // In its own month, so that those since then count with it too.
    budget.year = (*row)->month.year;
    budget.month = (*row)->month.month;
    budget.inheritRemaining = (*row)->inherits;
    return budget.add();
  }
  budget.budgetBeginDate = (*row)->begin;
  budget.budgetEndDate = (*row)->end.secondsSince1970 > 0
                             ? (*row)->end
                             : BookPeriods(book.root().calendar(), book.periodStarts(), book.root().now())
                                   .lastDateOfMonth((*row)->begin);
  return budget.add();
}

/// The live rows over ranges, the one changed last first.
Result<std::vector<std::string>> oneTimeRows(Connection& db, const MonivaAccount& book) {
  return keysOf(db,
                "select eid from transactions where type = ? and book = ? and deleted = 0 order by editDate"
                " DESC, eid DESC",
                {kind::kOneTimeBudget, book.pk});
}

}  // namespace

Result<> reloadBudgetEnabled(MonivaAccount& book) {
  Connection* db = book.root().db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  Run run = db->query("select budgetEnabled from account where oldTitle = ?", {book.pk});
  if (run.next()) book.budgetEnabled = run.integer(0) != 0;
  if (!run.ok()) return tl::make_unexpected(db->refusal());
  return {};
}

Result<> setBudgetOpened(MonivaAccount& book, bool opened) {
  MVAppRoot& root = book.root();
  if (!book.isBook()) return refuse("'{}' is no book; budgets are those of books", book.title);
  if (book.isGroup) return refuse("'{}' is a group; budgets are those of its books", book.title);
  auto done = atomically(root, [&](Connection& db) -> Result<> {
    if (auto read = reloadBudgetEnabled(book); !read) return read;
    if (book.budgetEnabled == opened) return {};
    auto written =
        write(root, "update account set editDate=?, edit_ipid = ?, budgetEnabled=? where oldTitle=?",
              root.editStamp(), root.itsUDID(), opened, book.pk);
    if (!written) return written;
    // While it was off there was no budget whose rows could go.
    if (opened) return takeUpAgain(db, book);
    const auto oneTime = oneTimeRows(db, book);
    if (!oneTime) return tl::make_unexpected(oneTime.error());
    const MonthLabel month = oneTime->empty() ? BudgetMonths(book).current() : MonthLabel{};
    // What a person deleted stays what it is.
    return write(root,
                 "update transactions set deleted = 3, ipid = ?, editDate = ?, edit_ipid = ? where type = ?"
                 " and book = ? and syear = ? and smonth = ? and deleted = 0",
                 budget_mark::kSwitchedOff, root.editStamp(), root.itsUDID(),
                 oneTime->empty() ? kind::kMonthlyBudget : kind::kOneTimeBudget, book.pk, month.year,
                 month.month);
  });
  book.mainBudget.reset();
  if (!done) return done;
  const auto main = getMainBudget(book);
  if (!main) return tl::make_unexpected(main.error());
  return {};
}

Result<std::shared_ptr<BookBudget>> getMainBudget(MonivaAccount& book) {
  book.mainBudget.reset();
  if (auto read = reloadBudgetEnabled(book); !read) return tl::make_unexpected(read.error());
  if (!book.budgetEnabled) return nullptr;
  auto budget = getOneTimeBudget(book);
  if (budget && !*budget) budget = getMonthlyBudget(book);
  if (!budget) return tl::make_unexpected(budget.error());
  if (!*budget) return nullptr;
  if (auto counted = (*budget)->calculateRemaining(); !counted) return tl::make_unexpected(counted.error());
  book.mainBudget = std::make_shared<BookBudget>(std::move(**budget));
  return book.mainBudget;
}

Result<std::optional<BookBudget>> getOneTimeBudget(MonivaAccount& book) {
  MVAppRoot& root = book.root();
  Connection* connection = root.db().getDatabase();
  if (connection == nullptr) return refuse("the store is not open");
  const auto rows = oneTimeRows(*connection, book);
  if (!rows) return tl::make_unexpected(rows.error());
  if (rows->empty()) return std::nullopt;
  if (rows->size() > 1 && !root.db().isReadOnly()) {
    leaveForLater(root, atomically(root, [&](Connection& db) -> Result<> {
                    const auto present = oneTimeRows(db, book);
                    if (!present) return tl::make_unexpected(present.error());
                    for (std::size_t other = 1; other < present->size(); ++other) {
                      if (auto done = setAside(root, (*present)[other], budget_mark::kReplaced); !done)
                        return done;
                    }
                    return {};
                  }));
  }
  return loadedBudget(book, rows->front(), {});
}

Result<std::optional<BookBudget>> getMonthlyBudget(MonivaAccount& book) {
  return budgetOfMonth(book, BudgetMonths(book).current());
}

Result<std::optional<BookBudget>> getMonthlyBudgetForYear(MonivaAccount& book, int year, int Month) {
  const MonthLabel month{year, Month};
  if (auto checked = BudgetMonths(book).check(month); !checked) return tl::make_unexpected(checked.error());
  return budgetOfMonth(book, month);
}

Result<bool> budgetWasSwitchedOff(const MonivaAccount& book) {
  Connection* db = book.root().db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  if (book.budgetEnabled) return false;
  const auto oneTime = oneTimeRows(*db, book);
  if (!oneTime) return tl::make_unexpected(oneTime.error());
  if (!oneTime->empty()) return true;
  const auto rows = monthlyRows(book);
  if (!rows) return tl::make_unexpected(rows.error());
  if (inForce(*rows, BudgetMonths(book).current()) != rows->end()) return true;
  const auto row = switchedOff(*db, book);
  if (!row) return tl::make_unexpected(row.error());
  return row->has_value();
}

bool isBudgetMonth(const MonivaAccount& book, int year, int month) {
  return BudgetMonths(book).exists({year, month});
}

Result<std::optional<BookBudget>> keepBudgetOverNewPeriods(MonivaAccount& book,
                                                           const std::optional<BookBudget>& before) {
  const MonthLabel current = BudgetMonths(book).current();
  return atomically(book.root(), [&](Connection&) -> Result<std::optional<BookBudget>> {
    auto now = getMonthlyBudget(book);
    if (!now || !before || !before->isMonthly()) return now;
    // What was named after a later month goes on from here, and is not to come once more by itself.
    auto renamed =
        write(book.root(),
              "update transactions set ipid = ?, editDate = ?, edit_ipid = ? where type = ? and book = ? and"
              " deleted = 3 and ipid = ?",
              budget_mark::kReplaced, book.root().editStamp(), book.root().itsUDID(), kind::kMonthlyBudget,
              book.pk, budget_mark::kAhead);
    if (!renamed) return tl::make_unexpected(renamed.error());
    if (*now && (*now)->amount == before->amount && (*now)->inheritRemaining == before->inheritRemaining) {
      return now;
    }
    BookBudget budget = *now ? **now : BookBudget(book);
    budget.year = current.year;
    budget.month = current.month;
    budget.amount = before->amount;
    budget.inheritRemaining = before->inheritRemaining;
    if (auto kept = *now ? budget.update() : budget.add(); !kept) return tl::make_unexpected(kept.error());
    return getMonthlyBudget(book);
  });
}

}  // namespace moniva
