#include <fmt/format.h>

#include <iterator>

#include "ui/cli/completion_scripts.h"

namespace moniva {
namespace {

/// The part that is alike in every script. The words so far are walked to find the command reached, the
/// option whose value is due and the number of the argument; then what fits is offered. `@` is the function's
/// name.
constexpr std::string_view walker = R"(
~_offer() {
  local word quoted
  for word in "$@"; do
    if [[ $word == "$cur"* ]]; then
      printf -v quoted %q "$word"
      COMPREPLY+=("$quoted")
    fi
  done
}

~_files() {
  compopt -o filenames 2>/dev/null
  mapfile -t COMPREPLY < <(compgen "$1" -- "$cur")
}

~() {
  local cur=${COMP_WORDS[COMP_CWORD]} path= option= place=1 word known i
  local -a commands=() options=() valued=()
  COMPREPLY=()
  ~_enter ''
  for ((i = 1; i < COMP_CWORD; i++)); do
    word=${COMP_WORDS[i]}
    # Bash splits "--name=value" in three words.
    [[ $word == = ]] && continue
    if [[ -n $option ]]; then
      option=
    elif [[ $word == -* ]]; then
      for known in "${valued[@]}"; do
        [[ $word == "$known" ]] && option=$word
      done
    elif ! ~_enter "$path $word"; then
      ((place++))
    fi
  done
  [[ $cur == = ]] && cur=
  if [[ -n $option ]]; then
    ~_values "$path $option"
  elif [[ $cur == -* ]]; then
    ~_offer "${options[@]}"
  else
    ~_values "$path #$place"
    ~_offer "${commands[@]}"
  fi
}
)";

std::string replaceAll(std::string_view text, char sign, std::string_view by) {
  std::string replaced;
  for (const char c : text) {
    if (c == sign)
      replaced += by;
    else
      replaced += c;
  }
  return replaced;
}

std::string quotedWords(const std::vector<std::string>& words) {
  std::string text;
  for (const std::string& word : words) text += (text.empty() ? "" : " ") + shellQuoted(word);
  return text;
}

/// What offers the values of the parameter; empty when anything may stand there.
std::string offerOf(const ParameterInfo& parameter, const std::string& function) {
  if (!parameter.choices.empty()) return function + "_offer " + quotedWords(parameter.choices);
  if (parameter.takesFile) return function + "_files -f";
  if (parameter.takesDirectory) return function + "_files -d";
  return "";
}

class BashWriter {
 public:
  explicit BashWriter(std::string function) : function_(std::move(function)) {}

  /// Notes the command reached by `path` (" book add"), and what is below it.
  void command(const CommandInfo& command, const std::string& path, const std::string& patterns) {
    std::vector<std::string> commands;
    for (const CommandInfo& sub : command.commands) {
      const std::vector<std::string> names = namesOf(sub);
      commands.insert(commands.end(), names.begin(), names.end());
    }
    std::vector<std::string> options;
    std::vector<std::string> valued;
    for (const ParameterInfo& option : optionsOf(command)) {
      options.insert(options.end(), option.names.begin(), option.names.end());
      if (option.valueName.empty()) continue;
      valued.insert(valued.end(), option.names.begin(), option.names.end());
      std::string cases;
      for (const std::string& name : option.names)
        cases += (cases.empty() ? "" : " | ") + shellQuoted(path + " " + name);
      value(cases, option);
    }
    int place = 0;
    for (const ParameterInfo& argument : command.arguments) {
      ++place;
      // What is repeated stands last and takes every place from there on.
      const std::string begin = shellQuoted(path + " #");
      value(argument.isRepeated ? begin + "*" : begin + std::to_string(place), argument);
    }
    fmt::format_to(
        std::back_inserter(enter_),
        "    {})\n      path={}\n      commands=({})\n      options=({})\n      valued=({})\n      ;;\n",
        patterns, shellQuoted(path), quotedWords(commands), quotedWords(options), quotedWords(valued));
    for (const CommandInfo& sub : command.commands) {
      std::string subPatterns;
      for (const std::string& name : namesOf(sub)) {
        subPatterns += (subPatterns.empty() ? "" : " | ") + shellQuoted(path + " " + name);
      }
      this->command(sub, path + " " + sub.name, subPatterns);
    }
  }

  std::string script(const std::string& program) const {
    return fmt::format(
        "# Completes {} in bash.\n\n"
        "{}_enter() {{\n  case $1 in\n{}    *) return 1 ;;\n  esac\n}}\n\n"
        "{}_values() {{\n  case $1 in\n{}    *) ;;\n  esac\n}}\n{}\ncomplete -F {} {}\n",
        program, function_, enter_, function_, values_, replaceAll(walker, '~', function_), function_,
        program);
  }

 private:
  void value(const std::string& patterns, const ParameterInfo& parameter) {
    const std::string offer = offerOf(parameter, function_);
    if (!offer.empty()) values_ += "    " + patterns + ") " + offer + " ;;\n";
  }

  std::string function_;
  std::string enter_;
  std::string values_;
};

}  // namespace

std::string bashCompletion(const CommandInfo& program) {
  BashWriter writer("_" + shellIdentifier(program.name));
  writer.command(program, "", "''");
  return writer.script(program.name);
}

}  // namespace moniva
