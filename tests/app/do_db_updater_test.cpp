#include <gtest/gtest.h>
#include <sys/wait.h>

#include "app/do_db_updater.h"
#include "app/main_app_delegate.h"
#include "storage/writes.h"
#include "support/device.h"

namespace moniva {
namespace {

namespace fs = std::filesystem;

constexpr const char* kCopy = "backupBeforeUpdate.dat";
constexpr const char* kKept = "moniva-before-upgrade.dat.set-aside-20240229-133005";

Result<> note(MVAppRoot& root, const char* title) {
  EXPECT_TRUE(fs::exists(root.platform().directories.documents / kCopy)) << title;
  return write(root, "insert into account (title) values (?)", title);
}
Result<> first(MVAppRoot& root) {
  return note(root, "first");
}
Result<> failing(MVAppRoot& root) {
  if (auto noted = note(root, "half"); !noted) return noted;
  return refuse("it broke");
}
Result<> idle(MVAppRoot&) {
  return {};
}
Result<> dying(MVAppRoot& root) {
  note(root, "spoilt");
  ::_exit(0);
}

UpgradeStep step(int code, const char* key, Result<> (*run)(MVAppRoot&)) {
  return {.code = code, .name = key, .purpose = key, .key = key, .run = run};
}
UpgradeStep request(int code, const char* key, Result<> (*run)(MVAppRoot&)) {
  return {.code = code, .name = key, .purpose = key, .key = key, .byRequest = true, .run = run};
}

/// An open store, as a new one is.
struct OpenStore : Device {
  explicit OpenStore(const fs::path& folder = {}) : Device("Europe/Berlin", folder) { open(); }
  std::string titles() { return rows("select title from account order by eid"); }
  std::string flags(const char* like = "flag%") {
    return rows("select key || '=' || value from monivaSys where key like ? order by rowid", {like});
  }
  std::string copies() { return fmt::format("{}", fmt::join(namesIn(documents(), "moniva-before"), " ")); }
};

std::string codes(const Result<UpgradeOutcome>& outcome) {
  return outcome ? fmt::format("{}", fmt::join(outcome->run, " ")) : outcome.error().why;
}

TEST(Upgrades, areDueInTheirOrder) {
  OpenStore store;
  DoDBUpdater updater(store.root);
  const auto due = [&] { return fmt::format("{}", fmt::join(updater.needUpdateDB(), " ")); };
  const auto before = store.connection().totalChanges();
  EXPECT_EQ(due(), "") << "a new store needs nothing";
  EXPECT_EQ(codes(updater.run()), "");
  EXPECT_EQ(store.connection().totalChanges(), before) << "nor is anything written to it";

  for (const char* key : {"fixAllRepeat", "crashNeedFix", "updateStringTypeDateField"}) {
    store.platform.userDefaults->setString("1", key);
  }
  store.sql("delete from monivaSys");
  EXPECT_EQ(due(), "0 1 2 3 7 8 9 10 11 14 5 6 13");
  // A key may have several rows, and a value that is not '1'.
  store.sql(
      "insert into monivaSys (key, value, editDate) values ('updateCategoryPK', '1', 5), ('updateCategoryPK',"
      " '0', 6), ('updateRepeatSeedTransaction', '0', 5), ('updateRepeatSeedTransaction', '1', 6),"
      " ('clearWrongRecurringItem2', '', 0), ('updateNOCategoryTitle', '1', 0)");
  EXPECT_EQ(due(), "0 2 7 8 9 10 11 14 5 6 13");
}

TEST(Upgrades, oneThatFailsIsUndoneAndTheOthersGoOn) {
  OpenStore store;
  store.sql("insert into monivaSys (key, value) values ('flagA', '0'), ('flagA', 'x')");
  store.platform.userDefaults->setString("1", "askB");
  store.platform.userDefaults->setString("1", "askF");
  const std::vector<UpgradeStep> steps = {step(1, "flagA", first), step(2, "flagF", failing),
                                          step(3, "flagB", first), request(4, "askF", failing),
                                          request(5, "askB", first)};
  DoDBUpdater updater(store.root, steps);
  const auto outcome = updater.run();
  EXPECT_EQ(codes(outcome), "1 3 5");
  ASSERT_EQ(outcome->failed.size(), 2U);
  EXPECT_EQ(outcome->failed[1].name, "askF");
  EXPECT_EQ(outcome->changed, 3) << "without the flags";
  EXPECT_EQ(store.titles(), "first\nfirst\nfirst");
  EXPECT_EQ(store.flags(), "flagA=1\nflagB=1") << "one row each";
  EXPECT_EQ(updater.needUpdateDB(), (std::vector<std::string>{"2", "4"}));
  EXPECT_FALSE(fs::exists(store.documents() / kCopy));
  EXPECT_EQ(outcome->copy, store.documents() / kKept);
  store.root.takeNotices();
  tellUpgrade(store.root, outcome);
  EXPECT_EQ(store.root.takeNotices().size(), 3U) << "two failures, and where the copy is";
  ASSERT_TRUE(store.db.setDatabasePath(outcome->copy));
  EXPECT_EQ(store.titles() + store.flags(), "flagA=0\nflagA=x") << "the store as it was";
}

TEST(Upgrades, leaveNoCopyOfWhatTheyDidNotChange) {
  OpenStore store;
  const std::vector<UpgradeStep> steps = {step(1, "flagA", idle)};
  DoDBUpdater updater(store.root, steps);
  EXPECT_EQ(codes(updater.run()), "1");
  EXPECT_EQ(store.flags() + store.copies(), "flagA=1");
  EXPECT_FALSE(fs::exists(store.documents() / kCopy));
  EXPECT_EQ(codes(updater.run()), "") << "once";
}

TEST(Upgrades, leaveNoCopyOfWhatCouldNotBeDone) {
  OpenStore store;
  const std::vector<UpgradeStep> steps = {step(1, "flagF", failing), step(2, "flagG", failing)};
  DoDBUpdater updater(store.root, steps);
  EXPECT_EQ(updater.run()->failed.size(), 2U);
  EXPECT_EQ(store.titles() + store.copies(), "") << "undone: there is nothing to go back to";

  // A program that knows nothing of our lock is writing: no step waits for it after the first has.
  auto other = Connection::open(store.dataFile(), Connection::Access::readWrite);
  ASSERT_TRUE((*other)->execute("BEGIN IMMEDIATE"));
  store.connection().setPatience(5);
  EXPECT_NE(codes(updater.run()).find("in use by another program"), std::string::npos);
  EXPECT_EQ(store.copies(), "");
  EXPECT_FALSE(fs::exists(store.documents() / kCopy));
}

TEST(Upgrades, doNothingWhereTheyCannotBeTakenBack) {
  OpenStore store;
  const std::vector<UpgradeStep> steps = {step(1, "flagA", first)};
  DoDBUpdater updater(store.root, steps);
  struct Case {
    const char* why;
    std::function<void()> spoil;
    const char* said;
  };
  std::optional<OpenStore> other;
  for (const auto& [why, spoil, said] : {
           Case{"another program runs", [&] { other.emplace(store.documents()); },
                "in use by another program"},
           Case{"a replacement waits already",
                [&] {
                  other.reset();
                  putBytes(store.documents() / kCopy, "waits");
                },
                "at the next start"},
           Case{"no copy can be made",
                [&] {
                  fs::remove(store.documents() / kCopy);
                  fs::create_directories(store.documents() / (std::string(kCopy) + ".building") / "x");
                },
                "cannot"},
       }) {
    spoil();
    const auto before = store.connection().totalChanges();
    EXPECT_NE(codes(updater.run()).find(said), std::string::npos) << why << ": " << codes(updater.run());
    EXPECT_EQ(store.connection().totalChanges(), before) << why;
    EXPECT_EQ(store.copies(), "") << why;
  }
  fs::remove_all(store.documents() / (std::string(kCopy) + ".building"));
  EXPECT_EQ(codes(updater.run()), "1") << "and then it can";
}

TEST(Upgrades, aRunCutShortIsTakenBackAtTheNextLaunch) {
  const TemporaryFolder folder;
  const pid_t child = ::fork();
  if (child == 0) {
    OpenStore store(folder.path());
    const std::vector<UpgradeStep> steps = {step(1, "flagA", first), step(2, "flagB", dying)};
    DoDBUpdater(store.root, steps).run();
    ::_exit(1);
  }
  int status = -1;
  ::waitpid(child, &status, 0);
  ASSERT_EQ(status, 0);
  ASSERT_TRUE(fs::exists(folder / kCopy));
  OpenStore store(folder.path());
  EXPECT_EQ(store.titles() + store.flags(), "") << "the steps that had ended are taken back too";
  EXPECT_FALSE(fs::exists(folder / kCopy));
  EXPECT_EQ(store.root.takeNotices().size(), 1U);
  const std::vector<UpgradeStep> steps = {step(1, "flagA", first), step(2, "flagB", first)};
  EXPECT_EQ(codes(DoDBUpdater(store.root, steps).run()), "1 2");
}

TEST(Upgrades, runInTheBackgroundAndReportOnTheMainThread) {
  OpenStore store;
  const std::vector<UpgradeStep> steps = {step(1, "flagA", first)};
  std::string heard;
  for (int round = 0; round < 2; ++round) {
    DoDBUpdater(store.root, steps)
        .updateDatabaseIfNeed([&](std::string_view title) { heard += std::string(title) + " "; },
                              [&](const Result<UpgradeOutcome>& outcome) {
                                EXPECT_TRUE(store.platform.mainQueue.isMainThread());
                                heard += "[" + codes(outcome) + "] ";
                              });
    store.platform.backgroundQueue.drain();
    store.platform.mainQueue.runPending();
  }
  EXPECT_EQ(heard, "updateData [1] [] ") << "nothing is shown when there is nothing to do";
}

TEST(Upgrades, belongToTheFirstOpeningOfADay) {
  OpenStore store;
  AppHost host;
  MainAppDelegate app(store.root, host);
  store.sql("delete from monivaSys where key = 'updateNOCategoryTitle'");
  app.holdsDaysWorkBack = true;
  app.appLaunched();
  app.settle();
  EXPECT_EQ(store.flags("updateNO%"), "") << "held back";
  app.holdsDaysWorkBack = false;
  app.appLaunched();
  app.settle();
  EXPECT_EQ(store.flags("updateNO%"), "updateNOCategoryTitle=1");
  EXPECT_TRUE(app.wasLaunchedWhole());

  // What another program kept from being begun is not taken for done till tomorrow.
  store.sql("delete from monivaSys where key = 'updateNOCategoryTitle'");
  store.root.takeNotices();
  std::optional<OpenStore> other(store.documents());
  app.appLaunched();
  app.settle();
  EXPECT_FALSE(app.wasLaunchedWhole());
  EXPECT_NE(store.root.takeNotices().at(0).find("tried again at the next start"), std::string::npos);
}

TEST(FirstEdition, itsDataIsTakenOverByAnEmptyStore) {
  const TemporaryFolder group;
  {
    OpenStore older(group.path());
    older.sql("insert into account (title) values ('theirs')");
  }
  putBytes(group / "monivaPhoto.dat", "photos");
  for (const bool empty : {true, false}) {
    OpenStore store;
    if (!empty) store.sql("insert into transactions (eid, type) values ('mine', 12)");
    AppHost host;
    MainAppDelegate app(store.root, host);
    store.platform.directories.groupContainer = group.path();
    store.root.takeNotices();
    app.importDataFromMoniva1GroupPath();
    EXPECT_EQ(store.titles(), empty ? "theirs" : "");
    EXPECT_EQ(bytesOf(store.documents() / "monivaPhoto.dat"), empty ? "photos" : "");
    EXPECT_EQ(namesIn(store.documents(), "moniva.dat.set-aside").size(), empty ? 1U : 0U);
    EXPECT_EQ(store.root.takeNotices().size(), 1U);
  }
}

}  // namespace
}  // namespace moniva
