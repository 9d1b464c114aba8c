#include <algorithm>

#include "reports/day_stretch.h"
#include "reports/transaction_report.h"

// A list of days. A query for each day would cost more than its rows do: each figure is read in one go, over
// a stretch of days so long that what begins and ends it does not count, and cut into days here.
namespace moniva {
namespace {

constexpr std::int64_t kDaysInOneGo = 512;
/// Room is made for so many days at first, some ten years of them.
constexpr std::int64_t kMostAtOnce = 4096;

struct DayFigure {
  int count = 0;
  double amount = 0;
};

/// What some of the rows came to on each day of a stretch, and where that goes in a summary.
struct FigureByDay {
  ReportFigure::Count count;
  ReportFigure::Amount amount;
  bool isSettled;
  std::vector<DayFigure> days;
};

/// Adds up rows of a date and an amount, in the order in which a query for the day alone would, so that it
/// comes to the same, to the last bit.
bool addUp(Run rows, DayStretch& stretch, std::vector<DayFigure>& days) {
  days.resize(stretch.size());
  while (rows.next()) {
    const double amount = rows.real(1);
    stretch.cut(rows.real(0), [&](std::size_t day) {
      ++days[day].count;
      days[day].amount += amount;
    });
  }
  return rows.ok();
}

/// All figures of a stretch; what is pending of them too, if that is asked for.
Result<std::vector<FigureByDay>> figuresByDay(Connection& db, const ReportQueries& queries, Date begin,
                                              Date end, bool withPending, DayStretch& stretch) {
  std::vector<FigureByDay> figures;
  for (const Paid paid : {Paid::yes, Paid::no}) {
    if (paid == Paid::no && !withPending) break;
    for (std::size_t i = 0; i < queries.figures().size(); ++i) {
      const ReportFigure& of = queries.figures()[i];
      if (paid == Paid::no && of.pendingCount == nullptr) continue;
      const bool settled = paid == Paid::yes;
      figures.push_back(
          {settled ? of.count : of.pendingCount, settled ? of.amount : of.pendingAmount, settled, {}});
      if (!addUp(queries.rows(db, i, begin, end, paid), stretch, figures.back().days)) {
        return tl::make_unexpected(db.refusal());
      }
    }
  }
  return figures;
}

}  // namespace

Result<> TransactionReport::walkDays(Connection& db, const PeriodWalk& names, TransReportSummary& list,
                                     const Hear& hear, int run) const {
  const Calendar& calendar = root_.calendar();
  const ReportQueries queries = this->queries();
  const std::int64_t last = calendar.dayNumber(endDate_);
  std::size_t heard = kFirstHeard;
  for (std::int64_t first = calendar.dayNumber(beginDate_); first <= last; first += kDaysInOneGo) {
    const std::int64_t lastInOneGo = std::min(last, first + kDaysInOneGo - 1);
    const Date begin = calendar.beginOfDay(first);
    const Date end = calendar.endOfDay(lastInOneGo);
    DayStretch stretch(calendar, first, lastInOneGo);
    const auto figures = figuresByDay(db, queries, begin, end, includePending_, stretch);
    if (!figures) return tl::make_unexpected(figures.error());
    std::vector<std::vector<std::string>> pending(includePending_ ? stretch.size() : 0);
    if (includePending_) {
      const auto records = queries.records(db, begin, end, Paid::no);
      if (!records) return tl::make_unexpected(records.error());
      for (const auto& record : *records) {
        stretch.cut(record.datetime.secondsSince1970,
                    [&](std::size_t day) { pending[day].push_back(record.eid); });
      }
    }
    for (std::size_t day = 0; day < stretch.size(); ++day) {
      list.isPartial = isToStop(run);
      if (list.isPartial) {
        root_.platform().log.line("== TransactionReport getReportByDay 查询被中断");
        return {};
      }
      const bool isEmpty = std::ranges::all_of(
          *figures, [&](const FigureByDay& figure) { return figure.days[day].count == 0; });
      if (isEmpty && !includeEmpty_) continue;
      if (!stretch.exists(day)) continue;
      if (list.listArray.empty())
        list.listArray.reserve(static_cast<std::size_t>(std::min(kMostAtOnce, last - first + 1)));
      TransReportSummary& summary = list.listArray.emplace_back();
      setUp(summary, stretch.begin(day), stretch.begin(day));
      for (const auto& figure : *figures) {
        summary.*figure.count += figure.days[day].count;
        summary.*figure.amount += figure.days[day].amount;
        if (figure.isSettled) summary.count += figure.days[day].count;
      }
      if (includePending_) {
        for (auto& eid : pending[day]) summary.pendinglistArray.emplace_back(root_).eid = std::move(eid);
      }
      names.nameDay(summary, first + static_cast<std::int64_t>(day));
      list.addUp(summary);
      if (hear && list.listArray.size() == heard) {
        hear(list);
        heard *= 2;
      }
    }
  }
  return {};
}

}  // namespace moniva
