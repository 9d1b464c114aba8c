#pragma once

#include <fmt/ranges.h>

#include "reminders/bill_reminders.h"
#include "reminders/reminder_records.h"
#include "reminders/reminder_upkeep.h"
#include "reminders/repay_reminders.h"
#include "support/household.h"

namespace moniva {

/// A notification centre that can be out of order.
class MoodyHost final : public MemoryLocalNotifications {
 public:
  bool isPermitted = true;
  std::string refuses;  ///< the identifiers with this in them
  int added = 0;
  int batches = 0;

  Result<> requestPermission(unsigned options) override {
    EXPECT_EQ(options, 6U);
    return isPermitted ? Result<>() : refuse("reminders are not allowed");
  }
  Result<> add(const NotificationRequest& request) override {
    if (!refuses.empty() && request.identifier.find(refuses) != std::string::npos) return refuse("no room");
    ++added;
    return MemoryLocalNotifications::add(request);
  }
  void beginChanges() override { ++depth_; }
  Result<> endChanges() override {
    if (--depth_ == 0) ++batches;
    return {};
  }
  void dropChanges() override { --depth_; }

 private:
  int depth_ = 0;
};

/// A household that is reminded, on the afternoon of 29 February 2024.
class ReminderStory : public Household {
 public:
  explicit ReminderStory(const std::string& zone = "Europe/Berlin") : Household(zone) {
    auto made = std::make_unique<MoodyHost>();
    host = made.get();
    platform.localNotifications = std::move(made);
  }

  MVTransaction loaded(const std::string& eid) { return *MVTransaction::transactionFromEID(root, eid); }
  /// A pending expense to be reminded of; nothing is scheduled yet.
  Spend bill(const std::string& what, double amount, const std::string& due) {
    Spend made = spend(what, amount, on(due));
    set(made, "paid", 0);
    EXPECT_TRUE(setNotificationEnabled(loaded(made.eid), true));
    return made;
  }
  MonivaAccount card(const std::string& title) {
    auto made = account(title, "_DebtAccount");
    EXPECT_TRUE(made.updateRepayNotificationEnabled(true));
    return made;
  }
  std::vector<NotificationRequest> requests() { return host->pending().value(); }
  /// What the host has, as "Food 03-15 10:00", the title in its brackets left out.
  std::string pending() {
    std::vector<std::string> list;
    for (const auto& one : requests()) {
      const auto& at = one.trigger;
      list.push_back(fmt::format("{} {:02}-{:02} {:02}:{:02}", one.title.substr(one.title.find(' ') + 1),
                                 at.month, at.day, at.hour, at.minute));
    }
    return fmt::format("{}", fmt::join(list, ", "));
  }
  /// Whether records and requests to come are the same.
  bool isSound() {
    std::set<std::string> recorded;
    std::set<std::string> known;
    const auto records = reminderRecords(root);
    for (const auto& one : *records) {
      if (one.fireDate > root.now()) recorded.insert(one.identifier);
    }
    for (const auto& one : requests()) {
      if (root.calendar().resolve(one.trigger).date > root.now()) known.insert(one.identifier);
    }
    return recorded == known;
  }

  MoodyHost* host = nullptr;
};

}  // namespace moniva
