#include "reports/explain.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include "support/compound_story.h"

namespace moniva {
namespace {

/// "rows: amount" of the figure, which the report or breakdown has to confirm.
std::string explained(Compound& store, const ExplainQuery& query, Explained* whole = nullptr) {
  double sum = 0;
  Date last{-1e12};
  const auto found = explain(store.root, query, [&](const ExplainedRow& row) {
    sum += row.amount;
    EXPECT_LE(last.secondsSince1970, row.datetime.secondsSince1970) << "the oldest first";
    last = row.datetime;
  });
  EXPECT_TRUE(found) << found.error().why;
  if (!found) return {};
  if (whole != nullptr) *whole = *found;
  EXPECT_EQ(sum, found->rows.amount);
  EXPECT_TRUE(found->agrees()) << found->rows.count << ": " << found->rows.amount << ", but reported "
                               << found->reported.count << ": " << found->reported.amount;
  return fmt::format("{}: {}", found->rows.count, withoutNoise(found->rows.amount));
}

TEST(Explain, tellsWhatIsInAFigureAndWhatIsNot) {
  Compound store;
  const Spend bread = store.plain(10);
  Spend rent = store.plain(500);
  store.earn("Salary", 900, store.on("2024-06-01"));
  store.move(50, *store.cash, *store.bank, store.on("2024-06-02"));
  store.cart({3, 4}, 7);
  store.set(rent, "paid", 0);
  Spend back = store.plain(6);
  store.set(back, "amount", -6.0);
  Spend none = store.plain(2);
  store.set(none, "vendor", "NoPayee");
  Spend dollars = store.plain(8);
  store.set(dollars, "currency2", "USD");
  store.set(dollars, "amount2", 9.0);
  store.set(store.plain(1), "datetime", store.on("2024-07-01").secondsSince1970);

  const auto food = *MVCategory::getCategory(store.root, store.food);
  const auto bakery = *MVCategory::getCategory(store.root, store.bakery);
  const ExplainQuery june{*store.home, store.on("2024-06-01"), store.on("2024-06-30")};
  const auto with = [&](const MonivaAccount& of, int code, const auto&... set) {
    ExplainQuery query = june;
    query.of = of;
    query.transactionType = code;
    (set(query), ...);
    return query;
  };
  const auto pending = [](ExplainQuery& query) { query.pending = true; };
  const auto of = [](const MVCategory& category) {
    return [&category](ExplainQuery& query) { query.category = category; };
  };
  const auto vendor = [](const std::string& key) { return [=](ExplainQuery& query) { query.vendor = key; }; };
  const auto from = [](const std::string& key) { return [=](ExplainQuery& query) { query.paidFrom = key; }; };
  const struct {
    ExplainQuery query;
    std::string found;
    const char* why;
  } cases[] = {
      {with(*store.home, 1112), "7: 879", "what is left in a book: no transfers, nothing pending"},
      {with(*store.home, 1112, pending), "8: 379", "what is pending too"},
      {with(*store.home, 12), "6: 21", "expenses are above zero then, what came back is not"},
      {with(*store.home, 23), "0: 0", "a book has no transfers"},
      {with(*store.cash, 1050), "7: 829", "an account has them, and payments"},
      {with(*store.cash, 2312), "6: 879", "a prepaid account's report leaves out what moved on"},
      {with(*store.bank, 1050), "1: 50", "what arrived is income once"},
      {with(*store.cash, 33), "1: 50", ""},
      {with(*store.home, 12, of(food)), "5: 27", "a breakdown leaves out what came back"},
      {with(*store.home, 12, of(bakery)), "5: 27", ""},
      {with(*store.home, 12, vendor(store.vendor)), "4: 25", ""},
      {with(*store.home, 12, vendor("")), "1: 2", "whatever stands for no vendor"},
      {with(*store.home, 12, from(store.cash->pk)), "4: 27", "a cart is paid by its payments"},
      {with(*store.home, 12, from("")), "0: 0", "not by its items"},
      {with(*store.home, 12, [](ExplainQuery& query) { query.currency = "USD"; }), "1: 9", "in dollars"},
  };
  for (const auto& c : cases) EXPECT_EQ(explained(store, c.query), c.found) << c.why;

  Explained whole;
  explained(store, june, &whole);
  EXPECT_EQ(whole.pending.amount, -500);
  EXPECT_EQ(whole.transfers.count, 1);
  explained(store, with(*store.home, 12, of(food)), &whole);
  EXPECT_EQ(whole.refunds.amount, -6);
  whole.rows.amount += 0.01;
  EXPECT_FALSE(whole.agrees()) << "a cent is seen";
}

RC_GTEST_PROP(ExplainProperty, rowsComeToWhatReportsAndBreakdownsSay, ()) {
  static Compound store;
  static const auto category = *MVCategory::getCategory(store.root, store.bakery);
  store.sql("delete from transactions");
  const auto pick = [](std::initializer_list<std::string> of) {
    return *rc::gen::elementOf(std::vector(of));
  };
  const int rows = *rc::gen::inRange(0, 30);
  for (int i = 0; i < rows; ++i) {
    store.sql(
        "insert into transactions (eid, type, bid, amount, amount2, currency2, category, subcategory,"
        " vendor, account, book, datetime, paid, deleted, syear, transferEID) values"
        " (?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?)",
        {std::to_string(i), *rc::gen::element(11, 12, 13, 14, 23, 24, 25, 33, 34, 35, 50),
         *rc::gen::element(10, 20), *rc::gen::inRange(-100, 1000) / 100.0, *rc::gen::inRange(0, 1000) / 100.0,
         pick({"", "USD"}), store.food, pick({store.bakery, std::string(kNoCategory)}),
         pick({"", "NoVendor", "NoPayee", "NoPayer", store.vendor}),
         pick({"", store.cash->pk, store.bank->pk}), pick({"", store.home->pk, store.second.pk}),
         store.on("2024-06-01").secondsSince1970 + *rc::gen::inRange(-3, 3), *rc::gen::element(0, 1),
         *rc::gen::element(0, 0, 1), *rc::gen::element(0, 1002), pick({"", "g", "h"})});
  }
  for (const auto* of : {&*store.home, &*store.cash}) {
    for (const bool pending : {false, true}) {
      ExplainQuery query{*of, store.on("2024-06-01"), store.on("2024-06-01")};
      query.pending = pending;
      for (const int code : {1112, 1050, 2312, 11, 12, 23, 33}) {
        query.transactionType = code;
        explained(store, query);
      }
      for (const int code : {11, 12}) {
        query.transactionType = code;
        for (const auto& key : {std::string(), store.vendor}) {
          ExplainQuery member = query;
          member.vendor = key;
          explained(store, member);
          member.vendor.reset();
          member.paidFrom = key.empty() ? key : store.bank->pk;
          explained(store, member);
        }
        ExplainQuery member = query;
        member.category = category;
        explained(store, member);
        member.category.reset();
        member.currency = "USD";
        explained(store, member);
      }
    }
  }
}

}  // namespace
}  // namespace moniva
