#pragma once

#include <vector>

#include "model/moniva_account.h"

/// Reminders of the days on which credit accounts are to be paid back, at the same hours as those of bills.
namespace moniva {

/// Schedules what is still to come of the three for that due date and is not scheduled yet; nothing where the
/// account's reminders are off. Answers how many were scheduled.
Result<int> addRepayNotificationForDate(const MonivaAccount& account, Date date);
/// Cancels all that is scheduled for the account and was not shown yet, and removes its records. Answers how
/// many there were.
Result<int> deleteRepayNotification(const MonivaAccount& account);
/// The same for one due date: what was due then is paid.
Result<int> deleteRepayNotificationForDate(const MonivaAccount& account, Date date);
/// Cancels what is scheduled for other due dates than these, such as those of another due day.
Result<int> keepRepayNotifications(const MonivaAccount& account, const std::vector<Date>& dueDates);

}  // namespace moniva
