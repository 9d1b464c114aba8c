#include <gtest/gtest.h>

#include "model/group_balance.h"
#include "reminders/fire_times.h"
#include "reminders/mv_notification_manager.h"
#include "storage/writes.h"
#include "support/reminder_story.h"

namespace moniva {
namespace {

TEST(Reminders, comeAtTenFiveAndThreeDaysBeforeAndOnTheDay) {
  const struct {
    const char* zone;
    const char* now;
    const char* due;
    const char* expected;
    const char* why;
  } rows[] = {
      {"Europe/Berlin", "2024-02-29 14:30:00", "2024-03-20 18:00:00",
       "Food 03-15 10:00, Food 03-17 10:00, Food 03-20 10:00", "whatever its time of day"},
      {"Europe/Berlin", "2024-03-01", "2024-04-01", "Food 03-27 10:00, Food 03-29 10:00, Food 04-01 10:00",
       "by the wall clock, over a change of it"},
      {"Europe/Berlin", "2024-02-29 14:30:00", "2024-03-02", "Food 03-02 10:00", "the others have passed"},
      {"Europe/Berlin", "2024-02-29 09:59:59", "2024-02-29", "Food 02-29 10:00", "just ahead"},
      {"Europe/Berlin", "2024-02-29 10:00:00", "2024-02-29", "", "not after now"},
      {"Europe/Berlin", "2024-02-29", "2024-03-05", "Food 02-29 10:00, Food 03-02 10:00, Food 03-05 10:00",
       "back over the end of a month"},
      {"Pacific/Apia", "2011-12-20", "2012-01-02", "Food 12-27 10:00, Food 12-29 10:00, Food 01-02 10:00",
       "a day that the zone left out"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.why);
    ReminderStory story(row.zone);
    story.setClock(row.now);
    const auto bill = story.loaded(story.spend("Food", 12.5, story.on(row.due)).eid);
    const auto scheduled = scheduleNotificationForDate(bill, story.on(row.due));
    ASSERT_TRUE(scheduled) << scheduled.error().why;
    EXPECT_EQ(story.pending(), row.expected);
    EXPECT_TRUE(story.isSound());
    EXPECT_EQ(scheduleNotificationForDate(bill, story.on(row.due)), 0) << "found again";
    EXPECT_EQ(deleteNotification(bill), *scheduled);
    EXPECT_EQ(story.pending(), "");
    EXPECT_EQ(scheduleNotificationForDate(bill, story.on(row.due)), *scheduled) << "a deleted record is none";
  }
}

TEST(Reminders, recordsSayWhatTheyAreOf) {
  ReminderStory story;
  const auto bill = story.loaded(story.spend("Food", 12.5, story.on("2024-03-02")).eid);
  ASSERT_TRUE(scheduleNotificationForDate(bill, story.on("2024-03-02")));
  EXPECT_EQ(story.rows("select title || '|' || oldParent || '|' || oldTitle || '|' || parent from category"
                       " where type = 98 and editDate > 0"),
            "[Home] Food|" + bill.eid + "||" + bill.eid + "_2024-03-02 10:00:00");
  EXPECT_EQ(reminderRecordsOf(story.root, bill.eid)->front().fireDate, story.on("2024-03-02 10:00:00"));
  for (const char* odd : {"", "_", "x_", "x_2024-13-01 10:00:00", "x_2023-02-29 10:00:00",
                          "x_2024-02-29 10:0:00", "x_Nov 22, 2026"}) {
    EXPECT_EQ(fireDateOf(story.root.calendar(), odd), Date{}) << odd;
  }
}

TEST(Reminders, sayWhatIsToBePaid) {
  ReminderStory story;
  const Date due = story.on("2024-03-02");
  const auto said = [&](const std::string& eid) {
    EXPECT_TRUE(story.host->removeAllPending());
    EXPECT_TRUE(scheduleNotificationForDate(story.loaded(eid), due));
    const auto pending = story.requests();
    return pending.empty() ? "" : pending.back().title + "|" + pending.back().body;
  };
  Spend bare(story.root);
  bare.amount = 3;
  bare.datetime = due;
  bare.account = story.cash->pk;
  ASSERT_TRUE(bare.add());
  Spend noted = story.spend("Food", 12.5, due);
  ASSERT_TRUE(noted.updateNote("for the feast"));
  const auto moved = story.move(40, *story.cash, *story.bank, due);
  EXPECT_EQ(said(story.spend("Rent", 900, due).eid), "[Home] Rent|Rent - €900.00 on Mar 2, 2024");
  EXPECT_EQ(said(noted.eid), "[Home] Food|Food - for the feast €12.50 on Mar 2, 2024");
  EXPECT_EQ(said(bare.eid), "[Cash] Expense|Expense - €3.00 on Mar 2, 2024");
  EXPECT_EQ(said(moved.eidA), "[Cash] Transfer|Transfer - Cash > Bank €40.00 on Mar 2, 2024");

  const auto visa = story.card("Visa");
  ASSERT_TRUE(story.sql("update account set currency = 'USD' where oldTitle = ?", {visa.pk}));
  Spend plan = bare;
  plan.eid.clear();
  plan.isNewOne = true;
  plan.amount = 90;
  plan.account = visa.pk;
  plan.book = story.home->pk;
  plan.category = plan.subcategory = story.category("Desk").pk;
  ASSERT_TRUE(plan.saveInstallment(3));
  const auto group = TransactionGroup::of(story.root, plan.connectionUUID);
  EXPECT_EQ(said(group->items.back().eid), "[Home] Desk|Desk - $30.00 on Mar 2, 2024")
      << "in the currency of who pays";
  ASSERT_TRUE(story.sql("update transactions set category = '' where bid = 10"));
  EXPECT_EQ(said(group->payments.back().eid), "[Home] Desk|Desk - $30.00 on Mar 2, 2024");

  EXPECT_TRUE(story.host->removeAllPending());
  ASSERT_EQ(addRepayNotificationForDate(visa, story.on("2024-03-20")), 3);
  std::string bodies;
  for (const auto& one : story.requests()) bodies += one.title + "|" + one.body + "\n";
  EXPECT_EQ(bodies,
            "Due Date|[Visa] Mar 20, 2024：5 days left.\n"
            "Due Date|[Visa] Mar 20, 2024：3 days left.\n"
            "Due Date|[Visa] Mar 20, 2024：The repayment must be made today.\n");
}

TEST(Reminders, ofRepaymentsGoByTheAccountsWish) {
  ReminderStory story;
  auto visa = story.card("Visa");
  const Date march = story.on("2024-03-20");
  ASSERT_EQ(addRepayNotificationForDate(visa, march), 3);
  ASSERT_EQ(addRepayNotificationForDate(visa, story.on("2024-04-20")), 3);
  EXPECT_EQ(addRepayNotificationForDate(visa, march), 0);
  ASSERT_TRUE(story.host->removeAllPending());
  EXPECT_EQ(addRepayNotificationForDate(visa, march), 0);
  EXPECT_EQ(story.host->pending()->size(), 3U) << "what the host lost is scheduled again";
  ASSERT_TRUE(bringRemindersUpToDate(story.root)) << "due dates are left alone";
  EXPECT_EQ(deleteRepayNotificationForDate(visa, march), 3);
  EXPECT_EQ(keepRepayNotifications(visa, {march}), 3) << "those of another date";
  ASSERT_EQ(addRepayNotificationForDate(visa, march), 3);
  ASSERT_TRUE(visa.updateRepayNotificationEnabled(false));
  EXPECT_EQ(addRepayNotificationForDate(visa, story.on("2024-05-20")), 0);
  EXPECT_EQ(bringRemindersUpToDate(story.root)->cancelled, 3);
  EXPECT_EQ(story.pending(), "");
}

TEST(Reminders, aHostThatRefusesCostsNothingElse) {
  ReminderStory story;
  const auto food = story.bill("Food", 12.5, "2024-03-20");
  story.bill("Rent", 900, "2024-03-20");
  story.host->refuses = food.eid + "_2024-03-17";
  const auto kept = bringRemindersUpToDate(story.root);
  ASSERT_FALSE(kept);
  EXPECT_EQ(kept.error().why, "no room");
  EXPECT_EQ(reminderRecords(story.root)->size(), 5U) << "the others are scheduled";
  EXPECT_TRUE(story.isSound());
  story.host->refuses.clear();
  EXPECT_EQ(bringRemindersUpToDate(story.root)->scheduled, 1) << "it is tried again";

  story.host->isPermitted = false;
  const auto bill = story.loaded(story.spend("Flat", 5, story.on("2024-03-20")).eid);
  EXPECT_EQ(scheduleNotificationForDate(bill, bill.datetime).error().why, "reminders are not allowed");
  EXPECT_EQ(reminderRecordsOf(story.root, bill.eid)->size(), 0U);
}

TEST(Reminders, aTransactionThatIsUndoneLeavesNothingForLong) {
  ReminderStory story;
  const auto bill = story.bill("Food", 12.5, "2024-03-20");
  const auto undone = atomically(story.root, [&](Connection&) -> Result<> {
    EXPECT_TRUE(scheduleNotificationForDate(story.loaded(bill.eid), story.on("2024-03-19")));
    return refuse("no");
  });
  ASSERT_FALSE(undone);
  EXPECT_FALSE(story.isSound());
  EXPECT_EQ(bringRemindersUpToDate(story.root)->scheduled, 3);
  EXPECT_EQ(story.pending(), "Food 03-15 10:00, Food 03-17 10:00, Food 03-20 10:00");
  EXPECT_TRUE(story.isSound());
}

TEST(Reminders, manyAreScheduledAtOnceAndThenLeftAlone) {
  ReminderStory story;
  std::string last;
  ASSERT_TRUE(atomically(story.root, [&](Connection&) -> Result<> {
    for (int i = 0; i < 1000; ++i) last = story.bill("Food", i + 1, "2024-03-20").eid;
    return {};
  }));
  const auto commits = story.connection().commits();
  EXPECT_EQ(bringRemindersUpToDate(story.root)->scheduled, 3000);
  EXPECT_EQ(story.connection().commits(), commits + 1);
  EXPECT_EQ(story.host->batches, 1);
  const auto written = story.connection().totalChanges();
  const auto again = bringRemindersUpToDate(story.root);
  EXPECT_EQ(again->scheduled + again->cancelled, 0);
  EXPECT_EQ(story.connection().totalChanges(), written) << "what is as it should be is not written";
  EXPECT_EQ(story.host->added, 3000);
  EXPECT_TRUE(setNotificationEnabled(story.loaded(last), true));
  EXPECT_EQ(story.connection().totalChanges(), written) << "nor is a wish that is there";
  ASSERT_TRUE(story.sql("update transactions set needNotify = 0"));
  EXPECT_EQ(bringRemindersUpToDate(story.root)->cancelled, 3000);
  EXPECT_EQ(story.host->batches, 2);
}

TEST(Reminders, recordsOfThePastAreForgotten) {
  ReminderStory story;
  story.bill("Food", 12.5, "2024-03-20");
  ASSERT_TRUE(bringRemindersUpToDate(story.root));
  ASSERT_TRUE(
      story.sql("update category set parent = parent || 'x' where rowid = (select max(rowid) from"
                " category)"));
  story.setClock("2024-04-25");
  ASSERT_TRUE(bringRemindersUpToDate(story.root));
  EXPECT_EQ(reminderRecords(story.root)->size(), 1U) << "one is too old, one tells no time";
  story.setClock("2024-05-25");
  ASSERT_TRUE(bringRemindersUpToDate(story.root));
  EXPECT_EQ(story.number("select count(*) from category where type = 98"), 0);
}

}  // namespace
}  // namespace moniva
