#pragma once

#include "reports/member_walk.h"

/// What of a book or account was entered in foreign currencies, each in its own units. Refused, all of them,
/// when the store cannot be read.
namespace moniva {

/// One row a foreign currency, the largest figure first: settled records of the type (11 or 12) in the
/// period, whole days. The sum, in the currency's units, is the row's `expenseAmount` whichever the type, and
/// its `incomeAmount` besides for income. Totals add up units of different currencies and mean little.
Result<TransReportSummary> getReportForAllCurrency(const MonivaAccount& book, int type, Date fromDate,
                                                   Date toDate, bool includePending = false);

/// The records of the currency and the type in the period, by their dates.
Result<std::vector<std::string>> getSpendListOfCurrency(const MonivaAccount& book,
                                                        const std::string& currency, int type, Date from,
                                                        Date toDate, const ListForm& form = {});

/// One currency's periods, waited for: settled records of the type (11 or 12), unless the range takes pending
/// ones too.
Result<TransReportSummary> reportForCurrency(const MonivaAccount& book, const std::string& currency, int type,
                                             const PeriodRange& range);
// The same by month and by year, made on the database queue; `completion` hears of it on the main thread.
void getReportByMonthForCurrency(const MonivaAccount& book, const std::string& currency, int type,
                                 Date fromDate, Date toDate, WalkCompletion completion);
void getReportByYearForCurrency(const MonivaAccount& book, const std::string& currency, int type,
                                Date fromDate, Date toDate, WalkCompletion completion);

}  // namespace moniva
