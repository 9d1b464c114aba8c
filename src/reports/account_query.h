#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "base/result.h"
#include "model/moniva_account.h"

namespace moniva {

/// Lists of books and payment accounts to choose from: what is live and open, in the order of the lists,
/// groups behind the others. All are read, now, on the calling thread's connection, and refused when the
/// store cannot be read.
class AccountQuery {
 public:
  using Rows = Result<std::vector<MonivaAccount>>;
  using Titles = Result<std::vector<std::string>>;

  explicit AccountQuery(MVAppRoot& root) : root_(&root) {}

  // What the lists of accounts and books keep to.
  std::string currency;       ///< blank for any
  bool includeGroup = false;  ///< groups are listed too
  std::string accountType;    ///< "_SavingAccount", "_DebtAccount" and so on; blank for any

  Rows accountsArray() const { return rows(kAccountKind, includeGroup); }
  Titles accountsTitleArray() const;
  /// `accountType` says nothing of books.
  Titles booksTitleArray() const;
  Rows bookWithoutGroupArray() const { return rows(kBookKind, false); }
  Rows accountWithoutGroupArray() const { return rows(kAccountKind, false); }

  // Which accounts may take part in what, by what they track; never groups.
  Rows accountsArrayForTransferOut() const { return taking(kind::kTransferOut); }
  Rows accountsArrayForTransferIn() const { return taking(kind::kTransferIn); }
  /// What expenses are paid from.
  Rows accountsArrayForPayCard() const { return taking(kind::kExpense); }
  /// What is topped up: prepaid accounts.
  Rows accountsArrayForRecharge() const { return taking(kind::kTransferIn, "_PrepaidAccount"); }
  /// What is repaid: credit accounts.
  Rows accountsArrayForCreditCardRepay() const { return taking(kind::kTransferIn, "_DebtAccount"); }
  /// Where lent money comes from, and where borrowed money goes to.
  Rows accountsArrayForLend() const { return taking(kind::kLent); }
  Rows accountsArrayForBorrow() const { return taking(kind::kBorrowed); }

  /// The first account of the list in that currency.
  static Result<std::optional<MonivaAccount>> paymentAccountForCurrency(MVAppRoot& root,
                                                                        const std::string& currency);
  /// The accounts of every other currency, by its code.
  static Result<std::map<std::string, std::vector<MonivaAccount>>> accountsDictExceptCurrency(
      MVAppRoot& root, const std::string& currency);
  /// How many books are live and open, groups not counted.
  Result<std::int64_t> allAvailabledBooksCount() const;

 private:
  Rows rows(int aKind, bool withGroups) const;
  /// The accounts that track rows of the type, of `type` where one is given.
  Rows taking(int transactionType, std::string_view type = {}) const;

  MVAppRoot* root_;
};

}  // namespace moniva
