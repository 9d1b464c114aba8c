#pragma once

#include <optional>
#include <string>
#include <variant>

#include "model/payment.h"
#include "model/spend.h"
#include "model/transfer.h"
#include "recurrence/series_seed.h"

namespace moniva {

/// Writes the occurrences of one series, within the transaction of its caller. What they have in common is
/// looked up and checked once, when it is made.
class OccurrenceMaker {
 public:
  /// Refused: what cannot be added, as with a book or account that is gone or closed.
  static Result<OccurrenceMaker> of(MVAppRoot& root, const SeriesSeed& seed);

  /// The occurrence of the day of that number, which it begins with in the user's zone; false where the
  /// series has made one for it before, whatever became of that but that a repair removed it.
  Result<bool> make(std::int64_t number);
  /// Writes what the occurrences made do to balances and use counts.
  Result<> finish();

 private:
  using Entry = std::variant<Spend, Payment, Transfer>;
  OccurrenceMaker(MVAppRoot& root, const SeriesSeed& seed, Entry entry)
      : root_(&root), seed_(seed.eid), entry_(std::move(entry)) {}

  struct Identifiers {
    std::string eid;
    std::string eidB;  ///< of a transfer's other row
    std::string uuid;  ///< that rows of one occurrence share
  };
  static Result<> insert(Spend& spend, Identifiers of);
  static Result<> insert(Payment& payment, Identifiers of);
  Result<> insert(Transfer& transfer, Identifiers of);
  /// What stands under that `eid`: its mark of deletion; nothing when it is free.
  Result<std::optional<int>> deletedOf(const std::string& eid) const;

  MVAppRoot* root_;
  std::string seed_;
  Entry entry_;
  int made_ = 0;
  int settled_ = 0;
};

/// The payment that a seed, or the record it is made from, stands for.
Payment paymentOf(const Spend& spend);
/// Writes the payment as one that does not repeat itself.
Result<> insertPaymentOfSeries(Payment& payment);
/// Refused: a book or account of the record that is gone or closed, or that does not track it.
Result<> checkHolders(const Spend& spend, int type);

}  // namespace moniva
