#pragma once

#include <filesystem>

#include "exchange/importer.h"
#include "ui/cli/session.h"

namespace moniva {

/// Runs an import with a progress line on the session's terminal; ends the command when it is refused.
/// `import` is given what it has to tell of its progress.
ImportOutcome runImport(
    Session& session,
    const std::function<Result<ImportOutcome>(std::function<void(std::size_t, std::size_t)>)>& import);

}  // namespace moniva
