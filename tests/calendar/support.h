#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "calendar/calendar.h"
#include "calendar/date_texts.h"
#include "calendar/parse_date.h"

namespace moniva::test {

inline std::shared_ptr<const Calendar> calendarOf(const std::string& zone,
                                                  const std::string& locale = "en_US") {
  auto made = Calendar::make(zone, locale);
  if (!made) throw std::invalid_argument(made.error().why);
  return *made;
}

/// A date typed in a table of cases; the first of two where the clock is set back.
inline Date at(const Calendar& calendar, const std::string& text) {
  const auto parsed = parseDate(text, calendar, {});
  if (!parsed) throw std::invalid_argument(parsed.error().why);
  return parsed->date;
}

/// The date as tables of cases write it.
inline std::string text(const Calendar& calendar, Date date) {
  return stringOfDatetime(calendar, date);
}
inline std::string dayText(const Calendar& calendar, Date date) {
  return text(calendar, date).substr(0, 10);
}

}  // namespace moniva::test
