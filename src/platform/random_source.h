#pragma once

#include <cstdint>
#include <random>
#include <span>

namespace moniva {

/// Where unpredictable bytes come from (identifiers are made of them).
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
    for (auto& byte : bytes) byte = static_cast<std::uint8_t>(engine_() & 0xFFU);
  }

 private:
  std::mt19937_64 engine_;
};

}  // namespace moniva
