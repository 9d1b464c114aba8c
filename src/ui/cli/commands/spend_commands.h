#pragma once

#include "ui/cli/command_line.h"

namespace moniva {

// The commands below "spend" that have files of their own.
void addSpendEdits(CommandLine& line, CLI::App& spend);
void addSpendList(CommandLine& line, CLI::App& spend);

/// A list of carts, plans or spread costs: "cart list" and its like, for the compound kind (1001 to 1003).
void addCompoundList(CommandLine& line, CLI::App& family, int advancedType);

}  // namespace moniva
