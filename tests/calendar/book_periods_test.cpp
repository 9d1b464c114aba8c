#include "calendar/book_periods.h"

#include <gtest/gtest.h>
#include <rapidcheck.h>

#include <limits>

#include "support.h"

namespace moniva {
namespace {

using test::at;
using test::calendarOf;
using test::dayText;
using test::text;

struct SpanCase {
  const char* why;
  int startsOn;
  const char* date;
  const char* first;
  const char* last;
};

TEST(BookPeriods, HoldDatesInMonths) {
  const SpanCase cases[] = {
      {"the calendar month", 1, "2024-02-29", "2024-02-01", "2024-02-29"},
      {"before the 25th", 25, "2024-03-10", "2024-02-25", "2024-03-24"},
      {"after the 25th", 25, "2024-03-26", "2024-03-25", "2024-04-24"},
      {"on the 25th", 25, "2024-03-25", "2024-03-25", "2024-04-24"},
      {"the day before it", 25, "2024-03-24", "2024-02-25", "2024-03-24"},
      {"back over the new year", 25, "2024-01-10", "2023-12-25", "2024-01-24"},
      {"from the month before", -25, "2024-03-10", "2024-02-25", "2024-03-24"},
      {"the same span whatever its name", -25, "2024-03-26", "2024-03-25", "2024-04-24"},
      {"January begins in December", -25, "2024-01-10", "2023-12-25", "2024-01-24"},
      {"31 February is 2 March and steps back", 31, "2024-02-15", "2024-02-02", "2024-03-01"},
      {"in a plain year it is 3 March", 31, "2023-02-15", "2023-02-03", "2023-03-02"},
      {"31 January ends on the clamped day", 31, "2024-01-31", "2024-01-31", "2024-02-29"},
      {"30 days: 31 April is 1 May, back to 1 April", 31, "2024-04-30", "2024-04-01", "2024-04-30"},
      {"31 March, back to 29 February, on to 29 March", 31, "2024-03-30", "2024-03-29", "2024-04-28"},
      {"not anchored anew: the 31st begins its own", 31, "2024-03-31", "2024-03-31", "2024-04-30"},
      {"day 0 is the last of the month before", 0, "2024-03-10", "2024-02-29", "2024-03-28"},
      {"day 40 counts on into the next month", 40, "2024-03-10", "2024-03-09", "2024-04-08"},
  };
  const auto calendar = calendarOf("Europe/Berlin");
  for (const SpanCase& c : cases) {
    const BookPeriods book(*calendar, {.monthStartsOn = c.startsOn}, {});
    for (const char* time : {" 00:00", " 23:59:59"}) {
      const Date date = at(*calendar, c.date + std::string(time));
      EXPECT_EQ(dayText(*calendar, book.firstDateOfMonth(date)), c.first) << c.why << ": " << c.startsOn;
      EXPECT_EQ(dayText(*calendar, book.lastDateOfMonth(date)), c.last) << c.why << ": " << c.startsOn;
    }
  }
}

TEST(BookPeriods, HoldDatesInYears) {
  struct Case {
    const char* why;
    PeriodStarts starts;
    const char* date;
    const char* first;
    const char* last;
  };
  const Case cases[] = {
      {"the calendar year", {}, "2024-02-29", "2024-01-01", "2024-12-31"},
      {"from April, after it", {1, 1, 4}, "2024-04-01", "2024-04-01", "2025-03-31"},
      {"from April, before it", {1, 1, 4}, "2024-03-31", "2023-04-01", "2024-03-31"},
      {"from the April before", {1, 1, -4}, "2024-06-01", "2024-04-01", "2025-03-31"},
      {"a day inside the month", {1, 25, 4}, "2024-04-24", "2023-04-25", "2024-04-24"},
      {"a month that begins in the one before", {1, -25, 4}, "2024-03-25", "2024-03-25", "2025-03-24"},
      {"January that begins in December", {1, -25, 1}, "2024-12-25", "2024-12-25", "2025-12-24"},
      {"... and the days before", {1, -25, 1}, "2024-12-24", "2023-12-25", "2024-12-24"},
      {"no month at all", {1, 1, 0}, "2024-06-01", "2023-12-01", "2024-11-30"},
      {"no month and a day of the month before", {1, -25, 0}, "2024-06-01", "2023-12-25", "2024-12-24"},
      {"a leap day drifts to the 28th", {1, 29, 2}, "2025-03-01", "2025-03-01", "2026-02-28"},
  };
  const auto calendar = calendarOf("America/New_York");
  for (const Case& c : cases) {
    const BookPeriods book(*calendar, c.starts, {});
    const Date date = at(*calendar, c.date + std::string(" 12:00"));
    EXPECT_EQ(dayText(*calendar, book.firstDateOfYear(date)), c.first) << c.why;
    EXPECT_EQ(dayText(*calendar, book.lastDateOfYear(date)), c.last) << c.why;
  }
}

TEST(BookPeriods, HoldDatesInWeeks) {
  const SpanCase cases[] = {
      {"a Sunday in weeks from Monday", 2, "2024-03-03 12:00", "2024-02-26 12:00:00", "2024-03-03 12:00:00"},
      {"a Monday is its own first day", 2, "2024-03-04 00:00", "2024-03-04 00:00:00", "2024-03-10 00:00:00"},
      {"a Sunday in weeks from Sunday", 1, "2024-03-03 12:00", "2024-03-03 12:00:00", "2024-03-09 12:00:00"},
      {"a Friday in weeks from Saturday", 7, "2024-03-08 12:00", "2024-03-02 12:00:00",
       "2024-03-08 12:00:00"},
      {"8 is Sunday again", 8, "2024-03-05 12:00", "2024-03-03 12:00:00", "2024-03-09 12:00:00"},
      {"0 is Saturday", 0, "2024-03-08 12:00", "2024-03-02 12:00:00", "2024-03-08 12:00:00"},
      {"fixed seconds over the change of the clock", 2, "2024-10-27 12:00", "2024-10-21 13:00:00",
       "2024-10-27 13:00:00"},
  };
  const auto calendar = calendarOf("Europe/Berlin");
  for (const SpanCase& c : cases) {
    const BookPeriods book(*calendar, {.weekStartsOn = c.startsOn}, at(*calendar, c.date));
    EXPECT_EQ(text(*calendar, book.firstDateOfWeek()), c.first) << c.why;
    EXPECT_EQ(text(*calendar, book.lastDateOfWeek()), c.last) << c.why;
  }
}

TEST(BookPeriods, AreCalledByYearAndMonth) {
  struct Case {
    const char* why;
    PeriodStarts starts;
    const char* firstOf2024;
    const char* firstOfMarch;
    const char* firstOfJanuary;
    const char* date;
    int fiscalYear, fiscalMonth, yearOfMonth;
  };
  const Case cases[] = {
      {"plain", {1, 1, 1}, "2024-01-01", "2024-03-01", "2024-01-01", "2024-06-15", 2024, 6, 2024},
      {"from April", {1, 1, 4}, "2024-04-01", "2024-03-01", "2024-01-01", "2024-03-31", 2023, 3, 2024},
      {"from the April before",
       {1, 1, -4},
       "2023-04-01",
       "2024-03-01",
       "2024-01-01",
       "2024-06-15",
       2025,
       6,
       2024},
      {"before that April",
       {1, 1, -4},
       "2023-04-01",
       "2024-03-01",
       "2024-01-01",
       "2024-03-31",
       2024,
       3,
       2024},
      {"months from the 25th",
       {1, 25, 1},
       "2024-01-25",
       "2024-03-25",
       "2024-01-25",
       "2024-01-10",
       2023,
       12,
       2023},
      {"months from -25", {1, -25, 1}, "2023-12-25", "2024-02-25", "2023-12-25", "2023-12-28", 2024, 1, 2024},
      {"the day before", {1, -25, 1}, "2023-12-25", "2024-02-25", "2023-12-25", "2023-12-24", 2023, 12, 2023},
      {"year and month both early",
       {1, -25, -4},
       "2023-03-25",
       "2024-02-25",
       "2023-12-25",
       "2024-03-25",
       2025,
       4,
       2024},
      {"January of the year before, early",
       {1, -25, -1},
       "2022-12-25",
       "2024-02-25",
       "2023-12-25",
       "2023-06-15",
       2024,
       6,
       2023},
      {"two years after its first day",
       {1, -25, -1},
       "2022-12-25",
       "2024-02-25",
       "2023-12-25",
       "2022-12-28",
       2024,
       1,
       2023},
      {"no month", {1, 1, 0}, "2023-12-01", "2024-03-01", "2024-01-01", "2023-12-15", 2024, 12, 2023},
  };
  const auto calendar = calendarOf("Europe/Berlin");
  for (const Case& c : cases) {
    const Date date = at(*calendar, c.date + std::string(" 23:00"));
    const BookPeriods book(*calendar, c.starts, date);
    EXPECT_EQ(dayText(*calendar, book.firstDateOfFiscalYear(2024)), c.firstOf2024) << c.why;
    EXPECT_EQ(book.lastDateOfFiscalYear(2023), calendar->getPreviouslyDay(book.firstDateOfFiscalYear(2024)))
        << c.why;
    EXPECT_EQ(dayText(*calendar, book.firstDateOfFiscalYear(2024, 3)), c.firstOfMarch) << c.why;
    EXPECT_EQ(dayText(*calendar, book.firstDateOfFiscalYear(2024, 1)), c.firstOfJanuary) << c.why;
    EXPECT_EQ(book.getFiscalYear(), c.fiscalYear) << c.why;
    EXPECT_EQ(book.getYearForFiscalPeriod(), c.fiscalYear) << c.why;
    EXPECT_EQ(book.getFiscalMonth(), c.fiscalMonth) << c.why;
    EXPECT_EQ(book.getMonthForFiscalPeriod(), c.fiscalMonth) << c.why;
    EXPECT_EQ(book.getYearForFiscalMonth(), c.yearOfMonth) << c.why;
  }
}

TEST(BookPeriods, GiveADayBetweenTwoYearsToTheEarlier) {
  const auto calendar = calendarOf("Europe/Berlin");
  const BookPeriods book(*calendar, {1, 29, 2}, at(*calendar, "2025-02-28"));
  EXPECT_EQ(dayText(*calendar, book.lastDateOfFiscalYear(2024)), "2025-02-27");
  EXPECT_EQ(dayText(*calendar, book.firstDateOfFiscalYear(2025)), "2025-03-01");
  EXPECT_EQ(book.getFiscalYear(), 2024);
}

TEST(BookPeriods, AreCalledAsInTheUsersCalendar) {
  struct Case {
    const char* why;
    const char* locale;
    PeriodStarts starts;
    const char* date;
    int fiscalYear, fiscalMonth, yearOfMonth;
  };
  const Case cases[] = {
      {"Heisei, before today's era", "ja_JP@calendar=japanese", {}, "2018-06-15", 30, 6, 30},
      {"Showa, two eras ago", "ja_JP@calendar=japanese", {}, "1985-06-15", 60, 6, 60},
      {"the day an era begins", "ja_JP@calendar=japanese", {}, "2019-05-01", 1, 5, 1},
      {"the day before", "ja_JP@calendar=japanese", {}, "2019-04-30", 31, 4, 31},
      {"a month from the 25th", "ja_JP@calendar=japanese", {1, 25, 4}, "2018-06-15", 30, 5, 30},
      {"back into a year of two eras", "ja_JP@calendar=japanese", {1, 1, 4}, "2020-02-01", 1, 2, 2},
      {"back over an era's first year", "ja_JP@calendar=japanese", {1, 1, 4}, "1989-02-01", 63, 2, 1},
      {"on into the next era", "ja_JP@calendar=japanese", {1, 1, -4}, "2019-04-10", 2, 4, 31},
      {"the sixty years' count", "zh_CN@calendar=chinese", {}, "2024-03-15", 41, 2, 41},
      {"the leap month has its number twice", "zh_CN@calendar=chinese", {}, "2023-04-01", 40, 2, 40},
      {"the first year of sixty, and the last", "zh_CN@calendar=chinese", {1, 1, 4}, "1984-03-01", 60, 1, 1},
      {"months from the 25th", "zh_CN@calendar=chinese", {1, 25, 1}, "2024-03-15", 41, 1, 41},
      {"Korean", "ko_KR@calendar=dangi", {1, 25, 1}, "2024-03-15", 41, 1, 41},
      {"Elul is the 13th month", "he_IL@calendar=hebrew", {}, "2024-09-28", 5784, 13, 5784},
      {"1 Tishri is before the 25th of it",
       "he_IL@calendar=hebrew",
       {1, 25, 1},
       "2024-10-04",
       5784,
       13,
       5784},
      {"25 Elul", "he_IL@calendar=hebrew", {1, 25, 1}, "2024-09-28", 5784, 13, 5784},
      {"25 Elul is early Tishri", "he_IL@calendar=hebrew", {1, -25, 1}, "2024-09-28", 5785, 1, 5785},
      {"a plain year has no sixth month", "he_IL@calendar=hebrew", {1, 25, 1}, "2025-03-01", 5785, 5, 5785},
      {"Persian months from the 25th", "fa_IR", {1, 25, 1}, "2024-03-25", 1402, 12, 1402},
      {"Thai years", "th_TH", {1, 1, 10}, "2024-03-25", 2566, 3, 2567},
  };
  for (const Case& c : cases) {
    const auto calendar = calendarOf("Europe/Berlin", c.locale);
    const BookPeriods book(*calendar, c.starts, at(*calendar, "2024-06-15"));
    const Date date = at(*calendar, c.date);
    EXPECT_EQ(book.getFiscalYear(date), c.fiscalYear) << c.why;
    EXPECT_EQ(book.getFiscalMonth(date), c.fiscalMonth) << c.why;
    EXPECT_EQ(book.getYearForFiscalMonth(date), c.yearOfMonth) << c.why;
    EXPECT_EQ(calendar->month(book.namesakeOfMonth(date)), c.fiscalMonth) << c.why;
  }
}

TEST(BookPeriods, LeadOnInEveryCalendar) {
  for (const char* locale :
       {"zh_CN@calendar=chinese", "ko_KR@calendar=dangi", "he_IL@calendar=hebrew", "am_ET@calendar=ethiopic",
        "ar_SA@calendar=islamic-umalqura", "ja_JP@calendar=japanese"}) {
    const auto calendar = calendarOf("UTC", locale);
    for (const int day : {1, 25, -25}) {
      const BookPeriods book(*calendar, {1, day, day == 1 ? 1 : 4}, at(*calendar, "2024-06-15"));
      // Chinese and Korean years have a leap month in 1987 and 2017, after one that is longer than usual.
      for (Date start = at(*calendar, "1987-01-01"); start < at(*calendar, "1988-06-01");) {
        ASSERT_GE(book.lastDateOfMonth(start), start) << locale << " " << day;
        ASSERT_GE(book.lastDateOfYear(start), start) << locale << " " << day;
        ASSERT_LE(book.firstDateOfYear(start), start) << locale << " " << day;
        const Date next = calendar->getNextDay(book.lastDateOfMonth(start));
        if (day == 1) {
          ASSERT_EQ(book.firstDateOfMonth(next), next) << locale;
        }
        start = next;
      }
    }
  }
}

TEST(BookPeriods, AreFoundByTheLabelsOfTheUsersCalendar) {
  struct Case {
    const char* why;
    const char* locale;
    int year;
    const char* first;
    const char* firstOfSecondMonth;
  };
  for (const Case& c : {
           Case{"Buddhist", "th_TH", 2567, "2024-01-01", "2024-02-01"},
           Case{"Persian", "fa_IR", 1403, "2024-03-20", "2024-04-20"},
           Case{"the era of today", "ja_JP@calendar=japanese", 6, "2024-01-01", "2024-02-01"},
           Case{"the sixty years of today", "zh_CN@calendar=chinese", 41, "2024-02-10", "2024-03-10"},
       }) {
    const auto calendar = calendarOf("Europe/Berlin", c.locale);
    const BookPeriods book(*calendar, {}, at(*calendar, "2024-06-15"));
    EXPECT_EQ(book.firstDateOfFiscalYear(c.year), at(*calendar, c.first)) << c.why;
    EXPECT_EQ(book.firstDateOfFiscalYear(c.year, 2), at(*calendar, c.firstOfSecondMonth)) << c.why;
    EXPECT_EQ(book.firstDateOfCalendarYear(c.year, 2), at(*calendar, c.firstOfSecondMonth)) << c.why;
  }
}

TEST(BookPeriods, KnowTheCurrentOnesAndTheDueDate) {
  const auto calendar = calendarOf("Europe/Berlin");
  const BookPeriods book(*calendar, {.monthStartsOn = 25, .yearStartsOn = 4},
                         at(*calendar, "2024-03-10 12:00"));
  EXPECT_TRUE(book.isCurrentMonth() && book.isCurrentYear());
  EXPECT_TRUE(book.isCurrentMonth(at(*calendar, "2024-03-24 23:59:59")));
  EXPECT_FALSE(book.isCurrentMonth(at(*calendar, "2024-03-25")));
  EXPECT_FALSE(book.isCurrentMonth(at(*calendar, "2024-02-24 23:59:59")));
  EXPECT_TRUE(book.isCurrentYear(at(*calendar, "2023-04-25")));
  EXPECT_FALSE(book.isCurrentYear(at(*calendar, "2024-04-25")));
  EXPECT_EQ(dayText(*calendar, book.dueDate()), "2024-04-13") << "24 March and twenty days";
  EXPECT_EQ(dayText(*calendar, book.firstDateOfCalendarYear(2024, 5)), "2024-05-01");
}

TEST(BookPeriods, AreDueAfterTheirLastDay) {
  struct Case {
    const char* why;
    int monthStartsOn;
    int dueDay;
    const char* date;
    const char* due;
  };
  const auto calendar = calendarOf("Europe/Berlin");
  for (const Case& c : {
           Case{"twenty days, over a change of the clock", 1, 0, "2024-03-10", "2024-04-20"},
           Case{"the due day of the next month", 1, 15, "2024-02-29", "2024-03-15"},
           Case{"on the closing day it is too soon", 1, 31, "2024-01-10", "2024-02-29"},
           Case{"a short month is due on its last day", 1, 31, "2023-12-31", "2024-01-31"},
           Case{"later in the month of the closing", 25, 28, "2024-02-25", "2024-03-28"},
           Case{"the day after the closing", -25, 25, "2024-03-24", "2024-03-25"},
           Case{"over the new year", 25, 10, "2023-12-24", "2024-01-10"},
           Case{"two months on one day: 28 February closes", 29, 29, "2023-02-10", "2023-03-29"},
           Case{"... and so does 27 March", 29, 29, "2023-03-20", "2023-03-29"},
       }) {
    const BookPeriods book(*calendar, {.monthStartsOn = c.monthStartsOn, .dueDay = c.dueDay}, {});
    EXPECT_EQ(dayText(*calendar, book.dueDate(at(*calendar, c.date + std::string(" 23:59:59")))), c.due)
        << c.why;
  }
}

TEST(BookPeriods, AreWrittenWithTheirBounds) {
  const auto english = calendarOf("Europe/Berlin");
  const BookPeriods book(*english, {.weekStartsOn = 2, .monthStartsOn = -25, .yearStartsOn = 4},
                         at(*english, "2024-03-10 12:00"));
  EXPECT_EQ(book.getWeekPeriodShort(), "Mar, 04 -- Mar, 10");
  EXPECT_EQ(book.getMonthPeriodShort(), "Feb, 25 -- Mar, 24");
  EXPECT_EQ(book.getMonthPeriodMiddle(), "2/25/24 -- 3/24/24");
  EXPECT_EQ(book.getYearPeriodMiddle(), "3/25/23 -- 3/24/24");
  EXPECT_EQ(book.getFisalYearPeriodMiddle(2024), "Mar 25, 2024 -- Mar 24, 2025");
  EXPECT_EQ(book.getFisalMonthPeriodMiddle(2024, 1), "Dec 25, 2023 -- Jan 24, 2024");
}

/// Walks from 1990 to 2100: each period's last day is the one before the next period's first, and the same
/// period is found from its first and its last second.
template <class First, class Last>
void checkTiles(const Calendar& calendar, First first, Last last) {
  const Date end = at(calendar, "2100-01-01");
  Date begin = first(at(calendar, "1990-01-01 12:00"));
  while (begin < end) {
    const Date close = calendar.dateEnd(last(begin));
    RC_ASSERT(first(begin) == begin);
    RC_ASSERT(first(close) == begin);
    RC_ASSERT(calendar.dateEnd(last(close)) == close);
    const Date next = first(close.plusSeconds(1));
    RC_ASSERT(next == close.plusSeconds(1));
    begin = next;
  }
}

TEST(BookPeriods, TileTheYearsFrom1990To2100) {
  const std::vector<std::string> zones = {"Europe/Berlin", "America/Sao_Paulo", "Asia/Beirut", "Pacific/Apia",
                                          "Australia/Lord_Howe"};
  EXPECT_TRUE(rc::check("months and years leave no gap and do not overlap", [&] {
    const auto calendar = calendarOf(*rc::gen::elementOf(zones));
    const int day = *rc::gen::inRange(1, 29) * *rc::gen::element(1, -1);
    const int month = *rc::gen::inRange(1, 13) * *rc::gen::element(1, -1);
    const BookPeriods book(*calendar, {1, day, month}, {});
    checkTiles(
        *calendar, [&](Date date) { return book.firstDateOfMonth(date); },
        [&](Date date) { return book.lastDateOfMonth(date); });
    checkTiles(
        *calendar, [&](Date date) { return book.firstDateOfYear(date); },
        [&](Date date) { return book.lastDateOfYear(date); });
  }));
  EXPECT_TRUE(rc::check("in every calendar a month holds its dates and its name leads back to it", [&] {
    const auto calendar =
        calendarOf("Europe/Berlin",
                   *rc::gen::element<std::string>("fa_IR", "th_TH", "he_IL@calendar=hebrew",
                                                  "zh_TW@calendar=roc", "ar_SA@calendar=islamic-civil"));
    const Date now{static_cast<double>(*rc::gen::inRange<std::int64_t>(0, 4'000'000'000))};
    const int day = *rc::gen::inRange(1, 29) * *rc::gen::element(1, -1);
    const BookPeriods book(*calendar, {1, day, *rc::gen::inRange(-12, 13)}, now);
    RC_ASSERT(book.firstDateOfMonth() <= now && now <= calendar->dateEnd(book.lastDateOfMonth()));
    RC_ASSERT(book.firstDateOfYear() <= now && now <= calendar->dateEnd(book.lastDateOfYear()));
    RC_ASSERT(book.firstDateOfFiscalYear(book.getYearForFiscalMonth(), book.getFiscalMonth()) ==
              book.firstDateOfMonth());
  }));
  EXPECT_TRUE(rc::check("seen from noon, so do weeks", [&] {
    // Not Apia: its week of six days has no seven to tile with.
    const auto calendar = calendarOf(*rc::gen::element<std::string>("Europe/Berlin", "Asia/Beirut"));
    const int weekday = *rc::gen::inRange(1, 8);
    const BookPeriods book(*calendar, {.weekStartsOn = weekday}, {});
    const auto first = [&](Date date) { return calendar->dateBegin(book.firstDateOfWeek(date)); };
    Date noon = at(*calendar, "2023-01-01 12:00");
    for (int i = 0; i < 800; ++i, noon = calendar->getNextDay(noon)) {
      const Date begin = first(noon);
      RC_ASSERT(calendar->weekday(begin) == weekday);
      RC_ASSERT(begin <= noon && noon <= calendar->dateEnd(book.lastDateOfWeek(noon)));
      if (calendar->weekday(noon) != weekday) RC_ASSERT(begin == first(calendar->getPreviouslyDay(noon)));
    }
  }));
  EXPECT_TRUE(rc::check("a month's name leads back to the month", [&] {
    const auto calendar = calendarOf(*rc::gen::elementOf(zones));
    const int day = *rc::gen::inRange(1, 29) * *rc::gen::element(1, -1);
    const BookPeriods book(*calendar, {1, day, *rc::gen::inRange(-12, 13)},
                           {static_cast<double>(*rc::gen::inRange<std::int64_t>(0, 4'000'000'000))});
    RC_ASSERT(book.firstDateOfFiscalYear(book.getYearForFiscalMonth(), book.getFiscalMonth()) ==
              book.firstDateOfMonth());
    const Date fiscal = book.firstDateOfFiscalYear(book.getFiscalYear());
    RC_ASSERT(book.getFiscalYear(fiscal) == book.getFiscalYear());
  }));
}

TEST(BookPeriods, EndBeforeADayTheZoneSkipped) {
  const auto apia = calendarOf("Pacific/Apia");
  const BookPeriods book(*apia, {1, 31, 12}, at(*apia, "2011-06-15"));
  EXPECT_EQ(dayText(*apia, book.lastDateOfYear()), "2011-12-29") << "30 December 2011 never was";
  EXPECT_EQ(dayText(*apia, book.firstDateOfYear(at(*apia, "2012-01-01"))), "2011-12-31");
}

TEST(BookPeriods, BearAnyNumber) {
  constexpr int kLeast = std::numeric_limits<int>::min();
  constexpr int kMost = std::numeric_limits<int>::max();
  const auto calendar = calendarOf("Europe/Berlin");
  const Date now = at(*calendar, "2024-03-10 12:00");
  for (const int number : {kLeast, -10'000, -32, 0, 32, 400, kMost}) {
    for (const PeriodStarts starts : {PeriodStarts{number, 1, 1}, PeriodStarts{1, number, 1},
                                      PeriodStarts{1, 1, number}, PeriodStarts{number, number, number}}) {
      const BookPeriods book(*calendar, starts, now);
      EXPECT_LE(book.firstDateOfMonth(), now) << number;
      EXPECT_GE(calendar->dateEnd(book.lastDateOfMonth()), now) << number;
      EXPECT_LE(book.firstDateOfYear(), now) << number;
      EXPECT_GE(calendar->dateEnd(book.lastDateOfYear()), now) << number;
      EXPECT_LE(book.firstDateOfWeek(), now) << number;
      EXPECT_LE(book.firstDateOfFiscalYear(book.getFiscalYear()), now) << number;
      EXPECT_LT(book.firstDateOfFiscalYear(kLeast), book.lastDateOfFiscalYear(kMost)) << number;
      EXPECT_LE(book.firstDateOfFiscalYear(kMost, kLeast), book.firstDateOfFiscalYear(kMost, kMost))
          << number;
    }
  }
}

}  // namespace
}  // namespace moniva
