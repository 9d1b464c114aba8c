#include "ui/cli/confirm.h"

#include <unistd.h>

#include <iostream>

#include "platform/posix/host.h"
#include "ui/cli/did_you_mean.h"

namespace moniva {

void confirm(Session& session, bool yes, const std::string& question, const CommandError& why,
             const CommandError& no) {
  if (yes) return;
  if (!isTerminal(STDIN_FILENO) || !session.terminal().errIsTerminal) throw why;
  session.terminal().err << question << " [y/N] " << std::flush;
  std::string word;
  std::getline(std::cin, word);
  if (!isSameWord(word, "y") && !isSameWord(word, "yes") && !isSameWord(word, session.text("yes"))) throw no;
}

void confirmDelete(Session& session, bool yes, const CommandError& why) {
  confirm(session, yes, session.text("Are you sure to delete?"), why, refused("nothing was deleted"));
}

}  // namespace moniva
