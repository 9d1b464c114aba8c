#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <initializer_list>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>

#include "base/result.h"
#include "calendar/date.h"
#include "storage/value.h"

struct sqlite3;
struct sqlite3_stmt;

namespace moniva {

class Connection;

/// One run of a statement: bound when made, stepped row by row, reset and unbound when it goes out of scope.
/// Columns are read by position, in the order of the statement's text. Lives no longer than its connection.
class Run {
 public:
  Run(Run&& other) noexcept;
  Run(const Run&) = delete;
  Run& operator=(Run&&) = delete;
  ~Run();

  /// Steps to the next row; false at the end and on failure (`ok` tells them apart).
  bool next();
  bool ok() const { return ok_; }

  std::int64_t integer(int column) const;
  double real(int column) const;
  Date date(int column) const { return Date{real(column)}; }
  /// Empty for NULL. Valid until the next step.
  std::string_view text(int column) const;
  bool isNull(int column) const;

 private:
  friend class Connection;
  /// `held` is the mark of a kept statement that a run has it; null for a statement of the run's own.
  Run(Connection* connection, sqlite3_stmt* statement, bool* held);

  Connection* connection_;
  sqlite3_stmt* statement_;
  bool* held_;
  bool ok_ = true;
  bool ended_ = false;
};

/// One connection to one SQLite file, used by one thread. Compiled statements are kept by their text, so that
/// a text is compiled once however often it runs. Failures are kept as `lastErrorCode` and `lastErrorMessage`
/// (of the last call that failed) and change nothing else.
class Connection {
 public:
  enum class Access { readWrite, readOnly };

  /// Opens a file that exists. No pragma is run but the busy timeout (milliseconds); refused with the file's
  /// name.
  static Result<std::unique_ptr<Connection>> open(const std::filesystem::path& path, Access access,
                                                  int busyTimeout = 5000);
  ~Connection();
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;

  /// Binds the arguments to the statement's slots, in order. A text that does not compile and a wrong number
  /// of arguments give a run that is not ok; so does every text while a Transaction lives whose writes the
  /// engine has undone by itself (a full disk), lest the rest of them be kept alone.
  Run query(std::string_view sql, std::initializer_list<Value> arguments = {});
  Run query(std::string_view sql, std::span<const Value> arguments);
  /// Runs a statement to its end; true when it succeeded.
  bool execute(std::string_view sql, std::initializer_list<Value> arguments = {});
  bool execute(std::string_view sql, std::span<const Value> arguments);
  /// Runs several statements without slots, uncached.
  bool executeScript(const std::string& sql);

  /// Copies the database page by page, what is in its write-ahead log too, into another file (made when it is
  /// absent), on the disk by the end. Other programs may read and write meanwhile; the copy is of one moment.
  Result<> copyInto(const std::filesystem::path& to);
  /// Brings the write-ahead log into the file. False, with the failure "in use", when another connection
  /// still reads or writes what is in it.
  bool checkpoint();
  /// Milliseconds to wait for other programs from now on; answers what it was.
  int setPatience(int milliseconds) { return std::exchange(patience_, milliseconds); }
  /// Called with the code and the message of a failure that the file itself is to blame for: damage, or a
  /// read or write that the system refused. What a statement reads then is not the whole truth.
  void onFileFault(std::function<void(int, const std::string&)> told) { fileFault_ = std::move(told); }

  /// Whether nothing can be written by it. Transactions do not begin then, rather than fail half-way.
  bool isReadOnly() const { return readOnly_; }
  /// Why it is so, as refused writes are to say it.
  void setReadOnlyReason(Refusal why) { readOnlyReason_ = std::move(why); }

  int lastErrorCode() const { return errorCode_; }
  const std::string& lastErrorMessage() const { return errorMessage_; }
  void clearError();
  /// The last failure as a sentence for the user, naming the file.
  Refusal refusal() const;

  const std::filesystem::path& path() const { return path_; }
  /// Rows changed by the last write.
  std::int64_t changes() const;
  bool inTransaction() const;
  /// Rows changed by all writes since opening.
  std::int64_t totalChanges() const;
  /// Changes when another connection has written to the file.
  std::int64_t dataVersion();
  /// Tells this connection from every other the program has opened, closed ones too.
  std::uint64_t serial() const { return serial_; }

  /// How many statements were compiled since opening, and how many transactions that wrote were committed:
  /// exact counters for tests.
  std::int64_t statementsCompiled() const { return compiled_; }
  std::int64_t commits() const { return commits_; }

 private:
  friend class Run;
  friend class Transaction;
  Connection(sqlite3* handle, std::filesystem::path path);
  sqlite3_stmt* compile(std::string_view sql);
  /// That it cannot be written, naming the file that is to blame: the data file or one that goes with it.
  Refusal writeRefusal() const;
  void noteError();
  void noteError(int code, std::string message);

  struct TextHash {
    using is_transparent = void;
    std::size_t operator()(std::string_view text) const { return std::hash<std::string_view>{}(text); }
  };

  sqlite3* handle_;
  std::filesystem::path path_;
  std::uint64_t serial_;
  int patience_ = 0;
  bool readOnly_ = false;
  std::optional<Refusal> readOnlyReason_;
  struct Kept {
    sqlite3_stmt* statement = nullptr;
    bool held = false;  ///< by a run, until that goes: also one that has ended is still to be reset
  };
  std::unordered_map<std::string, Kept, TextHash, std::equal_to<>> statements_;
  int errorCode_ = 0;
  std::string errorMessage_;
  std::function<void(int, const std::string&)> fileFault_;
  std::int64_t compiled_ = 0;
  std::int64_t commits_ = 0;
  int depth_ = 0;
};

}  // namespace moniva
