#pragma once

#include "reports/member_walk.h"

namespace moniva {

/// The breakdown of a book by all its subcategories, for the views of a screen. The object may go before the
/// report ends.
class CategoryReportQuery {
 public:
  /// What a view is told: the breakdown, on the main thread.
  using ViewBlock = std::function<void(const TransReportSummary&)>;

  /// Of expenses of the present day, until the fields say otherwise.
  explicit CategoryReportQuery(const MonivaAccount& book)
      : monivaAccount(book), beginDate(book.root().now()), endDate(beginDate) {}

  MonivaAccount monivaAccount;
  /// First and last day; whole days are meant.
  Date beginDate;
  Date endDate;
  /// Income (11) or expense (12).
  int transactionType = 12;
  bool includePending = false;

  // Who is told at the end: those that are set, in this order.
  ViewBlock updateCategoryReportView;
  ViewBlock updateIncomeAndOutcomeReportView;
  ViewBlock updateExpenseTimeReportView;
  /// Told instead of them when the store could not be read; the fault log has it too.
  std::function<void(const Refusal&)> queryFailed;

  /// Makes the breakdown on the database queue: one row a subcategory, the largest first, refunds taken off;
  /// an item that chose nothing below its category counts with that. Records without a subcategory are in no
  /// row.
  void getReportForAllSubCategory() const;
  /// The same, waited for; the blocks are not called.
  Result<TransReportSummary> reportForAllSubCategory() const;
};

}  // namespace moniva
