#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include "reports/day_stretch.h"
#include "reports/period_comparison.h"
#include "reports/transaction_report.h"
#include "storage/transaction.h"
#include "support/household.h"

namespace moniva {
namespace {

/// All figures of a summary, to the last bit, with its day and what is pending.
std::string figuresOf(const TransReportSummary& day, const Calendar& calendar) {
  std::string text = fmt::format(
      "{}: {} {}/{} {}/{} {}/{} {}/{} pending {}/{} {}/{}", calendar.dayNumber(day.beginDate), day.count,
      day.incomeCount, day.incomeAmount, day.expenseCount, day.expenseAmount, day.transferinCount,
      day.transferinAmount, day.transferoutCount, day.transferoutAmount, day.incomePendingCount,
      day.incomePendingAmount, day.expensePendingCount, day.expensePendingAmount);
  for (const auto& row : day.pendinglistArray) text += " " + row.eid;
  return text;
}

/// Around days that have no midnight, two of them, or never were, and over the end of what is read in one go.
struct Place {
  const char* zone;
  const char* from;
};
const std::vector<Place> kPlaces = {{"Europe/Berlin", "2024-03-25"},
                                    {"America/St_Johns", "2006-10-20"},
                                    {"Pacific/Apia", "2011-12-25"},
                                    {"America/Sao_Paulo", "2018-10-30"}};

RC_GTEST_PROP(DayLists, areWhatAQueryForEachDayComesToToTheLastBit, ()) {
  const Place place = *rc::gen::elementOf(kPlaces);
  Household home(place.zone);
  home.setClock("2030-01-01");
  const Date from = home.on(place.from);
  const int days = *rc::gen::element(1, 12, 12, 600);
  const Date to = home.root.calendar().dateWithDay(from, days - 1);
  const auto both = home.group("Both", {*home.cash, *home.bank});
  Transaction together(home.connection());  // for speed
  for (int n = *rc::gen::inRange(0, 120); n > 0; --n) {
    const Date when = from.plusSeconds(*rc::gen::inRange(-1, 14) * 86400.0 + *rc::gen::inRange(0, 86400) +
                                       *rc::gen::element(0.0, 0.0, 0.5));
    home.sql(
        "insert into transactions (eid, bid, type, amount, datetime, account, book, deleted, paid) values"
        " (?, 20, ?, ?, ?, ?, ?, ?, ?)",
        {home.root.newIdentifier(), *rc::gen::element(11, 12, 12, 23, 24, 33, 34),
         *rc::gen::inRange(1, 100000) / 100.0, when, *rc::gen::element(home.cash->pk, home.bank->pk),
         home.home->pk, *rc::gen::element(0, 0, 0, 1), *rc::gen::element(0, 1, 1)});
  }
  RC_ASSERT(together.commit());
  TransactionReport report(home.root);
  const bool isBook = *rc::gen::arbitrary<bool>();
  report.setMonivaAccount(isBook ? *home.home : *rc::gen::element(*home.cash, both));
  report.setTransactionType(*rc::gen::element(11, 12, 1112, 1050, 2312, 2333));
  report.setIncludePending(*rc::gen::arbitrary<bool>());
  const bool withEmpty = *rc::gen::arbitrary<bool>();
  report.setIncludeEmpty(withEmpty);
  report.setBeginDate(from);
  report.setEndDate(to);
  const auto list = report.reportByDay();
  RC_ASSERT(list.has_value());
  std::vector<std::string> found;
  for (const auto& day : list->listArray) found.push_back(figuresOf(day, home.root.calendar()));
  std::vector<std::string> expected;
  PeriodWalk walk(home.root.calendar(), BookPeriods(home.root.calendar(), {}, from), PeriodUnit::day, from,
                  to);
  while (const auto day = walk.next()) {
    const auto summary = report.getSummaryFrom(day->begin, day->end);
    RC_ASSERT(summary.has_value());
    if (!withEmpty && summary->isEmpty()) continue;
    expected.push_back(figuresOf(*summary, home.root.calendar()));
  }
  RC_ASSERT(found == expected);
}

TEST(DayStretches, knowWhichDaysAMomentIsIn) {
  struct Case {
    const char* why;
    const char* zone;
    const char* first;
    std::vector<std::pair<double, std::string>> moments;  ///< seconds after noon of the first day
  };
  constexpr double kHalfDay = 43'200;
  for (const auto& c : {
           Case{"the second that ends a day is in it, the fraction after it in none",
                "Europe/Berlin",
                "2024-02-28",
                {{kHalfDay - 1, "0"}, {kHalfDay - 0.5, ""}, {kHalfDay, "1"}, {0, "0"}}},
           Case{
               "a minute past midnight the clock goes back to the day before: its hour is in both",
               "America/St_Johns",
               "2006-10-28",
               {{kHalfDay - 1, "0"}, {kHalfDay + 30, "01"}, {kHalfDay + 3599, "01"}, {kHalfDay + 3600, "1"}}},
           Case{"a day that was left out",
                "Pacific/Apia",
                "2011-12-29",
                {{kHalfDay - 1, "0"}, {kHalfDay, "2"}, {kHalfDay + 86'400, "3"}}},
       }) {
    const Household home(c.zone);
    const auto& calendar = home.root.calendar();
    const Date noon = home.on(std::string(c.first) + " 12:00:00");
    DayStretch days(calendar, calendar.dayNumber(noon), calendar.dayNumber(noon) + 3);
    for (const auto& [seconds, expected] : c.moments) {
      std::string found;
      days.cut(noon.secondsSince1970 + seconds, [&](std::size_t day) { found += std::to_string(day); });
      EXPECT_EQ(found, expected) << c.why << ": " << seconds;
    }
  }
}

TEST(Comparisons, areWithThePeriodBeforeOrAYearBefore) {
  struct Case {
    const char* why;
    PeriodUnit unit;
    PeriodStarts starts;
    const char* begin;
    const char* end;
    ComparedWith with;
    const char* otherBegin;
    const char* otherEnd;
  };
  using enum ComparedWith;
  const PeriodStarts from25{.monthStartsOn = 25};
  for (const auto& c : {
           Case{"a month",
                PeriodUnit::month,
                {},
                "2024-03-01",
                "2024-03-31",
                previous,
                "2024-02-01",
                "2024-02-29"},
           Case{"cut at its beginning, so is the other",
                PeriodUnit::month,
                {},
                "2024-03-10",
                "2024-03-31",
                previous,
                "2024-02-10",
                "2024-02-29"},
           Case{"cut behind the other's end",
                PeriodUnit::month,
                {},
                "2024-03-30",
                "2024-03-30",
                previous,
                "2024-02-29",
                "2024-02-29"},
           Case{"a book month", PeriodUnit::month, from25, "2024-02-25", "2024-03-24", year, "2023-02-25",
                "2023-03-24"},
           Case{"a fiscal year",
                PeriodUnit::year,
                {.yearStartsOn = 4},
                "2024-04-01",
                "2025-03-31",
                previous,
                "2023-04-01",
                "2024-03-31"},
           Case{"a year is a year before anyway",
                PeriodUnit::year,
                {},
                "2024-01-01",
                "2024-06-30",
                year,
                "2023-01-01",
                "2023-07-01"},
           Case{"a week over a change of the clock",
                PeriodUnit::week,
                {.weekStartsOn = 2},
                "2024-04-01",
                "2024-04-07",
                previous,
                "2024-03-25",
                "2024-03-31"},
           Case{"52 weeks before",
                PeriodUnit::week,
                {.weekStartsOn = 2},
                "2024-04-01",
                "2024-04-07",
                year,
                "2023-04-03",
                "2023-04-09"},
           Case{"a leap day",
                PeriodUnit::day,
                {},
                "2024-02-29",
                "2024-02-29",
                year,
                "2023-02-28",
                "2023-02-28"},
       }) {
    const Household home;
    const auto& calendar = home.root.calendar();
    const auto other = periodComparedWith(calendar, BookPeriods(calendar, c.starts, home.on("2024-06-01")),
                                          c.unit, {home.on(c.begin), home.on(c.end)}, c.with);
    EXPECT_EQ(other.begin, home.on(c.otherBegin)) << c.why;
    EXPECT_EQ(other.end, home.on(c.otherEnd)) << c.why;
  }
}

/// Keeps what it heard.
class DayListener final : public TransactionReportDelegate {
 public:
  void transactionReportQueryFinished(const TransReportSummary& summary) override {
    finished.push_back(summary);
  }
  void transactionReportQueryUpdate(const TransReportSummary& partial) override {
    parts.push_back(partial.listArray.size());
  }
  void transactionReportUpdateDailySummary(const TransReportSummary& summary) override {
    days.push_back(summary);
  }
  std::vector<TransReportSummary> finished;
  std::vector<std::size_t> parts;
  std::vector<TransReportSummary> days;
};

class DeliveredReports : public testing::Test {
 protected:
  DeliveredReports() : report(home.root) {
    report.setMonivaAccount(*home.home);
    report.setTransactionType(1112);
    report.setIncludeEmpty(true);
    report.setBeginDate(home.on("2024-01-01"));
    report.setEndDate(home.on("2024-12-31"));
    report.setDelegate(listener);
  }
  void deliver() {
    home.db.drain();
    EXPECT_FALSE(report.queryFinished());
    home.platform.mainQueue.runPending();
    EXPECT_TRUE(report.queryFinished());
  }

  Household home;
  TransactionReport report;
  std::shared_ptr<DayListener> listener = std::make_shared<DayListener>();
};

TEST_F(DeliveredReports, tellOfPartsEachTimeTheListHasDoubled) {
  report.getReportByWeek();
  deliver();
  EXPECT_EQ(listener->parts, (std::vector<std::size_t>{12, 24, 48}));
  ASSERT_EQ(listener->finished.size(), 1U);
  EXPECT_EQ(listener->finished[0].listArray.size(), 53U);
  EXPECT_FALSE(listener->finished[0].isPartial);
  EXPECT_EQ(report.resultSummary().listArray.size(), 53U);
}

TEST_F(DeliveredReports, stopAtTheNextPeriodAndSaySo) {
  const std::atomic<bool> stop = true;
  for (const PeriodUnit unit : {PeriodUnit::week, PeriodUnit::day}) {
    report.setStopFlag(&stop);
    const auto stopped = report.reportBy(unit);
    ASSERT_TRUE(stopped);
    EXPECT_TRUE(stopped->isPartial);
    EXPECT_TRUE(stopped->listArray.empty());
    report.setStopFlag(nullptr);
    EXPECT_FALSE(report.reportBy(unit)->isPartial);
  }
}

TEST_F(DeliveredReports, ofADayHaveItsRecords) {
  home.spend("Late", 2, home.on("2024-02-28 23:59:59"));
  const auto early = home.earn("Early", 1, home.on("2024-02-28 00:00:00")).eid;
  home.spend("Next", 4, home.on("2024-02-29 00:00:00"));
  home.set(home.spend("Pending", 8, home.on("2024-02-28")), "paid", 0);
  report.setIncludePending(true);
  report.getDailySummary(home.on("2024-02-28 12:00:00"));
  deliver();
  ASSERT_EQ(listener->days.size(), 1U);
  const auto& day = listener->days[0];
  EXPECT_EQ(fmt::format("{} {}-{}-{} {}/{} {}", day.title, day.year, day.month, day.day, day.incomeAmount,
                        day.expenseAmount, day.expensePendingAmount),
            "Feb 28, 2024 Wednesday 2024-2-28 1/2 8");
  ASSERT_EQ(day.transactions.size(), 2U);
  EXPECT_EQ(day.transactions[0].eid, early);
  EXPECT_EQ(day.transactions[1].categoryString, "Late");
  ASSERT_EQ(day.pendinglistArray.size(), 1U);
  EXPECT_EQ(day.pendinglistArray[0].categoryString, "Pending");
}

}  // namespace
}  // namespace moniva
