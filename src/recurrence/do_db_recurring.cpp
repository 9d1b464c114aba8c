#include "recurrence/do_db_recurring.h"

#include <fmt/ranges.h>

#include <algorithm>

#include "base/text.h"
#include "model/entry_checks.h"
#include "model/moniva_account.h"
#include "model/mv_category.h"
#include "model/vendor.h"
#include "platform/local_notifications.h"
#include "recurrence/series_days.h"
#include "recurrence/series_seed.h"
#include "recurrence/spend_repeat.h"

namespace moniva {
namespace {

/// What a person knows the series by: its note, else its vendor, category or accounts, else amount and rule.
std::string nameOfSeries(const MVTransaction& seed) {
  std::string accounts;
  for (const auto* account : {&seed.paymentAccount, &seed.paymentAccountB}) {
    if (*account) accounts += (accounts.empty() ? "" : " > ") + (*account)->title;
  }
  const bool hasVendor = seed.vendor && !seed.vendor->isNoVendor();
  const std::string texts[] = {seed.note, hasVendor ? seed.vendorString : "",
                               seed.mvCategory ? seed.categoryString : "", accounts};
  for (const auto& text : texts) {
    if (!trimBlanks(text).empty()) return excerpt(trimBlanks(text));
  }
  return fmt::format("{} {}, {}", seed.amount, seed.currency, seed.root().platform().localized(seed.repeat));
}

Result<std::vector<std::string>> seedsIn(MVAppRoot& root, std::string_view sql,
                                         std::initializer_list<Value> arguments) {
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  std::vector<std::string> eids;
  Run run = db->query(sql, arguments);
  while (run.next()) eids.emplace_back(run.text(0));
  if (!run.ok()) return tl::make_unexpected(db->refusal());
  return eids;
}

/// The live series that have a day up to that of `to`, each by its own zone.
Result<std::vector<std::string>> seedsDue(MVAppRoot& root, Date to) {
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  const Calendar& calendar = root.calendar();
  const std::int64_t today = calendar.dayNumber(to);
  const Date latest = calendar.dateWithDay(to, 2);
  std::vector<std::string> eids;
  OwnDays days(calendar);
  Run run = db->query(
      "SELECT eid, syear, datetime, barcode FROM transactions where deleted = 0 and (datetime < ? or datetime"
      " = ?) and type = ? and (syear != ? or syear is NULL)",
      {latest, latest, kind::kRepeatSeed, advanced::kInstallment});
  while (run.next()) {
    const Date next = run.date(2);
    if (next <= to || days.of(next, run.text(3), 0) <= today) eids.emplace_back(run.text(0));
  }
  if (!run.ok()) return tl::make_unexpected(db->refusal());
  return eids;
}

/// Brings one series up to date and adds to what all came to.
void bringAlong(MVAppRoot& root, const MVTransaction& seed, bool sinceItBegan, Date to, CatchUp& all) {
  const auto progress = [&]() -> Result<SeriesProgress> {
    if (!sinceItBegan) return createRepeatItemsFrom(seed, seed.datetime, to);
    const auto stored = SeriesSeed::of(root, seed.eid);
    if (!stored) return tl::make_unexpected(stored.error());
    const auto begun = beginOfSeries(root, *stored);
    if (!begun) return tl::make_unexpected(begun.error());
    return createRepeatItemsFrom(seed, *begun, to);
  }();
  if (!progress) {
    all.troubles.push_back(
        phrase("The series '{}' was not brought up to date: {}", nameOfSeries(seed), progress.error()));
    return;
  }
  if (progress->more) {
    all.troubles.push_back(
        phrase("The series '{}' has more due than {} records; the rest comes tomorrow, or now with: "
               "moniva repeat refill --all",
               nameOfSeries(seed), kMostOccurrencesAtOnce));
  }
  all.made += progress->made;
  all.series += progress->made > 0 ? 1 : 0;
  all.ended += progress->ended ? 1 : 0;
}

Result<CatchUp> bringAllAlong(MVAppRoot& root, const Result<std::vector<std::string>>& seeds,
                              bool sinceItBegan, Date to) {
  if (!seeds) return tl::make_unexpected(seeds.error());
  CatchUp all;
  RecordNames names(root);
  NotificationChanges reminders(*root.platform().localNotifications);
  for (const auto& eid : *seeds) {
    const auto seed = MVTransaction::transactionFromEID(root, eid, &names);
    if (seed) bringAlong(root, *seed, sinceItBegan, to, all);
  }
  // What a host would not keep is scheduled again, and told of, by the upkeep of reminders.
  (void)reminders.end();
  if (all.made > 0 || all.ended > 0) root.markRecentEditDate();
  return all;
}

/// Sums by currency.
void addUp(std::vector<std::pair<std::string, double>>& sums, const std::string& currency, double amount) {
  auto sum = std::ranges::find(sums, currency, &std::pair<std::string, double>::first);
  if (sum == sums.end()) sum = sums.insert(sum, {currency, 0});
  sum->second = withoutNoise(sum->second + amount);
}

std::string textOfSums(const std::vector<std::pair<std::string, double>>& sums) {
  std::vector<double> amounts;
  for (const auto& [currency, amount] : sums) amounts.push_back(amount);
  return fmt::format("{}", fmt::join(amounts, " / "));
}

}  // namespace

Result<CatchUp> updateRecurringTransactionsWithFuture(MVAppRoot& root) {
  const Date to = root.calendar().dateEnd(root.now());
  return bringAllAlong(root, seedsDue(root, to), false, to);
}

Result<CatchUp> updateRecurringTransactionsForAll(MVAppRoot& root) {
  const Date to = root.calendar().dateEnd(root.now());
  // A series that waits for its next date may have gaps as well.
  constexpr Date kEver{1e15};
  return bringAllAlong(root,
                       seedsIn(root,
                               "SELECT eid, syear, payDate FROM transactions where deleted = 0 and datetime"
                               " < ? and type = ? and (syear != ? or syear is NULL)",
                               {kEver, kind::kRepeatSeed, advanced::kInstallment}),
                       true, to);
}

Result<std::int64_t> recurringEntriesCount(MVAppRoot& root) {
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  Run run = db->query("select count(eid) as eid_count from transactions where deleted = 0 and type = ?",
                      {kind::kRepeatSeed});
  if (!run.next()) return tl::make_unexpected(db->refusal());
  return run.integer(0);
}

Result<SeriesOfRule> recurringTransactionsFor(MVAppRoot& root, std::string_view rule) {
  if (auto known = checkRepeatRule(rule); !known) return tl::make_unexpected(known.error());
  SeriesOfRule series;
  series.repeatType = rule;
  const Value arguments[] = {rule, kind::kRepeatSeed};
  auto read = MVTransaction::transactionsWhere(
      root, "deleted = 0 and repeat = ? and type = ? order by datetime", arguments, [&](MVTransaction seed) {
        if (seed.advancedType == kind::kIncome) addUp(series.incomeSums, seed.currency, seed.amount);
        if (seed.advancedType == kind::kExpense) addUp(series.expenseSums, seed.currency, seed.amount);
        series.array.push_back(std::move(seed));
      });
  if (!read) return tl::make_unexpected(read.error());
  series.expenseSumString = textOfSums(series.expenseSums);
  series.incomeSumString = textOfSums(series.incomeSums);
  return series;
}

}  // namespace moniva
