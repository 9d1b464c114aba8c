#pragma once

#include "reports/bill_notification.h"

namespace moniva {

/// Makes the reminders of bills and repayments what the store wants them to be, after it was written. The
/// bills of accounts that did not change since `basis` are left as they are, where it is given: counting one
/// reads the whole account. Nothing is done to a store that is only read, or that is still to be upgraded.
/// Refused where the host will not schedule, or the store cannot be read or written; what could be done is
/// done.
Result<> refreshReminders(MVAppRoot& root, const BillBasis* basis = nullptr);

}  // namespace moniva
