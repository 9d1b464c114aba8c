#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace moniva {

/// A quick action the platform offers beside the program's icon.
struct ShortcutItem {
  std::string type;
  std::string title;
};

/// What the start-up asks of the front end: screens, prompts and services a host may or may not have. A front
/// end overrides what it can show; the rest stays without effect.
class AppHost {
 public:
  virtual ~AppHost() = default;

  virtual void createMainWindow() {}
  virtual void createShortcutItems(const std::vector<ShortcutItem>&) {}
  virtual void startPurchaseManager() {}
  virtual void installRootViewController() {}
  virtual void showLockView() {}
  virtual void showTouchIDIfNeed() {}
  /// A first-edition program hands its data over to the newer one.
  virtual void exportMonivaDataOut() {}
  virtual void initCloud() {}
  virtual void databaseFileCheck() {}
  virtual void showProgressAlert(std::string_view) {}
  virtual void closeProgressAlert() {}
  /// Show the notifications whose time has come, where the platform does not by itself.
  virtual void deliverReminders() {}
  /// The screen to add a record: "addexpense", "addincome", "quickadd", or "quickadd-" and a template's id.
  virtual void showAddTransaction(std::string_view) {}
  /// Ask, then restore a backup file.
  virtual void showALertWhenImportDataBackup(const std::filesystem::path&) {}
  /// Ask, then import shared data.
  virtual void showALertWhenImportSharedData(const std::filesystem::path&) {}
  virtual void importDataFromArrayIfNeedAfterLaunch() {}
  virtual void saveToGroupPath() {}
  virtual void backupToLocalIfNeed() {}
  virtual void backupToiCloudIfNeed() {}
};

}  // namespace moniva
