#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include "reports/book_budget.h"
#include "reports/budget_historical_remaining.h"
#include "reports/moniva_account_budget.h"
#include "reports/mv_category_budget.h"
#include "storage/transaction.h"
#include "support/household.h"

namespace moniva {
namespace {

/// A household whose book has budgets; it is noon on 15 June 2024.
class Budgeting : public Household {
 public:
  Budgeting() {
    setClock("2024-06-15 12:00:00");
    EXPECT_TRUE(setBudgetOpened(*home, true));
  }

  void done(const Result<>& result) { EXPECT_TRUE(result) << result.error().why; }
  BookBudget monthly(int year, int month, double amount, bool inherits = false) {
    BookBudget budget(*home);
    budget.year = year;
    budget.month = month;
    budget.amount = amount;
    budget.inheritRemaining = inherits;
    done(budget.add());
    return budget;
  }
  BookBudget oneTime(const std::string& from, const std::string& to, double amount) {
    BookBudget budget(*home);
    budget.type = kind::kOneTimeBudget;
    budget.budgetBeginDate = on(from);
    budget.budgetEndDate = on(to);
    budget.amount = amount;
    done(budget.add());
    return budget;
  }
  void row(int type, double amount, const std::string& when, int paid = 1, int syear = 0,
           const std::string& seed = "", const std::string& category = "") {
    ASSERT_TRUE(
        sql("insert into transactions (eid, bid, type, amount, datetime, paid, syear, repeat_seed,"
            " category, book) values (?, 20, ?, ?, ?, ?, ?, ?, ?, ?)",
            {root.newIdentifier(), type, amount, on(when), paid, syear, seed, category, home->pk}));
  }
  BookBudget main() {
    const auto budget = getMainBudget(*home);
    EXPECT_TRUE(budget) << budget.error().why;
    EXPECT_TRUE(*budget);
    return budget && *budget ? **budget : BookBudget(*home);
  }
  std::optional<BookBudget> ofMonth(int year, int month) {
    auto budget = getMonthlyBudgetForYear(*home, year, month);
    EXPECT_TRUE(budget) << budget.error().why;
    return budget.value_or(std::nullopt);
  }
  /// "month amount-spent+carried in=remaining", a star for a row of its own, for each month of the history.
  std::string story() {
    const auto months = BudgetHistoricalRemaining(*home).months();
    EXPECT_TRUE(months) << months.error().why;
    std::string text;
    for (const auto& month : *months) {
      text += fmt::format("{}{}{}{} {}-{}+{}={}", text.empty() ? "" : ", ", month.month,
                          month.isOwn ? "*" : "", month.inheritRemaining ? ">" : "", month.amount,
                          month.expense, month.rollover, month.remaining);
    }
    return text;
  }
  std::string live(int type) {
    return rows(
        "select syear || '/' || smonth || ' ' || cast(amount as text) from transactions where type ="
        " ? and deleted = 0 order by sday",
        {type});
  }
  BudgetHistoricalRemaining history() { return BudgetHistoricalRemaining(*home); }
  std::int64_t writes() { return connection().totalChanges(); }
};

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
           Case{31, 2024, 1, "2024-01-31", "2024-03-01", "up to the next month, with no gap"},
       }) {
    us.done(us.home->updateMonthStartsOn(c.startsOn));
    const BookBudget budget = *us.ofMonth(c.year, c.month);
    EXPECT_EQ(budget.budgetBeginDate, us.on(c.first)) << c.why;
    EXPECT_EQ(budget.budgetEndDate, us.on(c.last)) << c.why;
  }
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
  us.sql("update transactions set transferEID = 'plan' where paid = 0 and syear = 1003");
  struct Case {
    const char* why;
    const char* now;
    double amount, carried, divided, left, today;
  };
  for (const auto& c : {
           Case{"16 days with today; what is planned and what series made is not of today",
                "2024-06-15 12:00:00", 1000, 10, 40, 795 - 70 - 32, (693 + 5) / 16.0 - 5},
           Case{"the last day", "2024-06-30 23:00:00", 1000, 10, 0, 795, 795},
           Case{"a month that is over", "2024-07-01", 1000, 10, 0, 795, 0},
           Case{"used up, nothing carried in", "2024-06-15", 200, 0, 40, -107, (-107 + 5) / 16.0 - 5},
           Case{"used up, something carried in", "2024-06-15", 200, 10, 40, 117, (117 + 5) / 16.0 - 5},
           Case{"used up in a month that is over", "2024-07-01", 200, 10, 0, -5, 0},
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
  us.oneTime("2024-06-01", "2024-06-10", 70);
  EXPECT_EQ(us.main().amount, 70) << "the newest";
  EXPECT_NE(us.takeFaults().find("amount=500.0"), std::string::npos) << "what goes for good is logged";
  EXPECT_EQ(us.number("select count(*) from transactions where type = 60"), 1);
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
  budget("less than nothing", [](BookBudget& bad) { bad.amount = -1; });
  budget("no such month", [](BookBudget& bad) { bad.month = 13; });
  budget("no book", [&](BookBudget& bad) { bad.book = *us.cash; });
  MonivaAccount both = us.group("Both", {*us.home, us.book("Trips")});
  budget("a group", [&](BookBudget& bad) { bad.book = both; });
  EXPECT_FALSE(setBudgetOpened(both, true));
  EXPECT_FALSE(us.history().editAmount(2024, 6, 10)) << "no history";
  us.monthly(2024, 4, 10);
  EXPECT_FALSE(us.history().editAmount(2024, 3, 10)) << "before the first month";
  EXPECT_FALSE(us.history().editAmount(2024, 7, 10)) << "to come";
  EXPECT_FALSE(us.history().editAmount(2024, 5, 0));
  EXPECT_FALSE(us.history().deleteMonth(2024, 5)) << "it has no row";
  EXPECT_FALSE(us.history().deleteMonth(2024, 4)) << "the only one";
  EXPECT_EQ(us.number("select count(*) from transactions"), 1);
}

TEST(Budgets, comeBackWhenTheyAreSwitchedOnAgain) {
  struct Case {
    const char* why;
    std::function<void(Budgeting&)> set;
    double amount;
  };
  for (const auto& c : {
           Case{"of this month", [](Budgeting& us) { us.monthly(2024, 4, 1), us.monthly(2024, 6, 2, true); },
                2},
           Case{"of an earlier month", [](Budgeting& us) { us.monthly(2024, 4, 1); }, 1},
           Case{"over a range",
                [](Budgeting& us) { us.monthly(2024, 6, 1), us.oneTime("2024-06-01", "2024-06-30", 3); }, 3},
           Case{"but not what was deleted",
                [](Budgeting& us) {
                  us.monthly(2024, 4, 1);
                  us.monthly(2024, 6, 2);
                  us.done(us.main().delete_());
                },
                1},
       }) {
    Budgeting us;
    c.set(us);
    const BookBudget before = us.main();
    us.done(setBudgetOpened(*us.home, false));
    EXPECT_FALSE(*getMainBudget(*us.home)) << c.why;
    us.done(setBudgetOpened(*us.home, true));
    ASSERT_TRUE(us.home->mainBudget) << c.why;
    EXPECT_EQ(us.home->mainBudget->amount, c.amount) << c.why;
    EXPECT_EQ(us.home->mainBudget->type, before.type) << c.why;
    EXPECT_EQ(us.home->mainBudget->inheritRemaining, before.inheritRemaining) << c.why;
    EXPECT_EQ(us.home->mainBudget->budgetEndDate, before.budgetEndDate) << c.why;
  }
  Budgeting us;
  us.oneTime("2024-06-01", "2024-06-30", 3);
  us.done(setBudgetOpened(*us.home, false));
  us.monthly(2024, 6, 8);
  us.done(setBudgetOpened(*us.home, true));
  EXPECT_EQ(us.main().amount, 8) << "what was set meanwhile stands";
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
  EXPECT_EQ(us.main().amount, 2) << "the newest of the month, and none to come";
  EXPECT_EQ(us.live(kind::kMonthlyBudget), "2024/5 1.0\n2024/6 2.0");
  EXPECT_EQ(us.number("select min(sday) from transactions where type = 61"), 202405);
  const auto faults = us.takeFaults();
  for (const auto* amount : {"amount=3.0", "amount=4.0", "amount=5.0"}) {
    EXPECT_NE(faults.find(amount), std::string::npos) << amount;
  }
  us.setClock("2024-06-29 01:00:00");
  add(2024, 7, 6, 2e6, 202407);
  EXPECT_EQ(us.main().amount, 2);
  EXPECT_EQ(us.live(kind::kMonthlyBudget), "2024/5 1.0\n2024/6 2.0\n2024/7 6.0")
      << "elsewhere July begins within two days";
}

TEST(BudgetHistory, isEditedMonthByMonth) {
  Budgeting us;
  us.monthly(2024, 2, 100, true);
  us.monthly(2024, 5, 60, true);
  us.row(12, 40, "2024-02-10");
  const std::string story =
      "2*> 100-40+0=60, 3> 100-0+60=160, 4> 100-0+160=260, 5*> 60-0+260=320, "
      "6> 60-0+320=380";
  EXPECT_EQ(us.story(), story);
  int told = 0;
  const auto token =
      us.platform.notifications.observe(notification::kDefaultAccountBudgetChanged, [&told] { ++told; });
  us.done(us.history().editAmount(2024, 3, 10));
  EXPECT_EQ(us.story(),
            "2*> 100-40+0=60, 3*> 10-0+60=70, 4*> 100-0+70=170, 5*> 60-0+170=230, 6> 60-0+230=290")
      << "that month alone";
  us.done(us.history().editInherit(2024, 5, false));
  EXPECT_EQ(us.story(), "2*> 100-40+0=60, 3*> 10-0+60=70, 4*> 100-0+70=170, 5* 60-0+170=230, 6*> 60-0+0=60");
  us.done(us.history().deleteMonth(2024, 4));
  EXPECT_EQ(us.story(), "2*> 100-40+0=60, 3*> 10-0+60=70, 4> 10-0+70=80, 5* 60-0+80=140, 6*> 60-0+0=60");
  us.done(calculateHistoryBudgetFrom(*us.home, 2024, 4, 30));
  EXPECT_EQ(us.story(), "2*> 100-40+0=60, 3*> 10-0+60=70, 4*> 30-0+70=100, 5* 30-0+100=130, 6*> 30-0+0=30");
  EXPECT_EQ(told, 4);
  EXPECT_EQ(us.live(kind::kBudgetCarry), "2024/3 60.0\n2024/4 70.0\n2024/5 100.0\n2024/6 0.0");

  bool heard = false;
  us.history().calculateHistoryBudgetRolloverFrom(
      2024, 2, [&](const Result<>& result) { heard = result.has_value(); });
  us.db.drain();
  us.platform.mainQueue.runPending();
  EXPECT_TRUE(heard);
}

TEST(BudgetHistory, beginsAgainAndComesBack) {
  Budgeting us;
  us.monthly(2024, 1, 100, true);
  us.monthly(2024, 3, 50, true);
  us.row(12, 40, "2024-01-10");
  const std::string whole = us.story();
  us.done(us.history().recalculateFrom(2024, 5));
  EXPECT_EQ(us.story(), "5*> 50-0+0=50, 6> 50-0+50=100");
  EXPECT_EQ(us.live(kind::kBudgetCarry), "2024/6 50.0");
  us.monthly(2024, 3, 80, true);
  us.done(us.history().restore());
  EXPECT_EQ(us.story(),
            "1*> 100-40+0=60, 2> 100-0+60=160, 3*> 80-0+160=240, 4> 80-0+240=320, "
            "5*> 50-0+320=370, 6> 50-0+370=420")
      << "what was set meanwhile stands";
  us.done(us.history().deleteMonth(2024, 3));
  us.done(us.history().restore());
  EXPECT_EQ(us.live(kind::kMonthlyBudget), "2024/1 100.0\n2024/5 50.0") << "what was deleted stays so";
  BookBudget june = us.main();
  june.amount = 200;
  us.done(june.update());
  june.amount = 250;
  us.done(june.update());
  EXPECT_EQ(us.live(kind::kMonthlyBudget), "2024/1 100.0\n2024/5 50.0\n2024/6 250.0") << "that month alone";
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
  EXPECT_FALSE(updateBudget(food, *us.home, 0));
  EXPECT_FALSE(updateBudget(us.category("Wage", kind::kIncome), *us.home, 10));
}

RC_GTEST_PROP(BudgetHistory, addsUpInAnyBook, ()) {
  Budgeting us;
  us.done(us.home->updateMonthStartsOn(*rc::gen::element(1, 25, -25, 29, 31, -31)));
  const int first = *rc::gen::inRange(0, 20);
  const auto label = [](int number) { return std::pair(2022 + number / 12, number % 12 + 1); };
  double spent = 0;
  {
    Transaction together(us.connection());
    for (int n = *rc::gen::inRange(1, 6), at = first; n > 0 && at < 29; --n, at += *rc::gen::inRange(1, 9)) {
      us.monthly(label(at).first, label(at).second, *rc::gen::inRange(1, 1000), *rc::gen::inRange(0, 4) != 0);
    }
    const Date begin = us.history().months()->front().beginDate;
    for (int n = *rc::gen::inRange(0, 30); n > 0; --n) {
      const Date when = begin.plusSeconds(*rc::gen::inRange(0, 40'000'000));
      const double cents = *rc::gen::inRange(1, 100'000);
      us.sql("insert into transactions (eid, type, amount, datetime, book) values (?, 12, ?, ?, ?)",
             {us.root.newIdentifier(), cents / 100, when, us.home->pk});
      if (when <= us.root.calendar().dateEnd(us.history().months()->back().endDate)) spent += cents / 100;
    }
    RC_ASSERT(together.commit());
  }
  us.main();
  const auto months = us.history().months();
  RC_ASSERT(months.has_value());
  double counted = 0;
  double carried = 0;
  for (const auto& month : *months) {
    counted += month.expense;
    RC_ASSERT(std::abs(month.rollover - carried) < 0.01);
    RC_ASSERT(std::abs(month.rollover + month.amount - month.expense - month.remaining) < 0.01);
    const auto alone = us.ofMonth(month.year, month.month);
    RC_ASSERT(alone && alone->lastMonthRolloverAmount == month.rollover && alone->amount == month.amount);
    carried = month.inheritRemaining ? month.remaining : 0;
  }
  RC_ASSERT(std::abs(counted - spent) < 0.001);
  us.done(us.history().calculateHistoryBudgetRolloverFrom(2022, 1));
  const auto before = us.writes();
  us.main();
  for (const auto& month : *months) us.ofMonth(month.year, month.month);
  us.done(us.history().calculateHistoryBudgetRolloverFrom(2022, 1));
  RC_ASSERT(us.writes() == before);
  us.done(us.history().recalculateFrom(months->back().year, months->back().month));
  us.done(us.history().restore());
  const auto back = us.history().months();
  RC_ASSERT(back->size() == months->size());
  RC_ASSERT(back->back().remaining == months->back().remaining);
}

}  // namespace
}  // namespace moniva
