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

/// Takes the lock, trying for so many seconds; answers 0, or the error that was met last.
int take(int descriptor, FileLock::Mode mode, double seconds) {
  using Watch = std::chrono::steady_clock;
  const auto end = Watch::now() + std::chrono::duration<double>(seconds);
  while (::flock(descriptor, flagOf(mode) | LOCK_NB) != 0) {
    if (errno != EWOULDBLOCK && errno != EINTR) return errno;
    if (Watch::now() >= end) return EWOULDBLOCK;
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  return 0;
}

tl::unexpected<Refusal> notTaken(const std::filesystem::path& path, int error) {
  if (error == EWOULDBLOCK) return refuse("another program is using '{}'", path.string());
  return refuse("cannot lock '{}': {}", path.string(), std::generic_category().message(error));
}

}  // namespace

Result<FileLock> FileLock::acquire(const std::filesystem::path& path, Mode mode, double seconds) {
  const int fd = ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644);
  if (fd < 0) {
    return refuse("cannot make the lock '{}': {}", path.string(), std::generic_category().message(errno));
  }
  FileLock lock(fd, path);
  if (const int error = take(fd, mode, seconds); error != 0) return notTaken(path, error);
  lock.mode_ = mode;
  return lock;
}

Result<> FileLock::change(Mode mode, double seconds) {
  if (const int error = take(descriptor_, mode, seconds); error != 0) {
    // Trying to change the mode has let go of the old lock. It is waited for: whoever got it in between
    // replaces a file and is done soon.
    while (::flock(descriptor_, flagOf(mode_)) != 0 && errno == EINTR) {
    }
    return notTaken(path_, error);
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
