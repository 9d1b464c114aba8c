#pragma once

#include <vector>

#include "base/result.h"
#include "reports/trans_report_summary.h"

namespace moniva {

/// The top-level categories of that type (11 income, 12 expense) in which the book has something in the
/// period (whole days), the largest amount first; equal amounts in the order of their titles. Refused when
/// the store cannot be read.
Result<std::vector<TransReportSummary>> largestCategories(const MonivaAccount& book, int type, Date from,
                                                          Date to);

}  // namespace moniva
