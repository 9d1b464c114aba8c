#pragma once

#include <string_view>

#include "storage/writes.h"

namespace moniva {

/// Whether the flag says that its step has run. Of several rows of a key the newest counts.
inline bool hasRun(Connection& db, std::string_view flag) {
  Run run = db.query("select value from monivaSys where key = ? order by editDate DESC limit 1", {flag});
  return run.next() && run.text(0) == "1";
}

/// Runs a repair unless its flag says that it has run; then sets the flag, in one transaction with the work.
template <class Work>
Result<> runOnce(MVAppRoot& root, std::string_view flag, Work&& work) {
  return atomically(root, [&](Connection& db) -> Result<> {
    if (hasRun(db, flag)) return {};
    if (Result<> done = work(db); !done) return done;
    auto written = write(root, "delete from monivaSys where key = ?", flag);
    if (written) written = write(root, "insert into monivaSys (value,key) values('1',?)", flag);
    return written;
  });
}

}  // namespace moniva
