#include "recurrence/settle_due.h"

#include <gtest/gtest.h>

#include "support/compound_story.h"

namespace moniva {
namespace {

TEST(SettleDue, WhatComesDueIsSettledWithItsRecord) {
  Compound home;
  const Date ahead = home.on("2024-06-20 10:00:00");
  Spend plain = home.expense(10);
  plain.datetime = ahead;
  plain.paid = false;
  EXPECT_TRUE(recordEntry(home.root, plain));
  // Without an account it waits for the person.
  Spend unpaid = home.item(7);
  unpaid.datetime = ahead;
  unpaid.paid = false;
  EXPECT_TRUE(recordEntry(home.root, unpaid));
  std::vector<Spend> items{home.item(20)};
  items.front().datetime = ahead;
  items.front().paid = false;
  std::vector<Payment> payments{home.payment(*home.bank, 5), home.payment(*home.bank, 15)};
  payments[0].datetime = ahead;
  payments[1].datetime = home.on("2024-07-20");
  EXPECT_TRUE(Spend::addCart(home.root, items, payments));
  Spend plan = home.expense(30);
  EXPECT_TRUE(plan.saveInstallment(3));
  Transfer moved(home.root);
  moved.accountA = home.cash->pk;
  moved.accountB = home.bank->pk;
  moved.amountA = moved.amountB = 3;
  moved.datetime = home.on("2024-08-01");
  moved.paid = false;
  EXPECT_TRUE(recordEntry(home.root, moved));
  Spend gone = home.expense(10);
  gone.datetime = home.on("2024-08-01");
  gone.paid = false;
  EXPECT_TRUE(recordEntry(home.root, gone));
  EXPECT_TRUE(gone.delete_());
  const auto asDeleted = home.rows("select editDate || paid from transactions where eid = ?", {gone.eid});
  EXPECT_EQ(home.faults(), "");

  struct Case {
    std::string_view why;
    const char* now;
    int records;
    double cash;
    double bank;
    double book;
  };
  const Case cases[] = {
      {"nothing is due", "2024-06-20 09:59:59", 0, -10, 0, -10},
      {"a record, a payment and the item it is for", "2024-06-20 10:00:00", 2, -20, -5, -40},
      {"an instalment with its payment", "2024-07-16", 1, -30, -5, -50},
      {"the rest of the record", "2024-07-21", 1, -30, -20, -50},
      {"once is enough", "2024-07-21", 0, -30, -20, -50},
      {"both sides of a transfer, and none that is deleted", "2024-08-02", 1, -33, -17, -50},
  };
  for (const auto& one : cases) {
    home.setClock(one.now);
    const auto before = home.connection().totalChanges();
    EXPECT_EQ(makeMonivasPaid(home.root), one.records) << one.why;
    EXPECT_EQ(home.connection().totalChanges() == before, one.records == 0) << one.why;
    const auto kept = [&](const MonivaAccount& account) {
      return home.number("select totalBalance from account where oldTitle = ?", {account.pk});
    };
    EXPECT_EQ(kept(*home.cash), one.cash) << one.why;
    EXPECT_EQ(kept(*home.bank), one.bank) << one.why;
    EXPECT_EQ(kept(*home.home), one.book) << one.why;
    EXPECT_EQ(home.faults(), "") << one.why;
  }
  EXPECT_EQ(
      home.rows("select eid from transactions where paid = 0 and account = '' and bid = 20 and syear = 0"),
      unpaid.eid);
  EXPECT_EQ(home.number("select count(*) from transactions where syear = 1003 and ipid = 'batchEdit'"), 0);
  EXPECT_EQ(home.rows("select editDate || paid from transactions where eid = ?", {gone.eid}), asDeleted);
}

TEST(SettleDue, ACostSpreadOverMonthsIsSettledAtOnce) {
  Compound home;
  Spend cost = home.expense(30);
  cost.datetime = home.on("2024-06-20");
  cost.paid = false;
  EXPECT_TRUE(cost.saveApportionedCost(home.on("2024-06-01"), home.on("2024-08-31")));
  home.setClock("2024-06-21");
  EXPECT_EQ(makeMonivasPaid(home.root), 1);
  EXPECT_EQ(home.rows("select paid from transactions where bid = 20 and type = 12 order by datetime"),
            "1\n1\n1");
  EXPECT_EQ(home.faults(), "");
}

}  // namespace
}  // namespace moniva
