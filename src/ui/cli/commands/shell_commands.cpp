#include "calendar/date_texts.h"
#include "ui/cli/command_error.h"
#include "ui/cli/command_line.h"
#include "ui/cli/command_texts.h"
#include "ui/cli/completion.h"
#include "ui/cli/man_page.h"
#include "version.h"

namespace moniva {

void addShellCommands(CommandLine& line) {
  CLI::App* completion = line.add(line.app(), "completion");
  auto shell = std::make_shared<std::string>();
  completion->add_option("SHELL", *shell, "The shell")->required()->check(oneOf({"bash", "zsh", "fish"}));
  line.onRun(
      completion,
      [shell, &line](Session& session) {
        session.out() << completionScript(line.app(), *shellNamed(*shell), commandTexts(),
                                          *session.platform().localization);
      },
      false);

  line.onRun(
      line.add(line.app(), "man"),
      [&line](Session& session) {
        const CivilTime today = session.calendar().civilTime(session.now());
        session.out() << manPage(line.app(),
                                 {.commands = commandTexts(),
                                  .exitStatus = exitStatusTexts(),
                                  .environment = environmentTexts(),
                                  .files = fileTexts()},
                                 kVersion,
                                 fmt::format("{:04}-{:02}-{:02}", today.year, today.month, today.day),
                                 *session.platform().localization);
      },
      false);
}

}  // namespace moniva
