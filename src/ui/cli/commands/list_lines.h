#pragma once

#include <optional>
#include <set>
#include <string>
#include <vector>

#include "model/record_names.h"
#include "reports/history.h"
#include "ui/cli/transaction_rows.h"

/// What the lists of records have in common.
namespace moniva {

/// One line of a list: a row, and what is said of it at the line's end in place of the usual.
struct ListLine {
  MVTransaction row;
  std::optional<std::string> mark;
};

/// Records as lines, each once, however many of its rows a list has.
class ListedRecords {
 public:
  explicit ListedRecords(Session& session) : session_(session), names_(session.root()) {}

  /// The record that the row is part of: the row that stands for it, with what the whole comes to, its
  /// categories and vendors, and what it is made of. Rows of other kinds stand for themselves, a transfer for
  /// both its sides. Nothing for a record that was given before, and for a row that is not there.
  std::optional<ListLine> record(const std::string& eid);
  /// The row alone; of a payment with the category and vendor of its record.
  std::optional<ListLine> row(const std::string& eid);
  /// What is still to be paid, in its currency.
  std::optional<ListLine> row(const UnpaidEntry& entry);
  /// An instalment, with its place in the plan: "3 of 12".
  std::optional<ListLine> installment(const std::string& eid);
  /// A series by its next record, with its rule: "monthly".
  std::optional<ListLine> series(const std::string& eid);
  /// Whatever is pending and dated before that, instalments too; what is overdue is among it.
  std::vector<ListLine> pendingBefore(Date end);

 private:
  Session& session_;
  RecordNames names_;
  std::set<std::string> given_;
};

/// "monthly"; "" for what is no rule.
std::string ruleText(const Session& session, std::string_view rule);

/// The lines of one day, and sums below them.
struct ListDay {
  Date date;
  std::vector<ListLine> lines;
  std::vector<UnpaidDay::Sum> sums;
  int sday = 0;  ///< the day's key, 0 where it has none
};
/// Prints days under headings that mark today and what is overdue; with --json an array of days. `totals`
/// are told below all of them.
void printDays(Session& session, bool csv, std::vector<ListDay> days,
               const std::vector<UnpaidDay::Sum>& totals, const std::string& none);
/// Prints lines as they are.
void printLines(Session& session, bool csv, const std::vector<ListLine>& lines, const std::string& none);

}  // namespace moniva
