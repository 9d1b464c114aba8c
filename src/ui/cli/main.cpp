#include <unistd.h>

#include <csignal>
#include <iostream>

#include "platform/posix/host.h"
#include "ui/cli/command_line.h"

namespace {

std::size_t widthOf(int descriptor) {
  return static_cast<std::size_t>(moniva::terminalWidth(descriptor));
}

}  // namespace

int main(int argc, char** argv) {
  // A reader that went away (`moniva … | head`) is an ordinary write error, not a reason to die half-way; and
  // a file size limit shows as a full disk.
  std::signal(SIGPIPE, SIG_IGN);
  std::signal(SIGXFSZ, SIG_IGN);
  std::ios::sync_with_stdio(false);
  const bool outIsTerminal = moniva::isTerminal(STDOUT_FILENO);
  const moniva::Terminal terminal{.out = std::cout,
                                  .err = std::cerr,
                                  .outIsTerminal = outIsTerminal,
                                  .errIsTerminal = moniva::isTerminal(STDERR_FILENO),
                                  .width = outIsTerminal ? widthOf(STDOUT_FILENO) : 0,
                                  .errWidth = widthOf(STDERR_FILENO)};
  const std::string noColor = moniva::environment("NO_COLOR").value_or("");
  const std::string term = moniva::environment("TERM").value_or("");
  const moniva::Style helpStyle(
      moniva::ColorMode::automatic,
      {.isTerminal = outIsTerminal, .noColor = noColor, .term = term, .colorTerm = {}});
  moniva::CommandLine line(helpStyle);
  return line.run(std::vector<std::string>(argv + 1, argv + argc), terminal);
}
