#include "reports/book_sums.h"

#include <gtest/gtest.h>

#include "reports/moniva_account_transaction_report.h"
#include "support/household.h"

namespace moniva {
namespace {

class BookSums : public testing::Test {
 protected:
  BookSums() { home.setClock("2024-06-15 12:00:00"); }
  void row(int type, double amount, const std::string& when, int paid = 1, const std::string& more = "") {
    ASSERT_TRUE(home.sql(
        "insert into transactions (eid, bid, type, amount, datetime, paid, account, book" +
            (more.empty() ? "" : ", " + more.substr(0, more.find('='))) +
            ") values (?, 20, ?, ?, ?, ?, ?, ?" +
            (more.empty() ? "" : ", " + more.substr(more.find('=') + 1)) + ")",
        {home.root.newIdentifier(), type, amount, home.on(when), paid, home.cash->pk, home.home->pk}));
  }
  double sum(const Result<double>& read) {
    EXPECT_TRUE(read) << read.error().why;
    return read.value_or(-1);
  }

  Household home;
};

TEST_F(BookSums, takeSettledRowsOfWholeDays) {
  row(12, 1, "2024-06-01 00:00:00");
  row(12, 2, "2024-06-30 23:59:59");
  row(12, 4, "2024-07-01 00:00:00");
  row(12, 8, "2024-06-10", 0);
  row(11, 16, "2024-06-10");
  const Date from = home.on("2024-06-01 18:00:00");
  const Date to = home.on("2024-06-30 06:00:00");
  EXPECT_EQ(sum(transactionSumFrom(*home.home, from, to, 12)), 3);
  EXPECT_EQ(sum(transactionSumFrom(*home.cash, from, to, 11)), 16);
  EXPECT_EQ(sum(transactionSumFrom(*home.bank, from, to, 12)), 0);
}

TEST_F(BookSums, expectWhatSeriesInstalmentsAndPendingRecordsComeTo) {
  row(12, 100, "2024-06-20", 0, "syear, transferEID=1003, 'plan'");
  row(12, 200, "2024-06-20", 1, "syear, transferEID=1003, 'plan'");
  row(12, 1000, "2024-06-21", 0, "syear, transferEID, needReimburse=1003, 'other', 1");
  row(12, 30, "2024-06-22", 0);
  row(11, 5, "2024-06-23", 0);
  row(12, 10000, "2024-06-22", 0, "transferEID='cart'");
  const Date from = home.on("2024-06-01");
  const Date to = home.on("2024-06-30");
  EXPECT_EQ(sum(installmentSumFrom(*home.home, from, to)), 1100);
  EXPECT_EQ(sum(repeatExpenseSumFrom(*home.home, from, to)), 125) << "pending income is taken off";
}

TEST_F(BookSums, expectEachSeriesByTheRecordsItHasYetToMake) {
  struct Case {
    const char* why;
    const char* rule;
    const char* next;
    const char* end;
    int firstDay;
    const char* from;
    const char* to;
    int times;
  };
  for (const auto& c : {
           Case{"daily from its next day on", "Daily", "2024-06-16", "", 1, "2024-06-01", "2024-06-30", 15},
           Case{"up to its end", "Daily", "2024-06-16", "2024-06-20", 1, "2024-06-01", "2024-06-30", 5},
           Case{"in a time ahead", "Weekly", "2024-06-17", "", 3, "2024-07-01", "2024-07-31", 5},
           Case{"none between two", "Biweekly", "2024-06-17", "", 3, "2024-06-18", "2024-06-30", 0},
           Case{"every other week", "Biweekly", "2024-06-17", "", 3, "2024-06-01", "2024-07-31", 4},
           Case{"on the last of short months", "Monthly", "2024-06-30", "", 31, "2024-07-31", "2024-09-29",
                2},
           Case{"every other month", "Bimonthly", "2024-07-01", "", 1, "2024-01-01", "2024-12-31", 3},
           Case{"quarterly", "Quarterly", "2024-07-01", "", 1, "2024-01-01", "2024-12-31", 2},
           Case{"half-yearly", "Half-yearly", "2024-07-01", "", 1, "2024-01-01", "2025-12-31", 3},
           Case{"yearly from a leap day", "Yearly", "2028-02-29", "", 29, "2029-02-28", "2029-02-28", 1},
           Case{"it is over", "Monthly", "2024-07-01", "2024-06-20", 1, "2024-07-01", "2024-07-31", 0},
           Case{"no rule", "Fortnightly", "2024-06-16", "", 1, "2024-06-01", "2024-06-30", 0},
       }) {
    home.sql("delete from transactions");
    row(85, 7, c.next, 1,
        fmt::format("syear, repeat, sday, repeat_end_date=12, '{}', {}, {}", c.rule, c.firstDay,
                    *c.end == '\0' ? "''" : fmt::format("{}", home.on(c.end).secondsSince1970)));
    row(85, 1000, c.next, 1, "syear, repeat=11, 'Daily'");
    EXPECT_EQ(sum(repeatExpenseSumFrom(*home.home, home.on(c.from), home.on(c.to))), 7 * c.times) << c.why;
  }
}

TEST_F(BookSums, beginARegisterWithWhatWasThereBefore) {
  ASSERT_TRUE(home.cash->updateBeginBalance(100));
  row(12, 1, "2024-05-31 23:59:59");
  row(11, 2, "2024-05-01");
  row(33, 4, "2024-05-01");
  row(24, 8, "2024-05-01");
  row(50, -16, "2024-05-01");
  row(12, 32, "2024-05-01", 0);
  row(12, 64, "2024-06-01 00:00:00");
  const Date first = home.on("2024-06-01 15:00:00");
  EXPECT_EQ(sum(getInitialToDisplay(*home.cash, first)), 100 - 1 + 2 - 4 + 8 - 16);
  ASSERT_TRUE(home.bank->updateBeginBalance(1000));
  EXPECT_EQ(sum(getInitialToDisplay(home.group("Both", {*home.cash, *home.bank}), first)), 1089);
  ASSERT_TRUE(home.cash->updateTrackingType(12));
  EXPECT_EQ(sum(getInitialToDisplay(*home.cash, first)), 100 - 1 - 16) << "it tracks expenses alone";
}

TEST_F(BookSums, ofACreditAccountTellChargesFromWhatWasPaidBack) {
  for (const int type : {11, 12, 23, 24, 25, 33, 34, 35}) row(type, type, "2024-06-10");
  row(12, 1, "2024-08-31");
  const auto list =
      getReportByMonthForDebtAccountFrom(*home.cash, home.on("2024-06-01"), home.on("2024-08-31"));
  ASSERT_TRUE(list) << list.error().why;
  ASSERT_EQ(list->listArray.size(), 2U) << "July had nothing";
  const auto& june = list->listArray[0];
  EXPECT_EQ(june.title, "June, 2024");
  EXPECT_EQ(june.incomeAmount, 11 + 24 + 25);
  EXPECT_EQ(june.expenseAmount, 12 + 34 + 35);
  EXPECT_EQ(june.transferinAmount, 23);
  EXPECT_EQ(june.transferoutAmount, 33);
  EXPECT_EQ(june.count, 8);
  const auto day =
      TransactionReport::getSummaryFor(*home.cash, 12, home.on("2024-06-10"), home.on("2024-06-10"));
  EXPECT_EQ(day->amount(), june.expenseAmount);
}

TEST_F(BookSums, knowForeignMoneyBetweenTwoMoments) {
  row(12, 1, "2024-06-10 12:00:00", 1, "currency2, amount2='USD', 2");
  const Date at = home.on("2024-06-10 12:00:00");
  EXPECT_TRUE(hasForeignCurrencyTransactionsFrom(*home.home, at.plusSeconds(-1), at.plusSeconds(1)).value());
  EXPECT_FALSE(hasForeignCurrencyTransactionsFrom(*home.home, at, at.plusSeconds(1)).value())
      << "not counted in";
  EXPECT_FALSE(hasForeignCurrencyTransactionsFrom(*home.home, at.plusSeconds(-1), at).value());
}

TEST_F(BookSums, listTheRecordsThatAReportOfTheTypeCounts) {
  const std::string noon = "2024-06-10 12:00:00";
  for (const int type : {11, 12, 13, 23, 33, 34, 61}) row(type, type, noon);
  row(12, 99, noon, 0);
  struct Case {
    const MonivaAccount& of;
    int type;
    double sum;
    const char* why;
  };
  for (const auto& [of, type, expected, why] : {
           Case{*home.home, 12, 12, "an expense"},
           Case{*home.home, 1112, 23, "income and expense"},
           Case{*home.cash, 1050, 11 + 12 + 23 + 33 + 34, "all that moved its money"},
           Case{*home.cash, 2312, 11 + 12 + 23 + 34, "transfers in only"},
           Case{*home.cash, 2333, 56, "transfers"},
           Case{*home.cash, 34, 34, "a kind that is no report's"},
       }) {
    const auto records = TransactionReport::getTransactionListFor(of, type, home.on(noon));
    ASSERT_TRUE(records) << why;
    double found = 0;
    for (const auto& record : *records) found += record.amount;
    EXPECT_EQ(found, expected) << why;
  }
  const auto inEuro = TransactionReport::getSummaryForCurrency(home.root, "EUR", home.on(noon));
  EXPECT_EQ(inEuro->incomeAmount, 11);
  EXPECT_EQ(inEuro->expenseAmount, 12);
  EXPECT_EQ(TransactionReport::getTransactionListForCurrency(home.root, "EUR", home.on(noon))->size(), 2U);
  EXPECT_EQ(TransactionReport::getSummaryForCurrency(home.root, "USD", home.on(noon))->count, 0);
  const auto all = MonivaAccountTransactionReport(*home.cash).getSummaryFrom(home.on(noon), home.on(noon));
  EXPECT_EQ(all->transferoutAmount, 33) << "of all that the account tracks";
}

TEST_F(BookSums, tellWhatIsPendingOfEachSideOnce) {
  const std::string noon = "2024-06-10 12:00:00";
  for (const int type : {11, 12, 23, 33, 34}) row(type, type, noon, 0);
  row(12, 99, noon);
  struct Case {
    const MonivaAccount& of;
    int type;
    double in, out;
    std::size_t records;
  };
  for (const auto& [of, type, in, out, records] :
       {Case{*home.home, 12, 0, 12, 1}, Case{*home.home, 1112, 11, 12, 2},
        Case{*home.cash, 1050, 11 + 23, 12 + 33 + 34, 5}, Case{*home.cash, 2312, 11 + 23, 12 + 34, 4},
        Case{*home.cash, 23, 23, 0, 1}, Case{*home.cash, 2333, 23, 33, 2}}) {
    TransactionReport report(home.root);
    report.setMonivaAccount(of);
    report.setTransactionType(type);
    report.setIncludePending(true);
    const auto day = report.getSummaryFrom(home.on(noon), home.on(noon));
    ASSERT_TRUE(day);
    EXPECT_EQ(day->incomePendingAmount, in) << type;
    EXPECT_EQ(day->expensePendingAmount, out) << type;
    EXPECT_EQ(day->pendinglistArray.size(), records) << type;
    EXPECT_EQ(static_cast<std::size_t>(day->incomePendingCount + day->expensePendingCount), records) << type;
  }
}

}  // namespace
}  // namespace moniva
