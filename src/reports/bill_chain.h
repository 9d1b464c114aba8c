#pragma once

#include <array>
#include <vector>

#include "model/transaction_type.h"
#include "reports/bill_months.h"

/// The bills of a credit account one after the other, each with what was paid above the one before.
namespace moniva {

/// The kinds of record that are charged, and those that pay back, in the order in which they are added up.
inline constexpr std::array kChargedTypes = {kind::kExpense, kind::kTransferOut, kind::kLent,
                                             kind::kRepaidByUs};
inline constexpr std::array kRepaidTypes = {kind::kTransferIn, kind::kIncome, kind::kRepaidToUs,
                                            kind::kBorrowed};
using BillSums = std::array<double, 4>;  ///< one of each kind
double totalOf(const BillSums& sums);

struct ChainedBill {
  BillMonth month;
  BillSums charged{};
  BillSums repaid{};
  double carriedIn = 0;

  /// What is still to be paid; below zero, what was paid too much.
  double left() const;
  double carriedOut() const;
};

/// The row that keeps what is carried into a month.
struct CarryRow {
  std::string eid;
  double amount = 0;
  Date datetime;
  Date payDate;
  bool isLive = true;
};

struct BillChain {
  std::vector<ChainedBill> bills;
  std::vector<CarryRow> rows;  ///< as the store has them, up to the month after the last bill
  Date lastRecord;
};

/// Reads the settled records of the account once, in the order of time: from its first record or the
/// `atLeast` months before, whichever is earlier, up to the month, which is the last.
Result<BillChain> readBillChain(const MonivaAccount& account, const BillMonth& upTo, int atLeast);

/// Makes the rows of what is carried over say what the bills do, the month after the last one included.
/// Writes nothing where they do, nor to a store that can only be read. Rows of months that lie ahead, beyond
/// all records, are made for the last two alone.
Result<> keepCarryRows(const MonivaAccount& account, const BillChain& chain);

}  // namespace moniva
