#include "platform/posix/file_user_defaults.h"

#include "platform/file_lock.h"
#include "platform/files.h"

namespace moniva {
namespace {

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

Result<> FileUserDefaults::synchronize() {
  const std::scoped_lock guard(mutex_);
  if (changes_.empty()) return {};
  auto lock = FileLock::acquire(path_.string() + ".lock", FileLock::Mode::exclusive, 5.0);
  if (!lock) return tl::make_unexpected(lock.error());
  const auto text = readFileIfPresent(path_);
  if (!text) return tl::make_unexpected(text.error());
  // A file that was removed or damaged since the opening takes nothing along that is still known here.
  Values merged = values_;
  if (text->has_value()) {
    if (auto object = parsed(**text)) {
      merged.clear();
      for (auto& [key, value] : *object) merged.insert_or_assign(std::string(key), std::move(value));
    }
  }
  for (const auto& [key, value] : changes_) {
    if (value) {
      merged.insert_or_assign(key, *value);
    } else {
      merged.erase(key);
    }
  }
  std::string out = "{";
  for (const auto& [key, value] : merged) {
    out += out.size() == 1 ? "\n  " : ",\n  ";
    out += boost::json::serialize(boost::json::value(key)) + ": " + boost::json::serialize(value);
  }
  out += "\n}\n";
  if (auto written = writeFileWhole(path_, out); !written) return written;
  values_ = std::move(merged);
  changes_.clear();
  return {};
}

}  // namespace moniva
