#pragma once

#include <atomic>
#include <memory>
#include <mutex>
#include <utility>

namespace moniva {

/// A value made at its first use, once, whichever thread comes first. After that a read costs one load.
template <class T>
class Lazy {
 public:
  /// The value; `make()` is called to produce it if this is the first use.
  template <class Make>
  const T& get(Make&& make) const {
    if (const T* ready = ready_.load(std::memory_order_acquire)) return *ready;
    std::call_once(once_, [&] {
      value_ = std::make_unique<const T>(std::forward<Make>(make)());
      ready_.store(value_.get(), std::memory_order_release);
    });
    return *value_;
  }

 private:
  mutable std::once_flag once_;
  mutable std::unique_ptr<const T> value_;
  mutable std::atomic<const T*> ready_ = nullptr;
};

}  // namespace moniva
