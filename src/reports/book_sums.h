#pragma once

#include <string_view>

#include "reports/trans_report_summary.h"

/// Sums over the records of one book, account or group, besides its reports. Days are counted whole. Refused
/// when the store cannot be read.
namespace moniva {

/// What an aggregate such as "sum(amount)" comes to over the live rows of the book in that time that a
/// condition on `transactions` selects; 0 where there are none. Both are fixed texts of the program.
Result<double> sumBetween(const MonivaAccount& book, std::string_view sum, std::string_view rows, Date from,
                          Date toDate);
/// What the settled records of a kind (11 income, 12 expense ...) come to.
Result<double> transactionSumFrom(const MonivaAccount& book, Date from, Date toDate, int type);
/// What the instalments that are still to be paid in that time come to.
Result<double> installmentSumFrom(const MonivaAccount& book, Date from, Date toDate);
/// What is to be expected of expenses in that time: each series by the records it has yet to make,
/// instalments that are neither paid nor to be reimbursed, and pending expenses, less pending income.
Result<double> repeatExpenseSumFrom(const MonivaAccount& book, Date from, Date to);
/// The months of a credit account in which there was something: what was charged is expense and transfers
/// out, what was paid back income and transfers in.
Result<TransReportSummary> getReportByMonthForDebtAccountFrom(const MonivaAccount& account, Date from,
                                                              Date to);
/// Whether anything in the book was in foreign money between the two moments, both not counted in.
Result<bool> hasForeignCurrencyTransactionsFrom(const MonivaAccount& book, Date from, Date to);
/// What a register of the row begins with on that day: the opening balance, and what came in and went out
/// before, by what the row tracks.
Result<double> getInitialToDisplay(const MonivaAccount& account, Date date);

}  // namespace moniva
