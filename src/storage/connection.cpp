#include "storage/connection.h"

#include <sqlite3.h>

#include <atomic>
#include <utility>

namespace moniva {

Run::Run(Connection* connection, sqlite3_stmt* statement, bool* held)
    : connection_(connection), statement_(statement), held_(held), ok_(statement != nullptr) {
  if (held_ != nullptr) *held_ = true;
}

Run::Run(Run&& other) noexcept
    : connection_(other.connection_),
      statement_(std::exchange(other.statement_, nullptr)),
      held_(other.held_),
      ok_(other.ok_),
      ended_(other.ended_) {}

Run::~Run() {
  if (statement_ == nullptr) return;
  if (held_ == nullptr) {
    sqlite3_finalize(statement_);
  } else {
    sqlite3_reset(statement_);
    sqlite3_clear_bindings(statement_);
    *held_ = false;
  }
}

bool Run::next() {
  // Stepped once more, the engine would begin again.
  if (!ok_ || ended_) return false;
  const int rc = sqlite3_step(statement_);
  if (rc == SQLITE_ROW) return true;
  ended_ = true;
  if (rc != SQLITE_DONE) {
    ok_ = false;
    connection_->noteError();
  }
  return false;
}

std::int64_t Run::integer(int column) const {
  return sqlite3_column_int64(statement_, column);
}

double Run::real(int column) const {
  return sqlite3_column_double(statement_, column);
}

std::string_view Run::text(int column) const {
  const void* bytes = sqlite3_column_text(statement_, column);
  if (bytes == nullptr) return {};
  return {static_cast<const char*>(bytes),
          static_cast<std::size_t>(sqlite3_column_bytes(statement_, column))};
}

bool Run::isNull(int column) const {
  return sqlite3_column_type(statement_, column) == SQLITE_NULL;
}

Connection::Connection(sqlite3* handle, std::filesystem::path path)
    : handle_(handle), path_(std::move(path)) {
  static std::atomic<std::uint64_t> opened = 0;
  serial_ = ++opened;
  sqlite3_extended_result_codes(handle_, 1);
  sqlite3_commit_hook(
      handle_,
      [](void* self) {
        ++static_cast<Connection*>(self)->commits_;
        return 0;
      },
      this);
}

Connection::~Connection() {
  for (auto& [text, kept] : statements_) sqlite3_finalize(kept.statement);
  sqlite3_close_v2(handle_);
}

Result<std::unique_ptr<Connection>> Connection::open(const std::filesystem::path& path, Access access,
                                                     int busyTimeout) {
  sqlite3* handle = nullptr;
  const int flags =
      SQLITE_OPEN_NOMUTEX | (access == Access::readWrite ? SQLITE_OPEN_READWRITE : SQLITE_OPEN_READONLY);
  const int rc = sqlite3_open_v2(path.c_str(), &handle, flags, nullptr);
  if (rc != SQLITE_OK) {
    const std::string why = handle != nullptr ? sqlite3_errmsg(handle) : sqlite3_errstr(rc);
    sqlite3_close_v2(handle);
    return refuse("the data file '{}' cannot be opened: {}", path.string(), why);
  }
  std::unique_ptr<Connection> connection(new Connection(handle, path));
  // The engine's own handler sleeps ever longer, and a thread that writes on and on would starve the other.
  connection->patience_ = busyTimeout;
  connection->readOnly_ = access == Access::readOnly;
  sqlite3_busy_handler(
      handle,
      [](void* self, int tries) {
        if (tries >= static_cast<Connection*>(self)->patience_) return 0;
        sqlite3_sleep(1);
        return 1;
      },
      connection.get());
  if (access == Access::readWrite && sqlite3_db_readonly(handle, "main") == 1) {
    return refuse("the data file '{}' cannot be written", path.string());
  }
  return connection;
}

sqlite3_stmt* Connection::compile(std::string_view sql) {
  sqlite3_stmt* statement = nullptr;
  ++compiled_;
  const int rc = sqlite3_prepare_v3(handle_, sql.data(), static_cast<int>(sql.size()),
                                    SQLITE_PREPARE_PERSISTENT, &statement, nullptr);
  if (rc != SQLITE_OK) noteError();
  return statement;
}

Run Connection::query(std::string_view sql, std::initializer_list<Value> arguments) {
  return query(sql, std::span<const Value>(arguments.begin(), arguments.size()));
}

Run Connection::query(std::string_view sql, std::span<const Value> arguments) {
  if (depth_ > 0 && !inTransaction()) return {this, nullptr, nullptr};
  sqlite3_stmt* statement = nullptr;
  bool* mark = nullptr;
  if (const auto found = statements_.find(sql); found != statements_.end()) {
    // The same text may already be running further up the stack; that run keeps its place.
    statement = found->second.held ? compile(sql) : found->second.statement;
    if (!found->second.held) mark = &found->second.held;
  } else {
    statement = compile(sql);
    if (statement != nullptr) mark = &statements_.emplace(sql, Kept{statement}).first->second.held;
  }
  Run run(this, statement, mark);
  if (statement == nullptr) return run;
  if (sqlite3_bind_parameter_count(statement) != static_cast<int>(arguments.size())) {
    noteError(SQLITE_RANGE, fmt::format("{} arguments given for {} slots in: {}", arguments.size(),
                                        sqlite3_bind_parameter_count(statement), sql));
    run.ok_ = false;
    return run;
  }
  int slot = 0;
  for (const Value& argument : arguments) {
    ++slot;
    const auto& held = argument.held();
    int rc = SQLITE_OK;
    if (const auto* integer = std::get_if<std::int64_t>(&held)) {
      rc = sqlite3_bind_int64(statement, slot, *integer);
    } else if (const auto* real = std::get_if<double>(&held)) {
      rc = sqlite3_bind_double(statement, slot, *real);
    } else if (const auto* text = std::get_if<std::string_view>(&held)) {
      rc = sqlite3_bind_text(statement, slot, text->data() != nullptr ? text->data() : "",
                             static_cast<int>(text->size()), SQLITE_TRANSIENT);
    } else {
      rc = sqlite3_bind_null(statement, slot);
    }
    if (rc != SQLITE_OK) {
      noteError();
      run.ok_ = false;
    }
  }
  return run;
}

bool Connection::execute(std::string_view sql, std::initializer_list<Value> arguments) {
  return execute(sql, std::span<const Value>(arguments.begin(), arguments.size()));
}

bool Connection::execute(std::string_view sql, std::span<const Value> arguments) {
  Run run = query(sql, arguments);
  while (run.next()) {
  }
  return run.ok();
}

bool Connection::executeScript(const std::string& sql) {
  if (sqlite3_exec(handle_, sql.c_str(), nullptr, nullptr, nullptr) == SQLITE_OK) return true;
  noteError();
  return false;
}

void Connection::noteError() {
  noteError(sqlite3_extended_errcode(handle_), sqlite3_errmsg(handle_));
}

void Connection::noteError(int code, std::string message) {
  errorCode_ = code;
  errorMessage_ = std::move(message);
  const int kind = code & 0xFF;
  if (fileFault_ && (kind == SQLITE_CORRUPT || kind == SQLITE_NOTADB || kind == SQLITE_IOERR)) {
    fileFault_(code, errorMessage_);
  }
}

Result<> Connection::copyInto(const std::filesystem::path& to) {
  sqlite3* copy = nullptr;
  int rc = sqlite3_open_v2(to.c_str(), &copy,
                           SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE, nullptr);
  if (rc == SQLITE_OK) {
    sqlite3_backup* backup = sqlite3_backup_init(copy, "main", handle_, "main");
    const int stepped = backup != nullptr ? sqlite3_backup_step(backup, -1) : SQLITE_DONE;
    rc = backup != nullptr ? sqlite3_backup_finish(backup) : sqlite3_errcode(copy);
    // A store in use ends no copy: it asks to be tried again.
    if (rc == SQLITE_OK && stepped != SQLITE_DONE) rc = stepped;
  }
  sqlite3_close_v2(copy);
  if (rc == SQLITE_OK) return {};
  return refuse("the data file '{}' cannot be copied to '{}': {}", path_.string(), to.string(),
                sqlite3_errstr(rc));
}

bool Connection::checkpoint() {
  int frames = 0;
  int done = 0;
  // Asked for by its function: the pragma tells of a busy log in a row, as if it had succeeded.
  if (sqlite3_wal_checkpoint_v2(handle_, "main", SQLITE_CHECKPOINT_TRUNCATE, &frames, &done) == SQLITE_OK)
    return true;
  noteError();
  return false;
}

void Connection::clearError() {
  errorCode_ = 0;
  errorMessage_.clear();
}

Refusal Connection::writeRefusal() const {
  sqlite3_vfs* files = sqlite3_vfs_find(nullptr);
  const auto may = [&](const std::string& file, int what) {
    int allowed = 0;
    return files->xAccess(files, file.c_str(), what, &allowed) == SQLITE_OK && allowed != 0;
  };
  const std::string file = path_.string();
  if (may(file, SQLITE_ACCESS_READWRITE)) {
    // Left behind while the file could only be read, they keep those rights.
    for (const char* ending : {"-wal", "-shm"}) {
      const std::string beside = file + ending;
      if (may(beside, SQLITE_ACCESS_EXISTS) && !may(beside, SQLITE_ACCESS_READWRITE)) {
        return Refusal(
            phrase("'{}' beside the data file cannot be written; give it the same rights as that", beside));
      }
    }
  }
  return Refusal(phrase("the data file '{}' cannot be written", file));
}

Refusal Connection::refusal() const {
  const std::string file = path_.string();
  switch (errorCode_ & 0xFF) {
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
      return Refusal(
          phrase("the data file '{}' is in use by another program; try again when that has finished", file));
    case SQLITE_FULL:
      return Refusal(phrase("there is no space left to write to the data file '{}'", file));
    case SQLITE_READONLY:
    case SQLITE_PERM:
      if (readOnlyReason_) return *readOnlyReason_;
      return writeRefusal();
    case SQLITE_NOTADB:
      return Refusal(phrase("'{}' is not a data file of this program", file));
    case SQLITE_CORRUPT:
      return Refusal(phrase("the data file '{}' is damaged: {}", file, errorMessage_));
    case SQLITE_IOERR:
      return Refusal(phrase("the data file '{}' could not be read or written: {}", file, errorMessage_));
    default:
      return Refusal(phrase("the data file '{}' refused a statement: {}", file, errorMessage_));
  }
}

std::int64_t Connection::totalChanges() const {
  return sqlite3_total_changes64(handle_);
}

std::int64_t Connection::changes() const {
  return sqlite3_changes64(handle_);
}

bool Connection::inTransaction() const {
  return sqlite3_get_autocommit(handle_) == 0;
}

std::int64_t Connection::dataVersion() {
  Run run = query("PRAGMA data_version");
  return run.next() ? run.integer(0) : 0;
}

}  // namespace moniva
