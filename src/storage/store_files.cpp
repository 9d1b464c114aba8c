#include "storage/store_files.h"

#include <sqlite3.h>

#include <set>

#include "platform/files.h"
#include "storage/transaction.h"

namespace moniva {
namespace {

namespace fs = std::filesystem;

fs::path withEnding(const fs::path& path, std::string_view ending) {
  return path.string() + std::string(ending);
}

/// The kind of store this program writes, kept in the file's user_version. Stores of older programs have 0.
constexpr std::int64_t kStoreVersion = 1;
/// "MONI"; older stores have 0.
constexpr std::int64_t kApplicationID = 0x4D4F4E49;

/// The one figure a query gives; 0, with the error kept by the connection, when it fails.
std::int64_t figure(Connection& connection, std::string_view sql) {
  Run run = connection.query(sql);
  return run.next() ? run.integer(0) : 0;
}

bool isOurs(std::int64_t application) {
  return application == 0 || application == kApplicationID;
}

/// Those of the tables that are there as "NAME_old" alone; none where the others are not all there, or the
/// file is another program's.
std::vector<std::string> tablesUnderOldNames(Connection& connection) {
  std::vector<std::string> names;
  if (!isOurs(figure(connection, "PRAGMA application_id"))) return names;
  std::set<std::string, std::less<>> found;
  Run run = connection.query(
      "select name from sqlite_schema where type = 'table' and name in ('account', 'category',"
      " 'transactions', 'monivaSys', 'account_old', 'category_old', 'transactions_old', 'monivaSys_old')");
  while (run.next()) found.emplace(run.text(0));
  for (const std::string name : {"account", "category", "transactions", "monivaSys"}) {
    if (found.contains(name)) continue;
    if (!found.contains(name + "_old")) return {};
    names.push_back(name);
  }
  return names;
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
  const int code = (*connection)->lastErrorCode() & 0xFF;
  if (code == SQLITE_ERROR && !tablesUnderOldNames(**connection).empty()) return Availability::available;
  switch (code) {
    case SQLITE_CORRUPT:
    case SQLITE_NOTADB:
    case SQLITE_FORMAT:
    case SQLITE_ERROR:  // no such table or column
      return Availability::damaged;
    default:
      return Availability::unknown;
  }
}

Result<> takeUpRenamings(Connection& connection) {
  if (tablesUnderOldNames(connection).empty()) return {};
  Transaction transaction(connection);
  // What others say of the tables holds again afterwards.
  bool done = transaction.began() && connection.executeScript("PRAGMA legacy_alter_table = ON");
  // Asked again: another program may have been faster.
  for (const auto& name : tablesUnderOldNames(connection)) {
    done = done && connection.executeScript(fmt::format("ALTER TABLE {0}_old RENAME TO {0}", name));
  }
  done = done && transaction.commit();
  const auto result = done ? Result<>() : tl::make_unexpected(connection.refusal());
  connection.executeScript("PRAGMA legacy_alter_table = OFF");
  return result;
}

Result<> checkKind(Connection& connection) {
  connection.clearError();
  const auto application = figure(connection, "PRAGMA application_id");
  const auto tables = figure(connection,
                             "select count(*) from sqlite_schema where type = 'table' and name in"
                             " ('account', 'category', 'transactions', 'monivaSys')");
  const auto newer = newerKind(connection);
  if (connection.lastErrorCode() != 0) return tl::make_unexpected(connection.refusal());
  if (!isOurs(application) || tables != 4) {
    return refuse("'{}' is not a data file of this program", connection.path().string());
  }
  if (newer) return tl::make_unexpected(*newer);
  return {};
}

std::optional<Refusal> newerKind(Connection& connection) {
  const auto version = figure(connection, "PRAGMA user_version");
  if (version <= kStoreVersion || figure(connection, "PRAGMA application_id") != kApplicationID)
    return std::nullopt;
  return Refusal(
      phrase("the data file '{}' was written by a newer version of the program (kind {}; this one knows up "
             "to {}), so it"
             " can be read here and not changed",
             connection.path().string(), version, kStoreVersion));
}

Result<> checkKind(const fs::path& path) {
  auto connection = Connection::open(path, Connection::Access::readWrite);
  if (!connection) return tl::make_unexpected(connection.error());
  return checkKind(**connection);
}

Result<> settleDataFile(const fs::path& path) {
  if (!isPresent(path)) return {};
  auto opened = Connection::open(path, Connection::Access::readWrite);
  if (!opened) return tl::make_unexpected(opened.error());
  Connection& connection = **opened;
  // Asking for the right to write makes the engine roll a hot journal back first, and shows whether another
  // program is in the middle of a write.
  if (!connection.execute("BEGIN IMMEDIATE") || !connection.execute("ROLLBACK") || !connection.checkpoint()) {
    return tl::make_unexpected(connection.refusal());
  }
  return {};
}

Result<> copyStore(Connection& connection, const fs::path& to) {
  const auto size = static_cast<std::uintmax_t>(figure(connection, "PRAGMA page_count")) *
                    static_cast<std::uintmax_t>(figure(connection, "PRAGMA page_size"));
  std::error_code error;
  const auto room = fs::space(to.parent_path(), error);
  if (!error && room.available < size) {
    return refuse("there is no room for a copy of the data file in '{}': it takes {} bytes, {} are free",
                  to.parent_path().string(), size, room.available);
  }
  const fs::path building = withEnding(to, ".building");
  // Made here, so that it is for the user's eyes alone from the beginning; one cut short is overwritten.
  auto copied = writeFileWhole(building, "");
  if (copied) copied = connection.copyInto(building);
  if (copied) copied = renameInto(building, to);
  for (const std::string_view ending : {"", "-journal"}) fs::remove(withEnding(building, ending), error);
  return copied;
}

Result<fs::path> setDataFileAside(const fs::path& path, Date now) {
  auto aside = setFileAside(path, now);
  if (!aside) return aside;
  for (const std::string_view ending : {"-wal", "-journal"}) {
    const auto companion = withEnding(path, ending);
    if (!isPresent(companion)) continue;
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
    if (!isPresent(companion)) continue;
    if (auto aside = setFileAside(companion, now); !aside) return tl::make_unexpected(aside.error());
  }
  std::error_code ignored;
  fs::remove(withEnding(path, "-shm"), ignored);
  return {};
}

Result<fs::path> replaceDataFile(const fs::path& path, const fs::path& replacement, Date now) {
  if (!isPresent(path)) {
    if (auto cleared = clearLeftovers(path, now); !cleared) return tl::make_unexpected(cleared.error());
    if (auto moved = renameInto(replacement, path); !moved) return tl::make_unexpected(moved.error());
    return fs::path();
  }
  std::string why;
  switch (availabilityOf(path, why)) {
    case Availability::available:
      break;
    case Availability::unknown:
      return refuse("the data file '{}' stays in its place: {}", path.string(), why);
    case Availability::damaged: {
      auto aside = setDataFileAside(path, now);
      if (!aside) return aside;
      if (auto moved = renameInto(replacement, path); !moved) return tl::make_unexpected(moved.error());
      return aside;
    }
  }
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
  // Empty by now; they must not be taken for those of the new file.
  for (const std::string_view ending : {"-wal", "-shm", "-journal"})
    fs::remove(withEnding(path, ending), error);
  if (auto moved = renameInto(replacement, path); !moved) {
    fs::remove(aside, error);
    return tl::make_unexpected(moved.error());
  }
  return aside;
}

}  // namespace moniva
