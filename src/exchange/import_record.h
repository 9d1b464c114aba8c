#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include "exchange/import_date.h"

namespace moniva {

enum class ImportKind { expense, income, transfer };

/// One row of an imported file, read and found consistent, but not yet tied to anything of the store: names
/// are as the file writes them, times are of no zone. Empty texts are those the file does not give.
struct ImportRecord {
  std::size_t line = 0;  ///< where the row starts in the file, from 1
  ImportKind kind = ImportKind::expense;
  ImportDate date;
  std::string book;
  std::string account;
  std::string category;
  std::string subcategory;
  std::string vendor;
  std::string toAccount;
  std::string note;
  double amount = 0;  ///< above zero, as are the other two; the direction is in the kind
  std::optional<double> foreignAmount;
  std::optional<double> toAmount;
  std::string foreignCurrency;  ///< an ISO code, given exactly when foreignAmount is
  std::string currency;         ///< of the account
};

/// A text that is equal for two records exactly when they say the same: everything but the line counts, while
/// the order of columns and the spelling of numbers and dates in the file do not. Identifiers are made from
/// it, so that a row keeps its identity wherever it is imported from. Rows that repeat within one file share
/// it; whoever makes identifiers tells these apart by counting them.
std::string identityOf(const ImportRecord& record);

}  // namespace moniva
