#pragma once

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>

#include "model/moniva_account.h"
#include "model/mv_category.h"
#include "model/vendor.h"

namespace moniva {

/// The books, accounts, categories and vendors that records refer to by key, each read once. For one
/// operation over many records: what changes in the store meanwhile is not seen. What pages through records
/// keeps one and renews it with each page.
class RecordNames {
 public:
  explicit RecordNames(MVAppRoot& root) : root_(&root) {}

  /// Forgets what was read when anything was written to the store since the last call.
  void renew();

  // Null for a blank key and for one that names nothing; deleted rows are found.
  std::shared_ptr<const MonivaAccount> holder(std::string_view key);
  /// Where income and expense share the key, the category of the type.
  std::shared_ptr<const MVCategory> category(std::string_view key, int type);
  /// The entry for no vendor where the key is blank or stands for none.
  std::shared_ptr<const Vendor> vendor(std::string_view key, int type);

 private:
  MVAppRoot* root_;
  /// The store as it was at the last renewal: connection, its own writes, those of others.
  std::tuple<std::uint64_t, std::int64_t, std::int64_t> seen_{};
  std::map<std::string, std::shared_ptr<const MonivaAccount>, std::less<>> holders_;
  std::map<int, std::map<std::string, std::shared_ptr<const MVCategory>, std::less<>>> categories_;
  std::map<int, std::map<std::string, std::shared_ptr<const Vendor>, std::less<>>> vendors_;
};

}  // namespace moniva
