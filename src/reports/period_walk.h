#pragma once

#include <optional>

#include "calendar/book_periods.h"
#include "calendar/day_texts.h"
#include "reports/trans_report_summary.h"

namespace moniva {

enum class PeriodUnit { day, week, month, year };

/// The periods that a range of days is split into, by a book's own first day of week, month and year, one
/// after the other. The first and the last are cut to the range.
class PeriodWalk {
 public:
  /// First and last day of a period; whole days are meant.
  struct Period {
    Date begin;
    Date end;
  };

  /// `calendar` must outlive the walk. A range that ends before it begins has no periods.
  PeriodWalk(const Calendar& calendar, BookPeriods book, PeriodUnit unit, Date begin, Date end);

  /// The next period, nothing after the last.
  std::optional<Period> next();

  /// Titles and labels a summary by the period its `beginDate` is in: a year "2024", a month "March, 2024" (a
  /// month that is cut keeps the name of the whole one), a week by its days, a day "Mar 5, 2024 Tuesday".
  void name(TransReportSummary& summary) const;
  /// The same for a day whose number is known.
  void nameDay(TransReportSummary& summary, std::int64_t dayNumber) const;
  /// A summary of the whole range, with its bounds, year and month labels and its title: the fiscal year, or
  /// "2023 -- 2024".
  TransReportSummary list() const;

  PeriodUnit unit() const { return unit_; }

 private:
  Date lastDayOf(Date start) const;

  const Calendar* calendar_;
  BookPeriods book_;
  PeriodUnit unit_;
  mutable DayTexts texts_;
  Date begin_;
  Date end_;
  Date start_;
};

}  // namespace moniva
