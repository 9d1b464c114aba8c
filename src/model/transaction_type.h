#pragma once

#include <string_view>

/// The codes stored in `transactions`, and the texts that stand for "none".
namespace moniva {

/// Kind of a row (column `type`).
namespace kind {
inline constexpr int kIncome = 11;
inline constexpr int kExpense = 12;
inline constexpr int kFurtherIncome = 13;
inline constexpr int kFurtherExpense = 14;
inline constexpr int kTransferIn = 23;   ///< side B: where money arrives
inline constexpr int kTransferOut = 33;  ///< side A: where money leaves
inline constexpr int kBorrowed = 24;
inline constexpr int kLent = 34;
inline constexpr int kRepaidToUs = 25;
inline constexpr int kRepaidByUs = 35;
/// What a balance was corrected by; above or below zero, no income and no expense.
inline constexpr int kBalanceCorrection = 50;
inline constexpr int kOneTimeBudget = 60;
inline constexpr int kMonthlyBudget = 61;
inline constexpr int kCategoryAllocation = 62;
/// What a monthly budget carries into the month that the row is labelled with.
inline constexpr int kBudgetCarry = 63;
/// What was paid above a card's bill, in the month of the next one; no money movement, so that no balance
/// counts it.
inline constexpr int kOverpayment = 64;
inline constexpr int kIncomeTemplate = 81;
inline constexpr int kExpenseTemplate = 82;
inline constexpr int kTransferTemplate = 83;
inline constexpr int kRepeatSeed = 85;
inline constexpr int kInstallmentSeed = 86;
}  // namespace kind

/// Role of a row in its record (column `bid`).
inline constexpr int kPaymentRow = 10;
inline constexpr int kItemRow = 20;

/// Compound kinds (column `syear`); 0 is a plain row.
namespace advanced {
inline constexpr int kPlain = 0;
inline constexpr int kCart = 1001;
inline constexpr int kCost = 1002;
inline constexpr int kInstallment = 1003;
inline constexpr int kSpendWithPayment = 1004;
}  // namespace advanced

inline constexpr std::string_view kNoCategory = "#NOMVCATEGORY";
inline constexpr std::string_view kNotRepeat = "Not Repeat";
inline constexpr std::string_view kNoVendorKey = "NoVendor";

/// Kinds of rows in `account` (column `kind`).
inline constexpr int kAccountKind = 1;
inline constexpr int kBookKind = 2;

}  // namespace moniva
