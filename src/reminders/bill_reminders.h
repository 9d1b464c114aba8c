#pragma once

#include "model/mv_transaction.h"

/// Reminders of transactions that are to be paid on a day: at ten o'clock five days before, three days before
/// and on the day itself.
namespace moniva {

/// Whether the person wants to be reminded of the row (column `needNotify`).
Result<bool> notificationEnabled(const MVTransaction& transaction);
/// Says so of a row, of whatever kind, with the edit stamp where that is new. Switched off, what is scheduled
/// is cancelled. Refused where there is no such row.
Result<> setNotificationEnabled(const MVTransaction& transaction, bool enabled);
/// When the row is to be paid: a pending payment on its `payDate`, where it has one; a series with its next
/// record, whose day is that of the zone it was begun in; all else on its date.
Date dueDateOf(const MVTransaction& transaction);
/// Schedules what is still to come of the three and is not scheduled yet. Answers how many were.
Result<int> scheduleNotificationForDate(const MVTransaction& transaction, Date date);
/// Cancels what is scheduled for the row and removes its records. Answers how many there were.
Result<int> deleteNotification(const MVTransaction& transaction);

}  // namespace moniva
