#include "storage/transaction.h"

#include <sqlite3.h>

namespace moniva {

Transaction::Transaction(Connection& connection)
    : connection_(connection), depth_(connection.depth_), outermost_(!connection.inTransaction()) {
  if (connection_.isReadOnly()) {
    // The engine would begin to read, and refuse the first write.
    connection_.noteError(SQLITE_READONLY, "the connection only reads");
    return;
  }
  open_ = connection_.execute(outermost_ ? "BEGIN IMMEDIATE" : fmt::format("SAVEPOINT scope{}", depth_));
  if (open_) ++connection_.depth_;
}

Transaction::~Transaction() {
  if (!open_) return;
  connection_.depth_ = depth_;
  // A full disk or a read fault makes the engine undo the whole transaction by itself; nothing is left to do
  // then.
  if (!connection_.inTransaction()) return;
  // The reason of the failure must outlive the undoing.
  const int code = connection_.lastErrorCode();
  const std::string message = connection_.lastErrorMessage();
  if (outermost_) {
    connection_.execute("ROLLBACK");
  } else {
    connection_.execute(fmt::format("ROLLBACK TO scope{}", depth_));
    connection_.execute(fmt::format("RELEASE scope{}", depth_));
  }
  connection_.noteError(code, message);
}

bool Transaction::commit() {
  if (!open_ || !connection_.inTransaction()) return false;
  const bool kept = connection_.execute(outermost_ ? "COMMIT" : fmt::format("RELEASE scope{}", depth_));
  if (!kept) return false;
  open_ = false;
  connection_.depth_ = depth_;
  return true;
}

ReadTransaction::ReadTransaction(Connection& connection) {
  if (!connection.inTransaction() && connection.execute("BEGIN")) connection_ = &connection;
}

ReadTransaction::~ReadTransaction() {
  if (connection_ != nullptr) connection_->execute("COMMIT");
}

}  // namespace moniva
