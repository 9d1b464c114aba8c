#pragma once

#include <array>
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
#include "base/uuid.h"
#include "platform/file_lock.h"
#include "platform/platform.h"
#include "storage/do_db.h"
#include "storage/edit_stamp.h"

namespace moniva {

class MonivaAccount;

/// The root every object lives in: the store, the platform, the current book, the device identifier, the
/// logged write and the settings that travel with the data. Two roots are two devices.
class MVAppRoot {
 public:
  MVAppRoot(Platform& platform, DoDB& db);
  ~MVAppRoot();
  MVAppRoot(const MVAppRoot&) = delete;
  MVAppRoot& operator=(const MVAppRoot&) = delete;

  Platform& platform() { return platform_; }
  DoDB& db() { return db_; }
  const Calendar& calendar() const { return *platform_.calendar; }
  Date now() const { return platform_.now(); }

  /// The identifier of this device: made once, kept in the user defaults, never empty.
  const std::string& itsUDID();
  /// A stamp for `editDate`: now, but above every stamp the store has.
  Date editStamp();
  /// To be told of a stamp written as it came, with a row merged from elsewhere: those to come are above it.
  void sawEditStamp(Date stamp) { stamps_.saw(stamp); }
  /// A new identifier, ordered by time.
  std::string newIdentifier();

  /// Runs one writing statement on the calling thread's connection, an argument for each slot. A failure is
  /// written to the fault log with its code and answered by false; nothing is retried.
  template <class... Arguments>
  bool executeUpdate(std::string_view sql, const Arguments&... arguments) {
    if constexpr (sizeof...(arguments) == 0) {
      return executeUpdate(sql, std::span<const Value>());
    } else {
      const std::array<Value, sizeof...(arguments)> values{Value(arguments)...};
      return executeUpdate(sql, std::span<const Value>(values));
    }
  }
  bool executeUpdate(std::string_view sql, std::span<const Value> arguments);

  /// Takes the present as the time of the latest local change.
  void markRecentEditDate();
  /// Writes that time to the store, when there is one.
  void updateRecentEditDateIfNeed();

  /// A setting kept in the store; its built-in default when the store has none.
  std::string objectForKey(std::string_view key);
  /// Writes a setting to the store, on the background connection.
  bool setObject(std::string_view value, std::string_view key);
  /// The built-in default of a setting; empty for one without.
  static std::string defaultForKey(std::string_view key);

  /// First-run creation and recovery of the data file; run before the store is opened. What the user should
  /// know goes to `notices`. Refused when the data file can be neither used nor made; what is there stays as
  /// it was.
  Result<> copyDatabaseIfNeed();
  /// Restores the data file from a cloud container; false when that has none.
  bool restoreDatafileFromiCloud(std::string_view containerID);
  /// Tells the program that the data file is another one now.
  void databaseFileChangedAfterRestoreDatafile();
  /// Copies the data file of the second edition from the folder the editions share; false when there is none.
  bool importFromGroupPath(const std::filesystem::path& folder);
  /// Puts an empty store in the place of the data file, which is set aside, and opens it.
  Result<> resetDatabase();
  /// Puts a copy of that store, one complete file, in the place of the data file and opens it. Answers where
  /// the old data file is kept. Refused, with the old one open again, while another program runs.
  Result<std::filesystem::path> replaceDatabase(const std::filesystem::path& store);
  /// Runs the change while no other program has the store. Where one has it is not waited for: refused, and
  /// nothing was run.
  Result<> alone(const std::function<Result<>()>& change) { return exclusively(change, 0); }
  /// Sets the data file aside (a damaged one); the next foreground makes or restores a store. The connections
  /// are closed. Answers where it is kept.
  Result<std::filesystem::path> setDatabaseAside();

  /// What the user should be told when there is a chance, in order; taken away by the reader.
  std::vector<std::string> takeNotices();
  /// Each notice is told once in a run, in the person's language: addNotice("The log is '{}'.", path).
  template <class... Arguments>
  void addNotice(fmt::format_string<Arguments...> text, Arguments&&... arguments) {
    addNotice(phrase(text, std::forward<Arguments>(arguments)...));
  }
  void addNotice(const Refusal& refusal) { addNotice(*refusal.phrase); }
  void addNotice(const Phrase& notice);

  std::shared_ptr<MonivaAccount> monivaAccount;
  std::optional<Date> recentEditDate;
  /// The path or marker of data handed in from outside; blank when there is none.
  std::string filepathOfMailImport;
  /// The host's background task in progress; 0 when none.
  int taskID = 0;

 private:
  /// The data file in use, or the one that would be.
  std::filesystem::path dataFile() const;
  /// Keeps other programs from replacing the data file, from the first call on.
  Result<> hold();
  /// Seconds that a change of the data file waits for other programs on the same store.
  static constexpr double kLockPatience = 5.0;
  /// Runs the change while no other program holds the data file.
  Result<> exclusively(const std::function<Result<>()>& change, double patience = kLockPatience);
  Result<> takeSafetyCopy();
  Result<> clearJournal();
  Result<> makeFirstStore();

  Platform& platform_;
  DoDB& db_;
  EditStamp stamps_;
  UuidGenerator identifiers_;
  std::optional<FileLock> lock_;
  std::once_flag udidMade_;
  std::string udid_;
  std::mutex noticesMutex_;
  std::vector<std::string> notices_;
  std::set<std::string> told_;
};

}  // namespace moniva
