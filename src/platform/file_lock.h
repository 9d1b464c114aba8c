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

  /// Changes the mode, waiting likewise; on refusal the lock is held as before.
  Result<> change(Mode mode, double seconds);

  FileLock(FileLock&& other) noexcept;
  FileLock& operator=(FileLock&& other) noexcept;
  FileLock(const FileLock&) = delete;
  FileLock& operator=(const FileLock&) = delete;
  ~FileLock();

 private:
  FileLock(int descriptor, std::filesystem::path path) : descriptor_(descriptor), path_(std::move(path)) {}

  int descriptor_ = -1;
  Mode mode_ = Mode::shared;
  std::filesystem::path path_;
};

}  // namespace moniva
