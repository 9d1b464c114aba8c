#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "base/result.h"
#include "platform/platform.h"
#include "storage/connection.h"
#include "storage/database_queue.h"
#include "storage/fault_log.h"

namespace moniva {

class MVAppRoot;

/// The store: it opens the data file and hands every caller the connection that suits its thread. The main
/// thread has one long-lived connection; everything else runs in blocks on one serial queue with a connection
/// of its own. Nobody keeps a connection: it is asked for at each statement.
class DoDB {
 public:
  explicit DoDB(Platform& platform);
  /// The same for a data file elsewhere; the path is kept only if a file is there.
  DoDB(Platform& platform, std::filesystem::path path);
  ~DoDB();
  DoDB(const DoDB&) = delete;
  DoDB& operator=(const DoDB&) = delete;

  /// The running program's store. The composition root calls it with the platform; that call makes the store,
  /// once, and every later call gives the same one. Null before.
  static DoDB* instance(Platform* platform = nullptr);

  /// Takes the path and opens the file there. False, with nothing changed, when there is no file at the path
  /// or it cannot be opened.
  bool setDatabasePath(const std::filesystem::path& path);
  /// Opens the data file, closing what was open: the path set before, else Documents / `kDatabaseName`. One
  /// of a newer kind is opened for reading. Refused, with nothing left open, for a file that is no store, is
  /// damaged or cannot be written.
  Result<> initDatabase();
  bool isOpen() const { return fmdb_ != nullptr; }
  /// Whether the open store is one of a newer version of the program: it is read, and nothing is ever written
  /// to it. `readOnlyReason` says so to people.
  bool isReadOnly() const { return fmdb_ != nullptr && fmdb_->isReadOnly(); }
  const std::optional<Refusal>& readOnlyReason() const { return readOnlyReason_; }
  /// Closes both connections, after the blocks handed to the queue so far.
  void closeDatabase();

  /// The connection for the calling thread: `fmdb` on the main thread, `qudb` on any other. Null, with a
  /// fault logged, where the needed one is missing.
  Connection* getDatabase();
  /// Installs the queue's connection for the duration of a block, and takes it away (null).
  void setQudb(Connection* connection);
  /// Names the class that works in the block. False, with a fault logged, when another class holds the
  /// connection.
  bool setCallQudbClassName(std::string_view name);

  /// Runs the work as one block of the queue under the class's name and waits for it. False when the
  /// connection is not to be had or another class holds it; the work has then not run. Not to be called from
  /// the main thread while it has a transaction open: the block would wait for that to end.
  bool inDatabase(std::string_view className, const std::function<void(Connection&)>& work);
  /// The same without waiting; what goes wrong is in the fault log.
  void dispatchInDatabase(std::string className, std::function<void(Connection&)> work);
  /// Waits until the queue has nothing left to do.
  void drain();

  /// Opens the file, asks it for a transaction and answers whether it could be read; the reason is logged.
  bool databaseIsAvailable(const std::filesystem::path& path);
  /// What the file was to blame for since it was opened (damage, a read the system refused), in the engine's
  /// words; empty when nothing. Figures read in that time are not to be believed.
  std::string fileFault() const;
  /// Brings the write-ahead log into the data file, so that the one file is a complete copy. False when
  /// another program still uses the log; it is not waited for.
  bool checkpoint();

  /// The indexes the store should have and has not, or has on other columns.
  std::set<std::string> missingIndexes();
  /// Makes the indexes that are missing, with the planner's figures for all, on the calling thread's
  /// connection. Those that the columns of the store do not allow are left out.
  bool addIndexes();

  /// The date of the first use of the program, by the oldest edit stamp; nothing in an unused store.
  std::optional<Date> getTheFirstUsingDateOfApp();
  /// Whether there is no income and no expense.
  bool isEmpty();
  /// Deletes every transaction and photo row for good.
  bool deleteAllDataForever();
  /// Marks every transaction and photo row as removed in bulk, then compacts the file.
  static bool makeAllDataDeleted(MVAppRoot& root);
  /// The currencies in use, in order of their codes; an empty list is filled with the common ones first.
  static std::vector<std::string> getCurrencyList(MVAppRoot& root);
  /// Copies the settings that are kept both in the store and on the device to the device.
  void saveDBSysInfoToLocal();
  /// The diagnostic switch kept in the data: whether there is a transaction whose note is the debug word.
  /// "syncdatacompletely" is a word of its own; any other is looked for behind "appdebug".
  bool enabledDebug(std::string_view word);
  /// Removes such transactions.
  bool deleteDebugItem(std::string_view word);

  const std::filesystem::path& databasePath() const { return databasePath_; }
  std::filesystem::path defaultPath() const;
  FaultLog& faultLog() { return faultLog_; }

 private:
  Result<> prepare(Connection& connection);
  Result<> prepareToWrite(Connection& connection);
  void addIndexesIfMissing();
  bool runBlock(Connection* connection, std::string_view className,
                const std::function<void(Connection&)>& work);

  void noteFileFault(int code, const std::string& message);

  Platform& platform_;
  FaultLog faultLog_;
  mutable std::mutex fileFaultMutex_;
  std::string fileFault_;
  std::filesystem::path databasePath_;
  std::unique_ptr<DatabaseQueue> queue_;
  std::unique_ptr<Connection> fmdb_;
  Connection* qudb_ = nullptr;
  std::optional<Refusal> readOnlyReason_;
  std::string callQudbClassName_;
};

}  // namespace moniva
