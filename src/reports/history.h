#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "base/result.h"
#include "model/record_template.h"

/// The fixed lists a person browses besides reports: what was entered last, is still to be paid, was deleted,
/// happened or was edited on a day, and comes next. Rows are named by their `eid`; `MVTransaction` loads
/// them. All run on the calling thread's connection and are refused when the store cannot be read.
namespace moniva {

/// The last 20 expenses (`type` 12 or 14) or else incomes of a book that lie before the moment, the latest
/// first: rows a person entered in the book, no payments and none that a series made.
Result<std::vector<std::string>> getLastAddedSpend(const MonivaAccount& book, int type, Date before);

/// How many expenses, incomes and transfers are still to be paid. A compound record counts by its pending
/// payments, a transfer once; instalments have a list of their own.
Result<std::int64_t> unpaidEntriesCount(MVAppRoot& root);

/// A row that is still to be paid, in the currency of its account, else of its book (a payment's is that of
/// its record); blank where neither is known.
struct UnpaidEntry {
  std::string eid;
  int type = 0;
  double amount = 0;
  std::string currency;
  Date datetime;
};
/// What is still to be paid on one day, by the day's key in the zone each record was made in.
struct UnpaidDay {
  struct Sum {
    int type = 0;
    std::string currency;
    double amount = 0;
    std::int64_t count = 0;
  };
  int sday = 0;
  /// The moment of the first entry.
  Date date;
  std::vector<UnpaidEntry> entries;  ///< by date
  std::vector<Sum> sums;             ///< by type and currency
};
/// The same entries by day, the earliest first. Those with an account and those without are asked for apart,
/// as the latter take the currency of a book. Day keys from 40000000 on are left out.
Result<std::vector<UnpaidDay>> unpaidTransactions(MVAppRoot& root);

/// The instalments of a type (11 or 12) that are still to be paid, the next one first.
Result<std::vector<std::string>> installmentTransactions(MVAppRoot& root, int type);

/// A row that a person deleted; keys of its account and book, and the group it belongs to.
struct DeletedEntry {
  std::string eid;
  int type = 0;
  std::string account;
  std::string book;
  std::string transferEID;
};
inline constexpr std::array<int, 3> kSpendsAndTransfers = {kind::kIncome, kind::kExpense, kind::kTransferOut};
/// Rows of three types that were deleted after the moment, the latest first. All rows of a compound record
/// are among them.
Result<std::vector<DeletedEntry>> recentlyDeletedTransactions(
    MVAppRoot& root, Date since, const std::array<int, 3>& types = kSpendsAndTransfers);

/// The rows of one day by kind, in each the one edited last first; no row is of two kinds.
struct DayTransactions {
  std::vector<std::string> spends;        ///< plain expenses and incomes, as they were entered
  std::vector<std::string> compounds;     ///< items of carts and of records with payments, shares of costs
  std::vector<std::string> installments;  ///< items of plans
  std::vector<std::string> transfers;     ///< by the side the money leaves, or the one side there is
  std::vector<std::string> debts;         ///< debts and repayments
  std::vector<std::string> repeats;  ///< series whose next record is due that day; of the book, or of none
};
/// The day's rows of a book, or of all where it is null. Transfers, their series and debts belong to no book
/// and are listed for each.
Result<DayTransactions> allTransactionsForDate(MVAppRoot& root, Date date,
                                               const MonivaAccount* forBook = nullptr);

/// A row that was edited; its vendor by key.
struct EditedEntry {
  std::string eid;
  int type = 0;
  std::string vendor;
};
/// All rows in use that were entered or edited on the day, of whatever kind, the latest edit first.
Result<std::vector<EditedEntry>> allTransTestForDate(MVAppRoot& root, Date date);

/// The series whose next record is due by the end of the seventh day from today, the next one first. `syear`
/// is the kind the series makes, or 0. Plans of instalments are no series.
struct SeriesEntry {
  std::string eid;
  int syear = 0;
};
Result<std::vector<SeriesEntry>> needPayTransactionsInSevenDay(MVAppRoot& root);
/// The same for another time: those whose next record is due before the moment.
Result<std::vector<SeriesEntry>> seriesDueBefore(MVAppRoot& root, Date end);
/// Where those seven days end: the first moment that is not among them.
Date endOfSevenDays(MVAppRoot& root);

/// The templates of all kinds, the one used most first.
Result<std::vector<RecordTemplate>> getTransactionTemplateList(MVAppRoot& root);
/// The templates of expenses alone: what is bought again and again.
Result<std::vector<RecordTemplate>> shoppingLists(MVAppRoot& root);

}  // namespace moniva
