#include "platform/files.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>

#include <csignal>

#include "platform/file_lock.h"
#include "support/temporary_folder.h"

namespace moniva {
namespace {

constexpr Date kSetAsideAt{1709217005};

TEST(Files, aCopyNeverOverwrites) {
  const TemporaryFolder folder;
  EXPECT_FALSE(copyFileIfAbsent(folder / "from", folder / "to"));
  putBytes(folder / "from", std::string("a\0b", 3));
  EXPECT_EQ(copyFileIfAbsent(folder / "from", folder / "to").value(), true);
  EXPECT_EQ(bytesOf(folder / "to"), std::string("a\0b", 3));
  putBytes(folder / "to", "the user's");
  EXPECT_EQ(copyFileIfAbsent(folder / "from", folder / "to").value(), false);
  EXPECT_EQ(bytesOf(folder / "to"), "the user's");
  EXPECT_EQ(namesIn(folder.path()), (std::vector<std::string>{"from", "to"})) << "nothing else lies about";
}

TEST(Files, aNewFileIsThereWholeOrNotAtAll) {
  const TemporaryFolder folder;
  const auto path = folder / "out";
  {
    NewFile given = NewFile::at(path, false).value();
    ASSERT_TRUE(given.write("half"));
  }
  EXPECT_EQ(namesIn(folder.path()), std::vector<std::string>{}) << "let go of";
  NewFile late = NewFile::at(path, false).value();
  ASSERT_TRUE(late.write("mine"));
  putBytes(path, "another's");
  EXPECT_FALSE(late.keep()) << "it came meanwhile";
  EXPECT_EQ(bytesOf(path), "another's");
  EXPECT_FALSE(NewFile::at(path, false));
  std::filesystem::create_symlink("out", folder / "link");
  {
    NewFile other = NewFile::at(folder / "link", true).value();
    ASSERT_TRUE(other.write("one ") && other.write("two") && other.keep());
  }
  EXPECT_EQ(bytesOf(path), "one two");
  EXPECT_TRUE(std::filesystem::is_symlink(folder / "link")) << "what it leads to is replaced";
  EXPECT_FALSE(NewFile::at(folder.path(), true)) << "a folder";
}

TEST(Files, setAsideNamesAreFreeAndInUtc) {
  const TemporaryFolder folder;
  const std::string dated = "moniva.dat.set-aside-20240229-143005";
  for (const std::string& name : {dated, dated + "-2", dated + "-3"}) {
    putBytes(folder / "moniva.dat", name);
    EXPECT_EQ(setFileAside(folder / "moniva.dat", kSetAsideAt).value(), folder / name);
    EXPECT_EQ(bytesOf(folder / name), name);
  }
  EXPECT_FALSE(setFileAside(folder / "moniva.dat", kSetAsideAt)) << "there is none";
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
