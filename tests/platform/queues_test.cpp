#include <gtest/gtest.h>

#include <algorithm>

#include "platform/notification_center.h"
#include "platform/work_queue.h"

namespace moniva {
namespace {

TEST(WorkQueue, runsBlocksInOrderAndToTheLast) {
  std::vector<int> order;
  {
    WorkQueue queue;
    for (int n = 0; n < 200; ++n) {
      queue.dispatch([&, n] {
        order.push_back(n);
        if (n == 199) queue.dispatch([&] { order.push_back(200); });
      });
    }
  }
  ASSERT_EQ(order.size(), 201U) << "the queue ends only when nothing is left, what its blocks added too";
  EXPECT_TRUE(std::is_sorted(order.begin(), order.end()));
}

TEST(WorkQueue, waitsForABlockAndRunsANestedOneAtOnce) {
  WorkQueue queue;
  std::string trace;
  queue.dispatch([&] { trace += "a"; });
  queue.runAndWait([&] {
    trace += queue.isThisThread() ? "b" : "?";
    queue.dispatch([&] { trace += "d"; });
    queue.runAndWait([&] { trace += "c"; });
  });
  queue.drain();
  EXPECT_EQ(trace, "abcd");
}

TEST(MainQueue, runsWhatOtherThreadsHandItOnItsOwn) {
  MainQueue main;
  WorkQueue queue;
  std::string trace;
  queue.runAndWait([&] {
    EXPECT_FALSE(main.isMainThread());
    main.dispatch([&] {
      trace += main.isMainThread() ? "a" : "?";
      main.dispatch([&] { trace += "b"; });
    });
  });
  EXPECT_EQ(trace, "");
  main.runPending();
  EXPECT_EQ(trace, "ab");
}

TEST(NotificationCenter, tellsWhoeverObservesTheName) {
  NotificationCenter center;
  std::string trace;
  auto first = center.observe("a", [&] { trace += "1"; });
  const auto other = center.observe("b", [&] { trace += "?"; });
  center.post("a");
  // An observer may end another, and add one, while it is told.
  NotificationCenter::Token added;
  const auto second = center.observe("a", [&] {
    first.reset();
    added = center.observe("a", [&] { trace += "2"; });
  });
  center.post("a");
  center.post("a");
  EXPECT_EQ(trace, "112");
}

}  // namespace
}  // namespace moniva
