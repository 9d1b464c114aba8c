#pragma once

#include <boost/json/array.hpp>
#include <optional>

#include "model/mv_transaction.h"
#include "ui/cli/csv_out.h"
#include "ui/cli/table.h"

namespace moniva {

/// The row under the names of its fields.
boost::json::object jsonOf(Session& session, const MVTransaction& row);

/// Rows of `transactions` of any kind as lines of a table, as JSON or as CSV, whichever the person asked for:
///
///     Record    Date          What                  With    Account or book      Amount
///     c0ffee12  Mar 5, 2024   Food - Bakery         Rossi   Cash                  €4.20  pending
class TransactionRows {
 public:
  /// Both have to outlive the object.
  explicit TransactionRows(Session& session, bool csv = false);

  /// Marks what was looked for, in one of these forms. Where it is in a note that the row does not show, the
  /// note comes along.
  void markHits(std::vector<std::string> forms);
  /// A mark stands at the end of the line instead of what the row says of itself; only the table has it.
  void add(const MVTransaction& row, const std::optional<std::string>& mark = {});
  /// Loads the row of `eid` and adds it; one that is not there any more is left out.
  void addRow(std::string_view eid);
  /// A heading above the rows that follow; only the table has it.
  void addHeading(const std::string& text, const Ink& ink = ink::bold);
  /// A line below some rows with what they come to; only the table has it.
  void addSum(const std::string& text, const std::string& amount);
  /// A line below all rows, with its amount, and a rule above the first; only the table has it.
  void addTotal(const std::string& text, const std::string& amount);
  bool empty() const { return rows_.empty() && table_.empty(); }
  /// Prints what was added: of nothing the table says `none`.
  void print(const std::string& none);
  /// The rows as JSON, of which print() makes no use then.
  boost::json::array takeJson() { return std::move(rows_); }

 private:
  Session& session_;
  bool csv_;
  RecordNames names_;
  boost::json::array rows_;
  std::vector<std::string> hits_;
  Table table_;
  bool hasTotal_ = false;
};

/// The type of the records that it is, or that a series or template of its kind makes.
int recordTypeOf(const MVTransaction& row);
/// What the row is about: its category, "Cash > Checking", or its note.
std::string whatText(const Session& session, const MVTransaction& row);
/// What is told beside that: the vendor, else the note.
std::string withText(const MVTransaction& row);
/// Whether rows of the type bring money in.
bool comesIn(int type);
/// What the row comes to in its currency, with a sign where money comes in: "€12.50", "+€1,200.00".
std::string amountText(Session& session, const MVTransaction& row);

}  // namespace moniva
