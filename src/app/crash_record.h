#pragma once

#include <filesystem>

#include "storage/mv_app_root.h"

namespace moniva {

/// Installs the handler that records an exception nobody caught (its text, the time, the program's frames) in
/// the file "crash.txt" of the Documents folder before the program ends.
void installUncaughtExceptionHandler(const std::filesystem::path& documents);

/// Tells the user of a recorded crash, once, and where the record and the fault log are; also when the log
/// was asked for
/// (`sendLogNow`).
void sendCrashLogMailIfNeed(MVAppRoot& root);

}  // namespace moniva
