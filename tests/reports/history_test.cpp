#include "reports/history.h"

#include <gtest/gtest.h>

#include "model/debt.h"
#include "recurrence/series_duplicates.h"
#include "reports/alerts.h"
#include "reports/debt_history.h"
#include "support/compound_story.h"

namespace moniva {
namespace {

/// A household at noon of 15 June 2024 whose records are named by their notes.
class History : public Compound {
 public:
  std::string noted(
      const std::string& note, double amount, const std::string& when,
      const std::function<void(Spend&)>& also = [](Spend&) {}) {
    Spend spend = expense(amount);
    spend.note = note;
    spend.datetime = on(when);
    spend.paid = spend.datetime <= root.now();
    also(spend);
    EXPECT_TRUE(recordEntry(root, spend));
    return spend.eid;
  }
  void change(const std::string& eid, const std::string& assignments) {
    EXPECT_TRUE(sql("update transactions set " + assignments + " where eid = ?", {eid}));
  }
  /// The notes of the rows, in their order.
  std::string notes(const Result<std::vector<std::string>>& keys) {
    std::string text;
    for (const auto& eid : keys.value()) {
      text += (text.empty() ? "" : " ") + rows("select note from transactions where eid = ?", {eid});
    }
    return text;
  }
  /// A row the way a series leaves it: "seed day note edited", live or not.
  void occurrence(const std::string& eid, int day, double edited, const std::string& group = "",
                  int isDeleted = 0) {
    EXPECT_TRUE(
        sql("insert into transactions (eid, note, type, bid, amount, account, book, datetime, sday, editDate,"
            " repeat_seed, transferEID, deleted) values (?1, ?1, ?2, ?3, 1, ?4, ?5, 1718000000, ?6, ?7,"
            " 'seed', ?8, ?9)",
            {eid, group.empty() ? 12 : 33, group.empty() ? 20 : 10, cash->pk, group.empty() ? home->pk : "",
             day, edited, group, isDeleted}));
  }
};

TEST(Histories, knowWhatWasEnteredLast) {
  History s;
  for (int day = 1; day <= 25; ++day) s.noted(fmt::format("{}", day), 1, fmt::format("2024-05-{:02}", day));
  s.noted("income", 1, "2024-05-24 12:00:00", [](Spend& spend) { spend.type = 11; });
  s.noted("elsewhere", 1, "2024-05-24 12:00:00", [&](Spend& spend) { spend.book = s.second.pk; });
  s.change(s.noted("series", 1, "2024-05-24 12:00:00"), "repeat_seed = 'x'");
  s.change(s.noted("payment", 1, "2024-05-24 12:00:00"), "bid = 10, subcategory = '#NOMVCATEGORY'");
  s.change(s.noted("further", 1, "2024-05-23 12:00:00"), "type = 14");
  EXPECT_EQ(s.notes(getLastAddedSpend(*s.home, 12, s.on("2024-05-25"))),
            "24 further 23 22 21 20 19 18 17 16 15 14 13 12 11 10 9 8 7 6");
  EXPECT_EQ(s.notes(getLastAddedSpend(*s.home, 11, s.on("2024-06-01"))), "income");
}

TEST(Histories, groupWhatIsUnpaidByDayTypeAndCurrency) {
  History s;
  auto trip = s.book("Trip");
  ASSERT_TRUE(trip.updateCurrency("USD"));
  s.noted("a", 5, "2024-06-20");
  s.noted("b", 7.5, "2024-06-20", [](Spend& spend) { spend.account.clear(); });
  s.noted("c", 3, "2024-06-20", [&](Spend& spend) { spend.account.clear(), spend.book = trip.pk; });
  s.noted("paid", 9, "2024-06-01");
  s.change(s.noted("late", 2, "2024-06-01"), "paid = 0");
  s.change(s.noted("far", 2, "2024-06-20"), "sday = 40000000");
  const auto moved = s.move(4, *s.cash, *s.bank, s.on("2024-06-21"));
  for (const auto& side : {moved.eidA, moved.eidB}) s.change(side, "paid = 0");
  // A cart is what is left to pay of it; a plan has a list of its own.
  s.cart({10, 20}, 12);
  Spend plan = s.expense(30);
  plan.datetime = s.on("2024-05-31");
  ASSERT_TRUE(plan.saveInstallment(3));
  std::string shown;
  const auto days = unpaidTransactions(s.root);
  for (const auto& day : days.value()) {
    shown += fmt::format("{}:{}", day.sday, day.entries.size());
    for (const auto& [type, code, amount, count] : day.sums)
      shown += fmt::format(" {} {} {}x{}", type, code, amount, count);
    shown += "; ";
  }
  EXPECT_EQ(shown,
            "20240601:1 12 EUR 2x1; 20240615:1 12 EUR 18x1; 20240620:3 12 EUR 12.5x2 12 USD 3x1; "
            "20240621:1 33 EUR 4x1; ");
  EXPECT_EQ(unpaidEntriesCount(s.root).value(), 7) << "the row beyond all days is unpaid, too";
  EXPECT_EQ(installmentTransactions(s.root, 12).value().size(), 2);
}

TEST(Histories, haveEachRowOfADayOnce) {
  History s;
  const auto at = s.on("2024-06-10 12:00:00");
  const auto plain = s.noted("plain", 1, "2024-06-10 23:59:59");
  s.noted("elsewhere", 1, "2024-06-10", [&](Spend& spend) { spend.book = s.second.pk; });
  s.noted("before", 1, "2024-06-09 23:59:59");
  s.change(s.noted("batch", 1, "2024-06-10"), "ipid = 'batchEdit'");
  s.move(4, *s.cash, *s.bank, at);
  const auto half = s.move(4, *s.cash, *s.bank, at);
  s.change(half.eidA, "deleted = 3");
  Debt debt(s.root);
  debt.amount = 5, debt.person = "Anna", debt.datetime = at;
  ASSERT_TRUE(debt.add());
  ASSERT_TRUE(debt.repaid(2, at, "", ""));
  s.setClock(at);
  s.cart({1, 2}, 3);
  Spend plan = s.expense(30);
  plan.datetime = at;
  ASSERT_TRUE(plan.saveInstallment(3));
  ASSERT_TRUE(
      s.sql("insert into transactions (eid, type, book, datetime) values ('x', 85, ?, ?)", {s.home->pk, at}));
  const auto counts = [&](const MonivaAccount* book) {
    const auto day = allTransactionsForDate(s.root, at, book).value();
    return fmt::format("{} {} {} {} {} {}", day.spends.size(), day.compounds.size(), day.installments.size(),
                       day.transfers.size(), day.debts.size(), day.repeats.size());
  };
  EXPECT_EQ(counts(nullptr), "2 3 1 2 2 1");
  EXPECT_EQ(counts(&*s.home), "1 3 1 2 2 1");
  EXPECT_EQ(counts(&s.second), "1 0 0 2 2 0");
  s.change(plain, "editDate = " + std::to_string(s.on("2024-06-11").secondsSince1970 - 0.25));
  EXPECT_EQ(allTransTestForDate(s.root, at).value().front().eid, plain) << "in the last second of the day";
}

TEST(Histories, lookSevenDaysAhead) {
  History s;
  const auto seed = [&](const char* eid, const std::string& when, int syear, int isDeleted = 0) {
    EXPECT_TRUE(
        s.sql("insert into transactions (eid, type, datetime, syear, deleted) values (?, 85, ?, ?, ?)",
              {eid, s.on(when), syear, isDeleted}));
  };
  seed("last", "2024-06-22 23:59:59", 12);
  seed("later", "2024-06-23", 12);
  seed("overdue", "2024-05-01", 33);
  seed("plan", "2024-06-16", 1003);
  seed("stopped", "2024-06-16", 12, 1);
  const auto due = needPayTransactionsInSevenDay(s.root).value();
  ASSERT_EQ(due.size(), 2);
  EXPECT_EQ(due[0].eid, "overdue");
  EXPECT_EQ(due[0].syear, 33);
  EXPECT_EQ(due[1].eid, "last");
}

TEST(Histories, tellDebtsByPersonDirectionAndCurrency) {
  History s;
  auto dollars = s.account("Dollars");
  ASSERT_TRUE(dollars.updateCurrency("USD"));
  const auto owe = [&](int type, const char* person, double amount, const std::string& account) {
    Debt debt(s.root);
    debt.type = type, debt.person = person, debt.amount = amount, debt.paymentAccount = account;
    EXPECT_TRUE(debt.add(Debt::Offsetting::apart));
    return debt;
  };
  owe(34, "Ben", 5, s.cash->pk);
  owe(24, "Zoe", 7, s.cash->pk);
  Debt part = owe(24, "Ben", 50, s.cash->pk);
  owe(24, "Ben", 9, dollars.pk);
  ASSERT_TRUE(part.repaid(20, part.datetime, "", s.cash->pk));
  Debt whole = owe(34, "Cleo", 3, s.cash->pk);
  EXPECT_FALSE(hasHistoryDebtTransactions(s.root).value());
  ASSERT_TRUE(whole.repaid(3, whole.datetime, "", s.cash->pk));
  // As older data keeps them.
  ASSERT_TRUE(
      s.sql("insert into transactions (eid, type, book, amount, vendor, bid, account) values"
            " ('o', 12, 'LendBook', 2, 'Ada', 20, ?)",
            {s.cash->pk}));
  const auto shown = [](const Result<std::vector<DebtReport>>& reports) {
    std::string text;
    for (const auto& report : reports.value()) {
      text += fmt::format("{} {} {}:", report.heading, report.person, report.debtArray.size());
      for (const auto& [code, amount, repaid, owed] : report.currencyArray)
        text += fmt::format(" {} {}-{}={}", code, amount, repaid, owed);
      text += "; ";
    }
    return text;
  };
  EXPECT_EQ(shown(recentDebtTransactions(s.root)),
            "Borrow from  3: EUR 57-20=37 USD 9-0=9; Lend to  2: EUR 7-0=7; ");
  EXPECT_EQ(shown(debtorReportWithRepaid(s.root, false)),
            "Borrow from Ben 2: EUR 50-20=30 USD 9-0=9; Borrow from Zoe 1: EUR 7-0=7; "
            "Lend to Ada 1: EUR 2-0=2; Lend to Ben 1: EUR 5-0=5; ");
  EXPECT_EQ(shown(debtReportWithDebtor(s.root, "Zoe", false)), "Borrow from Zoe 1: EUR 7-0=7; ");
  EXPECT_EQ(shown(historyDebtTransactions(s.root)), "Lend to Cleo 1: EUR 3-3=0; ");
  EXPECT_EQ(recentDebtCount(s.root).value(), 5);
  EXPECT_EQ(allDebter(s.root).value(), (std::vector<std::string>{"Ada", "Ben", "Cleo", "Zoe"}));
}

TEST(Alerts, areBillsOfTheLastClosedMonthAndInstalmentsDue) {
  History s;
  auto card = s.account("Card", "_DebtAccount");
  ASSERT_TRUE(card.updateMonthStartsOn(25));
  s.account("Unused", "_DebtAccount");
  const auto charge = [&](double amount, const std::string& when) {
    return s.noted("", amount, when, [&](Spend& spend) { spend.account = card.pk; });
  };
  charge(1, "2024-04-24 23:59:59");
  charge(2, "2024-04-25");
  auto refunded = s.again(*Spend::spendFromEID(s.root, charge(10, "2024-05-24 23:59:59")));
  charge(4, "2024-05-25");
  s.change(charge(8, "2024-05-01"), "paid = 0");
  ASSERT_TRUE(refunded.refund(3, s.on("2024-05-24 23:59:59"), card.pk));
  Spend plan = s.expense(40);
  plan.datetime = s.on("2024-04-15 12:00:00");
  ASSERT_TRUE(plan.saveInstallment(4));
  EXPECT_TRUE(
      s.sql("update transactions set paid = 0 where syear = 1003 and datetime > ?", {s.on("2024-05-01")}));
  const auto alerts = allAlertInfo(s.root).value();
  ASSERT_EQ(alerts.bills.size(), 1);
  const auto& bill = alerts.bills.front();
  EXPECT_EQ(bill.lastMonthBileAmount, 9);
  EXPECT_EQ(bill.text, "Card / April, 2024");
  EXPECT_TRUE(s.root.calendar().isSameDay(bill.beginDate, s.on("2024-04-25")));
  EXPECT_TRUE(s.root.calendar().isSameDay(bill.endDate, s.on("2024-05-24")));
  ASSERT_EQ(alerts.installments.size(), 1);
  const auto& due = alerts.installments.front();
  EXPECT_EQ(due.text, "Food - Bakery / May 15, 2024");
  EXPECT_EQ(fmt::format("{} {} {}/{} {}", due.count, due.amount, due.paidCount, due.parts, due.currency),
            "2 20 1/4 EUR");
  ASSERT_TRUE(card.close(true));
  EXPECT_TRUE(allAlertInfo(s.root).value().bills.empty());
}

TEST(SeriesDuplicates, leaveTheLatestOfEachDay) {
  struct Case {
    const char* why;
    std::function<void(History&)> story;
    const char* left;
    int removed;
  };
  for (const auto& [why, story, left, removed] : {
           Case{"the one edited last stays",
                [](History& s) {
                  s.occurrence("a", 1, 30), s.occurrence("b", 1, 10), s.occurrence("c", 1, 20);
                },
                "a", 2},
           Case{"days are apart", [](History& s) { s.occurrence("a", 1, 30), s.occurrence("b", 2, 10); },
                "a b", 0},
           Case{"both sides of a transfer are one record",
                [](History& s) { s.occurrence("a", 1, 10, "g"), s.occurrence("b", 1, 11, "g"); }, "a b", 0},
           Case{"a transfer made twice goes with both its sides",
                [](History& s) {
                  s.occurrence("a", 1, 20, "g"), s.occurrence("b", 1, 20, "g");
                  s.occurrence("c", 1, 10, "h"), s.occurrence("d", 1, 30, "h");
                },
                "c d", 1},
           Case{"what is in use stays before what a person deleted",
                [](History& s) { s.occurrence("a", 1, 10, "", 1), s.occurrence("b", 1, 20); }, "b", 1},
           Case{"what was removed before does not count",
                [](History& s) { s.occurrence("a", 1, 10, "", 3), s.occurrence("b", 1, 20); }, "b", 0},
           Case{"rows that know no day are no duplicates",
                [](History& s) { s.occurrence("a", 0, 10), s.occurrence("b", 0, 20); }, "a b", 0},
       }) {
    History s;
    story(s);
    ASSERT_TRUE(countTheTotalBalances(s.root, {s.cash->pk, s.home->pk}));
    EXPECT_EQ(clearDuplicateRecurringItemFor(s.root, "seed").value(), removed) << why;
    EXPECT_EQ(s.rows("select group_concat(eid, ' ') from (select eid from transactions where repeat_seed ="
                     " 'seed' and deleted < 2 order by eid)"),
              left)
        << why;
    EXPECT_SOUND(s) << why;
    EXPECT_EQ(s.number("select count(*) from transactions where ipid like 'delete with clearDup%' and"
                       " (edit_ipid != ? or editDate < 1000)",
                       {s.root.itsUDID()}),
              0)
        << why;
  }
}

}  // namespace
}  // namespace moniva
