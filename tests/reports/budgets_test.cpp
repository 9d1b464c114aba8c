#include <gtest/gtest.h>

#include "support/budgeting.h"

namespace moniva {
namespace {

TEST(Budgets, carryWhatIsLeftFromMonthToMonth) {
  Budgeting us;
  us.monthly(2024, 2, 100, true);
  us.monthly(2024, 5, 50);
  us.row(12, 30, "2024-02-29 23:59:59");
  us.row(12, 150, "2024-03-31");
  us.row(12, 70, "2024-05-20");
  us.row(12, 5, "2024-06-01");
  const std::string story =
      "2*> 100-30+0=70, 3> 100-150+70=20, 4> 100-0+20=120, 5* 50-70+120=100, 6 50-5+0=45";
  EXPECT_EQ(us.story(), story);
  EXPECT_EQ(us.live(kind::kBudgetCarry), "") << "the history is only read";
  const BookBudget may = *us.ofMonth(2024, 5);
  EXPECT_EQ(may.lastMonthRolloverAmount, 120);
  EXPECT_EQ(us.live(kind::kBudgetCarry), "2024/3 70.0\n2024/4 20.0\n2024/5 120.0");
  EXPECT_EQ(us.main().lastMonthRolloverAmount, 0) << "May keeps what it has left";
  EXPECT_EQ(us.number("select amount from transactions where type = 63 and smonth = 6"), 0)
      << "lest the row before be found";

  us.row(12, 20, "2024-03-05");
  EXPECT_EQ(us.ofMonth(2024, 5)->lastMonthRolloverAmount, 100) << "entered late";
  EXPECT_EQ(us.live(kind::kBudgetCarry), "2024/3 70.0\n2024/4 0.0\n2024/5 100.0\n2024/6 0.0");
  const auto before = us.writes();
  us.main();
  us.ofMonth(2024, 5);
  us.done(us.history().calculateHistoryBudgetRolloverFrom(2024, 2));
  EXPECT_EQ(us.writes(), before) << "a sound store is only read";

  EXPECT_EQ(*us.home->recordCount(), 5) << "budgets are no records";
  BookBudget april = *us.ofMonth(2024, 4);
  EXPECT_EQ(april.eid, us.ofMonth(2024, 2)->eid) << "the row in force";
  EXPECT_EQ(april.month, 4);
  EXPECT_EQ(april.budgetBeginDate, us.on("2024-04-01"));
  april.leftAmount = 7;
  us.done(april.calculateBalanceRollover());
  EXPECT_EQ(us.number("select amount from transactions where type = 63 and smonth = 5"), 7);
  april.inheritRemaining = false;
  us.done(april.calculateBalanceRollover());
  EXPECT_EQ(us.number("select amount from transactions where type = 63 and smonth = 5"), 0);
  EXPECT_FALSE(us.ofMonth(2024, 1)) << "before the first";
  EXPECT_FALSE(getMonthlyBudgetForYear(*us.home, 2024, 13));
}

TEST(Budgets, carryNothingOfTheNoiseOfNumbers) {
  Budgeting us;
  us.monthly(2024, 2, 0.8, true);
  us.monthly(2024, 3, 1, true);
  us.monthly(2024, 6, 100);
  us.row(12, 0.1, "2024-02-02");
  us.row(12, 0.7, "2024-02-03");
  EXPECT_EQ(us.ofMonth(2024, 3)->lastMonthRolloverAmount, 0) << "of doubles";
  us.row(12, 0.9, "2024-03-03");
  us.row(12, 0.4, "2024-04-03");
  us.row(12, 1.7, "2024-05-03");
  us.row(12, 150, "2024-06-03");
  EXPECT_EQ(us.main().lastMonthRolloverAmount, 0) << "of single precision";
  EXPECT_EQ(us.main().leftAmount, -50) << "nothing is carried in";
  us.sql("update transactions set amount = 34.2 where type = 61 and smonth = 3");
  us.sql("update transactions set amount = 1000000000.01 where type = 61 and smonth = 6");
  std::vector<double> left;
  const auto months = us.history().months();
  for (const auto& month : *months) left.push_back(month.remaining);
  EXPECT_EQ(left, (std::vector{0.0, 33.3, 67.1, 99.6, 999999949.61})) << "rounded where it is carried";
}

TEST(Budgets, keepToTheMonthsOfTheBook) {
  struct Case {
    int startsOn;
    int year, month;
    const char* first;
    const char* last;
    const char* why;
  };
  Budgeting us;
  us.monthly(2023, 1, 100);
  for (const auto& c : {
           Case{1, 2024, 2, "2024-02-01", "2024-02-29", "a leap year"},
           Case{25, 2024, 2, "2024-02-25", "2024-03-24", "from the 25th"},
           Case{-25, 2024, 1, "2023-12-25", "2024-01-24", "from the 25th of the month before"},
           Case{31, 2024, 1, "2024-01-31", "2024-03-01", "up to the next month"},
       }) {
    us.done(us.home->updateMonthStartsOn(c.startsOn));
    const BookBudget budget = *us.ofMonth(c.year, c.month);
    EXPECT_EQ(budget.budgetBeginDate, us.on(c.first)) << c.why;
    EXPECT_EQ(budget.budgetEndDate, us.on(c.last)) << c.why;
  }
  for (const int start : {28, 29, 30, 31, -28, -29, -30, -31}) {
    us.home->monthStartsOn = start;
    for (int day = 0; day < 730; ++day) {
      us.setClock(us.root.calendar().getNextDay(us.root.now()));
      const BookBudget present(*us.home);
      const Date today = us.root.calendar().dateBegin(us.root.now());
      ASSERT_TRUE(present.budgetBeginDate <= today && today <= present.budgetEndDate) << start << ' ' << day;
    }
  }
  us.setClock("2024-06-15");
  us.done(us.home->updateMonthStartsOn(1));
  us.row(12, 7, "2024-05-31 23:00:00");
  EXPECT_EQ(us.history().months()->back().expense, 0);
  auto east = Calendar::make("Asia/Tokyo", "en_US");
  us.platform.calendar = *east;
  EXPECT_EQ(us.history().months()->back().expense, 7) << "there it was June already";
  EXPECT_EQ(us.history().months()->back().title, "2024/6 June");
}

TEST(Budgets, tellWhatIsLeftAndWhatMayBeSpentToday) {
  Budgeting us;
  us.row(12, 100, "2024-06-01");
  us.row(12, 5, "2024-06-15 00:00:00");
  us.row(12, 20, "2024-06-15 10:00:00", 1, 1002);
  us.row(12, 20, "2024-06-15 10:00:00", 1, 1003);
  us.row(12, 20, "2024-06-15 10:00:00", 1, 0, "series");
  us.row(12, 40, "2024-06-20");
  us.row(12, 38, "2024-06-25", 0);
  us.row(12, 32, "2024-06-26", 0, 1003);
  us.row(12, 500, "2024-06-15 09:00:00", 0);
  us.row(11, 500, "2024-06-15 09:00:00");
  us.row(12, 500, "2024-06-15 09:00:00");
  us.sql("update transactions set deleted = 1 where amount = 500 and type = 12 and paid = 1");
  us.row(12, 600, "2024-06-15 09:00:00");
  us.sql("update transactions set book = ? where amount = 600", {us.book("Trips").pk});
  us.sql("update transactions set transferEID = 'plan' where paid = 0 and syear = 1003");
  struct Case {
    const char* why;
    const char* now;
    double amount, carried, divided, left, today, available;
  };
  for (const auto& c : {
           Case{"16 days with today; what is planned and what series made is not of today",
                "2024-06-15 12:00:00", 1000, 10, 40, 795 - 70 - 32, (693 + 5) / 16.0 - 5, 735},
           Case{"the last day", "2024-06-30 23:00:00", 1000, 10, 0, 795, 795, 805},
           Case{"a month that is over", "2024-07-01", 1000, 10, 0, 795, 0, 805},
           Case{"used up, nothing carried in", "2024-06-15", 200, 0, 40, -107, (-107 + 5) / 16.0 - 5, -75},
           Case{"used up, something carried in", "2024-06-15", 200, 10, 40, 117, (117 + 5) / 16.0 - 5, -65},
           Case{"used up in a month that is over", "2024-07-01", 200, 10, 0, -5, 0, 5},
       }) {
    us.setClock(c.now);
    BookBudget budget(*us.home);
    budget.month = 6;
    budget.budgetBeginDate = us.on("2024-06-01");
    budget.budgetEndDate = us.on("2024-06-30");
    budget.amount = c.amount;
    budget.lastMonthRolloverAmount = c.carried;
    us.done(budget.calculateRemaining());
    EXPECT_EQ(budget.monivaAmount, 205) << c.why;
    EXPECT_EQ(budget.dividedAmount, c.divided) << c.why;
    EXPECT_EQ(budget.leftAmount, c.left) << c.why;
    EXPECT_NEAR(budget.todayAvailableAmount, c.today, 1e-9) << c.why;
    EXPECT_EQ(budget.availableAmount(), c.available) << c.why;
  }
}

TEST(Budgets, overARangeGoBeforeThoseOfMonths) {
  Budgeting us;
  us.monthly(2024, 1, 100);
  us.oneTime("2024-05-20", "2024-06-20", 500);
  us.row(12, 60, "2024-05-20 00:00:00");
  us.row(12, 40, "2024-06-20 23:59:59");
  us.row(12, 999, "2024-06-21");
  BookBudget main = us.main();
  EXPECT_FALSE(main.isMonthly());
  EXPECT_TRUE(main.isCurrent()) << "today is in it, though it began in an earlier month";
  EXPECT_EQ(main.budgetBeginDate, us.on("2024-05-20"));
  EXPECT_EQ(main.budgetEndDate, us.on("2024-06-20"));
  EXPECT_EQ(main.monivaAmount, 100);
  EXPECT_EQ(main.todayAvailableAmount, 400 / 6.0);
  main.budgetEndDate = us.on("2024-05-01");
  EXPECT_FALSE(main.update()) << "upside down";

  us.sql("update transactions set repeat_end_date = 0 where type = 60");
  EXPECT_EQ(us.main().budgetEndDate, us.on("2024-05-31")) << "no end was stored";
  us.sql("update transactions set editDate = 1 where type = 60");
  us.row(12, 38, "2024-06-19", 0);
  us.row(12, 9, "2024-06-22", 0);
  us.oneTime("2024-06-20", "2024-06-30", 1070);
  EXPECT_EQ(us.main().printLog(),
            "==[Budget : Home]\n   One Time Budget\n   From 2024-06-20 00:00:00 To 2024-06-30 00:00:00\n"
            "   Amount: 1070\n   Rollover: 0\n   Moniva: 1039\n   Left: 22\n   Today Available: 0\n==[End]")
      << "the newest; it begins this month, so what is expected of its days counts";
  EXPECT_EQ(us.number("select deleted from transactions where type = 60 and amount = 500"), 3);
  us.done(us.main().delete_());
  EXPECT_EQ(us.main().amount, 100);
}

TEST(Budgets, areRefused) {
  Budgeting us;
  const auto budget = [&](const char* why, const std::function<void(BookBudget&)>& spoil) {
    BookBudget bad(*us.home);
    bad.amount = 10;
    spoil(bad);
    EXPECT_FALSE(bad.add()) << why;
  };
  budget("nothing", [](BookBudget& bad) { bad.amount = 0; });
  budget("no such month", [](BookBudget& bad) { bad.month = 13; });
  budget("no book", [&](BookBudget& bad) { bad.book = *us.cash; });
  MonivaAccount both = us.group("Both", {*us.home, us.book("Trips")});
  budget("a group", [&](BookBudget& bad) { bad.book = both; });
  EXPECT_FALSE(setBudgetOpened(both, true));
  EXPECT_FALSE(us.history().editAmount(2024, 6, 10)) << "no history";
  us.monthly(2024, 4, 10);
  EXPECT_FALSE(us.history().editAmount(2024, 3, 10)) << "before the first month";
  EXPECT_FALSE(us.history().editAmount(2024, 7, 10)) << "to come";
  EXPECT_FALSE(us.history().deleteMonth(2024, 5)) << "it has no row";
  EXPECT_FALSE(us.history().deleteMonth(2024, 4)) << "the only one";
  EXPECT_EQ(us.number("select count(*) from transactions"), 1);
}

TEST(Budgets, comeBackWhenTheyAreSwitchedOnAgain) {
  struct Case {
    const char* why;
    double amount;
    std::function<void(Budgeting&)> set;
    std::function<void(Budgeting&)> meanwhile = [](Budgeting&) {};
    const char* on = "2024-06-20";
  };
  const auto months = [](Budgeting& us) {
    us.monthly(2024, 2, 1), us.monthly(2024, 4, 2), us.monthly(2024, 6, 3, true);
  };
  const auto range = [](Budgeting& us) { us.monthly(2024, 4, 1), us.oneTime("2024-06-01", "2024-06-30", 3); };
  for (const auto& c : {
           Case{"of this month", 3, months},
           Case{"in the next month", 3, months, [](Budgeting&) {}, "2024-07-01"},
           Case{"over a range", 3, range},
           Case{"but not what was deleted", 2,
                [&](Budgeting& us) { months(us), us.done(us.main().delete_()); }},
           Case{"what was set meanwhile stands", 8, range, [](Budgeting& us) { us.monthly(2024, 6, 8); }},
           Case{"a past month says nothing of the range", 3, range,
                [](Budgeting& us) { us.done(us.history().editAmount(2024, 4, 9)); }},
           Case{"nor an earlier one that was deleted of a later", 3, months,
                [](Budgeting& us) { us.done(us.history().deleteMonth(2024, 4)); }},
       }) {
    Budgeting us;
    c.set(us);
    const bool inherits = us.main().inheritRemaining;
    us.setClock("2024-06-16");
    us.done(setBudgetOpened(*us.home, false));
    EXPECT_FALSE(*getMainBudget(*us.home)) << c.why;
    EXPECT_TRUE(*budgetWasSwitchedOff(*us.home)) << c.why;
    c.meanwhile(us);
    us.setClock(c.on);
    us.done(setBudgetOpened(*us.home, true));
    EXPECT_EQ(us.main().amount, c.amount) << c.why;
    EXPECT_EQ(us.main().inheritRemaining, inherits) << c.why;
    EXPECT_TRUE(!us.main().isMonthly() || us.ofMonth(2024, 6)->amount == c.amount) << c.why;
  }
}

TEST(Budgets, areSeededByTheLastOneThereWas) {
  Budgeting us;
  us.monthly(2024, 3, 100);
  us.monthly(2024, 4, 70, true);
  us.sql("update transactions set deleted = 4 where type = 61");
  us.done(setBudgetOpened(*us.home, false));
  EXPECT_FALSE(*getMonthlyBudget(*us.home)) << "not while it is off";
  us.done(setBudgetOpened(*us.home, true));
  EXPECT_EQ(us.main().amount, 70);
  EXPECT_TRUE(us.main().inheritRemaining);
  EXPECT_EQ(us.live(kind::kMonthlyBudget), "2024/6 70.0");

  Budgeting none;
  none.done(none.monthly(2024, 6, 400).delete_());
  const BookBudget range = none.oneTime("2024-06-01", "2024-06-30", 500);
  EXPECT_FALSE(none.ofMonth(2024, 6)) << "a range is in force";
  none.done(BookBudget(range).delete_());
  EXPECT_FALSE(*getMainBudget(*none.home)) << "deleted as well, and the last that was";
}

TEST(Budgets, areMendedWhenTheyAreRead) {
  Budgeting us;
  const auto add = [&](int year, int month, double amount, double edited, int sday) {
    us.sql(
        "insert into transactions (eid, type, amount, syear, smonth, sday, editDate, book, paid) values (?,"
        " 61, ?, ?, ?, ?, ?, ?, 0)",
        {us.root.newIdentifier(), amount, year, month, sday, edited, us.home->pk});
  };
  add(2024, 5, 1, 2e6, 20245);
  add(2024, 6, 2, 3e6, 202406);
  add(2024, 6, 3, 2e6, 202406);
  add(2024, 7, 4, 2e6, 202407);
  add(2025, 1, 5, 2e6, 202501);
  us.sql(
      "insert into transactions (eid, type, syear, smonth, sday, book) values ('other', 61, 2024, 5, 0, "
      "'x')");
  EXPECT_EQ(us.main().amount, 2) << "the newest of the month, and none to come";
  EXPECT_EQ(us.rows("select syear || '/' || smonth || ' ' || cast(amount as text) || '|' || sday || '|' ||"
                    " deleted || '|' || ipid || '|' || (editDate < 2000001) from transactions where type "
                    "= 61 and eid != 'other' order by amount"),
            "2024/5 1.0|202405|0||1\n2024/6 2.0|202406|0||0\n2024/6 3.0|202406|3|set aside for another|0\n"
            "2024/7 4.0|202407|3|set aside ahead of time|0\n2025/1 5.0|202501|3|set aside ahead of time|0");
  EXPECT_EQ(us.number("select sday from transactions where eid = 'other'"), 0) << "another book's";
  us.setClock("2024-06-29 01:00:00");
  EXPECT_EQ(us.main().amount, 2);
  EXPECT_EQ(us.live(kind::kMonthlyBudget), "2024/5 1.0\n2024/6 2.0\n2024/7 4.0")
      << "elsewhere July begins within two days";
  us.setClock("2025-01-02");
  us.monthly(2025, 1, 6);
  EXPECT_EQ(us.main().amount, 6) << "set meanwhile";
  EXPECT_EQ(us.live(kind::kMonthlyBudget), "2024/5 1.0\n2024/6 2.0\n2024/7 4.0\n2025/1 6.0");
}

TEST(Budgets, goOnWhenMonthsBeginOnAnotherDay) {
  Budgeting us;
  us.monthly(2024, 4, 1);
  us.monthly(2024, 6, 2, true);
  const auto before = *getMonthlyBudget(*us.home);
  us.done(us.home->updateMonthStartsOn(25));
  const auto kept = keepBudgetOverNewPeriods(*us.home, before);
  ASSERT_TRUE(kept && *kept);
  EXPECT_EQ(us.live(kind::kMonthlyBudget), "2024/4 1.0\n2024/5 2.0") << "it is May still";
  EXPECT_TRUE((*kept)->inheritRemaining);
  us.monthly(2024, 5, 7);
  us.setClock("2024-06-26");
  EXPECT_EQ(us.main().amount, 7) << "what was June's does not come once more";
}

TEST(CategoryBudgets, areGivenTakenAndCounted) {
  Budgeting us;
  const MVCategory food = us.category("Food");
  MVCategory bakery(us.root);
  bakery.title = "Bakery";
  bakery.parent = food.pk;
  ASSERT_TRUE(bakery.addCate());
  us.monthly(2024, 6, 300);
  us.done(updateBudget(food, *us.home, 80));
  us.done(updateBudget(food, *us.home, 100));
  us.done(updateBudget(bakery, *us.home, 30));
  us.row(12, 7, "2024-06-02", 1, 0, "", food.pk);
  us.row(12, 5, "2024-06-03", 1, 0, "", food.pk);
  us.sql("update transactions set subcategory = ? where amount = 5", {bakery.pk});
  us.row(12, 900, "2024-05-31", 1, 0, "", food.pk);
  us.row(12, 900, "2024-06-20", 0, 0, "", food.pk);
  const BookBudget main = us.main();
  const auto whole = getBudget(food, main);
  ASSERT_TRUE(whole);
  EXPECT_EQ(whole->categoryBudgetAmount, 100);
  EXPECT_EQ(whole->amount, 300);
  EXPECT_EQ(whole->spent, 12);
  EXPECT_EQ(whole->left, 88);
  EXPECT_EQ(getBudget(bakery, main)->left, 25);
  EXPECT_EQ(*main.getAllocateValue(), 130);

  for (const double edited : {5e6, 4e6}) {
    us.sql(
        "insert into transactions (eid, type, category, amount, editDate, book) values (?, 62, ?, 1000, ?,"
        " ?)",
        {us.root.newIdentifier(), bakery.pk, edited, us.home->pk});
  }
  EXPECT_EQ(*main.getAllocateValue(), 130) << "what was given last stands";
  EXPECT_EQ(us.number("select count(*) from transactions where type = 62 and deleted = 3 and ipid = 'delete"
                      " with Budget getAllocateValue'"),
            2);
  us.done(removeBudget(bakery, *us.home));
  EXPECT_EQ(*main.getAllocateValue(), 100);
  EXPECT_FALSE(removeBudget(bakery, *us.home));
  us.done(updateBudget(bakery, *us.home, 30));
  EXPECT_EQ(allocationsOfCategory(us.root, bakery.pk)->front().amount, 30);
  us.sql("update category set deleted = 1 where oldTitle = ?", {bakery.pk});
  EXPECT_EQ(allocations(main)->size(), 2) << "one that was deleted elsewhere";
  us.done(MVCategory(food).delCate());
  EXPECT_TRUE(allocations(main)->empty()) << "with those below";
  EXPECT_FALSE(updateBudget(food, *us.home, 0));
  EXPECT_FALSE(updateBudget(us.category("Wage", kind::kIncome), *us.home, 10));
}

}  // namespace
}  // namespace moniva
