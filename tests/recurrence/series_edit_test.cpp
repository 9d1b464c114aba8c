#include "recurrence/series_edit.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include "recurrence/series_story.h"
#include "recurrence/series_view.h"

namespace moniva {
namespace {

/// Four monthly rents on the fifth, the next on 5 March 2024.
class EditedSeries : public SeriesStory {
 public:
  EditedSeries() : seed_(recorded(rent("Monthly", "2023-11-05"))) {}

  const std::string& seed() const { return seed_; }
  /// The record of that day; the seed for a blank one.
  std::string of(const std::string& day, const std::string& series = "") {
    const auto& from = series.empty() ? seed_ : series;
    if (day.empty()) return from;
    const auto made = occurrencesOf(root, from);
    for (const auto& one : *made) {
      if (platform.calendar->isSameDay(one.datetime, on(day))) return one.eid;
    }
    ADD_FAILURE() << "no record on " << day;
    return {};
  }
  /// All columns of the rows before the day, as they are.
  std::string before(Date day) {
    std::vector<std::string> columns;
    Run names = connection().query("select name from pragma_table_info('transactions')");
    while (names.next()) columns.push_back(fmt::format("quote(\"{}\")", names.text(0)));
    return rows(fmt::format("select {} from transactions where datetime < ? and type != 85 order by eid",
                            fmt::join(columns, " || ")),
                {day});
  }
  std::string amounts(const std::string& series) {
    return rows(
        "select group_concat(cast(amount as integer), ' ') from (select amount from transactions where"
        " repeat_seed = ? and deleted = 0 order by datetime)",
        {series});
  }

 private:
  std::string seed_;
};

struct EditCase {
  const char* why;
  std::string record;  ///< by its day; blank for the series
  Reach reach;
  std::function<void(EditedSeries&, SeriesChange&)> say;
  std::string days;     ///< of the former series, or of the only one
  std::string after;    ///< of the one that goes on apart; blank for none
  std::string amounts;  ///< of both
  std::string next;     ///< the day for which the series waits, its rule and amount
};

void amount(EditedSeries&, SeriesChange& change) {
  change.amount = 12;
}
std::function<void(EditedSeries&, SeriesChange&)> on(const char* rule, const char* day) {
  return [rule, day](EditedSeries& store, SeriesChange& change) {
    if (*rule != 0) change.rule = rule;
    if (*day != 0) change.date = store.on(day);
  };
}

TEST(SeriesEdit, reachesAsFarAsIsSaid) {
  const std::string all = "20231105 20231205 20240105 20240205";
  const EditCase cases[] = {
      {"one record's amount", "2023-12-05", Reach::one, amount, all, "", "10 12 10 10",
       "20240305 Monthly 10"},
      {"one record's day", "2023-12-05", Reach::one, on("", "2023-12-07"),
       "20231105 20231207 20240105 20240205", "", "10 10 10 10", "20240305 Monthly 10"},
      {"from one on", "2024-01-05", Reach::following, amount, all, "", "10 10 12 12", "20240305 Monthly 12"},
      {"from the next on", "", Reach::following, amount, all, "", "10 10 10 10", "20240305 Monthly 12"},
      {"all", "2024-01-05", Reach::all, amount, all, "", "12 12 12 12", "20240305 Monthly 12"},
      {"another rule from the next on", "", Reach::following, on("Weekly", ""), all, "", "10 10 10 10 ",
       "20240305 Weekly 10"},
      {"another rule from one on: its records keep their days", "2024-01-05", Reach::following,
       on("Quarterly", ""), "20231105 20231205", "20240105 20240205", "10 10 10 10", "20240405 Quarterly 10"},
      {"days between its records are not made up", "2024-01-05", Reach::following, on("Biweekly", ""),
       "20231105 20231205", "20240105 20240205 20240216", "10 10 10 10 10", "20240301 Biweekly 10"},
      {"one that came due by it", "2024-02-05", Reach::following, on("Weekly", ""),
       "20231105 20231205 20240105", "20240205 20240212 20240219 20240226", "10 10 10 10 10 10 10",
       "20240304 Weekly 10"},
      {"another day: the records move along", "2024-01-05", Reach::following, on("", "2024-01-09"),
       "20231105 20231205", "20240109 20240209", "10 10 10 10", "20240309 Monthly 10"},
      {"to the end of the month, which comes due", "2024-01-05", Reach::following, on("", "2023-12-31"),
       "20231105 20231205", "20231231 20240131 20240229", "10 10 10 10 10", "20240331 Monthly 10"},
      {"another rule and day", "2024-02-05", Reach::following, on("Yearly", "2024-02-01"),
       "20231105 20231205 20240105", "20240201", "10 10 10 10", "20250201 Yearly 10"},
      {"the whole series when nothing is before", "2023-11-05", Reach::all, on("", "2023-11-07"), "",
       "20231107 20231207 20240107 20240207", " 10 10 10 10", "20240307 Monthly 10"},
      {"the rule it has", "2024-01-05", Reach::following, on("Monthly", ""), all, "", "10 10 10 10",
       "20240305 Monthly 10"},
  };
  for (const auto& [why, record, reach, say, days, after, amounts, next] : cases) {
    SCOPED_TRACE(why);
    EditedSeries store;
    SeriesChange change;
    say(store, change);
    const auto done = editSeries(store.root, store.of(record), reach, change);
    ASSERT_TRUE(done) << done.error().why;
    // However the series is filled, no day comes besides.
    ASSERT_TRUE(updateRecurringTransactionsForAll(store.root));
    EXPECT_EQ(store.days(store.seed()), days);
    const bool isApart = done->seed != store.seed();
    EXPECT_EQ(isApart ? store.days(done->seed) : "", after);
    EXPECT_EQ(store.amounts(store.seed()) + (isApart ? " " + store.amounts(done->seed) : ""), amounts);
    const auto seed = store.loaded(done->seed);
    EXPECT_EQ(fmt::format("{} {} {}", integerDateOfTimeZone(*store.platform.calendar, seed.datetime),
                          seed.repeat, seed.amount),
              next);
    EXPECT_EQ(store.unsound(), "");
    EXPECT_EQ(store.stateOf(store.seed()), isApart ? "1 stopRepeat by division" : "0 ");
  }
}

TEST(SeriesEdit, isRefusedWhole) {
  const std::tuple<const char*, std::string, Reach, std::function<void(EditedSeries&, SeriesChange&)>>
      cases[] = {
          {"no amount", "", Reach::all, [](auto&, SeriesChange& change) { change.amount = 0; }},
          {"no rule", "", Reach::following, on("Fortnightly", "")},
          {"a rule for one", "2024-01-05", Reach::one, on("Weekly", "")},
          {"the series as one record", "", Reach::one, amount},
          {"another day for what is past", "", Reach::all, on("", "2024-03-07")},
          {"a day before the record before", "2024-01-05", Reach::following, on("", "2023-12-05")},
          {"a day beyond the next record", "2024-01-05", Reach::following, on("Weekly", "2024-02-06")},
          {"onto another record's day", "2024-01-05", Reach::following, on("Weekly", "2024-02-05")},
          {"an end before the beginning", "", Reach::all,
           [](auto& in, SeriesChange& change) { change.end = in.on("2023-11-04"); }},
          {"an account that is gone", "2024-01-05", Reach::following,
           [](auto&, SeriesChange& change) { change.account = "gone"; }},
          {"an account that is gone, for records to come", "", Reach::following,
           [](auto&, SeriesChange& change) { change.account = "gone"; }},
          {"income's category", "", Reach::following,
           [](auto& in, SeriesChange& change) {
             const auto key = in.category("Salary", kind::kIncome).pk;
             change.category = {key, key};
           }},
          {"what only a transfer has", "", Reach::all,
           [](auto& in, SeriesChange& change) { change.to = in.bank->pk; }},
          {"the first that can be changed, a later one that cannot", "2023-12-05", Reach::following,
           [](auto& in, SeriesChange& change) {
             auto paid = *Spend::spendFromEID(in.root, in.of("2024-02-05"));
             EXPECT_TRUE(paid.saveInstallment(2));
             change.amount = 3;
           }},
      };
  for (const auto& [why, record, reach, say] : cases) {
    SCOPED_TRACE(why);
    EditedSeries store;
    SeriesChange change;
    say(store, change);
    const auto as = [&] { return store.before(Date{1e15}) + store.stateOf(store.seed()); };
    const auto before = as();
    EXPECT_FALSE(editSeries(store.root, store.of(record), reach, change));
    EXPECT_EQ(as(), before);
    EXPECT_EQ(store.unsound(), "");
  }
}

TEST(SeriesEdit, leavesWhatAPersonSortedOutByHand) {
  EditedSeries store;
  const auto gone = store.of("2024-01-05");
  ASSERT_TRUE(Spend::spendFromEID(store.root, gone)->delete_());
  SeriesChange later;
  later.date = store.on("2024-02-11");
  ASSERT_TRUE(editSeries(store.root, store.of("2024-02-05"), Reach::one, later));
  // A copy that a repair removed must not come back on a day that the series has left.
  ASSERT_TRUE(
      store.sql("insert into transactions (eid, type, repeat_seed, datetime, deleted, ipid) values ('copy',"
                " 12, ?, ?, 3, 'delete by fixDuplicateRecurringItem 583')",
                {store.seed(), store.on("2023-12-05")}));
  SeriesChange change;
  change.date = store.on("2023-12-08");
  change.note = "Flat";
  const auto done = editSeries(store.root, store.of("2023-12-05"), Reach::following, change);
  ASSERT_TRUE(done) << done.error().why;
  EXPECT_EQ(store.days(done->seed), "20231208 20240211");
  EXPECT_EQ(store.days(done->seed, "deleted = 1"), "20240108");
  EXPECT_EQ(store.rows("select distinct note || deleted from transactions where repeat_seed = ? order by 1",
                       {done->seed}),
            "Flat0\nRent1");
  EXPECT_EQ(store.rows("select deleted || ipid from transactions where eid = 'copy'"),
            "3removed before its series changed its days");
  // Nothing comes back, however it is looked for.
  ASSERT_TRUE(updateRecurringTransactionsForAll(store.root));
  EXPECT_EQ(store.days(done->seed), "20231208 20240211");
  EXPECT_EQ(store.days(done->seed, "deleted = 1"), "20240108");
}

TEST(SeriesEdit, keepsTheDayThatShortMonthsLack) {
  SeriesStory store;
  const auto seed = store.recorded(store.rent("Monthly", "2023-12-31"));
  SeriesChange change;
  change.rule = "Bimonthly";
  const auto done =
      editSeries(store.root, occurrencesOf(store.root, seed)->back().eid, Reach::following, change);
  ASSERT_TRUE(done) << done.error().why;
  EXPECT_EQ(done->next, store.on("2024-04-30"));
}

TEST(SeriesEdit, movesAllOfASeriesBack) {
  SeriesStory store;
  const auto seed = store.recorded(store.rent("Weekly", "2024-02-01"));
  SeriesChange change;
  change.date = store.on("2024-01-25");
  const auto done = editSeries(store.root, occurrencesOf(store.root, seed)->front().eid, Reach::all, change);
  ASSERT_TRUE(done && done->whole) << done.error().why;
  EXPECT_EQ(store.days(done->seed), "20240125 20240201 20240208 20240215 20240222 20240229");
  change = {};
  change.end = store.on("2024-02-29");
  EXPECT_TRUE(editSeries(store.root, done->seed, Reach::all, change)) << "before what it waits for";
}

TEST(SeriesEdit, doesNotRunTheFormerHalfBesideTheOther) {
  EditedSeries store;
  SeriesChange change;
  change.rule = "Weekly";
  ASSERT_TRUE(editSeries(store.root, store.of("2024-02-05"), Reach::following, change));
  change = {};
  change.amount = 11;
  ASSERT_TRUE(editSeries(store.root, store.seed(), Reach::all, change));
  EXPECT_FALSE(resumeSeries(store.root, store.seed(), Date{}, false));
}

TEST(SeriesEdit, tellsWhatIsMoreThanIsMadeAtOnce) {
  SeriesStory store;
  const auto seed = store.recorded(store.rent("Daily", "2024-02-28"));
  SeriesChange change;
  change.date = store.on("1950-01-05");
  EXPECT_FALSE(editSeries(store.root, seed, Reach::following, change)) << "before its records";
  EXPECT_FALSE(editSeries(store.root, occurrencesOf(store.root, seed)->front().eid, Reach::all, change));
  EXPECT_EQ(store.days(seed), "20240228 20240229");
  ASSERT_TRUE(store.sql("update transactions set deleted = 1, datetime = ? where eid = ?",
                        {store.on("2010-01-01"), seed}));
  const auto done = resumeSeries(store.root, seed, Date{}, true);
  EXPECT_TRUE(done && done->more && done->made == kMostOccurrencesAtOnce);
}

TEST(SeriesEdit, endsAndGoesOn) {
  EditedSeries store;
  SeriesChange change;
  change.end = store.on("2024-03-05");
  auto done = editSeries(store.root, store.seed(), Reach::all, change);
  ASSERT_TRUE(done && !done->ended);
  change.end = store.on("2024-01-20");
  done = editSeries(store.root, store.of("2024-02-05"), Reach::following, change);
  ASSERT_TRUE(done && done->ended);
  EXPECT_EQ(done->beyondEnd, 1);
  EXPECT_EQ(store.stateOf(store.seed()), "1 stopRepeat by Date");
  EXPECT_FALSE(editSeries(store.root, store.seed(), Reach::all, change)) << "it is over";
  store.setClock("2024-05-20");
  EXPECT_FALSE(resumeSeries(store.root, store.seed(), std::nullopt, false)) << "its end has passed";
  done = resumeSeries(store.root, store.seed(), Date{}, false);
  ASSERT_TRUE(done) << done.error().why;
  EXPECT_EQ(done->next, store.on("2024-06-05"));
  EXPECT_EQ(store.days(store.seed()), "20231105 20231205 20240105 20240205");
  EXPECT_FALSE(resumeSeries(store.root, store.seed(), Date{}, false)) << "it goes on";
  ASSERT_TRUE(stopRepeat(store.loaded(store.seed())));
  ASSERT_TRUE(store.sql("update transactions set datetime = ? where eid = ?",
                        {store.on("2024-03-05"), store.seed()}));
  done = resumeSeries(store.root, store.of("2024-02-05"), std::nullopt, true);
  ASSERT_TRUE(done) << done.error().why;
  EXPECT_EQ(done->made, 3);
  EXPECT_EQ(store.days(store.seed()), "20231105 20231205 20240105 20240205 20240305 20240405 20240505");
  EXPECT_EQ(store.unsound(), "");
}

TEST(SeriesEdit, changesBothSidesOfTransfers) {
  SeriesStory store;
  const auto savings = store.account("Savings");
  auto dollars = store.account("Dollars");
  ASSERT_TRUE(dollars.updateCurrency("USD"));
  Transfer transfer(store.root);
  transfer.accountA = store.bank->pk;
  transfer.accountB = store.cash->pk;
  transfer.amountA = 11;
  transfer.amountB = 10;
  transfer.datetime = store.on("2024-02-10");
  transfer.repeat = "Weekly";
  const auto seed = recordRepeating(store.root, transfer);
  ASSERT_TRUE(seed) << seed.error().why;
  SeriesChange change;
  change.account = store.cash->pk;
  change.to = savings.pk;
  change.amount = 20;
  change.note = "aside";
  const auto second = occurrencesOf(store.root, *seed)->at(1).eid;
  const auto done = editSeries(store.root, second, Reach::following, change);
  ASSERT_TRUE(done) << done.error().why;
  EXPECT_EQ(
      store.rows("select cast(amount as integer) || note || (account = ?) from transactions where repeat_seed"
                 " = ? order by datetime, type desc",
                 {savings.pk, *seed}),
      "110\n100\n21aside0\n20aside1\n21aside0\n20aside1");
  EXPECT_EQ(store.unsound(), "");
  EXPECT_EQ(store.catchUp("2024-03-02").made, 1);
  EXPECT_EQ(
      store.rows("select cast(amount as integer) from transactions where repeat_seed = ? and datetime = ?"
                 " order by 1",
                 {*seed, store.on("2024-03-02")}),
      "20\n21");
  change = {};
  change.to = dollars.pk;
  EXPECT_FALSE(editSeries(store.root, *seed, Reach::following, change)) << "amounts are not converted";
  change.to = store.cash->pk;
  EXPECT_FALSE(editSeries(store.root, *seed, Reach::following, change)) << "one account on both sides";
}

// Whatever is changed from a record on, what lies before is the same to the last bit, each day has one record
// of the two series, and books are sound.
RC_GTEST_PROP(SeriesEdit, theFollowingLeavesThePastAlone, ()) {
  EditedSeries store;
  const auto rule = std::string(*rc::gen::elementOf(kRepeatRules));
  const Date begin = store.platform.calendar->dateWithDay(store.on("2024-02-29"), -*rc::gen::inRange(0, 100));
  auto spend = store.rent(rule, "2024-02-01");
  spend.datetime = begin;
  const auto seed = store.recorded(spend);
  const auto made = *occurrencesOf(store.root, seed);
  const auto at = static_cast<std::size_t>(*rc::gen::inRange(0, static_cast<int>(made.size())));
  for (const auto& one : made) {
    const int fate = *rc::gen::inRange(0, 10);
    if (one.eid == made[at].eid || fate > 1) continue;
    auto touched = *Spend::spendFromEID(store.root, one.eid);
    const auto done = fate == 0 ? touched.delete_() : touched.updateAmount(77);
    RC_ASSERT(done.has_value());
  }
  SeriesChange change;
  if (*rc::gen::arbitrary<bool>()) change.amount = 12;
  if (*rc::gen::arbitrary<bool>()) change.rule = std::string(*rc::gen::elementOf(kRepeatRules));
  if (*rc::gen::arbitrary<bool>())
    change.date = store.platform.calendar->dateWithDay(made[at].datetime, *rc::gen::inRange(-3, 4));
  if (*rc::gen::inRange(0, 4) == 0)
    change.end = store.platform.calendar->dateWithDay(begin, *rc::gen::inRange(0, 200));
  const Date own = store.platform.calendar->dateBegin(made[at].datetime);
  const Date day = change.date ? std::min(*change.date, own) : own;
  const auto past = store.before(day);
  const auto whole = store.before(Date{1e15});
  const auto done = editSeries(store.root, made[at].eid, Reach::following, change);
  RC_ASSERT(store.before(done ? day : Date{1e15}) == (done ? past : whole));
  RC_ASSERT(store.unsound() == "");
  if (!done) return;
  store.catchUp("2024-08-31");
  RC_ASSERT(store.rows(
                "select date(datetime, 'unixepoch', '+2 hours') from transactions where repeat_seed in (?, ?)"
                " and deleted < 2 group by 1 having count(*) > 1",
                {seed, done->seed}) == "");
  RC_ASSERT(store.unsound() == "");
}

}  // namespace
}  // namespace moniva
