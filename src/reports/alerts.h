#pragma once

#include <string>
#include <vector>

#include "model/moniva_account.h"

/// What a person should be reminded of today: bills of credit accounts and instalments that are due.
namespace moniva {

/// A credit account of whose last closed month, or of older ones, something is still to be paid.
struct BillAlert {
  std::string account;  ///< key
  std::string title;    ///< of the account
  /// "Card / May, 2024".
  std::string text;
  std::string currency;
  Date beginDate;  ///< first and last day of the month
  Date endDate;
  Date dueDate;  ///< when it is to be paid
  double lastMonthBileAmount = 0;
  double needReayAmount = 0;         ///< still to be paid of it
  double earlierNeedReayAmount = 0;  ///< still to be paid of older months
  Date earlierDueDate;               ///< when the newest of those was to be paid
};

/// The instalments of one plan that are due and not paid.
struct InstallmentAlert {
  std::string transferEID;
  std::string eid;  ///< of the first of them
  /// "Electronics / Jun 2, 2024".
  std::string text;
  std::string currency;
  Date datetime;      ///< of the first of them
  int count = 0;      ///< how many are due
  double amount = 0;  ///< what they come to
  int paidCount = 0;  ///< instalments of the plan that are paid
  int parts = 0;      ///< and all there are
};

struct AlertInfo {
  std::vector<BillAlert> bills;                ///< in the order of the accounts
  std::vector<InstallmentAlert> installments;  ///< the one that has waited longest first
};

/// All of it as of now. The last closed month of an account is the one before the present by its own first
/// day of months; accounts of whose bills nothing is left to pay, and those closed or deleted, are left out,
/// as is one whose bill cannot be read. Refused when none can be, or the store.
Result<AlertInfo> allAlertInfo(MVAppRoot& root);

}  // namespace moniva
