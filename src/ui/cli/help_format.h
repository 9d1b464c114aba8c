#pragma once

#include <CLI/App.hpp>
#include <cstddef>
#include <memory>
#include <span>
#include <string>

#include "ui/cli/command_tree.h"
#include "ui/cli/style.h"

namespace moniva {

/// The help of a command, for the parser to print: purpose, usage, description, arguments, options, commands
/// and examples, wrapped by what a terminal shows. Set on the program before its commands are added, it
/// serves them all:
///
///     app.formatter(std::make_shared<HelpFormatter>(commandTexts, style));
class HelpFormatter : public CLI::Formatter {
 public:
  /// The texts must outlive the formatter. `width` is the longest line in cells.
  explicit HelpFormatter(std::span<const CommandText> texts, Style style = {}, std::size_t width = 80)
      : texts_(texts), style_(style), width_(width) {}

  /// The help of `app`, or in the mode All of every command below it as well. The name handed in is not used:
  /// the parser knows it only for commands that were called.
  std::string make_help(const CLI::App* app, std::string name, CLI::AppFormatMode mode) const override;

  /// Tells everything in that language from now on.
  void speak(std::shared_ptr<const Localization> localization) { localization_ = std::move(localization); }

 private:
  std::span<const CommandText> texts_;
  Style style_;
  std::size_t width_;
  std::shared_ptr<const Localization> localization_ = std::make_shared<Localization>();
};

/// The help of one command as HelpFormatter prints it.
std::string helpText(const CommandInfo& command, const Style& style = {}, std::size_t width = 80,
                     const Localization& localization = Localization());

}  // namespace moniva
