// Creating and recovering the data file: the part of MVAppRoot that runs before the store is opened.

#include "platform/files.h"
#include "storage/mv_app_root.h"
#include "storage/store_files.h"

namespace moniva {
namespace {

namespace fs = std::filesystem;

/// The cloud containers to look in, the edition's own first and the first edition's last.
std::vector<std::string> containersFor(const AppInfo& info) {
  if (info.edition == Edition::plus)
    return {info.containerOfPlus, info.containerOfSecond, info.containerOfFirst};
  return {info.containerOfSecond, info.containerOfPlus, info.containerOfFirst};
}

}  // namespace

fs::path MVAppRoot::dataFile() const {
  return db_.databasePath().empty() ? db_.defaultPath() : db_.databasePath();
}

Result<> MVAppRoot::hold() {
  if (lock_) return {};
  auto held = FileLock::acquire(db_.defaultPath().string() + ".lock", FileLock::Mode::shared, kLockPatience);
  if (!held) return tl::make_unexpected(held.error());
  lock_ = std::move(*held);
  return {};
}

Result<> MVAppRoot::exclusively(const std::function<Result<>()>& change, double patience) {
  // The shared lock goes first: two programs that both kept theirs would wait for each other. Whoever comes
  // in between is seen by what `change` asks of the files.
  lock_.reset();
  Result<> changed;
  {
    const auto alone =
        FileLock::acquire(db_.defaultPath().string() + ".lock", FileLock::Mode::exclusive, patience);
    changed = alone ? change()
                    : refuse("the data file '{}' is in use by another program; nothing was changed",
                             dataFile().string());
  }
  auto held = hold();
  return changed ? held : changed;
}

Result<> MVAppRoot::takeSafetyCopy() {
  const fs::path backup = platform_.directories.documents / "backupBeforeUpdate.dat";
  if (!isPresent(backup)) return {};
  db_.closeDatabase();
  return exclusively([&]() -> Result<> {
    if (!isPresent(backup)) return {};  // another program was faster
    std::string why;
    std::error_code ignored;
    const bool isFile = fs::is_regular_file(backup, ignored);
    const bool readable = isFile && db_.databaseIsAvailable(backup);
    if (isFile && !readable && availabilityOf(backup, why) == Availability::unknown) {
      return refuse("the safety copy '{}' cannot be read now: {}", backup.string(), why);
    }
    const Result<> kind = readable ? checkKind(backup) : refuse("it cannot be read");
    if (!kind) {
      auto aside = setDataFileAside(backup, now());
      if (!aside) return tl::make_unexpected(aside.error());
      addNotice("The safety copy '{}' cannot be used: {}. It was set aside as '{}'; the data file stays.",
                backup.filename().string(), kind.error(), aside->filename().string());
      return {};
    }
    if (auto settled = settleDataFile(backup); !settled) return settled;
    auto aside = replaceDataFile(db_.defaultPath(), backup, now());
    if (!aside) return tl::make_unexpected(aside.error());
    stamps_.forget();
    if (aside->empty()) {
      addNotice("The safety copy '{}' is now the data file.", backup.string());
    } else {
      addNotice("The safety copy '{}' took the place of the data file, which is kept as '{}'.",
                backup.filename().string(), aside->filename().string());
    }
    return {};
  });
}

Result<> MVAppRoot::clearJournal() {
  const fs::path path = db_.defaultPath();
  const fs::path journal = path.string() + "-journal";
  if (!isPresent(journal)) return {};
  return exclusively([&]() -> Result<> {
    if (!isPresent(path)) return clearLeftovers(path, now());
    // An interrupted program of the older kind left its undo journal: it is applied before it goes.
    if (auto settled = settleDataFile(path); !settled) return settled;
    std::error_code error;
    fs::remove(journal, error);
    if (error) {
      return refuse("the leftover journal '{}' cannot be removed: {}", journal.string(), error.message());
    }
    return {};
  });
}

Result<> MVAppRoot::makeFirstStore() {
  const fs::path path = db_.defaultPath();
  if (platform_.cloud->isSignedIn()) {
    for (const auto& container : containersFor(platform_.info)) {
      if (restoreDatafileFromiCloud(container)) return {};
    }
  }
  if (platform_.info.edition == Edition::plus && importFromGroupPath(platform_.directories.groupContainer)) {
    return {};
  }
  if (auto cleared = clearLeftovers(path, now()); !cleared) return cleared;
  auto made = copyFileIfAbsent(platform_.directories.resources / "db.sqlite", path);
  if (!made) return tl::make_unexpected(made.error());
  platform_.userDefaults->setString("1", "copyDataFile");
  platform_.log.line("无数据库文件, 重新重置新数据库");
  return {};
}

Result<> MVAppRoot::copyDatabaseIfNeed() {
  const auto& documents = platform_.directories.documents;
  const fs::path path = db_.defaultPath();
  if (auto folder = makeWritableFolder(documents); !folder) return folder;
  if (auto held = hold(); !held) return held;
  // A journal that can no longer be applied does not stand in the way of a safety copy.
  auto cleared = clearJournal();
  if (!cleared && !isPresent(documents / "backupBeforeUpdate.dat")) return cleared;
  if (auto taken = takeSafetyCopy(); !taken) return taken;
  if (isPresent(path)) return {};
  return exclusively([&]() -> Result<> { return isPresent(path) ? Result<>() : makeFirstStore(); });
}

bool MVAppRoot::restoreDatafileFromiCloud(std::string_view containerID) {
  const fs::path path = db_.defaultPath();
  const fs::path arriving = path.string() + ".arriving";
  if (!platform_.cloud->restoreDatafile(containerID, arriving)) return false;
  const Result<> kind = db_.databaseIsAvailable(arriving) ? checkKind(arriving) : refuse("it cannot be read");
  if (!kind) {
    const auto aside = setDataFileAside(arriving, now());
    addNotice("The data file from the cloud ({}) cannot be used: {}.", containerID, kind.error());
    if (aside) addNotice("The file from the cloud was set aside as '{}'.", aside->filename().string());
    return false;
  }
  return settleDataFile(arriving) && replaceDataFile(path, arriving, now());
}

void MVAppRoot::databaseFileChangedAfterRestoreDatafile() {
  stamps_.forget();
  platform_.notifications.post(notification::kNewDatabaseFile);
  platform_.notifications.post(notification::kExpenseChanged);
  platform_.notifications.post(notification::kAccountDeleted);
}

bool MVAppRoot::importFromGroupPath(const fs::path& folder) {
  const fs::path source = folder / platform_.info.kDatabaseName;
  if (folder.empty() || !isPresent(source) || !db_.databaseIsAvailable(source) || !checkKind(source)) {
    return false;
  }
  return settleDataFile(source) && copyFileIfAbsent(source, db_.defaultPath());
}

Result<fs::path> MVAppRoot::replaceDatabase(const fs::path& store) {
  const fs::path path = dataFile();
  const fs::path fresh = path.string() + ".fresh";
  std::error_code ignored;
  fs::remove(fresh, ignored);
  if (auto made = copyFileIfAbsent(store, fresh); !made) return tl::make_unexpected(made.error());
  db_.closeDatabase();
  fs::path kept;
  auto replaced = exclusively([&]() -> Result<> {
    auto aside = replaceDataFile(path, fresh, now());
    if (!aside) return tl::make_unexpected(aside.error());
    kept = *aside;
    return {};
  });
  fs::remove(fresh, ignored);
  stamps_.forget();
  auto opened = db_.initDatabase();
  if (!replaced) return tl::make_unexpected(replaced.error());
  if (!opened) return tl::make_unexpected(opened.error());
  return kept;
}

Result<> MVAppRoot::resetDatabase() {
  const auto kept = replaceDatabase(platform_.directories.resources / "db.sqlite");
  if (!kept) return tl::make_unexpected(kept.error());
  if (!kept->empty()) {
    addNotice("The data file is kept as '{}'; the store is empty now.", kept->filename().string());
  }
  return {};
}

Result<fs::path> MVAppRoot::setDatabaseAside() {
  db_.closeDatabase();
  fs::path kept;
  auto moved = exclusively([&]() -> Result<> {
    auto aside = setDataFileAside(dataFile(), now());
    if (!aside) return tl::make_unexpected(aside.error());
    kept = *aside;
    return {};
  });
  if (!moved) return tl::make_unexpected(moved.error());
  stamps_.forget();
  addNotice("The data file '{}' is damaged. It was set aside as '{}'; the next start begins a new store.",
            dataFile().string(), kept.filename().string());
  return kept;
}

}  // namespace moniva
