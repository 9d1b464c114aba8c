#pragma once

#include <array>
#include <cstdint>
#include <mutex>
#include <string>
#include <string_view>

namespace moniva {

/// What a UUID needs besides the time; 74 of these 80 bits find their way into it.
using UuidEntropy = std::array<std::uint8_t, 10>;

/// A version 7 UUID in lower-case text: the milliseconds of `secondsSince1970` (rounded, and 0 for what lies
/// before 1970) followed by the random bits, so that texts of different milliseconds sort by time.
std::string uuidV7(double secondsSince1970, const UuidEntropy& random);

/// The same layout with the SHA-1 of `name` for its random bits: equal arguments give the equal UUID on every
/// device. For records whose identity follows from their content.
std::string nameBasedUuidV7(double secondsSince1970, std::string_view name);

/// Version 7 UUIDs of which each sorts after the one before, also within one millisecond and when the clock
/// is set back. May be used by several threads at once.
class UuidGenerator {
 public:
  std::string next(double secondsSince1970, const UuidEntropy& random);

 private:
  std::mutex mutex_;
  std::uint64_t high_ = 0;  ///< 48 bits of milliseconds, then the first 12 random bits
  std::uint64_t low_ = 0;   ///< the other 62 random bits
};

}  // namespace moniva
