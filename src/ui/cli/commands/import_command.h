#pragma once

#include <filesystem>

#include "exchange/importer.h"
#include "ui/cli/session.h"

namespace moniva {

/// Imports the file with a progress line on the session's terminal; ends the command when it is refused.
ImportOutcome runImport(Session& session, const std::filesystem::path& file, ImportRequest request);

}  // namespace moniva
