#pragma once

#include <string>

#include "ui/cli/command_error.h"
#include "ui/cli/session.h"

/// Questions before what is not easily undone.
namespace moniva {

/// Unless `yes` was typed, asks on a terminal; ends the command with `no` for every answer but yes, and with
/// `why`, which says what would be done, where nobody can be asked.
void confirm(Session& session, bool yes, const std::string& question, const CommandError& why,
             const CommandError& no);
/// The same before something is deleted.
void confirmDelete(Session& session, bool yes, const CommandError& why);

}  // namespace moniva
