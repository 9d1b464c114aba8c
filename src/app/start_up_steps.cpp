// The order of everything the program does by itself: at launch, on the first opening of a day, on returning
// to the foreground and on leaving it. Steps that write have no effect in a store of a newer version.

#include "app/crash_record.h"
#include "app/do_db_updater.h"
#include "app/main_app_delegate.h"
#include "app/refresh_reminders.h"
#include "model/default_categories.h"
#include "model/moniva_account.h"
#include "platform/files.h"
#include "recurrence/do_db_recurring.h"
#include "recurrence/settle_due.h"
#include "reports/bill_report.h"
#include "storage/store_files.h"

namespace moniva {
namespace {

namespace fs = std::filesystem;

/// A step that is one call to the front end.
template <void (AppHost::*call)()>
Result<> ask(MainAppDelegate& app) {
  (app.host().*call)();
  return {};
}

template <void (AppHost::*call)()>
Result<> askWithPasscode(MainAppDelegate& app) {
  if (app.hasPasscode()) (app.host().*call)();
  return {};
}

Result<> excludePhotoFolder(MainAppDelegate& app) {
  const fs::path folder = app.platform().directories.documents / "zMYPR";
  std::error_code error;
  if (fs::is_directory(folder, error) && !isExcludedFromBackup(folder)) excludeFromBackup(folder);
  return {};
}

Result<> copyDatabase(MainAppDelegate& app) {
  return app.root().copyDatabaseIfNeed();
}

/// Runs the step unless the store is one of a newer version, which is only read.
template <Result<> (*step)(MainAppDelegate&)>
Result<> unlessReadOnly(MainAppDelegate& app) {
  return app.root().db().isReadOnly() ? Result<>() : step(app);
}

Result<> openDatabase(MainAppDelegate& app) {
  if (auto opened = app.root().db().initDatabase(); !opened) return opened;
  if (const auto& why = app.root().db().readOnlyReason()) app.root().addNotice("Note: {}.", *why);
  return {};
}

/// A store that this device made begins with categories; one that came from elsewhere is as its person left
/// it. Without them the program is of use all the same.
Result<> insertCategories(MainAppDelegate& app) {
  if (!app.platform().userDefaults->objectForKey("copyDataFile")) return {};
  if (auto added = insertAllCategoryIfNeed(app.root()); !added) app.root().addNotice(added.error());
  return {};
}

Result<> loadCurrentBook(MainAppDelegate& app) {
  refreshUsingMonivaAccount(app.root());
  return {};
}

/// The file may be another one than the one that was left: then its books are, too.
Result<> openDatabaseAgain(MainAppDelegate& app) {
  if (auto opened = openDatabase(app); !opened) return opened;
  const auto& book = app.root().monivaAccount;
  if (book && !MonivaAccount::getAccountWithPK(app.root(), book->pk)) refreshUsingMonivaAccount(app.root());
  return {};
}

Result<> offerShortcuts(MainAppDelegate& app) {
  app.host().createShortcutItems(
      {{"addexpense", "Add Expense"}, {"addincome", "Add Income"}, {"quickadd", "Quick Add"}});
  return {};
}

Result<> refreshDevice(MainAppDelegate& app) {
  app.refreshDeviceInfoInDatabase(app.root().itsUDID());
  return {};
}

/// What is kept here and in the store is brought together; no trouble with it is worth more than a word.
Result<> copySettings(MainAppDelegate& app) {
  if (auto done = updateSettingCopyToLocal(app.root()); !done) app.root().addNotice(done.error());
  return {};
}

Result<> refreshDeviceInBackground(MainAppDelegate& app) {
  const std::string udid = app.root().itsUDID();
  app.platform().backgroundQueue.dispatch([&app, udid] {
    app.root().db().inDatabase("MVAppRoot", [&](Connection&) { app.refreshDeviceInfoInDatabase(udid); });
  });
  return {};
}

/// A store that is still to be upgraded is left to the refresh that follows its upgrade.
Result<> remindOfBills(MainAppDelegate& app) {
  app.billsReminded.reset();
  app.platform().backgroundQueue.dispatch([&app] {
    app.root().db().inDatabase("BillReport", [&](Connection&) {
      if (lacksColumns(app.root())) return;
      if (auto done = BillReport::createBillNotifaction(app.root()); !done)
        return app.root().addNotice(done.error());
      if (auto basis = billBasis(app.root(), app.root().editStamp())) app.billsReminded = std::move(*basis);
    });
  });
  return {};
}

Result<> takeOutsideData(MainAppDelegate& app) {
  app.takeDataFromOutside();
  return {};
}

/// What could not be begun is tried again at the next start, so the day's work is not done yet then.
Result<> startUpgrades(MainAppDelegate& app) {
  if (app.root().db().isReadOnly()) return app.run(stepsAfterUpgrades());
  DoDBUpdater(app.root())
      .updateDatabaseIfNeed([&app](std::string_view title) { app.host().showProgressAlert(title); },
                            [&app](const Result<UpgradeOutcome>& outcome) {
                              tellUpgrade(app.root(), outcome);
                              const auto done = app.run(stepsAfterUpgrades());
                              if (!done) app.root().addNotice(done.error());
                              app.setLaunchedWhole(outcome && done);
                            });
  return {};
}

/// The current book may have got another key, or have gone.
Result<> reloadBlankBook(MainAppDelegate& app) {
  const auto& book = app.root().monivaAccount;
  const auto row = book ? MonivaAccount::getAccountWithPK(app.root(), book->pk) : std::nullopt;
  if (!row || row->pk.empty() || !row->isBook()) refreshUsingMonivaAccount(app.root());
  return {};
}

/// Trouble with a series or with settling does not keep the rest of the day's work back.
Result<> bringSeriesUpToDate(MainAppDelegate& app) {
  app.daysWork = {};
  const auto made = updateRecurringTransactionsWithFuture(app.root());
  if (!made) {
    app.root().addNotice(made.error());
    return {};
  }
  for (const auto& trouble : made->troubles) app.root().addNotice(trouble);
  app.daysWork = {.made = made->made, .series = made->series};
  return {};
}

Result<> settleWhatIsDue(MainAppDelegate& app) {
  auto& [made, series, settled] = app.daysWork;
  const auto count = makeMonivasPaid(app.root());
  if (!count) app.root().addNotice(count.error());
  settled = count.value_or(0);
  const Phrase added = made == 1     ? phrase("Added {} record of one series.", made)
                       : series == 1 ? phrase("Added {} records of one series.", made)
                                     : phrase("Added {} records of {} series.", made, series);
  const Phrase paid = settled == 1 ? phrase("Settled {} pending record that has come due.", settled)
                                   : phrase("Settled {} pending records that have come due.", settled);
  if (made > 0 && settled > 0) {
    app.root().addNotice(
        Phrase("{} {}", fmt::format("{} {}", added, paid), {phrasePart(added), phrasePart(paid)}));
  } else if (made + settled > 0) {
    app.root().addNotice(made > 0 ? added : paid);
  }
  return {};
}

Result<> keepReminders(MainAppDelegate& app) {
  const BillBasis* basis = app.billsReminded ? &*app.billsReminded : nullptr;
  if (auto kept = refreshReminders(app.root(), basis); !kept) {
    app.root().addNotice("Reminders could not be brought up to date: {}", kept.error());
  }
  return {};
}

Result<> setRecentEditDate(MainAppDelegate& app) {
  app.root().recentEditDate = app.root().editStamp();
  return {};
}

Result<> postExpenseChanged(MainAppDelegate& app) {
  app.platform().notifications.post(notification::kExpenseChanged);
  return {};
}

Result<> checkFileAfterCloudSwitch(MainAppDelegate& app) {
  auto& defaults = *app.platform().userDefaults;
  if (defaults.objectForKey("closeAppToTurnOniCloud")) {
    app.host().databaseFileCheck();
    defaults.removeObjectForKey("closeAppToTurnOniCloud");
  }
  return {};
}

Result<> startPhotoSync(MainAppDelegate& app) {
  if (app.platform().cloud->isSignedIn()) app.host().initCloud();
  return {};
}

Result<> launched(MainAppDelegate& app) {
  app.appLaunched();
  return {};
}

/// Not when the day's work was not done (behind the lock, or refused): it would be taken for done till
/// tomorrow.
Result<> storeLastOpenAppDate(MainAppDelegate& app) {
  auto& defaults = *app.platform().userDefaults;
  if (app.wasLaunchedWhole()) defaults.setDate(app.root().now(), "lastOpenAppDate");
  if (auto saved = defaults.synchronize(); !saved) app.root().addNotice(saved.error());
  return {};
}

/// A damaged file goes from its path, so that the next foreground makes or restores a store; it is kept
/// beside it. A file that merely cannot be told of now (in use, unreadable) stays.
Result<> checkDataFile(MainAppDelegate& app) {
  const fs::path path = app.root().db().databasePath();
  if (path.empty() || app.root().db().databaseIsAvailable(path)) return {};
  std::string why;
  if (availabilityOf(path, why) != Availability::damaged) return {};
  if (auto aside = app.root().setDatabaseAside(); !aside) app.root().addNotice(aside.error());
  return {};
}

Result<> stampRecentEdit(MainAppDelegate& app) {
  if (app.root().db().isOpen()) app.root().updateRecentEditDateIfNeed();
  return {};
}

Result<> saveForSibling(MainAppDelegate& app) {
  const auto& directories = app.platform().directories;
  std::error_code error;
  if (app.platform().info.edition == Edition::second &&
      !fs::exists(directories.documents / "backupBeforeUpdate.dat", error) &&
      !directories.groupContainer.empty() &&
      fs::is_directory(directories.groupContainer / "ledgora", error)) {
    app.host().saveToGroupPath();
  }
  return {};
}

Result<> completeDataFile(MainAppDelegate& app) {
  if (app.root().db().isOpen()) app.root().db().checkpoint();
  return {};
}

Result<> beginBackgroundTask(MainAppDelegate& app) {
  if (app.root().taskID != 0) return {};
  app.root().taskID = app.platform().backgroundTasks->begin([&app](double remaining) {
    if (app.root().taskID == 0) return;
    app.platform().log.line(fmt::format(
        " ==[MVAppRoot backupToiCloudIfNeed] 休眠 后台上传备份 太久，系统强行中止。{:f}", remaining));
    app.platform().backgroundTasks->end(app.root().taskID);
    app.root().taskID = 0;
  });
  return {};
}

Result<> endBackgroundTask(MainAppDelegate& app) {
  if (app.root().taskID != 0) app.platform().backgroundTasks->end(app.root().taskID);
  app.root().taskID = 0;
  return {};
}

Result<> reportCrash(MainAppDelegate& app) {
  sendCrashLogMailIfNeed(app.root());
  return {};
}

}  // namespace

const std::vector<Step>& launchSteps(Edition edition) {
  static const std::vector<Step> firstEdition = {
      {"excludePhotoFolder", excludePhotoFolder},
      {"createMainWindow", ask<&AppHost::createMainWindow>},
      {"initDatabase", openDatabase},
      {"exportMonivaDataOut", ask<&AppHost::exportMonivaDataOut>},
      {"initCloud", ask<&AppHost::initCloud>},
      {"createShortcutItems", offerShortcuts},
      {"installRootViewController", ask<&AppHost::installRootViewController>},
      {"showLockView", askWithPasscode<&AppHost::showLockView>},
      {"showTouchIDIfNeed", askWithPasscode<&AppHost::showTouchIDIfNeed>},
  };
  static const std::vector<Step> laterEditions = {
      {"excludePhotoFolder", excludePhotoFolder},
      {"createMainWindow", ask<&AppHost::createMainWindow>},
      {"copyDatabaseIfNeed", copyDatabase},
      {"initDatabase", openDatabase},
      {"insertAllCategoryIfNeed", unlessReadOnly<insertCategories>},
      {"refreshUsingMonivaAccount", loadCurrentBook},
      {"createShortcutItems", offerShortcuts},
      {"startPurchaseManager",
       [](MainAppDelegate& app) -> Result<> {
         if (app.platform().info.edition == Edition::second) app.host().startPurchaseManager();
         return {};
       }},
      {"installRootViewController", ask<&AppHost::installRootViewController>},
      {"showLockView", askWithPasscode<&AppHost::showLockView>},
      {"showTouchIDIfNeed", askWithPasscode<&AppHost::showTouchIDIfNeed>},
  };
  return edition == Edition::first || edition == Edition::firstTablet ? firstEdition : laterEditions;
}

const std::vector<Step>& quickReturnSteps() {
  static const std::vector<Step> steps = {
      {"refreshDeviceInfoInDatabase", unlessReadOnly<refreshDeviceInBackground>},
      {"importDataFromOutside", takeOutsideData},
      {"sendCrashLogMailIfNeed", reportCrash},
  };
  return steps;
}

const std::vector<Step>& dailySteps() {
  static const std::vector<Step> steps = {
      {"createBillNotifaction", unlessReadOnly<remindOfBills>},
      {"updateDatabaseIfNeed", startUpgrades},
      {"sendCrashLogMailIfNeed", reportCrash},
  };
  return steps;
}

const std::vector<Step>& stepsAfterUpgrades() {
  static const std::vector<Step> steps = {
      {"closeProgressAlert", ask<&AppHost::closeProgressAlert>},
      {"reloadBlankBook", reloadBlankBook},
      {"updateRecurringTransactionsWithFuture", unlessReadOnly<bringSeriesUpToDate>},
      // What is settled is not reminded of any more.
      {"deliverReminders", ask<&AppHost::deliverReminders>},
      {"makeMonivasPaid", unlessReadOnly<settleWhatIsDue>},
      {"refreshReminders", unlessReadOnly<keepReminders>},
      {"setRecentEditDate", unlessReadOnly<setRecentEditDate>},
      {"expenseChanged", postExpenseChanged},
      {"refreshDeviceInfoInDatabase", unlessReadOnly<refreshDevice>},
      {"updateSettingCopyToLocal", unlessReadOnly<copySettings>},
      {"importDataFromOutside", takeOutsideData},
  };
  return steps;
}

const std::vector<Step>& foregroundSteps() {
  static const std::vector<Step> steps = {
      {"copyDatabaseIfNeed", copyDatabase},
      {"initDatabase", openDatabaseAgain},
      {"insertAllCategoryIfNeed", unlessReadOnly<insertCategories>},
      {"databaseFileCheck", checkFileAfterCloudSwitch},
      {"initCloud", startPhotoSync},
      {"showTouchIDIfNeed", askWithPasscode<&AppHost::showTouchIDIfNeed>},
      {"appLaunched", launched},
  };
  return steps;
}

const std::vector<Step>& backgroundSteps() {
  static const std::vector<Step> steps = {
      {"storeLastOpenAppDate", storeLastOpenAppDate},
      {"checkDataFile", unlessReadOnly<checkDataFile>},
      {"updateRecentEditDateIfNeed", unlessReadOnly<stampRecentEdit>},
      {"showLockView", askWithPasscode<&AppHost::showLockView>},
      {"saveToGroupPath", saveForSibling},
      {"checkpoint", completeDataFile},
      {"beginBackgroundTask", beginBackgroundTask},
      {"backupToLocalIfNeed", ask<&AppHost::backupToLocalIfNeed>},
      {"backupToiCloudIfNeed", ask<&AppHost::backupToiCloudIfNeed>},
      {"endBackgroundTask", endBackgroundTask},
  };
  return steps;
}

}  // namespace moniva
