#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "reports/trans_report_summary.h"
#include "storage/connection.h"

namespace moniva {

/// Which rows count: those that are settled, or those still pending.
enum class Paid { no, yes };

/// One figure of a summary: which rows it takes and where their count and sum go. A kind may have several.
struct ReportFigure {
  using Count = int TransReportSummary::*;
  using Amount = double TransReportSummary::*;

  /// A fixed condition on `transactions`, besides the book, the period and what every report leaves out. One
  /// slot in it takes the key of the report's category.
  std::string rows;
  Count count;
  Amount amount;
  // Where what is pending of the same rows goes; null where another figure has it.
  Count pendingCount = nullptr;
  Amount pendingAmount = nullptr;

  static ReportFigure income(std::string rows);
  static ReportFigure expense(std::string rows);
  static ReportFigure transferIn(std::string rows);
  static ReportFigure transferOut(std::string rows);
};

/// The queries of one report: its figures over the rows of one book, account or group. Deleted rows never
/// count. The bounds are moments, both counted in.
class ReportQueries {
 public:
  /// No figures at all.
  ReportQueries() = default;
  /// `holder` is the condition that selects the book's rows, with one slot for `key`.
  ReportQueries(std::string_view holder, std::string key, std::vector<ReportFigure> figures,
                std::optional<std::string> categoryKey = std::nullopt);
  /// The kinds by which an account's money is told in full: income with what was borrowed and repaid to it,
  /// expense with what was lent and repaid by it, transfers in and out.
  static ReportQueries ofFixedKinds(const MonivaAccount& book);

  const std::vector<ReportFigure>& figures() const { return figures_; }
  /// Adds what the figures come to in that time. Refused when the store cannot be read.
  Result<> sum(Connection& db, Date begin, Date end, Paid paid, TransReportSummary& into) const;
  /// `datetime` and `amount` of the rows of a figure, in the order in which `sum` adds them up.
  Run rows(Connection& db, std::size_t figure, Date begin, Date end, Paid paid) const;
  struct Record {
    std::string eid;
    Date datetime;
  };
  /// The rows of all figures together, the earliest first.
  Result<std::vector<Record>> records(Connection& db, Date begin, Date end, Paid paid) const;

 private:
  struct Texts {
    std::string sum;
    std::string rows;
  };
  Run run(Connection& db, const std::string& sql, Date begin, Date end) const;
  std::string composed(std::string_view columns, Paid paid, std::string_view rows) const;

  std::string holder_;
  std::string key_;
  std::optional<std::string> categoryKey_;
  std::vector<ReportFigure> figures_;
  std::vector<Texts> settled_;
  std::vector<Texts> pending_;
};

}  // namespace moniva
