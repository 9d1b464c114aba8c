#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "base/result.h"
#include "model/record_names.h"
#include "reports/trans_report_summary.h"
#include "storage/connection.h"

/// What all breakdowns have in common: one grouped query, a row for each member, the largest first.
namespace moniva {

/// One row of a grouped query: the sum, the member's key and the number of records, in its first three
/// columns.
struct MemberSum {
  double amount = 0;
  std::string key;
  int count = 0;
  std::string above;  ///< key of the category that records name with a subcategory
};
/// Reads the query whole; refused when it could not be read.
Result<std::vector<MemberSum>> memberSums(Connection& db, std::string_view sql,
                                          const std::vector<Value>& slots);
/// The keys a query answers in its first column; likewise.
Result<std::vector<std::string>> keysOf(Connection& db, std::string_view sql,
                                        const std::vector<Value>& slots);

/// The condition for what counts, as it follows "deleted = 0".
constexpr std::string_view paidCondition(bool includePending) {
  return includePending ? "" : " and paid = 1";
}

/// The further kind of item that categories count beside income (11) or expense (12).
constexpr int furtherKind(int type) {
  return type == kind::kIncome ? kind::kFurtherIncome : kind::kFurtherExpense;
}

/// How the records of a member are listed: by date, and whether those still to be paid are in the list.
struct ListForm {
  bool newestFirst = false;
  bool includePending = false;

  constexpr std::string_view order() const { return newestFirst ? " DESC" : ""; }
};

/// Puts an amount and a count into the fields for income (`isIncome`) or expense.
void putAmount(TransReportSummary& summary, bool isIncome, double amount, int count);

/// A breakdown in the making.
class Breakdown {
 public:
  /// Of income (11) or expense (12) of a book or account, over whole days; made while `db` has one snapshot.
  /// `rows` is how many there may be.
  Breakdown(Connection& db, const MonivaAccount& of, int type, Date from, Date to, std::size_t rows = 0);

  /// A row to be filled: it has the bounds, their labels and the type.
  const TransReportSummary& emptyRow() const { return empty_; }
  void add(TransReportSummary row) { list_.listArray.push_back(std::move(row)); }
  /// Adds a row for the category of the key; a key that names none any more stands for itself, below the
  /// category records name with it. The amount is income or expense as the category is.
  void addCategory(const MemberSum& sum, RecordNames& names);
  std::vector<TransReportSummary>& rows() { return list_.listArray; }
  /// The whole: rows by amount, equal ones as they came; their total, their number and the largest.
  /// Refused when something, such as a name, could not be read meanwhile.
  Result<TransReportSummary> take();

 private:
  Connection* db_;
  MVAppRoot* root_;
  TransReportSummary empty_;
  TransReportSummary list_;
};

}  // namespace moniva
