#pragma once

#include "calendar/date.h"

namespace moniva {

/// Where "now" comes from. Asked once per operation; the answer is carried along.
class Clock {
 public:
  virtual ~Clock() = default;
  virtual Date now() const = 0;
};

/// A clock that stands still until it is set: for `--now` and for tests.
class FixedClock final : public Clock {
 public:
  explicit FixedClock(Date now) : now_(now) {}
  Date now() const override { return now_; }
  void set(Date now) { now_ = now; }

 private:
  Date now_;
};

}  // namespace moniva
