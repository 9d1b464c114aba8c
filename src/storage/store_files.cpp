#include "storage/store_files.h"

#include <sqlite3.h>

#include "platform/files.h"
#include "storage/connection.h"

namespace moniva {
namespace {

namespace fs = std::filesystem;

fs::path withEnding(const fs::path& path, std::string_view ending) {
  return path.string() + std::string(ending);
}

bool present(const fs::path& path) {
  std::error_code error;
  return fs::exists(fs::symlink_status(path, error));
}

}  // namespace

Availability availabilityOf(const fs::path& path, std::string& why) {
  auto connection = Connection::open(path, Connection::Access::readWrite);
  if (!connection) {
    why = connection.error().why;
    return Availability::unknown;
  }
  bool readable = false;
  {
    Run run = (*connection)->query("select eid from transactions limit 1");
    run.next();
    readable = run.ok();
  }
  if (readable) return Availability::available;
  why = (*connection)->lastErrorMessage();
  switch ((*connection)->lastErrorCode() & 0xFF) {
    case SQLITE_CORRUPT:
    case SQLITE_NOTADB:
    case SQLITE_FORMAT:
    case SQLITE_ERROR:  // no such table or column
      return Availability::damaged;
    default:
      return Availability::unknown;
  }
}

Result<> settleDataFile(const fs::path& path) {
  if (!present(path)) return {};
  auto opened = Connection::open(path, Connection::Access::readWrite);
  if (!opened) return tl::make_unexpected(opened.error());
  Connection& connection = **opened;
  // Asking for the right to write makes the engine roll a hot journal back first, and shows whether another
  // program is in the middle of a write.
  if (!connection.execute("BEGIN IMMEDIATE") || !connection.execute("ROLLBACK") ||
      !connection.execute("PRAGMA wal_checkpoint(TRUNCATE)")) {
    return tl::make_unexpected(connection.refusal());
  }
  return {};
}

Result<fs::path> setDataFileAside(const fs::path& path, Date now) {
  auto aside = setFileAside(path, now);
  if (!aside) return aside;
  for (const std::string_view ending : {"-wal", "-journal"}) {
    const auto companion = withEnding(path, ending);
    if (!present(companion)) continue;
    if (auto moved = renameInto(companion, withEnding(*aside, ending)); !moved) {
      return tl::make_unexpected(moved.error());
    }
  }
  std::error_code ignored;
  fs::remove(withEnding(path, "-shm"), ignored);
  return aside;
}

Result<> clearLeftovers(const fs::path& path, Date now) {
  for (const std::string_view ending : {"-wal", "-journal"}) {
    const auto companion = withEnding(path, ending);
    if (!present(companion)) continue;
    if (auto aside = setFileAside(companion, now); !aside) return tl::make_unexpected(aside.error());
  }
  std::error_code ignored;
  fs::remove(withEnding(path, "-shm"), ignored);
  return {};
}

Result<fs::path> replaceDataFile(const fs::path& path, const fs::path& replacement, Date now) {
  if (!present(path)) {
    if (auto cleared = clearLeftovers(path, now); !cleared) return tl::make_unexpected(cleared.error());
    if (auto moved = renameInto(replacement, path); !moved) return tl::make_unexpected(moved.error());
    return fs::path();
  }
  std::string why;
  if (availabilityOf(path, why) == Availability::available) {
    // Once its log is in the file the old store is one complete file, and a second name keeps it.
    if (auto settled = settleDataFile(path); !settled) return tl::make_unexpected(settled.error());
    const fs::path aside = setAsideName(path, now);
    std::error_code error;
    fs::create_hard_link(path, aside, error);
    if (error) fs::copy_file(path, aside, error);  // a file system without hard links
    if (error) {
      return refuse("the data file '{}' cannot be kept as '{}': {}", path.string(), aside.string(),
                    error.message());
    }
    if (auto cleared = clearLeftovers(path, now); !cleared) return tl::make_unexpected(cleared.error());
    if (auto moved = renameInto(replacement, path); !moved) {
      std::error_code ignored;
      fs::remove(aside, ignored);
      return tl::make_unexpected(moved.error());
    }
    return aside;
  }
  auto aside = setDataFileAside(path, now);
  if (!aside) return aside;
  if (auto moved = renameInto(replacement, path); !moved) return tl::make_unexpected(moved.error());
  return aside;
}

}  // namespace moniva
