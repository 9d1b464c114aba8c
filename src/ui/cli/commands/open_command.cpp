#include "ui/cli/command_error.h"
#include "ui/cli/command_line.h"

namespace moniva {

void addOpenCommand(CommandLine& line) {
  CLI::App* open = line.add(line.app(), "open");
  auto url = std::make_shared<std::string>();
  open->add_option("URL", *url, "The URL")->required();
  line.onRun(
      open,
      [url](Session& session) {
        session.launchLocked();
        // Handed in before the lock is opened: a file then waits for the passcode.
        auto opened = session.app().openURL(*url);
        session.tellNotices();
        done(std::move(opened));
        session.unlock();
        session.tellNotices();
      },
      false);
}

}  // namespace moniva
