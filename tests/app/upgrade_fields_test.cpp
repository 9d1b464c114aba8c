#include <gtest/gtest.h>

#include "app/do_db_updater.h"
#include "app/further_repairs.h"
#include "support/compound_story.h"
#include "support/old_store.h"

namespace moniva {
namespace {

Result<> fixBothGroups(MVAppRoot& root) {
  auto done = fixedGroupbMember(root, "books");
  return done ? fixedGroupbMember(root, "accounts") : done;
}

/// Each step on a store of its own: what a query shows afterwards. Nothing may be left for a second time.
struct Case {
  const char* why;
  Result<> (*step)(MVAppRoot&);
  const char* query;
  const char* shown;
};

const Case kCases[] = {
    {"a subcategory stands for a missing category", updateNOCategoryTitle,
     "select category || '/' || subcategory from transactions where eid in ('a', 'c', 'f') and category != "
     "''",
     "food/#NOMVCATEGORY\nfood/bread"},
    {"NULL becomes what the column means; budgets keep their year", updateFixData,
     "select eid || ' ' || syear || account || book || category || currency2 || ' ' || subcategory ||"
     " transferEID from transactions where eid in ('b', 'c', 'd', 'e', 'f', 'h')",
     "b 1004cashhomefood foodg\nc 0cash bread\nd 0homefood #NOMVCATEGORY\ne 0cashhomefood #NOMVCATEGORY\n"
     "f 0cash #NOMVCATEGORY\nh 2024home "},
    {"texts of options become JSON, cut ones stay", updateDataFiled202102,
     "select expandOption from account where eid < 5",
     "{\"overviewUI\":\"BookDashboardModernControllerV1\"}\n"
     "{\"overviewUI\":\"BookDashboardPadController\",\"showProfitForSummary\":\"1\"}\n"
     "{\"notificationEnabled\":\"1\"}\n{\"cut\":\"of"},
    {"only an item that payments pay for loses its account; zones move where there is none",
     updateDataFiled202102,
     "select eid || ' ' || account || ' ' || vendor || ' ' || familyUser || ' ' || coalesce(barcode, '-') "
     "from"
     " transactions where eid in ('a', 'b', 'c', 'd', 'e')",
     "a cash   \nb  shop  Europe/Berlin\nc cash left _user/7 -\nd   Europe/Berlin Asia/Tokyo\ne cash boss  "},
    {"categories are the same in all books", updateDataFiled202102, "select value from monivaSys", "0"},
    {"lists of members become members, ended memberships stay ended", updateDataFiled20210305,
     "select parent || ' ' || title || ' ' || type || ' ' || deleted from category where type in (7, 8) "
     "order by"
     " 1",
     "accounts bank 7 0\naccounts cash 7 0\naccounts cash 8 0\nbooks club 8 1\nbooks home 8 0"},
    {"a membership has the type of its group", fixBothGroups,
     "select type || deleted from category where parent = 'accounts'", "70"},
    {"lists get an order", updateAccountOrder, "select group_concat(orderID) from account", "1,2,1,2,0,1,2"},
    {"rows that were never written in full count", updateDataFiled2,
     "select deleted || paid || ' ' || (select totalBalance from account where eid = 1) from transactions "
     "where"
     " eid = 'e'",
     "01 7.0"},
    {"a vendor of income is a payer", fixVendorTypeNotSameAsTransType,
     "select group_concat(each) from (select title || type as each from category where type in (6, 9) order "
     "by 1)",
     "Anna6,Boss9,Left6,Shop6"},
    {"what the program removed comes back, not what a person did", needRestoreDeletedVendor,
     "select group_concat(deleted) from category where type = 6", "0,0,0,1"},
    {"debts name persons", updateDebter, "select vendor from transactions where eid in ('f', 'g')",
     "Anna\nAnna"},
    {"records of an interrupted rebuild come back once", importDataTemp,
     "select eid || amount || ' ' || (select totalBalance from account where eid = 4) from transactions "
     "where eid"
     " in ('a', 'back') union all select name from sqlite_schema where name like '%temp%'",
     "a1.0 -5.0\nback5.0 -5.0"},
};

TEST(UpgradeSteps, mendOlderFields) {
  const char* odd =
      "select quote(type) || quote(bid) || quote(amount) || quote(account) || quote(barcode) from "
      "transactions"
      " where eid = 'i'";
  for (const Case& each : kCases) {
    SCOPED_TRACE(each.why);
    OldStore store("older_fields");
    const auto before = store.rows(odd);
    EXPECT_GT(store.changedBy(each.step), 0);
    EXPECT_EQ(store.rows(each.query), each.shown);
    EXPECT_EQ(store.rows(odd), before) << "what cannot be understood stays";
    EXPECT_EQ(store.changedBy(each.step), 0) << "nothing is left for a second time";
  }
}

TEST(UpgradeSteps, changeNothingInAStoreOfToday) {
  Compound story;
  story.cart({10, 5}, 12, 3);
  story.plain(7);
  story.move(20, *story.cash, *story.bank, story.on("2024-03-01"));
  story.group("Both", {*story.cash, *story.bank});
  const auto spread = story.plain(30);
  ASSERT_TRUE(story.again(spread).saveApportionedCost(story.on("2024-01-01"), story.on("2024-03-31")));
  ASSERT_TRUE(MonivaAccount::saveOrder(story.root, MonivaAccount::list(story.root, kAccountKind)));
  ASSERT_TRUE(MonivaAccount::saveOrder(story.root, MonivaAccount::list(story.root, kBookKind)));
  // Without the flags every step looks.
  ASSERT_TRUE(story.root.executeUpdate("delete from monivaSys"));
  const auto before = story.connection().totalChanges();
  for (const auto& step : upgradeSteps()) {
    // 5 copies every row, changed or not; 6 marks the categories that transfers leave empty. Both are asked
    // for.
    if (step.code == 5 || step.code == 6) continue;
    EXPECT_TRUE(step.run(story.root));
    EXPECT_EQ(story.connection().totalChanges(), before) << step.name;
  }
  const auto repairs = runFurtherRepairs(story.root, Repair::mend);
  ASSERT_TRUE(repairs);
  for (const auto& [repair, rows] : *repairs) ADD_FAILURE() << repair->name << " wrote " << rows;
  ASSERT_TRUE(updateSettingCopyToLocal(story.root));
  const auto flags =
      std::ranges::count_if(furtherRepairs(), [](const auto& one) { return !one.flag.empty(); });
  EXPECT_EQ(story.connection().totalChanges() - before, flags);
}

TEST(UpgradeSteps, keepTheLaterOfTwoSettings) {
  Household home;
  auto& local = *home.platform.userDefaults;
  local.setDate(Date{300}, "lastBackupDate");
  local.setString("2024-01-01 10:00:00", "lastSyncDate");
  local.setString("failed", "lastSyncState");
  home.sql(
      "insert into monivaSys (key, value) values ('lastBackupDate', '20'), ('lastSyncDate', '2024-01-02"
      " 10:00:00'), ('lastSyncState', 'done')");
  ASSERT_TRUE(updateSettingCopyToLocal(home.root));
  EXPECT_EQ(home.rows("select value from monivaSys where key like 'last%' order by key"),
            "300\n2024-01-02 10:00:00\ndone");
  EXPECT_EQ(*local.stringForKey("lastSyncDate") + *local.stringForKey("lastSyncState"),
            "2024-01-02 10:00:00done");
}

}  // namespace
}  // namespace moniva
