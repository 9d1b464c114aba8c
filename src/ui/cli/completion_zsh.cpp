#include <fmt/format.h>

#include "ui/cli/completion_scripts.h"

namespace moniva {
namespace {

/// The text with a backslash before each of `signs` and before backslashes.
std::string backslashed(std::string_view text, std::string_view signs) {
  std::string safe;
  for (const char c : text) {
    if (c == '\\' || signs.find(c) != std::string_view::npos) safe += '\\';
    safe += c == '\n' ? ' ' : c;
  }
  return safe;
}

/// What completes a value, after the colon of what describes an argument to _arguments.
std::string actionOf(const ParameterInfo& parameter) {
  if (!parameter.choices.empty()) {
    std::string words;
    for (const std::string& choice : parameter.choices) {
      words += (words.empty() ? "" : " ") + backslashed(choice, " ()\"'$`:;&|<>*?[]");
    }
    return "(" + words + ")";
  }
  if (parameter.takesFile) return "_files";
  if (parameter.takesDirectory) return "_files -/";
  return " ";  // a value is due, but nothing is known of it
}

std::string joined(const std::vector<std::string>& words) {
  std::string text;
  for (const std::string& word : words) text += (text.empty() ? "" : " ") + word;
  return text;
}

/// What _arguments is told of the option: a word for each name, each shutting the others out.
void addOption(const ParameterInfo& option, std::vector<std::string>& words) {
  for (const std::string& name : option.names) {
    std::string word = option.isRepeated ? "*" : "(" + joined(option.names) + ")";
    word += name;
    const bool isLong = name.starts_with("--");
    if (!option.valueName.empty()) word += isLong ? "=" : "+";
    word += "[" + backslashed(option.description, "[]") + "]";
    if (!option.valueName.empty()) word += ":" + backslashed(option.valueName, ":") + ":" + actionOf(option);
    words.push_back(shellQuoted(word));
  }
}

std::string functionOf(const CommandInfo& command) {
  return "_" + shellIdentifier(command.fullName);
}

/// The function that completes the command, after those of the commands below it.
void addFunction(const CommandInfo& command, std::string& script) {
  for (const CommandInfo& sub : command.commands) addFunction(sub, script);

  std::vector<std::string> words;
  for (const ParameterInfo& option : optionsOf(command)) addOption(option, words);
  for (const ParameterInfo& argument : command.arguments) {
    const std::string place = argument.isRepeated ? "*:" : argument.isRequired ? ":" : "::";
    words.push_back(shellQuoted(place + backslashed(argument.names.front(), ":") + ":" + actionOf(argument)));
  }
  const bool hasCommands = !command.commands.empty();
  if (hasCommands) {
    words.emplace_back("': :->command'");
    words.emplace_back("'*:: :->rest'");
  }

  script += fmt::format("\n{}() {{\n", functionOf(command));
  if (hasCommands) {
    script += "  local curcontext=$curcontext state line\n  local -a commands\n  commands=(\n";
    for (const CommandInfo& sub : command.commands) {
      for (const std::string& name : namesOf(sub)) {
        script += "    " + shellQuoted(backslashed(name, ":") + ":" + backslashed(sub.summary, "")) + "\n";
      }
    }
    script += "  )\n";
  }
  script += hasCommands ? "  _arguments -C" : "  _arguments";
  for (const std::string& word : words) script += " \\\n    " + word;
  if (hasCommands) {
    script +=
        " && return\n  case $state in\n    command) _describe -t commands command commands ;;\n"
        "    rest)\n      case $words[1] in\n";
    for (const CommandInfo& sub : command.commands) {
      std::string patterns;
      for (const std::string& name : namesOf(sub))
        patterns += (patterns.empty() ? "" : "|") + shellQuoted(name);
      script += "        " + patterns + ") " + functionOf(sub) + " ;;\n";
    }
    script += "      esac\n      ;;\n  esac";
  }
  script += "\n}\n";
}

}  // namespace

std::string zshCompletion(const CommandInfo& program) {
  std::string script = fmt::format("#compdef {}\n# Completes {} in zsh.\n", program.name, program.name);
  addFunction(program, script);
  // Found in the path of functions, the file is the body of the function; sourced, it announces itself.
  script += fmt::format("\nif [[ $funcstack[1] == {0} ]]; then\n  {0} \"$@\"\nelse\n  compdef {0} {1}\nfi\n",
                        functionOf(program), program.name);
  return script;
}

}  // namespace moniva
