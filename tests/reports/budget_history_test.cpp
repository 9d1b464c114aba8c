#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include "storage/transaction.h"
#include "support/budgeting.h"

namespace moniva {
namespace {

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
  us.setClock("2024-06-16");
  us.done(us.history().editAmount(2024, 3, 10));
  EXPECT_LT(us.number("select editDate from transactions where smonth = 4 and type = 61"),
            us.on("2024-06-16").secondsSince1970)
      << "what nobody set is no newer than what it goes on with";
  EXPECT_EQ(us.story(),
            "2*> 100-40+0=60, 3*> 10-0+60=70, 4*> 100-0+70=170, 5*> 60-0+170=230, 6> 60-0+230=290")
      << "that month alone";
  us.done(us.history().editInherit(2024, 5, false));
  EXPECT_EQ(us.story(), "2*> 100-40+0=60, 3*> 10-0+60=70, 4*> 100-0+70=170, 5* 60-0+170=230, 6*> 60-0+0=60");
  us.done(us.history().deleteMonth(2024, 4));
  EXPECT_EQ(us.story(), "2*> 100-40+0=60, 3*> 10-0+60=70, 4> 10-0+70=80, 5* 60-0+80=140, 6*> 60-0+0=60");
  us.done(calculateHistoryBudgetFrom(*us.home, 2024, 4, 30));
  us.done(us.history().editAmount(2024, 4, 30));
  EXPECT_EQ(us.number("select max(amount) from transactions where type = 61 and smonth = 4"), 100)
      << "the row that was deleted";
  EXPECT_EQ(us.story(), "2*> 100-40+0=60, 3*> 10-0+60=70, 4*> 30-0+70=100, 5* 30-0+100=130, 6*> 30-0+0=30");
  EXPECT_EQ(told, 5);
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

  Budgeting twice;
  twice.monthly(2024, 1, 100);
  twice.monthly(2024, 3, 200);
  twice.done(twice.history().recalculateFrom(2024, 5));
  twice.monthly(2024, 2, 70);
  twice.done(twice.history().recalculateFrom(2024, 3));
  twice.done(twice.history().restore());
  EXPECT_EQ(twice.live(kind::kMonthlyBudget), "2024/1 100.0\n2024/2 70.0\n2024/3 200.0\n2024/5 200.0")
      << "a copy gives way to what was set";
}

RC_GTEST_PROP(BudgetHistory, addsUpInAnyBook, ()) {
  Budgeting us;
  us.setClock(us.on("2024-06-15").plusSeconds(*rc::gen::inRange(0, 10'000'000)));
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
