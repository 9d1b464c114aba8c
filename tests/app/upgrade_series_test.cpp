#include "app/do_db_updater.h"
#include "app/older_series.h"
#include "model/account_balance.h"
#include "recurrence/do_db_recurring.h"
#include "recurrence/spend_repeat.h"
#include "support/household.h"
#include "support/old_store.h"

namespace moniva {
namespace {

/// Whether what is kept of every balance is what counting gives.
void expectBalancesCounted(Device& store) {
  for (const int kind : {kAccountKind, kBookKind}) {
    for (const auto& held : MonivaAccount::list(store.root, kind)) {
      EXPECT_EQ(held.totalBalance, getTheTotalBalance(held)) << held.title;
    }
  }
}

TEST(UpgradeSeriesTest, recordsThatRepeatByThemselvesBecomeTheFirstOfASeries) {
  OldStore store("self_repeating");
  const std::string left =
      "select count(*) || sum(amount) || group_concat(repeat || editDate || repeat_seed) from transactions "
      "where"
      " eid like 'left-%'";
  const std::string before = store.rows(left);
  EXPECT_GT(store.changedBy(updateRepeatSeedTransaction), 0);
  EXPECT_EQ(store.rows(left), before);
  EXPECT_EQ(
      store.rows("select group_concat(eid, ' ') from transactions where eid not like '________-____-%' and"
                 " eid not like 'left-%' and (repeat != 'Not Repeat' or repeat_end_date != '')"),
      "");
  // Each seed by its first occurrence, with the date to come, the day it began on, its end and its parts.
  EXPECT_EQ(
      store.rows(
          "select item.eid || ': ' || seed.repeat || ' ' || seed.syear || ' bid ' || seed.bid || ', ' ||"
          " seed.amount || '/' || seed.amount2 || ', ' || date(seed.datetime, 'unixepoch', '1 hour') || ', ' "
          "||"
          " (seed.payDate = item.datetime) || ' ' || seed.sday || ', ' || seed.repeat_end_date || ', ' ||"
          " seed.account || ' ' || ifnull(seed.vendor, '-') || ' ' || seed.book || ' ' || seed.sweek from"
          " transactions as item join transactions as seed on seed.eid = item.repeat_seed where seed.type = "
          "85"
          " and seed.deleted = 0 and seed.eid != 'seed' order by item.eid"),
      "fee: Yearly 12 bid 10, 3.0/0.0, 2025-02-28, 1 29, , Bank   0\n"
      "rent: Monthly 12 bid 20, 500.0/0.0, 2015-02-28, 1 31, 1735689599.0, Cash Lang Home 0\n"
      "save-a: Quarterly 33 bid , 102.0/0.0, 2024-04-30, 1 31, , Cash Bank  {\"serviceCharge\":2E0}\n"
      "save-b: Quarterly 33 bid , 102.0/0.0, 2024-04-30, 1 31, , Cash Bank  {\"serviceCharge\":2E0}\n"
      "send-a: Weekly 33 bid , 100.0/110.0, 2024-02-17, 1 10, , Cash Dollars  0\n"
      "send-b: Weekly 33 bid , 100.0/110.0, 2024-02-17, 1 10, , Cash Dollars  0\n"
      "shop-item: Half-yearly 12 bid 20, 40.0/0.0, 2024-02-29, 1 31, , Bank  Home 0\n"
      "wage: Biweekly 11 bid 20, 900.0/0.0, 2024-03-05, 1 20, , Bank - Home 0\n"
      "yen-a: Daily 33 bid , 120.0/110.0, 2024-02-11, 1 10, , Dollars Cash  0\n"
      "yen-b: Daily 33 bid , 120.0/110.0, 2024-02-11, 1 10, , Dollars Cash  0");
  // What could not be taken over is told, once a run.
  const std::string told = store.takeFaults();
  for (const auto* eid : {"left-rule", "left-undated", "left-nothing", "left-half"}) {
    EXPECT_NE(told.find(eid), std::string::npos) << eid;
  }
  EXPECT_EQ(store.changedBy(updateRepeatSeedTransaction), 0) << "the second time";
  store.takeFaults();
  OldStore other("self_repeating");
  ASSERT_TRUE(updateRepeatSeedTransaction(other.root));
  const std::string seeds =
      "select group_concat(eid) from (select eid from transactions where type = 85 order by"
      " eid)";
  EXPECT_EQ(other.rows(seeds), store.rows(seeds)) << "another device";
  other.takeFaults();
}

TEST(UpgradeSeriesTest, theSeriesGoOnWhereTheirRecordsLeftOff) {
  OldStore store("self_repeating");
  ASSERT_TRUE(updateRepeatSeedTransaction(store.root));
  store.takeFaults();
  const auto caughtUp = updateRecurringTransactionsWithFuture(store.root);
  ASSERT_TRUE(caughtUp);
  EXPECT_EQ(caughtUp->troubles.size(), 0U) << caughtUp->troubles.front().english();
  // By what began it: how many records by now, the last of them, and what they come to.
  EXPECT_EQ(
      store.rows("select (select min(eid) from transactions as first where first.repeat_seed ="
                 " made.repeat_seed and length(eid) < 36) || ' ' || count(*) || ' ' ||"
                 " date(max(datetime), 'unixepoch', '1 hour') || ' ' || sum(amount) from transactions as made"
                 " where repeat_seed != '' and repeat_seed != 'seed' group by repeat_seed order by 1"),
      "fee 1 2024-02-29 3.0\nrent 110 2024-02-29 55000.0\nsave-a 2 2024-01-31 202.0\n"
      "send-a 6 2024-02-24 630.0\nshop-item 2 2024-02-29 80.0\nwage 1 2024-02-20 900.0\n"
      "yen-a 40 2024-02-29 4600.0");
}

TEST(UpgradeSeriesTest, recordsThatAreAlikeAreOneSeries) {
  struct AlikeCase {
    const char* why;
    RepeatRule rule;
    std::vector<std::string> dates;
    std::string series;  ///< the places of the records of each; of strays behind "-"
    std::string next;    ///< what the first of them waits for
  };
  const AlikeCase cases[] = {
      {"one a month", RepeatRule::monthly, {"2024-01-31", "2024-02-29", "2024-03-31"}, "012", "2024-04-30"},
      {"one moved a little, one left out",
       RepeatRule::monthly,
       {"2024-01-01", "2024-02-03", "2024-04-01"},
       "012",
       "2024-05-01"},
      {"the last one before its day serves it",
       RepeatRule::monthly,
       {"2024-01-10", "2024-02-08"},
       "01",
       "2024-03-10"},
      {"ends of months that ran over",
       RepeatRule::monthly,
       {"2024-01-31", "2024-03-02", "2024-03-31", "2024-05-01"},
       "0123",
       "2024-05-31"},
      {"two on one day",
       RepeatRule::weekly,
       {"2024-01-01", "2024-01-01", "2024-01-08", "2024-01-08"},
       "02 13",
       "2024-01-15"},
      {"the first and the fifteenth, after a gap",
       RepeatRule::monthly,
       {"2024-01-01", "2024-01-15", "2024-05-01", "2024-05-15"},
       "02 13",
       "2024-06-01"},
      {"one too many",
       RepeatRule::monthly,
       {"2024-01-01", "2024-01-02", "2024-02-01"},
       "02 -1",
       "2024-03-01"},
      {"late at night and early",
       RepeatRule::daily,
       {"2024-01-01 23:00:00", "2024-01-02 01:00:00"},
       "01",
       "2024-01-03 23:00:00"},
  };
  const Device device;
  const Calendar& calendar = device.root.calendar();
  for (const auto& [why, rule, texts, series, next] : cases) {
    std::vector<Date> dates;
    for (const auto& text : texts) dates.push_back(device.on(text));
    const auto found = olderSeries(calendar, rule, dates);
    std::string shown;
    for (const auto& places : found.series)
      shown += fmt::format("{}{}", shown.empty() ? "" : " ", fmt::join(places, ""));
    for (const auto place : found.strays) shown += fmt::format(" -{}", place);
    EXPECT_EQ(shown, series) << why;
    const Date newest = dates[found.series.front().back()];
    EXPECT_EQ(dateAfter(calendar, rule, dates[0], newest), device.on(next)) << why;
  }
}

TEST(UpgradeSeriesTest, whatIsThereIsNotMadeAgain) {
  Household home;
  std::vector<std::string> rents;
  for (int month = 0; month < 14; ++month) {
    const Date when = home.on(fmt::format("20{}-{:02}-05", 23 + month / 12, month % 12 + 1));
    const auto rent = home.spend("Rent", 100, when);
    home.move(10, *home.cash, *home.bank, when);
    // The last two were entered by hand.
    if (month < 12) home.set(rent, "repeat", "Monthly");
  }
  home.spend("Rent", 100, home.on("2023-07-20"));
  home.sql("update transactions set repeat = 'Monthly' where type = 23 and datetime < 1704067200");
  home.sql("update transactions set repeat_end_date = 2e9 where datetime > 1701500000");
  const double spent = home.number("select sum(amount) from transactions");
  ASSERT_TRUE(updateRepeatSeedTransaction(home.root));
  EXPECT_EQ(
      home.rows("select syear || ' ' || date(payDate, 'unixepoch', '1 hour') || ' ' || date(datetime,"
                " 'unixepoch', '1 hour') || ' ' || repeat_end_date || ' ' || (select count(*) from"
                " transactions as made where made.repeat_seed = seed.eid) from transactions as seed where"
                " type = 85 order by syear"),
      "12 2023-01-05 2024-03-05 2000000000.0 14\n33 2023-01-05 2024-03-05 2000000000.0 28");
  const auto caughtUp = updateRecurringTransactionsWithFuture(home.root);
  ASSERT_TRUE(caughtUp && caughtUp->troubles.empty());
  EXPECT_EQ(home.number("select sum(amount) from transactions where type != 85"), spent);
  EXPECT_EQ(home.number("select count(*) from transactions where repeat = 'Monthly' and type != 85"), 0);
}

TEST(UpgradeSeriesTest, whatCleanUpsRemovedByMistakeComesBackOncePerDay) {
  OldStore store("removed_occurrences");
  const auto live = [&](const std::string& like) {
    return store.rows(
        "select group_concat(eid, ' ') from (select eid from transactions where deleted = 0 and"
        " type != 85 and eid like ? order by eid)",
        {like});
  };
  // The record of the 20th is there; a person dated it anew.
  ASSERT_TRUE(
      store.sql("insert into transactions (eid, bid, type, amount, repeat_seed, datetime) values (?, '20',"
                " 12, 5, 'going', ?)",
                {occurrenceIdentifier(store.root.calendar(), "going", store.on("2020-03-20")),
                 store.on("2020-03-25")}));
  EXPECT_EQ(live("back-%"), "");
  const std::string untouched = store.rows(
      "select group_concat(eid || deleted || ipid || editDate) from"
      " transactions where eid like 'stay-%'");
  const auto all = store.number("select count(*) from transactions where eid like 'back-%'");
  EXPECT_GT(store.changedBy(fixWrongDeletedByClearRecurringItem20220719), 0);
  EXPECT_EQ(
      store.number("select count(*) from transactions where eid like 'back-%' and deleted = 0 and ipid = ''"),
      all);
  EXPECT_EQ(live("first-%") + live("second-%"), "");
  EXPECT_GT(store.changedBy(fixWrongDeletedByClearRecurringItem20210412), 0);
  EXPECT_EQ(live("first-%"), "first-668 first-670");
  EXPECT_TRUE(store.sql("insert into monivaSys (key, value) values ('userRecordID', 'x')"));
  EXPECT_GT(store.changedBy(fixWrongDeletedByClearDuplicateRecurringItem20210209), 0);
  EXPECT_EQ(live("second-%"), "second-758");
  EXPECT_EQ(store.rows("select key from monivaSys"), "");
  EXPECT_EQ(
      store.rows("select group_concat(eid || deleted || ipid || editDate) from transactions where eid like"
                 " 'stay-%'"),
      untouched);
  // Beginnings: by the first record there is, else by the date to come; of deleted seeds and without any,
  // none.
  EXPECT_EQ(
      store.rows("select group_concat(eid || ' ' || ifnull(date(payDate, 'unixepoch', '1 hour'), '-') ||"
                 " ' ' || sday, ', ') from (select * from transactions where type = 85 order by eid)"),
      "ended 2020-03-01 1, fresh 2024-03-31 31, going 2020-03-05 5, removed 1970-01-01 0, undated"
      " 1970-01-01 0");
  expectBalancesCounted(store);
  for (const auto step :
       {fixWrongDeletedByClearRecurringItem20220719, fixWrongDeletedByClearRecurringItem20210412,
        fixWrongDeletedByClearDuplicateRecurringItem20210209}) {
    EXPECT_EQ(store.changedBy(step), 0) << "the second time";
  }
}

TEST(UpgradeSeriesTest, occurrencesWithoutADateAreLoggedAndGo) {
  OldStore store("removed_occurrences");
  EXPECT_EQ(store.changedBy(clearWrongRecurringItem2), 2);
  const std::string logged = store.takeFaults();
  EXPECT_NE(logged.find("'undated-pending'"), std::string::npos) << logged;
  EXPECT_NE(logged.find("'Ann''s'"), std::string::npos) << "a quoted note";
  EXPECT_EQ(store.rows("select eid || deleted from transactions where eid in ('undated-pending', 'stray') or"
                       " (eid like 'stay-%' and paid = 0 and deleted != 0)"),
            "stray3");
  EXPECT_EQ(store.changedBy(clearWrongRecurringItem2), 0) << "the second time";
}

}  // namespace
}  // namespace moniva
