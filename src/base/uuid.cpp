#include "base/uuid.h"

#include <fmt/format.h>

#include <algorithm>
#include <boost/uuid/name_generator_sha1.hpp>
#include <boost/uuid/nil_generator.hpp>
#include <cmath>

namespace moniva {
namespace {

constexpr std::uint64_t lowMask = (std::uint64_t{1} << 62U) - 1;

/// The 122 free bits of a version 7 UUID in their order.
struct Bits {
  std::uint64_t high;
  std::uint64_t low;
};

Bits bitsOf(double secondsSince1970, const UuidEntropy& random) {
  constexpr double lastMillisecond = 281474976710655.0;
  const double milliseconds = std::round(secondsSince1970 * 1000.0);
  // The comparison also sends a NaN to zero.
  const auto time =
      milliseconds > 0 ? static_cast<std::uint64_t>(std::min(milliseconds, lastMillisecond)) : 0;
  Bits bits{time << 12U | (random[0] & 0x0FU) << 8U | random[1], 0};
  for (std::size_t i = 2; i < random.size(); ++i) bits.low = bits.low << 8U | random[i];
  bits.low &= lowMask;
  return bits;
}

std::string textOf(const Bits& bits) {
  constexpr std::uint64_t version = 0x7000;
  constexpr std::uint64_t variant = 0x8000;
  return fmt::format("{:08x}-{:04x}-{:04x}-{:04x}-{:012x}", bits.high >> 28U, bits.high >> 12U & 0xFFFFU,
                     (bits.high & 0x0FFFU) | version, bits.low >> 48U | variant, bits.low & 0xFFFFFFFFFFFFU);
}

}  // namespace

std::string uuidV7(double secondsSince1970, const UuidEntropy& random) {
  return textOf(bitsOf(secondsSince1970, random));
}

std::string nameBasedUuidV7(double secondsSince1970, std::string_view name) {
  const auto hash = boost::uuids::name_generator_sha1(boost::uuids::nil_uuid())(name.data(), name.size());
  // Bytes 6 and 8 of the hash already carry a version and a variant; the rest is untouched.
  UuidEntropy random{};
  std::copy_n(hash.begin(), 5, random.begin());
  std::copy_n(hash.begin() + 11, 5, random.begin() + 5);
  return uuidV7(secondsSince1970, random);
}

std::string UuidGenerator::next(double secondsSince1970, const UuidEntropy& random) {
  const auto fresh = bitsOf(secondsSince1970, random);
  const std::scoped_lock lock(mutex_);
  if (fresh.high >> 12U > high_ >> 12U) {
    high_ = fresh.high;
    low_ = fresh.low;
  } else {
    // A step of random length keeps the next one hard to guess; a carry runs on into the milliseconds.
    low_ += 1 + (fresh.low & 0xFFFFFFFFU);
    high_ += low_ >> 62U;
    low_ &= lowMask;
  }
  return textOf({high_, low_});
}

}  // namespace moniva
