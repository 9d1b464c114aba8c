#include <gtest/gtest.h>

#include "recurrence/series_story.h"
#include "recurrence/series_view.h"

namespace moniva {
namespace {

TEST(Occurrences, comeOnTheDaysOfTheirRuleUntilTheEnd) {
  struct Case {
    const char* why;
    const char* rule;
    const char* begins;
    const char* ends;
    const char* now;
    const char* days;
    const char* state;
  };
  for (const auto& [why, rule, begins, ends, now, days, state] : {
           Case{"the 31st comes back", "Monthly", "2024-01-31 10:00:00", "", "2024-05-31",
                "20240131 20240229 20240331 20240430 20240531", "0 "},
           Case{"leap days alone", "Yearly", "2020-02-29", "", "2024-03-01",
                "20200229 20210228 20220228 20230228 20240229", "0 "},
           Case{"the last day counts as a whole", "Weekly", "2024-03-04 23:00:00", "2024-03-18", "2024-03-25",
                "20240304 20240311 20240318", "1 stopRepeat by Date"},
           Case{"over before it is next due", "Monthly", "2024-01-15", "2024-02-14", "2024-01-20", "20240115",
                "1 stopRepeat by Date"},
           Case{"not over on the day before", "Daily", "2024-01-15", "2024-01-17", "2024-01-16",
                "20240115 20240116", "0 "},
           Case{"nothing before its day", "Daily", "2024-03-10", "", "2024-03-09", "", "0 "},
       }) {
    SCOPED_TRACE(why);
    SeriesStory store;
    store.setClock("2020-01-01");
    auto spend = store.rent(rule, begins);
    if (*ends != '\0') spend.repeatEndDate = store.on(ends);
    const auto seed = store.recorded(spend);
    if (*ends != '\0') {
      // Older programs kept the day alone.
      ASSERT_TRUE(
          store.sql("update transactions set repeat_end_date = ? where eid = ? and repeat_end_date = ?",
                    {spend.repeatEndDate, seed, store.on(std::string(ends) + " 23:59:59")}));
      EXPECT_EQ(store.connection().changes(), 1);
    }
    store.catchUp(now);
    EXPECT_EQ(store.days(seed), days);
    EXPECT_EQ(store.stateOf(seed), state);
    EXPECT_EQ(store.unsound(), "");
  }
}

TEST(Occurrences, ofSeriesLeftAloneForLongComeOnceEach) {
  SeriesStory store;
  constexpr int kSeries = 200;
  constexpr std::array kSteps = {1, 7, 14, 0, 0, 0, 0, 0};
  constexpr std::array kMonths = {0, 0, 0, 1, 2, 3, 6, 12};
  store.setClock("2023-01-01");
  std::vector<std::string> seeds;
  ASSERT_TRUE(atomically(store.root, [&](Connection&) -> Result<> {
    for (int i = 0; i < kSeries; ++i) {
      const auto rule = kRepeatRules.at(static_cast<std::size_t>(i) % kRepeatRules.size());
      seeds.push_back(store.seed(store.rent(rule, fmt::format("2024-01-{:02}", i % 31 + 1))));
    }
    return {};
  }));
  const auto all = store.catchUp("2025-02-04 12:00:00");
  const Calendar& calendar = *store.platform.calendar;
  int expected = 0;
  for (std::size_t i = 0; i < seeds.size(); ++i) {
    const Date first = store.on(fmt::format("2024-01-{:02}", i % 31 + 1));
    std::vector<int> days;
    for (int n = 0;; ++n) {
      const auto rule = i % kRepeatRules.size();
      const Date due = kSteps[rule] > 0 ? calendar.dateWithDay(first, n * kSteps[rule])
                                        : calendar.dateWithMonth(first, n * kMonths[rule]);
      if (due > store.root.now()) break;
      days.push_back(integerDateOfTimeZone(calendar, due));
    }
    expected += static_cast<int>(days.size());
    ASSERT_EQ(store.days(seeds[i]), fmt::format("{}", fmt::join(days, " "))) << i;
  }
  EXPECT_EQ(all.made, expected);
  EXPECT_EQ(all.series, kSeries);
  EXPECT_EQ(store.unsound(), "");
  const auto writes = store.connection().totalChanges();
  EXPECT_EQ(store.catchUp("2025-02-04 23:59:59").made, 0);
  EXPECT_EQ(store.connection().totalChanges(), writes) << "nothing is due";
  const auto again = updateRecurringTransactionsForAll(store.root);
  ASSERT_TRUE(again);
  EXPECT_EQ(again->made, 0) << "nothing is missing";
}

// Days of 23 and 25 hours, those that begin after midnight, and one that the zone skipped.
TEST(Occurrences, ofEveryDayAreOneADay) {
  struct Case {
    const char* zone;
    int year;
    int days;
  };
  for (const auto& [zone, year, days] :
       {Case{"Europe/Berlin", 2024, 366}, Case{"America/New_York", 2023, 365},
        Case{"Australia/Lord_Howe", 2023, 365}, Case{"America/Sao_Paulo", 2017, 365},
        Case{"Asia/Beirut", 2022, 365}, Case{"Pacific/Apia", 2011, 364}}) {
    for (const auto* time : {"00:00:00", "02:30:00", "23:59:59"}) {
      SCOPED_TRACE(fmt::format("{} {}", zone, time));
      SeriesStory store(zone);
      store.setClock(fmt::format("{}-01-01", year - 1));
      const auto seed = store.seed(store.rent("Daily", fmt::format("{}-01-01 {}", year, time)));
      for (const auto* now : {"04-07 12:00:00", "08-01 00:00:00", "12-31 23:00:00"}) {
        store.catchUp(fmt::format("{}-{}", year, now));
      }
      EXPECT_EQ(store.number("select count(*) from transactions where repeat_seed = ?", {seed}), days);
      EXPECT_EQ(store.number("select count(distinct sday) from transactions where repeat_seed = ?", {seed}),
                days);
    }
  }
}

TEST(Occurrences, thatAPersonDeletedOrMovedDoNotComeBack) {
  SeriesStory store;
  store.setClock("2024-01-05");
  const auto seed = store.recorded(store.rent("Daily", "2024-01-01"));
  const auto madeFor = [&](const std::string& day) {
    return *Spend::spendFromEID(store.root,
                                occurrenceIdentifier(*store.platform.calendar, seed, store.on(day)));
  };
  ASSERT_TRUE(madeFor("2024-01-02").delete_());
  auto moved = madeFor("2024-01-03");
  ASSERT_TRUE(moved.updateDate(store.on("2023-12-24 18:00:00")));
  EXPECT_EQ(dayMadeFor(seed, moved.eid), store.platform.calendar->dayNumber(store.on("2024-01-03")));
  EXPECT_EQ(dayMadeFor("another", moved.eid), std::nullopt);
  ASSERT_TRUE(store.sql("update transactions set eid = 'of an older program' where deleted = 1"));
  // What a repair removed is missing; its identifier is taken.
  ASSERT_TRUE(store.sql("update transactions set deleted = 3 where eid = ?", {madeFor("2024-01-04").eid}));
  ASSERT_TRUE(updateRecurringTransactionsForAll(store.root));
  EXPECT_EQ(store.days(seed), "20231224 20240101 20240104 20240105");
  EXPECT_EQ(store.days(seed, "deleted = 1"), "20240102");
  const auto fresh = store.rows(
      "select eid from transactions where repeat_seed = ? and deleted = 0 and"
      " datetime = ?",
      {seed, store.on("2024-01-04")});
  EXPECT_EQ(dayMadeFor(seed, fresh), std::nullopt);
  // Moved to the day of another one that is still to come.
  auto late = madeFor("2024-01-05");
  ASSERT_TRUE(late.updateDate(store.on("2024-01-06 18:00:00")));
  EXPECT_EQ(store.catchUp("2024-01-07").made, 2);
  EXPECT_EQ(store.days(seed), "20231224 20240101 20240104 20240106 20240106 20240107");
}

TEST(Occurrences, areTheSameOnEveryDevice) {
  SeriesStory one;
  one.setClock("2024-01-01");
  one.seed(one.rent("Daily", "2024-01-10 12:00:00"));
  auto payment = one.rent("Weekly", "2024-01-10 03:10:00");
  payment.bid = kPaymentRow;
  payment.book.clear();
  one.seed(payment);
  auto transfer = one.move(5, *one.bank, *one.cash, one.on("2024-01-01"));
  transfer.repeat = "Monthly";
  transfer.datetime = one.on("2024-01-31 01:00:00");
  transfer.timeZone = "Europe/Berlin";
  ASSERT_TRUE(transfer.addRepeatSeed());
  ASSERT_TRUE(one.connection().checkpoint());
  const TemporaryFolder folder;
  std::filesystem::copy(one.dataFile(), folder / one.dataFile().filename().string());
  Device other("America/New_York", folder.path(), 2);
  other.open();
  other.setClock(one.on("2024-03-31 18:00:00"));
  ASSERT_TRUE(updateRecurringTransactionsWithFuture(other.root));
  EXPECT_GT(one.catchUp("2024-03-31 18:00:00").made, 80);
  constexpr auto kMade =
      "select eid || transferEID || sday || repeat_seed from transactions where repeat_seed != '' order by 1";
  EXPECT_EQ(one.rows(kMade), other.rows(kMade));
}

TEST(Occurrences, comeWholeOrNotAtAll) {
  SeriesStory store;
  store.setClock("2024-01-01");
  auto unnamed = store.rent("Daily", "2024-01-10", 13);
  unnamed.note = " ";
  const auto bad = store.seed(unnamed);
  const auto good = store.seed(store.rent("Daily", "2024-01-10"));
  ASSERT_TRUE(
      store.sql("create temp trigger torn before insert on transactions when new.amount = 13 and"
                " new.sday = 20240112 begin select raise(abort, 'torn'); end"));
  const auto before =
      store.rows("select json_array(datetime, editDate) from transactions where eid = ?", {bad});
  store.setClock("2024-01-20");
  const auto all = updateRecurringTransactionsWithFuture(store.root);
  ASSERT_TRUE(all);
  EXPECT_EQ(all->made, 11);
  ASSERT_EQ(all->troubles.size(), 1U);
  EXPECT_TRUE(all->troubles.front().english().starts_with("The series 'Flat' was not brought up to date: "))
      << "it is named by its category, as it has no vendor";
  EXPECT_NE(store.takeFaults(), "");
  EXPECT_EQ(store.days(bad), "");
  EXPECT_EQ(store.rows("select json_array(datetime, editDate) from transactions where eid = ?", {bad}),
            before);
  EXPECT_EQ(store.unsound(), "");
  ASSERT_TRUE(store.sql("drop trigger torn"));
  EXPECT_EQ(store.catchUp("2024-01-20").made, 11);
}

TEST(Occurrences, sayWhatTheirSeedSays) {
  SeriesStory store;
  store.setClock("2024-01-01");
  auto dollars = store.account("Dollars");
  ASSERT_TRUE(store.sql("update account set currency = 'USD' where oldTitle = ?", {dollars.pk}));
  auto spend = store.rent("Monthly", "2024-01-10");
  spend.foreignAmount = 12;
  spend.foreignCurrency = "USD";
  spend.needReimburse = true;
  const auto plain = store.seed(spend);
  spend.bid = kPaymentRow;
  spend.book = spend.account = "";
  spend.foreignAmount = 0;
  spend.foreignCurrency = "";
  const auto pending = store.seed(spend);
  Transfer transfer(store.root);
  transfer.accountA = store.bank->pk;
  transfer.accountB = dollars.pk;
  transfer.amountA = 102;
  transfer.amountB = 108.5;
  transfer.serviceCharge = 2;
  transfer.acrossCurrencies = true;
  transfer.datetime = store.on("2024-01-10");
  transfer.repeat = "Monthly";
  ASSERT_TRUE(transfer.addRepeatSeed());
  // As an older program tells it from the other side.
  auto turned = transfer;
  ASSERT_TRUE(turned.addRepeatSeed());
  ASSERT_TRUE(
      store.sql("update transactions set syear = 23, account = vendor, vendor = account, amount ="
                " amount2, amount2 = amount where eid = ?",
                {turned.repeatSeed}));
  store.catchUp("2024-01-10");
  const auto made = [&](const std::string& seed) {
    return store.rows(
        "select json_array(type, bid, amount, amount2, currency2, needReimburse, paid, note, repeat, account "
        "= ?,"
        " barcode, sday, transferEID != '') from transactions where repeat_seed = ? order by type",
        {store.bank->pk, seed});
  };
  EXPECT_EQ(made(plain), R"([12,"20",10.0,12.0,"USD",1,1,"Rent","Not Repeat",0,"Europe/Berlin",20240110,0])");
  EXPECT_EQ(made(pending), R"([12,"10",10.0,0.0,"",0,0,"Rent","Not Repeat",0,"Europe/Berlin",20240110,1])");
  constexpr auto kPair = R"([23,"10",108.5,100.0,"",0,1,"","Not Repeat",0,"Europe/Berlin",20240110,1])"
                         "\n"
                         R"([33,"10",102.0,108.5,"",0,1,"","Not Repeat",1,"Europe/Berlin",20240110,1])";
  EXPECT_EQ(made(transfer.repeatSeed), kPair);
  EXPECT_EQ(made(turned.repeatSeed), kPair);
  EXPECT_EQ(store.unsound(), "");
}

TEST(Occurrences, areNotMadeOfWhatMakesNoSense) {
  struct Case {
    const char* why;
    const char* damage;
    const char* said;
  };
  for (const auto& [why, damage, said] : {
           Case{"no such rule", "repeat = 'Fortnightly'", "'Fortnightly' is no rule of repeating"},
           Case{"no date", "datetime = 0", "the series does not say when it is due"},
           Case{"a date that is a text", "datetime = '2024-01-31'", "the series does not say when it is due"},
           Case{"no date at all", "datetime = null", "the series does not say when it is due"},
           Case{"before all years", "datetime = -1e11", "a record is dated between"},
           Case{"a debt", "syear = 24", "a series makes income, expenses or transfers"},
           Case{"a plan by instalments", "syear = 1003", "a series makes income, expenses or transfers"},
           Case{"an account that is gone", "account = 'gone'", "there is no account with the key 'gone'"},
           Case{"a transfer to an account that is gone", "syear = 33, vendor = 'gone'",
                "there is no account with the key 'gone'"},
           Case{"one that was stopped", "deleted = 1", "the series is over"},
           Case{"no seed", "type = 86", "there is no series"},
       }) {
    SCOPED_TRACE(why);
    SeriesStory store;
    store.setClock("2024-01-01");
    const auto seed = store.seed(store.rent("Monthly", "2024-01-10"));
    store.setClock("2024-02-29");
    const auto known = store.loaded(seed);
    ASSERT_TRUE(store.sql(fmt::format("update transactions set {} where eid = ?", damage), {seed}));
    const auto from = store.loaded(seed).datetime;
    const auto made = createRepeatItemsFrom(known, from, store.root.now());
    ASSERT_FALSE(made);
    EXPECT_TRUE(made.error().why.starts_with(said)) << made.error().why;
    EXPECT_EQ(store.number("select count(*) from transactions"), 1);
  }
}

TEST(Occurrences, tellWhenTheSeriesBegan) {
  SeriesStory store;
  store.setClock("2024-01-31");
  const auto seed = store.recorded(store.rent("Monthly", "2024-01-31"));
  ASSERT_TRUE(store.sql("update transactions set payDate = 0, sday = 0 where eid = ?", {seed}));
  ASSERT_TRUE(updateRecurringTransactionsForAll(store.root));
  EXPECT_EQ(Date{store.number("select payDate from transactions where eid = ? and sday = 31", {seed})},
            store.on("2024-01-31"));
  EXPECT_EQ(*getNextRepeatDate(store.loaded(seed), store.on("2024-02-29")), store.on("2024-03-31"));
  // What becomes of its first record changes no day to come.
  ASSERT_TRUE(store.sql("update transactions set datetime = ? where repeat_seed = ?",
                        {store.on("2024-01-30"), seed}));
  store.catchUp("2024-03-31");
  EXPECT_EQ(store.days(seed), "20240130 20240229 20240331");
}

TEST(Occurrences, areOfTheKindOfThoseBeforeWhereTheSeedDoesNotSay) {
  SeriesStory store;
  store.setClock("2024-01-31");
  Transfer transfer(store.root);
  transfer.accountA = store.bank->pk;
  transfer.accountB = store.cash->pk;
  transfer.amountA = transfer.amountB = 5;
  transfer.datetime = store.on("2024-01-31");
  transfer.repeat = "Monthly";
  const auto moved = recordRepeating(store.root, transfer);
  ASSERT_TRUE(moved);
  const auto paid = store.recorded(store.rent("Monthly", "2024-01-31"));
  ASSERT_TRUE(store.sql("update transactions set syear = null where type = 85"));
  EXPECT_EQ(store.catchUp("2024-02-29").made, 2);
  for (const auto& seed : {*moved, paid}) EXPECT_EQ(store.days(seed), "20240131 20240229");
  EXPECT_EQ(store.unsound(), "");
}

TEST(Occurrences, keepTheDaysOfTheZoneTheirSeriesBeganIn) {
  struct Case {
    const char* why;
    const char* rule;
    const char* begins;
    const char* ends;
    std::vector<std::pair<const char*, const char*>> stays;
    const char* days;
  };
  for (const auto& [why, rule, begins, ends, stays, days] : {
           Case{"westward",
                "Monthly",
                "2026-02-01 10:00:00",
                "",
                {{"Europe/Berlin", "2026-02-02"},
                 {"America/New_York", "2026-03-02"},
                 {"America/New_York", "2026-04-30"}},
                "20260201 20260301 20260401"},
           Case{"eastward",
                "Monthly",
                "2026-01-29 20:10:00",
                "",
                {{"Europe/Berlin", "2026-01-29"}, {"Asia/Tokyo", "2026-03-01"}, {"Asia/Tokyo", "2026-03-30"}},
                "20260129 20260228 20260329"},
           Case{"due with the day where the user is",
                "Daily",
                "2026-02-01 23:00:00",
                "",
                {{"Asia/Tokyo", "2026-02-01"}, {"Pacific/Honolulu", "2026-02-02"}},
                "20260201 20260202"},
           Case{"the last day",
                "Daily",
                "2026-02-03 10:00:00",
                "2026-02-05",
                {{"Asia/Tokyo", "2026-02-08"}},
                "20260203 20260204 20260205"},
       }) {
    for (const bool isOlder : {false, true}) {
      SCOPED_TRACE(fmt::format("{} {}", why, isOlder));
      SeriesStory store;
      store.setClock("2026-01-01");
      auto spend = store.rent(rule, begins);
      if (*ends != '\0') spend.repeatEndDate = store.on(ends);
      const auto seed = store.recorded(spend);
      for (const auto& [zone, now] : stays) {
        store.platform.calendar = *Calendar::make(zone, "en_US");
        store.catchUp(now);
        // Older seeds do not know when they began, nor their records' identifiers for which day they are.
        if (!isOlder) continue;
        ASSERT_TRUE(
            store.sql("update transactions set payDate = 0, sday = 0 where type = 85 and deleted = 0"));
        ASSERT_TRUE(store.sql("update transactions set eid = hex(randomblob(8)) where type = 12"));
        ASSERT_TRUE(updateRecurringTransactionsForAll(store.root));
      }
      EXPECT_EQ(store.rows(
                    "select group_concat(sday, ' ') from (select sday from transactions where repeat_seed = ?"
                    " order by sday)",
                    {seed}),
                days);
      EXPECT_EQ(store.unsound(), "");
    }
  }
}

TEST(Occurrences, thatComeAreOfTheDaysOfTheSeries) {
  SeriesStory store;
  store.setClock("2026-01-01");
  auto spend = store.rent("Monthly", "2026-02-01 10:00:00");
  spend.repeatEndDate = store.on("2026-03-01");
  const auto seed = store.recorded(spend);
  store.platform.calendar = *Calendar::make("Pacific/Honolulu", "en_US");
  std::vector<Date> days{store.on("2026-02-01"), store.on("2026-03-01")};
  for (Date& day : days) day = store.platform.calendar->dateBegin(day);
  auto coming = *comingDates(store.loaded(seed), store.on("2026-09-01"), 9);
  for (Date& day : coming) day = store.platform.calendar->dateBegin(day);
  EXPECT_EQ(coming, days);
}

}  // namespace
}  // namespace moniva
