#pragma once

#include <filesystem>

#include "base/result.h"

namespace moniva {

/// An advisory lock between programs, tied to a small file beside what it guards. Held until destruction; the
/// system lets go of it when the process dies, however it dies.
class FileLock {
 public:
  enum class Mode { shared, exclusive };

  /// Takes the lock, waiting up to `seconds` for programs that hold it otherwise. Refused when they do not
  /// let go in time, or when the lock's file cannot be made.
  static Result<FileLock> acquire(const std::filesystem::path& path, Mode mode, double seconds);

  FileLock(FileLock&& other) noexcept;
  FileLock& operator=(FileLock&& other) noexcept;
  FileLock(const FileLock&) = delete;
  FileLock& operator=(const FileLock&) = delete;
  ~FileLock();

 private:
  explicit FileLock(int descriptor) : descriptor_(descriptor) {}

  int descriptor_ = -1;
};

}  // namespace moniva
