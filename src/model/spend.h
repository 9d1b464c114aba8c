#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "base/result.h"
#include "model/transaction_type.h"
#include "storage/mv_app_root.h"

namespace moniva {

/// The editor of one expense (type 12) or income (type 11): a plain one is a single item row. Categories,
/// vendor, book and account are given by key.
class Spend {
 public:
  explicit Spend(MVAppRoot& root);

  std::string eid;
  std::string ipid;
  int bid = kItemRow;
  /// The group's `transferEID`; empty for a plain row.
  std::string connectionUUID;
  int type = kind::kExpense;
  /// Above zero; in the currency of the account, or of the book without one.
  double amount = 0;
  std::string foreignCurrency;
  double foreignAmount = 0;
  Date datetime;
  /// IANA name of the zone in which the record was made; its day (`sday`) is taken there.
  std::string timeZone;
  std::string note;
  std::string account;
  /// Key of the top-level category and of the chosen one; both empty for none.
  std::string category;
  std::string subcategory;
  std::string vendor;
  bool paid = true;
  bool needReimburse = false;
  std::string book;
  std::string repeat{kNotRepeat};
  std::string repeatSeedID;
  Date repeatEndDate;
  Date payDate;
  int isDeleted = 0;
  int advancedType = advanced::kPlain;

  /// The record of that `eid`; nothing when there is none.
  static std::optional<Spend> spendFromEID(MVAppRoot& root, std::string_view eid);
  /// Writes the record as one item row; a blank `eid` is given an identifier, a `payDate` never set the
  /// record's date, and an end without a repeat is dropped. Refused, with nothing written, for an amount that
  /// is not above zero and finite, another type than income or expense, and what the store refuses.
  Result<> add();

 private:
  MVAppRoot* root_;
};

}  // namespace moniva
