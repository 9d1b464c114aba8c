#pragma once

#include <stdlib.h>

#include <filesystem>

#include "platform/platform.h"
#include "storage/mv_app_root.h"

namespace moniva::bench {

/// An empty store in a folder of its own, gone with the object.
class BenchStore {
 public:
  explicit BenchStore(std::string locale = "en_US")
      : db_(described(std::move(locale))), root(platform_, db_) {
    ready = root.copyDatabaseIfNeed().has_value() && db_.initDatabase().has_value();
  }
  ~BenchStore() {
    db_.closeDatabase();
    std::error_code ignored;
    std::filesystem::remove_all(platform_.directories.documents, ignored);
  }
  BenchStore(const BenchStore&) = delete;
  BenchStore& operator=(const BenchStore&) = delete;

  const Calendar& calendar() const { return *platform_.calendar; }
  std::filesystem::path file() const { return db_.databasePath(); }
  Connection& connection() { return *db_.getDatabase(); }

 private:
  Platform& described(std::string locale) {
    std::string folder = (std::filesystem::temp_directory_path() / "moniva-bench-XXXXXX").string();
    platform_.directories.documents = ::mkdtemp(folder.data()) != nullptr ? folder : std::string();
    platform_.directories.resources = std::filesystem::path(MONIVA_TEMPLATE).parent_path();
    platform_.calendar = *Calendar::make("Europe/Berlin", std::move(locale));
    platform_.clock = std::make_unique<FixedClock>(Date{1.7e9});
    platform_.random = std::make_unique<SeededRandom>(1);
    platform_.userDefaults = std::make_unique<MemoryUserDefaults>();
    return platform_;
  }

  Platform platform_;
  DoDB db_;

 public:
  MVAppRoot root;
  /// False when the store could not be made.
  bool ready = false;
};

}  // namespace moniva::bench
