#pragma once

#include <optional>
#include <string>
#include <vector>

#include "model/mv_category.h"

namespace moniva {

/// What one period comes to: counts and sums of income, expense and transfers, with its label and bounds.
/// Lists of periods and breakdowns are summaries with child summaries. A plain record: it can be copied and
/// kept.
struct TransReportSummary {
  std::string title;
  /// Label of the fiscal year, the fiscal month, and the day; 0 where the period has none.
  int year = 0;
  int month = 0;
  int day = 0;
  Date beginDate;
  Date endDate;
  /// The report type code the summary was made for.
  int transactionType = 12;
  std::optional<MVCategory> category;

  /// Transactions of each kind, and the four counts added up. In a whole report of an account (1050, 2312)
  /// what came in by transfer is income as well and so is counted twice.
  int count = 0;
  int incomeCount = 0;
  int expenseCount = 0;
  int transferinCount = 0;
  int transferoutCount = 0;

  double incomeAmount = 0;
  double expenseAmount = 0;
  double transferinAmount = 0;
  double transferoutAmount = 0;

  /// In a list of periods: the largest income and the largest expense of any of them.
  double maxInSumAmount = 0;
  double maxOutSumAmount = 0;
  /// A stored total.
  double sumAmount = 0;

  std::vector<TransReportSummary> listArray;

  /// Takes the year's label when both bounds are in one fiscal year, the month's and its year's when they are
  /// in one book month.
  void takeLabels(const BookPeriods& periods);

  /// The amount the summary is about: by its category's type, else by the report type (11 and 23 income, 12
  /// and 33 expense; 0 for codes that hold both).
  double amount() const;
  /// The same choice between the two maxima.
  double maxAmount() const;
};

}  // namespace moniva
