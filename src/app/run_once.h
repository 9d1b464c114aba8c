#pragma once

#include <string_view>

#include "storage/writes.h"

namespace moniva {

/// Whether the flag says that its step has run. Of several rows of a key the newest counts.
inline Result<bool> hasRun(Connection& db, std::string_view flag) {
  Run run = db.query("select value from monivaSys where key = ? order by editDate DESC, rowid DESC limit 1",
                     {flag});
  const bool set = run.next() && run.text(0) == "1";
  if (!run.ok()) return tl::make_unexpected(db.refusal());
  return set;
}

/// Sets the flag; the older rows of its key go.
inline Result<> setHasRun(MVAppRoot& root, std::string_view flag) {
  return atomically(root, [&](Connection&) -> Result<> {
    if (auto gone = write(root, "delete from monivaSys where key = ?", flag); !gone) return gone;
    return write(root, "insert into monivaSys (value,key) values('1',?)", flag);
  });
}

/// Runs a repair unless its flag says that it has run; then sets the flag, in one transaction with the work.
template <class Work>
Result<> runOnce(MVAppRoot& root, std::string_view flag, Work&& work) {
  return atomically(root, [&](Connection& db) -> Result<> {
    const auto done = hasRun(db, flag);
    if (!done) return tl::make_unexpected(done.error());
    if (*done) return {};
    if (Result<> worked = work(db); !worked) return worked;
    return setHasRun(root, flag);
  });
}

}  // namespace moniva
