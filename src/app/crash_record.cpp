#include "app/crash_record.h"

#include <fmt/ranges.h>

#include <cstdlib>
#include <exception>

#include "platform/call_stack.h"
#include "platform/files.h"

namespace moniva {
namespace {

std::filesystem::path& crashFile() {
  static std::filesystem::path path;
  return path;
}

std::string currentExceptionText() {
  const auto exception = std::current_exception();
  if (!exception) return "ended without an exception";
  try {
    std::rethrow_exception(exception);
  } catch (const std::exception& error) {
    return error.what();
  } catch (...) {
    return "an exception of unknown kind";
  }
}

}  // namespace

void installUncaughtExceptionHandler(const std::filesystem::path& documents) {
  crashFile() = documents / "crash.txt";
  std::set_terminate([] {
    const auto text = currentExceptionText();
    // Nothing more can be done when even this fails.
    static_cast<void>(
        appendToFile(crashFile(), fmt::format("{}\n{}\n\n", text, fmt::join(programFrames(), "\n"))));
    std::abort();
  });
}

void sendCrashLogMailIfNeed(MVAppRoot& root) {
  const auto& documents = root.platform().directories.documents;
  const auto record = documents / "crash.txt";
  std::error_code error;
  if (std::filesystem::exists(record, error)) {
    if (const auto aside = setFileAside(record, root.now())) {
      root.addNotice(fmt::format("The program ended unexpectedly last time; what it knew of it is in '{}'.",
                                 aside->string()));
    }
  }
  auto& defaults = *root.platform().userDefaults;
  if (defaults.objectForKey("sendLogNow")) {
    defaults.removeObjectForKey("sendLogNow");
    const auto log = documents / "log.txt";
    root.addNotice(std::filesystem::exists(log, error)
                       ? fmt::format("The log to send is '{}'.", log.string())
                       : std::string("There is no log to send: no fault of the store has been logged."));
  }
}

}  // namespace moniva
