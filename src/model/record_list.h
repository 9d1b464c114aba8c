#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/result.h"
#include "model/record_names.h"
#include "model/transaction_item.h"

namespace moniva {

/// An expense or income as a whole, however many rows it is kept in.
struct RecordWhole {
  /// The row that stands for it: the seed of a plan or a spread cost, else the first item. A payment that
  /// stands by itself stands for itself.
  TransactionItem head;
  /// All its rows; of a plain record `head` alone, as its item. Of a deleted record those that went with it.
  TransactionGroup group;

  /// The record that the row is part of; a payment that a series makes stands by itself though it has a UUID.
  /// Nothing for rows of other kinds, for what the program removed, and for payments whose items are gone.
  static Result<std::optional<RecordWhole>> of(MVAppRoot& root, std::string_view eid);

  bool isCompound() const { return !head.connectionUUID.empty() && !isBarePayment(); }
  bool isBarePayment() const { return head.isPayment(); }
  bool isPlan() const { return group.seed && head.advancedType == advanced::kInstallment; }
  bool isSpread() const { return group.seed && head.advancedType == advanced::kCost; }
  bool isCart() const { return isCompound() && head.advancedType == advanced::kCart; }
  /// Income or expense.
  int type() const { return group.items.empty() ? head.type : group.items.front().type; }
  /// What its items come to; what was refunded is taken off.
  double total() const;
  double refunded() const;
  /// What pending payments come to; all of a plain record that is pending.
  double open() const;
  /// The payments that are neither a refund nor the rest.
  std::vector<TransactionItem> regularPayments() const;
  std::vector<TransactionItem> refunds() const;
  /// The keys of the accounts it was paid from or into, each once.
  std::vector<std::string> accounts() const;
  /// The currency of its amounts: that of its accounts where they have one in common, else that of its book.
  std::string currency(RecordNames& names) const;
};

/// Which expenses and income a list has. Blank keys and what is not set leave nothing out; of a compound
/// record it is enough that one of its rows has the book, account, category or vendor.
struct RecordQuery {
  std::string book;
  std::string account;
  std::string category;  ///< top-level or not
  std::string vendor;
  std::optional<Date> from;
  std::optional<Date> to;  ///< the last moment that counts
  int type = 0;            ///< 11 or 12; 0 for both
  int advancedType = 0;    ///< 1001 to 1003; 0 for all
  bool pending = false;    ///< those of which something is still to be paid
  bool deleted = false;    ///< those the user deleted instead of those there are
  std::int64_t limit = -1;
};

/// Hands the records asked for to `take` one by one, the latest first; a compound record once. Refused when
/// the store cannot be read.
Result<> listRecords(MVAppRoot& root, const RecordQuery& query,
                     const std::function<void(const RecordWhole&)>& take);

}  // namespace moniva
