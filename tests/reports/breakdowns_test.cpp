#include <gtest/gtest.h>

#include "reports/account_query.h"
#include "reports/breakdown_gap.h"
#include "reports/category_report.h"
#include "reports/category_report_query.h"
#include "reports/currency_report.h"
#include "reports/payment_report.h"
#include "reports/used_categories.h"
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

/// The titles of a list of rows, "Food Bakery".
template <class Row>
std::string titles(const Result<std::vector<Row>>& rows) {
  if (!rows) return rows.error().why;
  std::string text;
  for (const auto& row : *rows) text += (text.empty() ? "" : " ") + row.title;
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
  Summary byCategory(const MVCategory& above, int type = 12) {
    MVCategory asked = above;
    asked.type = type;
    return getSubCategoryReportFor(asked, *home, from, to);
  }
  Summary byVendor() { return getReportForAllVendor(*home, 12, from, to); }
  Summary byAccount(const MonivaAccount& of) { return getReportForPaymentAccount(of, 12, from, to); }
  std::string amountsOf(const Result<std::vector<std::string>>& eids) {
    std::string text;
    for (const auto& eid : eids.value())
      text += rows("select round(amount, 2) from transactions where eid = ?", {eid}) + " ";
    return text;
  }

  MVCategory root12 = MVCategory::rootCateForType(root, 12);
  Date from = on("2024-01-01");
  Date to = on("2024-04-30");
  PeriodRange by(PeriodUnit unit) const { return {unit, from, to}; }
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

TEST(Rows, countWhatIsSettledAboveZeroAndInThePeriod) {
  Breakdowns home;
  home.at("2024-01-01", 1, "type", 12);
  home.at("2024-04-30 23:59:59", 2, "type", 14);
  home.at("2024-02-01", 4, "amount", -3);
  home.at("2024-02-01", 8, "paid", 0);
  home.at("2024-02-01", 16, "deleted", 1);
  home.at("2024-02-01", 32, "book", "elsewhere");
  home.at("2024-05-01", 64, "type", 12);
  home.at("2023-12-31 23:59:59", 128, "type", 12);
  home.at("2024-02-01", 256, "category", "");
  home.at("2024-02-01", 512, "subcategory", "#NOMVCATEGORY");
  EXPECT_EQ(shown(home.byCategory(home.root12)), "Food: 515 (3)");
  EXPECT_EQ(shown(home.byCategory(home.root12, 11)), "");
  EXPECT_EQ(shown(home.byVendor()), "Lang: 769 (3)");
  EXPECT_EQ(shown(home.byAccount(*home.home)), "Cash: 769 (3)");
  EXPECT_EQ(shown(home.byAccount(*home.cash)), "Cash: 801 (4)") << "of an account: all its own";
  const auto food = *MVCategory::getCategory(home.root, home.food);
  const auto below = home.byCategory(food);
  EXPECT_EQ(shown(below), "Bakery: 3 (2)");
  EXPECT_EQ(below->category->title, "Food");
  EXPECT_EQ(transactionSumOfCate(*home.home, food, home.from, home.to).value(), 512) << "less 3 refunded";
  const auto bakery = *MVCategory::getCategory(home.root, home.bakery);
  EXPECT_EQ(shown(reportForCategory(*home.home, bakery, home.by(PeriodUnit::month))),
            "January, 2024: 1 (1), February, 2024: -3 (1), April, 2024: 2 (1)");
  EXPECT_EQ(home.amountsOf(transactionListOfCate(*home.home, bakery, home.from, home.to, {true})),
            "2.0 -3.0 1.0 ");
  struct Case {
    BreakdownBy by;
    double total, refunded, unfiled;
    const MVCategory* of;
    const char* why;
  };
  for (const auto& [by, total, refunded, unfiled, of, why] :
       {Case{BreakdownBy::category, 513, -3, 256, nullptr, "further kinds are in no report"},
        Case{BreakdownBy::category, 1, -3, 512, &food, "of one category"},
        Case{BreakdownBy::subcategory, 254, 0, 512, nullptr, "refunds are taken off its rows"},
        Case{BreakdownBy::vendor, 769, -3, 0, nullptr, "vendors"},
        Case{BreakdownBy::account, 769, -3, 0, nullptr, "accounts"}}) {
    const auto gap = gapOf(*home.home, by, 12, home.from, home.to, total, false, of).value();
    EXPECT_EQ(gap.refunded, refunded) << why;
    EXPECT_EQ(gap.unfiled, unfiled) << why;
    EXPECT_EQ(gap.reported, total + refunded + unfiled) << why;
    EXPECT_EQ(gap.otherMoments, 0) << why;
  }
}

TEST(Rows, areSortedOnceAndAddUp) {
  Breakdowns home;
  home.at("2024-03-01", 5, "vendor", "b");
  home.at("2024-03-01", 5, "vendor", "a");
  home.at("2024-03-01", 9, "vendor", "c");
  const char* none[] = {"", "NoVendor", "NoPayee", "NoPayer"};
  for (const char* key : none) home.at("2024-03-01", 2, "vendor", key);
  home.at("2024-03-02", 1, "vendor", nullptr);
  const auto list = home.byVendor();
  EXPECT_EQ(shown(list), "NoPayee: 9 (5), c: 9 (1), a: 5 (1), b: 5 (1)") << "equal ones as they came";
  EXPECT_EQ(list->count, 4);
  EXPECT_EQ(list->amount(), 28);
  EXPECT_EQ(list->maxAmount(), 9);
  EXPECT_TRUE(list->unnamed) << "keys that name nothing stand for themselves";
  EXPECT_FALSE(list->listArray[0].unnamed);
  EXPECT_EQ(
      home.amountsOf(getSpendListOfVendor(*home.home, *list->listArray[0].vendor, 12, home.from, home.to)),
      "2.0 2.0 2.0 2.0 1.0 ");
}

TEST(Rows, nameCategoriesAsTheyAre) {
  Breakdowns home;
  const auto wage = home.category("Wage", 11).pk;
  home.at("2024-03-01", 1, "subcategory", "");
  home.at("2024-03-01", 2, "type", 12);
  home.at("2024-03-01", 4, "subcategory", "gone");
  home.at("2024-03-01", 8, "category", wage);
  const auto list = home.byCategory(home.root12);
  EXPECT_EQ(shown(list), "Food: 7 (3), Wage: 8 (1)");
  EXPECT_EQ(list->listArray[1].incomeAmount, 8) << "income, as the category is";
  EXPECT_EQ(list->expenseAmount, 7);

  const auto below = home.byCategory(*MVCategory::getCategory(home.root, home.food));
  EXPECT_EQ(shown(below), "gone: 4 (1), Bakery: 2 (1), Food: 1 (1)") << "what chose none below it";
  EXPECT_EQ(transactionSumOfCate(*home.home, *below->listArray[0].category, home.from, home.to).value(), 4);

  CategoryReportQuery query(*home.home);
  query.beginDate = home.from;
  query.endDate = home.to;
  std::string heard;
  query.updateCategoryReportView = [&](const TransReportSummary& rows) { heard += shown(rows); };
  query.updateExpenseTimeReportView = [&](const TransReportSummary& rows) { heard += rows.count == 4; };
  query.getReportForAllSubCategory();
  home.db.drain();
  home.platform.mainQueue.runPending();
  EXPECT_EQ(heard,
            std::string("Food - Bakery: 8 (1), Food - gone: 4 (1), Food - Bakery: 2 (1), Food: 1 (1)\x01"))
      << "a row for each category a subcategory is found under";
}

/// The paying accounts of a record are told by its payments.
TEST(Payers, areThoseOfThePayments) {
  Breakdowns home;
  home.setClock("2024-03-15 12:00:00");
  home.plain(10);
  const auto cart = home.cart({60, 40}, 70, 20);
  struct Case {
    const char* why;
    std::function<void()> before;
    const char* rows;
    double other;
  };
  const auto all = [&](const std::string& change, std::initializer_list<Value> values) {
    ASSERT_TRUE(home.sql("update transactions set " + change, values));
  };
  const auto& second = home.second.pk;
  const Case cases[] = {
      {"what is still to be paid is no account's", [] {}, "Cash: 80 (2), Bank: 20 (1)", 10},
      {"nor what was paid on another day",
       [&] { all("datetime = datetime - 1e8 where account = ?", {home.bank->pk}); }, "Cash: 80 (2)", 30},
      {"a record in two books stays without an account",
       [&] { all("book = ? where bid = 20 and amount = 40", {second}); }, "No account: 60 (1), Cash: 10 (1)",
       0},
      {"which a deleted item does not make of it",
       [&] { all("deleted = 1 where bid = 20 and amount = 40", {}); }, "Cash: 80 (2)", -10},
      {"payments of older stores name the book as a category, and count once",
       [&] { all("category = ? where bid = 10", {home.home->pk}); }, "Cash: 80 (2)", -10},
      {"items that nothing pays for stay", [&] { all("deleted = 3 where bid = 10", {}); },
       "No account: 60 (1), Cash: 10 (1)", 0},
      {"an account that is no more", [&] { all("account = 'gone' where account = ?", {home.cash->pk}); },
       "No account: 60 (1), gone: 10 (1)", 0}};
  for (const auto& c : cases) {
    c.before();
    const auto rows = home.byAccount(*home.home);
    EXPECT_EQ(shown(rows), c.rows) << c.why;
    EXPECT_EQ(
        gapOf(*home.home, BreakdownBy::account, 12, home.from, home.to, rows->amount(), false)->otherMoments,
        c.other)
        << c.why;
  }
}

TEST(Payers, ofGroupsAndOfOneAccountAreTheSameRows) {
  Breakdowns home;
  home.setClock("2024-03-15 12:00:00");
  auto both = home.group("Both", {*home.home, home.second});
  home.plain(10);
  const auto cart = home.cart({60, 40}, 70, 30);
  home.sql("update transactions set book = ? where amount = 40", {home.second.pk});
  auto shoes = home.plain(50);
  EXPECT_TRUE(shoes.refund(20, home.on("2024-03-15"), home.cash->pk));
  auto rent = home.expense(90);
  rent.datetime = home.on("2024-02-01");
  EXPECT_TRUE(rent.saveApportionedCost(home.on("2024-02-01"), home.on("2024-04-30")));
  const auto rows = home.byAccount(both);
  EXPECT_EQ(shown(rows), "Cash: 130 (3), Bank: 30 (1)") << "shares of a cost are left out, refunds too";
  const auto gap = gapOf(both, BreakdownBy::account, 12, home.from, home.to, 160, false).value();
  EXPECT_EQ(gap.refunded, -20);
  EXPECT_EQ(gap.costShares, 90);
  EXPECT_EQ(gap.otherMoments, 0);
  EXPECT_EQ(shown(home.byAccount(*home.home)), "No account: 60 (1), Cash: 60 (2)");
  EXPECT_EQ(home.amountsOf(getSpendListOfPayment(both, *home.cash, 12, home.from, home.to)),
            "10.0 50.0 70.0 ");
  EXPECT_EQ(shown(reportForPayment(both, *home.cash, 12, home.by(PeriodUnit::week))),
            "Mar, 10 -- Mar, 16: 130 (3)");
  const auto none = MonivaAccount::getNoneAccount(home.root);
  EXPECT_EQ(shown(reportForPayment(*home.home, none, 12, home.by(PeriodUnit::year))), "2024: 60 (1)");
  std::string heard;
  getReportByMonthForPaymentOnBackgroundThread(both, std::nullopt, 12, home.from, home.to,
                                               [&](const Summary& list) { heard = shown(list); });
  home.db.drain();
  home.platform.mainQueue.runPending();
  EXPECT_EQ(heard, "March, 2024: 160 (4)") << "all accounts together";
}

TEST(Rows, ofCurrenciesAreInTheirOwnUnits) {
  Breakdowns home;
  home.set(home.at("2024-03-31", 20, "currency2", "USD"), "amount2", 24);
  home.set(home.at("2024-03-31", 40, "currency2", "JPY"), "amount2", 6000);
  home.at("2024-03-31", 80, "amount2", 90);
  EXPECT_EQ(shown(getReportForAllCurrency(*home.home, 12, home.from, home.to)), "JPY: 6000 (1), USD: 24 (1)");
  EXPECT_EQ(home.amountsOf(getSpendListOfCurrency(*home.home, "USD", 12, home.from, home.to)), "20.0 ");
  home.sql("update transactions set type = 11");
  const auto income = getReportForAllCurrency(*home.home, 11, home.from, home.to).value();
  EXPECT_EQ(income.listArray[0].expenseAmount, 6000);
  EXPECT_EQ(income.listArray[0].amount(), 6000) << "read by either";
}

TEST(UsedCategories, mendRecordsThatNameASubcategoryForItsParent) {
  Breakdowns home;
  home.category("Rent");
  const auto entered = home.at("2024-03-01", 1, "category", home.bakery);
  home.sql("insert into transactions (eid, type, category, book) values ('budget', 62, ?, ?)",
           {home.bakery, home.home->pk});
  const auto used = [&] { return titles(usedCategoriesOf(*home.home, 12, home.from, home.to)); };
  const auto stamp = [&] {
    return home.rows("select category || editDate from transactions where eid = ?", {entered.eid});
  };
  EXPECT_EQ(used(), "Food Bakery");
  const auto mended = stamp();
  EXPECT_EQ(mended.substr(0, home.food.size()), home.food);
  EXPECT_EQ(used(), "Food Bakery");
  EXPECT_EQ(stamp(), mended) << "once";
  EXPECT_EQ(titles(budgetCategories(*home.home)), "Bakery") << "its budget is its own";
  EXPECT_EQ(titles(enabledCategoriesAndUsedCategoriesOf(*home.home, 12, home.on("2024-03-20"))),
            "Food Bakery Rent");
  EXPECT_EQ(titles(enabledCategoriesAndUsedCategoriesOf(*home.home, 11, home.from, home.to)), "");
  home.setClock("2024-03-15 12:00:00");
  EXPECT_EQ(titles(getLatestUsedCategory(*home.home, 12)), "Bakery");
  home.setClock("2024-06-15 12:00:00");
  EXPECT_EQ(titles(getLatestUsedCategory(*home.home, 12)), "") << "long ago";
}

TEST(AccountQueries, listWhatIsOpenAndMayTakePart) {
  Breakdowns home;
  home.account("Card", "_DebtAccount");
  home.account("Phone", "_PrepaidAccount");
  home.account("Coupons", "_DiscountAccount");
  home.account("Closed").close(true);
  home.account("Dollars").updateCurrency("USD");
  home.group("All", {*home.cash, *home.bank});
  AccountQuery query(home.root);
  query.currency = "EUR";
  const struct {
    const char* why;
    AccountQuery::Rows rows;
    const char* titles;
  } cases[] = {{"pay", query.accountsArrayForPayCard(), "Cash Bank Card Phone Coupons"},
               {"out", query.accountsArrayForTransferOut(), "Cash Bank Card Phone"},
               {"in", query.accountsArrayForTransferIn(), "Cash Bank Card Phone"},
               {"recharge", query.accountsArrayForRecharge(), "Phone"},
               {"repay", query.accountsArrayForCreditCardRepay(), "Card"},
               {"lend", query.accountsArrayForLend(), "Cash Bank Card Phone"},
               {"books", query.bookWithoutGroupArray(), "Home Second"}};
  for (const auto& [why, rows, shown] : cases) EXPECT_EQ(titles(rows), shown) << why;
  query.accountType = "_SavingAccount";
  query.includeGroup = true;
  EXPECT_EQ(titles(query.accountsArray()), "Cash Bank All");
  EXPECT_EQ(query.allAvailabledBooksCount().value(), 2);
  EXPECT_EQ((*AccountQuery::paymentAccountForCurrency(home.root, "USD"))->title, "Dollars");
  EXPECT_EQ(AccountQuery::accountsDictExceptCurrency(home.root, "EUR")->size(), 1U);
}

}  // namespace
}  // namespace moniva
