#include "ui/cli/completion.h"

#include "ui/cli/completion_scripts.h"

namespace moniva {

std::optional<Shell> shellNamed(std::string_view name) {
  if (name == "bash") return Shell::bash;
  if (name == "zsh") return Shell::zsh;
  if (name == "fish") return Shell::fish;
  return std::nullopt;
}

std::string completionScript(const CLI::App& root, Shell shell, std::span<const CommandText> texts,
                             const Localization& localization) {
  const CommandInfo program = describeCommand(root, texts, localization);
  switch (shell) {
    case Shell::bash:
      return bashCompletion(program);
    case Shell::zsh:
      return zshCompletion(program);
    case Shell::fish:
      return fishCompletion(program);
  }
  return "";
}

std::string shellQuoted(std::string_view text) {
  std::string quoted = "'";
  for (const char c : text) {
    if (c == '\'')
      quoted += "'\\''";
    else
      quoted += c;
  }
  return quoted + "'";
}

std::string shellIdentifier(std::string_view text) {
  std::string name;
  for (const char c : text) {
    const bool isLetter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
    name += isLetter ? c : '_';
  }
  return name;
}

std::vector<std::string> namesOf(const CommandInfo& command) {
  std::vector<std::string> names{command.name};
  names.insert(names.end(), command.aliases.begin(), command.aliases.end());
  return names;
}

std::vector<ParameterInfo> optionsOf(const CommandInfo& command) {
  std::vector<ParameterInfo> options = command.options;
  options.insert(options.end(), command.globals.begin(), command.globals.end());
  return options;
}

}  // namespace moniva
