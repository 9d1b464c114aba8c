#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "app/app_host.h"
#include "base/result.h"
#include "reports/bill_notification.h"
#include "storage/mv_app_root.h"

namespace moniva {

class MainAppDelegate;

/// One step of a sequence: its name, and what it does. A refusal ends the sequence.
struct Step {
  std::string_view name;
  Result<> (*run)(MainAppDelegate&);
};

/// What the work of a day came to: records made, of how many series, and pending ones settled.
struct DaysWork {
  int made = 0;
  int series = 0;
  int settled = 0;
};

/// Receives the program's life-cycle events and runs, in a fixed order, the work that belongs to each. The
/// orders are the tables of `start_up_steps.cpp`.
class MainAppDelegate {
 public:
  MainAppDelegate(MVAppRoot& root, AppHost& host);

  /// Launch. Without a passcode it goes on to `appLaunched`; with one it waits for `unlock`. Refused when the
  /// data file can be neither used nor made; nothing is open then.
  Result<> applicationDidFinishLaunching();
  Result<> applicationWillEnterForeground();
  /// Ends every stay in the foreground; leaves the one data file complete.
  void applicationDidEnterBackground();
  void applicationWillTerminate();

  /// Whether a passcode is set and has not been given since the launch or the last leave.
  bool isLocked() const { return locked_; }
  /// Gives the passcode; a right one runs `appLaunched` and answers true.
  bool unlock(std::string_view given);

  /// The data work after a launch and at every return: upgrades and upkeep on the first opening of a day, the
  /// device record otherwise, then data handed in from outside. Parts of it run in the background; `settle`
  /// waits for them.
  void appLaunched();
  /// Waits for the background work and runs what it handed to the main thread, until nothing is left.
  void settle();

  /// Acts on a URL: maintenance requests, markers of data to take over, files, quick actions. Refused for
  /// what the program has no action for.
  Result<> openURL(std::string_view url);
  /// A quick action or activity: "addexpense", "addincome", "quickadd", "quickadd-ID"; false for any other.
  bool performActionForShortcutItem(std::string_view type);
  bool doWithUserActivityWithType(std::string_view type);

  /// The last step of every return: takes what was handed in from outside, unless the lock is on; without
  /// any, asks the front end for files that wait elsewhere.
  void takeDataFromOutside();
  /// Takes what `filepathOfMailImport` names and clears it.
  void importDataFromOutside();
  /// Takes over the first edition's data file, and its photo database, from the folder the editions share,
  /// and brings it up to date. A store that has records in it is left as it is. What was done is told.
  void importDataFromMoniva1GroupPath();
  /// The device's own record in the store: what it runs and the day it was last in use. Written when that
  /// changed.
  void refreshDeviceInfoInDatabase(const std::string& udid);

  DaysWork daysWork;
  /// How the store was when bills were reminded of in this launch.
  std::optional<BillBasis> billsReminded;
  /// Launches and returns then leave the work that belongs to a day to another time: a front end wants to
  /// look at the store as it is.
  bool holdsDaysWorkBack = false;
  /// Called with each step's name before it runs, on the step's thread.
  std::function<void(std::string_view)> onStep;

  MVAppRoot& root() { return root_; }
  Platform& platform() { return root_.platform(); }
  AppHost& host() { return host_; }
  bool hasPasscode();
  /// Whether the work of a launch ran to its end since the program was last left: only then was the day's
  /// work done.
  bool wasLaunchedWhole() const { return launchedWhole_; }
  void setLaunchedWhole(bool whole) { launchedWhole_ = whole; }
  /// Runs the steps in order until one is refused.
  Result<> run(const std::vector<Step>& steps);

 private:
  MVAppRoot& root_;
  AppHost& host_;
  std::string passcode();

  bool locked_ = false;
  bool launchedWhole_ = false;
};

// The sequences, each a table of steps in order.
const std::vector<Step>& launchSteps(Edition edition);
const std::vector<Step>& quickReturnSteps();
/// The first opening of a day, up to where the upgrades run in the background, and what follows them.
const std::vector<Step>& dailySteps();
const std::vector<Step>& stepsAfterUpgrades();
const std::vector<Step>& foregroundSteps();
const std::vector<Step>& backgroundSteps();

}  // namespace moniva
