#include "reports/trans_report_summary.h"

#include "model/transaction_type.h"

namespace moniva {
namespace {

double chosen(const TransReportSummary& summary, double income, double expense) {
  if (summary.category) return summary.category->type == kind::kIncome ? income : expense;
  switch (summary.transactionType) {
    case kind::kIncome:
    case kind::kTransferIn:
      return income;
    case kind::kExpense:
    case kind::kTransferOut:
      return expense;
    default:
      return 0;
  }
}

}  // namespace

void TransReportSummary::takeLabels(const BookPeriods& periods) {
  const int firstYear = periods.getFiscalYear(beginDate);
  if (firstYear == periods.getFiscalYear(endDate)) year = firstYear;
  const int firstMonth = periods.getFiscalMonth(beginDate);
  const int yearOfMonth = periods.getYearForFiscalMonth(beginDate);
  if (firstMonth == periods.getFiscalMonth(endDate) &&
      yearOfMonth == periods.getYearForFiscalMonth(endDate)) {
    month = firstMonth;
    year = yearOfMonth;
  }
}

double TransReportSummary::amount() const {
  return chosen(*this, incomeAmount, expenseAmount);
}

double TransReportSummary::maxAmount() const {
  return chosen(*this, maxInSumAmount, maxOutSumAmount);
}

}  // namespace moniva
