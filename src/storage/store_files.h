#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "base/result.h"
#include "platform/platform.h"

/// The data file as a file: recovery, safe replacement, setting aside, availability. Nothing here keeps a
/// connection open.
namespace moniva {

class Connection;

/// What opening a file as a store shows.
enum class Availability {
  available,
  /// It is no database, is damaged, or lacks the table of transactions.
  damaged,
  /// It may be well, but cannot be told now: in use, unreadable, no memory.
  unknown,
};

/// Opens the file and runs a small query on its transactions. `why` gets the engine's words on failure.
Availability availabilityOf(const std::filesystem::path& path, std::string& why);

/// Gives the tables their names back that an older program, cut short in the middle of a rebuild, left under
/// "NAME_old". Writes only to what is a store but for that.
Result<> takeUpRenamings(Connection& connection);

/// Whether the database is a store of this program that this version knows; writes nothing. Refused with the
/// reason otherwise.
Result<> checkKind(Connection& connection);

/// Whether the database is a store of a version to come, which can be read and must not be written: the
/// refusal says so. Nothing for every other file.
std::optional<Refusal> newerKind(Connection& connection);

/// The same for a file; refused too when it is damaged or cannot be told of now.
Result<> checkKind(const std::filesystem::path& path);

/// Lets the engine roll back what an interrupted program left in a hot rollback journal, and brings the
/// write-ahead log into the file. Refused when another program has it open or the file cannot be read; the
/// journal is then left where it is. A path without a file is fine.
Result<> settleDataFile(const std::filesystem::path& path);

/// Makes a whole copy of the connection's store at the path, on the disk when it is there under its name:
/// a crash leaves all of it or nothing. Refused, with nothing written, where there is no room for it. The
/// file itself is not opened for that: closing it again would take the engine's locks on it away.
Result<> copyStore(Connection& connection, const std::filesystem::path& to);

/// Sets the data file aside under a dated name together with its write-ahead log, which it may still need.
/// Answers the new path.
Result<std::filesystem::path> setDataFileAside(const std::filesystem::path& path, Date now);

/// Puts `replacement` (a whole data file beside it, moved) into the place of the data file. The file that was
/// there is kept under a dated name, its "-wal" and "-shm" files go before the new file is in place, and the
/// step itself is a rename: a crash leaves the old or the new file, whole. Answers where the old one is kept;
/// empty when there was none.
Result<std::filesystem::path> replaceDataFile(const std::filesystem::path& path,
                                              const std::filesystem::path& replacement, Date now);

/// Sets aside "-wal", "-shm" and "-journal" files that lie at a path without a data file.
Result<> clearLeftovers(const std::filesystem::path& path, Date now);

}  // namespace moniva
