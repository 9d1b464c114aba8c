#include "calendar/calendar.h"

#include <gtest/gtest.h>
#include <rapidcheck.h>
#include <unicode/basictz.h>
#include <unicode/gregocal.h>
#include <unicode/tztrans.h>

#include <array>
#include <cmath>
#include <limits>
#include <thread>
#include <vector>

#include "support.h"

namespace moniva {
namespace {

using test::at;
using test::calendarOf;
using test::dayText;
using test::text;

const std::array<std::string, 9> kZones = {"Europe/Berlin",       "America/New_York", "America/Sao_Paulo",
                                           "Asia/Beirut",         "Africa/Cairo",     "Pacific/Apia",
                                           "Australia/Lord_Howe", "Asia/Kathmandu",   "America/St_Johns"};

using Operation = Date (Calendar::*)(Date) const;

TEST(Calendar, MakesNeighbouringDays) {
  struct Case {
    const char* why;
    const char* zone;
    Operation operation;
    const char* from;
    const char* expected;
  };
  const Case cases[] = {
      {"the beginning drops the time", "Europe/Berlin", &Calendar::dateBegin, "2024-02-29 14:30",
       "2024-02-29 00:00:00"},
      {"the same under its other name", "Europe/Berlin", &Calendar::dateWithoutTime, "2024-02-29 23:59:59",
       "2024-02-29 00:00:00"},
      {"a day ends a second before midnight", "Europe/Berlin", &Calendar::dateEnd, "2024-02-29 00:00",
       "2024-02-29 23:59:59"},
      {"midnight is skipped", "America/Sao_Paulo", &Calendar::dateBegin, "2018-11-04 14:30",
       "2018-11-04 01:00:00"},
      {"midnight is skipped", "Asia/Beirut", &Calendar::dateBegin, "2022-03-27 14:30", "2022-03-27 01:00:00"},
      {"midnight is skipped", "Africa/Cairo", &Calendar::dateBegin, "2014-05-16 14:30",
       "2014-05-16 01:00:00"},
      {"a quarter past the full hour from UTC", "Asia/Kathmandu", &Calendar::dateBegin, "2024-04-26 03:00",
       "2024-04-26 00:00:00"},
      {"the day after a change keeps its time", "Europe/Berlin", &Calendar::getNextDay, "2024-03-30 12:00",
       "2024-03-31 12:00:00"},
      {"into a skipped hour", "Europe/Berlin", &Calendar::getNextDay, "2024-03-30 02:30",
       "2024-03-31 03:30:00"},
      {"into a skipped half hour", "Australia/Lord_Howe", &Calendar::getNextDay, "2024-10-05 02:10",
       "2024-10-06 02:40:00"},
      {"back into a skipped hour", "America/New_York", &Calendar::getPreviouslyDay, "2024-03-11 02:30",
       "2024-03-10 03:30:00"},
      {"over a day the zone never had", "Pacific/Apia", &Calendar::getNextDay, "2011-12-29 12:00",
       "2011-12-31 12:00:00"},
      {"back over it", "Pacific/Apia", &Calendar::getPreviouslyDay, "2011-12-31 12:00",
       "2011-12-29 12:00:00"},
      {"the next begin skips it too", "Pacific/Apia", &Calendar::oneDayAfter, "2011-12-29 12:00",
       "2011-12-31 00:00:00"},
      {"a week", "Europe/Berlin", &Calendar::getNextWeekDay, "2024-02-27 08:00", "2024-03-05 08:00:00"},
      {"a week back", "Europe/Berlin", &Calendar::getPreviouslyWeekDay, "2024-03-05 08:00",
       "2024-02-27 08:00:00"},
      {"31 January and a month, leap year", "Europe/Berlin", &Calendar::getNextMonthDay, "2024-01-31 08:00",
       "2024-02-29 08:00:00"},
      {"31 January and a month, plain year", "Europe/Berlin", &Calendar::getNextMonthDay, "2023-01-31 08:00",
       "2023-02-28 08:00:00"},
      {"a month back over the new year", "Europe/Berlin", &Calendar::getPreviouslyMonthDay, "2024-01-15",
       "2023-12-15 00:00:00"},
      {"two months", "Europe/Berlin", &Calendar::getNextBimonthDay, "2023-12-31", "2024-02-29 00:00:00"},
      {"a quarter", "Europe/Berlin", &Calendar::getNextQuarterDay, "2023-11-30", "2024-02-29 00:00:00"},
      {"half a year", "Europe/Berlin", &Calendar::getNextHalfyearDay, "2023-08-31", "2024-02-29 00:00:00"},
      {"a year from a leap day", "Europe/Berlin", &Calendar::getNextYearDay, "2024-02-29",
       "2025-02-28 00:00:00"},
      {"a year back from one", "Europe/Berlin", &Calendar::getPreviouslyYearDay, "2024-02-29",
       "2023-02-28 00:00:00"},
      {"the end of the next month", "Europe/Berlin", &Calendar::getNextMonthEndDay, "2024-01-31 08:00",
       "2024-02-29 08:00:00"},
      {"a month up to the day", "Europe/Berlin", &Calendar::getPreviouslyMonthBeginDay, "2024-03-15",
       "2024-02-16 00:00:00"},
      {"a clamped month gets no day more", "Europe/Berlin", &Calendar::getPreviouslyMonthBeginDay,
       "2023-03-31", "2023-02-28 00:00:00"},
      {"first of the month", "Europe/Berlin", &Calendar::firstDayOfMonth, "2024-02-29 08:00",
       "2024-02-01 08:00:00"},
      {"last of the month", "Europe/Berlin", &Calendar::lastDayOfMonth, "2023-02-01 08:00",
       "2023-02-28 08:00:00"},
      {"tomorrow over a year's end", "Europe/Berlin", &Calendar::midnightTomorrow, "2023-12-31 23:00",
       "2024-01-01 00:00:00"},
      {"month", "Europe/Berlin", &Calendar::firstDayOfCurrentMonth, "2024-02-29 08:00",
       "2024-02-01 00:00:00"},
      {"month before", "Europe/Berlin", &Calendar::firstDayOfPreviousMonth, "2024-01-31",
       "2023-12-01 00:00:00"},
      {"month after", "Europe/Berlin", &Calendar::firstDayOfNextMonth, "2023-12-31", "2024-01-01 00:00:00"},
      {"quarter", "Europe/Berlin", &Calendar::firstDayOfCurrentQuarter, "2024-06-30", "2024-04-01 00:00:00"},
      {"quarter before", "Europe/Berlin", &Calendar::firstDayOfPreviousQuarter, "2024-03-31",
       "2023-10-01 00:00:00"},
      {"quarter after", "Europe/Berlin", &Calendar::firstDayOfNextQuarter, "2023-10-01",
       "2024-01-01 00:00:00"},
      {"year", "Europe/Berlin", &Calendar::firstDayOfCurrentYear, "2024-12-31", "2024-01-01 00:00:00"},
      {"year before", "Europe/Berlin", &Calendar::firstDayOfPreviousYear, "2024-12-31",
       "2023-01-01 00:00:00"},
      {"year after", "Europe/Berlin", &Calendar::firstDayOfNextYear, "2024-12-31", "2025-01-01 00:00:00"},
  };
  for (const Case& c : cases) {
    const auto calendar = calendarOf(c.zone);
    EXPECT_EQ(text(*calendar, ((*calendar).*c.operation)(at(*calendar, c.from))), c.expected)
        << c.why << ": " << c.zone << " " << c.from;
  }
}

TEST(Calendar, ReadsTheParts) {
  const auto calendar = calendarOf("Europe/Berlin", "de_DE");
  const Date leap = at(*calendar, "2024-12-30 23:30");
  EXPECT_EQ(calendar->day(leap), 30);
  EXPECT_EQ(calendar->month(leap), 12);
  EXPECT_EQ(calendar->year(leap), 2024);
  EXPECT_EQ(calendar->weekday(leap), 2) << "a Monday";
  EXPECT_EQ(calendar->dayOfYear(leap), 365) << "of 366";
  EXPECT_EQ(calendar->weekOfYear(leap), 1) << "German weeks: it has four days in 2025";
  EXPECT_EQ(calendarOf("Europe/Berlin")->weekOfYear(at(*calendar, "2024-12-28")), 52) << "American weeks";
  EXPECT_EQ(calendar->numberOfDaysInMonth(at(*calendar, "1900-02-10")), 28);
  EXPECT_EQ(calendar->numberOfDaysInMonth(at(*calendar, "2000-02-10")), 29);
  EXPECT_TRUE(calendar->isLastDayOfMonth(at(*calendar, "2023-02-28 23:59:59")));
  EXPECT_FALSE(calendar->isLastDayOfMonth(at(*calendar, "2024-02-28 23:59:59")));
  EXPECT_EQ(dayText(*calendar, calendar->dateWithYear(2023, 14, 0)), "2024-01-31") << "parts count on";
  EXPECT_EQ(dayText(*calendar, calendar->dateFromDay(31, 4, 2024)), "2024-05-01");
  EXPECT_EQ(
      text(*calendar, calendar->dateWithTime(at(*calendar, "2024-03-31"), at(*calendar, "2024-03-30 02:30"))),
      "2024-03-31 03:30:00");
}

TEST(Calendar, ComparesByDayMonthAndYear) {
  const auto berlin = calendarOf("Europe/Berlin");
  const Date evening = at(*berlin, "2024-02-29 23:30");
  const Date morning = at(*berlin, "2024-02-29 00:00");
  const Date march = at(*berlin, "2024-03-01 00:00");
  EXPECT_TRUE(berlin->isSameDay(evening, morning));
  EXPECT_FALSE(berlin->isBeforeDay(morning, evening)) << "the time of day plays no part";
  EXPECT_TRUE(Calendar::isBefore(morning, evening)) << "here it does";
  EXPECT_TRUE(Calendar::compareToDate(evening, morning) > 0);
  EXPECT_TRUE(berlin->isAfterDay(march, evening));
  EXPECT_FALSE(berlin->isSameDay(evening, march));
  EXPECT_TRUE(calendarOf("America/New_York")->isSameDay(evening, march)) << "the day is the zone's";
  EXPECT_TRUE(berlin->compareMonthToDate(evening, march) < 0);
  EXPECT_TRUE(berlin->isSameMonth(evening, morning));
  EXPECT_FALSE(berlin->isSameMonth(evening, at(*berlin, "2023-02-28"))) << "a year apart";
  EXPECT_FALSE(berlin->isSameYear(evening, at(*berlin, "2023-12-31 23:59:59")));
  EXPECT_TRUE(berlin->isHistory(evening, march) && !berlin->isHistory(morning, evening));
  EXPECT_TRUE(berlin->isAfterToday(march, evening) && !berlin->isAfterToday(evening, morning));
  EXPECT_TRUE(berlin->isToday(morning, evening) && berlin->isNotToday(march, evening));
}

TEST(Calendar, KeepsRepeatedHoursInsideDaysAndArithmetic) {
  const auto berlin = calendarOf("Europe/Berlin");
  const Date first = at(*berlin, "2024-10-27 02:30");
  const Date second = first.plusSeconds(3600);
  ASSERT_EQ(text(*berlin, second), "2024-10-27 02:30:00");
  EXPECT_EQ(berlin->dateWithMonth(first, 0), first);
  EXPECT_EQ(berlin->dateWithYear(second, 0), second) << "the second 02:30 stays the second";
  EXPECT_EQ(berlin->dateWithDay(at(*berlin, "2024-10-26 02:30"), 1), first) << "from summer time";
  EXPECT_EQ(berlin->dateWithDay(at(*berlin, "2024-10-28 02:30"), -1), second) << "from standard time";
  EXPECT_EQ(berlin->dateWithTime(first, second), first) << "built from parts: the first";

  const auto saoPaulo = calendarOf("America/Sao_Paulo");
  const Date evening = at(*saoPaulo, "2018-02-17 12:00");
  EXPECT_EQ(saoPaulo->dateEnd(evening).secondsSince1970 - saoPaulo->dateBegin(evening).secondsSince1970,
            25 * 3600 - 1)
      << "23:00 to 24:00 comes twice and both belong to the day";
}

TEST(Calendar, TilesTimeWithDays) {
  EXPECT_TRUE(rc::check("a day ends a second before the next begins, and holds what falls on it", [] {
    const auto calendar = calendarOf(kZones.at(*rc::gen::inRange<std::size_t>(0, kZones.size() - 1)));
    const Date date{static_cast<double>(*rc::gen::inRange<std::int64_t>(-2'300'000'000, 8'000'000'000))};
    const Date begin = calendar->dateBegin(date);
    const Date end = calendar->dateEnd(date);
    RC_ASSERT(begin <= date && date <= end);
    RC_ASSERT(calendar->dateBegin(end) == begin);
    RC_ASSERT(calendar->oneDayAfter(date) == end.plusSeconds(1));
    RC_ASSERT(calendar->dateWithDay(date, 0) == date);
    RC_ASSERT(calendar->dateWithMonth(date, 0) == date);
  }));
}

TEST(Calendar, CountsLikeIcu) {
  for (const std::string& name : kZones) {
    const auto calendar = calendarOf(name);
    UErrorCode status = U_ZERO_ERROR;
    std::unique_ptr<icu::TimeZone> zone(icu::TimeZone::createTimeZone(name.c_str()));
    const auto& basic = dynamic_cast<const icu::BasicTimeZone&>(*zone);
    icu::GregorianCalendar icu(*zone, status);
    ASSERT_TRUE(U_SUCCESS(status));

    const auto checkAt = [&](std::int64_t seconds, int months) {
      const Date date{static_cast<double>(seconds)};
      icu.setTime(date.secondsSince1970 * 1000, status);
      const CivilTime civil = calendar->civilTime(date);
      const CivilTime expected{icu.get(UCAL_YEAR, status),   icu.get(UCAL_MONTH, status) + 1,
                               icu.get(UCAL_DATE, status),   icu.get(UCAL_HOUR_OF_DAY, status),
                               icu.get(UCAL_MINUTE, status), icu.get(UCAL_SECOND, status)};
      ASSERT_EQ(civil, expected) << name << " " << seconds;
      ASSERT_EQ(calendar->weekday(date), icu.get(UCAL_DAY_OF_WEEK, status)) << name << " " << seconds;
      ASSERT_EQ(calendar->dayOfYear(date), icu.get(UCAL_DAY_OF_YEAR, status)) << name << " " << seconds;

      // ICU takes the last of two times where a calendar here keeps its offset or takes the first.
      const auto resolved = calendar->resolve(civil);
      if (!resolved.ambiguous) {
        ASSERT_EQ(resolved.date, date) << name << " " << seconds;
      }
      const Date moved = calendar->dateWithMonth(date, months);
      if (calendar->resolve(calendar->civilTime(moved)).ambiguous) return;
      icu.add(UCAL_MONTH, months, status);
      ASSERT_EQ(moved.secondsSince1970 * 1000, icu.getTime(status))
          << name << " " << seconds << " + " << months;
    };

    const auto months = [](std::uint64_t state) { return static_cast<int>(state >> 33 & 127) - 64; };
    std::uint64_t state = 20'240'229;
    for (int i = 0; i < 4000; ++i) {
      state = state * 6'364'136'223'846'793'005U + 1'442'695'040'888'963'407U;
      // From 1583, before any zone had rules, to 2260, beyond the table of changes.
      checkAt(static_cast<std::int64_t>(state >> 20) % 21'300'000'000 - 12'200'000'000, months(state));
    }
    // Around each change, where mistakes live.
    icu::TimeZoneTransition change;
    for (UDate t = -3e12; basic.getNextTransition(t, false, change) && change.getTime() < 7.5e12;) {
      t = change.getTime();
      for (const int around : {-7200, -1, 0, 1, 5400})
        checkAt(static_cast<std::int64_t>(t / 1000) + around, 0);
    }
  }
}

TEST(Calendar, FollowsTheLocalesCalendar) {
  struct Case {
    const char* why;
    const char* locale;
    int year, month, day;
    const char* plusMonth;
    const char* firstOfYear;
  };
  const Case cases[] = {
      {"Gregorian", "de-DE", 2024, 3, 20, "2024-04-20", "2024-01-01"},
      {"Persian new year", "fa_IR", 1403, 1, 1, "2024-04-20", "2024-03-20"},
      {"the same by keyword", "en-u-ca-persian", 1403, 1, 1, "2024-04-20", "2024-03-20"},
      {"Gregorian by keyword", "fa_IR@calendar=gregorian", 2024, 3, 20, "2024-04-20", "2024-01-01"},
      {"Buddhist years", "th_TH", 2567, 3, 20, "2024-04-20", "2024-01-01"},
      {"Japanese era", "ja_JP@calendar=japanese", 6, 3, 20, "2024-04-20", "2024-01-01"},
      {"Hebrew leap year", "he@calendar=hebrew", 5784, 7, 10, "2024-04-18", "2023-09-16"},
  };
  for (const Case& c : cases) {
    const auto calendar = calendarOf("Asia/Tehran", c.locale);
    const auto plain = calendarOf("Asia/Tehran");
    const Date date = at(*calendar, "2024-03-20");
    EXPECT_EQ(calendar->year(date), c.year) << c.why;
    EXPECT_EQ(calendar->month(date), c.month) << c.why;
    EXPECT_EQ(calendar->day(date), c.day) << c.why;
    EXPECT_EQ(dayText(*plain, calendar->dateWithMonth(date, 1)), c.plusMonth) << c.why;
    EXPECT_EQ(dayText(*plain, calendar->firstDayOfCurrentYear(date)), c.firstOfYear) << c.why;
    EXPECT_EQ(calendar->dateWithYear(c.year, c.month, c.day), date) << c.why;
  }
  // An era that has ended: its year 30 is not the present era's.
  const auto japanese = calendarOf("Asia/Tokyo", "ja_JP@calendar=japanese");
  const Date heisei = at(*japanese, "2018-06-15");
  EXPECT_EQ(japanese->civilTime(japanese->firstDayOfCurrentQuarter(heisei)), (CivilTime{2018, 4, 1}));
}

TEST(Calendar, RefusesUnknownZonesAndLocales) {
  struct Case {
    const char* zone;
    const char* locale;
    const char* said;
  };
  const Case cases[] = {
      {"Europe/Berlni", "en", "did you mean 'Europe/Berlin'?"},
      {"new york", "en", "did you mean 'America/New_York'?"},
      {"Middle/Earth", "en", "'Middle/Earth' is not a known time zone"},
      {"", "en", "'' is not a known time zone"},
      {"UTC", "xx_YY", "no such language"},
      {"UTC", "", "it is empty"},
      {"UTC", "de_XQ", "no such country"},
      {"UTC", "zh-Xxxx-CN", "no such script"},
      {"UTC", "fa_IR@calendar=lunar", "no such calendar"},
      {"UTC", "en-US-", "not written like one"},
      {"UTC", "../../etc", "not written like one"},
  };
  for (const Case& c : cases) {
    const auto made = Calendar::make(c.zone, c.locale);
    ASSERT_FALSE(made) << c.zone << " " << c.locale;
    EXPECT_NE(made.error().why.find(c.said), std::string::npos) << made.error().why;
  }
  EXPECT_EQ(calendarOf("UTC", "en_US.UTF-8")->locale(), "en_US");
  EXPECT_EQ(calendarOf("UTC", "zh-Hans-CN")->locale(), "zh_Hans_CN");
  EXPECT_EQ(calendarOf("UTC", "C.UTF-8")->locale(), "en_US_POSIX");
}

TEST(Calendar, BearsDatesFromDamagedStores) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  const auto gregorian = calendarOf("Europe/Berlin");
  const auto persian = calendarOf("Europe/Berlin", "fa_IR");
  for (const auto& calendar : {gregorian, persian}) {
    for (const double seconds : {std::nan(""), kInfinity, -kInfinity, 1e300, -1e18, 9e13}) {
      const Date date{seconds};
      EXPECT_TRUE(std::isfinite(calendar->dateBegin(date).secondsSince1970)) << seconds;
      EXPECT_TRUE(
          std::isfinite(calendar->dateWithMonth(date, std::numeric_limits<int>::max()).secondsSince1970));
      EXPECT_LE(calendar->firstDayOfCurrentYear(date), calendar->dateEnd(date)) << seconds;
    }
    EXPECT_TRUE(
        std::isfinite(calendar->dateWithYear(std::numeric_limits<int>::min(), -1, 99).secondsSince1970));
  }
}

TEST(Calendar, IsSharedByThreads) {
  const auto calendar = calendarOf("Europe/Berlin", "fa_IR");
  const Date date = at(*calendarOf("Europe/Berlin"), "2024-03-20 12:00");
  std::array<int, 4> wrong{};
  {
    std::vector<std::jthread> threads;
    for (int& mine : wrong) {
      threads.emplace_back([&calendar, date, &mine] {
        for (int i = 0; i < 300; ++i) {
          const Date day = calendar->dateWithDay(date, i % 29);
          if (calendar->day(day) != i % 29 + 1 || integerDateOfTimeZone(*calendar, day) != 14030101 + i % 29)
            ++mine;
        }
      });
    }
  }
  EXPECT_EQ(wrong, (std::array<int, 4>{}));
}

}  // namespace
}  // namespace moniva
