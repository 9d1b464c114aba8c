#include "storage/do_db.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "platform/files.h"
#include "storage/transaction.h"
#include "storage/writes.h"
#include "support/device.h"

namespace moniva {
namespace {

bool contains(std::string_view text, std::string_view part) {
  return text.find(part) != std::string_view::npos;
}

constexpr const char* kNoConnection = "==[Error]: background thread with no qudb\n";

TEST(Connections, areHandedOutByThread) {
  Device device;
  EXPECT_EQ(device.db.getDatabase(), nullptr);
  EXPECT_TRUE(contains(device.takeFaults(), "==[Error]: main thread with no fmdb\n"));
  EXPECT_FALSE(device.db.inDatabase("Test", [](Connection&) { ADD_FAILURE(); }));
  EXPECT_TRUE(contains(device.takeFaults(), kNoConnection));
  device.open();
  EXPECT_TRUE(device.db.inDatabase("Test", [&](Connection& db) {
    EXPECT_EQ(device.db.getDatabase(), &db);
    EXPECT_TRUE(device.root.executeUpdate("insert into monivaSys (key) values ('block')"));
  }));
  EXPECT_EQ(device.rows("select key from monivaSys where value != '1'"), "block");
  device.platform.userDefaults->setString("person7", "userRecordID");
  std::thread([&] { EXPECT_FALSE(device.root.executeUpdate("delete from monivaSys")); }).join();
  const auto faults = device.takeFaults();
  for (const char* told : {kNoConnection, "userRecordID: person7", "Thursday, February 29, 2024 at 2:30:05"})
    EXPECT_TRUE(contains(faults, told)) << faults;
}

TEST(Connections, aSecondClassInABlockIsRefused) {
  Device device;
  device.open();
  std::string trace;
  EXPECT_TRUE(device.db.inDatabase("BillReport", [&](Connection& outer) {
    EXPECT_FALSE(device.db.inDatabase("DoDBSync", [&](Connection&) { trace += "?"; }));
    EXPECT_TRUE(device.db.inDatabase("BillReport", [&](Connection& inner) {
      trace += &inner == &outer ? "a" : "?";
    })) << "a class may nest its own blocks";
    EXPECT_EQ(device.db.getDatabase(), &outer) << "the refused one took nothing away";
    device.db.dispatchInDatabase("DoDBSync", [&](Connection&) { trace += "c"; });
    trace += "b";
  }));
  device.db.drain();
  EXPECT_EQ(trace, "abc") << "and comes after the block when it is handed in without waiting";
  EXPECT_TRUE(contains(device.takeFaults(),
                       "==[Error]: DB Error qudb 嵌套发生 当前class BillReport 申请calss DoDBSync\n"));
}

TEST(Connections, blocksHandedInBeforeTheClosingStillHaveTheirs) {
  Device device;
  device.open();
  for (int n = 0; n < 20; ++n) {
    device.db.dispatchInDatabase("Test", [&](Connection&) {
      EXPECT_TRUE(device.root.executeUpdate("insert into monivaSys (key) values ('block')"));
    });
  }
  device.open();
  EXPECT_EQ(device.number("select count(*) from monivaSys where value != '1'"), 20);
}

TEST(Connections, twoWriteAndReadSideBySideUnrefused) {
  Device device;
  device.open();
  constexpr int kTurns = 300;
  std::atomic<int> refused = 0;
  const auto before = device.root.newIdentifier();
  device.db.dispatchInDatabase("Test", [&](Connection& db) {
    for (int n = 0; n < kTurns; ++n) {
      Transaction transaction(db);
      const bool written = transaction.began() && db.execute("insert into photos (photoFull) values ('q')") &&
                           db.execute("update monivaSys set value = value + 1 where key = 'queue'") &&
                           transaction.commit();
      if (!written || device.root.newIdentifier() < before) ++refused;
      const ReadTransaction moment(db);
      auto run = db.query("select count(*), count(distinct photoFull) from photos");
      if (!run.next()) ++refused;
    }
  });
  for (int n = 0; n < kTurns; ++n) {
    if (!device.root.executeUpdate("insert into photos (photoFull) values ('m')")) ++refused;
    if (device.root.editStamp() < device.platform.now() || device.root.newIdentifier() < before) ++refused;
  }
  device.db.drain();
  EXPECT_EQ(refused, 0) << device.connection().lastErrorMessage();
  EXPECT_EQ(device.number("select count(*) from photos"), 2 * kTurns);
}

TEST(Opening, onlyReadsTheStoreOfANewerProgram) {
  for (const bool isLogged : {false, true}) {
    SCOPED_TRACE(isLogged ? "its log was left behind" : "complete");
    Device device;
    std::filesystem::copy_file(MONIVA_TEMPLATE, device.dataFile());
    const auto log = device.dataFile().string() + "-wal";
    {
      auto newer = *Connection::open(device.dataFile(), Connection::Access::readWrite);
      ASSERT_TRUE(
          newer->executeScript(isLogged ? "PRAGMA journal_mode = WAL; PRAGMA wal_autocheckpoint = 0" : ""));
      ASSERT_TRUE(newer->executeScript(
          "insert into transactions (eid, type, note) values ('a', 12, 'from the future');"
          "PRAGMA user_version = 2"));
      if (isLogged) std::filesystem::copy_file(log, log + ".kept");
      if (isLogged) std::filesystem::copy_file(device.dataFile(), device.dataFile().string() + ".kept");
    }
    if (isLogged) {
      std::filesystem::rename(log + ".kept", log);
      std::filesystem::rename(device.dataFile().string() + ".kept", device.dataFile());
    }
    const auto before = bytesOf(device.dataFile());
    const auto loggedBefore = isLogged ? bytesOf(log) : std::string();
    ASSERT_TRUE(device.root.copyDatabaseIfNeed());
    ASSERT_TRUE(device.db.initDatabase());
    EXPECT_TRUE(device.db.isReadOnly());
    {
      auto run = device.db.getDatabase()->query("select note from transactions");
      ASSERT_TRUE(run.next());
      EXPECT_EQ(run.text(0), "from the future");
    }
    const auto refused = atomically(device.root, [](Connection&) -> Result<> { return {}; });
    ASSERT_FALSE(refused);
    EXPECT_TRUE(contains(refused.error().why,
                         "written by a newer version of the program (kind 2; this one knows up to 1)"));
    EXPECT_FALSE(device.root.executeUpdate("update transactions set note = ''"));
    EXPECT_FALSE(device.root.setObject("1", "AutoBackup"));
    device.db.closeDatabase();
    EXPECT_EQ(bytesOf(device.dataFile()), before);
    EXPECT_EQ(isLogged ? bytesOf(log) : std::string(), loggedBefore);
  }
}

TEST(Opening, leavesAFileItCannotUseAsItIs) {
  struct Case {
    const char* why;
    std::function<void(const std::filesystem::path&)> make;
    const char* refusal;
  };
  const auto withPragma = [](const char* pragma) {
    return [pragma](const std::filesystem::path& path) {
      std::filesystem::copy_file(MONIVA_TEMPLATE, path);
      auto raw = Connection::open(path, Connection::Access::readWrite);
      ASSERT_TRUE((*raw)->executeScript(pragma));
    };
  };
  constexpr const char* kForeign = "is not a data file of this program";
  const Case cases[] = {
      {"another program's database", withPragma("PRAGMA application_id = 7"), kForeign},
      {"a database of other tables", withPragma("DROP TABLE transactions"), kForeign},
      {"a text", [](const auto& path) { putBytes(path, std::string(5000, 't')); }, kForeign},
      {"an empty file", [](const auto& path) { putBytes(path, ""); }, kForeign},
      {"a folder", [](const auto& path) { std::filesystem::create_directory(path); }, "cannot be opened"},
  };
  for (const auto& [why, make, refusal] : cases) {
    SCOPED_TRACE(why);
    Device device;
    make(device.dataFile());
    const auto before = bytesOf(device.dataFile());
    const auto copied = device.root.copyDatabaseIfNeed();
    ASSERT_TRUE(copied);
    const auto opened = device.db.initDatabase();
    ASSERT_FALSE(opened);
    EXPECT_TRUE(contains(opened.error().why, refusal)) << opened.error().why;
    EXPECT_TRUE(contains(opened.error().why, "'" + device.dataFile().string() + "'"));
    EXPECT_FALSE(device.db.isOpen());
    EXPECT_EQ(bytesOf(device.dataFile()), before);
    EXPECT_EQ(namesIn(device.documents()), (std::vector<std::string>{"moniva.dat", "moniva.dat.lock"}));
  }
}

TEST(Opening, anotherPathIsTakenOnlyWhenAStoreIsThere) {
  Device device;
  device.open();
  ASSERT_TRUE(device.sql("insert into monivaSys (key) values ('mine')"));
  putBytes(device.documents() / "text", "text");
  for (const char* name : {"missing", "text"}) {
    EXPECT_FALSE(device.db.setDatabasePath(device.documents() / name)) << name;
    EXPECT_EQ(device.db.databasePath(), device.dataFile());
    ASSERT_TRUE(device.db.isOpen()) << name;
    EXPECT_EQ(device.rows("select key from monivaSys where value != '1'"), "mine");
  }
  std::filesystem::copy_file(MONIVA_TEMPLATE, device.documents() / "other.dat");
  EXPECT_TRUE(device.db.setDatabasePath(device.documents() / "other.dat"));
  EXPECT_EQ(device.rows("select key from monivaSys where value != '1'"), "");

  // What is set aside or reset is the store in use, not the one of the default name.
  ASSERT_TRUE(device.root.resetDatabase());
  EXPECT_EQ(device.db.databasePath().filename(), "other.dat");
  EXPECT_EQ(device.root.setDatabaseAside().value().filename(), "other.dat.set-aside-20240229-133005-2");
  EXPECT_TRUE(std::filesystem::exists(device.dataFile()));

  EXPECT_TRUE(DoDB(device.platform, device.documents() / "missing").databasePath().empty());
  EXPECT_EQ(DoDB(device.platform, device.dataFile()).databasePath(), device.dataFile());
}

TEST(FaultLog, staysSmallAndOutOfBackups) {
  Device device;
  const auto file = device.db.faultLog().path();
  device.db.faultLog().line("one");
  // Whether the file system keeps the mark is its own affair; if it does, the log has it.
  putBytes(device.documents() / "trial", "");
  EXPECT_EQ(isExcludedFromBackup(file), excludeFromBackup(device.documents() / "trial"));
  putBytes(file, std::string(1'000'000, 'x'));
  device.db.faultLog().line("still added");
  EXPECT_GT(bytesOf(file).size(), 1'000'000U);
  device.db.faultLog().line("alone");
  EXPECT_LT(bytesOf(file).size(), 100U);
  EXPECT_TRUE(contains(device.takeFaults(), "alone"));
}

TEST(Data, isCountedAndClearedAsAWhole) {
  Device device;
  device.open();
  EXPECT_EQ(device.db.getTheFirstUsingDateOfApp(), std::nullopt);
  device.sql("insert into transactions (eid, type, editDate) values ('transfer', 33, 5000000)");
  EXPECT_TRUE(device.db.isEmpty()) << "a transfer alone is no use of the program";
  device.sql("insert into transactions (eid, type, editDate) values ('never', 12, 1000000)");
  EXPECT_FALSE(device.db.isEmpty());
  EXPECT_EQ(device.db.getTheFirstUsingDateOfApp(), Date{5000000}) << "1,000,000 is no stamp";

  device.sql("insert into photos (eid) values ('first')");
  EXPECT_TRUE(DoDB::makeAllDataDeleted(device.root));
  EXPECT_EQ(device.rows("select distinct deleted || ' ' || (editDate > 5000000) from transactions"), "4 1");
  EXPECT_EQ(device.rows("select deleted || ' ' || (datetime > 5000000) from photos"), "4 1");
  EXPECT_TRUE(device.db.deleteAllDataForever());
  EXPECT_EQ(device.number("select (select count(*) from transactions) + (select count(*) from photos)"), 0);
}

TEST(Data, theCurrencyListIsFilledOnce) {
  Device device;
  device.open();
  EXPECT_EQ(DoDB::getCurrencyList(device.root).size(), 10U);
  EXPECT_EQ(DoDB::getCurrencyList(device.root).size(), 10U);
  EXPECT_EQ(device.number("select count(distinct editDate) from category where parent = '_currency'"), 10);
  device.sql("update category set deleted = 1 where title != 'EUR'");
  EXPECT_EQ(DoDB::getCurrencyList(device.root), std::vector<std::string>{"EUR"});
}

}  // namespace
}  // namespace moniva
