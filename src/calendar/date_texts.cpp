#include "calendar/date_texts.h"

#include <fmt/format.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>

#include <algorithm>

namespace moniva {
namespace {

/// The value of digits of any script: a Persian user's "۱۴۰۲" is 1402.
int numberIn(const std::string& utf8) {
  const auto text = icu::UnicodeString::fromUTF8(utf8);
  std::int64_t number = 0;
  for (std::int32_t i = 0; i < text.length(); i = text.moveIndex32(i, 1)) {
    const std::int32_t digit = u_charDigitValue(text.char32At(i));
    if (digit >= 0) number = std::min<std::int64_t>(number * 10 + digit, INT32_MAX);
  }
  return static_cast<int>(number);
}

}  // namespace

int integerDateOfTimeZone(const Calendar& calendar, Date date, std::string_view zone) {
  return numberIn(calendar.formats().write(DateForm::dayNumber, date, zone));
}

int integerOfYearMonth(const Calendar& calendar, Date date) {
  return numberIn(calendar.formats().write(DateForm::monthNumber, date));
}

std::string stringOfDateForCSV(const Calendar& calendar, Date date) {
  return calendar.formats().write(DateForm::csvDay, date);
}

std::string stringOfDatetime(const Calendar& calendar, Date date, std::string_view zone) {
  return calendar.formats().write(DateForm::dayAndTime, date, zone);
}

std::string stringOfTimeZone(const Calendar& calendar, Date date, std::string_view zone) {
  return calendar.formats().write(DateForm::zoneName, date, zone);
}

std::string stringOfDateTinyStyle(const Calendar& calendar, Date date) {
  return calendar.formats().write(DateForm::tinyDay, date);
}

std::string stringOfMonthName(const Calendar& calendar, Date date) {
  return calendar.formats().write(DateForm::monthName, date);
}

std::string stringOfWeekdayName(const Calendar& calendar, Date date) {
  return calendar.formats().write(DateForm::weekdayName, date);
}

std::string stringOfDateShortStyle(const Calendar& calendar, Date date) {
  return calendar.formats().write(DateForm::shortDay, date);
}

std::string stringOfDateMediumStyle(const Calendar& calendar, Date date) {
  return calendar.formats().write(DateForm::mediumDay, date);
}

std::string stringOfDateLongStyle(const Calendar& calendar, Date date) {
  return calendar.formats().write(DateForm::longDay, date);
}

std::string stringOfDateFullStyle(const Calendar& calendar, Date date) {
  return calendar.formats().write(DateForm::fullDay, date);
}

std::string stringOfDatetimeShortStyle(const Calendar& calendar, Date date) {
  return calendar.formats().write(DateForm::shortDayAndTime, date);
}

std::string stringOfDatetimeMediumStyle(const Calendar& calendar, Date date) {
  return calendar.formats().write(DateForm::mediumDayAndTime, date);
}

std::string stringOfDatetimeLongStyle(const Calendar& calendar, Date date) {
  return calendar.formats().write(DateForm::longDayAndTime, date);
}

std::string stringOfDatetimeFullStyle(const Calendar& calendar, Date date) {
  return calendar.formats().write(DateForm::fullDayAndTime, date);
}

std::string dateUuid(Date now, std::uint32_t random32) {
  std::string text = fmt::format("{:.6f}{}", now.secondsSince1970, static_cast<std::int32_t>(random32));
  std::erase(text, '.');
  return text;
}

}  // namespace moniva
