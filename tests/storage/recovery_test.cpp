#include <gtest/gtest.h>
#include <sys/wait.h>

#include <functional>
#include <future>

#include "platform/files.h"
#include "storage/store_files.h"
#include "storage/transaction.h"
#include "support/device.h"

namespace moniva {
namespace {

namespace fs = std::filesystem;

/// Makes a store at the path that holds one setting of that name; in rollback mode, as older programs had it.
void makeStore(const fs::path& path, std::string_view mark, bool rollback = false) {
  fs::copy_file(MONIVA_TEMPLATE, path);
  auto raw = Connection::open(path, Connection::Access::readWrite);
  ASSERT_TRUE(raw);
  ASSERT_TRUE((*raw)->execute(rollback ? "PRAGMA journal_mode = DELETE" : "PRAGMA journal_mode = WAL"));
  ASSERT_TRUE((*raw)->execute("insert into monivaSys (key) values (?)", {mark}));
}

std::string marks(Device& device) {
  return device.rows("select key from monivaSys where value != '1' order by key");
}

/// Leaves the store at the path with a hot rollback journal: a program died in the middle of a transaction
/// whose pages had already been spilled to the file.
void dieWhileWriting(const fs::path& path) {
  const pid_t child = ::fork();
  if (child == 0) {
    auto raw = Connection::open(path, Connection::Access::readWrite);
    if (!raw) ::_exit(2);
    Connection& db = **raw;
    db.executeScript("PRAGMA cache_size = 5; PRAGMA cache_spill = ON; BEGIN");
    for (int n = 0; n < 500; ++n) {
      db.execute("insert into monivaSys (key, value) values ('half', ?)", {std::string(400, 'x')});
    }
    db.execute("update monivaSys set key = 'spoilt' where key != 'half'");
    ::_exit(db.lastErrorCode() == 0 ? 0 : 3);
  }
  int status = -1;
  ::waitpid(child, &status, 0);
  ASSERT_EQ(status, 0);
  ASSERT_GT(fs::file_size(path.string() + "-journal"), 512U);
}

const std::string kAside = "moniva.dat.set-aside-20240229-133005";
constexpr const char* kCopy = "backupBeforeUpdate.dat";

TEST(Recovery, aFirstRunCopiesTheTemplate) {
  Device device;
  const auto resources = std::exchange(device.platform.directories.resources, "/nothing here");
  const auto refused = device.root.copyDatabaseIfNeed();
  ASSERT_FALSE(refused);
  EXPECT_NE(refused.error().why.find("/nothing here/db.sqlite"), std::string::npos) << refused.error().why;
  device.platform.directories.resources = resources;
  putBytes(device.dataFile().string() + "-wal", "of a store long gone");
  device.open();
  EXPECT_EQ(device.platform.userDefaults->stringForKey("copyDataFile"), "1");
  EXPECT_EQ(namesIn(device.documents(), "moniva.dat-wal.set").size(), 1U);
  device.sql("insert into monivaSys (key) values ('kept')");
  device.open();
  EXPECT_EQ(marks(device), "kept") << "and only the first";
}

TEST(Recovery, tablesGetTheirNamesBack) {
  for (const bool foreign : {false, true}) {
    Device device;
    makeStore(device.dataFile(), "kept");
    {
      auto raw = Connection::open(device.dataFile(), Connection::Access::readWrite);
      ASSERT_TRUE(
          (*raw)->executeScript("alter table transactions rename to transactions_old; alter table monivaSys "
                                "rename to monivaSys_old"));
      if (foreign) (*raw)->execute("PRAGMA application_id = 7");
      (*raw)->checkpoint();
    }
    const auto before = bytesOf(device.dataFile());
    std::string why;
    EXPECT_EQ(availabilityOf(device.dataFile(), why),
              foreign ? Availability::damaged : Availability::available);
    if (foreign) {
      EXPECT_FALSE(device.db.initDatabase());
      EXPECT_EQ(bytesOf(device.dataFile()), before) << "another program's";
    } else {
      device.open();
      EXPECT_EQ(marks(device), "kept");
    }
  }
}

TEST(Recovery, aCopyIntoAFileInUseIsNoCopy) {
  Device device;
  device.open();
  makeStore(device.documents() / "other", "theirs", true);
  auto other = Connection::open(device.documents() / "other", Connection::Access::readWrite);
  ASSERT_TRUE((*other)->execute("BEGIN IMMEDIATE"));
  EXPECT_FALSE(device.connection().copyInto(device.documents() / "other"));
}

TEST(Recovery, aSafetyCopyThatIsNoFileIsSetAside) {
  for (const bool folder : {true, false}) {
    Device device;
    makeStore(device.dataFile(), "stays");
    if (folder) {
      fs::create_directory(device.documents() / kCopy);
    } else {
      fs::create_symlink("/nothing here", device.documents() / kCopy);
    }
    device.open();
    EXPECT_EQ(marks(device), "stays");
    EXPECT_EQ(namesIn(device.documents(), std::string(kCopy) + ".set-aside").size(), 1U);
    EXPECT_EQ(device.root.takeNotices().size(), 1U);
  }
}

TEST(Recovery, aHotJournalIsAppliedAndAStaleOneGoes) {
  for (const bool hot : {true, false}) {
    Device device;
    makeStore(device.dataFile(), "whole", true);
    const auto journal = device.dataFile().string() + "-journal";
    if (hot) {
      dieWhileWriting(device.dataFile());
    } else {
      putBytes(journal, std::string(600, '\0'));
    }
    device.open();
    EXPECT_EQ(marks(device), "whole") << hot;
    EXPECT_EQ(device.rows("PRAGMA integrity_check"), "ok");
    EXPECT_FALSE(fs::exists(journal)) << hot;
  }
}

TEST(Recovery, aSafetyCopyWinsAndTheOldFileIsKept) {
  struct Case {
    const char* why;
    std::function<void(const fs::path&)> makeOld;
    const char* keptAs;
  };
  const Case cases[] = {
      {"over a whole file", [](const auto& path) { makeStore(path, "old"); }, "old"},
      {"over one with a hot journal",
       [](const auto& path) {
         makeStore(path, "old", true);
         dieWhileWriting(path);
       },
       "old"},
      {"over a damaged one with a journal",
       [](const auto& path) {
         putBytes(path, std::string(5000, 'd'));
         putBytes(path.string() + "-journal", "j");
       },
       nullptr},
      {"over one with a write-ahead log that was not brought in",
       [](const auto& path) {
         makeStore(path, "unlogged");
         auto raw = Connection::open(path, Connection::Access::readWrite);
         ASSERT_TRUE((*raw)->execute("update monivaSys set key = 'old'"));
         fs::copy_file(path, path.string() + ".kept");
         fs::copy_file(path.string() + "-wal", path.string() + ".wal");
         raw->reset();
         fs::rename(path.string() + ".kept", path);
         fs::rename(path.string() + ".wal", path.string() + "-wal");
       },
       "old"},
  };
  for (const auto& [why, makeOld, keptAs] : cases) {
    SCOPED_TRACE(why);
    Device device;
    makeOld(device.dataFile());
    const auto before = bytesOf(device.dataFile());
    makeStore(device.documents() / kCopy, "new");
    device.open();
    EXPECT_EQ(marks(device), "new");
    EXPECT_FALSE(fs::exists(device.documents() / kCopy));
    device.db.closeDatabase();
    EXPECT_EQ(namesIn(device.documents(), "moniva.dat-"), std::vector<std::string>{});
    if (keptAs == nullptr) {
      EXPECT_EQ(bytesOf(device.documents() / kAside), before);
    } else {
      ASSERT_TRUE(device.db.setDatabasePath(device.documents() / kAside));
      EXPECT_EQ(marks(device), keptAs);
    }
    EXPECT_EQ(device.root.takeNotices(),
              std::vector<std::string>{"The safety copy 'backupBeforeUpdate.dat' took the place of the data"
                                       " file, which is kept as '" +
                                       kAside + "'."});
  }
}

TEST(Recovery, aReplacementCutShortIsTakenUpAtTheNextLaunch) {
  // The old file is out of the way, the new one not yet in place; the log of the old one is still there.
  Device device;
  makeStore(device.documents() / kCopy, "new");
  putBytes(device.dataFile().string() + "-wal", "the old one's");
  putBytes(device.dataFile().string() + "-shm", "the old one's");
  device.open();
  EXPECT_EQ(marks(device), "new");
  EXPECT_EQ(namesIn(device.documents(), "moniva.dat-wal.set").size(), 1U);

  // The old file has its second name already and is still in place.
  Device later;
  makeStore(later.dataFile(), "old");
  fs::create_hard_link(later.dataFile(), later.documents() / kAside);
  makeStore(later.documents() / kCopy, "new");
  later.open();
  EXPECT_EQ(marks(later), "new");
}

TEST(Recovery, onlyAStoreThisVersionKnowsTakesTheDataFilesPlace) {
  for (const char* sql :
       {"PRAGMA user_version = 9", "PRAGMA application_id = 7", "drop table account", "no database at all"}) {
    Device device;
    makeStore(device.dataFile(), "mine");
    const auto copy = device.documents() / kCopy;
    makeStore(copy, "theirs");
    const bool whole = (*Connection::open(copy, Connection::Access::readWrite))->execute(sql);
    if (!whole) putBytes(copy, sql);
    device.open();
    EXPECT_EQ(marks(device), "mine") << sql;
    EXPECT_EQ(namesIn(device.documents(), kCopy),
              std::vector<std::string>{"backupBeforeUpdate.dat.set-aside-20240229-133005"})
        << sql;
    EXPECT_EQ(device.root.takeNotices().size(), 1U) << sql;
    EXPECT_EQ(device.takeFaults().find("===[DB Error] backupBeforeUpdate.dat 已损坏:") == std::string::npos,
              whole)
        << sql;
  }
}

// Each of the three waits out the program's whole patience, so they wait side by side.
TEST(Recovery, whatAnotherProgramUsesStaysInItsPlace) {
  const auto open = std::async(std::launch::async, [] {
    Device first;
    first.open();
    ASSERT_TRUE(first.sql("insert into monivaSys (key) values ('old')"));
    Device second("Europe/Berlin", first.documents(), 2);
    second.open();
    const auto refused = second.root.resetDatabase();
    ASSERT_FALSE(refused);
    EXPECT_EQ(refused.error().why, "the data file '" + first.dataFile().string() +
                                       "' is in use by another program; nothing was changed");
    EXPECT_EQ(marks(second), "old") << "and it is open again";
    EXPECT_EQ(namesIn(first.documents(), "moniva.dat.").size(), 1U) << "the lock alone";
  });
  const auto readingTheLog = std::async(std::launch::async, [] {
    Device device;
    device.open();
    auto reader = Connection::open(device.dataFile(), Connection::Access::readWrite);
    ASSERT_TRUE((*reader)->execute("BEGIN"));
    ASSERT_TRUE((*reader)->execute("select count(*) from monivaSys where value != '1'"));
    ASSERT_TRUE(device.sql("insert into monivaSys (key) values ('typed just now')"));
    EXPECT_FALSE(device.root.resetDatabase()) << "what is only in the log would not be in the kept copy";
    EXPECT_EQ(marks(device), "typed just now");
    EXPECT_EQ(namesIn(device.documents(), "moniva.dat.set"), std::vector<std::string>{});
  });
  const auto writing = std::async(std::launch::async, [] {
    Device device;
    makeStore(device.dataFile(), "whole", true);
    auto writer = Connection::open(device.dataFile(), Connection::Access::readWrite);
    ASSERT_TRUE((*writer)->executeScript("BEGIN IMMEDIATE; insert into monivaSys (key) values ('theirs')"));
    ASSERT_TRUE(fs::exists(device.dataFile().string() + "-journal"));
    const auto refused = device.root.copyDatabaseIfNeed();
    ASSERT_FALSE(refused);
    EXPECT_NE(refused.error().why.find("in use by another program"), std::string::npos);
    EXPECT_TRUE((*writer)->execute("COMMIT"));
    device.open();
    EXPECT_EQ(marks(device), "theirs\nwhole");
  });
}

TEST(Recovery, aResetKeepsTheOldStoreBesideTheEmptyOne) {
  Device device;
  device.open();
  device.sql("insert into monivaSys (key, editDate) values ('old', 9e9)");
  EXPECT_GT(device.root.editStamp().secondsSince1970, 9e9);
  ASSERT_TRUE(device.root.resetDatabase());
  EXPECT_EQ(marks(device), "");
  EXPECT_EQ(device.root.editStamp(), device.platform.now()) << "the stamps of the old store are forgotten";
  ASSERT_TRUE(device.db.setDatabasePath(device.documents() / kAside));
  EXPECT_EQ(marks(device), "old");
}

/// A cloud that keeps one data file in one container.
struct OneContainer final : CloudContainers {
  bool isSignedIn() const override { return true; }
  bool restoreDatafile(std::string_view containerID, const fs::path& to) override {
    asked += std::string(containerID) + " ";
    return containerID == name && fs::copy_file(file, to);
  }

  std::string name;
  fs::path file;
  std::string asked;
};

TEST(Recovery, damageFoundWhileReadingIsKeptInMind) {
  Device device;
  device.open();
  const auto page = static_cast<std::streamoff>(
      device.number("select rootpage from sqlite_schema where name = 'account'") - 1);
  device.db.closeDatabase();
  std::string bytes = bytesOf(device.dataFile());
  bytes.replace(static_cast<std::size_t>(page) * 4096, 4096, std::string(4096, 'x'));
  putBytes(device.dataFile(), bytes);
  ASSERT_TRUE(device.db.initDatabase());
  EXPECT_EQ(device.db.fileFault(), "");
  EXPECT_FALSE(device.connection().execute("select count(title) from account"));
  EXPECT_NE(device.db.fileFault(), "");
  EXPECT_NE(device.takeFaults().find("=== 数据库已损坏[11]"), std::string::npos);
}

TEST(Recovery, theCloudIsAskedInTheEditionsOrder) {
  struct Case {
    Edition edition;
    const char* name;
    const char* asked;
    bool damaged;
  };
  for (const auto& [edition, name, asked, damaged] :
       {Case{Edition::second, "moniva1", "moniva2 monivaPlus moniva1 ", false},
        Case{Edition::plus, "moniva2", "monivaPlus moniva2 ", false},
        Case{Edition::second, "moniva1", "moniva2 monivaPlus moniva1 ", true}}) {
    Device device;
    const TemporaryFolder folder;
    auto owned = std::make_unique<OneContainer>();
    auto& cloud = *owned;
    cloud.name = name;
    cloud.file = folder / "data";
    device.platform.cloud = std::move(owned);
    device.platform.info.edition = edition;
    makeStore(cloud.file, "cloud");
    if (damaged) putBytes(cloud.file, "damaged on its way");
    device.open();
    EXPECT_EQ(cloud.asked, asked);
    EXPECT_EQ(marks(device), damaged ? "" : "cloud") << "damaged, the template takes its place";
    EXPECT_EQ(device.platform.userDefaults->stringForKey("copyDataFile").has_value(), damaged);
    EXPECT_EQ(device.takeFaults().find("已损坏") != std::string::npos, damaged);
  }
}

TEST(Recovery, thePlusEditionTakesTheSecondEditionsStore) {
  for (const Edition edition : {Edition::plus, Edition::second}) {
    Device device;
    const TemporaryFolder group;
    makeStore(group / "moniva.dat", "shared");
    device.platform.info.edition = edition;
    device.platform.directories.groupContainer = group.path();
    device.open();
    EXPECT_EQ(marks(device), edition == Edition::plus ? "shared" : "");
    EXPECT_TRUE(fs::exists(group / "moniva.dat")) << "theirs stays";
  }
}

}  // namespace
}  // namespace moniva
