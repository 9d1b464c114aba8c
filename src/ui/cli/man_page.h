#pragma once

#include <CLI/App.hpp>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "ui/cli/command_tree.h"

namespace moniva {

/// A name and what it stands for: an exit status, a variable, a file.
struct ManualEntry {
  std::string_view name;
  std::string_view meaning;
};

/// What the manual page tells beyond the tree of commands.
struct ManualTexts {
  std::span<const CommandText> commands;
  std::vector<ManualEntry> exitStatus = {};
  std::vector<ManualEntry> environment = {};
  std::vector<ManualEntry> files = {};
};

/// The program's page for section 1 of the manual, as troff source with the macros of man(7): name, synopsis,
/// description, options, every command with its options, examples, and those of exit status, environment and
/// files that have entries. `date` is printed as it is handed in ("2024-02-29").
std::string manPage(const CLI::App& root, const ManualTexts& texts, std::string_view version,
                    std::string_view date, const Localization& localization = Localization());

}  // namespace moniva
