#include "reports/transaction_report.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <mutex>
#include <thread>

#include "reports/category_report.h"
#include "storage/transaction.h"
#include "support/household.h"

namespace moniva {
namespace {

/// Sets the report to a book or account, a type and two days.
void ask(Household& home, TransactionReport& report, const MonivaAccount& account, int type,
         const std::string& from, const std::string& to) {
  report.setMonivaAccount(account);
  report.setTransactionType(type);
  report.setBeginDate(home.on(from));
  report.setEndDate(home.on(to));
}

/// The summary that was read.
TransReportSummary must(Result<TransReportSummary> read) {
  EXPECT_TRUE(read) << read.error().why;
  return read.value_or(TransReportSummary{});
}

/// "title year-month-day income/expense" of each period.
std::string shown(const TransReportSummary& list) {
  std::string text;
  for (const auto& period : list.listArray) {
    text += fmt::format("{} {}-{}-{} {}/{}\n", period.title, period.year, period.month, period.day,
                        period.incomeAmount, period.expenseAmount);
  }
  return text;
}

TEST(Summaries, countWholeDaysInTheUsersZone) {
  for (const char* zone : {"Europe/Berlin", "America/Los_Angeles", "Pacific/Apia", "Asia/Kolkata"}) {
    Household home(zone);
    home.spend("Before", 1, home.on("2024-03-30 23:59:59"));
    home.spend("First", 2, home.on("2024-03-31 00:00:00"));
    home.spend("Last", 4, home.on("2024-03-31 23:59:59"));
    home.spend("After", 8, home.on("2024-04-01 00:00:00"));
    TransactionReport report(home.root);
    report.setMonivaAccount(*home.home);
    // The time of day of the bounds plays no part; in Berlin this day has 23 hours.
    const auto day =
        must(report.getSummaryFrom(home.on("2024-03-31 18:00:00"), home.on("2024-03-31 06:00:00")));
    EXPECT_EQ(day.expenseAmount, 6) << zone;
    EXPECT_EQ(day.expenseCount, 2);
    EXPECT_EQ(day.count, 2);
    EXPECT_EQ(day.amount(), 6);
    EXPECT_EQ(day.year, 2024);
    EXPECT_EQ(day.month, 3);
    EXPECT_EQ(must(report.getSummaryFrom(home.on("2024-03-31"), home.on("2024-04-01"))).month, 0)
        << "two months";
  }
}

TEST(Summaries, leaveOutWhatIsDeletedPendingOrElsewhere) {
  Household home;
  const auto noon = home.on("2024-02-29 12:00:00");
  home.spend("Kept", 1, noon);
  home.set(home.spend("Deleted", 2, noon), "deleted", 1);
  home.set(home.spend("Removed", 4, noon), "deleted", 3);
  home.set(home.spend("Pending", 8, noon), "paid", 0);
  home.set(home.spend("Elsewhere", 16, noon), "book", "another");
  home.earn("Wage", 32, noon);
  TransactionReport report(home.root);
  report.setMonivaAccount(*home.home);
  report.setTransactionType(1112);
  const auto day = must(report.getSummaryFrom(noon, noon));
  EXPECT_EQ(day.expenseAmount, 1);
  EXPECT_EQ(day.incomeAmount, 32);
  EXPECT_EQ(day.count, 2);
}

TEST(Summaries, takeTheKindsOfTheirType) {
  Household home;
  const auto noon = home.on("2024-02-29 12:00:00");
  home.spend("Food", 1, noon);
  home.earn("Wage", 2, noon);
  home.move(4, *home.cash, *home.bank, noon);
  home.move(8, *home.bank, *home.cash, noon);
  const auto insert = [&](int type, double amount) {
    home.sql(
        "insert into transactions (eid, type, amount, datetime, account, book) values (?, ?, ?, ?, ?, ?)",
        {home.root.newIdentifier(), type, amount, noon, home.cash->pk, home.home->pk});
  };
  insert(24, 16);
  insert(34, 32);
  insert(61, 64);
  // A transfer row that names a book, as old faults left them.
  insert(33, 128);
  struct Case {
    bool isBook;
    int type;
    double in, out, transferIn, transferOut;
    int count;
    const char* why;
  };
  for (const auto& [isBook, type, in, out, transferIn, transferOut, count, why] : {
           Case{true, 12, 0, 1, 0, 0, 1, "a book's expense"},
           Case{true, 11, 2, 0, 0, 0, 1, "its income"},
           Case{true, 1112, 2, 1, 0, 0, 2, "both"},
           Case{true, 1050, 18, 33, 0, 0, 4, "a book has no transfers; 33 is never expense"},
           Case{true, 33, 0, 0, 0, 0, 0, "not even when asked for"},
           Case{false, 1112, 2, 1, 0, 0, 2, "an account's income and expense"},
           Case{false, 1050, 26, 33, 8, 132, 8, "everything; what came in by transfer is income, too"},
           Case{false, 2312, 26, 33, 8, 0, 6, "prepaid: transfers in only"},
           Case{false, 23, 0, 0, 8, 0, 1, "transfers in"},
           Case{false, 33, 0, 0, 0, 132, 2, "transfers out"},
           Case{false, 2333, 0, 0, 8, 132, 3, "both"},
           Case{false, 112129, 0, 0, 8, 0, 1, "with income"},
           Case{false, 123139, 0, 0, 0, 132, 2, "with expense"},
       }) {
    TransactionReport report(home.root);
    report.setMonivaAccount(isBook ? *home.home : *home.cash);
    report.setTransactionType(type);
    const auto day = must(report.getSummaryFrom(noon, noon));
    EXPECT_EQ(day.incomeAmount, in) << why;
    EXPECT_EQ(day.expenseAmount, out) << why;
    EXPECT_EQ(day.transferinAmount, transferIn) << why;
    EXPECT_EQ(day.transferoutAmount, transferOut) << why;
    EXPECT_EQ(day.count, count) << why;
  }
  TransactionReport none(home.root);
  EXPECT_EQ(must(none.getSummaryFrom(noon, noon)).count, 0) << "no book was set";
}

TEST(Summaries, ofACategoryTakeItsFurtherKindToo) {
  Household home;
  const auto noon = home.on("2024-02-29 12:00:00");
  const auto food = home.category("Food");
  MVCategory bakery(home.root);
  bakery.title = "Bakery";
  bakery.parent = food.pk;
  ASSERT_TRUE(bakery.addCate());
  home.spend("Food", 1, noon);
  home.set(home.spend("Food", 2, noon), "subcategory", bakery.pk);
  home.set(home.spend("Food", 4, noon), "type", 14);
  home.set(home.spend("Food", 8, noon), "type", 11);
  home.spend("Rent", 16, noon);
  struct Case {
    const MVCategory& category;
    double expense;
  };
  for (const auto& [category, expense] : {Case{food, 7}, Case{bakery, 2}}) {
    TransactionReport report(home.root);
    report.setMonivaAccount(*home.home);
    report.setCategory(category);
    const auto day = must(report.getSummaryFrom(noon, noon));
    EXPECT_EQ(day.expenseAmount, expense) << category.title;
    EXPECT_EQ(day.amount(), expense);
    EXPECT_EQ(day.incomeAmount, 0);
  }
}

TEST(Summaries, ofAGroupTakeItsMembers) {
  Household home;
  const auto noon = home.on("2024-02-29 12:00:00");
  home.spend("Food", 1, noon);
  home.set(home.spend("Trip", 2, noon), "book", home.book("Trip").pk);
  home.set(home.spend("Shop", 4, noon), "book", "shop");
  auto all = home.book("All");
  home.sql("update account set isGroup = 1 where oldTitle = ?", {all.pk});
  ASSERT_TRUE(all.getInfo());
  home.sql(
      "insert into category (title, parent, type, deleted) values (?, ?, 8, 0), ('shop', ?, 8, 1),"
      " ((select oldTitle from account where title = 'Trip'), ?, 8, 0)",
      {home.home->pk, all.pk, all.pk, all.pk});
  TransactionReport report(home.root);
  report.setMonivaAccount(all);
  EXPECT_EQ(must(report.getSummaryFrom(noon, noon)).expenseAmount, 3);
}

TEST(Lists, splitAYearByTheBooksOwnMonths) {
  Household home;
  home.home->updateMonthStartsOn(-25);
  home.spend("Gift", 1, home.on("2023-12-24 23:59:59"));
  home.spend("Sale", 2, home.on("2023-12-25"));
  home.earn("Wage", 4, home.on("2024-01-24 23:59:59"));
  home.spend("Food", 8, home.on("2024-02-10"));
  home.spend("Late", 16, home.on("2024-03-02"));
  TransactionReport report(home.root);
  ask(home, report, *home.home, 1112, "2023-11-25", "2024-03-01");
  const auto list = must(report.reportByMonth());
  EXPECT_EQ(shown(list),
            "December, 2023 2023-12-0 0/1\n"
            "January, 2024 2024-1-0 4/2\n"
            "February, 2024 2024-2-0 0/8\n")
      << "the month cut short at its end has no transaction before it";
  EXPECT_EQ(list.title, "2023 -- 2024");
  EXPECT_EQ(list.incomeAmount, 4);
  EXPECT_EQ(list.expenseAmount, 11);
  EXPECT_EQ(list.count, 4);
  EXPECT_EQ(list.maxInSumAmount, 4);
  EXPECT_EQ(list.maxOutSumAmount, 8);
  report.setIncludeEmpty(true);
  EXPECT_EQ(must(report.reportByMonth()).listArray.size(), 4U);
}

TEST(Lists, namePeriodsByTheFiscalYearAndTheirDay) {
  Household home;
  home.home->updateYearStartsOn(4);
  home.spend("Food", 1, home.on("2023-03-31 12:00:00"));
  home.spend("Food", 2, home.on("2023-04-01 12:00:00"));
  home.spend("Food", 4, home.on("2024-02-29 12:00:00"));
  home.spend("Food", 8, home.on("2024-03-31 12:00:00"));
  TransactionReport report(home.root);
  ask(home, report, *home.home, 12, "2022-04-01", "2024-03-31");
  EXPECT_EQ(shown(must(report.reportByYear())), "2022 2022-0-0 0/1\n2023 2023-0-0 0/14\n");
  ask(home, report, *home.home, 12, "2024-02-28", "2024-04-01");
  const auto days = must(report.reportByDay());
  EXPECT_EQ(shown(days),
            "Feb 29, 2024 Thursday 2024-2-29 0/4\n"
            "Mar 31, 2024 Sunday 2024-3-31 0/8\n");
  EXPECT_EQ(days.title, "2023 -- 2024");
  ask(home, report, *home.home, 12, "2024-02-28", "2024-02-28");
  EXPECT_EQ(must(report.reportByDay()).title, "2023");
}

RC_GTEST_PROP(Lists, missNothingAndCountNothingTwice, ()) {
  Household home("America/New_York");
  home.home->updateMonthStartsOn(*rc::gen::element(1, 15, 28, 29, 30, 31, -10, -31));
  home.home->updateYearStartsOn(*rc::gen::element(1, 2, 7, 12, -11));
  const Date from = home.on("2023-01-01").plusSeconds(86400.0 * *rc::gen::inRange(0, 400));
  const Date to = from.plusSeconds(86400.0 * *rc::gen::inRange(0, 500));
  const auto& calendar = home.root.calendar();
  double expected = 0;
  double amount = 1;
  for (int n = *rc::gen::inRange(1, 25); n > 0; --n, amount *= 2) {
    const Date when = from.plusSeconds(*rc::gen::inRange(-5, 505) * 86400.0 + *rc::gen::inRange(0, 86400));
    home.sql("insert into transactions (eid, type, amount, datetime, book) values (?, 12, ?, ?, ?)",
             {home.root.newIdentifier(), amount, when, home.home->pk});
    if (when >= calendar.dateBegin(from) && when <= calendar.dateEnd(to)) expected += amount;
  }
  TransactionReport report(home.root);
  report.setMonivaAccount(*home.home);
  report.setBeginDate(from);
  report.setEndDate(to);
  RC_ASSERT(must(report.reportByDay()).expenseAmount == expected);
  RC_ASSERT(must(report.reportByMonth()).expenseAmount == expected);
  RC_ASSERT(must(report.reportByYear()).expenseAmount == expected);
}

TEST(Lists, compileNothingTheSecondTime) {
  Household home;
  home.spend("Food", 1, home.on("2024-02-29"));
  TransactionReport report(home.root);
  ask(home, report, *home.cash, 1050, "2020-01-01", "2024-12-31");
  const auto compiledOnQueue = [&] {
    std::int64_t compiled = 0;
    EXPECT_TRUE(home.db.inDatabase("Test", [&](Connection& db) { compiled = db.statementsCompiled(); }));
    return compiled;
  };
  const auto first = must(report.reportByMonth());
  const auto compiled = compiledOnQueue();
  const auto second = must(report.reportByMonth());
  EXPECT_EQ(compiledOnQueue(), compiled);
  EXPECT_EQ(shown(first), shown(second));
  home.spend("Food", 1, home.on("2024-02-29"));
  const auto onMain = home.connection().statementsCompiled();
  const auto commits = home.connection().commits();
  home.spend("Food", 1, home.on("2024-02-29"));
  EXPECT_EQ(home.connection().statementsCompiled(), onMain);
  EXPECT_EQ(home.connection().commits(), commits + 2) << "one for the touched category, one for the record";
}

/// Keeps what it heard and on which thread.
class Listener final : public TransactionReportDelegate {
 public:
  void transactionReportQueryFinished(const TransReportSummary& summary) override {
    heard.push_back(summary);
    thread = std::this_thread::get_id();
  }
  void transactionReportQueryFailed(const Refusal& refusal) override { failed.push_back(refusal.why); }
  std::vector<TransReportSummary> heard;
  std::vector<std::string> failed;
  std::thread::id thread;
};

TEST(Lists, areDeliveredOnTheMainThreadToADelegateThatStillLives) {
  Household home;
  home.spend("Food", 1, home.on("2024-02-29"));
  TransactionReport report(home.root);
  ask(home, report, *home.home, 12, "2024-01-01", "2024-12-31");
  auto listener = std::make_shared<Listener>();
  report.setDelegate(listener);
  report.getReportByMonth();
  home.db.drain();
  EXPECT_TRUE(listener->heard.empty()) << "not on the queue's thread";
  home.platform.mainQueue.runPending();
  ASSERT_EQ(listener->heard.size(), 1U);
  EXPECT_EQ(listener->thread, std::this_thread::get_id());
  EXPECT_EQ(shown(listener->heard[0]), "February, 2024 2024-2-0 0/1\n");
  report.getReportByDay();
  listener.reset();
  home.db.drain();
  home.platform.mainQueue.runPending();
}

TEST(Lists, endEarlyWhenTheyAreStopped) {
  Household home;
  home.spend("Food", 1, home.on("2024-02-29"));
  TransactionReport report(home.root);
  ask(home, report, *home.home, 12, "2024-01-01", "2024-12-31");
  report.setIncludeEmpty(true);
  auto listener = std::make_shared<Listener>();
  report.setDelegate(listener);
  // The queue is kept busy until the report behind it has been stopped.
  std::mutex stopped;
  stopped.lock();
  home.db.dispatchInDatabase("Test", [&](Connection&) { const std::scoped_lock wait(stopped); });
  report.getReportByDay();
  report.setStopLoadingData(true);
  stopped.unlock();
  home.db.drain();
  home.platform.mainQueue.runPending();
  ASSERT_EQ(listener->heard.size(), 1U);
  EXPECT_TRUE(listener->heard[0].listArray.empty());
  EXPECT_EQ(home.commentary().back(), "== TransactionReport getReportByDay 查询被中断");
  EXPECT_EQ(must(report.reportByDay()).listArray.size(), 366U) << "the next one is not stopped";
}

TEST(Reports, sayWhenTheStoreCouldNotBeRead) {
  Household home;
  home.spend("Food", 1, home.on("2024-02-29"));
  TransactionReport report(home.root);
  ask(home, report, *home.home, 1112, "2024-01-01", "2024-12-31");
  auto listener = std::make_shared<Listener>();
  report.setDelegate(listener);
  EXPECT_EQ(must(report.reportByMonth()).count, 1) << "the queue has the store open";
  ASSERT_TRUE(home.sql("alter table transactions rename to elsewhere"));
  const auto sql = std::string("no such table");
  const Date noon = home.on("2024-02-29");
  const auto single = report.getSummaryFrom(noon, noon);
  ASSERT_FALSE(single);
  EXPECT_NE(single.error().why.find(sql), std::string::npos) << single.error().why;
  EXPECT_FALSE(report.reportByYear());
  EXPECT_FALSE(report.reportByMonth());
  EXPECT_FALSE(report.reportByDay());
  const auto top = MVCategory::rootCateForType(home.root, 12);
  EXPECT_FALSE(getSubCategoryReportFor(top, *home.home, noon, noon));
  report.getReportByMonth();
  home.db.drain();
  home.platform.mainQueue.runPending();
  EXPECT_TRUE(listener->heard.empty());
  ASSERT_EQ(listener->failed.size(), 1U);
  EXPECT_NE(listener->failed[0].find(sql), std::string::npos) << listener->failed[0];
  EXPECT_NE(home.takeFaults().find("== TransactionReport"), std::string::npos);

  ASSERT_TRUE(home.sql("alter table elsewhere rename to transactions"));
  home.spend("Food", 1, noon);
  ASSERT_TRUE(home.sql("alter table category rename to elsewhere"));
  EXPECT_FALSE(getSubCategoryReportFor(top, *home.home, noon, noon)) << "no titles to be had";
}

TEST(Reports, sayWhenOtherWorkHoldsTheStore) {
  Household home;
  TransactionReport report(home.root);
  ask(home, report, *home.home, 1112, "2024-01-01", "2024-12-31");
  bool refused = false;
  home.db.inDatabase("Other work", [&](Connection&) { refused = !report.reportByMonth(); });
  EXPECT_TRUE(refused);
  EXPECT_NE(home.takeFaults().find("Other work"), std::string::npos);
}

TEST(Lists, nameMonthsOfAnyCalendar) {
  struct Case {
    const char* why;
    const char* locale;
    int monthStartsOn;
    const char* from;
    const char* to;
    const char* shown;
  };
  for (const auto& c : {
           Case{"the month of an era that is over", "en_JP@calendar=japanese", 1, "2018-06-15", "2018-06-20",
                "June, 30 30-6-0 0/0\n"},
           Case{"the thirteenth month, cut at both ends", "en_IL@calendar=hebrew", 25, "2024-10-04",
                "2024-10-10", "Elul, 5784 5784-13-0 0/0\n"},
           Case{"a month that begins in the one before", "en_IL@calendar=hebrew", -25, "2024-10-04",
                "2024-10-10", "Tishri, 5785 5785-1-0 0/0\n"},
           Case{"a leap month", "en_CN@calendar=chinese", 1, "2023-04-01", "2023-04-02",
                "Second Monthbis, 40 40-2-0 0/0\n"},
       }) {
    Household home;
    home.platform.calendar = *Calendar::make("Europe/Berlin", c.locale);
    home.home->updateMonthStartsOn(c.monthStartsOn);
    TransactionReport report(home.root);
    ask(home, report, *home.home, 1112, c.from, c.to);
    report.setIncludeEmpty(true);
    EXPECT_EQ(shown(must(report.reportByMonth())), c.shown) << c.why;
  }
}

RC_GTEST_PROP(CategoryBreakdowns, areWhatTheReportOfEachSays, ()) {
  Household home;
  const Date noon = home.on("2024-02-29 12:00:00");
  const std::vector<std::string> titles = {"Food", "Rent", "Fun", "Ärzte"};
  const int type = *rc::gen::element(11, 12);
  std::vector<MVCategory> categories;
  Transaction together(home.connection());  // for speed
  for (const auto& title : titles) categories.push_back(home.category(title, type));
  for (int n = *rc::gen::inRange(0, 12); n > 0; --n) {
    const auto& category = categories[*rc::gen::inRange<std::size_t>(0, categories.size())];
    home.sql(
        "insert into transactions (eid, type, amount, datetime, book, category, deleted, paid)"
        " values (?, ?, ?, ?, ?, ?, ?, ?)",
        {home.root.newIdentifier(), *rc::gen::inRange(11, 15), *rc::gen::inRange(1, 4),
         noon.plusSeconds(86400 * *rc::gen::inRange(-1, 2)), *rc::gen::element(home.home->pk, home.cash->pk),
         category.pk, *rc::gen::element(0, 0, 0, 1), *rc::gen::element(1, 1, 1, 0)});
  }
  RC_ASSERT(together.commit());
  std::vector<std::pair<std::string, double>> expected;
  for (const auto& category : categories) {
    TransactionReport report(home.root);
    report.setMonivaAccount(*home.home);
    report.setCategory(category);
    const auto summary = must(report.getSummaryFrom(noon, noon));
    if (summary.count > 0) expected.emplace_back(category.title, summary.amount());
  }
  std::ranges::stable_sort(expected, std::greater<>(), [](const auto& pair) { return pair.second; });
  std::vector<std::pair<std::string, double>> found;
  const auto rows =
      must(getSubCategoryReportFor(MVCategory::rootCateForType(home.root, type), *home.home, noon, noon));
  for (const auto& summary : rows.listArray) {
    found.emplace_back(summary.title, summary.amount());
    RC_ASSERT(summary.year == 2024 && summary.month == 2 && summary.count > 0);
  }
  RC_ASSERT(found == expected);
}

}  // namespace
}  // namespace moniva
