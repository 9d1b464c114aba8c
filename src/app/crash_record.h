#pragma once

#include <filesystem>
#include <functional>

#include "storage/mv_app_root.h"

namespace moniva {

/// Installs the handler that records an exception nobody caught (the time in UTC, its text, the program's
/// frames) in the file "crash.txt" of the Documents folder, and says so on standard error, before the program
/// ends. `clock` is asked for the time then; it is kept to the end of the program.
void installUncaughtExceptionHandler(const std::filesystem::path& documents, std::function<Date()> clock);

/// Tells the user of a recorded crash, once, and where the record and the fault log are; also when the log
/// was asked for
/// (`sendLogNow`).
void sendCrashLogMailIfNeed(MVAppRoot& root);

}  // namespace moniva
