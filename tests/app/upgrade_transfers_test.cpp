#include "app/do_db_updater.h"
#include "model/account_balance.h"
#include "support/compound_story.h"
#include "support/old_store.h"

namespace moniva {
namespace {

TEST(UpgradeTransfersTest, eachRepairMendsItsDamageOnceAndNothingElse) {
  OldStore store("broken_records");
  const std::string stays =
      "select group_concat(eid || '|' || type || '|' || deleted || '|' || account || '|' ||"
      " ifnull(vendor, '-') || '|' || syear || '|' || book || '|' || editDate, ' ') from"
      " transactions where eid like 'stay-%'";
  const std::string before = store.rows(stays);
  struct Case {
    const char* why;
    Result<> (*step)(MVAppRoot&);
    std::string look, expected;
  };
  const Case cases[] = {
      {"accounts from the other side", fixedMissingTransferAccount,
       "select eid || ' ' || account || '>' || ifnull(vendor, '-') from transactions where transferEID in "
       "('T1',"
       " 'T2', 'T3') order by eid",
       "blank-a Cash>Bank\nblank-b Bank>Cash\nlost-a Cash>Gone\nlost-b Gone>Cash\nnull-a Cash>Bank\n"
       "null-b Bank>Cash"},
      {"the side that went, the one edited last", restoreWrongDeletedTransferIfNeed,
       "select eid || ' ' || ipid from transactions where type = 23 and deleted = 0 and transferEID > 'T4'",
       "whole-b "},
      {"plans say that they are", updateInstallment,
       "select eid from transactions where syear = 1003 order by eid",
       "plan-1\nplan-2\nplan-2-paid\nplan-seed"},
      {"the cart's book", fixWrongBookAfterEditTransCartBook20210903,
       "select eid || ' ' || book from transactions where transferEID = 'C1' order by eid",
       "cart-1 Club\ncart-2 Club\ncart-3 Club"},
      {"shares of the older kind", updateExpenseCostItemType20240928,
       "select eid from transactions where type = 12 and transferEID = 'K1' order by eid", "cost-1\ncost-2"},
  };
  // What is kept at first is what the rows come to then, so that a change that balances miss shows.
  for (const int kind : {kAccountKind, kBookKind}) {
    for (auto held : MonivaAccount::list(store.root, kind)) ASSERT_TRUE(countTheTotalBalance(held));
  }
  for (const auto& [why, step, look, expected] : cases) {
    SCOPED_TRACE(why);
    EXPECT_GT(store.changedBy(step), 0);
    EXPECT_EQ(store.rows(look), expected);
    EXPECT_EQ(store.changedBy(step), 0) << "the second time";
    for (const int kind : {kAccountKind, kBookKind}) {
      for (const auto& held : MonivaAccount::list(store.root, kind)) {
        EXPECT_EQ(held.totalBalance, getTheTotalBalance(held)) << held.title;
      }
    }
  }
  EXPECT_EQ(store.rows(stays), before);
}

TEST(UpgradeTransfersTest, aHealthyStoreStaysAsItIs) {
  Compound store;
  store.cart({5, 6}, 11);
  auto plan = store.expense(30);
  ASSERT_TRUE(plan.saveInstallment(3));
  auto cost = store.expense(30);
  ASSERT_TRUE(cost.saveApportionedCost(store.on("2024-05-01"), store.on("2024-07-31")));
  auto moved = store.transfer(100, 110);
  ASSERT_TRUE(recordEntry(store.root, moved));
  auto series = store.transfer(50, 50);
  series.repeat = "Monthly";
  ASSERT_TRUE(recordEntry(store.root, series));
  // As its first catch-up has it.
  ASSERT_TRUE(store.sql("update transactions set payDate = datetime where type = 85"));
  auto gone = store.move(7, *store.cash, *store.bank, store.on("2024-02-01"));
  ASSERT_TRUE(gone.delete_());
  // The transfers of the cleared account are halves on purpose.
  auto third = store.account("Third");
  store.move(9, *store.cash, third, store.on("2023-02-01"));
  ASSERT_TRUE(third.clear());

  struct Case {
    const char* name;
    Result<> (*step)(MVAppRoot&);
  };
  for (const auto& [name, step] :
       {Case{"seeds", updateRepeatSeedTransaction}, Case{"undated", clearWrongRecurringItem2},
        Case{"2021-02", fixWrongDeletedByClearDuplicateRecurringItem20210209},
        Case{"2022-07", fixWrongDeletedByClearRecurringItem20220719},
        Case{"accounts", fixedMissingTransferAccount}, Case{"sides", restoreWrongDeletedTransferIfNeed},
        Case{"plans", updateInstallment}, Case{"carts", fixWrongBookAfterEditTransCartBook20210903},
        Case{"shares", updateExpenseCostItemType20240928}, Case{"first edition", fixDataForMoniva1IfNeed}}) {
    const auto records = store.rows("select group_concat(eid || editDate || deleted) from transactions");
    const auto flags = store.number("select count(*) from monivaSys");
    const auto changed = store.connection().totalChanges();
    ASSERT_TRUE(step(store.root)) << name;
    const auto newFlags = store.number("select count(*) from monivaSys") - flags;
    EXPECT_EQ(static_cast<double>(store.connection().totalChanges() - changed), newFlags) << name;
    EXPECT_EQ(store.rows("select group_concat(eid || editDate || deleted) from transactions"), records)
        << name;
  }
}

}  // namespace
}  // namespace moniva
