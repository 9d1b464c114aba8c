#include <fmt/format.h>

#include "ui/cli/completion_scripts.h"

namespace moniva {
namespace {

/// The text in single quotes, as fish reads them.
std::string fishQuoted(std::string_view text) {
  std::string quoted = "'";
  for (const char c : text) {
    if (c == '\'' || c == '\\') quoted += '\\';
    quoted += c == '\n' ? ' ' : c;
  }
  return quoted + "'";
}

/// Fish splits and expands the list of -a once more, so each of its words is quoted for that.
std::string wordList(const std::vector<std::string>& words) {
  std::string list;
  for (const std::string& word : words) list += (list.empty() ? "" : " ") + fishQuoted(word);
  return fishQuoted(list);
}

/// What offers the values of the parameter.
std::string offerOf(const ParameterInfo& parameter) {
  if (!parameter.choices.empty()) return " -a " + wordList(parameter.choices);
  if (parameter.takesFile) return " -F";
  if (parameter.takesDirectory) return " -a '(__fish_complete_directories)'";
  return "";
}

class FishWriter {
 public:
  explicit FishWriter(const CommandInfo& program)
      : name_(program.name), function_("__" + shellIdentifier(program.name)) {
    command(program, "");
  }

  std::string script() const {
    return fmt::format(R"(# Completes {0} in fish.

# The command that the words so far lead to, and the number of the argument after it.
function {1}_place
    set -l path ''
    set -l option ''
    set -l place 1
    for word in (commandline -opc)[2..-1]
        if test -n "$option"
            set option ''
            continue
        end
        if string match -q -- '-*' $word
            switch "$path $word"
                case {2}
                    set option $word
            end
            continue
        end
        switch "$path $word"
{3}            case '*'
                set place (math $place + 1)
        end
    end
    echo $path
    echo $place
end

# Whether the words lead to a command, and there to an argument from one number to another.
function {1}_at
    set -l reached ({1}_place)
    test "$reached[1]" = "$argv[1]"
    and begin
        not set -q argv[2]
        or test $reached[2] -ge $argv[2] -a $reached[2] -le $argv[3]
    end
end

complete -c {0} -f
{4})",
                       name_, function_, valued_, commands_, lines_);
  }

 private:
  /// `path` leads to the command: "", " book", " book add".
  void command(const CommandInfo& command, const std::string& path) {
    const std::string reached = function_ + "_at " + fishQuoted(path);
    for (const ParameterInfo& option : optionsOf(command)) {
      std::string what;
      for (const std::string& name : option.names) {
        const bool isLong = name.starts_with("--");
        what += (isLong ? " -l " : " -s ") + fishQuoted(name.substr(isLong ? 2 : 1));
        if (!option.valueName.empty())
          valued_ += (valued_.empty() ? "" : " ") + fishQuoted(path + " " + name);
      }
      // Without -x, fish offers files beside the values.
      if (!option.valueName.empty()) what += (option.takesFile ? " -r" : " -x") + offerOf(option);
      addLine(reached, what, option.description);
    }
    int place = 0;
    for (const ParameterInfo& argument : command.arguments) {
      ++place;
      const std::string offer = offerOf(argument);
      if (offer.empty()) continue;
      const std::string numbers = fmt::format(" {} {}", place, argument.isRepeated ? 9999 : place);
      addLine(reached + numbers, offer, argument.description);
    }
    for (const CommandInfo& sub : command.commands) {
      const std::string subPath = path + " " + sub.name;
      std::string patterns;
      for (const std::string& name : namesOf(sub)) {
        patterns += " " + fishQuoted(path + " " + name);
        addLine(reached, " -a " + wordList({name}), sub.summary);
      }
      commands_ +=
          fmt::format("            case{}\n                set path {}\n", patterns, fishQuoted(subPath));
      this->command(sub, subPath);
    }
  }

  void addLine(const std::string& condition, const std::string& what, const std::string& description) {
    lines_ += fmt::format("complete -c {} -n {}{}", name_, fishQuoted(condition), what);
    lines_ += description.empty() ? "\n" : " -d " + fishQuoted(description) + "\n";
  }

  std::string name_;
  std::string function_;
  std::string valued_ = "''";  // fish wants at least one
  std::string commands_;
  std::string lines_;
};

}  // namespace

std::string fishCompletion(const CommandInfo& program) {
  return FishWriter(program).script();
}

}  // namespace moniva
