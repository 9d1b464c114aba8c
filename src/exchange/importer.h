#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "exchange/import_reader.h"
#include "storage/mv_app_root.h"

namespace moniva {

/// How a file is to be taken in.
struct ImportRequest {
  ImportOptions reading;
  /// Take the good rows although others are bad. Without it one bad row keeps the whole file out.
  bool skipBad = false;
  /// Find out what would happen and write nothing.
  bool dryRun = false;
  /// Currency of accounts and books that the file names and the store does not have, unless the file tells.
  std::string currency;
  /// Told now and then how many rows are done, and of how many.
  std::function<void(std::size_t done, std::size_t total)> progress;
};

/// What an import did, or would do. When bad rows kept the file out, nothing counts as added or new.
struct ImportOutcome {
  static constexpr std::size_t mostProblems = 1000;

  std::size_t rows = 0;  ///< good ones and bad ones
  std::size_t addedExpenses = 0;
  std::size_t addedIncome = 0;
  std::size_t addedTransfers = 0;
  std::size_t alreadyThere = 0;  ///< rows of an earlier import of this or an overlapping file
  std::size_t badRows = 0;
  std::size_t pending = 0;           ///< of the added ones, those whose day lies ahead
  std::vector<RowProblem> problems;  ///< the first mostProblems of them
  std::size_t problemCount = 0;      ///< those beyond the list included
  std::vector<std::string> ignoredHeadings;
  std::vector<std::string> newBooks;
  std::vector<std::string> newAccounts;
  std::vector<std::string> revivedBooks;  ///< deleted ones that are back with their records
  std::vector<std::string> revivedAccounts;
  std::vector<std::string> newCategories;
  std::vector<std::string> newVendors;
  /// Lines whose time of day the clock skipped (taken later by the gap), and those it showed twice (the first
  /// taken).
  std::vector<std::size_t> movedByClockChange;
  std::vector<std::size_t> shownTwice;
  std::optional<Date> firstDate;  ///< of the good rows, those already there included
  std::optional<Date> lastDate;
  /// Whether anything was written: false for a dry run, when bad rows kept the file out, and when there was
  /// nothing to add.
  bool written = false;

  std::size_t added() const { return addedExpenses + addedIncome + addedTransfers; }
};

/// Takes a file of records into the store: makes the books, accounts, categories and vendors it names, and
/// writes everything in one transaction. A row has its identity from what it says, and the n-th of identical
/// rows of a file from that and n; so a file imported again, or one that overlaps it, adds nothing twice, and
/// a record that was edited or deleted since stays as the user left it.
///
/// A row that names a group, a closed book or account, or an account that does not track it is bad. Accounts
/// keep one currency: a row that states another one than its account's is bad, and so is a transfer between
/// currencies without the amount that arrives, or within one with another amount. Bad too are amounts with
/// more decimals than their currency has, and a foreign one in the record's own currency that is another
/// amount; but a table this program exported is taken as it is, as shares of plans end at cents in any
/// currency. Which currency a new account has is settled over all rows (AccountCurrencies).
///
/// Refused, with nothing written, when the file cannot be read as a table of records or the store refuses a
/// write. Bad rows are no refusal: they are in the outcome.
Result<ImportOutcome> importFile(MVAppRoot& root, const std::filesystem::path& path,
                                 const ImportRequest& request);

}  // namespace moniva
