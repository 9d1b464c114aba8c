#include "platform/files.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <ctime>
#include <system_error>
#include <vector>

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

constexpr std::string_view kBeside = ".new-";

/// The name under which this process makes a file before it is renamed to the path.
fs::path besideName(const fs::path& path) {
  return fmt::format("{}{}{}", path.string(), kBeside, ::getpid());
}

/// Whether the name is one under which a process that is gone made a file beside the path.
bool isLeftover(const fs::path& path, const std::string& name) {
  const std::string beginning = path.filename().string() + std::string(kBeside);
  if (!name.starts_with(beginning)) return false;
  pid_t process = 0;
  const char* end = name.data() + name.size();
  const auto number = std::from_chars(name.data() + beginning.size(), end, process);
  return number.ec == std::errc() && number.ptr == end && process > 0 && ::kill(process, 0) != 0 &&
         errno == ESRCH;
}

/// Renames to a path where there is none; answers the system's error, EEXIST where something is. Unlike a
/// plain rename this one fails where a file is: two programs at their first run cannot overwrite each other.
/// Some file systems cannot do it; there a look before must do.
int renameIfAbsent(const fs::path& from, const fs::path& to) {
  const int failed =
      ::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0 ? 0 : errno;
  if (failed != EINVAL && failed != ENOSYS) return failed;
  return isPresent(to) ? EEXIST : ::rename(from.c_str(), to.c_str()) == 0 ? 0 : errno;
}

tl::unexpected<Refusal> isThereAlready(const fs::path& path) {
  return refuse("'{}' is there already", path.string());
}

/// A new file beside the path with the bytes on the disk.
Result<fs::path> writeBeside(const fs::path& path, std::string_view bytes) {
  const fs::path temporary = besideName(path);
  Descriptor fd(::open(temporary.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600));
  if (fd.get() < 0) return refuse("cannot write '{}': {}", path.string(), systemSays(errno));
  if (!writeAll(fd.get(), bytes) || ::fsync(fd.get()) != 0 || !fd.close()) {
    const int error = errno;
    ::unlink(temporary.c_str());
    return refuse("cannot write '{}': {}", path.string(), systemSays(error));
  }
  return temporary;
}

}  // namespace

bool isPresent(const fs::path& path) {
  std::error_code error;
  return fs::exists(fs::symlink_status(path, error));
}

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
  auto moved = renameInto(*temporary, path);
  if (!moved) ::unlink(temporary->c_str());
  return moved;
}

void removeLeftovers(const fs::path& path) {
  std::error_code error;
  std::vector<fs::path> leftovers;
  for (fs::directory_iterator entry(path.has_parent_path() ? path.parent_path() : ".", error), end;
       !error && entry != end; entry.increment(error)) {
    if (isLeftover(path, entry->path().filename().string())) leftovers.push_back(entry->path());
  }
  for (const auto& leftover : leftovers) ::unlink(leftover.c_str());
}

Result<bool> copyFileIfAbsent(const fs::path& from, const fs::path& to) {
  if (!isPresent(from)) return refuse("'{}' is missing", from.string());
  const fs::path temporary = besideName(to);
  std::error_code error;
  fs::copy_file(from, temporary, fs::copy_options::overwrite_existing, error);
  if (!error) {
    fs::permissions(temporary, fs::perms::owner_read | fs::perms::owner_write, error);
    const Descriptor fd(::open(temporary.c_str(), O_RDONLY | O_CLOEXEC));
    if (fd.get() < 0 || ::fsync(fd.get()) != 0) error = std::error_code(errno, std::generic_category());
  }
  if (error) {
    ::unlink(temporary.c_str());
    return refuse("cannot copy '{}' to '{}': {}", from.string(), to.string(), error.message());
  }
  const int failed = renameIfAbsent(temporary, to);
  if (failed != 0) ::unlink(temporary.c_str());
  if (failed != 0 && failed != EEXIST) return refuse("cannot make '{}': {}", to.string(), systemSays(failed));
  syncFolderOf(to);
  return failed == 0;
}

NewFile::NewFile(fs::path path, fs::path temporary, int fd, bool mayReplace)
    : path_(std::move(path)), temporary_(std::move(temporary)), fd_(fd), mayReplace_(mayReplace) {}

NewFile::NewFile(NewFile&& other) noexcept
    : path_(std::move(other.path_)),
      temporary_(std::move(other.temporary_)),
      fd_(std::exchange(other.fd_, -1)),
      mayReplace_(other.mayReplace_) {}

NewFile::~NewFile() {
  if (fd_ < 0) return;
  ::close(fd_);
  ::unlink(temporary_.c_str());
}

Result<NewFile> NewFile::at(fs::path path, bool mayReplace) {
  std::error_code error;
  const bool isThere = isPresent(path);
  if (isThere && !mayReplace) return isThereAlready(path);
  if (isThere && !fs::is_regular_file(path, error)) {
    return refuse("'{}' is no file that could be replaced", path.string());
  }
  // What a link leads to is replaced, not the link.
  if (isThere) path = fs::canonical(path, error);
  fs::path temporary = besideName(path);
  const int fd = ::open(temporary.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
  if (fd < 0) return refuse("cannot write '{}': {}", path.string(), systemSays(errno));
  return NewFile(std::move(path), std::move(temporary), fd, mayReplace);
}

Result<> NewFile::write(std::string_view bytes) {
  if (!writeAll(fd_, bytes)) return refuse("cannot write '{}': {}", path_.string(), systemSays(errno));
  return {};
}

Result<> NewFile::keep() {
  if (::fsync(fd_) != 0) return refuse("cannot write '{}': {}", path_.string(), systemSays(errno));
  if (mayReplace_) {
    if (auto moved = renameInto(temporary_, path_); !moved) return moved;
  } else {
    const int failed = renameIfAbsent(temporary_, path_);
    if (failed == EEXIST) return isThereAlready(path_);
    if (failed != 0) return refuse("cannot make '{}': {}", path_.string(), systemSays(failed));
    syncFolderOf(path_);
  }
  ::close(std::exchange(fd_, -1));
  return {};
}

Result<> appendToFile(const fs::path& path, std::string_view bytes) {
  Descriptor fd(::open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600));
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
  for (int n = 2; isPresent(name); ++n) name = base + "-" + std::to_string(n);
  return name;
}

Result<fs::path> setFileAside(const fs::path& path, Date now) {
  fs::path name = setAsideName(path, now);
  if (auto moved = renameInto(path, name); !moved) return tl::make_unexpected(moved.error());
  return name;
}

Result<> makeWritableFolder(const fs::path& folder) {
  std::error_code error;
  const bool isNew = fs::create_directories(folder, error);
  if (isNew && !error) fs::permissions(folder, fs::perms::owner_all, error);
  if (error) return refuse("cannot make the data folder '{}': {}", folder.string(), error.message());
  if (!fs::is_directory(folder, error))
    return refuse("the data folder '{}' is not a folder", folder.string());
  const fs::path trial = folder / (".moniva-trial-" + std::to_string(::getpid()));
  const Descriptor fd(::open(trial.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600));
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
