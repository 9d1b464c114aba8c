#pragma once

#include <CLI/App.hpp>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "ui/cli/command_tree.h"

namespace moniva {

enum class Shell { bash, zsh, fish };

/// The shell of that name ("bash", "zsh", "fish"), if it is one of them.
std::optional<Shell> shellNamed(std::string_view name);

/// A script that teaches a shell to complete the program's command line: commands with their aliases,
/// options, the choices of options and arguments that have some, and files and directories where they are
/// taken. The script stands alone (for bash it needs bash 4 and no other package); it is to be sourced, or
/// for zsh and fish put where they look for completions. Zsh and fish also show the summaries.
std::string completionScript(const CLI::App& root, Shell shell, std::span<const CommandText> texts = {},
                             const Localization& localization = Localization());

}  // namespace moniva
