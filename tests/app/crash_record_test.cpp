#include "app/crash_record.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <thread>

#include "support/temporary_folder.h"

namespace moniva {
namespace {

TEST(CrashRecordDeathTest, tellsOfAnExceptionNobodyCaught) {
  const TemporaryFolder folder;
  const auto file = folder.path() / "crash.txt";
  EXPECT_DEATH(
      {
        installUncaughtExceptionHandler(folder.path(), [] { return Date{1709213405.75}; });
        std::thread([] { throw std::runtime_error("the ink ran out"); }).join();
      },
      "moniva: ended unexpectedly: the ink ran out; what is known of it is in '.*crash.txt'\n");
  EXPECT_EQ(bytesOf(file).substr(0, 40), "2024-02-29 13:30:05 UTC\nthe ink ran out\n");
}

}  // namespace
}  // namespace moniva
