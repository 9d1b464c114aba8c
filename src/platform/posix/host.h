#pragma once

#include <filesystem>
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

/// The time zone the variable TZ asks for, as a name for a Zone: of a path into the zone base the name that
/// file stands for, of a fixed distance such as "JST-9" that distance; an empty variable means UTC. Anything
/// else comes back as it is, known or not. Nothing when the variable is not set.
std::optional<std::string> environmentZone();

/// The IANA name of the host's own time zone; "UTC" when the host does not say.
std::string systemZone();

/// The locale the user chose for messages and formats (LC_ALL, LC_TIME, LANG); "en", of no country, when none
/// is set.
std::string systemLocale();

/// Where programs keep files for a while: TMPDIR, else "/tmp". It need not be there.
std::filesystem::path temporaryFolder();

/// Whether the descriptor is a terminal, and how many columns that has (80 when it does not say).
bool isTerminal(int descriptor);
int terminalWidth(int descriptor);

/// The folder of the running program's file.
std::string programFolder();

}  // namespace moniva
