#include "storage/mv_app_root.h"

#include <gtest/gtest.h>

#include "platform/posix/file_user_defaults.h"
#include "support/device.h"

namespace moniva {
namespace {

TEST(MVAppRoot, theDeviceKeepsItsIdentifierAndACopiedDataFileDoesNotCarryIt) {
  const TemporaryFolder settings;
  const auto giveDefaults = [&](Device& device, const char* name) {
    device.platform.userDefaults = std::move(*FileUserDefaults::open(settings / name, device.platform.now()));
  };
  Device device;
  giveDefaults(device, "one.json");
  device.open();
  device.db.dispatchInDatabase("Test", [&](Connection&) { EXPECT_FALSE(device.root.itsUDID().empty()); });
  const auto identifier = device.root.itsUDID();
  device.db.drain();
  device.root.setObject("1", "AutoBackup");
  ASSERT_TRUE(device.db.checkpoint());

  Device again("Asia/Tokyo", {}, 2);
  giveDefaults(again, "one.json");
  EXPECT_EQ(again.root.itsUDID(), identifier) << "kept in the defaults at once";
  Device copied("Asia/Tokyo", {}, 3);
  giveDefaults(copied, "two.json");
  std::filesystem::copy_file(device.dataFile(), copied.dataFile());
  copied.open();
  EXPECT_EQ(copied.root.objectForKey("AutoBackup"), "1");
  EXPECT_NE(copied.root.itsUDID(), identifier);
  EXPECT_FALSE(copied.root.itsUDID().empty());
}

TEST(MVAppRoot, settingsFallBackToTheirDefaultAndTheNewestRowCounts) {
  Device device;
  device.open();
  EXPECT_EQ(device.root.objectForKey("expenseAmountFontColor"), "#FF3333");
  EXPECT_EQ(device.root.objectForKey("accountTitle"), "");
  EXPECT_TRUE(device.root.setObject("a", "themeTintColor"));
  EXPECT_TRUE(device.root.setObject("b", "themeTintColor"));
  EXPECT_EQ(device.rows("select value from monivaSys where key = 'themeTintColor'"), "b");
  device.sql(
      "insert into monivaSys (key, value, editDate) values ('themeTintColor', 'newest', 9e9),"
      " ('themeTintColor', 'older', 5)");
  EXPECT_EQ(device.root.objectForKey("themeTintColor"), "newest");
  EXPECT_TRUE(device.root.setObject("c", "themeTintColor"));
  EXPECT_EQ(device.root.objectForKey("themeTintColor"), "c");
}

}  // namespace
}  // namespace moniva
