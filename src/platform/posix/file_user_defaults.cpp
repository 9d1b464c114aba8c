#include "platform/posix/file_user_defaults.h"

#include "platform/file_lock.h"
#include "platform/files.h"

namespace moniva {
namespace {

/// Seconds to wait for another program that is writing the file.
constexpr double kPatience = 5.0;

/// The values of the file, or nothing when its text is no JSON object.
std::optional<boost::json::object> parsed(const std::string& text) {
  boost::system::error_code error;
  auto value = boost::json::parse(text, error);
  if (error || !value.is_object()) return std::nullopt;
  return std::move(value.get_object());
}

}  // namespace

Result<std::unique_ptr<FileUserDefaults>> FileUserDefaults::open(std::filesystem::path path, Date now) {
  std::unique_ptr<FileUserDefaults> defaults(new FileUserDefaults(std::move(path)));
  const auto text = readFileIfPresent(defaults->path_);
  if (!text) return tl::make_unexpected(text.error());
  if (!text->has_value()) return defaults;
  auto object = parsed(**text);
  if (!object) {
    const auto aside = setFileAside(defaults->path_, now);
    if (!aside) return tl::make_unexpected(aside.error());
    defaults->notice_ = fmt::format(
        "The settings file '{}' is damaged. It was set aside as '{}'; built-in settings are used.",
        defaults->path_.string(), aside->filename().string());
    return defaults;
  }
  for (auto& [key, value] : *object) defaults->values_.insert_or_assign(std::string(key), std::move(value));
  return defaults;
}

Result<> FileUserDefaults::merge() {
  const auto text = readFileIfPresent(path_);
  if (!text) return tl::make_unexpected(text.error());
  // A file that was removed or damaged since the opening takes nothing along that is still known here.
  if (text->has_value()) {
    if (auto object = parsed(**text)) {
      values_.clear();
      for (auto& [key, value] : *object) values_.insert_or_assign(std::string(key), std::move(value));
    }
  }
  for (const auto& [key, value] : changes_) {
    if (value) {
      values_.insert_or_assign(key, *value);
    } else {
      values_.erase(key);
    }
  }
  return {};
}

Result<> FileUserDefaults::write() {
  std::string out = "{";
  for (const auto& [key, value] : values_) {
    out += out.size() == 1 ? "\n  " : ",\n  ";
    out += boost::json::serialize(boost::json::value(key)) + ": " + boost::json::serialize(value);
  }
  out += "\n}\n";
  removeLeftovers(path_);
  if (auto written = writeFileWhole(path_, out); !written) return written;
  changes_.clear();
  return {};
}

Result<std::string> FileUserDefaults::stringForKeyOrSet(std::string_view key, std::string_view text) {
  const std::scoped_lock guard(mutex_);
  auto lock = FileLock::acquire(path_.string() + ".lock", FileLock::Mode::exclusive, kPatience);
  if (!lock) return tl::make_unexpected(lock.error());
  if (auto merged = merge(); !merged) return tl::make_unexpected(merged.error());
  auto& value = values_[std::string(key)];
  if (value.is_string() && !value.get_string().empty()) return std::string(value.get_string());
  value = text;
  changes_.insert_or_assign(std::string(key), value);
  if (auto written = write(); !written) return tl::make_unexpected(written.error());
  return std::string(text);
}

Result<> FileUserDefaults::synchronize() {
  const std::scoped_lock guard(mutex_);
  if (changes_.empty()) return {};
  auto lock = FileLock::acquire(path_.string() + ".lock", FileLock::Mode::exclusive, kPatience);
  if (!lock) return tl::make_unexpected(lock.error());
  if (auto merged = merge(); !merged) return merged;
  return write();
}

}  // namespace moniva
