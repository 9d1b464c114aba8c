#pragma once

#include "reports/member_walk.h"

/// Which accounts paid what a book spent, or got what it earned. Records that have payments count by these,
/// on their days, where they lie wholly in the book; records without an account, and those in several books
/// that have payments, are one row: `MonivaAccount::getNoneAccount`. Shares of spread costs are left out of
/// the rows. Of a group of accounts the rows are its members. Refused, all of them, when the store cannot be
/// read.
namespace moniva {

/// One row a paying account, the largest first: settled amounts above zero of the type (11 or 12) in the
/// period, whole days.
Result<TransReportSummary> getReportForPaymentAccount(const MonivaAccount& book, int type, Date fromDate,
                                                      Date toDate, bool includePending = false);

/// The rows the account paid by in the period, payments or whole records, by their dates.
Result<std::vector<std::string>> getSpendListOfPayment(const MonivaAccount& book,
                                                       const MonivaAccount& payment, int type, Date from,
                                                       Date toDate, const ListForm& form = {});

/// One account's periods, waited for, or those of all accounts together; records of any amount that are no
/// payments count, too.
Result<TransReportSummary> reportForPayment(const MonivaAccount& book,
                                            const std::optional<MonivaAccount>& payment, int type,
                                            const PeriodRange& range);
// The same by day, month and year, made on the database queue; `completion` hears of it on the main thread.
void getReportByDayForPayment(const MonivaAccount& book, const std::optional<MonivaAccount>& payment,
                              int type, Date fromDate, Date toDate, WalkCompletion completion);
void getReportByMonthForPaymentOnBackgroundThread(const MonivaAccount& book,
                                                  const std::optional<MonivaAccount>& payment, int type,
                                                  Date fromDate, Date toDate, WalkCompletion completion);
void getReportByYearForPayment(const MonivaAccount& book, const std::optional<MonivaAccount>& payment,
                               int type, Date fromDate, Date toDate, WalkCompletion completion);

}  // namespace moniva
