#pragma once

#include "reports/member_walk.h"

/// What a book or account spent on each category, or earned by it, and which categories it uses. Both kinds
/// of an item count: 11 and 13 for income, 12 and 14 for expense. Refused, all of them, when the store cannot
/// be read.
namespace moniva {

/// One row a category, the largest first: the top-level ones for a root, else what is below a top-level one,
/// itself among them where nothing below it was chosen. Settled records above zero in the period, whole days.
/// Records without a category, or without a subcategory, are in no row.
Result<TransReportSummary> getSubCategoryReportFor(const MVCategory& category, const MonivaAccount& book,
                                                   Date from, Date toDate, bool includePending = false);

/// What the category, top-level or not, comes to in the period, and the records behind that by their dates.
Result<double> transactionSumOfCate(const MonivaAccount& book, const MVCategory& category, Date from,
                                    Date toDate, bool includePending = false);
Result<std::vector<std::string>> transactionListOfCate(const MonivaAccount& book, const MVCategory& category,
                                                       Date from, Date toDate, const ListForm& form = {});
/// The same period by period, waited for.
Result<TransReportSummary> reportForCategory(const MonivaAccount& book, const MVCategory& category,
                                             const PeriodRange& range);

}  // namespace moniva
