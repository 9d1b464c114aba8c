#pragma once

#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/result.h"
#include "model/transaction_type.h"
#include "storage/mv_app_root.h"

namespace moniva {

/// One row of a compound record as it is in the store: an item (what was bought or earned) or a payment
/// (which account paid how much). Books, accounts, categories and vendors are given by key.
struct TransactionItem {
  std::string eid;
  int bid = kItemRow;
  int type = 0;
  /// Above zero but for a refund, which is a payment below zero.
  double amount = 0;
  /// The amount in `foreignCurrency`; on a payment the fee that its amount contains.
  double amount2 = 0;
  std::string foreignCurrency;
  std::string note;
  std::string account;
  std::string book;
  std::string category;
  std::string subcategory;
  std::string vendor;
  Date datetime;
  std::string timeZone;
  Date payDate;
  bool paid = true;
  int advancedType = advanced::kPlain;
  std::string connectionUUID;
  std::string repeatSeed;
  /// The text in `sweek`; on a refund of one of several items it names that item.
  std::string json;
  std::string ipid;
  int isDeleted = 0;
  bool needReimburse = false;

  bool isPayment() const { return bid == kPaymentRow; }
  /// Expense or income, as an item or a payment.
  bool isSpend() const { return type == kind::kIncome || type == kind::kExpense; }
  bool isSeed() const { return type == kind::kInstallmentSeed; }
  /// A payment that gave money back.
  bool isRefund() const { return isPayment() && amount < 0; }
  /// The payment that stands for what nobody has said yet how to pay: pending, and of no account.
  bool isRest() const { return isPayment() && !isRefund() && !paid && account.empty(); }

  /// Of a refund that names the item it is of (as it does in a cart) that item's `eid`; else blank.
  std::string refundOf() const;

  /// The row of that `eid`, whatever its kind; nothing when there is none.
  static std::optional<TransactionItem> fromEID(MVAppRoot& root, std::string_view eid);
};

/// The text for `json` of a refund of that item.
std::string jsonOfRefund(std::string_view itemEid);

/// The rows for which a condition holds, which may be followed by their order. Refused when the store cannot
/// be read.
Result<std::vector<TransactionItem>> itemsWhere(MVAppRoot& root, std::string_view condition,
                                                std::initializer_list<Value> arguments);
/// The `eid` of the item of a group, a live one first, then by date; blank when it has none.
Result<std::string> itemOfGroup(MVAppRoot& root, std::string_view uuid);
/// What they come to, without the noise of sums.
double sumOf(const std::vector<TransactionItem>& rows);

/// All rows of a group, live ones only or (as a person may bring them back) those a person deleted too. Items
/// and payments by date; the seed of a plan apart.
struct TransactionGroup {
  std::vector<TransactionItem> items;
  std::vector<TransactionItem> payments;
  std::optional<TransactionItem> seed;

  static Result<TransactionGroup> of(MVAppRoot& root, std::string_view uuid, bool withDeleted = false);
  bool isEmpty() const { return items.empty() && payments.empty() && !seed; }
};

}  // namespace moniva
