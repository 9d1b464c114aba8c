#include "platform/file_lock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <system_error>
#include <thread>
#include <utility>

namespace moniva {
namespace {

int flagOf(FileLock::Mode mode) {
  return mode == FileLock::Mode::shared ? LOCK_SH : LOCK_EX;
}

}  // namespace

Result<FileLock> FileLock::acquire(const std::filesystem::path& path, Mode mode, double seconds) {
  const int fd = ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644);
  if (fd < 0) {
    return refuse("cannot make the lock '{}': {}", path.string(), std::generic_category().message(errno));
  }
  FileLock lock(fd, path);
  if (auto taken = lock.change(mode, seconds); !taken) return tl::make_unexpected(taken.error());
  return lock;
}

Result<> FileLock::change(Mode mode, double seconds) {
  using Watch = std::chrono::steady_clock;
  const auto end = Watch::now() + std::chrono::duration<double>(seconds);
  while (::flock(descriptor_, flagOf(mode) | LOCK_NB) != 0) {
    if (errno != EWOULDBLOCK && errno != EINTR) {
      return refuse("cannot lock '{}': {}", path_.string(), std::generic_category().message(errno));
    }
    if (Watch::now() >= end) {
      // Changing the mode lets go of the old lock first; take it back.
      ::flock(descriptor_, flagOf(mode_) | LOCK_NB);
      return refuse("another program is using '{}'", path_.string());
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  mode_ = mode;
  return {};
}

FileLock::FileLock(FileLock&& other) noexcept
    : descriptor_(std::exchange(other.descriptor_, -1)), mode_(other.mode_), path_(std::move(other.path_)) {}

FileLock& FileLock::operator=(FileLock&& other) noexcept {
  if (this != &other) {
    if (descriptor_ >= 0) ::close(descriptor_);
    descriptor_ = std::exchange(other.descriptor_, -1);
    mode_ = other.mode_;
    path_ = std::move(other.path_);
  }
  return *this;
}

FileLock::~FileLock() {
  if (descriptor_ >= 0) ::close(descriptor_);
}

}  // namespace moniva
