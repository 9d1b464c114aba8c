#pragma once

#include <unicode/utypes.h>

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "base/result.h"
#include "calendar/lazy.h"

U_NAMESPACE_BEGIN
class BasicTimeZone;
U_NAMESPACE_END

namespace moniva {

/// What a clock on the wall in one zone shows, and when it is set forward or back.
///
/// Instants are whole seconds since 1970, wall times the same number read as if the zone were UTC. The
/// changes of the clock up to 2200 are copied from ICU into a table at the first use; a look-up is then a
/// binary search instead of a walk through ICU's rules. Later instants are asked of ICU itself.
class Zone {
 public:
  /// A stretch of time over which the offset does not change: `begin` <= instant < `end`.
  struct Stretch {
    std::int64_t begin;
    std::int64_t end;
    std::int64_t offset;  ///< seconds east of UTC
  };

  /// The instants at which the clock shows some wall time.
  struct Wall {
    enum class Kind { once, twice, skipped };
    Kind kind;
    /// The instant, or the first of two. Of a skipped time: the instant whose wall time is earlier by the
    /// gap.
    std::int64_t first;
    /// The instant, or the last of two. Of a skipped time: the instant whose wall time is later by the gap.
    std::int64_t last;
    /// Of a skipped time: the first instant after the gap. Otherwise `first`.
    std::int64_t change;
  };

  /// The zone of an IANA id ("Europe/Berlin"). An unknown id is refused, with the nearest known one if any is
  /// near.
  static Result<std::unique_ptr<const Zone>> make(std::string_view id);
  ~Zone();

  [[nodiscard]] const std::string& id() const { return id_; }
  /// Seconds east of UTC at an instant.
  [[nodiscard]] std::int64_t offsetAt(std::int64_t instant) const { return stretchAt(instant).offset; }
  /// When the clock shows `wallSeconds`.
  [[nodiscard]] Wall wall(std::int64_t wallSeconds) const;
  [[nodiscard]] Stretch stretchAt(std::int64_t instant) const;
  /// ICU's own form of the zone, for its formatters.
  [[nodiscard]] const icu::BasicTimeZone& icuZone() const { return *zone_; }

 private:
  /// The clock's changes: from `at[i]` on the offset is `offset[i]`. The first begins before all time.
  struct Table {
    std::vector<std::int64_t> at;
    std::vector<std::int64_t> offset;
    std::int64_t end = 0;  ///< where the last offset ends
  };

  Zone(std::string_view id, std::unique_ptr<icu::BasicTimeZone> zone);
  [[nodiscard]] Table makeTable() const;
  [[nodiscard]] Stretch askIcu(std::int64_t instant) const;

  std::string id_;
  std::unique_ptr<icu::BasicTimeZone> zone_;
  Lazy<Table> table_;
};

}  // namespace moniva
