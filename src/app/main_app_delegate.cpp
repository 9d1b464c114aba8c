#include "app/main_app_delegate.h"

#include <boost/json.hpp>
#include <chrono>

#include "base/text.h"
#include "calendar/date_texts.h"
#include "storage/transaction.h"

namespace moniva {

MainAppDelegate::MainAppDelegate(MVAppRoot& root, AppHost& host) : root_(root), host_(host) {}

Result<> MainAppDelegate::run(const std::vector<Step>& steps) {
  for (const Step& step : steps) {
    if (onStep) onStep(step.name);
    if (auto done = step.run(*this); !done) return done;
  }
  return {};
}

std::string MainAppDelegate::passcode() {
  const auto set = platform().userDefaults->objectForKey("Passcode");
  if (!set || set->is_null()) return {};
  // A number that was written without its quotes is a passcode too.
  const std::string text = set->is_string() ? std::string(set->get_string()) : boost::json::serialize(*set);
  return std::string(trimBlanks(text));
}

bool MainAppDelegate::hasPasscode() {
  return !passcode().empty();
}

Result<> MainAppDelegate::applicationDidFinishLaunching() {
  if (auto done = run(launchSteps(platform().info.edition)); !done) return done;
  locked_ = hasPasscode();
  if (!locked_) appLaunched();
  return {};
}

Result<> MainAppDelegate::applicationWillEnterForeground() {
  // The store is about to be opened anew; nothing may be at work in it.
  settle();
  return run(foregroundSteps());
}

void MainAppDelegate::applicationDidEnterBackground() {
  settle();
  locked_ = hasPasscode();
  if (auto done = run(backgroundSteps()); !done) root_.addNotice(done.error());
  launchedWhole_ = false;
}

void MainAppDelegate::applicationWillTerminate() {
  if (auto saved = platform().userDefaults->synchronize(); !saved) root_.addNotice(saved.error());
}

bool MainAppDelegate::unlock(std::string_view given) {
  if (trimBlanks(given) != passcode()) return false;
  locked_ = false;
  appLaunched();
  return true;
}

void MainAppDelegate::appLaunched() {
  if (holdsDaysWorkBack) return;
  const auto last = platform().userDefaults->dateForKey("lastOpenAppDate");
  const bool isQuickReturn = last && root_.calendar().isToday(*last, root_.now());
  const auto done = run(isQuickReturn ? quickReturnSteps() : dailySteps());
  if (!done) root_.addNotice(done.error());
  if (isQuickReturn) launchedWhole_ = done.has_value();
}

void MainAppDelegate::settle() {
  // Background work goes through the database queue and back, and ends in work for the main thread, which may
  // start some again.
  do {
    // Long work there tells how it fares.
    while (!platform().backgroundQueue.drainWithin(std::chrono::milliseconds(200))) {
      platform().mainQueue.runPending();
    }
    root_.db().drain();
    platform().backgroundQueue.drain();
  } while (platform().mainQueue.runPending());
}

void MainAppDelegate::refreshDeviceInfoInDatabase(const std::string& udid) {
  Connection* db = root_.db().getDatabase();
  if (db == nullptr) return;
  const std::string key = "device_" + udid;
  const std::string record = boost::json::serialize(boost::json::object{
      {"device", udid},
      {"version", platform().info.version},
      {"lastDay", integerDateOfTimeZone(root_.calendar(), root_.now())},
  });
  {
    Run run = db->query("select value from monivaSys where key = ? order by editDate DESC limit 1", {key});
    if (run.next() && run.text(0) == record) return;
  }
  Transaction transaction(*db);
  if (transaction.began() && root_.executeUpdate("delete from monivaSys where key = ?", key) &&
      root_.executeUpdate("insert into monivaSys (value,key,editDate) values(?,?,?)", record, key,
                          root_.editStamp())) {
    transaction.commit();
  }
}

}  // namespace moniva
