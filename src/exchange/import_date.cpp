#include "exchange/import_date.h"

#include <chrono>

#include "base/text.h"

namespace moniva {
namespace {

enum class Fault { none, notDate, noSuchDay, ambiguous, badTime };

struct Number {
  int value = 0;
  std::size_t digits = 0;
};

/// Takes the digits, at most eight, from the front of `text`.
Number takeNumber(std::string_view& text) {
  Number number;
  while (!text.empty() && text.front() >= '0' && text.front() <= '9' && number.digits < 8) {
    number.value = number.value * 10 + (text.front() - '0');
    ++number.digits;
    text.remove_prefix(1);
  }
  return number;
}

bool take(std::string_view& text, char expected) {
  if (!text.starts_with(expected)) return false;
  text.remove_prefix(1);
  return true;
}

bool isDay(const ImportDate& date) {
  const std::chrono::year_month_day day(std::chrono::year(date.year),
                                        std::chrono::month(static_cast<unsigned>(date.month)),
                                        std::chrono::day(static_cast<unsigned>(date.day)));
  return date.year >= 1 && date.year <= 9999 && day.ok();
}

bool readTime(std::string_view text, ImportDate& date) {
  const auto hour = takeNumber(text);
  const bool hasMinute = take(text, ':');
  const auto minute = takeNumber(text);
  const bool hasSecond = take(text, ':');
  const auto second = takeNumber(text);
  if (!hasMinute || !text.empty() || hour.digits < 1 || hour.digits > 2 || minute.digits != 2) return false;
  if (second.digits != (hasSecond ? 2U : 0U)) return false;
  if (hour.value > 23 || minute.value > 59 || second.value > 59) return false;
  date.hour = hour.value;
  date.minute = minute.value;
  date.second = second.value;
  date.hasTime = true;
  return true;
}

/// Puts the three numbers in their places, where `order` decides only for those that leave it open.
Fault arrange(const Number& first, const Number& middle, const Number& last, char mark, DateOrder order,
              ImportDate& date) {
  if (first.digits == 4) {
    if (last.digits < 1 || last.digits > 2) return Fault::notDate;
    date.year = first.value;
    date.month = middle.value;
    date.day = last.value;
    return isDay(date) ? Fault::none : Fault::noSuchDay;
  }
  if (first.digits > 2 || last.digits != 4) return Fault::notDate;
  date.year = last.value;
  date.month = middle.value;
  date.day = first.value;
  const bool byDay = isDay(date);
  if (mark == '.' || order == DateOrder::dayFirst) return byDay ? Fault::none : Fault::noSuchDay;
  const bool same = first.value == middle.value;
  if (byDay && same) return Fault::none;
  date.month = first.value;
  date.day = middle.value;
  const bool byMonth = isDay(date);
  if (order == DateOrder::monthFirst) return byMonth ? Fault::none : Fault::noSuchDay;
  if (byDay && byMonth) return Fault::ambiguous;
  if (byDay) {
    date.month = middle.value;
    date.day = first.value;
  }
  return byDay || byMonth ? Fault::none : Fault::noSuchDay;
}

Fault readDate(std::string_view text, DateOrder order, ImportDate& date) {
  text = trimBlanks(text);
  const auto first = takeNumber(text);
  Fault fault = Fault::none;
  if (first.digits == 8) {
    date.year = first.value / 10000;
    date.month = first.value / 100 % 100;
    date.day = first.value % 100;
    fault = isDay(date) ? Fault::none : Fault::noSuchDay;
  } else {
    const char mark = text.empty() ? '\0' : text.front();
    if (first.digits == 0 || (mark != '-' && mark != '/' && mark != '.')) return Fault::notDate;
    text.remove_prefix(1);
    const auto middle = takeNumber(text);
    if (middle.digits < 1 || middle.digits > 2 || !take(text, mark)) return Fault::notDate;
    const auto last = takeNumber(text);
    fault = arrange(first, middle, last, mark, order, date);
  }
  if (text.empty() || fault == Fault::notDate) return fault;
  if (!take(text, 'T') && !take(text, ' ')) return Fault::notDate;
  return readTime(trimBlanks(text), date) ? fault : Fault::badTime;
}

}  // namespace

Result<ImportDate> parseImportDate(std::string_view text, DateOrder order) {
  ImportDate date;
  const auto fault = readDate(text, order, date);
  if (fault == Fault::none) return date;
  const auto shown = excerpt(trimBlanks(text));
  if (shown.empty()) return refuse("the date is empty");
  switch (fault) {
    case Fault::noSuchDay:
      return refuse("'{}' is not a day of the calendar", shown);
    case Fault::ambiguous:
      return refuse("'{}' may start with the day or with the month", shown);
    case Fault::badTime:
      return refuse("'{}' ends in no time of day: write it as 14:30 or 14:30:05", shown);
    default:
      return refuse("'{}' is not a date: write it as 2024-02-29", shown);
  }
}

Result<> parseImportTime(std::string_view text, ImportDate& date) {
  if (readTime(trimBlanks(text), date)) return {};
  return refuse("'{}' is not a time of day: write it as 14:30 or 14:30:05", excerpt(trimBlanks(text)));
}

void DateOrderSurvey::add(std::string_view text, std::size_t line) {
  ImportDate byDay;
  ImportDate byMonth;
  const bool day = readDate(text, DateOrder::dayFirst, byDay) == Fault::none;
  const bool month = readDate(text, DateOrder::monthFirst, byMonth) == Fault::none;
  if ((!day && !month) || (day && month && byDay == byMonth)) return;
  auto& witness = day && month ? unclear_ : (day ? dayFirst_ : monthFirst_);
  if (!witness) witness = Witness{std::string(trimBlanks(text)), line};
}

Result<DateOrder> DateOrderSurvey::decide() const {
  if (dayFirst_ && monthFirst_) {
    return refuse("dates are written in two orders: '{}' in line {} and '{}' in line {}",
                  excerpt(dayFirst_->text), dayFirst_->line, excerpt(monthFirst_->text), monthFirst_->line);
  }
  if (dayFirst_) return DateOrder::dayFirst;
  if (monthFirst_) return DateOrder::monthFirst;
  if (!unclear_) return DateOrder::automatic;
  return refuse(
      "'{}' in line {} may start with the day or with the month, and no other date tells: say which",
      excerpt(unclear_->text), unclear_->line);
}

}  // namespace moniva
