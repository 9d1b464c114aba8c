#include "storage/fault_log.h"

#include <fmt/ranges.h>

#include "calendar/date_texts.h"
#include "platform/call_stack.h"
#include "platform/files.h"

namespace moniva {
namespace {

/// A file of this size or more is replaced by the next entry.
constexpr std::uintmax_t kFullSize = 1000001;

}  // namespace

std::filesystem::path FaultLog::path() const {
  return platform_.directories.documents / "log.txt";
}

void FaultLog::fault(std::string_view reason) {
  std::string entry = fmt::format("==[Error]: {}\n{}\n\n", reason, fmt::join(programFrames(), "\n"));
  if (const auto user = platform_.userDefaults->stringForKey("userRecordID"); user && !user->empty()) {
    entry += fmt::format("userRecordID: {}", *user);
  }
  line(entry);
}

void FaultLog::line(std::string_view text) {
  write(fmt::format("\n{}\n{}\n", stringOfDatetimeFullStyle(*platform_.calendar, platform_.now()), text));
}

void FaultLog::write(const std::string& entry) {
  const std::scoped_lock lock(mutex_);
  platform_.log.line(entry);
  const auto file = path();
  std::error_code error;
  const auto size = std::filesystem::file_size(file, error);
  Result<> written;
  if (!error && size < kFullSize) {
    written = appendToFile(file, "\n" + entry);
  } else {
    written = writeFileWhole(file, entry);
  }
  if (written) excludeFromBackup(file);
}

}  // namespace moniva
