#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "ui/cli/command_tree.h"

namespace moniva {

/// What the completion scripts of the shells are made with; completion.h is what others call.

std::string bashCompletion(const CommandInfo& program);
std::string zshCompletion(const CommandInfo& program);
std::string fishCompletion(const CommandInfo& program);

/// The text in single quotes, as bash and zsh read them.
std::string shellQuoted(std::string_view text);

/// The text with everything but letters and digits of ASCII replaced by "_".
std::string shellIdentifier(std::string_view text);

/// The command's name followed by its aliases.
std::vector<std::string> namesOf(const CommandInfo& command);

/// The options taken after the command: its own, then those of the commands above.
std::vector<ParameterInfo> optionsOf(const CommandInfo& command);

}  // namespace moniva
