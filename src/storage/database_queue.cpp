#include "storage/database_queue.h"

namespace moniva {

DatabaseQueue::DatabaseQueue(std::filesystem::path path, Prepare opened)
    : path_(std::move(path)), prepare_(std::move(opened)) {}

void DatabaseQueue::inDatabase(const std::function<void(Connection*)>& block) {
  queue_.runAndWait([&] { block(connection()); });
}

void DatabaseQueue::dispatch(std::function<void(Connection*)> block) {
  queue_.dispatch([this, block = std::move(block)] { block(connection()); });
}

Connection* DatabaseQueue::connection() {
  if (!connection_) {
    auto opened = Connection::open(path_, Connection::Access::readWrite);
    if (opened && prepare_(**opened)) connection_ = std::move(*opened);
  }
  return connection_.get();
}

}  // namespace moniva
