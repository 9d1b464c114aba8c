#include "model/currency_list.h"

#include <gtest/gtest.h>

#include "support/household.h"

namespace moniva {
namespace {

class CurrencyListTest : public ::testing::Test {
 protected:
  std::int64_t live(const std::string& code) {
    moniva::Run run = device.db.getDatabase()->query(
        "select count(*) from category where parent = '_currency' and title = ? and deleted = 0", {code});
    return run.next() ? run.integer(0) : -1;
  }

  Household device;
};

TEST_F(CurrencyListTest, RowsOfTwoDevicesAreOneCurrency) {
  ASSERT_EQ(addCurrency(device.root, "CHF"), CurrencyAdded::added);
  EXPECT_EQ(DoDB::getCurrencyList(device.root).size(), 11U) << "the common ones stay";
  device.sql("insert into category (title, parent, type) values ('CHF', '_currency', 0)");
  EXPECT_EQ(addCurrency(device.root, "CHF"), CurrencyAdded::present);
  ASSERT_TRUE(removeCurrency(device.root, "CHF"));
  EXPECT_EQ(live("CHF"), 0) << "of both devices";
  EXPECT_EQ(addCurrency(device.root, "CHF"), CurrencyAdded::revived);
  EXPECT_EQ(live("CHF"), 1) << "the one deleted last is enough";
}

TEST_F(CurrencyListTest, TheLastOneStays) {
  for (const auto& code : DoDB::getCurrencyList(device.root))
    EXPECT_EQ(removeCurrency(device.root, code).has_value(), code != "USD") << code;
  EXPECT_EQ(DoDB::getCurrencyList(device.root), std::vector<std::string>{"USD"});
}

}  // namespace
}  // namespace moniva
