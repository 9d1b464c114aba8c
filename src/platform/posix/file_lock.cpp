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

Result<FileLock> FileLock::acquire(const std::filesystem::path& path, Mode mode, double seconds) {
  FileLock lock(::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
  if (lock.descriptor_ < 0) {
    return refuse("cannot make the lock '{}': {}", path.string(), std::generic_category().message(errno));
  }
  using Watch = std::chrono::steady_clock;
  const auto end = Watch::now() + std::chrono::duration<double>(seconds);
  while (::flock(lock.descriptor_, (mode == Mode::shared ? LOCK_SH : LOCK_EX) | LOCK_NB) != 0) {
    if (errno != EWOULDBLOCK && errno != EINTR) {
      return refuse("cannot lock '{}': {}", path.string(), std::generic_category().message(errno));
    }
    if (Watch::now() >= end) return refuse("another program is using '{}'", path.string());
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  return lock;
}

FileLock::FileLock(FileLock&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}

FileLock& FileLock::operator=(FileLock&& other) noexcept {
  if (this != &other) {
    if (descriptor_ >= 0) ::close(descriptor_);
    descriptor_ = std::exchange(other.descriptor_, -1);
  }
  return *this;
}

FileLock::~FileLock() {
  if (descriptor_ >= 0) ::close(descriptor_);
}

}  // namespace moniva
