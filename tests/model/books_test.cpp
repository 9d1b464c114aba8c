#include <gtest/gtest.h>

#include <cmath>
#include <functional>

#include "model/account_groups.h"
#include "model/title.h"
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

TEST(Books, everyChangeIsWrittenWithItsStampAndABadOneNotAtAll) {
  Household home;
  auto visa = home.account("Visa", "_DebtAccount");
  home.book("Trip");
  const std::string all =
      "json_array(title, note, beginBalance, type, incomeEnabled, weekStartsOn, monthStartsOn, yearStartsOn, "
      "enabled,"
      " currency, totalBalance, expandOption)";
  struct Case {
    const char* why;
    std::function<Result<>()> change;
    const char* column;
    const char* now;  ///< null for a change that is refused
  };
  auto& book = *home.home;
  const std::string long120(kLongestTitle, 'x');
  for (const auto& [why, change, column, now] : {
           Case{"title", [&] { return visa.updateTitle("Card"); }, "title", "Card"},
           Case{"onto itself", [&] { return visa.updateTitle("Card"); }, "", nullptr},
           Case{"another's title", [&] { return visa.updateTitle("Cash"); }, "", nullptr},
           Case{"a book's title", [&] { return visa.updateTitle("Trip"); }, "title", "Trip"},
           Case{"blank", [&] { return visa.updateTitle(" \u3000"); }, "", nullptr},
           Case{"the longest", [&] { return visa.updateTitle(long120); }, "length(title)", "120"},
           Case{"too long", [&] { return visa.updateTitle(long120 + "x"); }, "", nullptr},
           Case{"no UTF-8", [&] { return visa.updateTitle("caf\xE9"); }, "", nullptr},
           Case{"note", [&] { return visa.updateNote("n"); }, "note", "n"},
           Case{"opening balance", [&] { return visa.updateBeginBalance(-12.5); },
                "beginBalance || ' ' || totalBalance", "-12.5 -12.5"},
           Case{"no number", [&] { return visa.updateBeginBalance(NAN); }, "", nullptr},
           Case{"type", [&] { return visa.updateType("_PrepaidAccount"); },
                "type || incomeEnabled || json_extract(expandOption, '$.showProfitForSummary')",
                "_PrepaidAccount10500"},
           Case{"a book's type", [&] { return visa.updateType("_Book"); }, "", nullptr},
           Case{"unknown type", [&] { return visa.updateType("_None"); }, "", nullptr},
           Case{"tracking", [&] { return visa.updateTrackingType(2312); }, "incomeEnabled", "2312"},
           Case{"a book's tracking", [&] { return visa.updateTrackingType(1112); }, "", nullptr},
           Case{"profit", [&] { return visa.updateShowProfitForSummary(true); },
                "json_extract(expandOption, '$.showProfitForSummary')", "1"},
           Case{"an account has no dashboard",
                [&] { return visa.updateOverViewUI("BookDashboardPadController"); }, "", nullptr},
           Case{"week", [&] { return visa.updateWeekStartsOn(7); }, "weekStartsOn", "7"},
           Case{"eighth day of the week", [&] { return visa.updateWeekStartsOn(8); }, "", nullptr},
           Case{"month", [&] { return visa.updateMonthStartsOn(-31); }, "monthStartsOn", "-31"},
           Case{"day 0", [&] { return visa.updateMonthStartsOn(0); }, "", nullptr},
           Case{"year", [&] { return visa.updateYearStartsOn(12); }, "yearStartsOn", "12"},
           Case{"13th month", [&] { return visa.updateYearStartsOn(-13); }, "", nullptr},
           Case{"closed", [&] { return visa.close(true); }, "enabled", "0"},
           Case{"opened", [&] { return visa.close(false); }, "enabled", "1"},
       }) {
    const auto was = row(home, visa, all);
    home.sql("update account set edit_ipid = 'another', editDate = 1");
    const auto changed = change();
    ASSERT_EQ(changed.has_value(), now != nullptr) << why;
    if (now != nullptr) {
      EXPECT_EQ(row(home, visa, column), now) << why;
      EXPECT_EQ(row(home, visa, "edit_ipid"), home.root.itsUDID()) << why;
      EXPECT_EQ(row(home, visa, "editDate > 1"), "1") << why;
    } else {
      EXPECT_EQ(row(home, visa, all + " || editDate || edit_ipid"), was + "1.0another") << why;
    }
    const auto loaded = MonivaAccount::getAccountWithPK(home.root, visa.pk);
    EXPECT_EQ(loaded->title + loaded->note, visa.title + visa.note)
        << why << ": the object says what the row says";
  }
  EXPECT_TRUE(book.updateOverViewUI("BookDashboardPadController"));
  EXPECT_FALSE(book.updateOverViewUI("Blackboard"));
  EXPECT_TRUE(book.setCategoryOrder("2", 11));
  EXPECT_EQ(book.getCategoryOrder(11) + book.getCategoryOrder(12), "20");
  EXPECT_EQ(row(home, book, "json_extract(expandOption, '$.overviewUI', '$.incomeCategoryOrderType')"),
            R"(["BookDashboardPadController","2"])");

  const auto stamp = row(home, visa, "editDate");
  EXPECT_TRUE(visa.updateTotalBalance(7));
  EXPECT_TRUE(visa.addToTotalBalance(0.5));
  EXPECT_EQ(row(home, visa, "totalBalance || ' ' || editDate"), "7.5 " + stamp)
      << "a cached balance is no edit";
}

TEST(Books, deletingTakesTheMembershipsAndNothingElse) {
  Household home;
  home.setClock("2024-06-15 12:00:00");
  auto trip = home.book("Trip");
  auto all = home.group("All", {*home.cash, *home.bank});
  refreshUsingMonivaAccount(home.root);
  home.spend("Food", 12, home.on("2024-06-01"));
  // An older store has titles for keys: a category of that name is none of the memberships.
  home.sql(
      "insert into category (title, parent, type, oldTitle) values (?, '_rootCate', 12, ?), ('Bar', ?, 12, "
      "'bar')",
      {home.cash->pk, home.cash->pk, home.cash->pk});
  EXPECT_FALSE(home.home->delete_()) << "the current book";
  EXPECT_FALSE(home.home->close(true));
  int told = 0;
  const auto token = home.root.platform().notifications.observe("accountDeleted", [&] { ++told; });
  ASSERT_TRUE(home.cash->delete_());
  EXPECT_EQ(told, 1);
  EXPECT_EQ(row(home, *home.cash, "deleted"), "1");
  EXPECT_EQ(home.rows("select count(*) from transactions where deleted = 0"), "1");
  EXPECT_EQ(home.rows("select group_concat(type || deleted, ' ') from category where title = ? or parent = ?"
                      " order by type",
                      {home.cash->pk, home.cash->pk}),
            "71 120 120");
  EXPECT_EQ(getGroupMembers(all)->size(), 1U);

  home.sql("update account set editDate = 1");
  ASSERT_TRUE(home.cash->recoverForTitle());
  EXPECT_EQ(row(home, *home.cash, "deleted || (editDate > 1)"), "01");
  EXPECT_FALSE(home.cash->recoverForTitle()) << "nothing is deleted any more";
  ASSERT_TRUE(trip.delete_());
  ASSERT_TRUE(home.home->updateTitle("Trip"));
  EXPECT_FALSE(trip.recoverForTitle()) << "two of a title";
  EXPECT_EQ(row(home, trip, "deleted"), "1");
}

TEST(Books, clearingMarksTheRecordsAndCountsWhatTheyWerePartOf) {
  Household home;
  home.setClock("2024-06-15 12:00:00");
  auto trip = home.book("Trip");
  home.spend("Food", 12, home.on("2024-06-01"));
  const auto fare = home.spend("Fare", 30, home.on("2024-06-02"));
  home.set(fare, "book", trip.pk);
  ASSERT_TRUE(countTheTotalBalance(*home.cash));
  EXPECT_EQ(home.cash->totalBalance, -42);
  EXPECT_EQ(trip.clear(), 1);
  EXPECT_EQ(home.rows("select deleted || ' ' || ipid || ' ' || edit_ipid from transactions where eid = ?",
                      {fare.eid}),
            "3 delete by clear book data on 2024-06-15 12:00:00 " + home.root.itsUDID());
  EXPECT_EQ(row(home, *home.cash, "totalBalance"), "-12.0");
  EXPECT_EQ(home.cash->clear(), 1);
  EXPECT_EQ(row(home, *home.home, "totalBalance"), "0.0");
  EXPECT_EQ(
      home.rows("select count(*) from transactions where ipid like 'delete by clear account data on %'"),
      "1");
}

TEST(Books, aFirstCurrencyGetsAnAccountAndTheRowLeavesItsGroups) {
  Household home;
  auto all = home.group("All", {*home.cash, *home.bank});
  const auto none = home.cash->updateCurrency(home.cash->currency);
  EXPECT_TRUE(none && !*none);
  EXPECT_EQ(getGroupMembers(all)->size(), 2U);
  const auto made = home.home->updateCurrency("USD");
  ASSERT_TRUE(made && *made);
  EXPECT_EQ(row(home, **made, "title || kind || type || currency"),
            "Default Payment Account US Dollar1_SavingAccountUSD");
  const auto second = home.cash->updateCurrency("USD");
  EXPECT_TRUE(second && !*second) << "there is one by now";
  EXPECT_EQ(getGroupMembers(all)->size(), 1U);
  EXPECT_TRUE(getFatherGroup(*home.cash)->empty());
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

}  // namespace
}  // namespace moniva
