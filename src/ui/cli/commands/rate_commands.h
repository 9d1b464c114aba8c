#pragma once

#include <boost/json/object.hpp>
#include <string>

#include "ui/cli/command_line.h"

/// What the commands about exchange rates share: where rates come from, and of when they are.
namespace moniva {

/// What the JSON of every command about rates begins with: their moment, whether they are old, their file.
boost::json::object jsonOfSource(Session& session);
/// "Fetched on Nov 21, 2026 12:00.", or which file they were loaded from.
std::string sourceText(Session& session);

/// The commands that get rates: refresh, load and services.
void addRateSources(CommandLine& line, CLI::App& rate);

}  // namespace moniva
