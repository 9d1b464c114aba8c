#include "reports/trans_report_summary.h"

#include <algorithm>

#include "model/transaction_type.h"

namespace moniva {
namespace {

double chosen(const TransReportSummary& summary, double income, double expense) {
  if (summary.category) return summary.category->type == kind::kIncome ? income : expense;
  if (summary.vendor && summary.vendor->type == Vendor::kPayer) return income;
  if (summary.vendor && summary.vendor->type == Vendor::kPayee) return expense;
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

void TransReportSummary::take(TransReportSummary period) {
  addUp(period);
  listArray.push_back(std::move(period));
}

void TransReportSummary::addUp(const TransReportSummary& period) {
  count += period.count;
  incomeCount += period.incomeCount;
  expenseCount += period.expenseCount;
  transferinCount += period.transferinCount;
  transferoutCount += period.transferoutCount;
  incomeAmount += period.incomeAmount;
  expenseAmount += period.expenseAmount;
  transferinAmount += period.transferinAmount;
  transferoutAmount += period.transferoutAmount;
  incomePendingCount += period.incomePendingCount;
  expensePendingCount += period.expensePendingCount;
  incomePendingAmount += period.incomePendingAmount;
  expensePendingAmount += period.expensePendingAmount;
  maxInSumAmount = std::max(maxInSumAmount, period.incomeAmount);
  maxOutSumAmount = std::max(maxOutSumAmount, period.expenseAmount);
}

double TransReportSummary::amount() const {
  return chosen(*this, incomeAmount, expenseAmount);
}

double TransReportSummary::maxAmount() const {
  return chosen(*this, maxInSumAmount, maxOutSumAmount);
}

}  // namespace moniva
