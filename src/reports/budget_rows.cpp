#include "reports/budget_rows.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <cmath>

#include "base/uuid.h"
#include "calendar/date_texts.h"
#include "model/entry_checks.h"
#include "reports/book_sums.h"
#include "storage/writes.h"

namespace moniva {
namespace {

/// The key of the row that every device makes for the month.
std::string keyOfCopy(const MonivaAccount& book, MonthLabel month) {
  return nameBasedUuidV7(1, fmt::format("budget month\n{}\n{}", book.pk, month.key()));
}

}  // namespace

BudgetMonths::BudgetMonths(const MonivaAccount& book)
    : calendar_(&book.root().calendar()),
      periods_(*calendar_, book.periodStarts(), book.root().now()),
      now_(book.root().now()) {}

std::int64_t BudgetMonths::firstOfCalendarMonth(MonthLabel month) const {
  return calendar_->dayNumber(periods_.firstDateOfCalendarYear(month.year, month.month));
}

MonthLabel BudgetMonths::labelOf(std::int64_t day) const {
  const auto at = calendar_->days().parts(day);
  return {at.year, at.month};
}

bool BudgetMonths::exists(MonthLabel month) const {
  return month.year > 0 && month.month > 0 && labelOf(firstOfCalendarMonth(month)) == month &&
         checkRecordDate(*calendar_, periods_.firstDateOfCalendarYear(month.year, month.month));
}

Result<> BudgetMonths::check(MonthLabel month) const {
  if (!exists(month)) return refuse("there is no month {}/{}", month.year, month.month);
  return {};
}

MonthLabel BudgetMonths::current() const {
  // Months that begin after the 28th are named some days off.
  MonthLabel month{periods_.getYearForFiscalMonth(), periods_.getFiscalMonth()};
  while (calendar_->isBeforeDay(now_, begin(month))) month = plus(month, -1);
  while (!calendar_->isBeforeDay(now_, begin(plus(month, 1)))) month = plus(month, 1);
  return month;
}

MonthLabel BudgetMonths::plus(MonthLabel month, int months) const {
  return labelOf(calendar_->days().plusMonths(firstOfCalendarMonth(month), months));
}

Date BudgetMonths::begin(MonthLabel month) const {
  return periods_.firstDateOfFiscalYear(month.year, month.month);
}

Date BudgetMonths::end(MonthLabel month) const {
  return calendar_->dateBegin(calendar_->getPreviouslyDay(begin(plus(month, 1))));
}

std::string BudgetMonths::title(MonthLabel month) const {
  return fmt::format("{}/{} {}", month.year, month.month,
                     stringOfMonthName(*calendar_, calendar_->beginOfDay(firstOfCalendarMonth(month))));
}

Result<MonthlyRows> monthlyRows(const MonivaAccount& book) {
  Connection* db = book.root().db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  const BudgetMonths months(book);
  MonthlyRows rows;
  Run run = db->query(
      "select eid, amount, paid, syear, smonth, editDate, edit_ipid from transactions where type = ? and "
      "book = ? and"
      " deleted = 0 order by editDate, eid",
      {kind::kMonthlyBudget, book.pk});
  while (run.next()) {
    const MonthLabel month{static_cast<int>(run.integer(3)), static_cast<int>(run.integer(4))};
    if (!months.exists(month)) continue;
    MonthlyRow& row = rows[month];
    row = {std::string(run.text(0)), run.real(1), run.integer(2) != 0, run.date(5), run.text(6).empty()};
    row.isCopy = row.isCopy && row.eid == keyOfCopy(book, month);
  }
  if (!run.ok()) return tl::make_unexpected(db->refusal());
  return rows;
}

MonthlyRows::const_iterator inForce(const MonthlyRows& rows, MonthLabel month) {
  const auto after = rows.upper_bound(month);
  return after == rows.begin() ? rows.end() : std::prev(after);
}

MonthLabel chainBegin(const MonthlyRows& rows, MonthLabel month) {
  auto row = rows.lower_bound(month);
  MonthLabel begin = month;
  while (row != rows.begin() && std::prev(row)->second.inherits) begin = (--row)->first;
  return begin;
}

double carryOf(double carriedIn, double left) {
  constexpr float kNoise = 2.4e-7F;
  const auto one = static_cast<float>(carriedIn);
  const auto other = static_cast<float>(left);
  const float carry = one + other;
  if (std::abs(carry) <= kNoise * (std::abs(one) + std::abs(other))) return 0;
  const std::string digits = fmt::format("{}", carry);
  double plain = carry;
  std::from_chars(digits.data(), digits.data() + digits.size(), plain);
  return plain;
}

Result<CountedMonths> countMonths(const MonivaAccount& book, const MonthlyRows& rows, MonthLabel first,
                                  MonthLabel end) {
  const BudgetMonths names(book);
  const MonthLabel present = names.current();
  CountedMonths counted;
  Carried into{first, 0, false};
  for (MonthLabel month = first; month < end; month = into.month) {
    const auto row = inForce(rows, month);
    if (row == rows.end()) return refuse("there is no budget for {}/{}", month.year, month.month);
    BudgetMonth at;
    at.year = month.year;
    at.month = month.month;
    at.beginDate = names.begin(month);
    at.endDate = names.end(month);
    at.amount = row->second.amount;
    at.inheritRemaining = row->second.inherits;
    at.isOwn = row->first == month;
    at.isCurrent = month == present;
    at.rollover = into.amount;
    const auto spent = transactionSumFrom(book, at.beginDate, at.endDate, kind::kExpense);
    if (!spent) return tl::make_unexpected(spent.error());
    at.expense = *spent;
    const double left = difference(at.amount, at.expense);
    at.remaining = at.inheritRemaining ? carryOf(at.rollover, left) : withoutNoise(at.rollover + left);
    counted.carried.push_back(into);
    into = {names.plus(month, 1), at.inheritRemaining ? at.remaining : 0, at.inheritRemaining};
    counted.months.push_back(std::move(at));
  }
  counted.carried.push_back(into);
  return counted;
}

Result<std::string> addMonthlyRow(const MonivaAccount& book, MonthLabel month, double amount, bool inherits) {
  MVAppRoot& root = book.root();
  std::string eid = root.newIdentifier();
  auto done =
      write(root,
            "insert into transactions (repeat, type, amount, syear, smonth, sday, editDate, eid, book,"
            " paid, edit_ipid) values ('Not Repeat', ?, ?, ?, ?, ?, ?, ?, ?,?,?)",
            kind::kMonthlyBudget, amount, month.year, month.month, month.key(), root.editStamp(), eid,
            book.pk, inherits, root.itsUDID());
  if (!done) return tl::make_unexpected(done.error());
  return eid;
}

Result<> copyMonthlyRow(const MonivaAccount& book, MonthLabel month, const MonthlyRow& former) {
  MVAppRoot& root = book.root();
  const std::string eid = keyOfCopy(book, month);
  Date stamp = former.editDate;
  bool exists = false;
  {
    Connection* db = root.db().getDatabase();
    if (db == nullptr) return refuse("the store is not open");
    Run run = db->query("select editDate from transactions where eid = ?", {eid});
    exists = run.next();
    if (exists) stamp = std::max(stamp, run.date(0));
    if (!run.ok()) return tl::make_unexpected(db->refusal());
  }
  // That no device is named tells the row from one that a person edited.
  if (exists) {
    return write(root,
                 "update transactions set amount = ?, paid = ?, deleted = 0, ipid = '', editDate = ?,"
                 " edit_ipid = '' where eid = ?",
                 former.amount, former.inherits, justAbove(root, stamp), eid);
  }
  return write(root,
               "insert into transactions (repeat, type, amount, syear, smonth, sday, editDate, eid, book,"
               " paid, edit_ipid) values ('Not Repeat', ?, ?, ?, ?, ?, ?, ?, ?,?,'')",
               kind::kMonthlyBudget, former.amount, month.year, month.month, month.key(),
               justAbove(root, stamp), eid, book.pk, former.inherits);
}

Date justAbove(MVAppRoot& root, Date editDate) {
  constexpr double kAbove = 1e-6;
  const Date stamp = editDate.plusSeconds(kAbove);
  root.sawEditStamp(stamp);
  return stamp;
}

Result<> setAside(MVAppRoot& root, std::string_view eid, std::string_view mark) {
  return write(root,
               "update transactions set deleted = 3, ipid = ?, editDate = ?, edit_ipid = ? where eid = ? and"
               " deleted = 0",
               mark, root.editStamp(), root.itsUDID(), eid);
}

}  // namespace moniva
