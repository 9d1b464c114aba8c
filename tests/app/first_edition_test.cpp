#include "app/do_db_updater.h"
#include "model/account_balance.h"
#include "support/household.h"
#include "support/old_store.h"

namespace moniva {
namespace {

constexpr const char* kWhole =
    "select group_concat(eid || type || ifnull(book, '') || deleted || bid) from transactions union all "
    "select"
    " group_concat(title || currency || kind || incomeEnabled || oldTitle) from account";

TEST(FirstEditionTest, itsRecordsComeIntoABookForEachCurrency) {
  OldStore store("first_edition");
  ASSERT_TRUE(needsFixDataForMoniva1(store.root));
  const std::string before = store.rows(kWhole);
  EXPECT_GT(store.changedBy(fixDataForMoniva1IfNeed), 0);
  EXPECT_EQ(store.rows(
                "select t.eid || ' ' || t.type || ' ' || bid || ' ' || ifnull(b.title, '-') || ' ' || ifnull("
                "a.title, '-') || ' ' || ifnull(vendor, '-') from transactions as t left join account as b on"
                " b.oldTitle = book left join account as a on a.oldTitle = t.account order by t.eid"),
            "bread 12 20 Data from Moniva Wallet \n"
            "cheese 12 20 Data from Moniva Wallet \n"
            "in 23 10 - Savings Wallet\n"
            "out 33 10 - Wallet Savings\n"
            "taxi 12 20 Data from Moniva (USD) - \n"
            "tin 11 20 Data from Moniva Old tin \n"
            "tip 12 20 Data from Moniva - \n"
            "wage 11 20 Data from Moniva (CHF) Savings ");
  std::string held;
  for (const int kind : {kBookKind, kAccountKind}) {
    for (const auto& row : MonivaAccount::list(store.root, kind)) {
      held += fmt::format("{} {} {} {}\n", row.title, row.currency, row.trackingType, row.totalBalance);
      EXPECT_EQ(row.totalBalance, getTheTotalBalance(row)) << row.title;
    }
  }
  EXPECT_EQ(
      held,
      "Data from Moniva EUR 1112 -6\nData from Moniva (CHF) CHF 1112 50\nData from Moniva (USD) USD 1112 -9\n"
      "Wallet EUR 1050 73\nSavings CHF 1050 71\nOld tin EUR 1050 7\nCash EUR 1050 0\n");
  EXPECT_EQ(store.rows("select title || type from category order by title"), "Food12\nUSD0\nWallet8\nWork11");
  EXPECT_EQ(store.rows("select photoFull || photoLite || uploaded || downloaded from photos"), "a.jpg00");
  EXPECT_EQ(store.rows("select key || value from monivaSys where key != 'recentEditDate' order by key"),
            "appVer1.0\nappVerMB\nenabledCategoryForBook0");
  // What it was is kept beside it, deleted records too, and opens as a store.
  EXPECT_FALSE(needsFixDataForMoniva1(store.root));
  EXPECT_EQ(store.changedBy(fixDataForMoniva1IfNeed), 0) << "the second time";
  ASSERT_TRUE(store.db.setDatabasePath(store.documents() / "moniva1Backup.dat"));
  EXPECT_EQ(store.rows(kWhole), before);
}

TEST(FirstEditionTest, aStrayRecordChangesNothingElseInAStoreWithBooks) {
  Household home;
  home.group("Both", {*home.cash, *home.bank});
  home.sql("update account set incomeEnabled = 2312 where title = 'Bank'");
  home.set(home.spend("Food", 5, home.on("2024-02-01")), "deleted", 1);
  home.sql("insert into photos (eid, photoLite, uploaded) values ('x', 'b.jpg', 1)");
  home.sql("insert into monivaSys (key, value) values ('enabledCategoryForBook', '1')");
  home.sql("insert into transactions (eid, amount) values ('stray', 3)");
  const std::string others =
      "select group_concat(eid || type || deleted) from transactions where eid != 'stray' union all select"
      " group_concat(title || incomeEnabled || currency) from account where title != 'Data from Moniva' "
      "union all"
      " select group_concat(title || type) from category union all select photoLite || uploaded from photos "
      "union"
      " all select value from monivaSys where key = 'enabledCategoryForBook'";
  const auto before = home.rows(others);
  ASSERT_TRUE(needsFixDataForMoniva1(home.root));
  ASSERT_TRUE(fixDataForMoniva1IfNeed(home.root));
  EXPECT_EQ(home.rows(others), before);
  EXPECT_EQ(
      home.rows(
          "select t.type || b.title || b.currency || b.totalBalance from transactions t join account b on"
          " b.oldTitle = t.book where t.eid = 'stray'"),
      "12Data from MonivaEUR-3.0");
}

TEST(FirstEditionTest, accountsOfOneTitleKeepTheirCurrency) {
  OldStore store("first_edition");
  store.sql("update account set title = 'Wallet', currency = 'EUR'");
  store.sql("update transactions set account = 'Wallet', currency2 = ''");
  EXPECT_GT(store.changedBy(fixDataForMoniva1IfNeed), 0);
  EXPECT_EQ(store.rows("select title || currency from account where kind = 2"), "Data from MonivaEUR");
}

TEST(FirstEditionTest, withoutAccountsTheMoneyIsCash) {
  OldStore store("first_edition");
  EXPECT_TRUE(store.sql("delete from account"));
  EXPECT_TRUE(store.sql("update transactions set account = '', currency2 = '' where eid != 'taxi'"));
  EXPECT_TRUE(store.sql("update transactions set account = '' where eid = 'taxi'"));
  EXPECT_TRUE(store.sql("update transactions set currency2 = 'EUR' where eid = 'bread' or eid = 'wage'"));
  EXPECT_GT(store.changedBy(fixDataForMoniva1IfNeed), 0);
  EXPECT_EQ(
      store.rows("select group_concat(t.eid, ' ') from (select * from transactions order by eid) as t join"
                 " account as a on a.oldTitle = t.account where a.title = 'Cash'"),
      "bread cheese tin tip wage");
}

TEST(FirstEditionTest, aConversionThatIsInterruptedLeavesTheStoreAsItWas) {
  OldStore store("first_edition");
  const std::string before = store.rows(kWhole);
  ASSERT_TRUE(
      store.sql("create trigger full before update of photoLite on photos begin select raise(abort,"
                " 'disk'); end"));
  EXPECT_FALSE(fixDataForMoniva1IfNeed(store.root));
  EXPECT_NE(store.takeFaults(), "");
  EXPECT_EQ(store.rows(kWhole), before);
  // The next attempt keeps the copy of the first one.
  ASSERT_TRUE(store.sql("drop trigger full"));
  EXPECT_GT(store.changedBy(fixDataForMoniva1IfNeed), 0);
  EXPECT_EQ(namesIn(store.documents(), "moniva1Backup.dat").size(), 2U);
}

}  // namespace
}  // namespace moniva
