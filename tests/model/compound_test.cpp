#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <functional>
#include <map>

#include "support/compound_story.h"

namespace moniva {
namespace {

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

}  // namespace
}  // namespace moniva
