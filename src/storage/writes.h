#pragma once

#include "storage/mv_app_root.h"
#include "storage/transaction.h"

namespace moniva {

/// Why the last statement of this thread's connection failed.
inline tl::unexpected<Refusal> refusalOfStore(MVAppRoot& root) {
  Connection* db = root.db().getDatabase();
  return db != nullptr ? tl::make_unexpected(db->refusal()) : refuse("the store is not open");
}

/// Runs one writing statement; what the store refuses comes back as a sentence.
template <class... Arguments>
Result<> write(MVAppRoot& root, std::string_view sql, const Arguments&... arguments) {
  if (!root.executeUpdate(sql, arguments...)) return refusalOfStore(root);
  return {};
}

/// Runs the work as one transaction, within the caller's if there is one: kept when it answers a value,
/// undone when it refuses or cannot be kept. The work takes the connection and answers a Result.
template <class Work>
auto atomically(MVAppRoot& root, Work&& work) -> decltype(work(std::declval<Connection&>())) {
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  Transaction transaction(*db);
  if (!transaction.began()) return tl::make_unexpected(db->refusal());
  auto result = work(*db);
  if (result && !transaction.commit()) return tl::make_unexpected(db->refusal());
  return result;
}

/// Keeps what reading found out of date, all of it or nothing. What was read is whole without, so no other
/// program is waited for, and of what cannot be written the log alone hears. The work takes the connection
/// and answers a Result<>.
template <class Work>
void keepIfFree(MVAppRoot& root, Work&& work) {
  Connection* db = root.db().getDatabase();
  if (db == nullptr || db->isReadOnly()) return;
  const int patience = db->setPatience(0);
  Transaction transaction(*db);
  db->setPatience(patience);
  Result<> kept = transaction.began() ? work(*db) : tl::make_unexpected(db->refusal());
  if (kept && !transaction.commit()) kept = tl::make_unexpected(db->refusal());
  if (!kept) root.platform().log.line(fmt::format("== left for later: {}", kept.error().why));
}

}  // namespace moniva
