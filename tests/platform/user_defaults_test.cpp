#include <gtest/gtest.h>
#include <sys/wait.h>

#include <csignal>

#include "platform/posix/file_user_defaults.h"
#include "support/temporary_folder.h"

namespace moniva {
namespace {

constexpr Date kNow{1709217005};

std::unique_ptr<FileUserDefaults> opened(const std::filesystem::path& path) {
  auto defaults = FileUserDefaults::open(path, kNow);
  EXPECT_TRUE(defaults) << defaults.error().why;
  return std::move(*defaults);
}

TEST(FileUserDefaults, keepsWhatWasSet) {
  const TemporaryFolder folder;
  const auto file = folder / "settings.json";
  const auto first = opened(file);
  first->setString("hülle \"\\\n", "text");
  first->setDate(Date{1709217005.123456}, "date");
  EXPECT_FALSE(std::filesystem::exists(file)) << "changes wait for synchronize";
  ASSERT_TRUE(first->synchronize());
  const auto second = opened(file);
  EXPECT_EQ(second->stringForKey("text"), "hülle \"\\\n");
  EXPECT_EQ(second->dateForKey("date"), (Date{1709217005.123456})) << "to the last bit";
  EXPECT_EQ(second->stringForKey("date"), std::nullopt) << "a number is no text";
  EXPECT_EQ(second->dateForKey("text"), std::nullopt) << "a text is no date";
}

TEST(FileUserDefaults, twoWritersKeepEachOthersChanges) {
  const TemporaryFolder folder;
  const auto file = folder / "settings.json";
  const auto one = opened(file);
  one->setString("old", "shared");
  one->setString("1", "removedByTwo");
  ASSERT_TRUE(one->synchronize());
  const auto two = opened(file);
  one->setString("one", "a");
  two->setString("two", "b");
  two->setString("new", "shared");
  two->removeObjectForKey("removedByTwo");
  ASSERT_TRUE(one->synchronize());
  ASSERT_TRUE(two->synchronize());
  one->setString("again", "a");
  ASSERT_TRUE(one->synchronize());
  EXPECT_EQ(one->stringForKey("b"), "two") << "synchronize takes in what the other wrote";

  const auto after = opened(file);
  EXPECT_EQ(after->stringForKey("a"), "again");
  EXPECT_EQ(after->stringForKey("b"), "two");
  EXPECT_EQ(after->stringForKey("shared"), "new") << "one did not change it after two had";
  EXPECT_EQ(after->objectForKey("removedByTwo"), std::nullopt);
}

TEST(FileUserDefaults, allWhoAskForTheFirstTimeGetTheSame) {
  const TemporaryFolder folder;
  const auto path = folder / "settings.json";
  auto one = FileUserDefaults::open(path, Date{0});
  auto two = FileUserDefaults::open(path, Date{0});
  EXPECT_EQ((*one)->stringForKeyOrSet("itsUDID", "first").value(), "first");
  EXPECT_EQ((*two)->stringForKeyOrSet("itsUDID", "second").value(), "first");
  EXPECT_EQ((*two)->stringForKey("itsUDID"), "first");
}

TEST(FileUserDefaults, aDamagedFileIsSetAsideUntouched) {
  for (const char* bytes : {"", "{\"a\": \"b\"", "[1, 2]", "\xff\xfe{}"}) {
    SCOPED_TRACE(bytes);
    const TemporaryFolder folder;
    const auto file = folder / "settings.json";
    putBytes(file, bytes);
    const auto defaults = opened(file);
    const auto aside = folder / "settings.json.set-aside-20240229-143005";
    EXPECT_NE(defaults->notice().find(aside.filename().string()), std::string::npos) << defaults->notice();
    EXPECT_EQ(bytesOf(aside), bytes);
    defaults->setString("1", "new");
    ASSERT_TRUE(defaults->synchronize());
    EXPECT_EQ(opened(file)->stringForKey("new"), "1");
  }
}

TEST(FileUserDefaults, whatIsKnownSurvivesAFileDamagedOrRemovedMeanwhile) {
  const TemporaryFolder folder;
  const auto file = folder / "settings.json";
  const auto defaults = opened(file);
  defaults->setString("device", "itsUDID");
  ASSERT_TRUE(defaults->synchronize());
  for (const bool removed : {false, true}) {
    putBytes(file, "{\"itsUDID\": \"dev");
    if (removed) std::filesystem::remove(file);
    defaults->setString(removed ? "2" : "1", "fixAllRepeat");
    ASSERT_TRUE(defaults->synchronize());
    EXPECT_EQ(opened(file)->stringForKey("itsUDID"), "device") << "removed: " << removed;
  }
}

TEST(FileUserDefaults, aFileThatCannotBeReadOrWrittenIsRefusedByName) {
  const TemporaryFolder folder;
  std::filesystem::create_directory(folder / "settings.json");
  const auto refused = FileUserDefaults::open(folder / "settings.json", kNow);
  ASSERT_FALSE(refused);
  EXPECT_NE(refused.error().why.find((folder / "settings.json").string()), std::string::npos);

  const auto nowhere = opened(folder / "missing" / "settings.json");
  nowhere->setString("1", "a");
  const auto saved = nowhere->synchronize();
  ASSERT_FALSE(saved);
  EXPECT_NE(saved.error().why.find("missing/settings.json"), std::string::npos);
  std::filesystem::create_directory(folder / "missing");
  EXPECT_TRUE(nowhere->synchronize()) << "the change is still waiting";
  EXPECT_EQ(opened(folder / "missing" / "settings.json")->stringForKey("a"), "1");
}

TEST(FileUserDefaults, aKilledWriterLeavesTheOldFileOrTheNewOne) {
  const TemporaryFolder folder;
  const auto file = folder / "settings.json";
  const std::string big(200'000, 'x');
  {
    const auto defaults = opened(file);
    defaults->setString(big + "0", "text");
    ASSERT_TRUE(defaults->synchronize());
  }
  for (int round = 0; round < 10; ++round) {
    int ready[2];
    ASSERT_EQ(::pipe(ready), 0);
    const pid_t child = ::fork();
    if (child == 0) {
      auto defaults = FileUserDefaults::open(file, kNow);
      for (int n = 0;; ++n) {
        (*defaults)->setString(big + std::to_string(n), "text");
        if (!(*defaults)->synchronize()) ::_exit(1);
        if (n == 0 && ::write(ready[1], "x", 1) != 1) ::_exit(1);
      }
    }
    char started = 0;
    ASSERT_EQ(::read(ready[0], &started, 1), 1);
    ::usleep(static_cast<useconds_t>(round * 700));
    ::kill(child, SIGKILL);
    ::waitpid(child, nullptr, 0);
    ::close(ready[0]);
    ::close(ready[1]);
    const auto after = opened(file);
    ASSERT_EQ(after->notice(), "");
    ASSERT_TRUE(after->stringForKey("text").value_or("").starts_with(big));

    const auto leftover = folder / ("settings.json.new-" + std::to_string(child));
    const auto living = folder / ("settings.json.new-" + std::to_string(::getppid()));
    const auto other = folder / ("settings.json.new-" + std::to_string(child) + "-mine");
    for (const auto& beside : {leftover, living, other}) putBytes(beside, "{");
    after->setString("1", "next");
    ASSERT_TRUE(after->synchronize());
    EXPECT_FALSE(std::filesystem::exists(leftover)) << "the next one to write clears up";
    EXPECT_TRUE(std::filesystem::exists(living) && std::filesystem::exists(other));
  }
}

}  // namespace
}  // namespace moniva
