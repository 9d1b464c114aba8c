#pragma once

#include <cstdint>
#include <mutex>
#include <random>
#include <span>

namespace moniva {

/// Where unpredictable bytes come from (identifiers are made of them). Safe to use from several threads.
class RandomSource {
 public:
  virtual ~RandomSource() = default;
  virtual void fill(std::span<std::uint8_t> bytes) = 0;
};

/// The same bytes for the same seed: for tests and reproducible runs.
class SeededRandom final : public RandomSource {
 public:
  explicit SeededRandom(std::uint64_t seed) : engine_(seed) {}
  void fill(std::span<std::uint8_t> bytes) override {
    const std::scoped_lock lock(mutex_);
    for (auto& byte : bytes) byte = static_cast<std::uint8_t>(engine_() & 0xFFU);
  }

 private:
  std::mutex mutex_;
  std::mt19937_64 engine_;
};

}  // namespace moniva
