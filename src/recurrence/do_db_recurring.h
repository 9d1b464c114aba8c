#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "base/phrase.h"
#include "base/result.h"
#include "model/mv_transaction.h"

// All series of a store together.
namespace moniva {

/// What bringing all series up to date came to.
struct CatchUp {
  int series = 0;  ///< that were given at least one occurrence
  int made = 0;
  int ended = 0;
  /// What could not be brought up to date, and what was left for the next run, each in a sentence.
  std::vector<Phrase> troubles;
};

/// Makes what has come due of every live series up to the end of today. Each series is a transaction of its
/// own; one that fails is told and left as it was, and the others go on. Plans by instalments (1003) are
/// never stepped. Refused when the store cannot be read.
Result<CatchUp> updateRecurringTransactionsWithFuture(MVAppRoot& root);
/// The same from the day each series began: fills every gap since.
Result<CatchUp> updateRecurringTransactionsForAll(MVAppRoot& root);

/// How many live series there are.
Result<std::int64_t> recurringEntriesCount(MVAppRoot& root);

/// The live series of one rule, the next due first.
struct SeriesOfRule {
  std::string repeatType;
  std::vector<MVTransaction> array;
  // What one round of them comes to, an expense or income in each currency: sum by code. Transfers are
  // neither.
  std::vector<std::pair<std::string, double>> expenseSums;
  std::vector<std::pair<std::string, double>> incomeSums;
  // The same as texts, "amount / amount" where there are several currencies.
  std::string expenseSumString;
  std::string incomeSumString;
};
Result<SeriesOfRule> recurringTransactionsFor(MVAppRoot& root, std::string_view rule);

}  // namespace moniva
