#include "reports/bill_report.h"

#include <gtest/gtest.h>
#include <rapidcheck.h>

#include <future>

#include "calendar/date_texts.h"
#include "model/move_all_data.h"
#include "reports/alerts.h"
#include "reports/bill_months.h"
#include "reports/history.h"
#include "storage/transaction.h"
#include "support/household.h"

namespace moniva {
namespace {

/// A household with a credit card, on 15 June 2024.
class Card : public Household {
 public:
  explicit Card(int monthStartsOn = 1, int dueDay = 0, const std::string& zone = "Europe/Berlin")
      : Household(zone), card(account("Card", "_DebtAccount")) {
    setClock("2024-06-15 12:00:00");
    EXPECT_TRUE(card.updateMonthStartsOn(monthStartsOn));
    EXPECT_TRUE(card.updateDueDay(dueDay));
  }

  void row(int type, double amount, Date when, bool paid = true, int isDeleted = 0) {
    EXPECT_TRUE(sql(
        "insert into transactions (eid, bid, type, amount, account, datetime, paid, deleted) values (?, 20,"
        " ?, ?, ?, ?, ?, ?)",
        {root.newIdentifier(), type, amount, card.pk, when, paid ? 1 : 0, isDeleted}));
  }
  void row(int type, double amount, const std::string& when) { row(type, amount, on(when)); }
  /// "charged - carried in - repaid = left, carried out".
  static std::string shown(const BillReportSummary& bill) {
    return fmt::format("{} - {} - {} = {}, {}{}", bill.bileAmount, bill.lastRepayMoreAmount, bill.repayAmount,
                       bill.needReayAmount, bill.thisRepayMoreAmount, bill.repayComplete ? "" : " open");
  }
  std::string bill(int year, int month) {
    const auto made = BillReport(card).getBillForYear(year, month);
    return made ? shown(*made) : made.error().why;
  }
  /// The columns that a bill writes into the rows of what is carried over.
  std::string carried(bool withKeys = true) {
    return rows(
        fmt::format(
            "select {}strftime('%Y-%m-%d', datetime + 7200, 'unixepoch') || ' ' || amount ||"
            " subcategory || category || syear || bid || ipid || (payDate = datetime) || paid"
            " || deleted from transactions where type = 64 and account = ? and deleted = 0 order by datetime",
            withKeys ? "eid || " : ""),
        {card.pk});
  }
  std::string day(Date date) const { return stringOfDateForCSV(root.calendar(), date); }

  MonivaAccount card;
};

TEST(Bills, carryWhatWasPaidTooMuch) {
  Card s;
  s.row(12, 60, "2024-01-01"), s.row(33, 30, "2024-01-31 23:59:59"), s.row(34, 8, "2024-01-20");
  s.row(35, 2, "2024-01-20"), s.row(12, 40, "2024-02-10"), s.row(12, 5, "2024-03-10");
  s.row(23, 100, "2024-02-20 23:59:59"), s.row(11, 10, "2024-01-21"), s.row(25, 20, "2024-02-01");
  s.row(24, 1, "2024-02-21");
  EXPECT_EQ(s.bill(2024, 1), "100 - 0 - 130 = 0, 30");
  EXPECT_EQ(s.carried(false), "2024-02-01 30.0#NOMVCATEGORY010lastPayoffMore110");
  EXPECT_EQ(s.bill(2024, 2), "40 - 30 - 1 = 9, 0 open");
  EXPECT_EQ(s.bill(2023, 12), "0 - 0 - 0 = 0, 0") << "a month without anything is complete";
  // Later bills follow from an earlier one that is not read again; rows that nobody asked for go.
  s.row(11, 9.1, "2024-02-01");
  ASSERT_TRUE(
      s.sql("insert into transactions (eid, type, amount, account, datetime) select 'x' || value, 64,"
            " 7, ?, ? + value from json_each('[1, 2, -9999999]')",
            {s.card.pk, s.on("2024-02-05")}));
  EXPECT_EQ(s.bill(2024, 3), "5 - 0.1 - 0 = 4.9, 0 open");
  EXPECT_EQ(s.carried(false),
            "2024-02-01 39.1#NOMVCATEGORY010lastPayoffMore110\n"
            "2024-03-01 0.1#NOMVCATEGORY010lastPayoffMore110");
  const auto list = BillReport(s.card).getBillsUpTo(2024, 3, 4).value();
  std::string listed;
  for (const auto& bill : list.listArray)
    listed += fmt::format("{}/{} {}; ", bill.year, bill.month, s.shown(bill));
  EXPECT_EQ(listed,
            "2024/3 5 - 0.1 - 0 = 4.9, 0 open; 2024/2 40 - 39.1 - 1 = 0, 0.1; 2024/1 100 - 0 - 139.1 = 0, "
            "39.1; 2023/12 0 - 0 - 0 = 0, 0; ");
  EXPECT_EQ(fmt::format("{} {}", list.count, list.maxBillAmount), "4 100");
  EXPECT_EQ(BillReport(s.card).getBillForDate(s.on("2024-01-31"))->printLog(s.root.calendar()),
            "---- 2024/1\nbill period 2024-01-01 00:00:00 - 2024-01-31 00:00:00\n"
            "repay period 2024-01-21 00:00:00 - 2024-02-20 00:00:00\n"
            "bileAmount 100 lastRepayMoreAmount 0  repayAmount 139.1 needRepay 0\n"
            "thisRepayMoreAmount 39.1 repayComplete 1\n---------------------------------------");
  ASSERT_TRUE(s.card.updateMonthStartsOn(25));
  EXPECT_EQ(s.bill(2024, 3), "0 - 26 - 0 = 0, 26") << "5 of 10 March are February's now";
  EXPECT_EQ(
      s.rows("select group_concat(date(datetime + 7200, 'unixepoch')) from (select * from transactions where"
             " type = 64 and deleted = 0 order by datetime)"),
      "2024-02-25,2024-03-25,2024-04-25");
  ASSERT_TRUE(s.sql("delete from transactions where type = 64"));
  ASSERT_TRUE(s.sql("pragma user_version = 2"));
  ASSERT_TRUE(s.db.initDatabase());
  EXPECT_EQ(s.bill(2024, 3), "0 - 26 - 0 = 0, 26") << "counted in a store that can only be read";
  ASSERT_TRUE(s.db.isReadOnly());
  EXPECT_EQ(s.carried(), "");
}

TEST(Bills, areRefusedInWords) {
  Card s;
  EXPECT_EQ(s.bill(2024, 13), "there is no month 13 of the year 2024");
  EXPECT_EQ(s.bill(2024, 0), "there is no month 0 of the year 2024");
  EXPECT_EQ(s.bill(0, 1), "there is no month 1 of the year 0");
  EXPECT_EQ(BillReport(*s.bank).getBillForDate({}).error().why,
            "'Bank' is no credit account and has no bills");
  EXPECT_EQ(getCorrentBill(s.group("Cards", {s.card})).error().why,
            "'Cards' is a group; name one of its members");
  EXPECT_FALSE(BillReport(s.card).getBillsUpTo(2024, 1, 0));
  // What nobody asked to be written far ahead is not.
  s.row(11, 5, "2024-05-01");
  EXPECT_EQ(s.bill(2100, 1), "0 - 5 - 0 = 0, 5");
  EXPECT_EQ(s.number("select count(*) from transactions where type = 64"), 5) << "May to July, and two";
}

/// What was carried over is no money, no record, and of one account alone.
TEST(Bills, keepTheirRowsOutOfEverythingElse) {
  Card s;
  s.row(12, 10, "2024-05-01"), s.row(23, 50, "2024-06-15"), s.row(33, 5, "2024-06-15 13:00:00");
  EXPECT_EQ(s.bill(2024, 5), "10 - 0 - 50 = 0, 40");
  EXPECT_EQ(getTheTotalBalance(s.card), 35);
  EXPECT_EQ(s.card.recordCount(), 3);
  EXPECT_EQ(allTransTestForDate(s.root, s.root.now())->size(), 0);
  const auto lines = BillReport(s.card).repayList(s.on("2024-06-01"), s.on("2024-06-30")).value();
  ASSERT_EQ(lines.size(), 2);
  EXPECT_TRUE(lines[0].isCarried && lines[0].amount == 40 && lines[1].type == 23 && lines[1].amount == 50);
  EXPECT_EQ(MVTransaction::transactionFromEID(s.root, lines[0].eid)->noteString, "Payoff more last month");
  EXPECT_EQ(BillReport(s.card).chargeList(s.on("2024-06-15"), s.on("2024-06-15"))->size(), 1);
  BillReport report(s.card);
  report.beginDate = s.on("2024-05-01"), report.endDate = s.on("2024-06-30");
  std::string heard;
  const auto hear = [&](const Result<TransReportSummary>& read) {
    for (const auto& day : read->listArray) {
      heard += fmt::format("{}/{} -{} +{} {}; ", day.month, day.day, day.expenseAmount, day.incomeAmount,
                           day.transactions.front().amount);
    }
    heard += read->isPartial ? "partial" : "";
  };
  report.getDailySummary(hear);
  s.db.drain(), s.platform.mainQueue.runPending();
  {
    std::promise<void> gate;
    s.db.dispatchInDatabase("Gate", [&](Connection&) { gate.get_future().wait(); });
    BillReport gone = report;
    gone.getDailySummary(hear);
    *gone.stopLoadingData = true;
    report.getSummaryForDate(s.root.now(), [&](const auto& day) { heard += fmt::format(" {}", day->count); });
    report.getRepayListFromDate(report.beginDate, report.endDate,
                                [&](const auto& list) { heard += fmt::format(" {}", list->size()); });
    gate.set_value();
  }
  s.db.drain(), s.platform.mainQueue.runPending();
  EXPECT_EQ(heard, "5/1 -10 +0 10; 6/15 -5 +50 5; partial 2 2");
  const auto other = s.account("Other", "_DebtAccount");
  EXPECT_EQ(moveAllDataTo(s.card, other), 3);
  EXPECT_EQ(s.carried(), "");
  EXPECT_EQ(Card::shown(BillReport(other).getBillForYear(2024, 5).value()), "10 - 0 - 50 = 0, 40");
}

TEST(Bills, ofNowAreWhatIsStillToBePaid) {
  Card s(25, 10);
  s.row(12, 30, "2024-04-25"), s.row(12, 7, "2024-05-25"), s.row(23, 5, "2024-06-01");
  const auto bill = getCorrentBill(s.card).value();
  EXPECT_EQ(fmt::format("{} {} {} of {}, {} of {}", s.day(bill.lastDueDate), s.day(bill.dueDate),
                        bill.lastMonthNeedReayAmount, bill.lastMonthBileAmount, bill.thisMonthNeedReayAmount,
                        bill.thisMonthBileAmount),
            "2024/06/10 2024/07/10 25 of 30, 7 of 7");
  const auto alert = allAlertInfo(s.root)->bills.at(0);
  EXPECT_EQ(fmt::format("{} {} {} {}", alert.text, alert.lastMonthBileAmount, alert.needReayAmount,
                        s.day(alert.dueDate)),
            "Card / April, 2024 30 25 2024/06/10");
  s.row(23, 25, "2024-06-10");
  EXPECT_TRUE(allAlertInfo(s.root)->bills.empty());
}

/// Bills close on the last day and are due on the 20th; "last, of it late, present, earlier".
TEST(Bills, countWhatIsPaidLate) {
  struct Case {
    std::vector<std::tuple<int, double, std::string>> rows;
    std::string now;
    std::string open;
    std::string why;
  };
  const Case cases[] = {
      {{{12, 100, "2024-05-03"}, {23, 100, "2024-06-21"}}, "2024-06-22", "0, 100, 0, 0", "a day late"},
      {{{12, 100, "2024-05-03"}, {12, 40, "2024-06-02"}, {23, 100, "2024-06-21"}},
       "2024-06-22",
       "0, 100, 40, 0",
       "it is for May, not for June, which has not closed"},
      {{{12, 100, "2024-05-03"}, {12, 40, "2024-06-02"}, {23, 100, "2024-06-21"}},
       "2024-07-05",
       "40, 0, 0, 0",
       "and June is still to be paid when it has"},
      {{{12, 200, "2024-04-03"}, {12, 120, "2024-05-03"}, {23, 100, "2024-06-10"}},
       "2024-06-22",
       "20, 0, 0, 200",
       "what is paid in time is for its bill, though an older one was never paid"},
      {{{12, 200, "2024-04-03"}, {12, 120, "2024-05-03"}, {23, 400, "2024-06-10"}},
       "2024-06-22",
       "0, 0, 0, 0",
       "what is paid above a bill pays older ones"},
  };
  for (const auto& one : cases) {
    Card s;
    for (const auto& [type, amount, when] : one.rows) s.row(type, amount, when);
    s.setClock(one.now + " 12:00:00");
    const auto bill = getCorrentBill(s.card).value();
    EXPECT_EQ(fmt::format("{}, {}, {}, {}", bill.lastMonthNeedReayAmount, bill.lastMonthLateAmount,
                          bill.thisMonthNeedReayAmount, bill.earlierNeedReayAmount),
              one.open)
        << one.why;
    const bool isOwed = bill.lastMonthNeedReayAmount + bill.earlierNeedReayAmount > 0;
    EXPECT_EQ(allAlertInfo(s.root)->bills.size(), isOwed ? 1 : 0) << one.why;
  }
}

/// Rows that another device made stay as they are, and what is no more is told to it.
TEST(Bills, keepTheRowsOfOtherDevices) {
  Card s;
  s.row(12, 10, "2024-05-10"), s.row(23, 50, "2024-06-15");
  EXPECT_EQ(s.bill(2024, 5), "10 - 0 - 50 = 0, 40");
  const auto written = s.connection().totalChanges();
  ASSERT_TRUE(s.sql("update transactions set datetime = datetime - 8 * 3600, payDate = 0 where type = 64"));
  EXPECT_EQ(s.bill(2024, 5), "10 - 0 - 50 = 0, 40");
  EXPECT_EQ(s.connection().totalChanges(), written + 1) << "made where June began eight hours earlier";
  const auto state = [&] {
    return s.rows(
        "select amount || ' ' || deleted || ' ' || (editDate > 0) from transactions where type = 64");
  };
  ASSERT_TRUE(s.sql("update transactions set amount = 10 where type = 23"));
  EXPECT_EQ(s.bill(2024, 5), "10 - 0 - 10 = 0, 0");
  EXPECT_EQ(state(), "0.0 3 1");
  ASSERT_TRUE(s.sql("update transactions set amount = 11 where type = 23"));
  // Another program writes: the bill is read all the same, at once.
  const auto other = Connection::open(s.connection().path(), Connection::Access::readWrite).value();
  {
    const Transaction writing(*other);
    EXPECT_EQ(s.bill(2024, 5), "10 - 0 - 11 = 0, 1");
    EXPECT_EQ(state(), "0.0 3 1");
  }
  EXPECT_EQ(s.bill(2024, 5), "10 - 0 - 11 = 0, 1");
  EXPECT_EQ(state(), "1.0 0 1") << "the same row";
}

TEST(Bills, areRemindedOfUntilTheyArePaid) {
  Card s(25, 10);
  ASSERT_TRUE(s.card.updateRepayNotificationEnabled(true));
  s.setClock("2024-06-05 12:00:00");
  const auto reminded = [&] {
    EXPECT_TRUE(BillReport::createBillNotifaction(s.root));
    std::string days;
    const auto pending = s.platform.localNotifications->pending();
    for (const auto& request : *pending)
      days += fmt::format("{}/{} ", request.trigger.month, request.trigger.day);
    return days;
  };
  EXPECT_EQ(reminded(), "");
  s.row(12, 30, "2024-04-25"), s.row(12, 7, "2024-05-25");
  EXPECT_EQ(reminded(), "6/7 6/10 7/5 7/7 7/10 ");
  const auto written = s.connection().totalChanges();
  EXPECT_EQ(reminded(), "6/7 6/10 7/5 7/7 7/10 ");
  EXPECT_EQ(s.connection().totalChanges(), written);
  ASSERT_TRUE(s.card.updateDueDay(12));
  EXPECT_EQ(reminded(), "6/7 6/9 6/12 7/7 7/9 7/12 ");
  s.row(23, 30, "2024-06-05");
  EXPECT_EQ(reminded(), "7/7 7/9 7/12 ");
  s.row(23, 7, "2024-06-05 01:00:00");
  EXPECT_EQ(reminded(), "") << "paid too much, so that the next bill is covered";
  ASSERT_TRUE(s.sql("delete from transactions where type = 23"));
  ASSERT_TRUE(s.card.close(true));
  EXPECT_EQ(reminded(), "") << "a closed account";
}

/// Records of five years or less of an account, at random.
void fill(Card& s) {
  const Date begin = s.on("2019-06-01");
  const int many = *rc::gen::inRange(0, 25);
  for (int i = 0; i < many; ++i) {
    const int type = *rc::gen::element(12, 12, 33, 34, 35, 23, 23, 11, 25, 24);
    const int days = *rc::gen::element(40, 400, 1800);
    const Date when = s.root.calendar().dateWithDay(begin, *rc::gen::inRange(0, days));
    s.row(type, *rc::gen::inRange(1, 500) / 100.0, when.plusSeconds(*rc::gen::element(0, 41'000, 82'799)),
          *rc::gen::inRange(0, 8) != 0, *rc::gen::element(0, 0, 0, 0, 0, 0, 1, 3));
  }
}

TEST(Bills, FollowFromTheRecordsAlone) {
  const bool held = rc::check([] {
    Card s(*rc::gen::element(1, 25, -25, 29, 31, -31), *rc::gen::element(0, 1, 15, 28, 31),
           *rc::gen::element<std::string>("Europe/Berlin", "America/New_York", "Asia/Kolkata"));
    s.setClock("2024-10-15");
    fill(s);
    const auto list = BillReport(s.card).getBillsUpTo(2024, 8, 70).value();
    const std::string rows = s.carried();
    const Calendar& calendar = s.root.calendar();
    double owed = 0;
    double open = 0;
    double charged = 0;
    for (auto bill = list.listArray.rbegin(); bill != list.listArray.rend(); ++bill) {
      owed += bill->needReayAmount;
      open += bill->openAmount;
      charged += bill->bileAmount - bill->repayAmount;
      if (bill == list.listArray.rbegin()) continue;
      const auto& before = *(bill - 1);
      RC_ASSERT(calendar.isSameDay(bill->beginDate, calendar.getNextDay(before.endDate)));
      RC_ASSERT(calendar.isSameDay(bill->payoffBaginDate, calendar.getNextDay(before.dueDate)));
      RC_ASSERT(calendar.isSameDay(bill->payoffEndDate, bill->dueDate));
      RC_ASSERT(bill->dueDate > bill->endDate);
      RC_ASSERT(bill->lastRepayMoreAmount == before.thisRepayMoreAmount);
    }
    const double over = list.listArray.front().thisRepayMoreAmount;
    RC_ASSERT(std::abs(owed - over - charged) < 1e-6);
    RC_ASSERT(std::abs(open - list.thisRepayMoreAmount - charged) < 1e-6);
    RC_ASSERT(open == 0 || list.thisRepayMoreAmount == 0);
    RC_ASSERT(std::abs(charged + getTheTotalBalance(s.card)) < 1e-6);

    // One at a time, in any order: the same, and nothing more to write.
    const auto written = s.connection().totalChanges();
    for (const std::size_t i : *rc::gen::container<std::vector<std::size_t>>(
             6, rc::gen::inRange<std::size_t>(0, list.listArray.size()))) {
      const auto& listed = list.listArray[i];
      const auto bill = BillReport(s.card).getBillForYear(listed.year, listed.month).value();
      RC_ASSERT(bill.bileAmount == listed.bileAmount && bill.repayAmount == listed.repayAmount &&
                bill.needReayAmount == listed.needReayAmount &&
                bill.lastRepayMoreAmount == listed.lastRepayMoreAmount &&
                bill.thisRepayMoreAmount == listed.thisRepayMoreAmount &&
                bill.beginDate == listed.beginDate && bill.dueDate == listed.dueDate &&
                bill.payoffBaginDate == listed.payoffBaginDate);
      double sum = 0;
      for (const int type : {12, 33, 34, 35})
        sum += *BillReport(s.card).transactionSumFrom(bill.beginDate, bill.endDate, type);
      RC_ASSERT(std::abs(sum - bill.bileAmount) < 0.005);
    }
    RC_ASSERT(s.connection().totalChanges() == written);
    RC_ASSERT(s.carried() == rows);

    // And from nothing, another way round.
    RC_ASSERT(s.sql("delete from transactions where type = 64"));
    for (const std::size_t i : {std::size_t{30}, std::size_t{50}, std::size_t{0}, std::size_t{10}}) {
      RC_ASSERT(BillReport(s.card).getBillForYear(list.listArray[i].year, list.listArray[i].month));
    }
    RC_ASSERT(s.carried() == rows);
  });
  EXPECT_TRUE(held);
}

}  // namespace
}  // namespace moniva
