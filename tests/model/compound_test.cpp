#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <functional>
#include <map>

#include "model/entry_checks.h"
#include "model/mv_transaction.h"
#include "model/record_entry.h"
#include "support/household.h"

namespace moniva {
namespace {

/// A household with carts and plans in it, and what has to be true of it at all times.
class Compound : public Recording {
 public:
  Compound() : second(book("Second")) { setClock("2024-06-15 12:00:00"); }

  MonivaAccount second;

  Spend item(double amount) {
    Spend spend = expense(amount);
    spend.account.clear();
    return spend;
  }
  Payment payment(const MonivaAccount& from, double amount) {
    Payment made(root);
    made.account = from.pk;
    made.amount = amount;
    return made;
  }
  /// A cart of items of those amounts, paid from cash and, where `card` is above zero, the bank.
  std::string cart(const std::vector<double>& amounts, double fromCash, double fromBank = 0) {
    std::vector<Spend> items;
    for (const double amount : amounts) items.push_back(item(amount));
    std::vector<Payment> payments;
    if (fromCash > 0) payments.push_back(payment(*cash, fromCash));
    if (fromBank > 0) payments.push_back(payment(*bank, fromBank));
    const auto uuid = Spend::addCart(root, items, payments);
    EXPECT_TRUE(uuid) << uuid.error().why;
    return uuid.value_or("");
  }
  Spend plain(double amount) {
    Spend spend = expense(amount);
    EXPECT_TRUE(recordEntry(root, spend));
    return *Spend::spendFromEID(root, spend.eid);
  }
  Spend again(const Spend& spend) { return *Spend::spendFromEID(root, spend.eid); }
  std::string amounts(const std::string& uuid, int bid) {
    return rows(
        "select group_concat(amount, ' ') from (select round(amount, 2) as amount from transactions where"
        " transferEID = ? and bid = ? and deleted = 0 and type != 86 order by amount, eid)",
        {uuid, bid});
  }
  /// Nothing when all groups hold together, their seeds say what their parts come to, and what is kept of
  /// every balance is what counting gives.
  std::string faults() {
    std::string found = rows(
        "select transferEID || ': ' || sum(case when bid = 20 and type != 86 then amount else 0 end) || ' / "
        "' ||"
        " sum(case when bid = 10 then amount else 0 end) || ' / ' || sum(case when type = 86 then amount + "
        "amount2"
        " end) from transactions where transferEID != '' and deleted = 0 and type in (11, 12, 86) group by"
        " transferEID having abs(sum(case when bid = 10 then -amount when type != 86 then amount else 0 "
        "end)) > 1e-6"
        " or abs(sum(case when type = 86 then amount + amount2 when bid = 20 then -amount else 0 end)) > "
        "1e-6 and"
        " max(type) = 86");
    for (const auto* held : {&*home, &*cash, &*bank, &second}) {
      const double kept = number("select totalBalance from account where oldTitle = ?", {held->pk});
      const double counted = getTheTotalBalance(*held);
      if (withoutNoise(kept - counted) != 0)
        found += fmt::format("\n{}: {} kept, {} counted", held->title, kept, counted);
    }
    return found;
  }
};

#define EXPECT_SOUND(store) EXPECT_EQ((store).faults(), "")

TEST(Compound, partsComeToTheWholeForAllAmountsAndNumbers) {
  EXPECT_TRUE(rc::check("to the cent", [] {
    static Compound store;
    const double amount = *rc::gen::inRange(1, 10'000'000) / 100.0;
    const int parts = *rc::gen::inRange(1, 61);
    Spend plan = store.expense(amount);
    plan.datetime = store.on(
        fmt::format("2024-{:02}-{:02} 09:30:00", *rc::gen::inRange(1, 13), *rc::gen::inRange(1, 30)));
    double sum = 0;
    bool possible = true;
    for (const auto& one : plan.installmentByPaymentFor(parts)) {
      sum += one.amount;
      possible = possible && one.amount > 0;
      RC_ASSERT(withoutNoise(one.amount * 100) == std::round(one.amount * 100));
    }
    RC_ASSERT(withoutNoise(sum) == amount);
    RC_ASSERT(plan.saveInstallment(parts).has_value() == possible);
    const Date to = store.root.calendar().dateWithDay(plan.datetime, *rc::gen::inRange(0, 1800));
    Spend cost = store.expense(amount);
    const auto shares = cost.apportionCostFrom(cost.datetime, to);
    if (shares) {
      sum = 0;
      for (const auto& share : *shares) sum += share.amount;
      RC_ASSERT(withoutNoise(sum) == amount);
    }
    RC_ASSERT(cost.saveApportionedCost(cost.datetime, to).has_value() == shares.has_value());
  }));
}

/// One change of a record, by its row and for what it is worth; most are refused for most rows.
struct Step {
  const char* name;
  std::function<void(Compound& store, Spend& spend, Payment* bill, double amount)> run;
};
const std::vector<Step>& steps() {
  using S = Compound;
  static const std::vector<Step> all = {
      {"delete", [](S&, Spend& spend, Payment*, double) { (void)spend.delete_(); }},
      {"restore", [](S&, Spend& spend, Payment*, double) { (void)spend.restore(); }},
      {"amount", [](S&, Spend& spend, Payment*, double amount) { (void)spend.updateAmount(amount); }},
      {"foreign",
       [](S&, Spend& spend, Payment*, double amount) { (void)spend.updateAmount(amount, 7, "USD"); }},
      {"refund",
       [](S& store, Spend& spend, Payment*, double amount) {
         (void)spend.refund(amount / 5, store.root.now(), store.bank->pk);
       }},
      {"unrefund", [](S&, Spend& spend, Payment*, double) { (void)spend.deleteRefund(spend.eid); }},
      {"rerefund",
       [](S&, Spend& spend, Payment*, double amount) { (void)spend.updateRefund(spend.eid, amount / 5); }},
      {"account",
       [](S& store, Spend& spend, Payment*, double amount) {
         (void)spend.updateAccount(amount > 30 ? store.bank->pk : "");
       }},
      {"date",
       [](S& store, Spend& spend, Payment*, double amount) {
         (void)spend.updateDate(store.on(amount > 30 ? "2024-07-15 12:00:00" : "2024-06-01 10:00:00"));
       }},
      {"paid",
       [](S&, Spend& spend, Payment*, double amount) {
         (void)(amount > 30 ? spend.paidIt() : spend.unpaidIt());
       }},
      {"cancel", [](S&, Spend& spend, Payment*, double) { (void)spend.cancelInstallment(); }},
      {"combine", [](S&, Spend& spend, Payment*, double) { (void)spend.combineApportionedCost(); }},
      {"respread",
       [](S& store, Spend& spend, Payment*, double) {
         (void)spend.updateApportionedCost(store.on("2024-01-31"), store.on("2024-05-20"));
       }},
      {"spread",
       [](S& store, Spend& spend, Payment*, double) {
         (void)spend.saveApportionedCost(store.on("2024-05-31"), store.on("2024-07-20"));
       }},
      {"divide",
       [](S&, Spend& spend, Payment*, double amount) {
         (void)spend.saveInstallment(1 + static_cast<int>(amount) % 9);
       }},
      {"out of cart", [](S&, Spend& spend, Payment*, double) { (void)spend.removeFromCart(); }},
      {"into cart",
       [](S& store, Spend& spend, Payment*, double amount) {
         auto more = store.item(amount);
         (void)spend.addToCart(more);
       }},
      {"copy", [](S& store, Spend& spend, Payment*, double) { (void)spend.copyToBook(store.second.pk); }},
      {"book",
       [](S& store, Spend& spend, Payment*, double amount) {
         (void)spend.updateBook(amount > 30 ? store.second.pk : amount > 20 ? store.home->pk : "");
       }},
      {"pay",
       [](S& store, Spend& spend, Payment*, double amount) {
         auto more = store.payment(*store.cash, amount);
         (void)more.addNew(spend.eid);
       }},
      {"bill amount", [](S&, Spend&, Payment* bill, double amount) { (void)bill->updateAmount(amount); }},
      {"bill away", [](S&, Spend&, Payment* bill, double) { (void)bill->delete_(); }},
      {"bill back", [](S&, Spend&, Payment* bill, double) { (void)bill->restore(); }},
      {"bill paid",
       [](S&, Spend&, Payment* bill, double amount) {
         (void)(amount > 30 ? bill->paidIt() : bill->unpaidIt());
       }},
      {"bill date",
       [](S& store, Spend&, Payment* bill, double amount) {
         (void)bill->updateDate(store.on(amount > 30 ? "2024-07-15 12:00:00" : "2024-06-01 10:00:00"));
       }},
      {"bill account",
       [](S& store, Spend&, Payment* bill, double amount) {
         (void)bill->updateAccount(amount > 30 ? store.bank->pk : "");
       }},
      {"bill whole",
       [](S&, Spend&, Payment* bill, double amount) {
         bill->amount += 1;
         bill->serviceFeeAmount = 0.5;
         bill->paid = amount > 30;
         (void)bill->update();
       }},
      {"clear",
       [](S& store, Spend&, Payment*, double amount) {
         if (amount < 3) (void)store.bank->clear();
         if (amount > 57) (void)store.second.clear();
       }},
      {"later", [](S& store, Spend&, Payment*, double) { store.setClock("2024-07-20 12:00:00"); }}};
  return all;
}

TEST(Compound, groupsHoldTogetherWhateverIsDone) {
  EXPECT_TRUE(rc::check("items are what payments are, and reading writes nothing", [] {
    static Compound store;
    store.platform.calendar = *Calendar::make("Europe/Berlin", "en_US");
    RC_ASSERT(store.sql("delete from transactions"));
    RC_ASSERT(store.sql("update account set totalBalance = 0"));
    store.setClock("2024-06-15 12:00:00");
    std::vector<std::string> eids;
    const auto remember = [&] {
      eids.clear();
      moniva::Run run =
          store.connection().query("select eid from transactions where deleted < 2 order by eid");
      while (run.next()) eids.emplace_back(run.text(0));
    };
    const auto readAll = [&] {
      for (const auto& eid : eids) {
        RC_ASSERT(MVTransaction::transactionFromEID(store.root, eid).has_value());
        auto spend = *Spend::spendFromEID(store.root, eid);
        RC_ASSERT(spend.getPaymentArray().has_value());
        (void)Spend::spendFromPaymentUUID(store.root, spend.connectionUUID);
      }
    };
    store.plain(40);
    store.cart({30, 12.5, 7.25}, 20, 9.75);
    std::vector<Spend> earned{store.item(50), store.item(20)};
    for (auto& one : earned) one.type = kind::kIncome;
    earned.back().book = store.second.pk;
    std::vector<Payment> got{store.payment(*store.cash, 60)};
    RC_ASSERT(Spend::addCart(store.root, earned, got).has_value());
    Spend plan = store.expense(100);
    plan.foreignAmount = *rc::gen::element(0.0, 12.34);
    RC_ASSERT(plan.saveInstallment(*rc::gen::inRange(1, 6)));
    Spend cost = store.expense(365);
    RC_ASSERT(cost.saveApportionedCost(store.on("2024-03-10"), store.on("2024-08-02")));
    remember();
    std::map<std::string, Spend> former;
    for (const auto& eid : eids) former.emplace(eid, *Spend::spendFromEID(store.root, eid));
    std::string done;
    const int count = *rc::gen::inRange(1, 40);
    for (int i = 0; i < count; ++i) {
      remember();
      const auto& eid = eids[*rc::gen::inRange<std::size_t>(0, eids.size())];
      const double amount = *rc::gen::inRange(1, 6000) / 100.0;
      // What an object says may be older than the store.
      const auto old = former.find(eid);
      auto spend = old != former.end() && *rc::gen::inRange(0, 4) == 0
                       ? old->second
                       : *Spend::spendFromEID(store.root, eid);
      auto bill = Payment::paymentFromEID(store.root, eid);
      const auto& step = steps()[*rc::gen::inRange<std::size_t>(0, steps().size())];
      if (std::string_view(step.name).starts_with("bill") && !bill) continue;
      step.run(store, spend, bill ? &*bill : nullptr, amount);
      done += fmt::format("{} {} {}\n", step.name, eid, amount);
      if (const auto wrong = store.faults(); !wrong.empty()) RC_FAIL(done + wrong);
      RC_ASSERT(
          store.number("select count(*) from transactions where deleted = 0 and (amount < 0 and bid != 10 or"
                       " transferEID != '' and account != '' and bid = 20 and type != 86)") == 0);
    }
    remember();
    const double writes = store.number("select total_changes()");
    for (const auto* zone : {"Pacific/Auckland", "Pacific/Honolulu", "Europe/Berlin"}) {
      store.platform.calendar = *Calendar::make(zone, "en_US");
      readAll();
    }
    store.setClock("2024-07-21 00:30:00");
    readAll();
    if (store.number("select total_changes()") != writes) RC_FAIL(done + "reading wrote");
  }));
}

TEST(Compound, whatNobodyHasPaidIsTheRest) {
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

TEST(Compound, refundsComeOffTheExpenseAndGoBack) {
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

TEST(Compound, goesAndComesBackWhole) {
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

TEST(Compound, aGroupWithoutItsItemIsRemovedWhenItIsLookedFor) {
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

TEST(Compound, editsOfOneRowReachTheOthers) {
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

TEST(Compound, clearingLeavesNoRecordHalfPaid) {
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

TEST(Compound, aSeriesFollowsItsSeed) {
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
  const auto other = store.book("Other");
  ASSERT_TRUE(seed.updateBook(other.pk));
  EXPECT_EQ(store.again(first).book, other.pk);
  ASSERT_TRUE(seed.updateRepeat("Not Repeat", store.root.now()));
  EXPECT_EQ(store.rows("select typeof(repeat_end_date) from transactions where eid = ?", {seed.eid}), "text");
  EXPECT_SOUND(store);
}

TEST(Compound, misplacedPaymentsArePutRightAndHealthyOnesOnlyRead) {
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

TEST(Compound, aCostIsSpreadOverItsMonths) {
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

}  // namespace
}  // namespace moniva
