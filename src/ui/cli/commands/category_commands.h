#pragma once

#include <CLI/App.hpp>
#include <functional>

#include "ui/cli/command_line.h"

namespace moniva {

/// The commands below `category` that do not change a category itself: books, order, accounts, upkeep.
void addCategoryViewCommands(CommandLine& line, CLI::App& category);
/// Those that list which categories are in use.
void addCategoryUseCommands(CommandLine& line, CLI::App& category);

/// Makes changes that are kept together or, where one ends the command, not at all.
void inOneGo(Session& session, const std::function<void()>& changes);
/// Tells that books have no views of their own, and how to get them.
void tellBooksShare(Session& session);

}  // namespace moniva
