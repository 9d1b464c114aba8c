#pragma once

#include <filesystem>
#include <functional>
#include <memory>

#include "platform/work_queue.h"
#include "storage/connection.h"

namespace moniva {

/// Serial background access to the data file: one thread, one connection, one block at a time. The connection
/// is opened with the first block and closed with the queue.
class DatabaseQueue {
 public:
  /// `opened` prepares a fresh connection for that access; false from it means that the connection is not to
  /// be used.
  using Prepare = std::function<bool(Connection&)>;
  DatabaseQueue(std::filesystem::path path, Connection::Access access, Prepare opened);

  /// Runs the block on the queue's thread and waits for it; from a block of the queue it runs at once. The
  /// block gets no connection (null) when the file cannot be opened.
  void inDatabase(const std::function<void(Connection*)>& block);
  /// The same without waiting.
  void dispatch(std::function<void(Connection*)> block);
  void drain() { queue_.drain(); }
  bool isQueueThread() const { return queue_.isThisThread(); }

 private:
  Connection* connection();

  std::filesystem::path path_;
  Connection::Access access_;
  Prepare prepare_;
  std::unique_ptr<Connection> connection_;
  /// Declared last: its blocks use the connection until it has ended.
  WorkQueue queue_;
};

}  // namespace moniva
