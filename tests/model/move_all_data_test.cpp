#include "model/move_all_data.h"

#include <gtest/gtest.h>

#include "support/compound_story.h"

namespace moniva {
namespace {

std::string whatIsIn(Household& home, const MonivaAccount& row) {
  return home.rows(
      "select coalesce(group_concat(type || ':' || round(amount, 2), ' '), '') from (select type, amount from"
      " transactions where (book = ?1 or account = ?1) order by type, amount)",
      {row.pk});
}

TEST(MovedData, ofABookGoWithTheirCategoriesUses) {
  Compound home;
  home.plain(8);
  auto gone = home.plain(16);
  ASSERT_TRUE(gone.delete_());
  const auto cart = home.cart({1, 2}, 3);
  home.sql("update transactions set category = ? where transferEID = ? and bid = 10", {home.home->pk, cart});
  home.sql("insert into transactions (eid, type, amount, book) values ('budget', 61, 500, ?)",
           {home.home->pk});
  home.sql("insert into photos (eid, photoFull, datetime) values (?, 'a.jpg', 1)", {gone.eid});
  const auto moved = moveAllDataTo(*home.home, home.second);
  ASSERT_TRUE(moved) << moved.error().why;
  EXPECT_EQ(*moved, 3);
  EXPECT_EQ(whatIsIn(home, home.second), "12:1.0 12:2.0 12:8.0 12:16.0") << "deleted ones too";
  EXPECT_EQ(whatIsIn(home, *home.home), "61:500.0") << "budgets stay";
  EXPECT_EQ(home.rows("select category from transactions where transferEID = ? and bid = 10", {cart}),
            home.second.pk);
  EXPECT_EQ(
      home.rows(
          "select distinct ipid || (editDate > 1e9) || (edit_ipid = ?) from transactions where book = ?",
          {home.root.itsUDID(), home.second.pk}),
      "batchEdit11");
  EXPECT_EQ(home.rows("select datetime || deleted from photos"), "1.00");
  const auto used = [&](const MonivaAccount& book) {
    return home.number("select coalesce(sum(used), 0) from categoryofbook where cate = ? and book = ?",
                       {home.food, book.pk});
  };
  EXPECT_EQ(used(*home.home), 0);
  EXPECT_EQ(used(home.second), 3);
  EXPECT_SOUND(home);
}

TEST(MovedData, ofAnAccountGoWithTheTransfersThatNameIt) {
  Compound home;
  const auto third = home.account("Third");
  home.plain(8);
  home.cart({1, 2}, 3);
  home.move(4, *home.cash, third, home.on("2024-06-10"));
  home.move(16, third, *home.cash, home.on("2024-06-10"));
  auto between = home.move(32, *home.bank, *home.cash, home.on("2024-06-10"));
  EXPECT_FALSE(moveAllDataTo(*home.cash, *home.bank)) << "a transfer would lead nowhere";
  ASSERT_TRUE(between.delete_());
  const auto moved = moveAllDataTo(*home.cash, *home.bank);
  ASSERT_TRUE(moved) << moved.error().why;
  EXPECT_EQ(
      home.rows("select group_concat(type || account || vendor, ' ') from (select type, account, vendor from"
                " transactions where type in (23,33) and deleted = 0 order by type, amount)"),
      fmt::format("23{1}{0} 23{0}{1} 33{0}{1} 33{1}{0}", home.bank->pk, third.pk));
  EXPECT_EQ(whatIsIn(home, *home.cash), "23:32.0") << "one that was deleted stays between the two";
  ASSERT_TRUE(between.restore());
  EXPECT_SOUND(home);
}

TEST(MovedData, areRefusedWhereTheyWouldNotMeanTheSame) {
  Compound home;
  home.plain(8);
  auto dollars = home.account("Dollars");
  ASSERT_TRUE(dollars.updateCurrency("USD"));
  auto discount = home.account("Card", "_DiscountAccount");
  auto gone = home.account("Gone");
  ASSERT_TRUE(gone.delete_());
  const auto both = home.group("Both", {*home.cash, *home.bank});
  home.earn("Wage", 1, home.on("2024-06-10"));
  const auto before =
      home.rows("select eid || account || book || ipid || editDate from transactions order by eid");
  struct Case {
    const MonivaAccount& from;
    const MonivaAccount& to;
    const char* why;
  };
  for (const auto& [from, to, why] :
       {Case{*home.cash, *home.cash, "itself"}, Case{*home.cash, *home.home, "a book"},
        Case{*home.home, *home.cash, "an account"}, Case{*home.cash, both, "a group"},
        Case{both, home.account("Other"), "of a group"}, Case{*home.cash, dollars, "another currency"},
        Case{*home.cash, discount, "it tracks no income"}, Case{*home.cash, gone, "deleted"}}) {
    EXPECT_FALSE(moveAllDataTo(from, to)) << why;
  }
  EXPECT_EQ(home.rows("select eid || account || book || ipid || editDate from transactions order by eid"),
            before);
  EXPECT_EQ(moveAllDataTo(home.second, *home.home).value(), 0) << "nothing to move";
}

}  // namespace
}  // namespace moniva
