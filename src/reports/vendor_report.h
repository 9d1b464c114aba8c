#pragma once

#include "reports/member_walk.h"

/// What a book or account spent at each vendor, or got from it. No vendor is the entry `Vendor::noVendor`.
/// Refused, all of them, when the store cannot be read.
namespace moniva {

/// One vendor's periods, waited for: settled records of the type (11 or 12), unless the range takes pending
/// ones too.
Result<TransReportSummary> reportForVendor(const MonivaAccount& book, const Vendor& vendor, int type,
                                           const PeriodRange& range);
// The same by month and by year, of the vendor's own type (income for a payer), made on the database queue;
// `completion` hears of it on the main thread.
void getReportByMonthForVendor(const MonivaAccount& book, const Vendor& vendor, Date fromDate, Date toDate,
                               WalkCompletion completion);
void getReportByYearForVendor(const MonivaAccount& book, const Vendor& vendor, Date fromDate, Date toDate,
                              WalkCompletion completion);

}  // namespace moniva
