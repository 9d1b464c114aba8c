#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "base/result.h"
#include "model/payment.h"
#include "model/transaction_item.h"

// What keeps the rows of a group together; for the editors of records. All belong into the transaction of the
// change that made them necessary.
namespace moniva {

/// The key of the top-level category that all items have; blank where they differ.
std::string commonCategory(const std::vector<TransactionItem>& items);

/// Whether a group's only payment follows a change of what its items come to, or stays what the person said.
enum class SolePayment { follows, stays };
/// Brings the payments of the group to what its items come to: by its only payment, or by its rest, which is
/// made, changed or removed. Refused where the payments would come to more. Payments take the category that
/// the items have in common.
Result<> settlePayments(MVAppRoot& root, std::string_view uuid, SolePayment sole);
/// After rows of the group were cleared away with their book or account: payments without any item go too,
/// with that reason, and refunds of items that went; what is not paid any more is the rest; payments that
/// come to more give up what is too much, the latest first.
Result<> settleCleared(MVAppRoot& root, std::string_view uuid, std::string_view reason);
/// The amount of a plan's or a cost's seed becomes what the parts come to, less the fee it names, which is
/// never above that.
Result<> recountSeed(MVAppRoot& root, const TransactionGroup& group);

/// Of an instalment's item its payment, and the other way round: the two are of one date and amount, and
/// where several are the first goes with the first. `part` may be older than the group: as it was before a
/// change.
std::optional<TransactionItem> partnerOf(const TransactionGroup& group, const TransactionItem& part);

// One row each, with the stamp.

Result<> writeAmount(MVAppRoot& root, std::string_view eid, double amount);
/// The date with its day and its due date, where that is the date; pending where it lies ahead, and settled
/// again where only the former date did.
Result<> writeDate(MVAppRoot& root, const TransactionItem& row, Date date);
/// Removed by the program, for that reason.
Result<> removeRow(MVAppRoot& root, std::string_view eid, std::string_view reason);

/// Whether the row is settled when it is dated so. Shares of a cost are settled as their payment is.
bool settledAt(const TransactionItem& row, Date date, Date now);

/// Refused: a key that names no live account, and one that does not track the type. Blank is no account.
Result<> checkAccountKey(MVAppRoot& root, std::string_view account, int type);
/// Refused: a key that names no live book.
Result<> checkBookKey(MVAppRoot& root, std::string_view book);

}  // namespace moniva
