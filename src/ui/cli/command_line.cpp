#include "ui/cli/command_line.h"

#include <fmt/ranges.h>

#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <algorithm>
#include <iostream>
#include <sstream>

#include "platform/posix/host.h"
#include "ui/cli/command_error.h"
#include "ui/cli/command_texts.h"
#include "ui/cli/did_you_mean.h"
#include "ui/cli/parser_words.h"
#include "version.h"

namespace moniva {
namespace {

std::string trimmedEnd(std::string text) {
  while (!text.empty() && text.back() == '\n') text.pop_back();
  return text;
}

bool looksLikeNumber(std::string_view word) {
  return word.size() > 1 && word[0] == '-' && (word[1] == '.' || (word[1] >= '0' && word[1] <= '9'));
}

std::vector<std::string> commandNames(const CLI::App& app) {
  std::vector<std::string> names;
  for (const CLI::App* command : app.get_subcommands(nullptr)) names.push_back(command->get_name());
  return names;
}

/// The long options the command takes, with those of the commands above it.
std::vector<std::string> optionNames(const CLI::App* app) {
  std::vector<std::string> names;
  for (; app != nullptr; app = app->get_parent()) {
    for (const CLI::Option* option : app->get_options()) {
      for (const auto& name : option->get_lnames()) names.push_back("--" + name);
    }
  }
  return names;
}

const CLI::App* subcommandOf(const CLI::App& app, const std::string& name) {
  for (const CLI::App* command : app.get_subcommands(nullptr)) {
    if (command->check_name(name)) return command;
  }
  return nullptr;
}

/// Whether a word that is no command below can be an argument.
bool takesWords(const CLI::App& app) {
  return std::ranges::any_of(app.get_options(),
                             [](const CLI::Option* option) { return option->get_positional(); });
}

const CLI::Option* findOption(const CLI::App* app, const std::string& name) {
  for (; app != nullptr; app = app->get_parent()) {
    if (const auto* option = app->get_option_no_throw(name)) return option;
  }
  return nullptr;
}

/// The exit code, once all output is written; what could not be is told of.
int ended(int exitCode, Terminal terminal, Session& session) {
  terminal.out.flush();
  if (terminal.out) return exitCode;
  const Phrase what = exitCode == 0 ? phrase("done, but standard output could not be written")
                                    : phrase("standard output could not be written");
  session.complain(fmt::format("moniva: {}", what.in(session.translate())));
  return exitCode == 0 ? CommandError::kRefused : exitCode;
}

}  // namespace

CommandLine::CommandLine(const Style& helpStyle)
    : app_("", "moniva"), help_(std::make_shared<HelpFormatter>(commandTexts(), helpStyle)) {
  app_.formatter(help_);
  app_.set_version_flag("--version", fmt::format("moniva {}", kVersion), "Print the version and end");
  app_.set_help_flag("-h,--help", "Print this help and end");
  app_.require_subcommand(1);
  app_.fallthrough();
  app_.option_defaults()->always_capture_default(false);
  app_.add_option("--data", options_.data,
                  "The data folder (else MONIVA_DATA, else the folder for data of programs)")
      ->type_name("DIR")
      ->envname("MONIVA_DATA")
      // A variable that was not set (--data "$LEDGER") must not lead to another store.
      ->check(CLI::Validator(
          [](const std::string& folder) {
            return std::string(folder.empty() ? toTranslate("an empty name is no folder") : "");
          },
          ""))
      ->take_last();
  app_.add_option("--now", options_.now, "The moment to take for the present, such as \"2024-02-29 14:30\"")
      ->type_name("DATE")
      ->take_last();
  app_.add_option("--timezone", options_.timezone, "The time zone, such as Europe/Berlin (else the system's)")
      ->type_name("ZONE")
      ->take_last();
  app_.add_option("--locale", options_.locale,
                  "Language and region of dates and amounts, such as de_DE (else the system's)")
      ->type_name("LOCALE")
      ->take_last();
  app_.add_option("--passcode", options_.passcode, "The passcode of a locked store")
      ->type_name("CODE")
      ->envname("MONIVA_PASSCODE")
      ->take_last();
  app_.add_flag("--json", options_.json, "Print records as JSON");
  app_.add_option("--color", color_, "When to colour (else auto)")
      ->type_name("WHEN")
      ->check(oneOf({"auto", "always", "never"}));
  app_.add_flag("-q,--quiet", options_.quiet, "No messages and no progress on standard error; only errors");
  app_.add_flag("-v,--verbose", options_.verbose, "Tell what is going on, on standard error");
  addBookCommands(*this);
  addAccountCommands(*this);
  addGroupCommands(*this);
  addVendorCommands(*this);
  addCategoryCommands(*this);
  addSpendCommands(*this);
  addCartCommands(*this);
  addInstalmentCommands(*this);
  addCostCommands(*this);
  addPaymentCommands(*this);
  addRefundCommands(*this);
  addTransferCommands(*this);
  addRepeatCommands(*this);
  addDueCommand(*this);
  addBillCommands(*this);
  addReminderCommands(*this);
  addPhotoCommands(*this);
  addTemplateCommands(*this);
  addDebtCommands(*this);
  addCurrencyCommands(*this);
  addRateCommands(*this);
  addRecordCommands(*this);
  addImportCommand(*this);
  addExportCommands(*this);
  addReportCommands(*this);
  addBudgetCommands(*this);
  addListCommands(*this);
  addBreakdownCommand(*this);
  addSearchCommands(*this);
  addExplainCommand(*this);
  addCalcCommand(*this);
  addDoctorCommand(*this);
  addUpgradeCommand(*this);
  addRepairCommand(*this);
  addOpenCommand(*this);
  addDemoCommand(*this);
  addShellCommands(*this);
}

CLI::Validator oneOf(const std::vector<std::string>& words) {
  return CLI::Validator(
      [words](const std::string& word) {
        if (std::ranges::find(words, word) != words.end()) return std::string();
        return fmt::format("'{}' is none of {}", word, fmt::join(words, ", "));
      },
      fmt::format("{{{}}}", fmt::join(words, ",")));
}

CLI::Validator notEmpty() {
  return CLI::Validator(
      [](const std::string& word) {
        return std::string(word.empty() ? toTranslate("it is empty; say something or leave it out") : "");
      },
      "");
}

CLI::Validator rowLimit() {
  return CLI::Validator(
      [](const std::string& text) {
        const bool isCount =
            !text.empty() && text.size() < 10 && text.find_first_not_of("0123456789") == std::string::npos;
        return std::string(isCount ? "" : toTranslate("it is a whole number; 0 lists all"));
      },
      "");
}

CLI::App* CommandLine::add(CLI::App& parent, const std::string& name) {
  CLI::App* command = parent.add_subcommand(name);
  command->fallthrough();
  return command;
}

void CommandLine::onRun(CLI::App* command, Action action, bool withStore) {
  command->callback([this, command, action = std::move(action), withStore] {
    // The callbacks of commands above come last; what was asked for is the one below.
    if (!command->get_subcommands().empty()) return;
    action_ = action;
    withStore_ = withStore;
  });
}

int CommandLine::run(const std::vector<std::string>& arguments, Terminal terminal) {
  try {
    app_.parse(std::vector<std::string>(arguments.rbegin(), arguments.rend()));
  } catch (const CLI::Success& wanted) {
    // Help and version: the parser's way of ending early.
    std::ostringstream text;
    help_->speak(texts());
    app_.exit(wanted, text, terminal.err);
    terminal.out << trimmedEnd(text.str()) << '\n';
    return 0;
  } catch (const CLI::ParseError& error) {
    return explain(error, arguments, terminal);
  }
  options_.color = color_ == "always"  ? ColorMode::always
                   : color_ == "never" ? ColorMode::never
                                       : ColorMode::automatic;
  Session session(options_, terminal);
  int exitCode = 0;
  const auto guarded = [&](const std::function<void()>& work) {
    const auto failed = [&](int code, std::string_view why) {
      terminal.out.flush();
      session.complain(fmt::format("moniva: {}", why));
      exitCode = code;
    };
    try {
      work();
    } catch (const CommandError& error) {
      failed(error.exitCode(), error.in(session.translate()));
    } catch (const std::bad_alloc&) {
      failed(CommandError::kRefused, session.text("there is not enough memory"));
    } catch (const std::exception& error) {
      failed(CommandError::kRefused, error.what());
    }
  };
  guarded([&] {
    session.prepare();
    if (withStore_) session.launch();
    action_(session);
  });
  guarded([&] { session.leave(); });
  return ended(exitCode, terminal, session);
}

std::shared_ptr<const Localization> CommandLine::texts() const {
  const auto& typed = app_.get_option("--locale")->results();
  return textsFor(typed.empty() ? "" : typed.back());
}

int CommandLine::explain(const CLI::ParseError& error, const std::vector<std::string>& arguments,
                         Terminal terminal) const {
  const auto localization = texts();
  const Translate translate = [&](std::string_view english) { return localization->localized(english); };
  const auto mistaken = mistakenWord(app_, arguments);
  terminal.err << "moniva: "
               << printableLines(mistaken ? mistaken->in(translate) : parserSays(error, app_, translate))
               << '\n';
  std::string path = "moniva";
  const CLI::App* at = &app_;
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    const std::string& word = arguments[i];
    if (word.starts_with('-')) {
      const auto* option = findOption(at, word.substr(0, word.find('=')));
      if (option != nullptr && option->get_items_expected_max() > 0 && word.find('=') == std::string::npos)
        ++i;
      continue;
    }
    // What follows a word that is no command is not meant from where that would lead.
    const CLI::App* next = subcommandOf(*at, word);
    if (next == nullptr) break;
    at = next;
    path += " " + word;
  }
  terminal.err << phrase("Try: {} --help", path).in(translate) << '\n';
  return CommandError::kUsage;
}

std::optional<Phrase> mistakenWord(const CLI::App& app, const std::vector<std::string>& arguments) {
  const CLI::App* at = &app;
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    const std::string& word = arguments[i];
    if (word == "--") return {};
    if (looksLikeNumber(word)) {
      return phrase("'{}' has a sign; amounts are given without one, the direction comes from the command",
                    word);
    }
    if (word.size() > 1 && word[0] == '-') {
      const std::string name = word.substr(0, word.find('='));
      if (const auto* option = findOption(at, name)) {
        if (option->get_items_expected_max() > 0 && name == word) ++i;  // its value
        continue;
      }
      const auto meant = name.starts_with("--") ? didYouMean(name, optionNames(at)) : std::nullopt;
      return meant ? phrase("there is no option '{}'; did you mean '{}'?", name, *meant)
                   : phrase("there is no option '{}'", name);
    }
    const auto names = commandNames(*at);
    if (names.empty()) continue;
    if (const CLI::App* next = subcommandOf(*at, word)) {
      at = next;
      continue;
    }
    if (takesWords(*at)) continue;
    const std::string above = at->get_parent() == nullptr ? "" : at->get_name() + " ";
    const auto meant = didYouMean(word, names);
    return meant ? phrase("there is no command '{}{}'; did you mean '{}{}'?", above, word, above, *meant)
                 : phrase("there is no command '{}{}'", above, word);
  }
  return {};
}

}  // namespace moniva
