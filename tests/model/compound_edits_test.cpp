#include <gtest/gtest.h>

#include "support/compound_story.h"

namespace moniva {
namespace {

TEST(CompoundEdits, whatNobodyHasPaidIsTheRest) {
  Compound store;
  auto bike = store.item(100);
  bike.account.clear();
  std::vector<Payment> toPay{store.payment(*store.cash, 40)};
  ASSERT_TRUE(bike.addWithPayments(toPay));
  const std::string uuid = bike.connectionUUID;
  EXPECT_EQ(store.amounts(uuid, kPaymentRow), "40.0 60.0");
  EXPECT_TRUE(*Payment::hasPendingPayment(store.root, uuid));
  EXPECT_EQ(store.number("select totalBalance from account where title = 'Cash'"), -40)
      << "the rest is not paid";
  EXPECT_EQ(store.number("select totalBalance from account where title = 'Home'"), -100);

  auto more = store.payment(*store.bank, 70);
  EXPECT_FALSE(more.addNew(bike.eid)) << "more than is left";
  more.amount = 35;
  ASSERT_TRUE(more.addNew(bike.eid));
  EXPECT_EQ(store.amounts(uuid, kPaymentRow), "25.0 35.0 40.0");
  ASSERT_TRUE(toPay.front().updateAmount(65));
  EXPECT_EQ(store.amounts(uuid, kPaymentRow), "35.0 65.0");
  EXPECT_FALSE(*Payment::hasPendingPayment(store.root, uuid));
  EXPECT_FALSE(bike.updateAmount(90)) << "its payments come to more";
  ASSERT_TRUE(more.delete_());
  EXPECT_EQ(store.rows("select deleted from transactions where eid = ?", {more.eid}), "3");
  EXPECT_EQ(store.amounts(uuid, kPaymentRow), "35.0 65.0");
  auto rest = *Payment::paymentFromEID(
      store.root, store.rows("select eid from transactions where account = '' and bid = 10 and deleted = 0"));
  EXPECT_FALSE(rest.delete_());
  ASSERT_TRUE(rest.updateAccount(store.bank->pk));
  EXPECT_FALSE(*Payment::hasPendingPayment(store.root, uuid)) << "an account is chosen";
  EXPECT_EQ(store.rows("select count(*) from transactions where bid = 10 and (subcategory != '#NOMVCATEGORY' "
                       "or category != ?)",
                       {store.food}),
            "0");
  EXPECT_SOUND(store);
}

TEST(CompoundEdits, refundsComeOffTheExpenseAndGoBack) {
  Compound store;
  auto shoes = store.plain(80);
  const auto first = shoes.refund(30, store.root.now(), store.bank->pk);
  ASSERT_TRUE(first) << first.error().why;
  EXPECT_EQ(store.again(shoes).amount, 50);
  EXPECT_EQ(store.again(shoes).account, "");
  EXPECT_EQ(store.amounts(shoes.connectionUUID, kPaymentRow), "-30.0 80.0");
  EXPECT_EQ(store.rows("select ipid || syear from transactions where eid = ?", {shoes.eid}), "batchEdit1004");
  EXPECT_FALSE(shoes.refund(50.01, store.root.now(), store.cash->pk)) << "above what is left";
  const auto second = shoes.refund(50, store.root.now(), store.cash->pk);
  ASSERT_TRUE(second);
  EXPECT_EQ(store.again(shoes).amount, 0) << "all of it";
  EXPECT_FALSE(shoes.updateRefund(*first, 31));
  ASSERT_TRUE(shoes.updateRefund(*first, 10));
  EXPECT_EQ(store.again(shoes).amount, 20);
  ASSERT_TRUE(shoes.hasRefund().value());
  ASSERT_TRUE(shoes.deleteRefund(*second));
  EXPECT_EQ(store.again(shoes).amount, 70);
  ASSERT_TRUE(shoes.deleteRefund(*first));
  const auto plain = store.again(shoes);
  EXPECT_EQ(plain.amount, 80);
  EXPECT_EQ(plain.advancedType, advanced::kPlain);
  EXPECT_EQ(plain.account, store.cash->pk);
  EXPECT_EQ(plain.connectionUUID, "");
  EXPECT_EQ(store.rows("select count(*) from transactions where deleted = 3 and ipid = 'delete with "
                       "deleteRefund' and transferEID = '' and syear = 0"),
            "3");
  EXPECT_SOUND(store);

  // Each item of a cart has its own refunds.
  const auto uuid = store.cart({20, 10}, 30);
  auto item = *Spend::spendFromEID(
      store.root, store.rows("select eid from transactions where transferEID = ? and amount = 10", {uuid}));
  const auto back = item.refund(4, store.root.now(), store.cash->pk);
  ASSERT_TRUE(back);
  EXPECT_EQ(store.amounts(uuid, kItemRow), "6.0 20.0");
  ASSERT_TRUE(item.deleteRefund(*back));
  EXPECT_EQ(store.amounts(uuid, kItemRow), "10.0 20.0");
  EXPECT_EQ(store.rows("select distinct syear from transactions where transferEID = ?", {uuid}), "1001");
  EXPECT_SOUND(store);
}

TEST(CompoundEdits, goesAndComesBackWhole) {
  Compound store;
  const auto uuid = store.cart({20, 10, 5}, 30);
  auto any = *Spend::spendFromPaymentUUID(store.root, uuid);
  ASSERT_TRUE(any.delete_());
  EXPECT_EQ(store.rows("select count(*) from transactions where transferEID = ? and deleted = 1", {uuid}),
            "5");
  EXPECT_SOUND(store);
  EXPECT_FALSE(any.delete_()) << "twice";
  ASSERT_TRUE(any.restore());
  EXPECT_EQ(store.amounts(uuid, kItemRow), "5.0 10.0 20.0");

  EXPECT_FALSE(any.removeFromCart()) << "more is paid than the others cost";
  auto small = *Spend::spendFromEID(store.root,
                                    store.rows("select eid from transactions where amount = 5 and bid = 20"));
  ASSERT_TRUE(small.removeFromCart());
  EXPECT_EQ(store.amounts(uuid, kPaymentRow), "30.0") << "there is no rest";
  EXPECT_SOUND(store);
  // One payment that cannot be deleted is logged, and the others go.
  ASSERT_TRUE(store.sql("create trigger no before update on transactions when old.account = '" +
                        store.cash->pk + "' begin select raise(abort, 'no'); end"));
  auto left = *Spend::spendFromPaymentUUID(store.root, uuid);
  ASSERT_TRUE(left.delete_());
  EXPECT_EQ(store.rows("select count(*) from transactions where transferEID = ? and deleted = 0", {uuid}),
            "1");
  EXPECT_NE(store.takeFaults().find("==338 Spend:Delete array:self.payments [Error:"), std::string::npos);
}

TEST(CompoundEdits, aGroupWithoutItsItemIsRemovedWhenItIsLookedFor) {
  Compound store;
  const auto uuid = store.cart({20}, 20);
  ASSERT_TRUE(store.sql("delete from transactions where transferEID = ? and bid = 20", {uuid}));
  EXPECT_EQ(Spend::spendFromPaymentUUID(store.root, uuid), std::nullopt);
  EXPECT_EQ(store.rows("select deleted || ipid from transactions where transferEID = ?", {uuid}),
            "3delete with nil connectUUID");
  const auto moved = store.move(5, *store.cash, *store.bank, store.root.now());
  EXPECT_EQ(Spend::spendFromPaymentUUID(store.root, moved.connectUUID), std::nullopt);
  EXPECT_EQ(store.rows("select sum(deleted) from transactions where transferEID = ?", {moved.connectUUID}),
            "0")
      << "a transfer is no group without its item";
}

TEST(CompoundEdits, editsOfOneRowReachTheOthers) {
  Compound store;
  auto plan = store.expense(100);
  ASSERT_TRUE(plan.saveInstallment(3));
  EXPECT_EQ(store.amounts(plan.connectionUUID, kItemRow), "33.33 33.33 33.34");
  EXPECT_EQ(store.rows("select group_concat(paid, '') from (select paid from transactions where transferEID "
                       "= ? and type = 12 order by datetime)",
                       {plan.connectionUUID}),
            "110000");
  auto share = *Spend::spendFromPaymentUUID(store.root, plan.connectionUUID);
  ASSERT_TRUE(share.updateAmount(40));
  EXPECT_EQ(store.amounts(plan.connectionUUID, kPaymentRow), "33.33 33.33 40.0");
  EXPECT_EQ(store.again(plan).amount, 106.66);
  ASSERT_TRUE(share.unpaidIt());
  EXPECT_EQ(store.rows("select sum(paid) from transactions where transferEID = ? and type = 12",
                       {plan.connectionUUID}),
            "0");
  ASSERT_TRUE(plan.updateCategory(store.food, ""));
  EXPECT_EQ(
      store.rows("select count(*) from transactions where transferEID = ? and subcategory = '#NOMVCATEGORY'",
                 {plan.connectionUUID}),
      "7");
  ASSERT_TRUE(plan.cancelInstallment());
  EXPECT_EQ(store.again(plan).type, kind::kExpense);
  EXPECT_EQ(store.again(plan).account, store.cash->pk);
  EXPECT_SOUND(store);

  const auto other = store.book("Other");
  const auto uuid = store.cart({20, 10}, 30);
  auto item = *Spend::spendFromPaymentUUID(store.root, uuid);
  ASSERT_TRUE(item.updateBook(other.pk));
  EXPECT_EQ(store.rows("select distinct book from transactions where transferEID = ? and bid = 20", {uuid}),
            other.pk);
  ASSERT_TRUE(item.updateDate(store.on("2024-07-01 09:00:00")));
  EXPECT_EQ(store.rows("select distinct paid || sday from transactions where transferEID = ?", {uuid}),
            "020240701");
  EXPECT_FALSE(item.paidIt()) << "it lies ahead";

  auto plain = store.plain(9);
  ASSERT_TRUE(plain.updateBook(""));
  EXPECT_EQ(store.rows("select bid || book || category || subcategory from transactions where eid = ?",
                       {plain.eid}),
            "10#NOMVCATEGORY");
  ASSERT_TRUE(plain.updateBook(other.pk));
  EXPECT_EQ(store.rows("select bid || book from transactions where eid = ?", {plain.eid}), "20" + other.pk);
  EXPECT_SOUND(store);
}

TEST(CompoundEdits, clearingLeavesNoRecordHalfPaid) {
  Compound store;
  const auto other = store.book("Other");
  std::vector<Spend> items{store.item(20), store.item(10)};
  items.back().book = other.pk;
  std::vector<Payment> payments{store.payment(*store.cash, 12), store.payment(*store.bank, 18)};
  const auto uuid = *Spend::addCart(store.root, items, payments);
  ASSERT_TRUE(store.bank->clear());
  EXPECT_EQ(store.amounts(uuid, kPaymentRow), "12.0 18.0") << "what the bank paid is to be paid";
  EXPECT_TRUE(*Payment::hasPendingPayment(store.root, uuid));
  EXPECT_SOUND(store);
  auto book = other;
  ASSERT_TRUE(book.clear());
  EXPECT_EQ(store.amounts(uuid, kPaymentRow), "8.0 12.0");
  ASSERT_TRUE(store.home->clear());
  EXPECT_EQ(store.amounts(uuid, kPaymentRow), "");
  EXPECT_SOUND(store);
}

TEST(CompoundEdits, aSeriesFollowsItsSeed) {
  Compound store;
  auto rent = store.expense(500);
  rent.repeat = "Monthly";
  ASSERT_TRUE(rent.addRepeatSeed());
  auto first = store.expense(500);
  first.repeatSeedID = rent.repeatSeedID;
  ASSERT_TRUE(recordEntry(store.root, first));
  auto seed = *Spend::spendFromEID(store.root, rent.repeatSeedID);
  EXPECT_EQ(store.rows("select type || syear || sday || repeat_end_date from transactions where eid = ?",
                       {seed.eid}),
            "851215");
  const auto flat = store.category("Flat").pk;
  ASSERT_TRUE(seed.updateCategory(flat, flat));
  EXPECT_EQ(store.again(first).category, flat);
  const auto uses = [&](const std::string& key) {
    return store.number("select usedTimes from category where oldTitle = ?", {key});
  };
  EXPECT_EQ(uses(flat), 1);
  EXPECT_EQ(uses(store.food), 0);
  const auto other = store.book("Other");
  ASSERT_TRUE(seed.updateBook(other.pk));
  EXPECT_EQ(store.again(first).book, other.pk);
  EXPECT_FALSE(seed.updateRepeat("Fortnightly", {}));
  EXPECT_FALSE(seed.updateRepeat("Monthly", store.on("2020-01-01"))) << "over before it begins";
  ASSERT_TRUE(seed.updateRepeat("Not Repeat", store.root.now()));
  EXPECT_EQ(store.rows("select typeof(repeat_end_date) || deleted || ipid from transactions where eid = ?",
                       {seed.eid}),
            "text1stopRepeat by user");
  EXPECT_SOUND(store);
}

TEST(CompoundEdits, misplacedPaymentsArePutRightAndHealthyOnesOnlyRead) {
  Compound store;
  const auto uuid = store.cart({20, 10}, 12, 18);
  auto item = *Spend::spendFromPaymentUUID(store.root, uuid);
  const auto writes = [&] { return store.number("select total_changes()"); };
  const double before = writes();
  EXPECT_EQ(item.getPaymentArray()->size(), 2U);
  EXPECT_EQ(item.getItemArray()->size(), 2U);
  EXPECT_EQ(writes(), before);
  ASSERT_TRUE(store.sql("update transactions set type = 11 where amount = 12"));
  ASSERT_TRUE(store.sql("update transactions set datetime = datetime + 864000 where amount = 18"));
  EXPECT_EQ(item.getPaymentArray()->size(), 1U);
  EXPECT_EQ(store.rows("select transferEID || syear || deleted from transactions where amount = 12"), "00");
  EXPECT_EQ(store.rows("select paid from transactions where amount = 18"), "0");
}

TEST(CompoundEdits, aCostIsSpreadOverItsMonths) {
  Compound store;
  struct Case {
    const char* from;
    const char* to;
    const char* shares;
    const char* why;
  };
  for (const auto& [from, to, shares, why] : std::initializer_list<Case>{
           {"2024-01-01", "2024-12-31", "10.0 10.0 10.0 10.0 10.0 10.0 10.0 10.0 10.0 10.0 10.0 10.0",
            "whole months alike"},
           {"2024-02-01", "2024-02-01", "120.0", "one day"},
           {"2024-01-16", "2024-04-15", "40.0 40.0 40.0", "months of the range, not of the calendar"},
           {"2024-01-01", "2024-02-15", "40.91 79.09", "the last one in proportion"}}) {
    auto cost = store.expense(120);
    ASSERT_TRUE(cost.saveApportionedCost(store.on(from), store.on(to))) << why;
    EXPECT_EQ(store.amounts(cost.connectionUUID, kItemRow), shares) << why;
    const auto lowered = cost.updateAmount(60);
    ASSERT_TRUE(lowered) << why << lowered.error().why;
    EXPECT_EQ(store.amounts(cost.connectionUUID, kPaymentRow), "60.0") << why;
    ASSERT_TRUE(cost.combineApportionedCost()) << why;
    EXPECT_EQ(store.again(cost).amount, 60) << why;
    EXPECT_EQ(store.again(cost).account, store.cash->pk) << why;
    EXPECT_SOUND(store);
  }
  auto cost = store.expense(0.05);
  EXPECT_FALSE(cost.saveApportionedCost(store.on("2024-01-01"), store.on("2024-12-31")))
      << "shares below a cent";
  EXPECT_FALSE(cost.saveApportionedCost(store.on("2024-03-01"), store.on("2024-02-01")));
  EXPECT_FALSE(store.expense(900).saveApportionedCost(store.on("2024-01-01"), store.on("2031-12-31")))
      << "too many";
}

TEST(CompoundEdits, aRecordMayBeChangedByWhatItSaysItself) {
  Compound store;
  Spend shoes = store.plain(80);
  const auto back = shoes.refund(30, store.root.now(), shoes.account);
  ASSERT_TRUE(back);
  EXPECT_EQ(TransactionItem::fromEID(store.root, *back)->account, store.cash->pk);
  Spend bread = store.plain(3);
  bread.account = store.bank->pk;
  bread.book = store.second.pk;
  EXPECT_TRUE(bread.updateAccount(bread.account));
  bread.book = store.second.pk;
  EXPECT_TRUE(bread.updateBook(bread.book));
  const auto kept = store.again(bread);
  EXPECT_EQ(kept.account + kept.book, store.bank->pk + store.second.pk);
  EXPECT_EQ(store.faults(), "");
}

}  // namespace
}  // namespace moniva
