#include "platform/files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <ctime>
#include <system_error>

namespace moniva {
namespace {

namespace fs = std::filesystem;

/// The extended attribute by which desktop backup programs are told to leave a file out.
constexpr const char* kBackupAttribute = "user.xdg.robots.backup";

std::string systemSays(int error) {
  return std::generic_category().message(error);
}

/// A file descriptor that is closed at the end of the scope.
class Descriptor {
 public:
  explicit Descriptor(int fd) : fd_(fd) {}
  ~Descriptor() {
    if (fd_ >= 0) ::close(fd_);
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  int get() const { return fd_; }
  /// Closes it now; a late write error of the file system shows here.
  bool close() { return ::close(std::exchange(fd_, -1)) == 0; }

 private:
  int fd_;
};

bool writeAll(int fd, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t n = ::write(fd, bytes.data(), bytes.size());
    if (n < 0 && errno == EINTR) continue;
    if (n < 0) return false;
    bytes.remove_prefix(static_cast<std::size_t>(n));
  }
  return true;
}

void syncFolderOf(const fs::path& path) {
  const fs::path folder = path.has_parent_path() ? path.parent_path() : fs::path(".");
  const Descriptor fd(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (fd.get() >= 0) ::fsync(fd.get());
}

/// A new file beside the path with the bytes on the disk; its name ends in this process's number.
Result<fs::path> writeBeside(const fs::path& path, std::string_view bytes) {
  const fs::path temporary = path.string() + ".new-" + std::to_string(::getpid());
  Descriptor fd(::open(temporary.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644));
  if (fd.get() < 0) return refuse("cannot write '{}': {}", path.string(), systemSays(errno));
  if (!writeAll(fd.get(), bytes) || ::fsync(fd.get()) != 0 || !fd.close()) {
    const int error = errno;
    ::unlink(temporary.c_str());
    return refuse("cannot write '{}': {}", path.string(), systemSays(error));
  }
  return temporary;
}

}  // namespace

Result<std::optional<std::string>> readFileIfPresent(const fs::path& path) {
  const Descriptor fd(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
  if (fd.get() < 0) {
    if (errno == ENOENT) return std::optional<std::string>();
    return refuse("cannot read '{}': {}", path.string(), systemSays(errno));
  }
  std::string bytes;
  std::array<char, 65536> buffer{};
  for (;;) {
    const ssize_t n = ::read(fd.get(), buffer.data(), buffer.size());
    if (n < 0 && errno == EINTR) continue;
    if (n < 0) return refuse("cannot read '{}': {}", path.string(), systemSays(errno));
    if (n == 0) return std::optional<std::string>(std::move(bytes));
    bytes.append(buffer.data(), static_cast<std::size_t>(n));
  }
}

Result<> writeFileWhole(const fs::path& path, std::string_view bytes) {
  const auto temporary = writeBeside(path, bytes);
  if (!temporary) return tl::make_unexpected(temporary.error());
  return renameInto(*temporary, path);
}

Result<bool> copyFileIfAbsent(const fs::path& from, const fs::path& to) {
  const auto bytes = readFileIfPresent(from);
  if (!bytes) return tl::make_unexpected(bytes.error());
  if (!bytes->has_value()) return refuse("'{}' is missing", from.string());
  const auto temporary = writeBeside(to, **bytes);
  if (!temporary) return tl::make_unexpected(temporary.error());
  // A link fails where a file is, unlike a rename: two programs at their first run cannot overwrite each
  // other.
  const bool made = ::link(temporary->c_str(), to.c_str()) == 0;
  const int error = errno;
  ::unlink(temporary->c_str());
  if (!made && error != EEXIST) return refuse("cannot make '{}': {}", to.string(), systemSays(error));
  syncFolderOf(to);
  return made;
}

Result<> appendToFile(const fs::path& path, std::string_view bytes) {
  Descriptor fd(::open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644));
  if (fd.get() < 0 || !writeAll(fd.get(), bytes)) {
    return refuse("cannot write '{}': {}", path.string(), systemSays(errno));
  }
  return {};
}

Result<> renameInto(const fs::path& from, const fs::path& to) {
  if (::rename(from.c_str(), to.c_str()) != 0) {
    const int error = errno;
    return refuse("cannot move '{}' to '{}': {}", from.string(), to.string(), systemSays(error));
  }
  syncFolderOf(to);
  return {};
}

fs::path setAsideName(const fs::path& path, Date now) {
  const auto seconds = static_cast<std::time_t>(now.secondsSince1970);
  std::tm utc{};
  ::gmtime_r(&seconds, &utc);
  std::array<char, 32> stamp{};
  std::strftime(stamp.data(), stamp.size(), "%Y%m%d-%H%M%S", &utc);
  const std::string base = path.string() + ".set-aside-" + stamp.data();
  fs::path name = base;
  for (int n = 2; fs::exists(fs::symlink_status(name)); ++n) name = base + "-" + std::to_string(n);
  return name;
}

Result<fs::path> setFileAside(const fs::path& path, Date now) {
  fs::path name = setAsideName(path, now);
  if (auto moved = renameInto(path, name); !moved) return tl::make_unexpected(moved.error());
  return name;
}

Result<> makeWritableFolder(const fs::path& folder) {
  std::error_code error;
  fs::create_directories(folder, error);
  if (error) return refuse("cannot make the data folder '{}': {}", folder.string(), error.message());
  if (!fs::is_directory(folder, error))
    return refuse("the data folder '{}' is not a folder", folder.string());
  const fs::path trial = folder / (".moniva-trial-" + std::to_string(::getpid()));
  const Descriptor fd(::open(trial.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0644));
  if (fd.get() < 0) {
    return refuse("the data folder '{}' cannot be written: {}", folder.string(), systemSays(errno));
  }
  ::unlink(trial.c_str());
  return {};
}

bool excludeFromBackup(const fs::path& path) {
  return ::setxattr(path.c_str(), kBackupAttribute, "false", 5, 0) == 0;
}

bool isExcludedFromBackup(const fs::path& path) {
  std::array<char, 16> value{};
  const ssize_t n = ::getxattr(path.c_str(), kBackupAttribute, value.data(), value.size());
  return n > 0 && std::string_view(value.data(), static_cast<std::size_t>(n)) == "false";
}

}  // namespace moniva
