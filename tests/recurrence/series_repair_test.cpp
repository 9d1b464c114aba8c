#include "recurrence/series_repair.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include "recurrence/series_duplicates.h"
#include "recurrence/spend_repeat.h"
#include "support/household.h"

namespace moniva {
namespace {

constexpr const char* kRemoved = "delete by fixDuplicateRecurringItem 583";

/// A household with a monthly series of expenses in cash, as other devices and older versions left it.
class Damage : public Household {
 public:
  explicit Damage(const std::string& zone = "Europe/Berlin") : Household(zone) { seed("S"); }

  void seed(const std::string& eid, int deleted = 0, int makes = 12, const std::string& end = "",
            const std::string& ipid = "") {
    EXPECT_TRUE(
        sql("insert into transactions (eid, bid, type, repeat, datetime, repeat_end_date, deleted, syear,"
            " ipid, note) values (?, 20, 85, 'Monthly', ?, ?, ?, ?, ?, 'Rent')",
            {eid, on("2024-03-01"), end.empty() ? Value("") : Value(on(end)), deleted, makes, ipid}));
  }
  struct Row {
    std::string eid;
    std::string day = "2024-02-01";
    int edited = 1;
    int deleted = 0;
    std::string ipid = {};
    double amount = 10;
    int bid = 20;
    int type = 12;
    std::string group = {};
    std::string zone = "Europe/Berlin";
    std::string seed = "S";
    int advancedType = 0;
  };
  void add(const Row& row) {
    EXPECT_TRUE(sql(
        "insert into transactions (eid, bid, type, amount, datetime, account, editDate, deleted, ipid,"
        " repeat_seed, transferEID, barcode, syear, repeat) values (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?,"
        " 'Not Repeat')",
        {row.eid, row.bid, row.type, row.amount, on(row.day), row.type == 23 ? bank->pk : cash->pk,
         2000000 + row.edited, row.deleted, row.ipid, row.seed, row.group, row.zone, row.advancedType}));
    EXPECT_TRUE(countTheTotalBalances(root, {cash->pk, bank->pk}));
  }
  /// Rows of the first of February in words: "a 2 deleted" is edited second.
  void addAll(std::string_view texts) {
    std::istringstream rest{std::string(texts)};
    for (std::string text; std::getline(rest, text, ',');) {
      std::istringstream words(text);
      Row row;
      words >> row.eid >> row.edited;
      for (std::string word; words >> word;) {
        if (word == "next") row.day = "2024-02-02";
        if (word == "late") row.day = "2024-02-01 23:59:58";
        if (word == "flown") row.day = "2024-02-01 08:00:00", row.zone = "America/Los_Angeles";
        if (word == "deleted") row.deleted = 1;
        if (word == "removed" || word == "repaired") row.deleted = 3;
        if (word == "repaired") row.ipid = kRemoved;
        if (word[0] == '=') row.group = word;
        if (word == "33" || word == "23") row.type = std::stoi(word);
        if (word == "payment" || row.type > 12) row.bid = 10;
        if (word == "paid") row.advancedType = 1004;
        if (word == "alien") row.seed = "";
      }
      add(row);
    }
  }
  /// The rows in order: "a 0", "b 583" when it was removed with that number, "c 3" for another reason.
  std::string state() {
    return rows(
        "select group_concat(eid || ' ' || case when deleted = 3 and ipid like 'delete by fix%' then "
        "substr(ipid, -3)"
        " else deleted end, ', ') from (select * from transactions where type != 85 order by eid)");
  }
  std::string told(const Result<SeriesFindings>& findings) {
    std::string text;
    if (!findings) return findings.error().why;
    for (const auto& one : *findings) text += fmt::format("{} ({})\n", one.what, one.records);
    return text;
  }
  double kept() { return number("select sum(totalBalance) from account"); }
  /// Whether the kept balances are what counting gives.
  bool balancesHold() {
    const double before = kept();
    EXPECT_TRUE(countTheTotalBalances(root, {cash->pk, bank->pk}));
    return before == kept();
  }
};

TEST(SeriesRepair, ADayHoldsOneOccurrenceOfEachSort) {
  struct Case {
    std::string_view why;
    std::string_view rows;  ///< as of `addAll`
    std::string afterDay;
    std::string afterSweep;
    int makes = 12;
  };
  const Damage clock;
  const std::string moved = occurrenceIdentifier(*clock.platform.calendar, "S", clock.on("2024-01-31"));
  const std::string withMoved = fmt::format("{} 1, b 2, c 1", moved);
  const std::string former = occurrenceIdentifier(*clock.platform.calendar, "Former", clock.on("2024-01-31"));
  const std::string withFormer = former + " 2, b 1";
  const Case cases[] = {
      {"two devices made it", "a 2, b 1", "a 0, b 583", "a 0, b 308"},
      {"days have their own", "a 1, b 1 next", "a 0, b 0", "a 0, b 0"},
      {"the end of a day is of it", "a 1 late, b 2", "a 583, b 0", "a 308, b 0"},
      {"a deleted one yields to one in use", "a 1, b 2 deleted", "a 0, b 1", "a 0, b 308"},
      {"one deletion is enough", "a 1 deleted, b 2 deleted", "a 666, b 1", "a 308, b 1"},
      {"what a repair took comes back", "a 1 repaired, b 2 repaired", "a 583, b 0", "a 583, b 583"},
      {"a deletion serves the day", "a 1 repaired, b 1 deleted", "a 583, b 1", "a 583, b 1"},
      {"what went with the series stays away", "a 1 removed", "a 3", "a 3"},
      {"what stayed then went with its account", "a 1 repaired, b 2 removed", "a 583, b 3", "a 583, b 3"},
      {"what was removed before is no reason", "a 2 repaired, b 1 removed", "a 0, b 3", "a 583, b 3"},
      {"a transfer is its pair", "a 2 =G 33, b 2 =G 23, c 3 =H 33, d 3 =H 23", "a 581, b 581, c 0, d 0",
       "a 327, b 327, c 0, d 0", 33},
      {"payments by themselves", "a 2 =G payment, b 1 =H payment", "a 0, b 580", "a 0, b 329"},
      {"items and payments apart", "a 1, b 1 payment", "a 0, b 0", "a 0, b 0"},
      {"a record with its payments is one", "a 1, b 2 =G paid, c 0 =G paid payment", "a 583, b 0, c 0",
       "a 308, b 0, c 0"},
      {"and goes as one", "a 9, b 2 =G paid, c 0 =G paid payment alien", "a 0, b 582, c 582",
       "a 0, b 307, c 307"},
      {"after a flight two days may fall on one", "a 1 flown, b 2", "a 0, b 0", "a 0, b 0"},
      {"one that a person moved there stays", withMoved, moved + " 0, b 0, c 583", moved + " 0, b 0, c 308"},
      {"from a month before the series was divided too", withFormer, former + " 0, b 0", former + " 0, b 0"},
  };
  for (const auto& one : cases) {
    for (const bool sweep : {false, true}) {
      Damage device;
      EXPECT_TRUE(device.sql("update transactions set syear = ? where eid = 'S'", {one.makes}));
      device.addAll(one.rows);
      const auto repaired = [&](Repair repair) {
        return device.told(
            sweep ? recurringTransactionsHistory(device.root, "S", repair)
                  : fixRecurrenItemFor(device.root, "S", device.on("2024-02-01 12:00:00"), repair));
      };
      const std::string look = repaired(Repair::lookOnly);
      EXPECT_EQ(look, repaired(Repair::mend)) << one.why;
      EXPECT_EQ(device.state(), sweep ? one.afterSweep : one.afterDay) << one.why;
      EXPECT_TRUE(device.balancesHold()) << one.why;
    }
  }
}

TEST(SeriesRepair, WhatAPersonMovedIsNoDuplicateByItsKeyEither) {
  for (const auto* seed : {"S", "Former"}) {
    Damage device;
    const auto moved = occurrenceIdentifier(*device.platform.calendar, seed, device.on("2024-01-31"));
    device.addAll(moved + " 1, b 2, c 1");
    EXPECT_TRUE(device.sql("update transactions set sday = 20240201 where type = 12"));
    EXPECT_EQ(clearDuplicateRecurringItemFor(device.root, "S"), 1);
    EXPECT_EQ(device.state(), moved + " 0, b 0, c 3");
  }
}

TEST(SeriesRepair, MassesOfCopiesLeaveTheFile) {
  for (const int copies : {10, 11}) {
    Damage device;
    device.add({"a", "2024-02-01"});
    for (int copy = 0; copy < copies; ++copy) device.add({fmt::format("c{}", copy), "2024-02-01", 7, 3, "x"});
    device.add({"d", "2024-02-01", 8, 3, "another edit"});
    EXPECT_TRUE(recurringTransactionsHistory(device.root, "S"));
    EXPECT_EQ(device.number("select count(*) from transactions where type != 85"), copies > 10 ? 2 : 12);
  }
}

TEST(SeriesRepair, SeedsAreLookedOver) {
  Damage device;
  device.seed("deleted", 3);
  device.add({"a", "2024-02-01", 1, 0, "", 10, 20, 12, "", "", "deleted", 0});
  device.seed("cleared", 3, 12, "", "delete by clear account data on 2024-02-01 12:00:00");
  device.add({"f", "2024-02-01", 1, 0, "", 10, 20, 12, "", "", "cleared"});
  device.seed("divided", 1, 12, "2024-01-31", "stopRepeat by division");
  device.add({"g", "2024-01-31", 1, 0, "", 10, 20, 12, "", "", "divided"});
  device.add({"h", "2024-02-01", 1, 0, "", 10, 20, 12, "", "", "divided"});
  const auto late = occurrenceIdentifier(*device.platform.calendar, "divided", device.on("2024-01-01"));
  device.add({late, "2024-02-03", 1, 1, "", 10, 20, 12, "", "", "divided"});
  EXPECT_TRUE(device.sql("update transactions set deleted = 0 where eid = ?", {late}));
  device.seed("over", 1, 12, "2024-01-31", "stopRepeat by Date");
  device.seed("stopped", 1, 12, "", "stopRepeat by user");
  device.seed("wanted", 1, 12, "2024-01-31");
  device.add({"b", "2024-01-01", 1, 1, "", 10, 20, 12, "", "", "wanted"});
  device.seed("idle");
  EXPECT_TRUE(device.sql("update transactions set datetime = '' where eid = 'idle'"));
  device.add({"c", "2024-02-01", 1, 0, "", 10, 20, 12, "", "", "gone"});
  const double before = device.kept();
  const auto found = fixAllRecurringItemForAllRepeatSeed(device.root);
  EXPECT_EQ(device.told(found),
            "the series was deleted: what is left of it is removed (1)\n"
            "records after the last day of the series; they stay as they are (1)\n"
            "the series has no next date, so it makes nothing (1)\n"
            "the series ended and nothing of it is left: it is removed (1)\n"
            "the series of these records does not exist: they stay as they are (1)\n");
  const std::string others = ", f 0, g 0, h 0";
  EXPECT_EQ(device.state(), late + " 0, a 3, b 1, c 0" + others);
  EXPECT_EQ(device.kept(), before + 10);
  EXPECT_EQ(device.rows("select eid from transactions where type = 85 and deleted = 3 order by eid"),
            "cleared\ndeleted\nover");
  EXPECT_TRUE(device.commentary().back().starts_with("==[Fix Repeat]"));
  // A record that another device made of a series that was over by itself is no leftover of a deleted one.
  device.add({"e", "2024-01-01", 1, 0, "", 10, 20, 12, "", "", "over"});
  EXPECT_TRUE(fixAllRecurringItemForAllRepeatSeed(device.root));
  EXPECT_EQ(device.state(), late + " 0, a 3, b 1, c 0, e 0" + others);
}

TEST(SeriesRepair, OtherAmountsAreTold) {
  Damage device;
  device.add({"a", "2024-02-01", 2, 0, "", 850});
  device.add({"b", "2024-02-01", 1, 0, "", 800});
  device.add({"z", "2024-01-10", 1, 0, "", 800, 20, 12, "", "", "gone"});
  const std::string said = device.told(repairAllSeries(device.root, Repair::mend));
  EXPECT_NE(
      said.find(
          "Feb 1, 2024 has more than one record: the one of 800 is surplus, that of 850 was edited last (1)"),
      std::string::npos)
      << said;
}

TEST(SeriesRepair, NothingComesBackBesideWhatServesItsDay) {
  struct Case {
    std::string_view why;
    std::string day;  ///< of what is there
    std::string_view comesBack;
  };
  for (const auto& one : {Case{"the months around have theirs", "2024-01-01", "0"},
                          Case{"a person moved it by a week", "2024-02-08", "583"}}) {
    Damage device;
    device.add({"a", "2024-02-01", 1, 3, kRemoved});
    device.add({"b", one.day});
    EXPECT_TRUE(repairAllSeries(device.root, Repair::mend));
    EXPECT_EQ(device.state(), fmt::format("a {}, b 0", one.comesBack)) << one.why;
  }
  Damage device;
  device.add({"a", "2024-02-01", 1, 3, kRemoved});
  device.add({occurrenceIdentifier(*device.platform.calendar, "S", device.on("2024-02-01")), "2024-06-20"});
  EXPECT_EQ(device.told(fixRecurrenItemFor(device.root, "S", device.on("2024-02-01"))), "")
      << "moved far away";
}

TEST(SeriesRepair, ARepairThatFailsLeavesTheSeriesAsItWas) {
  Damage device;
  for (const auto* eid : {"a", "b", "c"}) device.add({eid});
  const double before = device.kept();
  EXPECT_TRUE(
      device.sql("create trigger t before update on transactions when old.eid = 'c' begin select"
                 " raise(abort, 'no'); end"));
  EXPECT_FALSE(repairAllSeries(device.root, Repair::mend));
  EXPECT_NE(device.takeFaults(), "");
  EXPECT_EQ(device.state(), "a 0, b 0, c 0");
  EXPECT_EQ(device.kept(), before);
}

RC_GTEST_PROP(SeriesRepair, OneRepairIsEnoughAndServesNoFewerDays, ()) {
  Damage device;
  RC_ASSERT(device.sql("update transactions set repeat = 'Daily'"));
  const int count = *rc::gen::inRange(0, 25);
  for (int place = 0; place < count; ++place) {
    const int day = *rc::gen::inRange(1, 5);
    Damage::Row row{fmt::format("r{}", place), fmt::format("2024-02-0{} 12:00:00", day)};
    // Some were made for the day, or for another one.
    const int made = *rc::gen::inRange(1, 9);
    const auto madeEid =
        occurrenceIdentifier(*device.platform.calendar, "S", device.on(fmt::format("2024-02-0{}", made)));
    if (made < 5 && device.number("select count(*) from transactions where eid = ?", {madeEid}) == 0)
      row.eid = madeEid;
    row.edited = *rc::gen::inRange(1, 4);
    row.deleted = *rc::gen::element(0, 0, 1, 3, 3);
    row.ipid = row.deleted == 3 ? *rc::gen::element(kRemoved, "x") : "";
    row.group = *rc::gen::element(std::string(), fmt::format("G{}", day));
    device.add(row);
  }
  const auto served = [&](const char* which) {
    return device.number(std::string("select count(distinct datetime) from transactions"
                                     " where type != 85 and deleted ") +
                         which);
  };
  const double live = served("= 0");
  const double present = served("< 2");
  RC_ASSERT(repairAllSeries(device.root, Repair::mend).has_value());
  RC_ASSERT(served("= 0") >= live);
  RC_ASSERT(served("< 2") >= present);
  RC_ASSERT(device.balancesHold());
  const auto changes = device.connection().totalChanges();
  const auto commits = device.connection().commits();
  const auto again = repairAllSeries(device.root, Repair::mend);
  RC_ASSERT(again.has_value() && again->empty());
  RC_ASSERT(device.connection().totalChanges() == changes && device.connection().commits() == commits);
}

}  // namespace
}  // namespace moniva
