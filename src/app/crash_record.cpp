#include "app/crash_record.h"

#include <fmt/ranges.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <exception>

#include "calendar/civil_time.h"
#include "platform/call_stack.h"
#include "platform/files.h"

namespace moniva {
namespace {

/// What the handler needs, which takes no arguments.
struct Witness {
  std::filesystem::path file;
  std::function<Date()> clock;
};

Witness& witness() {
  static Witness one;
  return one;
}

/// "2024-02-29 13:30:05 UTC": without a calendar, which may be what broke.
std::string utcText(Date date) {
  const auto seconds = static_cast<std::int64_t>(std::floor(date.secondsSince1970));
  CivilTime at = civilFromDays(floorDivide(seconds, kSecondsPerDay));
  const auto time = static_cast<int>(floorRemainder(seconds, kSecondsPerDay));
  at.hour = time / 3600;
  at.minute = time / 60 % 60;
  at.second = time % 60;
  return wallClockText(at) + " UTC";
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

void installUncaughtExceptionHandler(const std::filesystem::path& documents, std::function<Date()> clock) {
  witness() = {documents / "crash.txt", std::move(clock)};
  std::set_terminate([] {
    const auto text = currentExceptionText();
    const auto& [file, now] = witness();
    const auto recorded = appendToFile(
        file, fmt::format("{}\n{}\n{}\n\n", utcText(now()), text, fmt::join(programFrames(), "\n")));
    fmt::print(stderr, "moniva: ended unexpectedly: {}{}\n", text,
               recorded ? fmt::format("; what is known of it is in '{}'", file.string()) : std::string());
    std::abort();
  });
}

void sendCrashLogMailIfNeed(MVAppRoot& root) {
  const auto& documents = root.platform().directories.documents;
  const auto record = documents / "crash.txt";
  std::error_code error;
  if (std::filesystem::exists(record, error)) {
    if (const auto aside = setFileAside(record, root.now())) {
      root.addNotice("The program ended unexpectedly last time; what it knew of it is in '{}'.",
                     aside->string());
    }
  }
  auto& defaults = *root.platform().userDefaults;
  if (defaults.objectForKey("sendLogNow")) {
    defaults.removeObjectForKey("sendLogNow");
    const auto log = documents / "log.txt";
    if (std::filesystem::exists(log, error)) {
      root.addNotice("The log to send is '{}'.", log.string());
    } else {
      root.addNotice("There is no log to send: no fault of the store has been logged.");
    }
  }
}

}  // namespace moniva
