#include "reminders/bill_reminders.h"
#include "reminders/repay_reminders.h"

namespace moniva {

Result<int> addRepayNotificationForDate(const MonivaAccount&, Date) {
  return 0;
}
Result<int> deleteRepayNotification(const MonivaAccount&) {
  return 0;
}
Result<int> deleteRepayNotificationForDate(const MonivaAccount&, Date) {
  return 0;
}

}  // namespace moniva
