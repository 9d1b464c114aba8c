#pragma once

#include "ui/cli/command_line.h"

namespace moniva {

/// The commands on when bills close and when they are due; `check` ends the command for what was typed and is
/// not theirs.
void addBillDayCommands(CommandLine& line, CLI::App& bill, const std::function<void()>& check);

}  // namespace moniva
