#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "support/household.h"

namespace moniva {
namespace {

TEST(Spends, areOneRowWithEveryColumn) {
  Household home("America/New_York");
  home.setClock("2024-02-29 12:00:00");
  Spend spend(home.root);
  spend.type = kind::kIncome;
  spend.amount = 0.1 + 0.2;
  spend.foreignAmount = 12.34;
  spend.foreignCurrency = "JPY";
  spend.datetime = home.on("2024-02-29 23:30:00");
  spend.timeZone = "Asia/Tokyo";
  spend.note = "it's \"quoted\"";
  spend.book = home.home->pk;
  spend.account = home.cash->pk;
  spend.category = "super";
  spend.subcategory = "sub";
  spend.vendor = "employer";
  spend.paid = false;
  spend.needReimburse = true;
  spend.repeat = "Monthly";
  spend.repeatSeedID = "seed";
  spend.connectionUUID = "group";
  spend.ipid = "batchEdit";
  spend.advancedType = advanced::kCart;
  const auto commits = home.connection().commits();
  ASSERT_TRUE(spend.add());
  EXPECT_EQ(home.connection().commits(), commits + 1) << "one flush a record";
  EXPECT_EQ(
      home.rows("select json_array(bid, amount2, type, note, currency2, repeat, repeat_end_date, category,"
                " subcategory, vendor, syear, smonth, transferEID, barcode, deleted, paid,"
                " needReimburse, needNotify, ipid, repeat_seed, sweek, sday, datetime = payDate)"
                " from transactions where eid = ?",
                {spend.eid}),
      R"(["20",12.34,11,"it's \"quoted\"","JPY","Monthly",0.0,"super","sub","employer",1001,0,"group",)"
      R"("Asia/Tokyo",0,0,1,0,"batchEdit","seed",0,20240301,1])")
      << "the day is the one of the record's own zone";
  EXPECT_EQ(home.rows("select (editDate >= ?) || (edit_ipid = ?) || (book = ?) || (account = ?) from"
                      " transactions where eid = ?",
                      {home.platform.now(), home.root.itsUDID(), home.home->pk, home.cash->pk, spend.eid}),
            "1111");

  const auto read = Spend::spendFromEID(home.root, spend.eid);
  ASSERT_TRUE(read);
  EXPECT_EQ(read->amount, 0.1 + 0.2) << "bit for bit";
  EXPECT_EQ(read->datetime, spend.datetime);
  EXPECT_EQ(read->payDate, spend.datetime);
  EXPECT_EQ(read->foreignCurrency, "JPY");
  EXPECT_EQ(read->advancedType, advanced::kCart);
  EXPECT_FALSE(read->paid);
  EXPECT_TRUE(read->needReimburse);
  EXPECT_EQ(Spend::spendFromEID(home.root, "none"), std::nullopt);
}

TEST(Spends, keepTheEndOfTheirRepeatAndTheMarkOfNoCategory) {
  Household home;
  const Date end = home.on("2025-02-28");
  for (const std::string repeat : {"Monthly", "Not Repeat"}) {
    Spend spend(home.root);
    spend.amount = 1;
    spend.repeat = repeat;
    spend.repeatEndDate = end;
    spend.bid = kPaymentRow;
    ASSERT_TRUE(spend.add());
    EXPECT_EQ(spend.bid, kItemRow) << "what is written is an item row";
    EXPECT_EQ(home.rows("select category || '|' || subcategory || '|' || type || '|' || paid from"
                        " transactions where eid = ?",
                        {spend.eid}),
              "|#NOMVCATEGORY|12|1");
    home.set(spend, "bid", kPaymentRow);
    const auto read = Spend::spendFromEID(home.root, spend.eid);
    ASSERT_TRUE(read);
    EXPECT_EQ(read->subcategory, "");
    EXPECT_EQ(read->repeatEndDate, repeat == "Monthly" ? end : Date{}) << repeat;
    EXPECT_EQ(read->bid, kPaymentRow) << "by whomever the row was changed";
  }
}

TEST(Records, thatMakeNoSenseAreRefusedUnwritten) {
  Recording home;
  for (const double amount : {0.0, -1.0, std::nan(""), std::numeric_limits<double>::infinity()}) {
    EXPECT_FALSE(home.expense(amount).add());
    EXPECT_FALSE(home.transfer(1, amount).add());
    EXPECT_FALSE(home.transfer(amount, 1).add());
  }
  auto spend = home.expense(1);
  spend.type = kind::kTransferIn;
  EXPECT_FALSE(spend.add());
  for (const auto& other : {std::string(), home.cash->pk}) {
    auto transfer = home.transfer(1, 1);
    transfer.accountB = other;
    EXPECT_FALSE(transfer.add()) << "to '" << other << "'";
  }
  EXPECT_EQ(home.number("select count(*) from transactions"), 0);
}

TEST(Categories, comeBackOrAreTouchedInsteadOfDoubled) {
  Recording home;
  home.sql("update category set account = 'cash' where oldTitle = ?", {home.food});
  const auto add = [&](const char* title) {
    MVCategory made(home.root);
    made.title = title;
    made.parent = home.food;
    EXPECT_TRUE(made.addCate());
    return made;
  };
  EXPECT_EQ(add("Fruit").cateString(), "Food - Fruit");
  EXPECT_EQ(home.rows("select account from category where title = 'Fruit'"), "cash")
      << "a new subcategory inherits its parent's account";
  auto bakery = add("Bakery");
  EXPECT_TRUE(bakery.updateUsingCount(*home.home));
  EXPECT_TRUE(bakery.updateUsingCount(*home.home, 2));
  EXPECT_EQ(home.rows("select usedTimes || ' ' || (select used || enabled from categoryofbook) from category"
                      " where title = 'Bakery'"),
            "3 31");

  const auto stamp = [&] { return home.number("select editDate from category where title = 'Bakery'"); };
  auto before = stamp();
  for (const char* state : {"deleted = 1", "deleted = 3", "deleted = 0"}) {
    home.sql("update category set usedTimes = 9, " + std::string(state) + " where title = 'Bakery'");
    EXPECT_EQ(add("Bakery").pk, home.bakery);
    EXPECT_EQ(home.rows("select deleted || usedTimes from category where title = 'Bakery'"),
              std::string_view(state) == "deleted = 0" ? "09" : "00")
        << state;
    EXPECT_GT(stamp(), before);
    before = stamp();
  }
  EXPECT_NE(home.category("Bakery").pk, home.bakery) << "elsewhere it is another category";
  EXPECT_NE(home.category("Food", kind::kIncome).pk, home.food) << "and of another type";
  EXPECT_EQ(MVCategory::rootCateForType(home.root, 12).getAllSubcategoryList()->size(), 2U);
}

TEST(Vendors, areOneOfATitleAndType) {
  Household home;
  const auto add = [&](const char* title, int type) {
    Vendor vendor(home.root);
    vendor.title = title;
    vendor.type = type;
    EXPECT_TRUE(vendor.add());
    return vendor.pk;
  };
  const auto shop = add("Ärzte", Vendor::kPayee);
  EXPECT_EQ(add("Ärzte", Vendor::kPayee), shop);
  EXPECT_NE(add("Ärzte", Vendor::kPayer), shop) << "a payer of the same name is another";
  add("中国", Vendor::kPayee);
  EXPECT_EQ(home.rows("select orderID || ' ' || orderString from category where type = 6 order by orderID"),
            "1 arzte\n2 zhong guo");
  home.sql("update category set deleted = 1 where oldTitle = ?", {shop});
  EXPECT_EQ(add("Ärzte", Vendor::kPayee), shop);
  EXPECT_EQ(home.number("select deleted from category where oldTitle = ?", {shop}), 0);
  home.sql("insert into category (title, type, deleted, oldTitle) values ('Ärzte', 6, 1, 'removed')");
  EXPECT_EQ(add("Ärzte", Vendor::kPayee), shop) << "one in use goes before one that is deleted";

  auto spend = home.spend("Doctor", 20, home.on("2024-02-29"));
  home.set(spend, "vendor", shop);
  auto vendor = Vendor::getVendor(home.root, shop);
  ASSERT_TRUE(vendor);
  const auto before = home.number("select editDate from category where oldTitle = ?", {shop});
  EXPECT_TRUE(vendor->updateUsingCount(kind::kExpense));
  EXPECT_EQ(Vendor::getVendor(home.root, shop)->usedTimes, 1);
  EXPECT_GT(home.number("select editDate from category where oldTitle = ?", {shop}), before);
}

}  // namespace
}  // namespace moniva
