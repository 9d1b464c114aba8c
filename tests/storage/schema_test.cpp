#include <gtest/gtest.h>

#include <algorithm>

#include "base/uuid.h"
#include "support/device.h"

namespace moniva {
namespace {

TEST(Template, isTheFormatOfTheStoresThatAreThere) {
  Device device;
  device.open();
  const auto columns = device.rows(
      "select t.name || ' ' || c.name || ' ' || c.type || ' ' || c.pk || c.\"notnull\" || ' ' ||"
      " ifnull(c.dflt_value, 'none') from sqlite_schema t, pragma_table_info(t.name) c"
      " where t.type = 'table' and t.name not like 'sqlite%' order by t.name, c.cid");
  EXPECT_EQ(nameBasedUuidV7(0, columns), "00000000-0000-74b7-82c9-46de3d82d183")
      << "a changed column, type or default needs a new kind of store:\n"
      << columns;
  for (const std::string table :
       {"account", "category", "categoryofbook", "monivaSys", "photos", "transactions"}) {
    // The system table knows that a new store needs no upgrade; app/ tests that all steps are named there.
    EXPECT_EQ(device.number("select count(*) from " + table), table == "monivaSys" ? 16 : 0) << table;
  }
  EXPECT_EQ(device.number("PRAGMA user_version"), 1);
  EXPECT_EQ(bytesOf(MONIVA_TEMPLATE).substr(18, 2), "\x02\x02") << "write-ahead log from the template on";
  EXPECT_EQ(device.rows("PRAGMA integrity_check"), "ok");
}

TEST(Indexes, areMadeInAnOlderStoreWhereTheyFit) {
  const auto shown = [](Device& device) {
    return device.rows(
               "select group_concat(name, ' ') from (select name from sqlite_schema where type = 'index'"
               " and sql is not null and name != 'cob_cate' order by name)") +
           device.rows("select ' ' || count(*) from sqlite_stat1 where idx is not 'cob_cate'");
  };
  Device fresh;
  fresh.open();
  EXPECT_EQ(fresh.db.missingIndexes(), std::set<std::string>{});

  // Such a store is in rollback mode, and knows nothing of figures for the planner.
  Device older;
  std::filesystem::copy_file(MONIVA_TEMPLATE, older.dataFile());
  {
    auto raw = Connection::open(older.dataFile(), Connection::Access::readWrite);
    ASSERT_TRUE((*raw)->execute("PRAGMA journal_mode = DELETE"));
    ASSERT_TRUE((*raw)->executeScript(
        "PRAGMA user_version = 0; PRAGMA application_id = 0; delete from sqlite_stat1; drop index tx_book;"
        "drop index sys_key; drop index tx_vendor; create index tx_vendor on transactions(vendor); drop "
        "table categoryofbook;"
        "create table categoryofbook (pk INTEGER, book INTEGER, cateOrder INTEGER)"));
  }
  older.open();
  EXPECT_EQ(shown(older), shown(fresh));
  EXPECT_EQ(older.db.missingIndexes(), std::set<std::string>{"cob_cate"});
  EXPECT_NE(older.rows("select sql from sqlite_schema where name = 'tx_vendor'").find("datetime"),
            std::string::npos);
  EXPECT_EQ(older.rows("PRAGMA journal_mode"), "wal");
}

TEST(Plans, noHotQueryScansTheTransactions) {
  Device device;
  device.open();
  struct Case {
    const char* condition;
    const char* why;
  };
  for (const auto& [condition, why] : {
           Case{"deleted = 0 and paid = 1 and ? <= datetime and datetime <= ? and book = ? and type = 11",
                "income of a book's period"},
           Case{"deleted = 0 and paid = 1 and type != 33 and ? <= datetime and datetime <= ? and account = ?"
                " and (type = 12 or (type > 31 and type < 39))",
                "what left an account in a period"},
           Case{"account = ? and deleted = 0 and paid = 1 and type > 10 and type < 50 group by type",
                "the balance of an account"},
           Case{"editDate > 1000000 order by editDate limit 1", "the first use"},
           Case{"transferEID = ? and type = ?", "the sides of a transfer"},
           Case{"vendor = ? and type = ?", "the uses of a vendor"},
           Case{"category = ?", "the records of a category"},
           Case{"? <= datetime and datetime <= ? and book = ? and deleted = 0 and (type = ? or type = ?) and"
                " category != '' and paid = 1 group by category",
                "what each category comes to"},
           Case{"repeat_seed = ? and datetime = ?", "an occurrence"},
           Case{"paid = 0 and datetime < ?", "what is due"},
       }) {
    const std::vector<Value> unbound(
        static_cast<std::size_t>(std::ranges::count(std::string_view(condition), '?')), nullptr);
    auto run = device.connection().query(
        std::string("explain query plan select sum(amount) from transactions where ") + condition, unbound);
    std::string plan;
    while (run.next()) plan.append(run.text(3)).append("\n");
    EXPECT_EQ(plan.find("SCAN"), std::string::npos) << why << ": " << plan;
    EXPECT_NE(plan.find("SEARCH transactions"), std::string::npos) << why << ": " << plan;
  }
}

}  // namespace
}  // namespace moniva
