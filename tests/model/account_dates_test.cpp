#include "model/account_dates.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>
#include <sqlite3.h>

#include <atomic>

#include "support/household.h"

namespace moniva {
namespace {

void insert(Household& home, int count, int type, const std::string& book, const std::string& account,
            Date first) {
  EXPECT_TRUE(
      home.sql("with recursive n(i) as (select 0 union all select i + 1 from n where i + 1 < ?)"
               " insert into transactions (eid, type, amount, datetime, book, account)"
               " select hex(randomblob(8)), ?, 1, ? + i, ?, ? from n",
               {count, type, first, book, account}));
}

MonivaAccount group(Household& home, MonivaAccount row, int type, const std::vector<std::string>& members) {
  home.sql("update account set isGroup = 1 where oldTitle = ?", {row.pk});
  for (const auto& member : members) {
    home.sql("insert into category (title, parent, type, deleted) values (?, ?, ?, 0)",
             {member, row.pk, type});
  }
  EXPECT_TRUE(row.getInfo());
  return row;
}

RC_GTEST_PROP(AccountDates, areThoseOfTheFirstAndLastSettledRow, ()) {
  Household home;
  const auto trip = home.book("Trip");
  const auto books = group(home, home.book("All"), 8, {home.home->pk, trip.pk});
  const auto accounts = group(home, home.account("Any"), 7, {home.cash->pk, home.bank->pk});
  const auto empty = group(home, home.book("None"), 8, {});
  for (int n = *rc::gen::inRange(0, 30); n > 0; --n) {
    home.sql(
        "insert into transactions (eid, type, amount, datetime, book, account, deleted, paid)"
        " values (?, ?, 1, ?, ?, ?, ?, ?)",
        {home.root.newIdentifier(), *rc::gen::element(10, 11, 12, 22, 33, 49, 50, 85),
         *rc::gen::inRange(-50, 1000), *rc::gen::element(home.home->pk, trip.pk, std::string()),
         *rc::gen::element(home.cash->pk, home.bank->pk), *rc::gen::element(0, 0, 1, 3),
         *rc::gen::element(0, 1, 1)});
  }
  for (const auto& row : {*home.home, trip, *home.cash, books, accounts, empty}) {
    Run run = home.connection().query(
        fmt::format("select min(datetime), max(datetime) from transactions where {} and deleted = 0 and"
                    " paid = 1 and type > 10 and type < 50",
                    accountQuerySQL(row)),
        {row.pk});
    RC_ASSERT(run.next());
    const auto none = std::optional<Date>();
    RC_ASSERT(getTheDateOfFirstTransaction(row).value() == (run.isNull(0) ? none : run.date(0)));
    RC_ASSERT(getTheDateOfLastTransaction(row).value() == (run.isNull(1) ? none : run.date(1)));
  }
}

/// How many steps of the engine the statements since the last question took, on every connection opened after
/// it was made.
class StepCounter {
 public:
  StepCounter() { sqlite3_auto_extension(reinterpret_cast<void (*)()>(&StepCounter::watch)); }
  ~StepCounter() { sqlite3_cancel_auto_extension(reinterpret_cast<void (*)()>(&StepCounter::watch)); }
  StepCounter(const StepCounter&) = delete;
  StepCounter& operator=(const StepCounter&) = delete;
  int take() { return steps_.exchange(0); }

 private:
  static int watch(sqlite3* db, const char**, const void*) {
    return sqlite3_trace_v2(
        db, SQLITE_TRACE_PROFILE,
        [](unsigned, void*, void* statement, void*) {
          steps_ += sqlite3_stmt_status(static_cast<sqlite3_stmt*>(statement), SQLITE_STMTSTATUS_VM_STEP, 1);
          return 0;
        },
        nullptr);
  }
  static inline std::atomic<int> steps_ = 0;
};

TEST(AccountDates, costTheSameHoweverMuchThereIs) {
  StepCounter steps;
  Household home;
  const auto books = group(home, home.book("All"), 8, {home.home->pk});
  const auto accounts = group(home, home.account("Any"), 7, {home.cash->pk});
  const auto cost = [&](const MonivaAccount& row) {
    steps.take();
    EXPECT_TRUE(getTheDateOfFirstTransaction(row).value());
    EXPECT_TRUE(getTheDateOfLastTransaction(row).value());
    return steps.take();
  };
  insert(home, 10, 12, home.home->pk, home.cash->pk, home.on("2020-01-01"));
  std::vector<int> few;
  for (const auto& row : {*home.home, *home.cash, books, accounts}) few.push_back(cost(row));
  insert(home, 5000, 12, home.home->pk, home.cash->pk, home.on("2021-01-01"));
  insert(home, 5000, 11, home.home->pk, home.cash->pk, home.on("2021-01-01"));
  std::size_t i = 0;
  for (const auto& row : {*home.home, *home.cash, books, accounts}) {
    EXPECT_GT(few[i], 0);
    EXPECT_LT(cost(row), few[i] + 100) << row.title;
    ++i;
  }
}

TEST(AccountDates, sayWhenTheStoreCouldNotBeRead) {
  Household home;
  ASSERT_TRUE(home.sql("alter table transactions rename to elsewhere"));
  EXPECT_FALSE(getTheDateOfFirstTransaction(*home.home));
  EXPECT_FALSE(getTheDateOfLastTransaction(*home.cash));
}

}  // namespace
}  // namespace moniva
