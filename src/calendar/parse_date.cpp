#include "calendar/parse_date.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string>

namespace moniva {
namespace {

Phrase dateShape() {
  return phrase("write it as year-month-day, like 2024-02-29");
}
Phrase timeShape() {
  return phrase("write it as hours:minutes, like 14:30 or 14:30:05");
}

Phrase monthName(int month) {
  const std::array months = {phrase("January"),   phrase("February"), phrase("March"),    phrase("April"),
                             phrase("May"),       phrase("June"),     phrase("July"),     phrase("August"),
                             phrase("September"), phrase("October"),  phrase("November"), phrase("December")};
  return months.at(static_cast<std::size_t>(month - 1));
}

bool isDigit(char c) {
  return c >= '0' && c <= '9';
}
bool isSpace(char c) {
  return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

std::string_view trimmed(std::string_view text) {
  while (!text.empty() && isSpace(text.front())) text.remove_prefix(1);
  while (!text.empty() && isSpace(text.back())) text.remove_suffix(1);
  return text;
}

bool isWord(std::string_view text, std::string_view word) {
  const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; };
  return std::equal(text.begin(), text.end(), word.begin(), word.end(),
                    [&](char a, char b) { return lower(a) == b; });
}

/// A run of digits and where it stood; `digits` is 0 where there was none.
struct Number {
  int value = 0;
  std::size_t digits = 0;
};

/// Takes a text apart from the left.
class Reader {
 public:
  explicit Reader(std::string_view text) : rest_(text) {}

  Number number() {
    constexpr std::size_t kMostDigits = 9;  // fits an int
    Number number;
    while (number.digits < kMostDigits && !rest_.empty() && isDigit(rest_.front())) {
      number.value = number.value * 10 + (rest_.front() - '0');
      ++number.digits;
      rest_.remove_prefix(1);
    }
    return number;
  }
  bool take(char wanted) {
    if (rest_.empty() || rest_.front() != wanted) return false;
    rest_.remove_prefix(1);
    return true;
  }
  [[nodiscard]] std::string_view rest() const { return rest_; }

 private:
  std::string_view rest_;
};

bool isShort(const Number& number) {
  return number.digits == 1 || number.digits == 2;
}

/// The Gregorian calendar followed the Julian on 15 October 1582; every fourth year before was a leap year.
int monthLength(int year, int month) {
  const bool julianLeap = year < 1582 && month == 2 && year % 4 == 0;
  return julianLeap ? 29 : daysInMonth(year, month);
}

/// Whether year, month and day name a day of the calendar; `text` is what to call it in a refusal.
Result<> checkDay(std::string_view text, int year, int month, int day) {
  if (year < 1 || year > 9999) return refuse("'{}' is not a date: years run from 1 to 9999", text);
  if (month < 1 || month > 12) return refuse("'{}' is not a date: there is no month {}", text, month);
  const int length = monthLength(year, month);
  if (day < 1 || day > length)
    return refuse("'{}' is not a date: {} {} has {} days", text, monthName(month), year, length);
  if (year == 1582 && month == 10 && day > 4 && day < 15)
    return refuse("'{}' is not a date: the day after 4 October 1582 was 15 October", text);
  return {};
}

/// "02/03/2024" and its like, with the ways to write what may have been meant.
tl::unexpected<Refusal> refuseSlashes(std::string_view text, int a, int b, int year) {
  const bool monthFirst = a >= 1 && a <= 12 && checkDay(text, year, a, b).has_value();
  const bool dayFirst = b >= 1 && b <= 12 && checkDay(text, year, b, a).has_value();
  if (monthFirst && dayFirst && a != b)
    return refuse("'{0}' could be {1} {2} or {3} {4}: write {5:04}-{6:02}-{1:02} or {5:04}-{7:02}-{3:02}",
                  text, a, monthName(b), b, monthName(a), year, b, a);
  if (monthFirst || dayFirst)
    return refuse("'{}' does not say which number is the month: write {:04}-{:02}-{:02}", text, year,
                  monthFirst ? a : b, monthFirst ? b : a);
  return refuse("'{}' is not a date; {}", text, dateShape());
}

/// The date at the front of a text; the reader is left behind it.
Result<CivilTime> readDay(std::string_view text, Reader& reader) {
  const Number first = reader.number();
  for (const char separator : {'-', '/', '.'}) {
    if (first.digits == 0 || !reader.take(separator)) continue;
    const Number second = reader.number();
    if (!isShort(second) || !reader.take(separator)) break;
    const Number third = reader.number();
    const bool yearFirst = separator != '.' && !isShort(first) && isShort(third);
    const bool yearLast = separator != '-' && isShort(first) && third.digits == 4;
    if (!yearFirst && !yearLast) break;
    if (yearLast && separator == '/') return refuseSlashes(text, first.value, second.value, third.value);
    const int year = yearFirst ? first.value : third.value;
    const int day = yearFirst ? third.value : first.value;
    if (yearFirst && first.digits == 3) break;
    if (auto checked = checkDay(text, year, second.value, day); !checked)
      return tl::make_unexpected(checked.error());
    return CivilTime{year, second.value, day};
  }
  return refuse("'{}' is not a date; {}", text, dateShape());
}

/// The time of day that the reader has come to, up to the end of the text.
Result<TimeOfDay> readTime(std::string_view text, Reader& reader) {
  const Number hour = reader.number();
  if (!isShort(hour) || !reader.take(':')) return refuse("'{}' is not a time; {}", text, timeShape());
  const Number minute = reader.number();
  Number second{0, 2};
  if (reader.take(':')) second = reader.number();
  if (minute.digits != 2 || second.digits != 2) return refuse("'{}' is not a time; {}", text, timeShape());
  if (!reader.rest().empty()) return refuse("'{}' is not a time: '{}' follows it", text, reader.rest());
  if (hour.value > 23) return refuse("'{}' is not a time: hours run from 0 to 23", text);
  if (minute.value > 59) return refuse("'{}' is not a time: minutes run from 0 to 59", text);
  if (second.value > 59) return refuse("'{}' is not a time: seconds run from 0 to 59", text);
  return TimeOfDay{hour.value, minute.value, second.value};
}

struct Typed {
  CivilTime civil;
  bool hasTime;
};

Result<Typed> readCivil(std::string_view typed) {
  const std::string_view text = trimmed(typed);
  Reader reader(text);
  auto day = readDay(text, reader);
  if (!day) return tl::make_unexpected(day.error());
  if (reader.rest().empty()) return Typed{*day, false};

  bool separated = reader.take('T') || reader.take('t');
  while (!separated && reader.take(' ')) separated = isDigit(reader.rest().front());
  if (!separated) return refuse("'{}' is not a date: '{}' follows it", text, reader.rest());
  const auto time = readTime(text, reader);
  if (!time) return tl::make_unexpected(time.error());
  day->hour = time->hour;
  day->minute = time->minute;
  day->second = time->second;
  return Typed{*day, true};
}

ParsedDate onCalendar(const Typed& typed, const Calendar& calendar) {
  const auto resolved = calendar.resolve(typed.civil);
  if (typed.hasTime) return {resolved.date, true, resolved.moved, resolved.ambiguous};
  const Date begin = calendar.dateBegin(resolved.date);
  const CivilTime found = calendar.civilTime(begin);
  // A missing midnight is no surprise to who typed a day; a missing day is.
  return {begin, false, found.day != typed.civil.day, false};
}

std::optional<Date> namedDay(std::string_view text, const Calendar& calendar, Date now) {
  if (isWord(text, "today")) return calendar.dateBegin(now);
  if (isWord(text, "yesterday")) return calendar.dateBegin(calendar.getPreviouslyDay(now));
  if (isWord(text, "tomorrow")) return calendar.dateBegin(calendar.getNextDay(now));
  return std::nullopt;
}

/// First and last day of a period without "..".
Result<ParsedPeriod> readPeriod(std::string_view text, const Calendar& calendar, Date now) {
  const auto span = [&](const CivilTime& first, const CivilTime& last) {
    const auto begin = onCalendar({first, false}, calendar);
    const auto end = onCalendar({last, false}, calendar);
    return ParsedPeriod{begin.date, calendar.dateEnd(end.date)};
  };
  if (const auto day = namedDay(text, calendar, now)) return ParsedPeriod{*day, calendar.dateEnd(*day)};

  Reader reader(text);
  const Number year = reader.number();
  const bool wholeYear = year.digits == 4 && reader.rest().empty();
  Number month{1, 2};
  if (!wholeYear && year.digits == 4 && reader.take('-')) month = reader.number();
  if (wholeYear || (year.digits == 4 && isShort(month) && reader.rest().empty())) {
    if (auto checked = checkDay(text, year.value, month.value, 1); !checked)
      return tl::make_unexpected(checked.error());
    const int lastMonth = wholeYear ? 12 : month.value;
    const int lastDay = monthLength(year.value, lastMonth);
    return span({year.value, month.value, 1}, {year.value, lastMonth, lastDay});
  }

  const auto typed = readCivil(text);
  if (!typed) return tl::make_unexpected(typed.error());
  if (typed->hasTime) return refuse("'{}' is not a period: leave the time of day out", text);
  return span(typed->civil, typed->civil);
}

}  // namespace

Result<TimeOfDay> parseTimeOfDay(std::string_view text) {
  Reader reader(trimmed(text));
  return readTime(trimmed(text), reader);
}

Result<CivilTime> parseCivil(std::string_view text) {
  return readCivil(text).map([](const Typed& typed) { return typed.civil; });
}

Result<ParsedDate> parseDate(std::string_view typed, const Calendar& calendar, Date now) {
  const std::string_view text = trimmed(typed);
  if (text.empty()) return refuse("the date is empty; {}", dateShape());
  if (const auto day = namedDay(text, calendar, now)) return ParsedDate{*day};
  if (text.find_first_of("-/.") == std::string_view::npos && text.find(':') != std::string_view::npos) {
    const auto time = parseTimeOfDay(text);
    if (!time) return tl::make_unexpected(time.error());
    CivilTime civil = calendar.civilTime(now);
    civil.hour = time->hour;
    civil.minute = time->minute;
    civil.second = time->second;
    return onCalendar({civil, true}, calendar);
  }
  return readCivil(text).map([&](const Typed& civil) { return onCalendar(civil, calendar); });
}

Result<ParsedPeriod> parsePeriod(std::string_view typed, const Calendar& calendar, Date now) {
  const std::string_view text = trimmed(typed);
  if (text.empty()) return refuse("the period is empty; write it as 2024, 2024-03 or 2024-03-01..2024-05-15");
  const auto dots = text.find("..");
  if (dots == std::string_view::npos) return readPeriod(text, calendar, now);

  const std::string_view before = trimmed(text.substr(0, dots));
  const std::string_view after = trimmed(text.substr(dots + 2));
  if (before.empty() || after.empty())
    return before.empty() ? refuse("'{}' leaves out where it begins", text)
                          : refuse("'{}' leaves out where it ends", text);
  auto from = readPeriod(before, calendar, now);
  if (!from) return from;
  auto to = readPeriod(after, calendar, now);
  if (!to) return to;
  if (to->last < from->first) return refuse("'{}' ends before it begins", text);
  return ParsedPeriod{from->first, to->last};
}

}  // namespace moniva
