#include "model/mv_transaction.h"

#include <gtest/gtest.h>

#include "model/debt.h"
#include "model/record_entry.h"
#include "model/record_template.h"
#include "support/household.h"

namespace moniva {
namespace {

class Ledger : public Recording {
 public:
  Ledger() { setClock("2024-06-15 12:00:00"); }

  /// A record of every kind there is, one of each.
  void fill() {
    auto plain = expense(12.5);
    EXPECT_TRUE(recordEntry(root, plain));
    shown["plain"] = plain.eid;
    auto ahead = expense(3);
    ahead.datetime = on("2024-09-01");
    ahead.paid = false;
    EXPECT_TRUE(recordEntry(root, ahead));
    std::vector<Spend> items{expense(20), expense(10)};
    for (auto& item : items) item.account.clear();
    std::vector<Payment> payments{paid(25)};
    EXPECT_TRUE(Spend::addCart(root, items, payments));
    shown["cart item"] = items.front().eid;
    shown["cart payment"] = payments.front().eid;
    auto bike = expense(100);
    bike.account.clear();
    payments = {paid(40)};
    EXPECT_TRUE(bike.addWithPayments(payments));
    shown["single item"] = bike.eid;
    shown["payment"] = payments.front().eid;
    auto plan = expense(90);
    EXPECT_TRUE(plan.saveInstallment(3));
    shown["plan"] = plan.eid;
    shown["instalment"] = part(plan, kItemRow);
    shown["instalment payment"] = part(plan, kPaymentRow);
    auto cost = expense(120);
    EXPECT_TRUE(cost.saveApportionedCost(on("2024-01-01"), on("2024-12-31")));
    shown["cost"] = part(cost, kItemRow);
    shown["cost payment"] = part(cost, kPaymentRow);
    auto moved = transfer(5, 5);
    EXPECT_TRUE(recordEntry(root, moved));
    shown["side A"] = moved.eidA;
    shown["side B"] = moved.eidB;
    Debt debt(root);
    debt.type = kind::kLent;
    debt.person = "Ann";
    debt.amount = 30;
    debt.paymentAccount = cash->pk;
    EXPECT_TRUE(debt.add());
    EXPECT_TRUE(debt.repaid(10, root.now(), "", cash->pk));
    shown["debt"] = debt.eid;
    shown["repayment"] = rows("select eid from transactions where type = 25");
    auto bare = expense(1);
    EXPECT_TRUE(recordEntry(root, bare));
    auto stored = *Spend::spendFromEID(root, bare.eid);
    EXPECT_TRUE(stored.updateBook(""));
    shown["bare payment"] = bare.eid;
    auto rent = expense(500);
    rent.repeat = "Monthly";
    EXPECT_TRUE(rent.addRepeatSeed());
    shown["series"] = rent.repeatSeedID;
    auto kept = *RecordTemplate::of(root, *Spend::spendFromEID(root, plain.eid));
    kept.title = "Lunch";
    EXPECT_TRUE(kept.add());
    shown["template"] = kept.eid;
    url = kept.templateURL;
  }
  MVTransaction load(const std::string& eid) { return *MVTransaction::transactionFromEID(root, eid); }

  std::map<std::string, std::string> shown;
  std::string url;

 private:
  Payment paid(double amount) {
    Payment made(root);
    made.account = cash->pk;
    made.amount = amount;
    return made;
  }
  std::string part(const Spend& of, int bid) {
    return rows(
        "select eid from transactions where transferEID = ? and bid = ? and type = 12 order by datetime "
        "limit 1",
        {of.connectionUUID, bid});
  }
};

TEST(MVTransactions, areUnderstoodByTheirRowAndOnlyRead) {
  Ledger store;
  store.fill();
  struct Case {
    const char* what;
    RecordKind kind;
    const char* note;
    const char* category;
  };
  const double writes = store.number("select total_changes()");
  int together = 0;
  for (const auto& [what, kind, note, category] :
       std::initializer_list<Case>{{"plain", RecordKind::plain, "", "Food - Bakery"},
                                   {"cart item", RecordKind::cartItem, "", "Food - Bakery"},
                                   {"cart payment", RecordKind::cartPayment, "", "Food"},
                                   {"single item", RecordKind::singleItem, "", "Food - Bakery"},
                                   {"payment", RecordKind::spendPayment, "", "Food"},
                                   {"plan", RecordKind::installmentSeed, "", "Food - Bakery"},
                                   {"instalment", RecordKind::installmentItem, "", "Food - Bakery"},
                                   {"instalment payment", RecordKind::installmentPayment, "", "Food"},
                                   {"cost", RecordKind::costItem, "", "Food - Bakery"},
                                   {"cost payment", RecordKind::costPayment, "", "Food"},
                                   {"side A", RecordKind::transfer, "Cash > Bank", ""},
                                   {"side B", RecordKind::transfer, "Cash > Bank", ""},
                                   {"debt", RecordKind::debt, "Lend to : Ann", ""},
                                   {"repayment", RecordKind::debt, "Repay : Ann", ""},
                                   {"bare payment", RecordKind::purePayment, "", ""},
                                   {"series", RecordKind::repeatSeed, "", "Food - Bakery"},
                                   {"template", RecordKind::recordTemplate, "", "Food - Bakery"}}) {
    const auto read = store.load(store.shown.at(what));
    EXPECT_EQ(read.recordKind, kind) << what;
    EXPECT_EQ(read.noteString, note) << what;
    EXPECT_EQ(read.categoryString, category) << what;
    EXPECT_EQ(read.currency, "EUR") << what;
  }
  // Rows read by one statement are the same as those read one by one.
  ASSERT_TRUE(MVTransaction::transactionsWhere(
      store.root, "amount > ? order by eid", std::initializer_list<Value>{0}, [&](const MVTransaction& row) {
        const auto single = store.load(row.eid);
        const auto text = [](const MVTransaction& one) {
          return fmt::format("{} {} {} {} {} {} {} {} {} {} {}", static_cast<int>(one.recordKind), one.type(),
                             one.amount, one.noteString, one.categoryString, one.vendorString, one.people,
                             one.currency, one.datetime.secondsSince1970, one.paid, one.transferEID);
        };
        EXPECT_EQ(text(row), text(single));
        ++together;
      }));
  EXPECT_EQ(together, store.number("select count(*) from transactions where amount > 0"));
  // Every row of a healthy store, and every list of its groups.
  RecordNames names(store.root);
  std::vector<std::string> eids;
  {
    moniva::Run run = store.connection().query("select eid from transactions");
    while (run.next()) eids.emplace_back(run.text(0));
  }
  for (const auto& eid : eids) {
    ASSERT_TRUE(MVTransaction::transactionFromEID(store.root, eid, &names));
    auto spend = *Spend::spendFromEID(store.root, eid);
    EXPECT_TRUE(spend.getPaymentArray() && spend.getItemArray() && spend.getSplitItemsArray() &&
                spend.hasRefund());
    (void)Spend::spendFromPaymentUUID(store.root, spend.connectionUUID);
  }
  EXPECT_EQ(store.number("select total_changes()"), writes);
  EXPECT_EQ(store.platform.userDefaults->stringForKey("crashNeedFix").value_or(""), "");
  EXPECT_EQ(MVTransaction::transactionFromEID(store.root, "none"), std::nullopt);
  EXPECT_EQ(MVTransaction::transactionFromTemplateShortcut(store.root, store.url)->eid,
            store.shown["template"]);
  EXPECT_FALSE(store.load(store.shown["debt"]).editable());
  EXPECT_EQ(store.load(store.shown["plain"]).vendorString, "Lang");
  EXPECT_EQ(store.load(store.shown["plain"]).addedDate, store.root.now());
}

TEST(MVTransactions, mendWhatCannotBe) {
  Ledger store;
  auto plan = store.expense(90);
  ASSERT_TRUE(plan.saveInstallment(3));
  ASSERT_TRUE(store.sql("update transactions set bid = '' where eid = ?", {plan.eid}));
  EXPECT_EQ(store.load(plan.eid).recordKind, RecordKind::installmentSeed);
  EXPECT_EQ(store.rows("select bid from transactions where eid = ?", {plan.eid}), "20");
  EXPECT_EQ(store.platform.userDefaults->stringForKey("crashNeedFix").value_or(""), "1");

  auto ahead = store.expense(3);
  ahead.datetime = store.on("2024-06-16");
  ASSERT_TRUE(recordEntry(store.root, ahead));
  auto today = store.expense(3);
  today.datetime = store.on("2024-06-15 23:00:00");
  ASSERT_TRUE(recordEntry(store.root, today));
  ASSERT_TRUE(store.sql("update transactions set paid = 1 where eid = ?", {ahead.eid}));
  EXPECT_TRUE(MVTransaction::transactionsWhere(store.root, "eid = ?", std::initializer_list<Value>{ahead.eid},
                                               [](const MVTransaction& row) { EXPECT_FALSE(row.paid); }));
  EXPECT_EQ(store.number("select paid from transactions where eid = ?", {ahead.eid}), 0)
      << "written once the rows were read";
  EXPECT_FALSE(store.load(ahead.eid).paid);
  EXPECT_TRUE(store.load(today.eid).paid) << "the day is not ahead";
  EXPECT_EQ(store.number("select totalBalance from account where title = 'Cash'"),
            getTheTotalBalance(*store.cash));

  ASSERT_TRUE(store.sql("update transactions set syear = 7 where transferEID = ? and bid = 10",
                        {plan.connectionUUID}));
  const auto odd = store.rows("select eid from transactions where syear = 7 limit 1");
  EXPECT_EQ(store.load(odd).noteString,
            "[Error] 12 / 7 / " + odd + " / " + plan.connectionUUID + " / Cash /  / 0");
}

/// Data of older programs, of several devices, and of accidents: what cannot be is told or let be, and costs
/// nothing of what stands beside it.
TEST(MVTransactions, ofDamagedStoresAreLetBe) {
  struct Case {
    const char* why;
    const char* damage;
    const char* probe;
    const char* expected;
  };
  for (const auto& [why, damage, probe, expected] : std::initializer_list<Case>{
           {"a transfer and a debt without a role are what they were",
            "update transactions set bid = null where type in (23, 33, 34, 25)",
            "select group_concat(bid, ' ') from (select bid from transactions where type in (23, 33, 34, "
            "25))",
            "20 20 20 20"},
           {"nothing is known but the type",
            "update transactions set account = null, book = null, transferEID = null, category = null,"
            " subcategory = null, vendor = null, syear = null, sweek = null, repeat = null, note = null",
            "select count(*) from transactions where deleted > 0", "0"},
           {"a transfer has the UUID of a cart",
            "update transactions set transferEID = (select transferEID from transactions where syear = 1001)"
            " where type in (23, 33)",
            "select count(*) from transactions where type in (23, 33) and deleted = 0 and transferEID != ''",
            "2"},
           {"income has the UUID of an expense",
            "update transactions set transferEID = (select transferEID from transactions where syear = 1001),"
            " syear = 1004, type = 11 where syear = 1004",
            "select group_concat(t) from (select count(*) as t from transactions where deleted = 0 and bid = "
            "10"
            " and transferEID != '' and type < 13 and syear in (1001, 1004) group by type)",
            "2,2"},
           {"a payment by itself has a UUID",
            "update transactions set transferEID = 'own' where bid = 10 and transferEID = '' and type = 12",
            "select count(*) from transactions where transferEID = 'own' and deleted = 0", "1"},
           {"seeds lost their parts",
            "delete from transactions where syear in (1002, 1003) and type != 86 and bid = 20",
            "select count(*) from transactions where type = 86 and deleted = 0", "2"},
           {"parts lost their seeds", "delete from transactions where type = 86",
            "select count(*) from transactions where syear in (1002, 1003) and deleted > 0", "0"},
           {"what is below zero", "update transactions set amount = -amount where type in (11, 12)",
            "select count(*) from transactions where deleted > 0", "0"},
           {"no JSON at all", "update transactions set sweek = '{\"refundOf\": 12, ' where type in (11, 12)",
            "select count(*) from transactions where deleted > 0", "0"}}) {
    Ledger store;
    store.fill();
    ASSERT_TRUE(store.sql(damage)) << why;
    for (const auto* held : {&*store.home, &*store.cash, &*store.bank}) {
      auto row = *MonivaAccount::getAccountWithPK(store.root, held->pk);
      ASSERT_TRUE(countTheTotalBalance(row)) << why;
    }
    std::vector<std::string> eids;
    {
      moniva::Run run = store.connection().query("select eid from transactions");
      while (run.next()) eids.emplace_back(run.text(0));
    }
    for (const auto& eid : eids) {
      const auto read = store.load(eid);
      EXPECT_TRUE(!read.isTransfer() || !read.paymentAccount || read.noteString == "Cash > Bank") << why;
      EXPECT_TRUE(!read.isDebt() || read.people.empty() || read.noteString == "Lend to : Ann") << why;
      auto spend = *Spend::spendFromEID(store.root, eid);
      EXPECT_TRUE(spend.getPaymentArray() && spend.getItemArray() && spend.hasRefund()) << why;
      (void)Payment::paymentFromUUID(store.root, spend.connectionUUID);
      if (spend.advancedType != 1002 && spend.advancedType != 1003)
        (void)Spend::spendFromPaymentUUID(store.root, spend.connectionUUID);
    }
    EXPECT_EQ(store.rows(probe), expected) << why;
    // Whatever is done then is done or refused, and balances are what counting gives.
    for (const auto& eid : eids) {
      auto spend = *Spend::spendFromEID(store.root, eid);
      (void)spend.updateAmount(7);
      (void)spend.updateDate(store.on("2024-06-03"));
      (void)spend.refund(1, store.root.now(), store.cash->pk);
      (void)spend.cancelInstallment();
      (void)spend.combineApportionedCost();
      (void)store.load(eid).delete_();
      (void)store.load(eid).restore();
    }
    for (const auto* held : {&*store.home, &*store.cash, &*store.bank}) {
      EXPECT_NEAR(store.number("select totalBalance from account where oldTitle = ?", {held->pk}),
                  getTheTotalBalance(*held), 1e-9)
          << why;
    }
  }
}

TEST(MVTransactions, areDeletedAndBroughtBackByTheirKind) {
  Ledger store;
  store.fill();
  struct Case {
    const char* what;
    int rowsGone;
    const char* why;
  };
  const auto live = [&] { return store.number("select count(*) from transactions where deleted = 0"); };
  for (const auto& [what, gone, why] :
       std::initializer_list<Case>{{"plain", 1, ""},
                                   {"cart item", 4, "with the rest still to pay"},
                                   {"plan", 7, "seed, items and payments"},
                                   {"instalment", 7, "the plan it is of"},
                                   {"cost", 14, ""},
                                   {"side A", 2, ""},
                                   {"side B", 2, ""},
                                   {"debt", 2, "with its repayment"},
                                   {"repayment", 1, ""}}) {
    const double before = live();
    auto record = store.load(store.shown.at(what));
    ASSERT_TRUE(record.delete_()) << what;
    EXPECT_EQ(before - live(), gone) << what << why;
    ASSERT_TRUE(store.load(store.shown.at(what)).restore()) << what;
    EXPECT_EQ(live(), before) << what;
  }
  for (const auto* held : {&*store.home, &*store.cash, &*store.bank}) {
    EXPECT_NEAR(store.number("select totalBalance from account where oldTitle = ?", {held->pk}),
                getTheTotalBalance(*held), 1e-9);
  }
  // A debt follows what becomes of its repayment.
  auto debt = *Debt::debtFromEID(store.root, store.shown["debt"]);
  ASSERT_TRUE(debt.repaid(20, store.root.now(), "", store.cash->pk));
  const auto settled = [&] { return store.rows("select needReimburse from transactions where type = 34"); };
  EXPECT_EQ(settled(), "1");
  auto repayment = store.load(store.shown["repayment"]);
  ASSERT_TRUE(repayment.delete_());
  EXPECT_EQ(settled(), "0");
  ASSERT_TRUE(store.load(repayment.eid).restore());
  EXPECT_EQ(settled(), "1");
}

}  // namespace
}  // namespace moniva
