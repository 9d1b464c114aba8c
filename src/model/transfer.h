#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "base/result.h"
#include "model/transaction_type.h"
#include "storage/mv_app_root.h"

namespace moniva {

/// Money moved from account A to account B: two payment rows that share a connection UUID, side A (type 33)
/// and side B (type 23). Accounts are given by key.
class Transfer {
 public:
  explicit Transfer(MVAppRoot& root);

  std::string accountA;
  std::string accountB;
  std::string eidA;
  std::string eidB;
  /// Each side in its account's currency; above zero.
  double amountA = 0;
  double amountB = 0;
  /// Whether the two accounts keep different currencies; each row then carries the other side's amount too.
  bool acrossCurrencies = false;
  Date datetime;
  std::string timeZone;
  std::string note;
  std::string connectUUID;
  bool paid = true;
  std::string repeat{kNotRepeat};
  std::string repeatSeed;
  /// 0 unless one side at least is deleted.
  int isDeleted = 0;

  /// The transfer of that connection UUID; nothing unless both sides are there. One that is
  /// deleted is found where there is no live one.
  static std::optional<Transfer> transferFromUUID(MVAppRoot& root, std::string_view uuid);
  /// How many live sides of transfers the account of that key has.
  static Result<std::int64_t> countOf(MVAppRoot& root, std::string_view account);
  /// Writes both rows or none. Blank identifiers are made. Refused for accounts that are missing or the same,
  /// and amounts that are not above zero and finite.
  Result<> add();

 private:
  bool addSide(int type, const std::string& eid, double amount, const std::string& account,
               const std::string& other);

  MVAppRoot* root_;
};

}  // namespace moniva
