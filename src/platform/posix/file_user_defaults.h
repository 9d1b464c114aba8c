#pragma once

#include <filesystem>
#include <string>

#include "platform/user_defaults.h"

namespace moniva {

/// User defaults in one JSON file, written whole beside its place and renamed into it. Two programs may share
/// the file: `synchronize` takes in what the other wrote and adds only what was changed here.
class FileUserDefaults final : public UserDefaults {
 public:
  /// Reads the file; an absent one is an empty one. A damaged one is set aside under a name with the time
  /// (`now`, for the name) and `notice` says so; a file that is there but cannot be read is refused.
  static Result<std::unique_ptr<FileUserDefaults>> open(std::filesystem::path path, Date now);

  /// What the user should know about the opening; mostly empty.
  const std::string& notice() const { return notice_; }

  Result<std::string> stringForKeyOrSet(std::string_view key, std::string_view text) override;
  Result<> synchronize() override;

 private:
  explicit FileUserDefaults(std::filesystem::path path) : path_(std::move(path)) {}

  /// Takes in what the file holds now; what was changed here and not synchronized wins. With the file's lock
  /// held.
  Result<> merge();
  /// With the file's lock held.
  Result<> write();

  std::filesystem::path path_;
  std::string notice_;
};

}  // namespace moniva
