#include "model/record_entry.h"

#include <gtest/gtest.h>

#include "support/household.h"

namespace moniva {
namespace {

/// A household with categories and a vendor, and what the store keeps about their use.
class Recording : public Household {
 public:
  Recording() {
    food = category("Food").pk;
    MVCategory below(root);
    below.title = "Bakery";
    below.parent = food;
    EXPECT_TRUE(below.addCate());
    bakery = below.pk;
    Vendor payee(root);
    payee.title = "Lang";
    EXPECT_TRUE(payee.add());
    vendor = payee.pk;
  }

  Spend expense() {
    Spend spend(root);
    spend.amount = 12.5;
    spend.book = home->pk;
    spend.account = cash->pk;
    spend.category = food;
    spend.subcategory = bakery;
    spend.vendor = vendor;
    return spend;
  }
  std::string uses() {
    return rows("select group_concat(title || ' ' || ifnull(usedTimes, 0), ', ') from category");
  }
  std::string usesInBook() {
    return rows(
        "select group_concat(title || ' ' || used, ', ') from category, categoryofbook"
        " where cate = oldTitle and book = ?",
        {home->pk});
  }
  std::string balances() {
    return rows("select group_concat(title || ' ' || totalBalance, ', ') from account");
  }

  std::string food;
  std::string bakery;
  std::string vendor;
};

TEST(RecordEntry, countsUsesAndBalancesOfWhatItWrites) {
  Recording store;
  auto expense = store.expense();
  ASSERT_TRUE(recordEntry(store.root, expense));
  EXPECT_EQ(store.uses(), "Food 1, Bakery 1, Lang 1");
  EXPECT_EQ(store.usesInBook(), "Food 1, Bakery 1");
  EXPECT_EQ(store.balances(), "Home -12.5, Cash -12.5, Bank 0.0");

  auto income = store.expense();
  income.type = kind::kIncome;
  income.category = income.subcategory = store.food;
  income.vendor.clear();
  ASSERT_TRUE(recordEntry(store.root, income));
  EXPECT_EQ(store.uses(), "Food 2, Bakery 1, Lang 1") << "one category is used once";
  EXPECT_EQ(store.balances(), "Home 0.0, Cash 0.0, Bank 0.0");

  auto pending = store.expense();
  pending.paid = false;
  ASSERT_TRUE(recordEntry(store.root, pending));
  EXPECT_EQ(store.uses(), "Food 3, Bakery 2, Lang 2");
  EXPECT_EQ(store.balances(), "Home 0.0, Cash 0.0, Bank 0.0") << "pending entries do not count";

  Transfer transfer(store.root);
  transfer.accountA = store.cash->pk;
  transfer.accountB = store.bank->pk;
  transfer.amountA = 100;
  transfer.amountB = 108.5;
  transfer.acrossCurrencies = true;
  ASSERT_TRUE(recordEntry(store.root, transfer));
  EXPECT_EQ(store.balances(), "Home 0.0, Cash -100.0, Bank 108.5");
  // Counting everything again comes to the same.
  for (auto* account : {&*store.home, &*store.cash, &*store.bank})
    ASSERT_TRUE(countTheTotalBalance(*account));
  EXPECT_EQ(store.balances(), "Home 0.0, Cash -100.0, Bank 108.5");
}

TEST(RecordEntry, writesNothingWhenItsUpkeepIsRefused) {
  for (const std::string table : {"category", "categoryofbook", "account"}) {
    Recording store;
    store.root.monivaAccount = std::make_shared<MonivaAccount>(*store.home);
    const auto before = store.uses() + store.usesInBook() + store.balances();
    const std::string act = table == "categoryofbook" ? "insert" : "update";
    // The book's balance is written before the one of cash, which is refused.
    const std::string when = table == "account" ? " when new.title = 'Cash'" : "";
    ASSERT_TRUE(store.sql("create trigger no before " + act + " on " + table + when +
                          " begin select raise(abort, 'no'); end"));
    auto expense = store.expense();
    const auto refused = recordEntry(store.root, expense);
    ASSERT_FALSE(refused) << table;
    EXPECT_EQ(store.number("select count(*) from transactions"), 0) << table;
    EXPECT_EQ(store.uses() + store.usesInBook() + store.balances(), before) << table;
    EXPECT_EQ(store.root.monivaAccount->totalBalance, 0) << table;
    EXPECT_NE(store.takeFaults(), "") << table;
  }
}

}  // namespace
}  // namespace moniva
