#include <gtest/gtest.h>

#include <algorithm>

#include "support/device.h"

namespace moniva {
namespace {

TEST(Template, holdsEveryColumnInOrderWithItsDefault) {
  struct Table {
    const char* name;
    const char* columns;
  };
  constexpr Table tables[] = {
      {"account",
       "eid INTEGER key, title TEXT '', password TEXT '', type TEXT '', beginBalance REAL 0.0, "
       "currency TEXT '', enabled INTEGER 1, weekStartsOn INTEGER 1, monthStartsOn INTEGER 1, note TEXT '', "
       "orderID INTEGER 0, deleted INTEGER 0, editDate REAL 0.0, familyUser TEXT '', "
       "budgetEnabled INTEGER 0, incomeEnabled INTEGER 1, totalBalance REAL 0.0, totalIncome REAL 0.0, "
       "totalExpense REAL 0.0, totalBudget REAL 0.0, ipid TEXT '', edit_ipid TEXT '', edit_count INTEGER 0, "
       "yearStartsOn INTEGER 1, includeFurtureDate INTEGER 0, kind INTEGER 0, beginDate REAL 0.0, "
       "endDate REAL 0.0, oldTitle TEXT '', expandOption TEXT '', isGroup INTEGER 0"},
      {"category",
       "pk INTEGER key, title TEXT '', parent TEXT '', usedTimes INTEGER 0, type INTEGER, account TEXT '', "
       "familyUser TEXT '', deleted INTEGER 0, editDate REAL 0.0, ipid TEXT '', edit_ipid TEXT '', "
       "edit_count INTEGER 0, orderID INTEGER 0, orderString TEXT '', oldTitle TEXT '', oldParent TEXT '', "
       "expandOption TEXT ''"},
      {"categoryofbook",
       "pk TEXT '', cate TEXT '', book TEXT '', cateOrder INTEGER 0, used INTEGER 0, enabled BLOB YES, "
       "editDate REAL '', edit_ipid TEXT ''"},
      {"monivaSys",
       "key TEXT '', value TEXT '', deleted INTEGER 0, editDate REAL 0.0, familyUser TEXT '', "
       "edit_count INTEGER 0, ipid TEXT '', edit_ipid TEXT ''"},
      {"photos",
       "pid INTEGER key not null, eid TEXT '', photoFull TEXT '', photoLite TEXT '', datetime REAL 0.0, "
       "deleted INTEGER 0, familyUser TEXT '', edit_count INTEGER 0, ipid TEXT '', edit_ipid TEXT '', "
       "uploaded INTEGER 0, downloaded INTEGER 0"},
      {"transactions",
       "eid TEXT key, bid TEXT '', amount REAL 0.0, amount2 REAL 0.0, type INTEGER 0, note TEXT '', "
       "currency2 TEXT '', repeat TEXT '', repeat_end_date REAL 0.0, category TEXT '', subcategory TEXT '', "
       "vendor TEXT '', datetime REAL 0.0, syear INTEGER 0, smonth INTEGER 0, account TEXT '', "
       "transferEID TEXT '', barcode TEXT '', editDate REAL 0.0, deleted INTEGER 0, familyUser TEXT '', "
       "book TEXT '', paid INTEGER 1, needReimburse INTEGER 0, needNotify INTEGER 0, ipid TEXT '', "
       "edit_ipid TEXT '', edit_count INTEGER 0, repeat_seed TEXT '', sweek INTEGER 0, sday INTEGER 0, "
       "payDate REAL 0.0"},
  };
  Device device;
  device.open();
  std::string names;
  for (const auto& [name, columns] : tables) {
    names += (names.empty() ? "" : "\n") + std::string(name);
    EXPECT_EQ(device.rows("select group_concat(name || ' ' || type || iif(pk, ' key', '') ||"
                          " iif(\"notnull\", ' not null', '') || ifnull(' ' || dflt_value, ''), ', ')"
                          " from pragma_table_info(?)",
                          {name}),
              columns)
        << name;
    EXPECT_EQ(device.number("select count(*) from " + std::string(name)), 0) << "the template is empty";
  }
  EXPECT_EQ(device.rows("select name from sqlite_schema where type = 'table' and name not like 'sqlite%'"
                        " order by name"),
            names);
  EXPECT_EQ(device.number("PRAGMA user_version"), 1);
  EXPECT_EQ(device.rows("PRAGMA journal_mode"), "wal");
  EXPECT_EQ(bytesOf(MONIVA_TEMPLATE).substr(18, 2), "\x02\x02") << "write-ahead log from the template on";
  EXPECT_EQ(device.rows("PRAGMA integrity_check"), "ok");
}

TEST(Template, hasItsIndexesAndFixedFiguresForThePlanner) {
  Device device;
  device.open();
  const auto indexes = [&] {
    return device.rows(
        "select group_concat(name, ' ') from (select name from sqlite_schema where type = 'index'"
        " and sql is not null order by name)");
  };
  const std::string all =
      "cat_key cat_parent cat_title cob_cate photo_eid photo_full photo_time sys_key tx_account tx_book "
      "tx_date tx_edit tx_foreign tx_removed tx_seed tx_transfer tx_type tx_unpaid tx_vendor";
  EXPECT_EQ(indexes(), all);
  EXPECT_EQ(device.number("select count(*) from sqlite_stat1"), 20);

  // A store of an older program has none of them, and is in rollback mode.
  device.sql("DROP INDEX tx_book");
  device.sql("DROP INDEX sys_key");
  device.sql("delete from sqlite_stat1");
  device.db.closeDatabase();
  {
    auto raw = Connection::open(device.dataFile(), Connection::Access::readWrite);
    ASSERT_TRUE((*raw)->execute("PRAGMA journal_mode = DELETE"));
    ASSERT_TRUE((*raw)->executeScript("PRAGMA user_version = 0; PRAGMA application_id = 0"));
  }
  device.open();
  EXPECT_EQ(indexes(), all);
  EXPECT_EQ(device.number("select count(*) from sqlite_stat1"), 20);
  EXPECT_EQ(device.rows("PRAGMA journal_mode"), "wal");
}

TEST(Plans, noHotQueryScansTheTransactions) {
  Device device;
  device.open();
  struct Case {
    const char* sql;
    const char* why;
  };
  for (const auto& [sql, why] : {
           Case{"select sum(amount) as amount, count(eid) as eid_count from transactions where deleted = 0"
                " and paid = 1 and ? <= datetime and datetime <= ? and book=? and type = 11 ",
                "income of a book's period"},
           Case{"select sum(amount) as amount, count(eid) as eid_count from transactions where deleted = 0"
                " and paid = 1 and type != 33 and ? <= datetime and datetime <= ? and account=? and"
                " (type = 12 or (type > 31 and type < 39)) ",
                "what left an account in a period"},
           Case{"select sum(amount) as amount, count(eid) as eid_count from transactions where deleted = 0"
                " and paid = 1 and ? <= datetime and datetime <= ? and type = ? and account=?",
                "transfers of an account"},
           Case{"select type, sum(amount) as amount from transactions where account=? and deleted = 0"
                " and paid = 1 and type > 10 and type < 50 group by type",
                "the balance of an account"},
           Case{"SELECT editDate FROM transactions where editDate > 1000000 order by editDate limit 1",
                "the first use"},
           Case{"select eid from transactions where transferEID = ? and type = ?", "the sides of a transfer"},
           Case{"select count(eid) from transactions where vendor = ? and type = ?", "the uses of a vendor"},
           Case{"select amount from transactions where eid = ?", "one record"},
           Case{"select eid from transactions where repeat_seed = ? and datetime = ?", "an occurrence"},
           Case{"select eid from transactions where paid = 0 and datetime < ?", "what is due"},
       }) {
    std::string detail;
    const std::vector<Value> unbound(static_cast<std::size_t>(std::ranges::count(std::string_view(sql), '?')),
                                     nullptr);
    auto run = device.connection().query(std::string("explain query plan ") + sql, unbound);
    while (run.next()) detail.append(run.text(3)).append("\n");
    EXPECT_EQ(detail.find("SCAN"), std::string::npos) << why << ": " << detail;
    EXPECT_NE(detail.find("SEARCH transactions"), std::string::npos) << why << ": " << detail;
  }
}

}  // namespace
}  // namespace moniva
