#pragma once

#include <functional>
#include <mutex>
#include <string>
#include <string_view>

namespace moniva {

/// The program's running commentary: free text lines with a leading marker ("==", "==="). Where they go is
/// the host's choice; by default nowhere. Faults of the store go to the fault log instead.
class Log {
 public:
  using Sink = std::function<void(std::string_view line)>;

  void setSink(Sink sink) {
    const std::scoped_lock lock(mutex_);
    sink_ = std::move(sink);
  }
  void line(std::string_view text) {
    const std::scoped_lock lock(mutex_);
    if (sink_) sink_(text);
  }

 private:
  std::mutex mutex_;
  Sink sink_;
};

}  // namespace moniva
