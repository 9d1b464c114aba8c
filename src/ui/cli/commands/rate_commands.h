#pragma once

#include <string>

#include "ui/cli/command_line.h"

/// What the commands about exchange rates share: where rates come from, and of when they are.
namespace moniva {

/// The file the rates in use were loaded from; "" for rates that were fetched.
std::string loadedFrom(Session& session);
/// "Nov 21, 2026": the day of the rates in use.
std::string ratesDay(Session& session);
/// "Fetched on Nov 21, 2026 12:00.", or which file they were loaded from.
std::string sourceText(Session& session);

/// The commands that get rates: refresh, load and services.
void addRateSources(CommandLine& line, CLI::App& rate);

}  // namespace moniva
