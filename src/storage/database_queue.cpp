#include "storage/database_queue.h"

namespace moniva {

DatabaseQueue::DatabaseQueue(std::filesystem::path path, Connection::Access access, Prepare opened)
    : path_(std::move(path)), access_(access), prepare_(std::move(opened)) {}

void DatabaseQueue::inDatabase(const std::function<void(Connection*)>& block) {
  queue_.runAndWait([&] { block(connection()); });
}

void DatabaseQueue::dispatch(std::function<void(Connection*)> block) {
  queue_.dispatch([this, block = std::move(block)] { block(connection()); });
}

Connection* DatabaseQueue::connection() {
  if (!connection_) {
    auto opened = Connection::open(path_, access_);
    if (opened && prepare_(**opened)) connection_ = std::move(*opened);
  }
  return connection_.get();
}

}  // namespace moniva
