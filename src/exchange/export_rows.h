#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/decimal.h"
#include "base/result.h"
#include "model/moniva_account.h"

/// The rows of the store that an export writes, in the order of their dates. What a person sees as one record
/// of several rows comes row by row, but for the two sides of a transfer.
namespace moniva {

/// Takes a piece of what is exported; a refusal ends the export.
using ExportSink = std::function<Result<>(std::string_view bytes)>;

/// Which records are exported.
struct ExportRequest {
  std::optional<Date> from;
  std::optional<Date> to;  ///< the last moment that counts
  /// The book or account whose records are meant, or a group of either; all where none is given.
  std::optional<MonivaAccount> of;
  /// Those too that wait for their day.
  bool pending = false;
  /// Told now and then how many rows are done, and of how many.
  std::function<void(std::size_t done, std::size_t total)> progress;
};

/// What an export wrote and what it left out, by why it did.
struct ExportOutcome {
  std::int64_t rows = 0;        ///< written, of the store
  std::int64_t lines = 0;       ///< of the table, or transactions of the journal
  std::int64_t accounts = 0;    ///< of the journal
  std::int64_t pending = 0;     ///< waiting for their day
  std::int64_t undated = 0;     ///< without a date, where a period was asked for
  std::int64_t unmeasured = 0;  ///< of an amount that is no number or beyond all measure
  std::int64_t unknown = 0;     ///< of a kind that is not known, or that this form has no place for
  std::int64_t noMoney = 0;     ///< budgets, templates and what series and plans are made from
};

/// One row, as the store has it.
struct ExportRow {
  std::string eid;
  int type = 0;
  bool isPayment = false;
  bool paid = true;
  Decimal amount;
  double amount2 = 0;
  std::string currency2;
  std::string note;
  std::string account;
  std::string book;
  std::string category;
  std::string subcategory;  ///< blank for none, and where it is the category itself
  std::string vendor;
  std::string group;  ///< `transferEID`
  /// Within the years 1400 to 9999, which other programs know; a row without a date stands at either end.
  Date datetime;

  bool isIncome() const { return type == kind::kIncome || type == kind::kFurtherIncome; }
  /// Expense or income, a further share too.
  bool isSpend() const { return type >= kind::kIncome && type <= kind::kFurtherExpense; }
  bool isFurther() const { return type == kind::kFurtherIncome || type == kind::kFurtherExpense; }
  bool isTransfer() const { return type == kind::kTransferIn || type == kind::kTransferOut; }
};

/// The keys of the book or account asked for, of a group those of its members; none where all are.
Result<std::vector<std::string>> membersOf(const ExportRequest& request);

/// What money of that type does to the account of its row: 1 comes in, -1 goes out. 0 for a kind that moves
/// none or is not known. Further kinds (13, 14) go the way of those they are shares of.
int directionOf(int type);

/// Rows that come to the same accounts of a journal.
struct ExportKind {
  ExportRow row;             ///< without what tells one from the other
  std::int64_t upToEnd = 0;  ///< how many are dated within the period or before it
};

/// The rows of a request; every read is of the connection's present snapshot.
class ExportRows {
 public:
  ExportRows(Connection& db, const ExportRequest& request);

  /// All kinds there are, in an order that only depends on the rows, and what they leave out.
  Result<std::vector<ExportKind>> survey(ExportOutcome& outcome);
  /// Hands over the rows up to the end of the period, by date; with `fromStart` those before it too. The two
  /// sides of a transfer that are dated and settled alike come together, A first. Rows whose amount cannot be
  /// measured are counted instead.
  Result<> each(bool fromStart, ExportOutcome& outcome,
                const std::function<Result<>(const ExportRow& row, const ExportRow* otherSide)>& take);

 private:
  Date start() const { return request_.from.value_or(Date{-1e18}); }
  Date end() const { return request_.to.value_or(Date{1e18}); }
  /// What a statement binds: bounds where a period was asked for, and the key of the book or account.
  std::vector<Value> slots(std::initializer_list<Value> bounds) const;

  Connection& db_;
  const ExportRequest& request_;
  bool isPeriod_ = false;
  std::string scope_;  ///< the condition of the book or account, with two slots for its key
  std::size_t total_ = 0;
};

}  // namespace moniva
