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
  double repaidEarly = 0;  ///< of what was paid back, what was paid before the month closed
  /// What is to be paid of it after all that was paid up to the last bill of the chain, late as it may be.
  double open = 0;

  /// What is still to be paid; below zero, what was paid too much.
  double left() const;
  double carriedOut() const;
};

/// The row that keeps what is carried into a month; one that is deleted is kept for the next time.
struct CarryRow {
  std::string eid;
  double amount = 0;
  Date datetime;
  bool isLive = true;
};

struct BillChain {
  std::vector<ChainedBill> bills;
  std::vector<CarryRow> rows;  ///< as the store has them, up to the month after the last bill
  Date lastRecord;
  double above = 0;  ///< paid above all of the bills, once what is open of them is paid
};

/// Reads the settled records of the account once, in the order of time: from its first record or the month
/// `from`, whichever is earlier, up to the month `upTo`, which is the last.
Result<BillChain> readBillChain(const MonivaAccount& account, const BillMonth& from, const BillMonth& upTo);

/// The identifier of the row that keeps what is carried into the month, the same on every device.
std::string carryIdentifier(const MonivaAccount& account, const BillMonth& month);
/// Makes the rows of what is carried over say what the bills do, the month after the last one included.
/// Writes nothing where they do, nor where it cannot, as bills are whole without them. Rows of months that
/// lie ahead, beyond all records, are made for the last two alone.
void keepCarryRows(const MonivaAccount& account, const BillChain& chain);

}  // namespace moniva
