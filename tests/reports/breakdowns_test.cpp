#include <gtest/gtest.h>

#include "reports/currency_report.h"
#include "reports/vendor_report.h"
#include "support/compound_story.h"

namespace moniva {
namespace {

using Summary = Result<TransReportSummary>;

/// "title: amount (count)" of each row, in their order; titles of periods and members alike.
std::string shown(const Summary& list) {
  if (!list) return list.error().why;
  std::string text;
  for (const auto& row : list->listArray) {
    text += fmt::format("{}{}: {} ({})", text.empty() ? "" : ", ", row.title,
                        row.expenseAmount + row.incomeAmount, row.count);
  }
  return text;
}

/// A household with a vendor and records of a spring.
class Breakdowns : public Compound {
 public:
  Spend at(const std::string& day, double amount, const std::string& column, const Value& value) {
    Spend made = expense(amount);
    made.datetime = on(day);
    EXPECT_TRUE(made.add());
    set(made, column, value);
    return made;
  }
  PeriodRange by(PeriodUnit unit) const { return {unit, on("2024-01-01"), on("2024-04-30")}; }
};

TEST(Walks, takeOneVendorPeriodByPeriod) {
  Breakdowns home;
  home.at("2024-01-31 23:59:59", 1, "vendor", home.vendor);
  home.at("2024-03-01", 2, "vendor", home.vendor);
  home.at("2024-03-02 12:00:00", 4, "type", 82);
  home.at("2024-03-05", 8, "paid", 0);
  for (const char* none : {"", "NoVendor", "NoPayee"}) home.at("2024-03-09", 16, "vendor", none);
  const auto lang = *Vendor::getVendor(home.root, home.vendor);
  const auto none = Vendor::noVendor(home.root, 12);
  const auto walked = [&](const Vendor& vendor, PeriodUnit unit, bool empty = false, bool pending = false) {
    auto range = home.by(unit);
    range.includeEmpty = empty;
    range.includePending = pending;
    return shown(reportForVendor(*home.home, vendor, 12, range));
  };
  EXPECT_EQ(walked(lang, PeriodUnit::month), "January, 2024: 1 (1), March, 2024: 2 (1)");
  EXPECT_EQ(walked(lang, PeriodUnit::year, false, true), "2024: 11 (3)") << "with what is pending";
  EXPECT_EQ(walked(lang, PeriodUnit::day), "Jan 31, 2024 Wednesday: 1 (1), Mar 1, 2024 Friday: 2 (1)");
  EXPECT_EQ(walked(none, PeriodUnit::week), "Mar, 03 -- Mar, 09: 48 (3)") << "all that stand for none";
  EXPECT_EQ(walked(lang, PeriodUnit::month, true),
            "January, 2024: 1 (1), February, 2024: 0 (0), March, 2024: 2 (1), April, 2024: 0 (0)");
  const std::atomic<bool> stop = true;
  auto stopped = home.by(PeriodUnit::day);
  stopped.stopLoadingData = &stop;
  EXPECT_EQ(shown(reportForVendor(*home.home, lang, 12, stopped)), "");

  std::string heard;
  getReportByYearForVendor(*home.home, lang, home.on("2023-12-31"), home.on("2024-12-31"),
                           [&](const Summary& list) {
                             heard = list->title + " " + shown(list);
                             EXPECT_EQ(list->vendor->title, "Lang");
                             EXPECT_EQ(list->maxAmount(), 3);
                           });
  home.db.drain();
  EXPECT_EQ(heard, "");
  home.platform.mainQueue.runPending();
  EXPECT_EQ(heard, "2023 -- 2024 2024: 3 (2)");
}

TEST(Walks, takeACurrencyInItsOwnUnits) {
  Breakdowns home;
  home.set(home.at("2024-01-31", 10, "currency2", "USD"), "amount2", 12);
  home.set(home.at("2024-03-31", 20, "currency2", "USD"), "amount2", 24);
  home.set(home.at("2024-03-31", 40, "currency2", "JPY"), "amount2", 6000);
  EXPECT_EQ(shown(reportForCurrency(*home.home, "USD", 12, home.by(PeriodUnit::month))),
            "January, 2024: 12 (1), March, 2024: 24 (1)");
  EXPECT_EQ(shown(reportForCurrency(*home.home, "USD", 11, home.by(PeriodUnit::year))), "");
}

}  // namespace
}  // namespace moniva
