#pragma once

#include <CLI/App.hpp>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/localization.h"

namespace moniva {

/// A command line worth showing, and what it does.
struct Example {
  std::string command;
  std::string what;
};

/// What is told of a command beyond its options. The texts of all commands stand in one table, from which
/// help, completion and the manual page are made alike.
struct CommandText {
  std::string_view path;         ///< "book add"; "" for the program itself
  std::string_view summary;      ///< one line without a full stop
  std::string_view description;  ///< paragraphs with an empty line between them; may be empty
  std::vector<Example> examples;
};

/// An option or an argument of a command, as a person is told of it.
struct ParameterInfo {
  std::vector<std::string> names =
      {};                      ///< "-c", "--currency", in this order; of an argument only its name, "FILE"
  std::string valueName = {};  ///< "CODE"; empty for a flag
  std::vector<std::string> choices = {};  ///< every value it takes, when there are only so many
  bool takesFile = false;
  bool takesDirectory = false;
  bool isRequired = false;
  bool isRepeated = false;  ///< takes several values
  std::string defaultValue = {};
  std::string variable = {};  ///< environment variable that may stand in for it
  std::string description = {};
  /// The description with what else there is to know: choices, the value taken when none is given, the
  /// variable.
  std::string details = {};
};

/// A command with all that is below it: the parser's tree without the parser.
struct CommandInfo {
  std::string name;
  std::string fullName;  ///< with the program's: "moniva book add"
  std::vector<std::string> aliases;
  std::string summary;
  std::string description;
  std::string usage;  ///< "moniva book add [options] NAME": how the command is called
  std::vector<ParameterInfo> arguments;
  std::vector<ParameterInfo> options;
  std::vector<ParameterInfo> globals;  ///< options of the program that are taken here too
  std::vector<CommandInfo> commands;
  bool needsCommand = false;
  std::vector<Example> examples;
};

/// The command `app` and what is below it, told in the language of the localization. Hidden options and
/// commands (those of the empty group) are left out, options of option groups are those of the command
/// around. A command without a text takes its summary from the first line of its description in the parser,
/// and its description from the rest.
CommandInfo describeCommand(const CLI::App& app, std::span<const CommandText> texts,
                            const Localization& localization = Localization());

/// An argument as the usage shows it: "NAME", "[NAME]", "FILE..." or "[FILE...]".
std::string usageOf(const ParameterInfo& argument);

}  // namespace moniva
