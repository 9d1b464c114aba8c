#include "ui/cli/man_page.h"

#include <algorithm>
#include <cctype>

namespace moniva {
namespace {

/// Text as troff prints it sign for sign. Hyphens become minus signs, as options have to be typed; quotes
/// stay straight; a line that begins like a request is kept from being one.
std::string escaped(std::string_view text) {
  std::string safe;
  bool atLineStart = true;
  for (const char c : text) {
    if (atLineStart && (c == '.' || c == '\'')) safe += "\\&";
    atLineStart = c == '\n';
    switch (c) {
      case '\\':
        safe += "\\e";
        break;
      case '-':
        safe += "\\-";
        break;
      case '\'':
        safe += "\\(aq";
        break;
      case '"':
        safe += "\\(dq";
        break;
      case '`':
        safe += "\\(ga";
        break;
      case '^':
        safe += "\\(ha";
        break;
      case '~':
        safe += "\\(ti";
        break;
      default:
        safe += c;
    }
  }
  return safe;
}

std::string bold(std::string_view text) {
  return "\\fB" + escaped(text) + "\\fR";
}
std::string italic(std::string_view text) {
  return "\\fI" + escaped(text) + "\\fR";
}

std::string upperCase(std::string_view text) {
  std::string upper(text);
  std::transform(upper.begin(), upper.end(), upper.begin(),
                 [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
  return upper;
}

class ManWriter {
 public:
  explicit ManWriter(const Localization& localization) : localization_(localization) {}

  void title(const CommandInfo& root, std::string_view version, std::string_view date) {
    text_ += ".TH \"" + escaped(upperCase(root.name)) + "\" 1 \"" + escaped(date) + "\" \"" +
             escaped(root.name + " " + std::string(version)) + "\" \"" +
             escaped(localization_.localized("User Commands")) + "\"\n";
  }

  /// `title` is in the person's language.
  void section(const std::string& title) { text_ += ".SH " + title + "\n"; }

  void line(const std::string& troff) { text_ += troff + "\n"; }

  /// An empty line in the text begins a paragraph; troff would print it as it is.
  void paragraphs(std::string_view text) {
    for (std::size_t begin = 0; begin < text.size();) {
      const std::size_t end = std::min(text.find("\n\n", begin), text.size());
      if (end > begin) text_ += ".PP\n" + escaped(text.substr(begin, end - begin)) + "\n";
      begin = std::min(text.find_first_not_of('\n', end), text.size());
    }
  }

  void synopsis(const CommandInfo& command) {
    std::string line = bold(command.fullName);
    if (!command.options.empty()) line += " [" + italic(localization_.localized("options")) + "]";
    for (const ParameterInfo& argument : command.arguments) {
      const std::string name = italic(argument.names.front()) + (argument.isRepeated ? "..." : "");
      line += argument.isRequired ? " " + name : " [" + name + "]";
    }
    if (!command.commands.empty())
      line += command.needsCommand ? " " + italic(localization_.localized("COMMAND"))
                                   : " [" + italic(localization_.localized("COMMAND")) + "]";
    text_ += line + "\n";
  }

  void parameter(const ParameterInfo& parameter) {
    const bool isOption = parameter.names.front().starts_with('-');
    std::string names;
    for (const std::string& name : parameter.names) {
      if (!names.empty()) names += ", ";
      names += isOption ? bold(name) : italic(name);
    }
    if (isOption && !parameter.valueName.empty()) names += " " + italic(parameter.valueName);
    tagged(names, parameter.details);
  }

  void entries(const std::string& title, const std::vector<ManualEntry>& entries) {
    if (entries.empty()) return;
    section(title);
    for (const ManualEntry& entry : entries) tagged(bold(entry.name), localization_.localized(entry.meaning));
  }

  void command(const CommandInfo& command) {
    text_ += ".SS \"" + escaped(command.fullName) + "\"\n";
    synopsis(command);
    paragraphs(command.summary.empty() ? "" : command.summary + ".");
    for (const std::string& alias : command.aliases)
      line(".PP\n" + escaped(localization_.localized("Also called")) + " " + bold(alias) + ".");
    paragraphs(command.description);
    for (const ParameterInfo& argument : command.arguments) parameter(argument);
    for (const ParameterInfo& option : command.options) parameter(option);
    for (const CommandInfo& sub : command.commands) this->command(sub);
  }

  void examples(const CommandInfo& command) {
    for (const Example& example : command.examples) {
      text_ += ".PP\n";
      if (!example.what.empty()) text_ += escaped(example.what) + "\n";
      text_ += ".RS 4\n.nf\n" + bold(example.command) + "\n.fi\n.RE\n";
    }
    for (const CommandInfo& sub : command.commands) examples(sub);
  }

  std::string take() { return std::move(text_); }

 private:
  void tagged(const std::string& tag, std::string_view text) {
    // Without a body the next tag would become it.
    const std::string body = text.empty() ? "\\&" : escaped(text);
    text_ += ".TP\n" + tag + "\n" + body + "\n";
  }

  const Localization& localization_;
  std::string text_;
};

bool hasExamples(const CommandInfo& command) {
  return !command.examples.empty() ||
         std::any_of(command.commands.begin(), command.commands.end(), hasExamples);
}

}  // namespace

std::string manPage(const CLI::App& root, const ManualTexts& texts, std::string_view version,
                    std::string_view date, const Localization& localization) {
  const CommandInfo program = describeCommand(root, texts.commands, localization);
  ManWriter man(localization);
  man.title(program, version, date);
  man.section(localization.localized("NAME"));
  man.line(escaped(program.name) + " \\- " + escaped(program.summary));
  man.section(localization.localized("SYNOPSIS"));
  man.synopsis(program);
  if (!program.description.empty()) {
    man.section(localization.localized("DESCRIPTION"));
    man.paragraphs(program.description);
  }
  if (!program.options.empty() || !program.arguments.empty()) {
    man.section(localization.localized("OPTIONS"));
    for (const ParameterInfo& argument : program.arguments) man.parameter(argument);
    for (const ParameterInfo& option : program.options) man.parameter(option);
  }
  if (!program.commands.empty()) {
    man.section(localization.localized("COMMANDS"));
    for (const CommandInfo& command : program.commands) man.command(command);
  }
  if (hasExamples(program)) {
    man.section(localization.localized("EXAMPLES"));
    man.examples(program);
  }
  man.entries(localization.localized("EXIT STATUS"), texts.exitStatus);
  man.entries(localization.localized("ENVIRONMENT"), texts.environment);
  man.entries(localization.localized("FILES"), texts.files);
  return man.take();
}

}  // namespace moniva
