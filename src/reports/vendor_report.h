#pragma once

#include "reports/member_walk.h"

/// What a book or account spent at each vendor, or got from it. No vendor is the entry `Vendor::noVendor`.
/// Refused, all of them, when the store cannot be read.
namespace moniva {

/// One row a vendor, the largest first: settled records above zero of the type (11 or 12) in the period,
/// whole days. All that names no vendor is one row.
Result<TransReportSummary> getReportForAllVendor(const MonivaAccount& book, int type, Date fromDate,
                                                 Date toDate, bool includePending = false);

/// The records of the vendor and the type in the period, of any amount, by their dates.
Result<std::vector<std::string>> getSpendListOfVendor(const MonivaAccount& book, const Vendor& vendor,
                                                      int type, Date from, Date toDate,
                                                      const ListForm& form = {});

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
