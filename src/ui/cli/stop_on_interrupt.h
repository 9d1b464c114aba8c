#pragma once

#include <atomic>

namespace moniva {

/// While it lives, the first interrupt (Ctrl-C) asks a report to stop at its next period instead of ending
/// the program; a second one ends it. One at a time.
class StopOnInterrupt {
 public:
  StopOnInterrupt();
  ~StopOnInterrupt();
  StopOnInterrupt(const StopOnInterrupt&) = delete;
  StopOnInterrupt& operator=(const StopOnInterrupt&) = delete;

  /// Set from the interrupt on; lives as long as the program.
  static const std::atomic<bool>& flag();

 private:
  void (*before_)(int);
};

}  // namespace moniva
