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

double TransReportSummary::amount() const {
  return chosen(*this, incomeAmount, expenseAmount);
}

double TransReportSummary::maxAmount() const {
  return chosen(*this, maxInSumAmount, maxOutSumAmount);
}

}  // namespace moniva
