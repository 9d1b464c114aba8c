#include "model/record_entry.h"

#include <gtest/gtest.h>

#include "support/household.h"

namespace moniva {
namespace {

/// What the store keeps about the use of categories and vendors, at all and in a book.
std::string uses(Recording& store) {
  return store.rows("select group_concat(title || ' ' || ifnull(usedTimes, 0), ', ') from category") + "; " +
         store.rows(
             "select group_concat(title || ' ' || used, ', ') from category, categoryofbook"
             " where cate = oldTitle and book = ?",
             {store.home->pk});
}
std::string balances(Recording& store) {
  return store.rows("select group_concat(title || ' ' || totalBalance, ', ') from account");
}

TEST(RecordEntry, countsUsesAndBalancesOfWhatItWrites) {
  Recording store;
  auto expense = store.expense(12.5);
  ASSERT_TRUE(recordEntry(store.root, expense));
  EXPECT_EQ(uses(store), "Food 1, Bakery 1, Lang 1; Food 1, Bakery 1");
  EXPECT_EQ(balances(store), "Home -12.5, Cash -12.5, Bank 0.0");

  auto income = store.expense(12.5);
  income.type = kind::kIncome;
  income.category = income.subcategory = store.food;
  income.vendor.clear();
  ASSERT_TRUE(recordEntry(store.root, income));
  EXPECT_EQ(uses(store), "Food 2, Bakery 1, Lang 1; Food 2, Bakery 1") << "one category is used once";
  EXPECT_EQ(balances(store), "Home 0.0, Cash 0.0, Bank 0.0");

  auto pending = store.expense(12.5);
  pending.paid = false;
  ASSERT_TRUE(recordEntry(store.root, pending));
  EXPECT_EQ(balances(store), "Home 0.0, Cash 0.0, Bank 0.0") << "pending entries do not count";

  auto transfer = store.transfer(100, 108.5);
  ASSERT_TRUE(recordEntry(store.root, transfer));
  EXPECT_EQ(balances(store), "Home 0.0, Cash -100.0, Bank 108.5");
  for (auto* account : {&*store.home, &*store.cash, &*store.bank})
    ASSERT_TRUE(countTheTotalBalance(*account));
  EXPECT_EQ(balances(store), "Home 0.0, Cash -100.0, Bank 108.5") << "counted afresh";
}

TEST(RecordEntry, writesNothingWhenItsUpkeepIsRefused) {
  for (const std::string table : {"category", "categoryofbook", "account"}) {
    Recording store;
    store.root.monivaAccount = std::make_shared<MonivaAccount>(*store.home);
    const auto before = uses(store) + balances(store);
    const std::string act = table == "categoryofbook" ? "insert" : "update";
    // The book's balance is written before the one of cash, which is refused.
    const std::string when = table == "account" ? " when new.title = 'Cash'" : "";
    ASSERT_TRUE(store.sql("create trigger no before " + act + " on " + table + when +
                          " begin select raise(abort, 'no'); end"));
    auto expense = store.expense(12.5);
    const auto refused = recordEntry(store.root, expense);
    ASSERT_FALSE(refused) << table;
    EXPECT_EQ(store.number("select count(*) from transactions"), 0) << table;
    EXPECT_EQ(uses(store) + balances(store), before) << table;
    EXPECT_EQ(store.root.monivaAccount->totalBalance, 0) << table;
    EXPECT_NE(store.takeFaults(), "") << table;
  }
}

}  // namespace
}  // namespace moniva
