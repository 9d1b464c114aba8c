#pragma once

#include <filesystem>
#include <mutex>
#include <string>
#include <string_view>

#include "platform/platform.h"

namespace moniva {

/// The log of storage faults, "log.txt" in the Documents folder, kept small and out of device backups. Safe
/// to use from several threads; a log that cannot be written is silently done without.
class FaultLog {
 public:
  explicit FaultLog(Platform& platform) : platform_(platform) {}

  /// A fault of the store with the program's frames of the call stack, the time and the cloud user, when
  /// known.
  void fault(std::string_view reason);
  /// A line as it stands, with the time before it.
  void line(std::string_view text);

  std::filesystem::path path() const;

 private:
  void write(const std::string& entry);

  Platform& platform_;
  std::mutex mutex_;
};

}  // namespace moniva
