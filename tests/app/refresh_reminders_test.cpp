#include "app/refresh_reminders.h"

#include <gtest/gtest.h>

#include "app/main_app_delegate.h"
#include "model/record_entry.h"
#include "recurrence/do_db_recurring.h"
#include "recurrence/series_edit.h"
#include "recurrence/settle_due.h"
#include "recurrence/spend_repeat.h"
#include "support/reminder_story.h"

namespace moniva {
namespace {

/// A bill, a pending transfer, a series and a card with a bill, all to be reminded of.
struct Reminded : ReminderStory {
  Reminded() : food(bill("Food", 12.5, "2024-03-20")), visa(card("Visa")) {
    const auto moved = move(40, *cash, *bank, on("2024-03-21"));
    for (const auto* eid : {&moved.eidA, &moved.eidB}) {
      EXPECT_TRUE(sql("update transactions set paid = 0, needNotify = 1 where eid = ?", {*eid}));
    }
    transfer = moved.eidA;
    Spend rent(root);
    rent.amount = 900;
    rent.book = home->pk;
    rent.account = bank->pk;
    rent.category = rent.subcategory = category("Rent").pk;
    rent.datetime = on("2024-02-22");
    rent.repeat = "Monthly";
    seed = recordRepeating(root, rent).value();
    EXPECT_TRUE(setNotificationEnabled(loaded(seed), true));
    charge.amount = 30;
    charge.account = visa.pk;
    charge.datetime = on("2024-02-10");
    EXPECT_TRUE(charge.add());
    EXPECT_TRUE(visa.updateDueDay(23));
    EXPECT_TRUE(refreshReminders(root));
  }
  /// The days on which one is to be reminded last of what is there.
  std::string lastDays() {
    EXPECT_TRUE(isSound());
    std::map<std::string, std::string, std::less<>> last;
    for (const auto& one : requests()) {
      const std::string owner = one.identifier.substr(0, one.identifier.find('_'));
      last[owner] = fmt::format("{} {:02}-{:02}", one.title.substr(one.title.find(' ') + 1),
                                one.trigger.month, one.trigger.day);
    }
    std::set<std::string> days;
    for (const auto& [owner, day] : last) days.insert(day);
    return fmt::format("{}", fmt::join(days, ", "));
  }

  Spend food;
  MonivaAccount visa;
  Spend charge{root};
  std::string transfer;
  std::string seed;
};

TEST(RefreshReminders, followWhateverBecomesOfTheirOwners) {
  const struct {
    const char* why;
    void (*change)(Reminded&);
    const char* expected;
  } rows[] = {
      {"nothing", [](Reminded&) {}, "Date 03-23, Food 03-20, Rent 03-22, Transfer 03-21"},
      {"deleted", [](Reminded& on) { EXPECT_TRUE(on.loaded(on.food.eid).delete_()); },
       "Date 03-23, Rent 03-22, Transfer 03-21"},
      {"deleted and restored",
       [](Reminded& on) {
         EXPECT_TRUE(on.loaded(on.food.eid).delete_() && refreshReminders(on.root));
         EXPECT_TRUE(on.loaded(on.food.eid).restore());
       },
       "Date 03-23, Food 03-20, Rent 03-22, Transfer 03-21"},
      {"settled as its day comes",
       [](Reminded& on) {
         on.setClock("2024-03-20 09:00:00");
         EXPECT_TRUE(makeMonivasPaid(on.root));
       },
       "Date 03-23, Rent 03-22, Transfer 03-21"},
      {"another day", [](Reminded& on) { EXPECT_TRUE(on.food.updateDate(on.on("2024-03-28"))); },
       "Date 03-23, Food 03-28, Rent 03-22, Transfer 03-21"},
      {"not wanted any more",
       [](Reminded& on) { EXPECT_TRUE(setNotificationEnabled(on.loaded(on.transfer), false)); },
       "Date 03-23, Food 03-20, Rent 03-22, Transfer 03-21"},
      {"another category",
       [](Reminded& on) {
         const auto pub = on.category("Pub").pk;
         EXPECT_TRUE(on.food.updateCategory(pub, pub));
       },
       "Date 03-23, Pub 03-20, Rent 03-22, Transfer 03-21"},
      {"the book cleared", [](Reminded& on) { EXPECT_TRUE(on.home->clear()); }, "Date 03-23, Transfer 03-21"},
      {"the series stopped", [](Reminded& on) { EXPECT_TRUE(stopRepeat(on.loaded(on.seed))); },
       "Date 03-23, Food 03-20, Transfer 03-21"},
      {"the series deleted", [](Reminded& on) { EXPECT_TRUE(deleteSeries(on.root, on.seed)); },
       "Date 03-23, Food 03-20, Transfer 03-21"},
      {"the series' next day moved",
       [](Reminded& on) {
         SeriesChange change;
         change.date = on.on("2024-03-25");
         EXPECT_TRUE(editSeries(on.root, on.seed, Reach::following, change));
       },
       "Date 03-23, Food 03-20, Rent 03-25, Transfer 03-21"},
      {"the series a month on",
       [](Reminded& on) {
         on.setClock("2024-03-22 12:00:00");
         EXPECT_TRUE(updateRecurringTransactionsWithFuture(on.root));
         EXPECT_TRUE(makeMonivasPaid(on.root));
       },
       "Date 03-23, Rent 04-22"},
      {"the series' account closed", [](Reminded& on) { EXPECT_TRUE(on.bank->close(true)); },
       "Date 03-23, Food 03-20, Transfer 03-21"},
      {"the card paid back", [](Reminded& on) { on.move(30, *on.cash, on.visa, on.on("2024-02-29")); },
       "Food 03-20, Rent 03-22, Transfer 03-21"},
      {"the bill not paid a day after", [](Reminded& on) { on.setClock("2024-03-24"); },
       "Date 03-23, Food 03-20, Rent 03-22, Transfer 03-21"},
      {"what was charged paid from elsewhere",
       [](Reminded& on) { EXPECT_TRUE(on.charge.updateAccount(on.cash->pk)); },
       "Food 03-20, Rent 03-22, Transfer 03-21"},
      {"divided into instalments", [](Reminded& on) { EXPECT_TRUE(on.food.saveInstallment(2)); },
       "Date 03-23, Food 03-20, Food 04-20, Rent 03-22, Transfer 03-21"},
      {"divided and joined again",
       [](Reminded& on) { EXPECT_TRUE(on.food.saveInstallment(2) && on.food.cancelInstallment()); },
       "Date 03-23, Food 03-20, Rent 03-22, Transfer 03-21"},
      {"the card's due day moved", [](Reminded& on) { EXPECT_TRUE(on.visa.updateDueDay(25)); },
       "Date 03-25, Food 03-20, Rent 03-22, Transfer 03-21"},
      {"the card closed", [](Reminded& on) { EXPECT_TRUE(on.visa.close(true)); },
       "Food 03-20, Rent 03-22, Transfer 03-21"},
      {"the card deleted", [](Reminded& on) { EXPECT_TRUE(on.visa.delete_()); },
       "Food 03-20, Rent 03-22, Transfer 03-21"},
      {"the card's reminders off",
       [](Reminded& on) { EXPECT_TRUE(on.visa.updateRepayNotificationEnabled(false)); },
       "Food 03-20, Rent 03-22, Transfer 03-21"},
      {"another zone",
       [](Reminded& on) { on.platform.calendar = Calendar::make("America/New_York", "en_US").value(); },
       "Date 03-23, Food 03-19, Rent 03-22, Transfer 03-20"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.why);
    Reminded story;
    const auto basis = billBasis(story.root, story.root.editStamp());
    row.change(story);
    ASSERT_TRUE(refreshReminders(story.root, &*basis));
    EXPECT_EQ(story.lastDays(), row.expected);
    const auto written = story.connection().totalChanges();
    ASSERT_TRUE(refreshReminders(story.root));
    EXPECT_EQ(story.connection().totalChanges(), written) << "once is enough";
  }
}

TEST(RefreshReminders, areShownBeforeWhatIsDueIsSettled) {
  struct Front final : AppHost {
    explicit Front(ReminderStory& on) : story(on) {}
    void deliverReminders() override { waiting = story.pending(); }
    ReminderStory& story;
    std::string waiting;
  };
  Reminded story;
  story.setClock("2024-03-22 12:30:00");
  Front front(story);
  MainAppDelegate app(story.root, front);
  ASSERT_TRUE(app.run(dailySteps()));
  app.settle();
  EXPECT_NE(front.waiting.find("Food 03-20 10:00, "), std::string::npos) << front.waiting;
  EXPECT_NE(front.waiting.find("Rent 03-22 10:00, "), std::string::npos) << front.waiting;
  EXPECT_TRUE(story.loaded(story.food.eid).paid);
  EXPECT_EQ(story.lastDays(), "Date 03-23, Rent 04-22") << "the series is reminded of with its next record";
}

}  // namespace
}  // namespace moniva
