#include "ui/cli/help_format.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <utility>
#include <vector>

#include "ui/cli/text_width.h"

namespace moniva {
namespace {

constexpr std::size_t indent = 2;
constexpr std::size_t widestName = 28;  // a longer name has its description on the next line

/// A name and what is told of it.
using Entry = std::pair<std::string, std::string>;

/// "-c, --currency CODE"; a long name alone stands below the other long names.
std::string optionName(const ParameterInfo& option) {
  std::string name = fmt::format("{}", fmt::join(option.names, ", "));
  if (name.starts_with("--")) name.insert(0, 4, ' ');
  return option.valueName.empty() ? name : name + " " + option.valueName;
}

std::vector<Entry> optionEntries(const std::vector<ParameterInfo>& options) {
  std::vector<Entry> entries;
  for (const ParameterInfo& option : options) entries.emplace_back(optionName(option), option.details);
  return entries;
}

std::vector<Entry> argumentEntries(const std::vector<ParameterInfo>& arguments) {
  std::vector<Entry> entries;
  for (const ParameterInfo& argument : arguments)
    entries.emplace_back(argument.names.front(), argument.details);
  return entries;
}

std::vector<Entry> commandEntries(const std::vector<CommandInfo>& commands) {
  std::vector<Entry> entries;
  for (const CommandInfo& command : commands) {
    std::string name = command.name;
    for (const std::string& alias : command.aliases) name += ", " + alias;
    entries.emplace_back(std::move(name), command.summary);
  }
  return entries;
}

class HelpWriter {
 public:
  HelpWriter(const Style& style, std::size_t width, const Localization& localization)
      : style_(style), width_(width), localization_(localization) {}

  void paragraph(std::string_view text, std::size_t indentation = 0) {
    for (const std::string& line : wrapToWidth(text, width_ - std::min(width_ / 2, indentation))) {
      if (!line.empty()) text_.append(indentation, ' ') += line;
      text_ += '\n';
    }
  }

  void heading(std::string_view title) { text_ += "\n" + style_.bold(title) + "\n"; }

  void usage(std::string_view usage) {
    const std::string word = localization_.localized("Usage:");
    text_ += "\n" + style_.bold(word);
    described(usage, displayWidth(word), displayWidth(word) + 1);
  }

  /// Names in a column, beside them their texts, wrapped.
  void section(std::string_view title, const std::vector<Entry>& entries) {
    if (entries.empty()) return;
    heading(title);
    std::size_t names = 0;
    for (const auto& [name, text] : entries) {
      const std::size_t width = displayWidth(name);
      if (width <= widestName) names = std::max(names, width);
    }
    const std::size_t column = indent + names + 2;
    for (const auto& [name, text] : entries) {
      text_.append(indent, ' ') += printable(name);
      std::size_t at = indent + displayWidth(name);
      if (at + 2 > column && !text.empty()) {
        text_ += '\n';
        at = 0;
      }
      if (text.empty())
        text_ += '\n';
      else
        described(text, at, column);
    }
  }

  void examples(const std::vector<Example>& examples) {
    if (examples.empty()) return;
    heading(localization_.localized("Examples:"));
    for (const Example& example : examples) {
      text_.append(indent, ' ').append(style_.cyan(printable(example.command))) += '\n';
      if (!example.what.empty()) paragraph(example.what, 3 * indent);
    }
  }

  std::string take() { return std::move(text_); }

  void emptyLine() { text_ += '\n'; }

 private:
  void described(std::string_view text, std::size_t at, std::size_t column) {
    const std::size_t room = std::max<std::size_t>(width_ > column ? width_ - column : 0, 20);
    for (const std::string& line : wrapToWidth(text, room)) {
      text_.append(column - at, ' ').append(line) += '\n';
      at = 0;
    }
  }

  const Style& style_;
  std::size_t width_;
  const Localization& localization_;
  std::string text_;
};

std::string helpOfAll(const CommandInfo& command, const Style& style, std::size_t width,
                      const Localization& localization) {
  std::string text = helpText(command, style, width, localization);
  for (const CommandInfo& sub : command.commands) text += "\n" + helpOfAll(sub, style, width, localization);
  return text;
}

}  // namespace

std::string helpText(const CommandInfo& command, const Style& style, std::size_t width,
                     const Localization& localization) {
  HelpWriter help(style, width, localization);
  if (!command.summary.empty()) help.paragraph(command.summary);
  help.usage(command.usage);
  if (!command.description.empty()) {
    help.emptyLine();
    help.paragraph(command.description);
  }
  help.section(localization.localized("Arguments:"), argumentEntries(command.arguments));
  help.section(localization.localized("Commands:"), commandEntries(command.commands));
  help.section(localization.localized("Options:"), optionEntries(command.options));
  help.section(localization.localized("Global options:"), optionEntries(command.globals));
  help.examples(command.examples);
  return help.take();
}

std::string HelpFormatter::make_help(const CLI::App* app, std::string /*name*/,
                                     CLI::AppFormatMode mode) const {
  const CommandInfo command = describeCommand(*app, texts_, *localization_);
  return mode == CLI::AppFormatMode::All ? helpOfAll(command, style_, width_, *localization_)
                                         : helpText(command, style_, width_, *localization_);
}

}  // namespace moniva
