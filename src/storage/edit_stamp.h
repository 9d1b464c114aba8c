#pragma once

#include <mutex>

#include "storage/connection.h"

namespace moniva {

/// The one source of edit stamps. A stamp is the present moment, moved up where needed so that it is above
/// every stamp in the store and every stamp given before: the clock of a device may be set back, and a row
/// merged from elsewhere may be ahead of this device's clock. Safe to use from several threads.
class EditStamp {
 public:
  /// The stamp for a write on the connection at the moment `now`.
  Date next(Connection& connection, Date now);
  /// Forgets what is known of the store; for a changed data file.
  void forget();

 private:
  std::mutex mutex_;
  double last_ = 0;
  /// The two connections count the other's writes each for themselves.
  const Connection* seenBy_[2] = {nullptr, nullptr};
  std::int64_t seenVersion_[2] = {-1, -1};
};

}  // namespace moniva
