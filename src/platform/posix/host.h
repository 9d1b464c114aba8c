#pragma once

#include <optional>
#include <string>

#include "platform/clock.h"
#include "platform/random_source.h"

/// The real host: the only place that reads the system's clock, zone, locale, environment and randomness.
namespace moniva {

class SystemClock final : public Clock {
 public:
  Date now() const override;
};

class SystemRandom final : public RandomSource {
 public:
  void fill(std::span<std::uint8_t> bytes) override;
};

/// An environment variable; nothing when it is unset or empty.
std::optional<std::string> environment(const char* name);

/// The IANA name of the host's time zone; "UTC" when the host does not say.
std::string systemZone();

/// The locale the user chose for messages and formats (LC_ALL, LC_TIME, LANG); "en_US" when none is set.
std::string systemLocale();

/// Whether the descriptor is a terminal, and how many columns that has.
bool isTerminal(int descriptor);
int terminalWidth(int descriptor);

/// The folder of the running program's file.
std::string programFolder();

}  // namespace moniva
