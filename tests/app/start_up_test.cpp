#include <gtest/gtest.h>

#include <fstream>

#include "app/main_app_delegate.h"
#include "support/household.h"

namespace moniva {
namespace {

namespace fs = std::filesystem;

/// A front end that writes down what it is asked for.
class RecordingHost final : public AppHost {
 public:
  void showLockView() override { asked += "lock "; }
  void showTouchIDIfNeed() override { asked += "touch "; }
  void startPurchaseManager() override { asked += "purchase "; }
  void databaseFileCheck() override { asked += "check "; }
  void initCloud() override { asked += "cloud "; }
  void saveToGroupPath() override { asked += "group "; }
  void createShortcutItems(const std::vector<ShortcutItem>& items) override {
    for (const auto& item : items) asked += item.type + "=" + item.title + " ";
  }
  void showAddTransaction(std::string_view type) override { asked += "add:" + std::string(type) + " "; }
  void showALertWhenImportDataBackup(const fs::path& file) override {
    asked += "backup:" + file.filename().string() + " ";
  }
  void showALertWhenImportSharedData(const fs::path& file) override {
    asked += "shared:" + file.filename().string() + " ";
  }
  void importDataFromArrayIfNeedAfterLaunch() override { asked += "array "; }

  std::string asked;
};

/// The program on a device, with what its steps and its front end were, in order.
class Program : public Device {
 public:
  Program() : app(root, host) {
    app.onStep = [this](std::string_view step) { steps += std::string(step) + " "; };
    watch_ = platform.notifications.observe("expenseChanged", [this] { ++expenseChanged; });
  }
  /// Waits for what is under way; the steps and questions since the last time.
  std::string takeSteps() {
    app.settle();
    return std::exchange(steps, {});
  }
  std::string takeAsked() {
    app.settle();
    return std::exchange(host.asked, {});
  }
  void launch() {
    const auto launched = app.applicationDidFinishLaunching();
    ASSERT_TRUE(launched) << launched.error().why;
  }
  void returnToForeground() {
    const auto entered = app.applicationWillEnterForeground();
    ASSERT_TRUE(entered) << entered.error().why;
  }
  std::optional<std::string> setting(std::string_view key) {
    return platform.userDefaults->stringForKey(key);
  }

  RecordingHost host;
  std::string steps;
  int expenseChanged = 0;
  MainAppDelegate app;

 private:
  NotificationCenter::Token watch_;
};

constexpr const char* kLaunch =
    "excludePhotoFolder createMainWindow copyDatabaseIfNeed initDatabase insertAllCategoryIfNeed "
    "refreshUsingMonivaAccount createShortcutItems startPurchaseManager installRootViewController "
    "showLockView showTouchIDIfNeed ";
constexpr const char* kDaily =
    "createBillNotifaction updateDatabaseIfNeed sendCrashLogMailIfNeed closeProgressAlert reloadBlankBook "
    "updateRecurringTransactionsWithFuture deliverReminders makeMonivasPaid refreshReminders "
    "setRecentEditDate expenseChanged refreshDeviceInfoInDatabase updateSettingCopyToLocal "
    "importDataFromOutside ";
constexpr const char* kQuick = "refreshDeviceInfoInDatabase importDataFromOutside sendCrashLogMailIfNeed ";
constexpr const char* kBackground =
    "storeLastOpenAppDate checkDataFile updateRecentEditDateIfNeed showLockView saveToGroupPath checkpoint "
    "beginBackgroundTask backupToLocalIfNeed backupToiCloudIfNeed endBackgroundTask ";
constexpr const char* kForeground =
    "copyDatabaseIfNeed initDatabase insertAllCategoryIfNeed databaseFileCheck initCloud showTouchIDIfNeed "
    "appLaunched ";

TEST(StartUp, runsEverythingInItsOrder) {
  Program program;
  program.launch();
  EXPECT_EQ(program.takeSteps(), std::string(kLaunch) + kDaily);
  EXPECT_EQ(program.expenseChanged, 1);
  EXPECT_EQ(program.takeAsked(),
            "addexpense=Add Expense addincome=Add Income quickadd=Quick Add purchase array ");

  program.app.applicationDidEnterBackground();
  EXPECT_EQ(program.takeSteps(), kBackground);
  EXPECT_EQ(program.platform.userDefaults->dateForKey("lastOpenAppDate"), program.platform.now());
  EXPECT_EQ(program.rows("select value from monivaSys where key = 'recentEditDate'"), "2024-02-29 14:30:05");
  EXPECT_EQ(
      program.number("select count(*) from monivaSys where key = 'device_' || ?", {program.root.itsUDID()}),
      1);
  EXPECT_EQ(fs::file_size(program.dataFile().string() + "-wal"), 0U) << "the one file is complete";

  struct Case {
    const char* now;
    const char* steps;
    const char* why;
  };
  for (const auto& [now, steps, why] : {
           Case{"2024-02-29 23:59:59", kQuick, "the same day"},
           Case{"2024-03-01 00:00:00", kDaily, "a second later, the next one"},
           Case{"2024-02-29 12:00:00", kDaily, "left on a day the clock, set back, has not reached"},
       }) {
    program.setClock(now);
    program.returnToForeground();
    EXPECT_EQ(program.takeSteps(), std::string(kForeground) + steps) << why;
    program.app.applicationDidEnterBackground();
    EXPECT_EQ(program.takeSteps(), kBackground);
  }
  EXPECT_EQ(program.expenseChanged, 3);
}

TEST(StartUp, theFirstEditionHandsItsDataOver) {
  Program program;
  program.platform.info.edition = Edition::first;
  EXPECT_FALSE(program.app.applicationDidFinishLaunching()) << "it makes no store";
  EXPECT_EQ(program.takeSteps(), "excludePhotoFolder createMainWindow initDatabase ");
  fs::copy_file(MONIVA_TEMPLATE, program.dataFile());
  program.launch();
  EXPECT_EQ(
      program.takeSteps(),
      "excludePhotoFolder createMainWindow initDatabase exportMonivaDataOut initCloud createShortcutItems "
      "installRootViewController showLockView showTouchIDIfNeed " +
          std::string(kDaily));
  EXPECT_NE(program.takeAsked().find("cloud "), std::string::npos);
}

TEST(StartUp, givesCategoriesToAStoreItMade) {
  const char* const count = "select count(*) from category where type in (11, 12)";
  Program made;
  made.launch();
  EXPECT_GT(made.number(count), 100);
  EXPECT_TRUE(made.root.takeNotices().empty());

  Program found;
  fs::copy_file(MONIVA_TEMPLATE, found.dataFile());
  found.launch();
  EXPECT_EQ(found.number(count), 0) << "a store from elsewhere is as its person left it";

  Program without;
  const TemporaryFolder resources;
  fs::copy_file(MONIVA_TEMPLATE, resources / "db.sqlite");
  without.platform.directories.resources = resources.path();
  without.launch();
  EXPECT_EQ(without.number(count), 0);
  const auto notices = without.root.takeNotices();
  ASSERT_EQ(notices.size(), 1U) << "the launch went on";
  EXPECT_NE(notices[0].find("categories/en.json"), std::string::npos) << notices[0];
}

TEST(StartUp, asksForWhatIsSet) {
  Program program;
  program.launch();
  const TemporaryFolder group;
  fs::create_directory(group / "ledgora");
  program.platform.directories.groupContainer = group.path();
  program.platform.userDefaults->setString("1", "closeAppToTurnOniCloud");
  program.takeAsked();
  program.app.applicationDidEnterBackground();
  EXPECT_EQ(program.takeAsked(), "group ");
  program.returnToForeground();
  EXPECT_EQ(program.takeAsked(), "check array ");
  program.returnToForeground();
  EXPECT_EQ(program.takeAsked(), "array ") << "the check was asked for once";

  // While a replacement waits for the next launch, nothing is handed to the sibling.
  fs::copy_file(MONIVA_TEMPLATE, program.documents() / "backupBeforeUpdate.dat");
  program.app.applicationDidEnterBackground();
  EXPECT_EQ(program.takeAsked(), "");
}

TEST(StartUp, aDamagedFileIsSetAsideAndTheNextReturnMakesAStore) {
  Program program;
  program.launch();
  program.app.settle();
  MonivaAccount book(program.root);
  book.title = "Lost";
  book.aKind = kBookKind;
  ASSERT_TRUE(book.add());
  refreshUsingMonivaAccount(program.root);
  ASSERT_TRUE(program.db.checkpoint());
  std::fstream(program.dataFile(), std::ios::in | std::ios::out | std::ios::binary) << std::string(200, 'd');
  program.app.applicationDidEnterBackground();
  EXPECT_FALSE(fs::exists(program.dataFile()));
  EXPECT_TRUE(bytesOf(program.documents() / "moniva.dat.set-aside-20240229-133005").starts_with("ddd"));
  EXPECT_NE(program.takeFaults().find("===[DB Error] moniva.dat 已损坏:file is not a database"),
            std::string::npos);
  EXPECT_NE(program.root.takeNotices().at(0).find("'moniva.dat.set-aside-20240229-133005'"),
            std::string::npos);

  program.returnToForeground();
  program.app.settle();
  EXPECT_EQ(program.number("select count(*) from account"), 0);
  EXPECT_EQ(program.root.monivaAccount->pk, "") << "the book of the lost store is no current book";
}

TEST(StartUp, settlesWorkThatGoesBackAndForth) {
  Program program;
  program.launch();
  program.app.settle();
  std::string trace;
  auto& main = program.platform.mainQueue;
  main.dispatch([&] {
    program.db.dispatchInDatabase("Test", [&](Connection&) {
      program.platform.backgroundQueue.dispatch([&] { main.dispatch([&] { trace += "a"; }); });
    });
  });
  program.app.settle();
  EXPECT_EQ(trace, "a");
}

TEST(Passcode, keepsTheWorkAndTheFilesBackUntilItIsGiven) {
  Program program;
  const auto& defaults = *program.platform.userDefaults;
  program.platform.userDefaults->setString(" 1234 ", "Passcode");
  program.launch();
  EXPECT_EQ(program.takeSteps(), kLaunch);
  EXPECT_NE(program.takeAsked().find("lock touch "), std::string::npos);
  const auto file = program.documents() / "from mail.mvz";
  putBytes(file, "");
  EXPECT_TRUE(program.app.openURL("file://" + program.documents().string() + "/from%20mail.mvz"));
  for (const char* wrong : {"12345", "4321", ""}) EXPECT_FALSE(program.app.unlock(wrong)) << wrong;
  EXPECT_EQ(program.takeSteps() + program.takeAsked(), "");
  EXPECT_EQ(program.root.filepathOfMailImport, file.string());
  const std::string before = bytesOf(program.dataFile());
  EXPECT_FALSE(program.app.openURL("moniva2://resetdb"));
  EXPECT_EQ(bytesOf(program.dataFile()), before);

  program.app.applicationDidEnterBackground();
  program.takeSteps();
  EXPECT_EQ(defaults.dateForKey("lastOpenAppDate"), std::nullopt) << "what is locked was not opened today";
  program.returnToForeground();
  EXPECT_EQ(program.takeAsked().find("shared:"), std::string::npos);
  program.takeSteps();
  EXPECT_TRUE(program.app.unlock("1234"));
  EXPECT_EQ(program.takeSteps(), kDaily);
  EXPECT_NE(program.takeAsked().find("shared:from mail.mvz "), std::string::npos);
  EXPECT_EQ(program.root.filepathOfMailImport, "");

  program.app.applicationDidEnterBackground();
  EXPECT_TRUE(program.app.isLocked()) << "leaving locks again";
  EXPECT_EQ(defaults.dateForKey("lastOpenAppDate"), program.platform.now());
  program.platform.userDefaults->setObject("   ", "Passcode");
  EXPECT_FALSE(program.app.hasPasscode()) << "a blank one is none";
  program.platform.userDefaults->setObject(1234, "Passcode");
  EXPECT_TRUE(program.app.hasPasscode()) << "digits without quotes are one";
}

TEST(Urls, setWhatTheyAskFor) {
  Program program;
  program.launch();
  program.app.settle();
  struct Case {
    const char* url;
    const char* key;
  };
  for (const auto& [url, key] :
       {Case{"moniva2://sendlog", "sendLogNow"}, Case{"ledgora://fix", "crashNeedFix"},
        Case{"moniva2://fix2", "updateStringTypeDateField"}, Case{"moniva://fix3/?x#y", "fixAllRepeat"}}) {
    EXPECT_EQ(program.setting(key), std::nullopt);
    EXPECT_TRUE(program.app.openURL(url)) << url;
    EXPECT_EQ(program.setting(key), "1");
  }
  for (const std::string none : {"", "fix", "http://fix", "moniva2://fix4", "moniva2://quickadd-",
                                 "ledgora://trans_data_from_moniva1_icloud", "file:///no/such/file.mvk"}) {
    const auto refused = program.app.openURL(none);
    ASSERT_FALSE(refused) << none;
    const auto named = none.starts_with("file://") ? none.substr(7) : none;
    EXPECT_NE(refused.error().why.find("'" + named + "'"), std::string::npos) << refused.error().why;
  }
  EXPECT_EQ(program.root.filepathOfMailImport, "");
}

TEST(Urls, handDataIn) {
  struct Case {
    std::string url;
    const char* asked;
    bool kept = false;  ///< until the next opening, which tells of it
  };
  const TemporaryFolder inbox;
  const std::string folder = inbox.path().string();
  fs::create_directory(inbox / "my_data");
  for (const char* name : {"a.mvk", "moniva_data", "bä.mvz", "my_data/c.mvz", "d.pdf"})
    putBytes(inbox / name, "");
  for (const auto& [url, asked, kept] : {
           Case{"moniva2://trans_data_from_moniva1_icloud", "", true},
           Case{"moniva2://transdate_from_moniva1_group_path", "", true},
           Case{"file://" + folder + "/a.mvk", "backup:a.mvk "},
           Case{"file://" + folder + "/moniva_data", "backup:moniva_data "},
           Case{"FILE://localhost" + folder + "/b%C3%A4.mvz", "shared:bä.mvz "},
           Case{"file://" + folder + "/my_data/c.mvz", "shared:c.mvz "},
           Case{"file://" + folder + "/d.pdf", ""},
           Case{"moniva2://addexpense", "add:addexpense "},
           Case{"ledgora://quickadd-A", "add:quickadd-A "},
       }) {
    Program program;
    program.launch();
    program.takeAsked();
    EXPECT_TRUE(program.app.openURL(url)) << url;
    EXPECT_EQ(program.takeAsked(), asked) << url;
    EXPECT_EQ(program.root.filepathOfMailImport.empty(), !kept) << url;
    EXPECT_EQ(program.root.takeNotices().size(), url.ends_with("pdf") ? 1U : 0U);
    program.app.appLaunched();
    program.app.settle();
    EXPECT_EQ(program.root.filepathOfMailImport, "");
    EXPECT_EQ(program.root.takeNotices().size(), kept ? 1U : 0U) << url;
  }
  Program program;
  EXPECT_TRUE(program.app.performActionForShortcutItem("quickadd-9"));
  EXPECT_EQ(program.takeAsked(), "add:quickadd-9 ");
  for (const char* type : {"", "quickadd-", "addtransfer"}) {
    EXPECT_FALSE(program.app.performActionForShortcutItem(type)) << type;
  }
}

TEST(Urls, resetdbEmptiesTheStoreAndTellsTheScreens) {
  Program program;
  program.launch();
  MonivaAccount book(program.root);
  book.aKind = kBookKind;
  ASSERT_TRUE(book.add());
  refreshUsingMonivaAccount(program.root);
  int newFile = 0;
  const auto token = program.platform.notifications.observe("NewDatabaseFile", [&] { ++newFile; });
  EXPECT_TRUE(program.app.openURL("moniva2://resetdb"));
  EXPECT_EQ(program.number("select count(*) from account"), 0);
  EXPECT_EQ(program.root.monivaAccount->pk, "");
  EXPECT_EQ(newFile, 1);
  EXPECT_EQ(namesIn(program.documents(), "moniva.dat.set-aside").size(), 1U) << "what was there is kept";
}

TEST(CrashRecords, areToldOfOnceAndTheLogWhenAskedFor) {
  Program program;
  putBytes(program.documents() / "crash.txt", "it broke");
  const auto told = [&] {
    program.app.settle();
    const auto notices = program.root.takeNotices();
    EXPECT_LE(notices.size(), 1U);
    return notices.empty() ? std::string() : notices[0];
  };
  program.launch();
  const auto aside = program.documents() / "crash.txt.set-aside-20240229-133005";
  EXPECT_NE(told().find(aside.string()), std::string::npos);
  EXPECT_EQ(bytesOf(aside), "it broke");
  EXPECT_TRUE(program.app.openURL("moniva2://sendlog"));
  for (const bool asked : {true, false}) {
    program.app.appLaunched();
    EXPECT_EQ(told().find("no log to send") != std::string::npos, asked);
  }
}

}  // namespace
}  // namespace moniva
