#include "storage/do_db.h"

#include <sqlite3.h>

#include <map>
#include <mutex>
#include <set>
#include <utility>

#include "storage/device_settings.h"
#include "storage/indexes_sql.h"
#include "storage/mv_app_root.h"
#include "storage/store_files.h"
#include "storage/transaction.h"

namespace moniva {
namespace {

/// The text without what may differ between two texts of one index.
std::string plainIndex(std::string_view sql) {
  std::string plain;
  for (const char c : sql) {
    if (c != ' ' && c != '\n') plain += c;
  }
  constexpr std::string_view condition = "IFNOTEXISTS";
  if (const auto at = plain.find(condition); at != std::string::npos) plain.erase(at, condition.size());
  return plain;
}

/// The indexes the store should have, by name.
std::map<std::string, std::string> indexTexts() {
  std::map<std::string, std::string> texts;
  constexpr std::string_view start = "CREATE INDEX IF NOT EXISTS ";
  for (auto at = kIndexesSql.find(start); at != std::string_view::npos;
       at = kIndexesSql.find(start, at + 1)) {
    const auto sql = kIndexesSql.substr(at, kIndexesSql.find(';', at) - at);
    const auto name = sql.substr(start.size(), sql.find(' ', start.size()) - start.size());
    texts.emplace(name, plainIndex(sql));
  }
  return texts;
}

/// Milliseconds to wait for other programs.
constexpr int kPatience = 5000;

std::string debugNote(std::string_view word) {
  return word == "syncdatacompletely" ? std::string(word) : fmt::format("appdebug{}", word);
}

}  // namespace

DoDB::DoDB(Platform& platform) : platform_(platform), faultLog_(platform) {}

DoDB::DoDB(Platform& platform, std::filesystem::path path) : DoDB(platform) {
  std::error_code error;
  if (std::filesystem::exists(path, error)) databasePath_ = std::move(path);
}

DoDB::~DoDB() {
  closeDatabase();
}

DoDB* DoDB::instance(Platform* platform) {
  static std::mutex mutex;
  static DoDB* shared = nullptr;
  const std::scoped_lock lock(mutex);
  if (shared == nullptr && platform != nullptr) shared = new DoDB(*platform);
  return shared;
}

std::filesystem::path DoDB::defaultPath() const {
  return platform_.directories.documents / platform_.info.kDatabaseName;
}

bool DoDB::setDatabasePath(const std::filesystem::path& path) {
  std::error_code error;
  if (!std::filesystem::exists(path, error)) return false;
  const bool wasOpen = isOpen();
  const auto before = std::exchange(databasePath_, path);
  if (initDatabase()) return true;
  databasePath_ = before;
  if (wasOpen) initDatabase();
  return false;
}

Result<> DoDB::initDatabase() {
  closeDatabase();
  {
    const std::scoped_lock lock(fileFaultMutex_);
    fileFault_.clear();
  }
  if (databasePath_.empty()) databasePath_ = defaultPath();
  // Asked before anything opens it for writing, which alone may change the file.
  readOnlyReason_.reset();
  if (auto looked = Connection::open(databasePath_, Connection::Access::readOnly))
    readOnlyReason_ = newerKind(**looked);
  const auto access = readOnlyReason_ ? Connection::Access::readOnly : Connection::Access::readWrite;
  auto opened = Connection::open(databasePath_, access);
  if (!opened) return tl::make_unexpected(opened.error());
  if (auto prepared = prepare(**opened); !prepared) return prepared;
  fmdb_ = std::move(*opened);
  queue_ = std::make_unique<DatabaseQueue>(databasePath_, access, [this](Connection& connection) {
    const auto prepared = prepare(connection);
    if (!prepared) faultLog_.fault(prepared.error().why);
    return prepared.has_value();
  });
  if (!isReadOnly()) addIndexesIfMissing();
  return {};
}

Result<> DoDB::prepare(Connection& connection) {
  if (!readOnlyReason_) return prepareToWrite(connection);
  connection.onFileFault([this](int code, const std::string& message) { noteFileFault(code, message); });
  connection.setReadOnlyReason(*readOnlyReason_);
  if (connection.executeScript("PRAGMA cache_size = -16384")) return {};
  return tl::make_unexpected(connection.refusal());
}

Result<> DoDB::prepareToWrite(Connection& connection) {
  if (auto named = takeUpRenamings(connection); !named) return named;
  if (auto kind = checkKind(connection); !kind) return kind;
  connection.onFileFault([this](int code, const std::string& message) { noteFileFault(code, message); });
  const bool logged = [&] {
    Run run = connection.query("PRAGMA journal_mode = WAL");
    return run.next() && run.text(0) == "wal";
  }();
  // A person's entry is on the disk when the program says so; cached pages stay within a phone's memory.
  if (!logged && connection.lastErrorCode() == 0) {
    return refuse("the folder of the data file '{}' does not allow its write-ahead log",
                  connection.path().string());
  }
  if (!logged ||
      !connection.executeScript(
          "PRAGMA synchronous = FULL; PRAGMA cache_size = -16384; PRAGMA wal_autocheckpoint = 4000;"
          "PRAGMA journal_size_limit = 67108864")) {
    return tl::make_unexpected(connection.refusal());
  }
  return {};
}

std::set<std::string> DoDB::missingIndexes() {
  const auto wanted = indexTexts();
  std::set<std::string> missing;
  for (const auto& [name, text] : wanted) missing.insert(name);
  if (Connection* db = getDatabase()) {
    Run run = db->query("select name, sql from sqlite_schema where type = 'index' and sql is not NULL");
    while (run.next()) {
      const auto index = wanted.find(std::string(run.text(0)));
      if (index != wanted.end() && index->second == plainIndex(run.text(1))) missing.erase(index->first);
    }
  }
  return missing;
}

bool DoDB::addIndexes() {
  Connection* db = getDatabase();
  if (db == nullptr) return false;
  Transaction transaction(*db);
  if (!transaction.began()) return false;
  // One of these names that is there has other columns.
  for (const auto& name : missingIndexes()) db->executeScript("DROP INDEX IF EXISTS " + name);
  // One by one: a store with columns still to be added gets those that fit, and the others with its upgrade.
  std::string_view rest = kIndexesSql;
  for (auto end = rest.find(';'); end != std::string_view::npos; end = rest.find(';')) {
    Transaction one(*db);
    if (!one.began() || !db->executeScript(std::string(rest.substr(0, end))) || !one.commit()) {
      platform_.log.line(fmt::format("== DoDB index not added: {}", db->lastErrorMessage()));
    }
    rest.remove_prefix(end + 1);
  }
  return transaction.commit();
}

void DoDB::addIndexesIfMissing() {
  if (missingIndexes().empty()) return;
  dispatchInDatabase("DoDB", [this](Connection& connection) {
    platform_.log.line(fmt::format("== DoDB adding indexes to {}", databasePath_.string()));
    if (!addIndexes())
      faultLog_.line(fmt::format("== DoDB indexes not added: {}", connection.lastErrorMessage()));
  });
}

void DoDB::noteFileFault(int code, const std::string& message) {
  const std::scoped_lock lock(fileFaultMutex_);
  if (!fileFault_.empty()) return;
  fileFault_ = message;
  faultLog_.line(fmt::format("=== 数据库已损坏[{}] {}", code & 0xFF, message));
}

std::string DoDB::fileFault() const {
  const std::scoped_lock lock(fileFaultMutex_);
  return fileFault_;
}

void DoDB::closeDatabase() {
  // Blocks handed in earlier still ask this object for their connection.
  drain();
  queue_.reset();
  fmdb_.reset();
}

Connection* DoDB::getDatabase() {
  if (platform_.mainQueue.isMainThread()) {
    if (!fmdb_) faultLog_.fault("main thread with no fmdb");
    return fmdb_.get();
  }
  // Only the queue's own thread ever sees the block's connection.
  if (!queue_ || !queue_->isQueueThread() || qudb_ == nullptr) {
    faultLog_.fault("background thread with no qudb");
    return nullptr;
  }
  return qudb_;
}

void DoDB::setQudb(Connection* connection) {
  qudb_ = connection;
  if (connection == nullptr) callQudbClassName_.clear();
}

bool DoDB::setCallQudbClassName(std::string_view name) {
  if (!callQudbClassName_.empty() && callQudbClassName_ != name) {
    faultLog_.fault(
        fmt::format("DB Error qudb 嵌套发生 当前class {} 申请calss {}", callQudbClassName_, name));
    return false;
  }
  callQudbClassName_ = name;
  return true;
}

bool DoDB::runBlock(Connection* connection, std::string_view className,
                    const std::function<void(Connection&)>& work) {
  if (connection == nullptr) {
    faultLog_.fault("background thread with no qudb");
    return false;
  }
  const bool nested = qudb_ != nullptr;
  if (!setCallQudbClassName(className)) return false;
  setQudb(connection);
  work(*connection);
  if (!nested) setQudb(nullptr);
  return true;
}

bool DoDB::inDatabase(std::string_view className, const std::function<void(Connection&)>& work) {
  if (!queue_) {
    faultLog_.fault("background thread with no qudb");
    return false;
  }
  bool ran = false;
  queue_->inDatabase([&](Connection* connection) { ran = runBlock(connection, className, work); });
  return ran;
}

void DoDB::dispatchInDatabase(std::string className, std::function<void(Connection&)> work) {
  if (!queue_) return faultLog_.fault("background thread with no qudb");
  queue_->dispatch([this, className = std::move(className), work = std::move(work)](Connection* connection) {
    runBlock(connection, className, work);
  });
}

void DoDB::drain() {
  if (queue_) queue_->drain();
}

bool DoDB::databaseIsAvailable(const std::filesystem::path& path) {
  std::string why;
  if (availabilityOf(path, why) == Availability::available) return true;
  faultLog_.line(fmt::format("===[DB Error] {} 已损坏:{}", path.filename().string(), why));
  return false;
}

bool DoDB::checkpoint() {
  if (!fmdb_ || isReadOnly()) return false;
  // Nobody is kept waiting for it: while another program reads, closing the last connection does the same.
  fmdb_->setPatience(0);
  const bool complete = fmdb_->checkpoint();
  fmdb_->setPatience(kPatience);
  return complete;
}

std::optional<Date> DoDB::getTheFirstUsingDateOfApp() {
  Connection* db = getDatabase();
  if (db == nullptr) return std::nullopt;
  Run run = db->query("SELECT editDate FROM transactions where editDate > 1000000 order by editDate limit 1");
  if (!run.next()) return std::nullopt;
  return run.date(0);
}

bool DoDB::isEmpty() {
  Connection* db = getDatabase();
  if (db == nullptr) return true;
  Run run = db->query(
      "select count(eid) as eid_count from transactions where type = 12 or type = 11 or type = 0 or type = "
      "1");
  return !run.next() || run.integer(0) == 0;
}

bool DoDB::deleteAllDataForever() {
  Connection* db = getDatabase();
  if (db == nullptr) return false;
  Transaction transaction(*db);
  return transaction.began() && db->execute("delete from transactions") &&
         db->execute("delete from photos") && transaction.commit();
}

bool DoDB::makeAllDataDeleted(MVAppRoot& root) {
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return false;
  {
    Transaction transaction(*db);
    const Date stamp = root.editStamp();
    if (!transaction.began() ||
        !root.executeUpdate("update transactions set deleted = 4, editDate = ?", stamp) ||
        !root.executeUpdate("update photos set deleted = 4, datetime = ?", stamp) || !transaction.commit()) {
      return false;
    }
  }
  return db->execute("vacuum");
}

std::vector<std::string> DoDB::getCurrencyList(MVAppRoot& root) {
  std::vector<std::string> list;
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return list;
  const auto read = [&] {
    Run run =
        db->query("SELECT title FROM category where deleted = 0 and parent = '_currency' group by title");
    while (run.next()) list.emplace_back(run.text(0));
  };
  read();
  if (!list.empty()) return list;
  Transaction transaction(*db);
  if (!transaction.began()) return list;
  for (const char* code : {"USD", "EUR", "GBP", "JPY", "CNY", "CAD", "AUD", "HKD", "NZD", "SGD"}) {
    // Currency rows are told by their parent; the type 0 keeps them out of every list of categories.
    if (!root.executeUpdate(
            "INSERT INTO category (title, parent, editDate, type, edit_ipid) VALUES(?,'_currency',?,?,?)",
            code, root.editStamp(), 0, root.itsUDID())) {
      return list;
    }
  }
  if (transaction.commit()) read();
  return list;
}

void DoDB::saveDBSysInfoToLocal() {
  Connection* db = getDatabase();
  if (db == nullptr) return;
  for (const char* key : {"lastBackupDate", "lastSyncDate", "lastSyncState"}) {
    Run run = db->query("select value from monivaSys where key = ? order by editDate DESC limit 1", {key});
    if (run.next() && !run.text(0).empty() && run.text(0) != deviceSetting(*platform_.userDefaults, key)) {
      platform_.userDefaults->setString(run.text(0), key);
    }
  }
}

bool DoDB::enabledDebug(std::string_view word) {
  Connection* db = getDatabase();
  if (db == nullptr) return false;
  Run run = db->query("select count(eid) as eid_count from transactions where note = ?", {debugNote(word)});
  return run.next() && run.integer(0) > 0;
}

bool DoDB::deleteDebugItem(std::string_view word) {
  Connection* db = getDatabase();
  return db != nullptr && db->execute("delete from transactions where note = ?", {debugNote(word)});
}

}  // namespace moniva
