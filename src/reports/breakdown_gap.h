#pragma once

#include "base/result.h"
#include "model/mv_category.h"

namespace moniva {

/// What a breakdown is by.
enum class BreakdownBy { category, subcategory, vendor, account, currency };

/// Why the rows of a breakdown may come to something else than a report of the same period says. The rows and
/// the parts come to what is reported.
struct BreakdownGap {
  double reported = 0;
  double refunded = 0;      ///< amounts of zero and below; they are in a report's sum
  double unfiled = 0;       ///< what has no category, or no subcategory
  double costShares = 0;    ///< shares of spread costs, which no account paid by themselves
  double otherMoments = 0;  ///< not paid yet or on other days; below zero: paid for other days

  bool any() const { return refunded != 0 || unfiled != 0 || costShares != 0 || otherMoments != 0; }
};

/// The gap of a breakdown of income (11) or expense (12) that comes to `total`, over whole days; `of` is the
/// category whose subcategories it has, if it is of one. Refused when the store cannot be read.
Result<BreakdownGap> gapOf(const MonivaAccount& book, BreakdownBy by, int type, Date from, Date to,
                           double total, bool includePending, const MVCategory* of = nullptr);

}  // namespace moniva
