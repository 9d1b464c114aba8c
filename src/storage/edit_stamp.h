#pragma once

#include <array>
#include <cstdint>
#include <mutex>

#include "storage/connection.h"

namespace moniva {

/// The one source of edit stamps. A stamp is the present moment, moved up where needed so that it is above
/// every stamp in the store and every stamp given before: the clock of a device may be set back, and a row
/// merged from elsewhere may be ahead of this device's clock. Safe to use from several threads.
class EditStamp {
 public:
  /// Takes note of a stamp that is being written without coming from here: that of a merged row. Writes of
  /// other programs and of the other connection are seen without it.
  void saw(Date stamp);
  /// The stamp for a write on the connection at the moment `now`.
  Date next(Connection& connection, Date now);
  /// Forgets what is known of the store; for a changed data file.
  void forget();

 private:
  std::mutex mutex_;
  double last_ = 0;
  /// What one connection has seen of the other programs' and connections' writes: each counts them for
  /// itself.
  struct Seen {
    std::uint64_t serial = 0;
    std::int64_t version = 0;
  };
  std::array<Seen, 2> seen_;
};

}  // namespace moniva
