#include "model/transfer.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <cmath>
#include <functional>
#include <tuple>

#include "model/record_entry.h"
#include "model/record_template.h"
#include "support/household.h"

namespace moniva {
namespace {

/// A household that keeps dollars besides, with what transfers are told by.
class Moving : public Recording {
 public:
  Moving() : dollars(account("Dollars")), drawer(account("Drawer")) {
    EXPECT_TRUE(dollars.updateCurrency("USD"));
  }
  /// A transfer that is entered with its balances: "leaves" holds the charge.
  Transfer entered(double leaves, double charge, double arrives, const MonivaAccount& to) {
    auto made = transfer(leaves, arrives);
    made.accountB = to.pk;
    made.serviceCharge = charge;
    made.acrossCurrencies = to.currency != cash->currency;
    const auto done = recordEntry(root, made);
    EXPECT_TRUE(done) << done.error().why;
    return made;
  }
  /// Both rows' amounts, A's first, and the charge they come to.
  std::string amounts(const Transfer& transfer) {
    const auto read = Transfer::transferFromUUID(root, transfer.connectUUID);
    EXPECT_TRUE(read);
    return rows(
               "select group_concat(amount || ' ' || amount2, '; ') from (select * from transactions where"
               " transferEID = ? order by type desc)",
               {transfer.connectUUID}) +
           fmt::format("; {}", read ? read->serviceCharge : -1);
  }
  /// Everything in the rows but their stamps.
  std::string told(const Transfer& transfer) {
    return rows(
        "select json_array(type, amount, amount2, bid, deleted, note, repeat, paid, sday, barcode,"
        " datetime, repeat_seed) from transactions where transferEID = ? order by type",
        {transfer.connectUUID});
  }
  std::string balances() {
    return rows(
        "select group_concat(totalBalance, ' ') from (select totalBalance from account where title in"
        " ('Cash', 'Bank', 'Dollars') order by title)");
  }

  MonivaAccount dollars;
  MonivaAccount drawer;
};

TEST(Transfers, areTwoRowsOrNone) {
  Recording home;
  const auto same = home.move(40, *home.cash, *home.bank, home.on("2024-02-29 10:00:00"));
  EXPECT_EQ(
      home.rows("select json_array(type, amount, amount2, account = ?, vendor = ?, bid, sday, repeat, paid)"
                " from transactions where transferEID = ? order by type",
                {home.cash->pk, home.bank->pk, same.connectUUID}),
      "[23,40.0,0.0,0,0,\"10\",20240229,\"Not Repeat\",1]\n"
      "[33,40.0,0.0,1,1,\"10\",20240229,\"Not Repeat\",1]");
  EXPECT_EQ(home.number("select vendor = ? from transactions where eid = ?", {home.cash->pk, same.eidB}), 1);

  auto exchange = home.transfer(100, 108.5);
  exchange.repeat = "Monthly";
  exchange.repeatSeed = "seed";
  const auto commits = home.connection().commits();
  ASSERT_TRUE(exchange.add());
  EXPECT_EQ(home.connection().commits(), commits + 1);
  EXPECT_EQ(home.rows("select amount || '|' || amount2 from transactions where transferEID = ? order by type",
                      {exchange.connectUUID}),
            "108.5|100.0\n100.0|108.5");
  const auto read = Transfer::transferFromUUID(home.root, exchange.connectUUID);
  ASSERT_TRUE(read);
  EXPECT_EQ(read->accountB, home.bank->pk);
  EXPECT_EQ(read->amountB, 108.5);
  EXPECT_TRUE(read->acrossCurrencies);
  EXPECT_EQ(read->repeatSeed, "seed");
  EXPECT_EQ(read->isDeleted, 0);
  home.sql("update transactions set deleted = 1 where eid = ?", {exchange.eidB});
  EXPECT_EQ(Transfer::transferFromUUID(home.root, exchange.connectUUID)->isDeleted, 1);

  // The second side's identifier is taken: the first must not stay alone.
  auto clash = home.transfer(1, 1);
  clash.eidB = same.eidB;
  const auto refused = clash.add();
  ASSERT_FALSE(refused);
  EXPECT_NE(refused.error().why.find("UNIQUE"), std::string::npos) << refused.error().why;
  EXPECT_EQ(home.number("select count(*) from transactions"), 4);
  EXPECT_NE(home.takeFaults().find("=== 数据库已损坏[19] UNIQUE"), std::string::npos);
  home.sql("delete from transactions where eid = ?", {same.eidB});
  EXPECT_EQ(Transfer::transferFromUUID(home.root, same.connectUUID), std::nullopt) << "half a transfer";
}

TEST(Transfers, keepTheirSidesTogetherWhateverIsEdited) {
  struct Case {
    const char* why;
    double leaves, charge, arrives;
    bool across;
    std::function<Result<>(Transfer&)> edit;
    const char* rows;      ///< nothing when it is refused
    const char* balances;  ///< of bank, cash and dollars
  };
  const auto a = [](double to) { return [to](Transfer& one) { return one.updateAmountA(to); }; };
  const auto b = [](double to) { return [to](Transfer& one) { return one.updateAmountB(to); }; };
  const auto m = [](double to) { return [to](Transfer& one) { return one.updateMoved(to); }; };
  const auto fee = [](double to) { return [to](Transfer& one) { return one.updateServiceCharge(to); }; };
  for (const auto& [why, leaves, charge, arrives, across, edit, expected, balances] : {
           Case{"what leaves above what arrives is the charge", 42, 2, 40, false, a(52),
                "52.0 0.0; 40.0 0.0; 12", "40.0 -52.0 0.0"},
           Case{"also when less arrives", 42, 2, 40, false, b(10), "42.0 0.0; 10.0 0.0; 32",
                "10.0 -42.0 0.0"},
           Case{"both sides of what is moved", 42, 2, 40, false, m(50), "52.0 0.0; 50.0 0.0; 2",
                "50.0 -52.0 0.0"},
           Case{"what is moved, in A's currency", 102, 2, 108.5, true, m(90), "92.0 108.5; 108.5 90.0; 2",
                "0.0 -92.0 108.5"},
           Case{"a charge comes on top", 40, 0, 40, false, fee(0.2), "40.2 0.0; 40.0 0.0; 0.2",
                "40.0 -40.2 0.0"},
           Case{"whatever the size", 100000000000.06, 0.07, 99999999999.99, false, fee(0.03),
                "100000000000.02 0.0; 99999999999.99 0.0; 0.03", "99999999999.99 -100000000000.02 0.0"},
           Case{"and goes", 40.3, 0.3, 40, false, fee(0), "40.0 0.0; 40.0 0.0; 0", "40.0 -40.0 0.0"},
           Case{"each tells what the other has", 102, 2, 108.5, true, a(92), "92.0 108.5; 108.5 90.0; 2",
                "0.0 -92.0 108.5"},
           Case{"both ways", 102, 2, 108.5, true, b(99), "102.0 99.0; 99.0 100.0; 2", "0.0 -102.0 99.0"},
           Case{"a charge is no part of what was changed", 102, 2, 108.5, true, fee(3),
                "103.0 108.5; 108.5 100.0; 3", "0.0 -103.0 108.5"},
           Case{"down to the smallest coin", 1.01, 1, 0.01, true, a(1.005), "1.005 0.01; 0.01 0.005; 1",
                "0.0 -1.005 0.01"},
           Case{"and up again", 0.01, 0, 0.01, true, b(7), "0.01 7.0; 7.0 0.01; 0", "0.0 -0.01 7.0"},
           Case{"less leaves than arrives", 42, 2, 40, false, a(39.99), nullptr, "40.0 -42.0 0.0"},
           Case{"more arrives than leaves", 42, 2, 40, false, b(42.01), nullptr, "40.0 -42.0 0.0"},
           Case{"a charge cannot be all there is", 102, 2, 108.5, true, a(2), nullptr, "0.0 -102.0 108.5"},
           Case{"nor below zero", 42, 2, 40, false, fee(-1), nullptr, "40.0 -42.0 0.0"},
           Case{"nor anything but a number", 42, 2, 40, false, fee(std::nan("")), nullptr, "40.0 -42.0 0.0"},
           Case{"an amount is above zero", 42, 2, 40, false, m(0), nullptr, "40.0 -42.0 0.0"},
           Case{"and not beyond measure with its charge", 42, 2, 40, false, m(1e12), nullptr,
                "40.0 -42.0 0.0"},
       }) {
    Moving home;
    auto one = home.entered(leaves, charge, arrives, across ? home.dollars : *home.bank);
    const auto before = home.amounts(one);
    const auto done = edit(one);
    EXPECT_EQ(done.has_value(), expected != nullptr) << why;
    EXPECT_EQ(home.amounts(one), expected != nullptr ? expected : before) << why;
    EXPECT_EQ(home.balances(), balances) << why;
    const auto read = Transfer::transferFromEIDB(home.root, one.eidB);
    ASSERT_TRUE(read) << why;
    EXPECT_EQ(std::tie(read->amountA, read->amountB, read->serviceCharge),
              std::tie(one.amountA, one.amountB, one.serviceCharge))
        << why << ": the object says what the store does";
  }
}

TEST(Transfers, changeAnAccountOnBothRows) {
  Moving home;
  auto one = home.entered(40, 0, 40, *home.bank);
  const auto before = home.told(one);
  const auto stamps = home.number("select sum(editDate) from transactions");
  ASSERT_TRUE(one.updateAccountA(home.drawer.pk));
  EXPECT_EQ(home.told(one), before) << "nothing else";
  EXPECT_EQ(home.rows("select (account = ?) || (vendor = ?) from transactions order by type desc",
                      {home.drawer.pk, home.drawer.pk}),
            "10\n01");
  EXPECT_EQ(home.balances(), "40.0 0.0 0.0");
  EXPECT_GT(home.number("select sum(editDate) from transactions"), stamps);
  for (const auto& account : {home.drawer.pk, home.home->pk, std::string("none"), std::string()}) {
    EXPECT_FALSE(one.updateAccountB(account)) << "'" << account << "' is A, a book or nothing";
  }
  auto card = home.account("Card", "_DiscountAccount");
  EXPECT_FALSE(one.updateAccountB(card.pk)) << "it tracks no transfers";
  EXPECT_EQ(one.accountB, home.bank->pk);

  ASSERT_TRUE(one.updateServiceCharge(2) && one.updateAccountB(home.dollars.pk));
  EXPECT_EQ(home.amounts(one), "42.0 40.0; 40.0 40.0; 2") << "each has the other's amount from now on";
  ASSERT_TRUE(one.updateAmountB(43) && one.updateAccountB(home.bank->pk));
  EXPECT_EQ(home.amounts(one), "42.0 0.0; 40.0 0.0; 2") << "what leaves one arrives in the other again";
  EXPECT_EQ(home.balances(), "40.0 0.0 0.0");
}

TEST(Transfers, areDeletedAndBackAsOne) {
  for (const bool byA : {true, false}) {
    Moving home;
    const auto made = home.entered(40, 0, 40, *home.bank);
    auto one = byA ? Transfer::transferFromEIDA(home.root, made.eidA)
                   : Transfer::transferFromEIDB(home.root, made.eidB);
    ASSERT_TRUE(one);
    EXPECT_EQ(Transfer::transferFromEIDA(home.root, made.eidB), std::nullopt) << "B is not A";
    EXPECT_FALSE(one->restore()) << "it is there";
    ASSERT_TRUE(one->delete_());
    EXPECT_EQ(home.rows("select deleted from transactions"), "1\n1");
    EXPECT_EQ(home.balances(), "0.0 0.0 0.0");
    EXPECT_TRUE(Transfer::list(home.root, {})->empty());
    EXPECT_EQ(
        Transfer::list(home.root, {.account = home.bank->pk, .from = {}, .to = {}, .deleted = true})->size(),
        1U);
    EXPECT_FALSE(one->delete_());
    ASSERT_TRUE(one->restore());
    EXPECT_EQ(home.balances(), "40.0 -40.0 0.0");
    EXPECT_EQ(one->isDeleted, 0);

    // An account that was cleared took its side along for good.
    ASSERT_TRUE((byA ? home.cash : home.bank)->clear());
    const auto gone = home.rows("select deleted from transactions order by type desc");
    EXPECT_EQ(Transfer::list(home.root, {})->size(), 1U) << "the other account still has it";
    auto half = Transfer::transferFromUUID(home.root, made.connectUUID);
    ASSERT_TRUE(half && half->isHalf() && half->delete_());
    EXPECT_FALSE(half->isHalf());
    ASSERT_TRUE(half->restore());
    EXPECT_EQ(home.rows("select deleted from transactions order by type desc"), gone);
  }
}

TEST(Transfers, settleByTheirDate) {
  Moving home;
  auto one = home.entered(40, 0, 40, *home.bank);
  ASSERT_TRUE(one.updateDate(home.on("2024-03-01 00:10:00")) && one.updateNote("later"));
  EXPECT_EQ(home.rows("select sday || paid || note || barcode from transactions"),
            "202403010laterEurope/Berlin\n202403010laterEurope/Berlin");
  EXPECT_EQ(home.balances(), "0.0 0.0 0.0") << "pending";
  ASSERT_TRUE(one.updateDate(home.on("2024-02-28")));
  EXPECT_EQ(home.balances(), "40.0 -40.0 0.0");
  EXPECT_FALSE(one.updateDate(home.on("1066-10-14")));
  home.sql("delete from transactions where eid = ?", {one.eidA});
  EXPECT_FALSE(one.updateNote("half of it")) << "half a transfer is none";
  EXPECT_EQ(home.rows("select note from transactions"), "later");
}

TEST(Transfers, thatRepeatAreTheFirstOfASeries) {
  Moving home;
  auto one = home.transfer(102, 108.5);
  one.accountB = home.dollars.pk;
  one.serviceCharge = 2;
  one.acrossCurrencies = true;
  one.datetime = home.on("2024-01-31 10:00:00");
  one.repeat = "Fortnightly";
  EXPECT_FALSE(one.add()) << "no such rule";
  one.repeat = "Monthly";
  one.repeatEndDate = home.on("2024-12-31");
  ASSERT_TRUE(one.add());
  EXPECT_EQ(home.rows("select json_array(type, amount, amount2, repeat, sday, syear, repeat_seed = ?,"
                      " repeat_end_date = ?) from transactions order by type",
                      {one.repeatSeed, home.on("2024-12-31")}),
            "[23,108.5,100.0,\"Not Repeat\",20240131,0,1,0]\n[33,102.0,108.5,\"Not Repeat\",20240131,0,1,0]\n"
            "[85,102.0,108.5,\"Monthly\",31,33,0,1]");
  EXPECT_TRUE(one.isRepeatItem());
  EXPECT_FALSE(one.hasDuplicateRepeatSeed());

  auto next = Transfer::transferFromSeed(home.root, one.repeatSeed);
  ASSERT_TRUE(next);
  EXPECT_EQ(next->repeat, "Monthly");
  next->datetime = home.on("2024-02-29");
  ASSERT_TRUE(next->add());
  EXPECT_EQ(home.amounts(*next), home.amounts(one)) << "the seed says all of it";
  EXPECT_EQ(home.number("select count(*) from transactions where type = 85"), 1);

  auto twin = home.transfer(102, 108.5);
  twin.accountB = home.dollars.pk;
  twin.serviceCharge = 2;
  twin.acrossCurrencies = true;
  ASSERT_TRUE(twin.add());
  EXPECT_FALSE(twin.isRepeatItem());
  ASSERT_TRUE(twin.updateRepeat("Monthly", home.on("2024-12-31")));
  EXPECT_TRUE(twin.isRepeatItem());
  EXPECT_TRUE(twin.hasDuplicateRepeatSeed());
  ASSERT_TRUE(twin.updateRepeat("Monthly", Date{}));
  EXPECT_FALSE(twin.hasDuplicateRepeatSeed()) << "one ends and the other does not";
  ASSERT_TRUE(one.updateRepeat("Monthly", Date{}));
  EXPECT_TRUE(twin.hasDuplicateRepeatSeed()) << "neither ends";
  EXPECT_FALSE(one.updateRepeat("Daily", home.on("2023-01-01"))) << "over before it begins";
  ASSERT_TRUE(twin.updateRepeat("Not Repeat", Date{}));
  EXPECT_FALSE(twin.stopRecurring()) << "it is stopped already";
  EXPECT_FALSE(one.hasDuplicateRepeatSeed());
  EXPECT_EQ(home.rows("select json_array(repeat, repeat_end_date) from transactions where type = 85 and"
                      " deleted = 1"),
            "[\"Not Repeat\",\"\"]");
}

TEST(Transfers, areRefusedWholeWhenTheyMakeNoSense) {
  struct Case {
    const char* why;
    double leaves, charge, arrives;
    bool across;
  };
  for (const auto& [why, leaves, charge, arrives, across] : {
           Case{"more arrives than leaves", 40, 0, 50, false},
           Case{"the charge does not fit", 40, 2, 40, false},
           Case{"a charge below zero", 40, -1, 41, false},
           Case{"a charge that is all there is", 40, 40, 43, true},
       }) {
    Moving home;
    auto one = home.transfer(leaves, arrives);
    one.serviceCharge = charge;
    one.acrossCurrencies = across;
    one.repeat = "Daily";
    EXPECT_FALSE(one.add()) << why;
    one = home.transfer(40, 40);
    one.accountB = home.home->pk;
    EXPECT_FALSE(one.add()) << "a book";
    EXPECT_EQ(home.number("select count(*) from transactions"), 0) << why << ": no seed either";
  }
}

TEST(Templates, makeRecordsAndCountTheirUse) {
  Moving home;
  auto one = home.entered(102, 2, 108.5, home.dollars);
  ASSERT_TRUE(one.addTemplate("To \"the\" States"));
  EXPECT_EQ(one.getTemplateTitle(), "To \"the\" States");
  EXPECT_FALSE(one.hasSameTemplate("To \"the\" States")) << "its own";
  const auto shortcut = one.getShortcut();
  ASSERT_TRUE(shortcut);
  EXPECT_EQ(eidOfTemplateShortcut(home.root, *shortcut), one.templateEID);
  EXPECT_EQ(home.balances(), "0.0 -102.0 108.5") << "a template moves no money";
  home.sql("insert into transactions (eid, type, sweek) values ('old', 83, 7), ('odd', 82, '{not json')");

  auto made = Transfer::transferFromTemplateShortcut(home.root, *shortcut);
  ASSERT_TRUE(made);
  ASSERT_TRUE(made->addTransferFromTemplate());
  EXPECT_EQ(home.amounts(*made), home.amounts(one));
  EXPECT_EQ(home.rows("select ipid from transactions where transferEID = ?", {made->connectUUID}),
            "createdByTemplate\ncreatedByTemplate");
  EXPECT_EQ(home.balances(), "0.0 -204.0 217.0");

  auto expense = home.expense(12.5);
  expense.note = "rolls";
  auto rolls = RecordTemplate::of(home.root, expense);
  rolls->title = "Rolls";
  ASSERT_TRUE(rolls->add());
  EXPECT_FALSE(RecordTemplate::of(home.root, expense)->add()) << "without a title";
  EXPECT_FALSE(one.updateTemplate("Rolls")) << "a title is one template's";
  EXPECT_TRUE(one.hasSameTemplate("Rolls"));
  for (int use = 0; use < 2; ++use) {
    auto spend = RecordTemplate::withTitle(home.root, "Rolls")->spend();
    ASSERT_TRUE(spend && rolls->use(*spend));
    const auto read = Spend::spendFromEID(home.root, spend->eid);
    EXPECT_EQ(read->ipid, "createdByTemplate");
    EXPECT_EQ(read->subcategory + read->vendor + read->note, home.bakery + home.vendor + "rolls");
  }
  const auto listed = transactionTemplates(home.root, {kind::kTransferTemplate, kind::kExpenseTemplate, 0});
  ASSERT_EQ(listed->size(), 4U);
  EXPECT_EQ(listed->at(0).title + std::to_string(listed->at(0).templateUsedTimes), "Rolls2") << "used most";
  EXPECT_EQ(listed->at(1).templateUsedTimes, 1);

  // What it says can change; its shortcut and its uses stay.
  ASSERT_TRUE(one.updateAmountA(52) && one.updateTemplate("States"));
  EXPECT_EQ(RecordTemplate::withTitle(home.root, "States")->amount, 52);
  EXPECT_EQ(RecordTemplate::templateFromShortcut(home.root, *shortcut)->templateUsedTimes, 1);

  EXPECT_FALSE(rolls->restore()) << "it is there";
  ASSERT_TRUE(rolls->delete_());
  EXPECT_FALSE(rolls->delete_());
  EXPECT_EQ(eidOfTemplateShortcut(home.root, rolls->templateURL), std::nullopt);
  EXPECT_FALSE(rolls->use(expense)) << "it is deleted";
  ASSERT_TRUE(one.updateTemplate("Rolls"));
  EXPECT_FALSE(rolls->restore()) << "its title was taken";
  EXPECT_FALSE(rolls->rename("Bread"));
  ASSERT_TRUE(RecordTemplate::withTitle(home.root, "Rolls")->rename("States") && rolls->restore());
  ASSERT_TRUE(home.cash->close(true));
  EXPECT_FALSE(rolls->spend()) << "the account is closed";
  EXPECT_FALSE(RecordTemplate::withTitle(home.root, "States")->transfer());
}

/// Whatever is done to a transfer, allowed or not: its sides tell the same story, and the balances kept are
/// those the rows add up to.
RC_GTEST_PROP(Transfers, stayWhole, ()) {
  Moving home;
  const std::vector<std::string> accounts{home.cash->pk, home.bank->pk, home.dollars.pk, home.drawer.pk};
  const auto cents = [](int most) { return *rc::gen::inRange(-1, most) / 100.0; };
  const double moved = *rc::gen::inRange(1, 5000) / 100.0;
  const bool across = *rc::gen::arbitrary<bool>();
  auto one = home.entered(moved + 0.5, 0.5, across ? 70 : moved, across ? home.dollars : *home.bank);
  for (int n = *rc::gen::inRange(1, 12); n > 0; --n) {
    switch (*rc::gen::inRange(0, 9)) {
      case 7:
        std::ignore = one.updateMoved(cents(6000));
        break;
      case 0:
        std::ignore = one.updateAmountA(cents(6000));
        break;
      case 1:
        std::ignore = one.updateAmountB(cents(6000));
        break;
      case 2:
        std::ignore = one.updateServiceCharge(cents(300));
        break;
      case 3:
        std::ignore = one.updateAccountA(*rc::gen::elementOf(accounts));
        break;
      case 4:
        std::ignore = one.updateAccountB(*rc::gen::elementOf(accounts));
        break;
      case 5:
        std::ignore = one.updateDate(home.on(*rc::gen::element("2024-02-01", "2025-02-01")));
        break;
      case 6:
        std::ignore = one.delete_();
        break;
      default:
        std::ignore = one.restore();
    }
    const auto read = Transfer::transferFromUUID(home.root, one.connectUUID);
    RC_ASSERT(read.has_value());
    RC_ASSERT(std::tie(read->accountA, read->accountB, read->amountA, read->amountB, read->acrossCurrencies,
                       read->serviceCharge, read->paid, read->isDeleted) ==
              std::tie(one.accountA, one.accountB, one.amountA, one.amountB, one.acrossCurrencies,
                       one.serviceCharge, one.paid, one.isDeleted));
    RC_ASSERT(home.number("select count(*) from transactions as a, transactions as b where a.type = 33 and"
                          " b.type = 23 and a.vendor = b.account and b.vendor = a.account and"
                          " a.paid = b.paid and a.datetime = b.datetime and a.sday = b.sday and"
                          " a.deleted = b.deleted and (case when a.amount2 > 0 then a.amount2 = b.amount and"
                          " b.amount2 > 0 and b.amount2 <= a.amount else b.amount2 = 0 and"
                          " b.amount <= a.amount end)") == 1);
    RC_ASSERT(read->acrossCurrencies ==
              (*currencyOfAccount(home.root, one.accountA) != *currencyOfAccount(home.root, one.accountB)));
    for (const auto& key : accounts) {
      const auto account = MonivaAccount::getAccountWithPK(home.root, key);
      RC_ASSERT(std::abs(account->totalBalance - getTheTotalBalance(*account)) < 1e-9);
    }
  }
}

}  // namespace
}  // namespace moniva
