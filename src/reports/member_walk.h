#pragma once

#include <atomic>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "base/result.h"
#include "reports/breakdown.h"
#include "reports/period_walk.h"
#include "reports/report_block.h"

/// One member of a breakdown (a vendor, an account, a currency) period by period: what these walks share.
namespace moniva {

/// Which periods a walk has, and what it counts.
struct PeriodRange {
  PeriodUnit unit = PeriodUnit::month;
  /// First and last day; whole days are meant.
  Date from;
  Date to;
  /// Whether periods without records stay in the list.
  bool includeEmpty = false;
  /// Whether what is still to be paid counts too.
  bool includePending = false;
  /// Ends the walk before its next period where it is set; has to outlive the walk.
  const std::atomic<bool>* stopLoadingData = nullptr;
};

/// What a walk asks of each period: the sum and the count of the member's rows. The first two slots take the
/// bounds of the period, the others `slots`, whose texts have to outlive the walk.
struct PeriodQuery {
  std::string sql;
  std::vector<Value> slots;
};

/// Hears of a walk's end, on the main thread.
using WalkCompletion = std::function<void(const Result<TransReportSummary>&)>;

/// The periods of the range in which the member has something, in date order, as the `listArray` of a summary
/// of the whole range. Each is a copy of `member` (who it is, and its report type, 11 or 12) with bounds,
/// labels, title, sum and count. One query a period, all in one snapshot; refused when the store cannot be
/// read.
Result<TransReportSummary> walkPeriods(Connection& db, const MonivaAccount& of, const PeriodQuery& query,
                                       const TransReportSummary& member, const PeriodRange& range);

}  // namespace moniva
