#pragma once

#include <fmt/ranges.h>

#include "calendar/date_texts.h"
#include "model/record_entry.h"
#include "recurrence/do_db_recurring.h"
#include "recurrence/spend_repeat.h"
#include "support/household.h"

namespace moniva {

/// A household with series, which say when they are due on the device's clock.
class SeriesStory : public Household {
 public:
  explicit SeriesStory(const std::string& zone = "Europe/Berlin") : Household(zone) {
    flat = category("Flat").pk;
  }

  Spend rent(std::string_view rule, const std::string& begins, double amount = 10) {
    Spend spend(root);
    spend.amount = amount;
    spend.datetime = on(begins);
    spend.book = home->pk;
    spend.account = cash->pk;
    spend.category = spend.subcategory = flat;
    spend.note = "Rent";
    spend.repeat = rule;
    return spend;
  }
  /// The seed alone, of a series without any occurrence.
  std::string seed(Spend spend) {
    EXPECT_TRUE(spend.addRepeatSeed());
    return spend.repeatSeedID;
  }
  std::string recorded(Spend spend) {
    const auto seed = recordRepeating(root, spend);
    EXPECT_TRUE(seed) << seed.error().why;
    return seed.value_or("");
  }
  MVTransaction loaded(const std::string& eid) { return *MVTransaction::transactionFromEID(root, eid); }
  CatchUp catchUp(const std::string& now) {
    setClock(now);
    const auto all = updateRecurringTransactionsWithFuture(root);
    EXPECT_TRUE(all);
    for (const auto& trouble : all->troubles) ADD_FAILURE() << trouble.english();
    return *all;
  }
  /// The days of what the series made, in this device's zone.
  std::string days(const std::string& seed, std::string_view which = "deleted = 0") {
    std::vector<int> days;
    Run run = connection().query(
        fmt::format(
            "select datetime from transactions where repeat_seed = ? and type != 23 and {} order by 1",
            which),
        {seed});
    while (run.next()) days.push_back(integerDateOfTimeZone(*platform.calendar, run.date(0)));
    return fmt::format("{}", fmt::join(days, " "));
  }
  std::string stateOf(const std::string& seed) {
    return rows("select deleted || ' ' || ipid from transactions where eid = ?", {seed});
  }
  /// Books and accounts whose kept balance is not what their records come to, and categories used otherwise
  /// than counted. What a person deleted counts as a use until uses are counted afresh.
  std::string unsound() {
    std::string found;
    for (auto* row : {&*home, &*cash, &*bank}) {
      EXPECT_TRUE(row->getInfo());
      if (std::abs(getTheTotalBalance(*row) - row->totalBalance) > 1e-6) found += row->title + " ";
    }
    return found + rows(
                       "select title from category c where usedTimes != (select count(*) from transactions"
                       " where subcategory = c.oldTitle and deleted < 2 and type in (11, 12)) and type = 12");
  }

  std::string flat;
};

}  // namespace moniva
