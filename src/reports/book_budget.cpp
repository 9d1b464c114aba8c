#include "reports/book_budget.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>

#include "calendar/date_texts.h"
#include "model/entry_checks.h"
#include "reports/book_sums.h"
#include "reports/budget_rows.h"
#include "storage/writes.h"

namespace moniva {
namespace {

/// What a row says of itself.
struct StoredBudget {
  int type = 0;
  MonthLabel month;
  int deleted = 0;
};

Result<std::optional<StoredBudget>> storedBudget(Connection& db, const std::string& eid) {
  Run run = db.query("select type, syear, smonth, deleted from transactions where eid = ?", {eid});
  std::optional<StoredBudget> row;
  if (run.next()) {
    row = StoredBudget{static_cast<int>(run.integer(0)),
                       {static_cast<int>(run.integer(1)), static_cast<int>(run.integer(2))},
                       static_cast<int>(run.integer(3))};
  }
  if (!run.ok()) return tl::make_unexpected(db.refusal());
  return row;
}

/// A day of a range is kept by its noon, which is on the same day in zones near the user's.
Date noonOf(const Calendar& calendar, Date day) {
  return calendar.dateBegin(day).plusSeconds(12 * 3600.0);
}

Result<> checkBudget(const BookBudget& budget) {
  const Calendar& calendar = budget.book.root().calendar();
  if (!budget.book.isBook()) return refuse("'{}' is no book; budgets are those of books", budget.book.title);
  if (budget.book.isGroup)
    return refuse("'{}' is a group; budgets are those of its books", budget.book.title);
  if (auto checked = checkAmount(budget.amount); !checked) return checked;
  if (budget.isMonthly()) return BudgetMonths(budget.book).check({budget.year, budget.month});
  for (const Date day : {budget.budgetBeginDate, budget.budgetEndDate}) {
    if (auto checked = checkRecordDate(calendar, day); !checked) return checked;
  }
  if (calendar.isAfterDay(budget.budgetBeginDate, budget.budgetEndDate)) {
    return refuse("a budget from {} to {} ends before it begins",
                  stringOfDateMediumStyle(calendar, budget.budgetBeginDate),
                  stringOfDateMediumStyle(calendar, budget.budgetEndDate));
  }
  return {};
}

/// What was spent today of what nobody had planned: neither shares of a spread cost nor instalments, and
/// nothing that a series made.
Result<double> spentToday(const MonivaAccount& book) {
  const Date now = book.root().now();
  return sumBetween(book, "sum(amount) as amount",
                    fmt::format("syear != {} and syear != {} and paid = 1 and type = 12 and"
                                " (repeat_seed = '' or repeat_seed is NULL)",
                                advanced::kCost, advanced::kInstallment),
                    now, now);
}

bool beginsInPresentMonth(const BookBudget& budget) {
  const Calendar& calendar = budget.book.root().calendar();
  const BudgetMonths months(budget.book);
  const MonthLabel present = months.current();
  return !calendar.isBeforeDay(budget.budgetBeginDate, months.begin(present)) &&
         !calendar.isAfterDay(budget.budgetBeginDate, months.end(present));
}

/// What the instalments due in that time add to what is expected of expenses there.
Result<double> expectedInstallments(const MonivaAccount& book, Date from, Date to) {
  return sumBetween(book, "sum(amount * (coalesce(needReimburse = 0, 0) + (coalesce(transferEID, '') = '')))",
                    fmt::format("paid = 0 and type = 12 and syear = {}", advanced::kInstallment), from, to);
}

}  // namespace

BookBudget::BookBudget(const MonivaAccount& ofBook) : book(ofBook) {
  // The book has its budget, and not the other way round as well.
  book.mainBudget.reset();
  const BudgetMonths months(book);
  const MonthLabel current = months.current();
  year = current.year;
  month = current.month;
  budgetBeginDate = months.begin(current);
  budgetEndDate = months.end(current);
}

bool BookBudget::isCurrent() const {
  const Calendar& calendar = book.root().calendar();
  const Date now = book.root().now();
  if (isMonthly()) return BudgetMonths(book).current() == MonthLabel{year, month};
  return !calendar.isBeforeDay(now, budgetBeginDate) && !calendar.isAfterDay(now, budgetEndDate);
}

Result<> BookBudget::add() {
  if (auto checked = checkBudget(*this); !checked) return checked;
  MVAppRoot& root = book.root();
  if (isMonthly()) {
    auto added = addMonthlyRow(book, {year, month}, amount, inheritRemaining);
    if (!added) return tl::make_unexpected(added.error());
    eid = *added;
    return {};
  }
  const std::string key = root.newIdentifier();
  auto done = write(root,
                    "insert into transactions (repeat, type, amount, datetime, editDate, eid,"
                    " repeat_end_date, book, edit_ipid) values ('Not Repeat', ?, ?, ?, ?, ?, ?, ?,?)",
                    type, amount, noonOf(root.calendar(), budgetBeginDate), root.editStamp(), key,
                    noonOf(root.calendar(), budgetEndDate), book.pk, root.itsUDID());
  if (done) eid = key;
  return done;
}

Result<> BookBudget::update() {
  if (auto checked = checkBudget(*this); !checked) return checked;
  MVAppRoot& root = book.root();
  return atomically(root, [&](Connection& db) -> Result<> {
    const auto row = storedBudget(db, eid);
    if (!row) return tl::make_unexpected(row.error());
    if (!*row || (*row)->deleted != 0) return refuse("there is no such budget any more");
    if (!isMonthly()) {
      return write(root,
                   "update transactions set repeat = 'Not Repeat', type = ?, amount = ?, datetime = ?,"
                   " editDate = ?, repeat_end_date = ?, book = ?, edit_ipid = ? where eid = ?",
                   type, amount, noonOf(root.calendar(), budgetBeginDate), root.editStamp(),
                   noonOf(root.calendar(), budgetEndDate), book.pk, root.itsUDID(), eid);
    }
    const MonthLabel own{year, month};
    // What an earlier month began with stays; this one has its own from now on.
    if ((*row)->month != own) return add();
    return write(root,
                 "update transactions set repeat = 'Not Repeat', type = ?, amount = ?, syear = ?, smonth = ?,"
                 " sday = ?, editDate = ?, book = ?, paid = ?, edit_ipid = ? where eid = ?",
                 type, amount, year, month, own.key(), root.editStamp(), book.pk, inheritRemaining,
                 root.itsUDID(), eid);
  });
}

Result<> BookBudget::delete_() {
  MVAppRoot& root = book.root();
  return atomically(root, [&](Connection& db) -> Result<> {
    const auto row = storedBudget(db, eid);
    if (!row) return tl::make_unexpected(row.error());
    if (!*row) return refuse("there is no such budget any more");
    auto done = write(root, "update transactions set deleted = 4, editDate = ?, edit_ipid = ? where eid = ?",
                      root.editStamp(), root.itsUDID(), eid);
    if (!done || (*row)->type != kind::kMonthlyBudget) return done;
    return write(root,
                 "update transactions set deleted = 3, ipid = ?, editDate = ?, edit_ipid = ? where type = ?"
                 " and book = ? and syear = ? and smonth = ? and deleted = 0",
                 budget_mark::kDeleted, root.editStamp(), root.itsUDID(), kind::kMonthlyBudget, book.pk,
                 (*row)->month.year, (*row)->month.month);
  });
}

Result<bool> BookBudget::getAllValue() {
  MVAppRoot& root = book.root();
  const Calendar& calendar = root.calendar();
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  std::string bookKey;
  {
    Run run = db->query(
        "select amount, amount2, transactions.type, datetime, book, repeat_end_date, paid, repeat_seed,"
        " syear, smonth from transactions join account on transactions.book = account.oldTitle where"
        " transactions.eid = ?",
        {eid});
    if (!run.next()) {
      if (!run.ok()) return tl::make_unexpected(db->refusal());
      return false;
    }
    amount = run.real(0);
    type = static_cast<int>(run.integer(2));
    bookKey = run.text(4);
    budgetBeginDate = calendar.dateBegin(run.date(3));
    // An end that was never set is kept as nothing or as an empty text.
    budgetEndDate = run.real(5) > 0 ? calendar.dateBegin(run.date(5)) : Date{};
    inheritRemaining = isMonthly() && run.integer(6) != 0;
    year = isMonthly() ? static_cast<int>(run.integer(8)) : 0;
    month = isMonthly() ? static_cast<int>(run.integer(9)) : 0;
  }
  if (book.pk != bookKey) {
    if (auto other = MonivaAccount::getAccountWithPK(root, bookKey)) book = *other;
  }
  lastMonthRolloverAmount = 0;
  if (!isMonthly()) {
    if (budgetEndDate == Date{}) {
      budgetEndDate = BookPeriods(calendar, book.periodStarts(), root.now()).lastDateOfMonth(budgetBeginDate);
    }
    return true;
  }
  const BudgetMonths months(book);
  const MonthLabel own{year, month};
  budgetBeginDate = months.begin(own);
  budgetEndDate = months.end(own);
  Run run = db->query(
      "select eid, amount, sday from transactions where type = ? and book = ? and deleted = 0 and sday < ?"
      " order by sday DESC limit 1",
      {kind::kBudgetCarry, book.pk, months.plus(own, 1).key()});
  if (run.next()) lastMonthRolloverAmount = run.real(1);
  if (!run.ok()) return tl::make_unexpected(db->refusal());
  return true;
}

Result<double> BookBudget::getAllocateValue() const {
  MVAppRoot& root = book.root();
  Connection* connection = root.db().getDatabase();
  if (connection == nullptr) return refuse("the store is not open");
  double all = 0;
  std::vector<std::string> older;
  {
    // By the same order on every device, so that one and the same stays.
    Run run = connection->query(
        "select eid, category, amount from transactions where deleted = 0 and type = ? and book = ? order by"
        " category, editDate desc, eid desc",
        {kind::kCategoryAllocation, book.pk});
    std::optional<std::string> former;
    while (run.next()) {
      if (former == run.text(1)) {
        older.emplace_back(run.text(0));
      } else {
        all += run.real(2);
      }
      former = run.text(1);
    }
    if (!run.ok()) return tl::make_unexpected(connection->refusal());
  }
  if (older.empty() || root.db().isReadOnly()) return all;
  leaveForLater(root, atomically(root, [&](Connection&) -> Result<> {
                  for (const auto& row : older) {
                    auto done = write(root,
                                      "update transactions set deleted = 3, ipid = 'delete with Budget"
                                      " getAllocateValue', edit_ipid = ?, editDate = ? where eid = ?",
                                      root.itsUDID(), root.editStamp(), row);
                    if (!done) return done;
                  }
                  return {};
                }));
  return all;
}

Result<> BookBudget::calculateRemaining() {
  const Calendar& calendar = book.root().calendar();
  const Date now = book.root().now();
  monivaAmount = recurringAmount = installmentAmount = dividedAmount = todayAvailableAmount = 0;
  installmentsCountedTwice = 0;
  const auto into = [](double& field, const Result<double>& read) -> Result<> {
    if (!read) return tl::make_unexpected(read.error());
    field = *read;
    return {};
  };
  auto done = into(monivaAmount, transactionSumFrom(book, budgetBeginDate, budgetEndDate, kind::kExpense));
  const bool current = isCurrent();
  const Date from = std::max(calendar.getNextDay(now), budgetBeginDate);
  if ((current || beginsInPresentMonth(*this)) && !calendar.isAfterDay(from, budgetEndDate)) {
    if (done) done = into(dividedAmount, transactionSumFrom(book, from, budgetEndDate, kind::kExpense));
    if (done) done = into(recurringAmount, repeatExpenseSumFrom(book, from, budgetEndDate));
    if (done) done = into(installmentAmount, installmentSumFrom(book, from, budgetEndDate));
    if (done) done = into(installmentsCountedTwice, expectedInstallments(book, from, budgetEndDate));
  }
  leftAmount = difference(amount, monivaAmount + recurringAmount + installmentAmount);
  if (!done || !current) return done;

  const auto days = static_cast<double>(
      std::max<std::int64_t>(calendar.dayNumber(budgetEndDate) - calendar.dayNumber(now), 0) + 1);
  double today = 0;
  done = into(today, spentToday(book));
  if (leftAmount < 0 && lastMonthRolloverAmount > 0) leftAmount = lastMonthRolloverAmount - leftAmount;
  todayAvailableAmount = (leftAmount + today) / days - today;
  return done;
}

double BookBudget::availableAmount() const {
  return withoutNoise(lastMonthRolloverAmount + amount - monivaAmount - recurringAmount - installmentAmount +
                      installmentsCountedTwice);
}

Result<> BookBudget::calculateBalanceRollover() {
  if (eid.empty() || !isMonthly()) return {};
  MVAppRoot& root = book.root();
  const MonthLabel next = BudgetMonths(book).plus({year, month}, 1);
  if (inheritRemaining)
    return keepCarried(book, {{next, carryOf(lastMonthRolloverAmount, leftAmount), true}});
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  {
    Run run = db->query(
        "select 1 from transactions where type = ? and book = ? and syear = ? and smonth = ? and deleted = 0"
        " and amount != 0 limit 1",
        {kind::kBudgetCarry, book.pk, next.year, next.month});
    if (!run.next()) return run.ok() ? Result<>() : tl::make_unexpected(db->refusal());
  }
  return write(root,
               "update transactions set amount = 0, editDate = ?, edit_ipid = ? where type = ? and book = ?"
               " and syear = ? and smonth = ?",
               root.editStamp(), root.itsUDID(), kind::kBudgetCarry, book.pk, next.year, next.month);
}

Result<> BookBudget::clearLastBudgetRollover() {
  MVAppRoot& root = book.root();
  auto done = write(root,
                    "update transactions set amount = ?, editDate = ?, edit_ipid = ? where type = ? and book"
                    " = ? and syear = ? and smonth = ?",
                    0.0, root.editStamp(), root.itsUDID(), kind::kBudgetCarry, book.pk, year, month);
  if (done) lastMonthRolloverAmount = 0;
  return done;
}

std::int64_t BookBudget::integerOfYear(int year, int month) {
  return std::int64_t{year} * 100 + month;
}

std::string BookBudget::printLog() const {
  const Calendar& calendar = book.root().calendar();
  return fmt::format(
      "==[Budget : {}]\n   {}\n   From {} To {}\n   Amount: {}\n   Rollover: {}\n   Moniva: {}\n   Left: {}\n"
      "   Today Available: {}\n==[End]",
      book.title, isMonthly() ? "Monthly Budget" : "One Time Budget",
      stringOfDatetime(calendar, budgetBeginDate), stringOfDatetime(calendar, budgetEndDate), amount,
      lastMonthRolloverAmount, monivaAmount, leftAmount, todayAvailableAmount);
}

}  // namespace moniva
