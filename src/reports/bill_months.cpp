#include "reports/bill_months.h"

namespace moniva {

BillMonths::BillMonths(const MonivaAccount& account)
    : calendar_(&account.root().calendar()),
      periods_(*calendar_, account.periodStarts(), account.root().now()) {}

std::int64_t BillMonths::nameOf(std::int64_t day) const {
  const Date month = periods_.namesakeOfMonth(calendar_->beginOfDay(day));
  return calendar_->days().firstOfMonth(calendar_->dayNumber(month));
}

std::int64_t BillMonths::lastOf(std::int64_t day, std::int64_t name) const {
  // Months that drift may end some days off.
  std::int64_t last = calendar_->dayNumber(periods_.lastDateOfMonth(calendar_->beginOfDay(day)));
  while (last > day && nameOf(last) > name) --last;
  while (nameOf(last + 1) == name) ++last;
  return last;
}

BillMonths::Days BillMonths::daysAround(std::int64_t day) const {
  const std::int64_t name = nameOf(day);
  std::int64_t first = calendar_->dayNumber(periods_.firstDateOfMonth(calendar_->beginOfDay(day)));
  while (first < day && nameOf(first) < name) ++first;
  while (nameOf(first - 1) == name) --first;
  return {first, lastOf(day, name), name};
}

Date BillMonths::lastDay(std::int64_t day) const {
  const Date date = calendar_->beginOfDay(day);
  return calendar_->dayNumber(date) > day ? calendar_->beginOfDay(day - 1) : date;
}

std::int64_t BillMonths::dueAfter(std::int64_t last) const {
  return calendar_->dayNumber(periods_.dueDateAfter(lastDay(last)));
}

BillMonth BillMonths::monthOf(const Days& days, std::int64_t dueBefore) const {
  BillMonth month;
  const auto called = calendar_->days().parts(days.name);
  month.year = called.year;
  month.month = called.month;
  month.first = days.first;
  month.last = days.last;
  month.name = days.name;
  month.begin = calendar_->beginOfDay(days.first);
  month.end = lastDay(days.last);
  month.due = periods_.dueDateAfter(month.end);
  month.payoffBegin = calendar_->beginOfDay(dueBefore + 1);
  month.payoffEnd = month.due;
  return month;
}

BillMonth BillMonths::holdingDay(std::int64_t day) const {
  const Days days = daysAround(day);
  return monthOf(days, dueAfter(days.first - 1));
}

BillMonth BillMonths::after(const BillMonth& month) const {
  const std::int64_t first = month.last + 1;
  const std::int64_t name = nameOf(first);
  return monthOf({first, lastOf(first, name), name}, calendar_->dayNumber(month.due));
}

BillMonth BillMonths::paidOn(Date date) const {
  BillMonth month = holding(date);
  while (calendar_->isBeforeDay(date, month.payoffBegin)) month = before(month);
  return month;
}

Result<BillMonth> BillMonths::called(int year, int month) const {
  constexpr int kLastYear = 9999;
  const Date named = periods_.firstDateOfCalendarYear(year, month);
  if (year < 1 || year > kLastYear || calendar_->year(named) != year || calendar_->month(named) != month) {
    return refuse("there is no month {} of the year {}", month, year);
  }
  const std::int64_t name = calendar_->dayNumber(named);
  std::int64_t day = calendar_->dayNumber(periods_.firstDateOfFiscalYear(year, month));
  while (nameOf(day) > name) --day;
  while (nameOf(day) < name) ++day;
  return holdingDay(day);
}

}  // namespace moniva
