#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include "support/household.h"

namespace moniva {
namespace {

TEST(Balances, countWhatTheRowTracks) {
  struct Case {
    const char* why;
    int aKind;
    int code;
    std::vector<int> in;
    std::vector<int> out;
  };
  for (const auto& [why, aKind, code, in, out] : {
           Case{"an account tracks everything", 1, 1050, {11, 23, 24, 25}, {12, 33, 34, 35}},
           Case{"a prepaid one too", 1, 2312, {11, 23, 24, 25}, {12, 33, 34, 35}},
           Case{"a discount is only spent", 1, 12, {}, {12}},
           Case{"an unknown code counts as the kind does", 1, 1, {11, 23, 24, 25}, {12, 33, 34, 35}},
           Case{"a book tracks income and expense", 2, 1112, {11}, {12}},
           Case{"of income alone", 2, 11, {11}, {}},
           Case{"a converted book", 2, 1050, {11}, {12}},
       }) {
    Household home;
    auto row = aKind == kBookKind ? *home.home : *home.cash;
    row.trackingType = code;
    home.sql("update account set incomeEnabled = ?, beginBalance = 0.5 where oldTitle = ?", {code, row.pk});
    row.getInfo();
    double expected = 0.5;
    double amount = 1;
    for (const int type : {11, 12, 13, 14, 23, 33, 24, 34, 25, 35, 50, 60, 61, 62, 63, 81, 82, 83, 85, 86}) {
      home.sql("insert into transactions (eid, account, book, type, amount, paid) values (?, ?, ?, ?, ?, ?)",
               {std::to_string(type), aKind == kAccountKind ? row.pk : "", aKind == kBookKind ? row.pk : "",
                type, amount, type != 50});
      if (std::ranges::count(in, type) + (type == 50) > 0) expected += amount;
      if (std::ranges::count(out, type) > 0) expected -= amount;
      amount *= 2;
    }
    for (const char* left : {"deleted = 1", "deleted = 3", "paid = 0"}) {
      home.sql("insert into transactions (eid, account, book, type, amount) values (?, ?, ?, 12, 1e6)",
               {left, row.pk, row.pk});
      home.sql("update transactions set " + std::string(left) + " where eid = ?", {left});
    }
    EXPECT_EQ(getTheTotalBalance(row), expected) << why;
    ASSERT_TRUE(getAllStatistics(row));
    EXPECT_EQ(row.beginBalance + row.totalIncome + row.totalTransferIn - row.totalExpense -
                  row.totalTransferOut + row.adjustBalance,
              row.totalBalance)
        << why;
    if (aKind == kAccountKind) {
      EXPECT_EQ(sumsOfAllAccounts(home.root)->at(row.pk), expected - 0.5) << why;
    }
  }
}

/// Whatever is in the store, the kept balances are what a person adding up the rows by hand would find.
RC_GTEST_PROP(Balances, areWhatTheRowsAddUpTo, ()) {
  Household home;
  std::vector<MonivaAccount> rows = {*home.home,
                                     *home.cash,
                                     *home.bank,
                                     home.account("Card", "_DebtAccount"),
                                     home.account("Coupons", "_DiscountAccount"),
                                     home.book("Trip")};
  std::map<std::string, std::int64_t> cents;
  for (auto& row : rows) {
    cents[row.pk] = *rc::gen::inRange<std::int64_t>(-100000, 100000);
    RC_ASSERT(row.updateBeginBalance(static_cast<double>(cents[row.pk]) / 100).has_value());
  }
  auto books = home.group("Both", {rows[0], rows[5]});
  auto group = home.group("All", {rows[1], rows[2], rows[3], rows[4]});
  const int count = *rc::gen::inRange(0, 60);
  for (int i = 0; i < count; ++i) {
    const auto& row = *rc::gen::elementOf(rows);
    const int type = *rc::gen::element(11, 12, 13, 14, 23, 24, 25, 33, 34, 35, 50, 61, 82, 85);
    const auto amount = *rc::gen::inRange<std::int64_t>(1, 10000000);
    const int deleted = *rc::gen::element(0, 0, 0, 1, 3);
    const bool paid = *rc::gen::element(true, true, false);
    home.sql(
        "insert into transactions (eid, account, book, type, amount, deleted, paid) values (?,?,?,?,?,?,?)",
        {std::to_string(i), row.isBook() ? "" : row.pk, row.isBook() ? row.pk : "", type,
         static_cast<double>(amount) / 100, deleted, paid});
    if (deleted != 0 || (!paid && type != 50)) continue;
    const bool moves = row.isAccount() && !row.isDiscountAccount();
    const bool isIn =
        type == 50 || (type == 11 && !row.isDiscountAccount()) || (moves && type >= 23 && type <= 25);
    const bool isOut = type == 12 || (moves && type >= 33 && type <= 35);
    cents[row.pk] += isIn ? amount : isOut ? -amount : 0;
  }
  const auto isNear = [](double balance, std::int64_t inCents) {
    return std::abs(balance * 100 - static_cast<double>(inCents)) < 1e-3;
  };
  for (auto& row : rows) {
    RC_ASSERT(countTheTotalBalance(row));
    RC_ASSERT(isNear(MonivaAccount::getAccountWithPK(home.root, row.pk)->totalBalance, cents[row.pk]));
  }
  books.getInfo();
  RC_ASSERT(isNear(books.totalBalance, cents[rows[0].pk] + cents[rows[5].pk]));
  group.getInfo();
  RC_ASSERT(isNear(group.totalBalance,
                   cents[rows[1].pk] + cents[rows[2].pk] + cents[rows[3].pk] + cents[rows[4].pk]));
}

TEST(Balances, areCorrectedByARowOfTheirOwn) {
  Household home;
  home.setClock("2024-06-15 12:00:00");
  home.spend("Food", 0.1, home.on("2024-06-01"));
  home.spend("Food", 0.2, home.on("2024-06-01"));
  EXPECT_EQ(correctBalanceTo(*home.cash, 100), 100.3) << "without the noise of the sum";
  EXPECT_EQ(
      home.rows(
          "select json_array(amount, type, sday, paid, bid, datetime) from transactions where type = 50"),
      R"([100.3,50,20240615,1,"",1718445600.0])");
  EXPECT_EQ(home.cash->totalBalance, 100);
  EXPECT_EQ(correctBalanceTo(*home.cash, 100), 0) << "nothing to correct";
  EXPECT_EQ(correctBalanceTo(*home.cash, -5), -105);
  EXPECT_EQ(home.rows("select count(*) from transactions where type = 50"), "2");
  EXPECT_EQ(home.rows("select totalBalance from account where title = 'Cash'"), "-5.0");
  EXPECT_TRUE(home.bank->isEmpty());
  EXPECT_EQ(correctBalanceTo(*home.bank, 1), 1);
  EXPECT_TRUE(home.bank->isEmpty()) << "a correction is no record of it";
}

TEST(Groups, takeInWhatFitsAndFollowTheirMembers) {
  Household home;
  home.spend("Food", 12, home.on("2024-06-01"));
  auto all = home.group("All", {*home.cash});
  EXPECT_EQ(all.totalBalance, -12) << "counted when the member came";
  EXPECT_FALSE(addToGroup(all, *home.cash)) << "in it already";
  EXPECT_FALSE(addToGroup(all, *home.home)) << "a book";
  EXPECT_FALSE(addToGroup(all, all)) << "itself";
  EXPECT_FALSE(addToGroup(*home.bank, *home.cash)) << "no group";
  ASSERT_TRUE(home.bank->updateCurrency("CHF"));
  EXPECT_FALSE(addToGroup(all, *home.bank)) << "another currency";
  ASSERT_TRUE(home.cash->updateBeginBalance(50));
  EXPECT_EQ(home.rows("select totalBalance from account where title = 'All'"), "38.0");
  ASSERT_TRUE(removeFromGroup(all, *home.cash));
  EXPECT_FALSE(removeFromGroup(all, *home.cash));
  EXPECT_EQ(all.totalBalance, 0);
  const auto keys = [&] { return home.rows("select count(*) from category where type = 7"); };
  ASSERT_TRUE(addToGroup(all, *home.cash));
  EXPECT_EQ(keys(), "1") << "a membership that was removed comes back, so that two devices agree on one";
  EXPECT_EQ(MonivaAccount::list(home.root, kAccountKind, MonivaAccount::Rows::groups).size(), 1U);

  // A group that by a merge came to contain itself must not go round for ever.
  home.sql("insert into category (title, parent, type) values (?, ?, 7)", {all.pk, all.pk});
  EXPECT_TRUE(countTheTotalBalance(*home.cash));
}

}  // namespace
}  // namespace moniva
