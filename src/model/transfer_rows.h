#pragma once

#include "storage/writes.h"

// What the operations on the rows of transfers share; no part of what others use.
namespace moniva {

/// Writes a row's own amount and, beside it, the other side's (0 in one currency).
inline Result<> writeBothAmounts(MVAppRoot& root, std::string_view eid, double own, double other) {
  return write(root,
               "update transactions set editDate = ?, amount = ?, amount2=?, edit_ipid = ? where eid = ?",
               root.editStamp(), own, other, root.itsUDID(), eid);
}

}  // namespace moniva
