#include "ui/cli/stop_on_interrupt.h"

#include <gtest/gtest.h>

#include <csignal>

namespace moniva {
namespace {

void (*handlerNow())(int) {
  const auto now = std::signal(SIGINT, SIG_IGN);
  std::signal(SIGINT, now);
  return now;
}

TEST(StopOnInterrupt, takesTheFirstInterruptAloneAndPutsBackWhatWasThere) {
  const auto before = std::signal(SIGINT, SIG_IGN);
  for (int round = 0; round < 2; ++round) {
    {
      const StopOnInterrupt stop;
      EXPECT_FALSE(StopOnInterrupt::flag()) << "nothing is left of the last one";
      std::raise(SIGINT);
      EXPECT_TRUE(StopOnInterrupt::flag());
      EXPECT_EQ(handlerNow(), SIG_DFL) << "a second one ends the program";
    }
    EXPECT_EQ(handlerNow(), SIG_IGN);
  }
  std::signal(SIGINT, before);
}

}  // namespace
}  // namespace moniva
