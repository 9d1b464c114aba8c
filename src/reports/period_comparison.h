#pragma once

#include "reports/period_walk.h"

namespace moniva {

/// What a period is compared with: the one before it, or the same one a year before.
enum class ComparedWith { previous, year };

/// The period that one is compared with. Of one that is cut, as the first and the last of a range may be, the
/// other is cut alike, by days. A week a year before is 52 weeks before, so that it has the same weekdays; a
/// day a year before 29 February is the 28th.
PeriodWalk::Period periodComparedWith(const Calendar& calendar, const BookPeriods& book, PeriodUnit unit,
                                      const PeriodWalk::Period& period, ComparedWith with);

}  // namespace moniva
