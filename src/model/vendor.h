#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "base/result.h"
#include "storage/mv_app_root.h"

namespace moniva {

/// A payee (row type 6, for expenses) or a payer (row type 9, for income). Transactions refer to it by `pk`;
/// titles are unique within a type.
class Vendor {
 public:
  explicit Vendor(MVAppRoot& root) : root_(&root) {}

  static constexpr int kPayee = 6;
  static constexpr int kPayer = 9;

  std::string title;
  int type = kPayee;
  std::string orderString;
  int usedTimes = 0;
  std::string pk;
  int orderID = 0;

  /// The row type for a transaction's type: 11, 81 and 13 give 9; 12, 82 and 14 give 6; any other is taken as
  /// it is.
  static int typeFor(int transactionType);
  /// The entry that stands for no vendor of that transaction type.
  static Vendor noVendor(MVAppRoot& root, int transactionType);
  bool isNoVendor() const;

  /// The vendor with the key; nothing when there is none.
  static std::optional<Vendor> getVendor(MVAppRoot& root, std::string_view key);
  /// Adds the vendor at the end of the list, or takes (revives, when deleted) the row of that title and type;
  /// `pk` is its key afterwards. A blank title is refused.
  Result<> add();
  /// Whether there is a live vendor of the title and type.
  bool isExist() const;
  /// Counts the uses afresh from the transactions.
  bool updateUsingCount(int transactionType);

 private:
  MVAppRoot* root_;
};

}  // namespace moniva
