#include "calendar/parse_date.h"

#include <gtest/gtest.h>
#include <rapidcheck.h>

#include "support.h"

namespace moniva {
namespace {

using test::at;
using test::calendarOf;
using test::text;

TEST(ParseDate, TakesWhatPeopleType) {
  const auto berlin = calendarOf("Europe/Berlin");
  const Date now = at(*berlin, "2024-03-01 09:15:30");
  struct Case {
    const char* typed;
    const char* expected;
    bool hasTime, moved, ambiguous;
  };
  const Case cases[] = {
      {"2024-02-29", "2024-02-29 00:00:00", false, false, false},
      {"  2024/2/9\r\n", "2024-02-09 00:00:00", false, false, false},
      {"29.02.2024", "2024-02-29 00:00:00", false, false, false},
      {"1.3.2024 8:05", "2024-03-01 08:05:00", true, false, false},
      {"2024-02-29 14:30", "2024-02-29 14:30:00", true, false, false},
      {"2024-02-29T14:30:05", "2024-02-29 14:30:05", true, false, false},
      {"2024-02-29   00:00", "2024-02-29 00:00:00", true, false, false},
      {"14:30", "2024-03-01 14:30:00", true, false, false},
      {"today", "2024-03-01 00:00:00", false, false, false},
      {"Yesterday", "2024-02-29 00:00:00", false, false, false},
      {"TOMORROW", "2024-03-02 00:00:00", false, false, false},
      {"2024-03-31 02:30", "2024-03-31 03:30:00", true, true, false},
      {"2024-03-31 03:00", "2024-03-31 03:00:00", true, false, false},
      {"2024-10-27 02:30", "2024-10-27 02:30:00", true, false, true},
      {"2024-10-27 03:00", "2024-10-27 03:00:00", true, false, false},
      {"9999-12-31 23:59:59", "9999-12-31 23:59:59", true, false, false},
      {"0001-01-01", "0001-01-01 00:00:00", false, false, false},
      {"1500-02-29", "1500-02-29 00:00:00", false, false, false},
  };
  for (const Case& c : cases) {
    const auto parsed = parseDate(c.typed, *berlin, now);
    ASSERT_TRUE(parsed) << parsed.error().why;
    EXPECT_EQ(text(*berlin, parsed->date), c.expected) << c.typed;
    EXPECT_EQ(parsed->hasTime, c.hasTime) << c.typed;
    EXPECT_EQ(parsed->movedByClockChange, c.moved) << c.typed;
    EXPECT_EQ(parsed->ambiguous, c.ambiguous) << c.typed;
  }
}

TEST(ParseDate, SaysWhenADayWasSkipped) {
  const auto apia = calendarOf("Pacific/Apia");
  const auto day = parseDate("2011-12-30", *apia, {});
  ASSERT_TRUE(day);
  EXPECT_TRUE(day->movedByClockChange);
  EXPECT_EQ(text(*apia, day->date), "2011-12-31 00:00:00");

  const auto midnight = parseDate("2018-11-04", *calendarOf("America/Sao_Paulo"), {});
  ASSERT_TRUE(midnight);
  EXPECT_FALSE(midnight->movedByClockChange) << "nobody typed the midnight that is missing";
}

TEST(ParseDate, RefusesTheRestAndSaysWhy) {
  struct Case {
    const char* typed;
    const char* said;
  };
  const Case cases[] = {
      {"2023-02-29", "'2023-02-29' is not a date: February 2023 has 28 days"},
      {"1900-02-29", "February 1900 has 28 days"},
      {"31.04.2024", "April 2024 has 30 days"},
      {"2024-13-01", "there is no month 13"},
      {"2024-00-01", "there is no month 0"},
      {"2024-01-00", "January 2024 has 31 days"},
      {"1582-10-10", "the day after 4 October 1582 was 15 October"},
      {"0000-01-01", "years run from 1 to 9999"},
      {"10000-01-01", "years run from 1 to 9999"},
      {"24-02-29", "write it as year-month-day"},
      {"2024", "write it as year-month-day"},
      {"2024-02", "write it as year-month-day"},
      {"2024-02/29", "write it as year-month-day"},
      {"2024-02-029", "write it as year-month-day"},
      {"999999999999999999999-01-01", "write it as year-month-day"},
      {"someday", "'someday' is not a date"},
      {" ", "the date is empty"},
      {"2024-02-29x", "'x' follows it"},
      {"2024-02-29 14:30 Z", "' Z' follows it"},
      {"2024-02-29 25:00", "hours run from 0 to 23"},
      {"24:00", "hours run from 0 to 23"},
      {"14:60", "minutes run from 0 to 59"},
      {"14:30:60", "seconds run from 0 to 59"},
      {"14:3", "write it as hours:minutes"},
      {"14:30:", "write it as hours:minutes"},
      {"02/03/2024", "could be 2 March or 3 February: write 2024-03-02 or 2024-02-03"},
      {"12/25/2024", "does not say which number is the month: write 2024-12-25"},
      {"25/12/2024", "does not say which number is the month: write 2024-12-25"},
      {"25/13/2024", "'25/13/2024' is not a date"},
  };
  const auto berlin = calendarOf("Europe/Berlin");
  for (const Case& c : cases) {
    const auto parsed = parseDate(c.typed, *berlin, {});
    ASSERT_FALSE(parsed) << c.typed;
    EXPECT_NE(parsed.error().why.find(c.said), std::string::npos) << parsed.error().why;
  }
}

TEST(ParseDate, ReadsBackWhatIsWritten) {
  const auto zones = {"Europe/Berlin", "America/Sao_Paulo", "Pacific/Apia", "Australia/Lord_Howe"};
  EXPECT_TRUE(rc::check("a written date is read as the same instant, or as the first of two", [&] {
    const auto calendar =
        calendarOf(*rc::gen::elementOf(std::vector<std::string>(zones.begin(), zones.end())));
    const Date date{static_cast<double>(*rc::gen::inRange<std::int64_t>(-62'000'000'000, 250'000'000'000))};
    const auto parsed = parseDate(text(*calendar, date), *calendar, {});
    RC_ASSERT(parsed.has_value());
    RC_ASSERT(!parsed->movedByClockChange);
    RC_ASSERT(parsed->date == date || (parsed->ambiguous && parsed->date < date));
  }));
  EXPECT_TRUE(rc::check("no text makes it fall over", [&] {
    const auto calendar = calendarOf("Europe/Berlin");
    const auto typed = *rc::gen::container<std::string>(rc::gen::elementOf(std::string("0123459-/.: Tx")));
    const auto parsed = parseDate(typed, *calendar, {});
    const auto period = parsePeriod(typed, *calendar, {});
    RC_ASSERT(parsed.has_value() || !parsed.error().why.empty());
    RC_ASSERT(!period.has_value() || period->first < period->last);
  }));
}

TEST(ParsePeriod, TakesYearsMonthsDaysAndRanges) {
  const auto berlin = calendarOf("Europe/Berlin");
  const Date now = at(*berlin, "2024-03-01 09:15");
  struct Case {
    const char* typed;
    const char* first;
    const char* last;
  };
  const Case cases[] = {
      {"2024", "2024-01-01 00:00:00", "2024-12-31 23:59:59"},
      {"2024-02", "2024-02-01 00:00:00", "2024-02-29 23:59:59"},
      {"2024-03-05", "2024-03-05 00:00:00", "2024-03-05 23:59:59"},
      {"today", "2024-03-01 00:00:00", "2024-03-01 23:59:59"},
      {"2024-03-01..2024-05-15", "2024-03-01 00:00:00", "2024-05-15 23:59:59"},
      {"2023 .. 2024-02", "2023-01-01 00:00:00", "2024-02-29 23:59:59"},
      {"29.02.2024..today", "2024-02-29 00:00:00", "2024-03-01 23:59:59"},
  };
  for (const Case& c : cases) {
    const auto period = parsePeriod(c.typed, *berlin, now);
    ASSERT_TRUE(period) << period.error().why;
    EXPECT_EQ(text(*berlin, period->first), c.first) << c.typed;
    EXPECT_EQ(text(*berlin, period->last), c.last) << c.typed;
  }
  const std::pair<const char*, const char*> refused[] = {
      {"", "the period is empty"},
      {"2024..", "leaves out where it ends"},
      {"..2024", "leaves out where it begins"},
      {"2024-05..2024-03", "ends before it begins"},
      {"2024-13", "there is no month 13"},
      {"2023-02-29", "February 2023 has 28 days"},
      {"2024-03-05 14:30", "leave the time of day out"},
      {"0000", "years run from 1 to 9999"},
      {"2024..2025..2026", "is not a date"},
  };
  for (const auto& [typed, said] : refused) {
    const auto period = parsePeriod(typed, *berlin, now);
    ASSERT_FALSE(period) << typed;
    EXPECT_NE(period.error().why.find(said), std::string::npos) << period.error().why;
  }
}

TEST(ParseCivil, ReadsDateAndTimeApart) {
  EXPECT_EQ(parseCivil("2024-02-29 14:30").value(), (CivilTime{2024, 2, 29, 14, 30, 0}));
  const auto time = parseTimeOfDay(" 7:05:09 ");
  ASSERT_TRUE(time);
  EXPECT_EQ(time->hour * 3600 + time->minute * 60 + time->second, 25'509);
  EXPECT_FALSE(parseTimeOfDay("7:05:09 am"));
}

}  // namespace
}  // namespace moniva
