#pragma once

#include "storage/mv_app_root.h"

namespace moniva {

/// Makes the reminders of bills and repayments what the store wants them to be, after it was written. Nothing
/// is done to a store that is only read, or that is still to be upgraded. Refused where the host will not
/// schedule, or the store cannot be read or written; what could be done is done.
Result<> refreshReminders(MVAppRoot& root);

}  // namespace moniva
