#include "platform/files.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>

#include <csignal>

#include "platform/file_lock.h"
#include "support/temporary_folder.h"

namespace moniva {
namespace {

constexpr Date kNow{1709217005};

TEST(Files, aCopyNeverOverwrites) {
  const TemporaryFolder folder;
  const auto missing = copyFileIfAbsent(folder / "from", folder / "to");
  ASSERT_FALSE(missing);
  EXPECT_NE(missing.error().why.find("from"), std::string::npos);
  putBytes(folder / "from", std::string("a\0b", 3));
  EXPECT_EQ(copyFileIfAbsent(folder / "from", folder / "to").value(), true);
  EXPECT_EQ(bytesOf(folder / "to"), std::string("a\0b", 3));
  putBytes(folder / "to", "the user's");
  EXPECT_EQ(copyFileIfAbsent(folder / "from", folder / "to").value(), false);
  EXPECT_EQ(bytesOf(folder / "to"), "the user's");
  EXPECT_EQ(namesIn(folder.path()), (std::vector<std::string>{"from", "to"}))
      << "nothing is left lying about";
}

TEST(Files, setAsideNamesAreFreeAndInUtc) {
  const TemporaryFolder folder;
  for (int n = 0; n < 3; ++n) {
    putBytes(folder / "moniva.dat", std::to_string(n));
    ASSERT_TRUE(setFileAside(folder / "moniva.dat", kNow));
  }
  EXPECT_EQ(namesIn(folder.path()), (std::vector<std::string>{"moniva.dat.set-aside-20240229-143005",
                                                              "moniva.dat.set-aside-20240229-143005-2",
                                                              "moniva.dat.set-aside-20240229-143005-3"}));
  EXPECT_EQ(bytesOf(folder / "moniva.dat.set-aside-20240229-143005-2"), "1");
  EXPECT_FALSE(setFileAside(folder / "moniva.dat", kNow)) << "there is none";
}

TEST(Files, aFullDiskLeavesTheOldFileWhole) {
  const TemporaryFolder folder;
  putBytes(folder / "file", "old");
  const pid_t child = ::fork();
  if (child == 0) {
    ::signal(SIGXFSZ, SIG_IGN);
    const rlimit limit{4096, 4096};
    ::setrlimit(RLIMIT_FSIZE, &limit);
    const auto written = writeFileWhole(folder / "file", std::string(10'000, 'n'));
    const bool named = !written && written.error().why.find("/file'") != std::string::npos;
    ::_exit(named ? 0 : 1);
  }
  int status = -1;
  ::waitpid(child, &status, 0);
  EXPECT_EQ(status, 0) << "the refusal names the file";
  EXPECT_EQ(bytesOf(folder / "file"), "old");
  EXPECT_EQ(namesIn(folder.path()), std::vector<std::string>{"file"});
}

TEST(Files, aDataFolderIsMadeOrRefusedByName) {
  const TemporaryFolder folder;
  EXPECT_TRUE(makeWritableFolder(folder / "a/b/c"));
  EXPECT_TRUE(namesIn(folder / "a/b/c").empty());
  putBytes(folder / "file", "");
  for (const char* name : {"file", "file/below"}) {
    const auto refused = makeWritableFolder(folder / name);
    ASSERT_FALSE(refused);
    EXPECT_NE(refused.error().why.find((folder / name).string()), std::string::npos) << refused.error().why;
  }
}

TEST(FileLock, sharedHoldersKeepAnExclusiveOneOut) {
  const TemporaryFolder folder;
  const auto path = folder / "moniva.dat.lock";
  using Mode = FileLock::Mode;
  auto one = FileLock::acquire(path, Mode::shared, 0);
  ASSERT_TRUE(one);
  {
    auto two = FileLock::acquire(path, Mode::shared, 0);
    ASSERT_TRUE(two);
    const auto refused = FileLock::acquire(path, Mode::exclusive, 0);
    ASSERT_FALSE(refused);
    EXPECT_NE(refused.error().why.find(path.string()), std::string::npos);
    *one = std::move(*two);
    EXPECT_FALSE(FileLock::acquire(path, Mode::exclusive, 0)) << "one of the two still holds it";
  }
  one = FileLock::acquire(folder / "other", Mode::shared, 0);
  const auto alone = FileLock::acquire(path, Mode::exclusive, 0);
  EXPECT_TRUE(alone);
  EXPECT_FALSE(FileLock::acquire(path, Mode::shared, 0));
}

TEST(FileLock, diesWithItsProcess) {
  const TemporaryFolder folder;
  const auto path = folder / "lock";
  int ready[2];
  ASSERT_EQ(::pipe(ready), 0);
  const pid_t child = ::fork();
  if (child == 0) {
    const auto held = FileLock::acquire(path, FileLock::Mode::exclusive, 0);
    if (::write(ready[1], held ? "y" : "n", 1) == 1) ::pause();
    ::_exit(1);
  }
  char got = 0;
  ASSERT_EQ(::read(ready[0], &got, 1), 1);
  EXPECT_EQ(got, 'y');
  EXPECT_FALSE(FileLock::acquire(path, FileLock::Mode::shared, 0));
  ::kill(child, SIGKILL);
  ::waitpid(child, nullptr, 0);
  EXPECT_TRUE(FileLock::acquire(path, FileLock::Mode::exclusive, 0));
  ::close(ready[0]);
  ::close(ready[1]);
}

}  // namespace
}  // namespace moniva
