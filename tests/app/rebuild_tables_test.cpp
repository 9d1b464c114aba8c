#include <gtest/gtest.h>

#include "app/do_db_updater.h"
#include "storage/writes.h"
#include "support/household.h"

namespace moniva {
namespace {

namespace fs = std::filesystem;

/// Makes a table with dates as texts of the one that is there, without the columns named.
void makeOlder(Device& device, const std::string& table, const std::string& without = "") {
  std::string columns;
  {
    auto run = device.connection().query(
        "select name || case when pk then ' ' || type || ' PRIMARY KEY' when name like '%date%' then"
        " ' TEXT' else ' ' || type end from pragma_table_info(?) where ? not like '%' || name || '%'",
        {table, without});
    while (run.next()) columns.append(columns.empty() ? "" : ", ").append(run.text(0));
  }
  ASSERT_TRUE(device.connection().executeScript("drop table " + table + "; create table " + table + " (" +
                                                columns + ")"));
}

std::string schemaOf(Device& device) {
  return device.rows(
             "select t.name || c.cid || c.name || c.type || ifnull(c.dflt_value, '') || c.pk from "
             "sqlite_schema "
             "t, pragma_table_info(t.name) c where t.type = 'table' order by t.name, c.cid") +
         device.rows("select name from sqlite_schema where type = 'index' order by name") +
         device.rows("select idx || stat from sqlite_stat1 order by 1");
}

TEST(Rebuild, makesNumbersOfDatesThatAreTexts) {
  struct Case {
    const char* text;
    const char* date;  ///< on the device's clock; nothing for a text that stays
    const char* why;
  };
  const Case cases[] = {
      {"2015-03-04 12:30:00", "2015-03-04 12:30:00", "without a zone, in the user's"},
      {"2015-07-04 12:30:00 +0000", "2015-07-04 14:30:00", "in summer"},
      {"2015-03-04T12:30:00-05:30", "2015-03-04 19:00:00", "an offset to the west"},
      {"2015-03-04 12:30:00Z", "2015-03-04 13:30:00", "in UTC"},
      {"2015-03-04", "2015-03-04 00:00:00", "a day alone"},
      {"1425468600", "2015-03-04 12:30:00", "seconds, typed as a text"},
      {"2015-02-29 12:30:00", nullptr, "a day that never was"},
      {"2015-03-04 12:30:00 CEST", nullptr, "a zone nobody keeps"},
      {"4 March", nullptr, "anything else"},
  };
  Device device;
  device.open();
  const auto today = schemaOf(device);
  makeOlder(device, "transactions");
  makeOlder(device, "account", "isGroup expandOption");
  ASSERT_TRUE(device.connection().executeScript(
      "alter table transactions add column \"my own\" TEXT; create index mine on transactions(\"my own\");"
      "insert into account (title, editDate) values ('Cash', '');"
      "create view seen as select note from transactions"));
  for (const auto& [text, date, why] : cases) {
    device.sql("insert into transactions (eid, datetime, \"my own\") values (?, ?, 'kept')", {why, text});
  }
  // An older program was cut short in the middle of this.
  ASSERT_TRUE(device.connection().executeScript(
      "insert into photos (eid) values ('kept'); alter table photos rename to photos_old; create table "
      "category_temp (pk)"));
  EXPECT_TRUE(lacksColumns(device.root));
  const auto done =
      atomically(device.root, [&](Connection&) { return updateStringTypeDateField(device.root); });
  ASSERT_TRUE(done) << done.error().why;
  EXPECT_FALSE(lacksColumns(device.root));
  for (const auto& [text, date, why] : cases) {
    EXPECT_EQ(device.rows("select typeof(datetime) || datetime from transactions where eid = ?", {why}),
              date != nullptr ? fmt::format("real{:.1f}", device.on(date).secondsSince1970)
                              : "text" + std::string(text))
        << why;
  }
  EXPECT_EQ(device.rows("select title || typeof(editDate) || editDate || isGroup from account"),
            "Cashreal0.00");
  EXPECT_EQ(device.number("select count(*) from transactions where \"my own\" = 'kept'"), 9);
  EXPECT_EQ(device.rows("select eid from photos"), "kept");
  EXPECT_EQ(device.number("select count(*) from seen"), 9) << "what others say of a table still holds";
  EXPECT_EQ(device.root.takeNotices().size(), 1U) << "that three could not be read";
  device.connection().executeScript(
      "drop view seen; drop index mine; alter table transactions drop column \"my own\"");
  EXPECT_EQ(schemaOf(device), today) << "indexes and figures too";
}

TEST(Rebuild, comesBeforeAllStepsWhereColumnsAreMissing) {
  Device device;
  device.open();
  makeOlder(device, "monivaSys", "edit_ipid edit_count editDate value");
  DoDBUpdater updater(device.root);
  EXPECT_EQ(updater.needUpdateDB().at(0), "5");
  const auto outcome = updater.run();
  ASSERT_TRUE(outcome && outcome->failed.empty());
  EXPECT_EQ(outcome->run.size(), 11U);
  EXPECT_EQ(updater.needUpdateDB().size(), 0U);
  EXPECT_EQ(device.number("select count(*) from monivaSys where edit_count = 0 and value = '1'"), 10);
}

TEST(Rebuild, losesNothingThatTodaysTablesCannotTake) {
  Household home;
  const auto spent = home.spend("Food", 5, home.on("2024-02-01"));
  // Tables without keys, which have doubles; what an older rebuild left; a view in the way; kept balances
  // gone.
  ASSERT_TRUE(home.connection().executeScript(
      "create table loose as select * from transactions; drop table transactions; alter table loose rename to"
      " transactions; insert into transactions select * from transactions;"
      "update transactions set deleted = 1, editDate = 9e9, note = 'goes' where rowid = 2;"
      "create table transactions_temp as select * from transactions where deleted = 0;"
      "update transactions_temp set eid = 'left', amount = 2, datetime = '2024-02-01 12:00:00';"
      "create table seen as select * from photos; drop table photos; alter table seen rename to photos;"
      "insert into photos (pid, eid) values ('x', 'c'), (7, 'a'), (7, 'b'), (8, 'd');"
      "create view category_temp as select 1; alter table account drop column totalBalance;"
      "drop table categoryofbook"));
  DoDBUpdater updater(home.root);
  EXPECT_EQ(updater.needUpdateDB(), std::vector<std::string>{"5"});
  const auto outcome = updater.run();
  ASSERT_TRUE(outcome && outcome->failed.empty()) << outcome->failed.at(0).why.why;
  EXPECT_EQ(home.rows("select amount || typeof(datetime) from transactions order by amount"),
            "2.0real\n5.0real");
  EXPECT_NE(home.takeFaults().find("note='goes'"), std::string::npos) << "the double is in the log";
  EXPECT_EQ(home.rows("select totalBalance from account where title in ('Home', 'Cash')"), "-7.0\n-7.0");
  EXPECT_EQ(home.rows("select group_concat(eid || (pid = 7)) from (select * from photos order by eid)"),
            "a1,b0,c0,d0");
  EXPECT_EQ(home.rows("select name from sqlite_schema where name like '%temp' or name like '%left'"), "");
  EXPECT_EQ(updater.needUpdateDB().size(), 0U);
  EXPECT_TRUE(fs::exists(outcome->copy));
}

TEST(Rebuild, bringsCategoriesOfBooksIntoTodaysForm) {
  const std::string byNumbers =
      "drop table categoryofbook; create table categoryofbook (pk INTEGER, book INTEGER, cateOrder INTEGER);"
      "insert into categoryofbook values (1, 1, 3)";
  struct OfBooksCase {
    const char* why;
    std::string older;
    const char* first;  ///< the step that is due first
  };
  for (const auto& [why, older, first] : {
           OfBooksCase{"a column is missing", "alter table categoryofbook drop column enabled", "5"},
           OfBooksCase{"cut short between two renamings",
                       "alter table categoryofbook rename to categoryofbook_old", "5"},
           OfBooksCase{"by numbers, though the keys were given", byNumbers, "5"},
           OfBooksCase{"by numbers, keys are still to be given",
                       byNumbers + ";delete from monivaSys where key = 'updateCategoryPK'", "0"},
       }) {
    SCOPED_TRACE(why);
    Device device;
    device.open();
    device.sql("insert into account (eid, title, oldTitle, kind) values (1, 'Home', 'home', 2)");
    device.sql(
        "insert into category (pk, title, oldTitle, type, parent) values (1, 'Food', 'food', 12, "
        "'_rootCate')");
    device.sql("insert into categoryofbook (cate, book, cateOrder) values ('food', 'home', 3)");
    ASSERT_TRUE(device.connection().executeScript(older));
    DoDBUpdater updater(device.root);
    EXPECT_EQ(updater.needUpdateDB(), std::vector<std::string>{first});
    const auto outcome = updater.run();
    ASSERT_TRUE(outcome && outcome->failed.empty());
    EXPECT_FALSE(lacksColumns(device.root));
    EXPECT_EQ(device.rows("select cate || book || cateOrder from categoryofbook"), "foodhome3");
  }
}

}  // namespace
}  // namespace moniva
