#include "reports/period_walk.h"

#include <fmt/format.h>

namespace moniva {

PeriodWalk::PeriodWalk(const Calendar& calendar, BookPeriods book, PeriodUnit unit, Date begin, Date end)
    : calendar_(&calendar),
      book_(book),
      unit_(unit),
      texts_(calendar),
      begin_(begin),
      end_(end),
      start_(begin) {}

Date PeriodWalk::lastDayOf(Date start) const {
  switch (unit_) {
    case PeriodUnit::year:
      return book_.lastDateOfYear(start);
    case PeriodUnit::month:
      return book_.lastDateOfMonth(start);
    case PeriodUnit::week:
      // Weeks are counted in fixed seconds: from noon, a change of the clock leaves them on their day.
      return calendar_->dateBegin(book_.lastDateOfWeek(calendar_->dateBegin(start).plusSeconds(12 * 3600)));
    case PeriodUnit::day:
      break;
  }
  return start;
}

std::optional<PeriodWalk::Period> PeriodWalk::next() {
  if (calendar_->isAfterDay(start_, end_)) return std::nullopt;
  Period period{start_, lastDayOf(start_)};
  if (calendar_->isAfterDay(period.end, end_)) period.end = end_;
  start_ = calendar_->getNextDay(period.end);
  return period;
}

void PeriodWalk::name(TransReportSummary& summary) const {
  const Date start = summary.beginDate;
  switch (unit_) {
    case PeriodUnit::year:
      summary.year = book_.getFiscalYear(start);
      summary.title = fmt::format("{}", summary.year);
      return;
    case PeriodUnit::month: {
      const Date month = book_.namesakeOfMonth(start);
      const std::int64_t day = calendar_->dayNumber(month);
      const DaySystem::Parts at = calendar_->days().parts(day);
      summary.month = at.month;
      summary.year = at.year;
      summary.title = texts_.monthAndYear(month, day, at);
      return;
    }
    case PeriodUnit::week:
      summary.takeLabels(book_);
      summary.title = book_.getWeekPeriodShort(calendar_->dateBegin(start).plusSeconds(12 * 3600));
      return;
    case PeriodUnit::day:
      break;
  }
  nameDay(summary, calendar_->dayNumber(start));
}

void PeriodWalk::nameDay(TransReportSummary& summary, std::int64_t dayNumber) const {
  const DaySystem::Parts at = calendar_->days().parts(dayNumber);
  summary.year = at.year;
  summary.month = at.month;
  summary.day = at.day;
  summary.title = texts_.dayAndWeekday(summary.beginDate, dayNumber, at);
}

TransReportSummary PeriodWalk::list() const {
  TransReportSummary list;
  list.beginDate = begin_;
  list.endDate = end_;
  list.takeLabels(book_);
  const int firstYear = book_.getFiscalYear(begin_);
  const int lastYear = book_.getFiscalYear(end_);
  list.title =
      firstYear == lastYear ? fmt::format("{}", firstYear) : fmt::format("{} -- {}", firstYear, lastYear);
  return list;
}

}  // namespace moniva
