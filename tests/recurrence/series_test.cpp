#include "recurrence/series_story.h"

#include <gtest/gtest.h>

#include "recurrence/series_repair.h"
#include "support/pictures.h"

namespace moniva {
namespace {

TEST(Series, beginWithTheRecordAndWhatIsDueSince) {
  SeriesStory store;
  auto spend = store.rent("Monthly", "2023-12-24 18:30:00");
  spend.addImages.push_back({pictures::png(), "receipt"});
  const auto seed = store.recorded(spend);
  EXPECT_EQ(store.days(seed), "20231224 20240124 20240224");
  Transfer transfer(store.root);
  transfer.accountA = store.bank->pk;
  transfer.accountB = store.cash->pk;
  transfer.amountA = transfer.amountB = 5;
  transfer.datetime = store.on("2024-02-28 18:30:00");
  transfer.repeat = "Daily";
  const auto moves = recordRepeating(store.root, transfer);
  ASSERT_TRUE(moves) << moves.error().why;
  EXPECT_EQ(store.days(*moves), "20240228 20240229");
  auto pays = store.rent("Daily", "2024-02-28 18:30:00");
  pays.bid = kPaymentRow;
  pays.book = "";
  EXPECT_EQ(store.days(store.recorded(pays)), "20240228 20240229");
  EXPECT_EQ(store.unsound(), "");
  // All of what was entered keeps its time of day, and is found under the identifier of its day.
  const auto& calendar = *store.platform.calendar;
  EXPECT_EQ(
      store.number("select count(*) from transactions where eid in (?, ?, ?) and datetime % 86400 = 63000",
                   {occurrenceIdentifier(calendar, seed, store.on("2023-12-24")),
                    occurrenceIdentifier(calendar, *moves, store.on("2024-02-28"), "A"),
                    occurrenceIdentifier(calendar, *moves, store.on("2024-02-28"), "B")}),
      3);
  EXPECT_EQ(store.number("select count(*) from photos"), 1);
}

TEST(Series, areRefusedWhole) {
  struct Case {
    const char* why;
    std::function<void(SeriesStory&, Spend&)> spoil;
  };
  const Case cases[] = {
      {"no rule", [](auto&, Spend& one) { one.repeat = "Fortnightly"; }},
      {"it does not repeat", [](auto&, Spend& one) { one.repeat = kNotRepeat; }},
      {"over before it begins", [](auto& in, Spend& one) { one.repeatEndDate = in.on("2024-01-01"); }},
      {"no amount", [](auto&, Spend& one) { one.amount = 0; }},
      {"part of a cart", [](auto&, Spend& one) { one.advancedType = advanced::kCart; }},
      {"an account that is gone", [](auto&, Spend& one) { one.account = "gone"; }},
      {"a closed book", [](auto& in, Spend&) { in.sql("update account set enabled = 0"); }},
      {"too many days", [](auto& in, Spend& one) { one.datetime = in.on("1990-01-01"); }},
      {"a photo of nothing",
       [](auto& in, Spend& one) {
         one.datetime = in.on("2024-03-01");
         one.addImages.push_back({pictures::png(), "receipt"});
       }},
  };
  for (const auto& [why, spoil] : cases) {
    SCOPED_TRACE(why);
    SeriesStory store;
    store.root.monivaAccount = std::make_shared<MonivaAccount>(*store.home);
    auto spend = store.rent("Daily", "2024-02-01");
    spoil(store, spend);
    EXPECT_FALSE(recordRepeating(store.root, spend));
    EXPECT_EQ(store.number("select count(*) from transactions"), 0);
    EXPECT_EQ(spend.repeatSeedID + spend.eid, "");
    EXPECT_EQ(store.root.monivaAccount->totalBalance, 0);
    EXPECT_EQ(store.unsound(), "");
  }
}

TEST(Series, endAtTheRequestOfAPerson) {
  SeriesStory store;
  const auto stopped = store.recorded(store.rent("Weekly", "2024-02-01"));
  EXPECT_EQ(*hasDuplicateRepeatSeed(store.loaded(stopped)), false);
  const auto gone = store.recorded(store.rent("Weekly", "2024-02-02"));
  EXPECT_EQ(*hasDuplicateRepeatSeed(store.loaded(stopped)), true);
  ASSERT_TRUE(stopRepeat(store.loaded(stopped)));
  EXPECT_FALSE(stopRepeat(store.loaded(stopped)));
  EXPECT_EQ(*hasDuplicateRepeatSeed(store.loaded(gone)), false);
  EXPECT_EQ(store.stateOf(stopped), "1 stopRepeat by user");

  // One deleted by the person stays what it is; those that were given payments, or divided, go with them.
  const auto occurrence = [&](const std::string& day) {
    return *Spend::spendFromEID(store.root,
                                occurrenceIdentifier(*store.platform.calendar, gone, store.on(day)));
  };
  ASSERT_TRUE(occurrence("2024-02-02").delete_());
  auto paid = occurrence("2024-02-09");
  ASSERT_TRUE(paid.updateAccount(""));
  Payment part(store.root);
  part.account = store.bank->pk;
  part.amount = 4;
  part.datetime = paid.datetime;
  ASSERT_TRUE(part.addNew(paid.eid));
  ASSERT_TRUE(occurrence("2024-02-16").saveInstallment(3));
  const auto removed = deletedAllRepeatTransaction(store.loaded(gone));
  ASSERT_TRUE(removed) << removed.error().why;
  EXPECT_EQ(*removed, 3);
  EXPECT_EQ(store.days(gone), "");
  EXPECT_EQ(store.days(gone, "deleted = 1"), "20240202");
  EXPECT_EQ(store.number("select count(*) from transactions where transferEID != '' and deleted = 0"), 0);
  EXPECT_EQ(store.stateOf(gone), "3 delete with deletedRepeatTransaction on 2024-02-29 14:30:05");
  EXPECT_EQ(store.unsound(), "");
  EXPECT_EQ(store.catchUp("2025-01-01").made, 0);
  EXPECT_EQ(store.days(stopped), "20240201 20240208 20240215 20240222 20240229");
}

TEST(Series, areLeftByWhatComesBackOnceTheyAreDeleted) {
  SeriesStory store;
  auto pays = store.rent("Daily", "2024-02-28");
  pays.bid = kPaymentRow;
  pays.book = "";
  Transfer moves(store.root);
  moves.accountA = store.bank->pk;
  moves.accountB = store.cash->pk;
  moves.amountA = moves.amountB = 5;
  moves.datetime = store.on("2024-02-28");
  moves.repeat = "Daily";
  const auto transfers = recordRepeating(store.root, moves);
  ASSERT_TRUE(transfers) << transfers.error().why;
  for (const auto& seed :
       {store.recorded(store.rent("Daily", "2024-02-28")), store.recorded(pays), *transfers}) {
    const auto first = store.rows(
        "select eid from transactions where repeat_seed = ? and type != 23 order by datetime limit 1",
        {seed});
    ASSERT_TRUE(store.loaded(first).delete_());
    ASSERT_TRUE(store.loaded(first).restore());
    EXPECT_EQ(store.loaded(first).repeatSeed, seed) << "the series goes on";
    ASSERT_TRUE(store.loaded(first).delete_());
    ASSERT_TRUE(deletedAllRepeatTransaction(store.loaded(seed)));
    ASSERT_TRUE(store.loaded(first).restore());
    ASSERT_TRUE(repairAllSeries(store.root, Repair::mend));
    EXPECT_EQ(store.loaded(first).deleted, 0);
  }
  EXPECT_EQ(store.unsound(), "");
}

TEST(Series, areListedByTheirRule) {
  SeriesStory store;
  store.setClock("2024-01-01");
  auto trips = store.book("Trips");
  ASSERT_TRUE(store.sql("update account set currency = 'USD' where oldTitle = ?", {trips.pk}));
  store.seed(store.rent("Monthly", "2024-01-20", 10.1));
  store.seed(store.rent("Monthly", "2024-01-10", 20.2));
  auto abroad = store.rent("Monthly", "2024-01-15", 7);
  abroad.account = "";
  abroad.book = trips.pk;
  store.seed(abroad);
  auto wage = store.rent("Monthly", "2024-01-15", 100);
  wage.type = kind::kIncome;
  store.seed(wage);
  store.seed(store.rent("Weekly", "2024-01-15", 1));
  const auto monthly = recurringTransactionsFor(store.root, "Monthly");
  ASSERT_TRUE(monthly);
  std::vector<double> amounts;
  for (const auto& one : monthly->array) amounts.push_back(one.amount);
  EXPECT_EQ(amounts, (std::vector<double>{20.2, 7, 100, 10.1}));
  EXPECT_EQ(monthly->expenseSumString, "30.3 / 7");
  EXPECT_EQ(monthly->incomeSumString, "100");
  EXPECT_EQ(*recurringEntriesCount(store.root), 5);
  EXPECT_FALSE(recurringTransactionsFor(store.root, "Sometimes"));
}

}  // namespace
}  // namespace moniva
