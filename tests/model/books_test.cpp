#include <gtest/gtest.h>

#include "support/household.h"

namespace moniva {
namespace {

/// What a row of `account` holds of the given columns, joined.
std::string row(Household& home, const MonivaAccount& account, const std::string& columns) {
  return home.rows("select " + columns + " from account where oldTitle = ?", {account.pk});
}

TEST(Books, areWrittenWithTheirOptionsAndReadBack) {
  struct Case {
    Edition edition;
    const char* dashboard;
  };
  for (const auto& [edition, dashboard] : {Case{Edition::second, "BookDashboardControllerV1"},
                                           Case{Edition::plus, "BookDashboardModernControllerV2"},
                                           Case{Edition::firstTablet, "BookDashboardPadController"}}) {
    Household home;
    home.platform.info.edition = edition;
    const auto trip = home.book("Trip \"2024\" — Zürich");
    EXPECT_EQ(
        row(home, trip,
            "json_array(title, type, kind, incomeEnabled, enabled, deleted, orderID, edit_ipid = '" +
                home.root.itsUDID() +
                "', editDate > 1e9, json_extract(expandOption, '$.overviewUI', "
                "'$.expenseCategoryOrderType', '$.incomeCategoryOrderType', '$.showProfitForSummary'))"),
        R"(["Trip \"2024\" — Zürich","_Book",2,1112,1,0,2,1,1,[")" + std::string(dashboard) +
            R"(","0","0","1"]])");
    const auto read = MonivaAccount::getAccountWithPK(home.root, trip.pk);
    ASSERT_TRUE(read);
    EXPECT_EQ(read->title, trip.title);
    EXPECT_EQ(read->trackingType, 1112);
    EXPECT_EQ(read->expandOptionDict, trip.expandOptionDict);
  }
}

TEST(Books, theTrackingCodeFollowsTheKind) {
  struct Case {
    int kind;
    const char* type;
    int given;
    int kept;
    const char* showProfit;
    const char* why;
  };
  for (const auto& [aKind, type, given, kept, showProfit, why] : {
           Case{1, "", 1112, 1050, "1", "an account without a type is a saving account"},
           Case{1, "_PrepaidAccount", 0, 2312, "0", "prepaid: nothing is earned on it"},
           Case{1, "_DiscountAccount", 0, 12, "0", "nor on a discount"},
           Case{2, "_Book", 1050, 1112, "1", "a book tracks what an account does not"},
       }) {
    Household home;
    MonivaAccount account(home.root);
    account.title = "New";
    account.aKind = aKind;
    if (*type != '\0') account.setType(type);
    if (given != 0) account.trackingType = given;
    ASSERT_TRUE(account.add());
    EXPECT_EQ(row(home, account,
                  "incomeEnabled || ' ' || type || ' ' || json_extract(expandOption,"
                  " '$.showProfitForSummary')"),
              std::to_string(kept) + " " + (*type == '\0' ? "_SavingAccount" : type) + " " + showProfit)
        << why;
  }
}

TEST(Books, aDeletedOneOfTheSameTitleComesBackWithItsKey) {
  Household home;
  auto trip = home.book("Trip");
  trip.updateMonthStartsOn(25);
  home.sql(
      "update account set deleted = 1, enabled = 0, note = 'old note', editDate = 2000000"
      " where oldTitle = ?",
      {trip.pk});
  // Rows that must not be taken for it: an older one, an account, a group, one that the program removed.
  home.sql(
      "insert into account (title, kind, isGroup, deleted, editDate, oldTitle) values"
      " ('Trip', 2, 0, 1, 1000000, 'older'), ('Trip', 1, 0, 1, 9e9, 'account'),"
      " ('Trip', 2, 1, 1, 9e9, 'group'), ('Trip', 2, 0, 3, 9e9, 'removed')");
  const auto again = home.book("Trip");
  EXPECT_EQ(again.pk, trip.pk);
  EXPECT_EQ(again.monthStartsOn, 25) << "with its settings";
  EXPECT_EQ(again.note, "") << "but a blank note stays blank";
  EXPECT_EQ(row(home, again, "deleted || ' ' || enabled || ' ' || (editDate > 2000000)"), "0 1 1");
  EXPECT_EQ(MonivaAccount::getBookWithTitle(home.root, "Trip")->pk, trip.pk);
  EXPECT_EQ(MonivaAccount::getAccountWithTitle(home.root, "Trip")->pk, "account");
  EXPECT_EQ(MonivaAccount::getBookWithTitle(home.root, "Nowhere"), std::nullopt);

  MonivaAccount untitled(home.root);
  untitled.title = "\t\n";
  untitled.aKind = kBookKind;
  EXPECT_FALSE(untitled.add());
}

TEST(Books, aPeriodStartIsAnEditAndACachedBalanceIsNot) {
  Household home;
  const auto stamp = [&] { return home.number("select editDate from account where title = 'Home'"); };
  auto before = stamp();
  for (const auto update : {&MonivaAccount::updateWeekStartsOn, &MonivaAccount::updateMonthStartsOn,
                            &MonivaAccount::updateYearStartsOn}) {
    EXPECT_TRUE(((*home.home).*update)(7));
    EXPECT_GT(stamp(), before);
    before = stamp();
  }
  EXPECT_EQ(row(home, *home.home, "weekStartsOn || ' ' || monthStartsOn || ' ' || yearStartsOn"), "7 7 7");
  EXPECT_TRUE(home.home->updateTotalBalance(12.5));
  EXPECT_EQ(row(home, *home.home, "totalBalance"), "12.5");
  EXPECT_EQ(stamp(), before);
}

TEST(Books, theCurrentOneIsTheOneKeptElseTheFirst) {
  Household home;
  const auto trip = home.book("Trip");
  const auto current = [&] {
    refreshUsingMonivaAccount(home.root);
    return home.root.monivaAccount->title;
  };
  EXPECT_EQ(current(), "Home");
  trip.saveToLocal();
  EXPECT_EQ(current(), "Trip");
  home.sql("update account set deleted = 1 where oldTitle = ?", {trip.pk});
  EXPECT_EQ(current(), "Home") << "a deleted one is no current book";
  home.sql("update account set deleted = 1");
  EXPECT_EQ(current(), "Default Book");
  EXPECT_EQ(home.root.monivaAccount->pk, "");
}

TEST(Balances, countEveryKindByItsSignAndNothingElse) {
  Household home;
  const std::pair<int, int> signs[] = {{11, 1},  {12, -1}, {13, 1},  {14, -1}, {23, 1}, {33, -1}, {24, 1},
                                       {34, -1}, {25, 1},  {35, -1}, {61, 0},  {82, 0}, {85, 0}};
  double expected = 0;
  double amount = 1;
  for (const auto& [type, sign] : signs) {
    home.sql("insert into transactions (eid, account, type, amount) values (?, ?, ?, ?)",
             {std::to_string(type), home.cash->pk, type, amount});
    expected += sign * amount;
    amount *= 2;
  }
  for (const char* out : {"deleted = 1", "deleted = 3", "paid = 0"}) {
    home.sql("insert into transactions (eid, account, type, amount) values (?, ?, 11, 1e6)",
             {out, home.cash->pk});
    home.sql("update transactions set " + std::string(out) + " where eid = ?", {out});
  }
  home.sql("update account set beginBalance = 0.5 where oldTitle = ?", {home.cash->pk});
  home.cash->getInfo();
  EXPECT_EQ(getTheTotalBalance(*home.cash), 0.5 + expected);
  EXPECT_EQ(sumsOfAllAccounts(home.root)->at(home.cash->pk), expected);
  EXPECT_EQ(sumsOfAllAccounts(home.root)->size(), 1U);

  // A group of the account, which by a merge came to contain itself, follows.
  home.sql("insert into account (title, kind, isGroup, oldTitle) values ('All', 1, 1, 'all')");
  home.sql("insert into category (title, parent, type) values (?, 'all', 7), ('all', 'all', 7)",
           {home.cash->pk});
  EXPECT_TRUE(countTheTotalBalance(*home.cash));
  EXPECT_EQ(home.rows("select group_concat(totalBalance, ' ') from account where title in ('Cash', 'All')"),
            home.rows("select ? || ' ' || ?", {0.5 + expected, 0.5 + expected}));
}

}  // namespace
}  // namespace moniva
