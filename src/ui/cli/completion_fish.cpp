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
    echo "$path #$place"
end

function {1}_in
    string match -q -- "$argv[1] #*" ({1}_place)
end

function {1}_at
    string match -q -- "$argv[1]" ({1}_place)
end

complete -c {0} -f
{4})",
                       name_, function_, valued_, commands_, lines_);
  }

 private:
  /// `path` leads to the command: "", " book", " book add".
  void command(const CommandInfo& command, const std::string& path) {
    for (const ParameterInfo& option : optionsOf(command)) {
      std::string line =
          fmt::format("complete -c {} -n {}", name_, fishQuoted(function_ + "_in " + fishQuoted(path)));
      for (const std::string& name : option.names) {
        const bool isLong = name.starts_with("--");
        line += (isLong ? " -l " : " -s ") + fishQuoted(name.substr(isLong ? 2 : 1));
        if (!option.valueName.empty())
          valued_ += (valued_.empty() ? "" : " ") + fishQuoted(path + " " + name);
      }
      if (!option.valueName.empty()) line += " -r" + offerOf(option);
      lines_ += line + described(option.description);
    }
    int place = 0;
    for (const ParameterInfo& argument : command.arguments) {
      ++place;
      const std::string offer = offerOf(argument);
      const std::string at = path + " #" + (argument.isRepeated ? "*" : std::to_string(place));
      if (offer.empty()) continue;
      lines_ += fmt::format("complete -c {} -n {}{}", name_, fishQuoted(function_ + "_at " + fishQuoted(at)),
                            offer) +
                described(argument.description);
    }
    for (const CommandInfo& sub : command.commands) {
      const std::string subPath = path + " " + sub.name;
      std::string patterns;
      for (const std::string& name : namesOf(sub)) {
        patterns += " " + fishQuoted(path + " " + name);
        lines_ += fmt::format("complete -c {} -n {} -a {}", name_,
                              fishQuoted(function_ + "_in " + fishQuoted(path)), wordList({name})) +
                  described(sub.summary);
      }
      commands_ +=
          fmt::format("            case{}\n                set path {}\n", patterns, fishQuoted(subPath));
      this->command(sub, subPath);
    }
  }

  static std::string described(const std::string& text) {
    return text.empty() ? "\n" : " -d " + fishQuoted(text) + "\n";
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
