#include "platform/posix/desktop_notifications.h"

#include <fmt/ranges.h>
#include <gtest/gtest.h>

#include "platform/files.h"
#include "support/notification_desktop.h"

namespace moniva {
namespace {

constexpr Date kDamagedAt{1709217005};

NotificationRequest request(const std::string& identifier, const CivilTime& trigger,
                            const std::string& body = "Soon") {
  return {
      .identifier = identifier, .title = "Bill", .body = body, .userInfo = {{"a", "b"}}, .trigger = trigger};
}

std::string waitingIn(LocalNotifications& host) {
  std::vector<std::string> list;
  const auto pending = host.pending();
  for (const auto& one : *pending) list.push_back(one.identifier + ":" + one.body);
  return fmt::format("{}", fmt::join(list, " "));
}

TEST(DesktopNotifications, keepsRequestsForOtherPrograms) {
  const TemporaryFolder folder;
  DesktopNotifications one(folder / "notifications.json", kDamagedAt);
  DesktopNotifications other(folder / "notifications.json", kDamagedAt);
  ASSERT_TRUE(one.add(request("late", {2026, 12, 1, 10, 0, 0}, "\"Café\"\n<b>")));
  ASSERT_TRUE(other.add(request("early", {2026, 11, 30, 10, 0, 0})));
  EXPECT_EQ(waitingIn(one), "early:Soon late:\"Café\"\n<b>");
  EXPECT_EQ(one.pending()->front().userInfo.at("a"), "b");
  ASSERT_TRUE(one.add(request("early", {2026, 12, 2, 10, 0, 0}, "Later")));
  EXPECT_EQ(waitingIn(other), "late:\"Café\"\n<b> early:Later") << "the same identifier takes its place";
  ASSERT_TRUE(other.removePending("late") && other.removePending("never was"));
  EXPECT_EQ(waitingIn(one), "early:Later");
  ASSERT_TRUE(one.removeAllPending());
  EXPECT_EQ(waitingIn(other), "");
}

TEST(DesktopNotifications, changesAreMadeTogetherOrNotAtAll) {
  const TemporaryFolder folder;
  DesktopNotifications host(folder / "gone/notifications.json", kDamagedAt);
  NotificationChanges failing(host);
  EXPECT_TRUE(host.add(request("a", {2026, 12, 1, 10, 0, 0})));
  EXPECT_EQ(waitingIn(host), "a:Soon");
  EXPECT_FALSE(failing.end()) << "there is no folder for the file";
  EXPECT_EQ(waitingIn(host), "");
  std::filesystem::create_directory(folder / "gone");
  NotificationChanges changes(host);
  for (int i = 0; i < 1000; ++i) EXPECT_TRUE(host.add(request(std::to_string(i), {2026, 12, 1, 10, 0, 0})));
  EXPECT_FALSE(std::filesystem::exists(folder / "gone/notifications.json"))
      << "it is written once, at the end";
  {
    NotificationChanges dropped(host);
    EXPECT_TRUE(host.removeAllPending() && host.add(request("b", {2026, 12, 1, 10, 0, 0})));
  }
  EXPECT_TRUE(changes.end());
  EXPECT_EQ(host.pending()->size(), 1000U) << "what was not ended is given up";
}

TEST(DesktopNotifications, setsADamagedFileAside) {
  for (const std::string& bytes :
       std::vector<std::string>{"{", "[]\n", "{\"next\":\"2026-12-01 10:00:00\"}\n", "\xff\n"}) {
    const TemporaryFolder folder;
    putBytes(folder / "notifications.json", bytes);
    DesktopNotifications host(folder / "notifications.json", kDamagedAt);
    EXPECT_EQ(waitingIn(host), "") << bytes;
    ASSERT_TRUE(host.takeNotice()) << bytes;
    EXPECT_FALSE(host.takeNotice());
    EXPECT_EQ(bytesOf(folder / "notifications.json.set-aside-20240229-143005"), bytes);
  }
}

/// How many were shown, or else why not.
std::string deliveredBy(DesktopNotifications& host, const CivilTime& now,
                        NotificationTry which = NotificationTry::due) {
  const auto delivery = host.deliverDue(now, which);
  return std::to_string(delivery.shown) + (delivery.refused ? ", " + delivery.refused->why : "");
}

TEST(DesktopNotifications, showsWhatIsDueOnce) {
  const TemporaryFolder folder;
  const SessionBus bus;
  DesktopNotifications host(folder / "notifications.json", kDamagedAt);
  ASSERT_TRUE(host.add(request("a_1", {2026, 12, 1, 10, 0, 0}, "5 days")));
  ASSERT_TRUE(host.add(request("a_2", {2026, 12, 3, 10, 0, 0}, "3 < 4 & \"days\"")));
  ASSERT_TRUE(host.add(request("b_1", {2026, 12, 2, 10, 0, 0}, "Rent")));
  ASSERT_TRUE(host.add(request("c_1", {2026, 12, 9, 10, 0, 0})));
  const CivilTime due{2026, 12, 3, 10, 0, 0};
  EXPECT_EQ(deliveredBy(host, {2026, 12, 1, 9, 59, 59}), "0") << "nobody is asked for nothing";
  EXPECT_EQ(deliveredBy(host, due), "0, no notification service is running");

  FakeNotificationService service(bus);
  EXPECT_EQ(deliveredBy(host, due), "0") << "what could not be shown waits a while";
  ASSERT_TRUE(host.add(request("d_1", {2026, 12, 3, 10, 5, 0}, "Phone")));
  EXPECT_EQ(deliveredBy(host, {2026, 12, 3, 10, 5, 0}), "1") << "but holds up no other";
  EXPECT_EQ(service.takeShown(), std::vector<std::string>{"Bill|Phone"});
  EXPECT_EQ(deliveredBy(host, {2026, 12, 3, 10, 10, 0}), "2");
  EXPECT_EQ(service.takeShown(), (std::vector<std::string>{"Bill|Rent", "Bill|3 &lt; 4 &amp; \"days\""}))
      << "of one owner the last";
  EXPECT_EQ(waitingIn(host), "c_1:Soon");
  EXPECT_EQ(deliveredBy(host, {2026, 12, 4, 10, 0, 0}), "0");

  ASSERT_TRUE(DesktopNotifications::showNow("Test", "Hello"));
  EXPECT_EQ(service.takeShown(), std::vector<std::string>{"Test|Hello"});
  service.manner = FakeNotificationService::Manner::hangs;
  EXPECT_EQ(deliveredBy(host, {2026, 12, 9, 10, 0, 0}), "0, the notification service does not answer");
  EXPECT_EQ(waitingIn(host), "c_1:Soon") << "nothing is lost";
}

TEST(DesktopNotifications, whatIsRefusedHoldsUpNoOther) {
  const TemporaryFolder folder;
  const SessionBus bus;
  FakeNotificationService service(bus);
  DesktopNotifications host(folder / "notifications.json", kDamagedAt);
  ASSERT_TRUE(host.add(request("a_1", {2026, 12, 1, 10, 0, 0}, "refused too: another takes its place")));
  ASSERT_TRUE(host.add(request("a_2", {2026, 12, 1, 11, 0, 0}, "FULL")));
  ASSERT_TRUE(host.add(request("b_1", {2026, 12, 1, 12, 0, 0}, "Rent")));
  const CivilTime now{2026, 12, 2, 10, 0, 0};
  EXPECT_EQ(deliveredBy(host, now), "1, the notification service refused: the screen is full");
  EXPECT_EQ(waitingIn(host), "a_1:refused too: another takes its place a_2:FULL");
  EXPECT_EQ(deliveredBy(host, now), "0");
  EXPECT_EQ(deliveredBy(host, now, NotificationTry::allThatWait),
            "0, the notification service refused: the screen is full");
}

TEST(DesktopNotifications, aClockThatWasAheadSilencesNothing) {
  const TemporaryFolder folder;
  const SessionBus bus;
  DesktopNotifications host(folder / "notifications.json", kDamagedAt);
  ASSERT_TRUE(host.add(request("a_1", {2026, 12, 1, 10, 0, 0}, "Rent")));
  EXPECT_EQ(deliveredBy(host, {2031, 1, 1, 0, 0, 0}), "0, no notification service is running");
  ASSERT_TRUE(host.add(request("b_1", {2026, 12, 9, 10, 0, 0})));
  FakeNotificationService service(bus);
  EXPECT_EQ(deliveredBy(host, {2026, 12, 1, 9, 0, 0}), "0");
  EXPECT_EQ(deliveredBy(host, {2026, 12, 1, 10, 0, 0}), "1");
}

TEST(DesktopNotifications, aFileThatIsFarTooLargeIsSetAside) {
  const TemporaryFolder folder;
  const auto file = folder / "notifications.json";
  putBytes(file, "");
  std::filesystem::resize_file(file, std::uintmax_t{1} << 34);
  DesktopNotifications host(file, kDamagedAt);
  EXPECT_EQ(deliveredBy(host, {2026, 12, 1, 10, 0, 0}), "0");
  EXPECT_TRUE(host.takeNotice() && !isPresent(file));
  std::filesystem::create_directory(file);
  EXPECT_NE(deliveredBy(host, {2026, 12, 1, 10, 0, 0}).find("cannot read"), std::string::npos);
}

TEST(DesktopNotifications, aBusThatIsAbsentOrHangsHoldsNobodyUp) {
  const SessionBus bus;
  ::kill(bus.daemon(), SIGSTOP);
  EXPECT_EQ(DesktopNotifications::showNow("Test", "Hello").error().why, "the session bus does not answer");
  ::setenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nowhere", 1);
  EXPECT_EQ(DesktopNotifications::showNow("Test", "Hello").error().why,
            "there is no session bus to show notifications through");
}

}  // namespace
}  // namespace moniva
