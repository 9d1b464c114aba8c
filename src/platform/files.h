#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "base/result.h"
#include "calendar/date.h"

/// Files of the host: whole-or-nothing writing, setting aside, and the flag that keeps a file out of device
/// backups. Every refusal names the file and what the system said. Files are made for the user's eyes alone.
namespace moniva {

/// Whether something is at the path, a link that leads nowhere too.
bool isPresent(const std::filesystem::path& path);

/// The file's bytes; nothing when there is no such file. A file that cannot be read is refused.
Result<std::optional<std::string>> readFileIfPresent(const std::filesystem::path& path);

/// Writes the bytes to a new file beside the path, brings them to the disk and renames it into place: a crash
/// leaves the old file or the new one, whole.
Result<> writeFileWhole(const std::filesystem::path& path, std::string_view bytes);

/// Removes what `writeFileWhole` of programs that were killed left beside the path. For who holds the lock of
/// the file.
void removeLeftovers(const std::filesystem::path& path);

/// Copies a file to a path where there is none, whole or not at all. When a file appeared at the path in the
/// meantime (another program was faster) that one stays; the answer says whether the copy was made.
Result<bool> copyFileIfAbsent(const std::filesystem::path& from, const std::filesystem::path& to);

/// A file written bit by bit under a name beside its path. Kept, it takes the path in one step; let go of
/// before that, it is gone and what was at the path is untouched.
class NewFile {
 public:
  /// Begins one for the path. Refused where `mayReplace` is not set and something is there, where something
  /// is there that is no plain file, and where no file can be made.
  static Result<NewFile> at(std::filesystem::path path, bool mayReplace);
  NewFile(NewFile&& other) noexcept;
  NewFile& operator=(NewFile&&) = delete;
  NewFile(const NewFile&) = delete;
  NewFile& operator=(const NewFile&) = delete;
  ~NewFile();

  Result<> write(std::string_view bytes);
  /// Brings the file to the disk and to its path. Refused, as by `at`, for what came to the path meanwhile.
  Result<> keep();

 private:
  NewFile(std::filesystem::path path, std::filesystem::path temporary, int fd, bool mayReplace);

  std::filesystem::path path_;
  std::filesystem::path temporary_;
  int fd_;
  bool mayReplace_;
};

/// Appends the bytes to the file, making it when it is absent.
Result<> appendToFile(const std::filesystem::path& path, std::string_view bytes);

/// Moves a file into the place of another (or of none) in one step and brings the folder to the disk.
Result<> renameInto(const std::filesystem::path& from, const std::filesystem::path& to);

/// A free name beside the path, with the UTC time in it: "moniva.dat" ->
/// "moniva.dat.set-aside-20240229-143005".
std::filesystem::path setAsideName(const std::filesystem::path& path, Date now);

/// Renames the file to `setAsideName`; answers the new path.
Result<std::filesystem::path> setFileAside(const std::filesystem::path& path, Date now);

/// Makes the folder and its parents when they are missing, and tries that files can be made in it.
Result<> makeWritableFolder(const std::filesystem::path& folder);

/// Marks a file or folder as one that device backups leave out. False where the file system keeps no such
/// flag.
bool excludeFromBackup(const std::filesystem::path& path);
bool isExcludedFromBackup(const std::filesystem::path& path);

}  // namespace moniva
