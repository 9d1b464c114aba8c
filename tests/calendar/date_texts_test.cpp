#include "calendar/date_texts.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include "calendar/day_texts.h"
#include "support.h"

namespace moniva {
namespace {

using test::at;
using test::calendarOf;

TEST(DateTexts, WritesKeysInAnyZone) {
  const auto berlin = calendarOf("Europe/Berlin");
  const Date date = at(*berlin, "2024-02-29 23:30:05");
  EXPECT_EQ(integerDateOfTimeZone(*berlin, date), 20240229);
  EXPECT_EQ(integerDateOfTimeZone(*berlin, date, "Asia/Tokyo"), 20240301);
  EXPECT_EQ(integerDateOfTimeZone(*berlin, date), 20240229) << "the other zone leaves no trace";
  EXPECT_EQ(integerDateOfTimeZone(*berlin, date, "Middle/Earth"), 20240229);
  EXPECT_EQ(integerOfYearMonth(*berlin, date), 202402);
  EXPECT_EQ(stringOfDateForCSV(*berlin, date), "2024/02/29");
  EXPECT_EQ(stringOfDatetime(*berlin, date), "2024-02-29 23:30:05");
  EXPECT_EQ(stringOfDatetime(*berlin, date, "America/New_York"), "2024-02-29 17:30:05");
  EXPECT_EQ(stringOfTimeZone(*berlin, date), "Central European Standard Time");
  EXPECT_EQ(stringOfTimeZone(*berlin, at(*berlin, "2024-07-01"), "Asia/Kathmandu"), "Nepal Time");

  const auto persian = calendarOf("Asia/Tehran", "fa_IR");
  const Date newYear = at(*persian, "2024-03-20");
  EXPECT_EQ(integerDateOfTimeZone(*persian, newYear), 14030101) << "Persian year, Persian digits";
  EXPECT_EQ(stringOfDateForCSV(*persian, newYear), "۱۴۰۳/۰۱/۰۱");
}

TEST(DateTexts, FollowsTheLocalesStyles) {
  struct Case {
    const char* locale;
    const char* tiny;
    const char* short_;
    const char* medium;
    const char* long_;
    const char* full;
  };
  const Case cases[] = {
      {"en_US", "2/29", "2/29/24", "Feb 29, 2024", "February 29, 2024", "Thursday, February 29, 2024"},
      {"de", "29.02.", "29.02.24", "29.02.2024", "29. Februar 2024", "Donnerstag, 29. Februar 2024"},
      {"fr", "29/02", "29/02/2024", "29 févr. 2024", "29 février 2024", "jeudi 29 février 2024"},
      {"zh-Hans-CN", "2/29", "2024/2/29", "2024年2月29日", "2024年2月29日", "2024年2月29日星期四"},
  };
  for (const Case& c : cases) {
    const auto calendar = calendarOf("Europe/Berlin", c.locale);
    const Date date = at(*calendar, "2024-02-29 14:30");
    EXPECT_EQ(stringOfDateTinyStyle(*calendar, date), c.tiny);
    EXPECT_EQ(stringOfDateShortStyle(*calendar, date), c.short_);
    EXPECT_EQ(stringOfDateMediumStyle(*calendar, date), c.medium);
    EXPECT_EQ(stringOfDateLongStyle(*calendar, date), c.long_);
    EXPECT_EQ(stringOfDateFullStyle(*calendar, date), c.full);
  }
  const auto german = calendarOf("Europe/Berlin", "de_DE");
  const Date date = at(*german, "2024-02-29 14:30:05");
  EXPECT_EQ(stringOfDatetimeShortStyle(*german, date), "29.02.24, 14:30");
  EXPECT_EQ(stringOfDatetimeMediumStyle(*german, date), "29.02.2024, 14:30:05");
  EXPECT_EQ(stringOfDatetimeLongStyle(*german, date), "29. Februar 2024 um 14:30:05 MEZ");
  EXPECT_EQ(stringOfDatetimeFullStyle(*german, date),
            "Donnerstag, 29. Februar 2024 um 14:30:05 Mitteleuropäische Normalzeit");
}

TEST(DateTexts, MakesUniqueTexts) {
  EXPECT_EQ(dateUuid({1709217005.25}, 42), "170921700525000042");
  EXPECT_EQ(dateUuid({1709217005.25}, 0xFFFFFFFF), "1709217005250000-1") << "the number is signed";
}

TEST(DayTexts, AreWhatEachDayWouldBeWrittenAsByItself) {
  for (const char* locale : {"en_US",
                             "de_DE",
                             "zh_CN",
                             "ja_JP",
                             "ar_EG",
                             "fa_IR",
                             "th_TH",
                             "he_IL",
                             "ca_ES",
                             "hi_IN",
                             "mn_MN",
                             "lt_LT",
                             "bg_BG",
                             "eu_ES",
                             "my_MM",
                             "vi_VN",
                             "cy_GB",
                             "ja_JP@calendar=japanese",
                             "zh_CN@calendar=chinese",
                             "he_IL@calendar=hebrew",
                             "en_US@calendar=buddhist"}) {
    const auto calendar = calendarOf("America/Sao_Paulo", locale);
    DayTexts texts(*calendar);
    // Back and forth, over the days of the Julian calendar too.
    for (const int first : {19'000, -142'000, 19'400}) {
      for (int i = 0; i < 500; ++i) {
        const std::int64_t day = first + i * 37 % 400;
        const Date date = calendar->beginOfDay(day);
        const auto at = calendar->days().parts(day);
        ASSERT_EQ(texts.dayAndWeekday(date, day, at),
                  stringOfDateMediumStyle(*calendar, date) + " " + stringOfWeekdayName(*calendar, date))
            << locale << ' ' << day;
        ASSERT_EQ(texts.monthAndYear(date, day, at),
                  fmt::format("{}, {}", stringOfMonthName(*calendar, date), at.year))
            << locale << ' ' << day;
      }
    }
  }
}

}  // namespace
}  // namespace moniva
