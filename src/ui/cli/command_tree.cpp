#include "ui/cli/command_tree.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>

#include "base/phrase.h"

namespace moniva {
namespace {

/// Splits at the separator, except inside braces.
std::vector<std::string> splitOutsideBraces(std::string_view text, char separator) {
  std::vector<std::string> parts(1);
  int depth = 0;
  for (const char c : text) {
    if (c == '{') ++depth;
    if (c == '}') --depth;
    if (c == separator && depth == 0) {
      parts.emplace_back();
    } else {
      parts.back() += c;
    }
  }
  return parts;
}

/// The choices a validator tells of: "{day,week}", or "value in {day->0,week->1} OR {0,1}" where names stand
/// for values.
std::vector<std::string> choicesIn(std::string_view validator) {
  const std::size_t open = validator.find('{');
  const std::size_t close = validator.find('}');
  const bool isChoice = open == 0 || validator.starts_with("value in {");
  if (!isChoice || close == std::string_view::npos) return {};
  std::vector<std::string> choices = splitOutsideBraces(validator.substr(open + 1, close - open - 1), ',');
  for (std::string& choice : choices) choice.erase(std::min(choice.find("->"), choice.size()));
  return choices;
}

/// The parser keeps the value's name and all its validators tell in one text: "TEXT:FILE",
/// "WHEN:{auto,never}".
void readTypeName(const std::string& typeName, ParameterInfo& parameter) {
  for (const std::string& part : splitOutsideBraces(typeName, ':')) {
    std::vector<std::string> choices = choicesIn(part);
    if (!choices.empty()) {
      parameter.choices = std::move(choices);
    } else if (part == "FILE" || part.starts_with("PATH")) {
      parameter.takesFile = true;
    } else if (part == "DIR") {
      parameter.takesDirectory = true;
    } else if (part == "INT" || part == "UINT" || part == "FLOAT") {
      parameter.valueName = "NUMBER";
    } else if (parameter.valueName.empty()) {
      parameter.valueName = part;
    }
  }
  const bool isPlainText = parameter.valueName.empty() || parameter.valueName == "TEXT";
  if (parameter.takesFile && isPlainText) parameter.valueName = "FILE";
  if (parameter.takesDirectory && isPlainText) parameter.valueName = "DIR";
  if (parameter.valueName.empty()) parameter.valueName = "VALUE";
}

std::string detailsOf(const ParameterInfo& parameter, const Translate& translate) {
  std::vector<std::string> notes;
  const auto note = [&](const Phrase& text) { notes.push_back(text.in(translate)); };
  if (!parameter.choices.empty())
    note(phrase("one of: {}", fmt::format("{}", fmt::join(parameter.choices, ", "))));
  if (!parameter.defaultValue.empty()) note(phrase("default: {}", parameter.defaultValue));
  if (!parameter.variable.empty()) note(phrase("variable: {}", parameter.variable));
  const bool isOption = parameter.names.front().starts_with('-');
  if (isOption && parameter.isRequired) note(phrase("required"));
  if (isOption && parameter.isRepeated) note(phrase("may be repeated"));
  if (notes.empty()) return parameter.description;
  return fmt::format("{}{}({})", parameter.description, parameter.description.empty() ? "" : " ",
                     fmt::join(notes, "; "));
}

std::string usageOf(const CommandInfo& command, const Translate& translate) {
  std::string usage = command.fullName;
  if (!command.options.empty()) usage += " [" + translate("options") + "]";
  for (const ParameterInfo& argument : command.arguments) usage += " " + usageOf(argument);
  if (command.commands.empty()) return usage;
  const std::string name = translate("COMMAND");
  return usage + (command.needsCommand ? " " + name : " [" + name + "]");
}

ParameterInfo describeParameter(const CLI::Option& option, const Translate& translate) {
  ParameterInfo parameter;
  if (option.nonpositional()) {
    for (const std::string& name : option.get_snames()) parameter.names.push_back("-" + name);
    for (const std::string& name : option.get_lnames()) parameter.names.push_back("--" + name);
  } else {
    parameter.names.push_back(option.get_name(true));
  }
  const bool isFlag = option.get_items_expected_max() == 0;
  if (!isFlag) {
    readTypeName(option.get_type_name(), parameter);
    parameter.defaultValue = option.get_default_str();
    parameter.isRepeated = option.get_expected_max() > 1;
  }
  parameter.isRequired = option.get_required();
  parameter.variable = option.get_envname();
  parameter.description = translate(option.get_description());
  parameter.details = detailsOf(parameter, translate);
  return parameter;
}

/// Options that every command has for itself.
bool isHelpOrVersion(const CLI::App& app, const CLI::Option& option) {
  return &option == app.get_help_ptr() || &option == app.get_help_all_ptr() ||
         &option == app.get_version_ptr();
}

/// Calls `take(option)` for what is shown of a command's options, those of its option groups among them.
template <class Take>
void forEachOption(const CLI::App& app, Take take) {
  const bool isGroup = app.get_name().empty() && app.get_parent() != nullptr;
  for (const CLI::Option* option : app.get_options()) {
    const bool isHidden = option->get_group().empty();
    // The parser gives a group a help option too, which nobody can reach.
    if (!isHidden && !(isGroup && isHelpOrVersion(app, *option))) take(*option);
  }
  const auto isShownGroup = [](const CLI::App* sub) {
    return sub->get_name().empty() && !sub->get_group().empty();
  };
  for (const CLI::App* group : app.get_subcommands(isShownGroup)) forEachOption(*group, take);
}

bool sharesName(const ParameterInfo& a, const ParameterInfo& b) {
  return std::find_first_of(a.names.begin(), a.names.end(), b.names.begin(), b.names.end()) != a.names.end();
}

/// Options of the program that the parser takes after this command as well. It takes those of the commands
/// between, too, which are not shown: they are theirs alone, and refused here.
std::vector<ParameterInfo> inheritedOptions(const CLI::App& app, const std::vector<ParameterInfo>& own,
                                            const Translate& translate) {
  std::vector<ParameterInfo> inherited;
  for (const CLI::App* at = &app; at->get_fallthrough() && at->get_parent() != nullptr;
       at = at->get_parent()) {
    const CLI::App& parent = *at->get_parent();
    if (parent.get_parent() != nullptr) continue;
    forEachOption(parent, [&](const CLI::Option& option) {
      if (!option.nonpositional()) return;
      if (isHelpOrVersion(parent, option)) return;
      ParameterInfo parameter = describeParameter(option, translate);
      const auto isSame = [&](const ParameterInfo& other) { return sharesName(parameter, other); };
      if (std::none_of(own.begin(), own.end(), isSame)) inherited.push_back(std::move(parameter));
    });
  }
  return inherited;
}

CommandInfo describe(const CLI::App& app, const std::string& path, const std::string& fullName,
                     std::span<const CommandText> texts, const Translate& translate) {
  CommandInfo command;
  command.name = app.get_name();
  command.fullName = fullName;
  command.aliases = app.get_aliases();

  const std::string& told = app.get_description();
  const std::size_t firstLine = std::min(told.find('\n'), told.size());
  command.summary = told.substr(0, firstLine);
  const std::size_t rest = told.find_first_not_of('\n', firstLine);
  if (rest != std::string::npos) command.description = told.substr(rest);
  const auto text =
      std::find_if(texts.begin(), texts.end(), [&](const CommandText& one) { return one.path == path; });
  if (text != texts.end()) {
    command.summary = text->summary;
    command.description = text->description;
    command.examples = text->examples;
  }
  command.summary = translate(command.summary);
  command.description = translate(command.description);
  for (Example& example : command.examples) example.what = translate(example.what);

  forEachOption(app, [&](const CLI::Option& option) {
    auto& list = option.nonpositional() ? command.options : command.arguments;
    list.push_back(describeParameter(option, translate));
  });
  command.globals = inheritedOptions(app, command.options, translate);
  command.needsCommand = app.get_require_subcommand_min() > 0;
  const auto isShown = [](const CLI::App* sub) {
    return !sub->get_name().empty() && !sub->get_group().empty();
  };
  for (const CLI::App* sub : app.get_subcommands(isShown)) {
    const std::string& name = sub->get_name();
    command.commands.push_back(
        describe(*sub, path.empty() ? name : path + " " + name, fullName + " " + name, texts, translate));
  }
  command.usage = usageOf(command, translate);
  return command;
}

}  // namespace

CommandInfo describeCommand(const CLI::App& app, std::span<const CommandText> texts,
                            const Localization& localization) {
  std::string path;
  const CLI::App* root = &app;
  for (; root->get_parent() != nullptr; root = root->get_parent()) {
    if (root->get_name().empty()) continue;
    path = path.empty() ? root->get_name() : root->get_name() + " " + path;
  }
  return describe(app, path, path.empty() ? root->get_name() : root->get_name() + " " + path, texts,
                  [&](std::string_view english) { return localization.localized(english); });
}

std::string usageOf(const ParameterInfo& argument) {
  const std::string usage = argument.names.front() + (argument.isRepeated ? "..." : "");
  return argument.isRequired ? usage : "[" + usage + "]";
}

}  // namespace moniva
