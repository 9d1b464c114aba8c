#pragma once

#include <CLI/App.hpp>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "ui/cli/help_format.h"
#include "ui/cli/session.h"

namespace moniva {

/// The commands of the program as the parser knows them, and what the parsed line asks for.
class CommandLine {
 public:
  /// What a command does, once the line was understood.
  using Action = std::function<void(Session&)>;

  explicit CommandLine(const Style& helpStyle = {});

  /// Parses and runs; answers the exit code: 0 done, 1 refused or failed, 2 not understood.
  /// Nothing that goes wrong in a command leaves it as an exception.
  int run(const std::vector<std::string>& arguments, Terminal terminal);

  CLI::App& app() { return app_; }
  /// Adds a command below `parent`; its help comes from the table of command texts.
  CLI::App* add(CLI::App& parent, const std::string& name);
  /// Makes the command run the action, on a launched store unless `withStore` is false. One with commands
  /// below it runs when none of them was typed.
  void onRun(CLI::App* command, Action action, bool withStore = true);

 private:
  /// How texts are said before there is a session: by the --locale that was read so far.
  std::shared_ptr<const Localization> texts() const;
  int explain(const CLI::ParseError& error, const std::vector<std::string>& arguments,
              Terminal terminal) const;

  CLI::App app_;
  std::shared_ptr<HelpFormatter> help_;
  GlobalOptions options_;
  std::string color_ = "auto";
  Action action_;
  bool withStore_ = true;
};

/// A check that a value is one of some words; it refuses any other with a sentence that lists them.
CLI::Validator oneOf(const std::vector<std::string>& words);
/// Refuses an empty word, for options that change what is there: a variable that was not set (--amount
/// "$SUM") must not pass for an option that was left out.
CLI::Validator notEmpty();
/// Refuses what is no number of rows: a whole number, of which 0 stands for all.
CLI::Validator rowLimit();

/// The first word of a line that the parser cannot have understood ("bok", "--jsn", the "-5" of an amount
/// with a sign), as a sentence with the nearest thing there is; nothing when the line has no such word.
std::optional<Phrase> mistakenWord(const CLI::App& app, const std::vector<std::string>& arguments);

// One function a family of commands, each in its own file.
void addBookCommands(CommandLine& line);
void addAccountCommands(CommandLine& line);
void addGroupCommands(CommandLine& line);
void addVendorCommands(CommandLine& line);
void addCategoryCommands(CommandLine& line);
void addSpendCommands(CommandLine& line);
void addCartCommands(CommandLine& line);
void addInstalmentCommands(CommandLine& line);
void addCostCommands(CommandLine& line);
void addPaymentCommands(CommandLine& line);
void addRefundCommands(CommandLine& line);
void addTransferCommands(CommandLine& line);
void addRepeatCommands(CommandLine& line);
void addDueCommand(CommandLine& line);
void addBillCommands(CommandLine& line);
void addReminderCommands(CommandLine& line);
void addPhotoCommands(CommandLine& line);
void addTemplateCommands(CommandLine& line);
void addDebtCommands(CommandLine& line);
void addCurrencyCommands(CommandLine& line);
void addRateCommands(CommandLine& line);
void addRecordCommands(CommandLine& line);
void addImportCommand(CommandLine& line);
void addExportCommands(CommandLine& line);
void addReportCommands(CommandLine& line);
void addBudgetCommands(CommandLine& line);
void addListCommands(CommandLine& line);
void addBreakdownCommand(CommandLine& line);
void addSearchCommands(CommandLine& line);
void addExplainCommand(CommandLine& line);
void addCalcCommand(CommandLine& line);
void addDoctorCommand(CommandLine& line);
void addUpgradeCommand(CommandLine& line);
void addRepairCommand(CommandLine& line);
void addOpenCommand(CommandLine& line);
void addDemoCommand(CommandLine& line);
void addShellCommands(CommandLine& line);

}  // namespace moniva
