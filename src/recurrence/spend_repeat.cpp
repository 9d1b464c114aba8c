#include "recurrence/spend_repeat.h"

#include <algorithm>
#include <set>

#include "model/entry_checks.h"
#include "recurrence/occurrence_maker.h"
#include "recurrence/series_days.h"
#include "reminders/bill_reminders.h"
#include "storage/writes.h"

namespace moniva {
namespace {

/// How a series goes from date to date.
struct Course {
  const Calendar& home;
  RepeatRule rule;
  int firstDay;

  Date next(Date from) const { return nextRepeatDate(home, rule, from, firstDay); }
  /// Whether a series that comes on the one day comes on the other as well.
  bool joins(std::int64_t one, std::int64_t other) const {
    const std::int64_t last = std::max(one, other);
    Date date = home.beginOfDay(std::min(one, other));
    while (home.dayNumber(date) < last) date = next(date);
    return home.dayNumber(date) == last;
  }
};

/// The days from the one to the other that are served: those of occurrences, each where it was made. Deleted
/// by a person counts. One that was made for another day of the series, and brought to this one by a person,
/// serves that day instead.
Result<std::set<std::int64_t>> daysServed(MVAppRoot& root, Connection& db, std::string_view seed,
                                          const Course& course, Date from, Date to) {
  const Calendar& calendar = root.calendar();
  std::set<std::int64_t> days;
  OwnDays own(calendar);
  // A day begins in some zone, and ends in another, more than a day away from here.
  constexpr int kZonesApart = 2;
  Run run = db.query(
      "select eid, datetime, barcode, sday from transactions where repeat_seed = ? and datetime > ? and"
      " datetime < ? and deleted < 2",
      {seed, calendar.endOfDay(calendar.dayNumber(from) - kZonesApart - 1),
       calendar.beginOfDay(calendar.dayNumber(to) + kZonesApart + 1)});
  while (run.next()) {
    const auto day = own.of(run.date(1), run.text(2), run.integer(3));
    const auto madeFor = dayMadeFor(seed, run.text(0));
    days.insert(madeFor && course.joins(*madeFor, day) ? *madeFor : day);
  }
  if (!run.ok()) return tl::make_unexpected(db.refusal());
  return days;
}

/// Completes what the seed says of its kind and beginning.
Result<> complete(MVAppRoot& root, const SeriesSeed& seed) {
  if (!seed.isKindTold) {
    auto told = write(root, "update transactions set syear = ? where eid = ?", seed.makes, seed.eid);
    if (!told) return told;
  }
  if (seed.begun != Date{}) return {};
  const auto begun = beginOfSeries(root, seed);
  if (!begun) return tl::make_unexpected(begun.error());
  return write(root, "update transactions set payDate = ?, sday = ? where eid = ?", *begun,
               seed.home->day(*begun), seed.eid);
}

/// A series on its way from one date to another.
class SeriesWalk {
 public:
  SeriesWalk(MVAppRoot& root, const SeriesSeed& seed, const Course& course)
      : root_(root), seed_(seed), course_(course) {}

  /// Makes what the days served lack, and brings along what depends on it.
  Result<SeriesProgress> run(const std::set<std::int64_t>& served, Date from, Date to) {
    const std::int64_t last = root_.calendar().dayNumber(to);
    SeriesProgress progress;
    for (progress.next = from;; progress.next = course_.next(progress.next)) {
      const std::int64_t number = seed_.home->dayNumber(progress.next);
      progress.ended = seed_.end && number > seed_.home->dayNumber(*seed_.end);
      if (progress.ended || number > last) break;
      if (served.contains(number)) continue;
      progress.more = progress.made == kMostOccurrencesAtOnce;
      if (progress.more) break;
      const auto made = make(number);
      if (!made) return tl::make_unexpected(made.error());
      if (*made) ++progress.made;
    }
    if (progress.made > 0) {
      if (auto finished = maker_->finish(); !finished) return tl::make_unexpected(finished.error());
    }
    return progress;
  }

 private:
  Result<bool> make(std::int64_t number) {
    if (!maker_) {
      auto maker = OccurrenceMaker::of(root_, seed_);
      if (!maker) return tl::make_unexpected(maker.error());
      maker_.emplace(std::move(*maker));
    }
    return maker_->make(number);
  }

  MVAppRoot& root_;
  const SeriesSeed& seed_;
  const Course& course_;
  std::optional<OccurrenceMaker> maker_;  ///< once something is due
};

/// Schedules the reminders of the record to come, where they are wanted. A host that will not schedule keeps
/// no record from being made; the upkeep of reminders tries again, and tells.
void remindOfNext(MVAppRoot& root, const std::string& eid) {
  MVTransaction wanted(root);
  wanted.eid = eid;
  if (!notificationEnabled(wanted).value_or(false)) return;
  const auto seed = MVTransaction::transactionFromEID(root, eid);
  if (seed) (void)scheduleNotificationForDate(*seed, dueDateOf(*seed));
}

Result<SeriesProgress> bringUpToDate(MVAppRoot& root, Connection& db, const SeriesSeed& seed, Date from,
                                     Date to) {
  const auto rule = ruleOf(seed);
  if (!rule) return tl::make_unexpected(rule.error());
  Result<> checked = seed.checkKind();
  for (const Date date : {seed.datetime, from, to}) {
    if (checked) checked = checkSeriesDate(root.calendar(), date);
  }
  if (checked) checked = complete(root, seed);
  if (!checked) return tl::make_unexpected(checked.error());
  const auto firstDay = firstDayOf(root, seed);
  if (!firstDay) return tl::make_unexpected(firstDay.error());
  const Course course{*seed.home, *rule, *firstDay};
  const auto served = daysServed(root, db, seed.eid, course, from, to);
  if (!served) return tl::make_unexpected(served.error());

  auto progress = SeriesWalk(root, seed, course).run(*served, from, to);
  if (!progress) return progress;
  Result<> written;
  if (progress->ended) {
    written = write(root,
                    "update transactions set deleted = 1, ipid = 'stopRepeat by Date', editDate = ?,"
                    " edit_ipid = ? where eid = ?",
                    root.editStamp(), root.itsUDID(), seed.eid);
  }
  if (written && progress->next != seed.datetime) {
    written = write(root, "update transactions set datetime=? where eid = ?", progress->next, seed.eid);
  }
  if (!written) return tl::make_unexpected(written.error());
  if (!progress->ended) remindOfNext(root, seed.eid);
  return progress;
}

}  // namespace

Result<int> firstDayOf(const MVTransaction& seed) {
  const auto stored = SeriesSeed::of(seed.root(), seed.eid);
  if (!stored) return tl::make_unexpected(stored.error());
  return firstDayOf(seed.root(), *stored);
}

Result<Date> getNextRepeatDate(const MVTransaction& seed, Date latest) {
  const auto stored = SeriesSeed::of(seed.root(), seed.eid);
  if (!stored) return tl::make_unexpected(stored.error());
  const auto rule = ruleOf(*stored);
  if (!rule) return tl::make_unexpected(rule.error());
  const auto firstDay = firstDayOf(seed.root(), *stored);
  if (!firstDay) return tl::make_unexpected(firstDay.error());
  return nextRepeatDate(*stored->home, *rule, latest, *firstDay);
}

Result<Date> beginOfSeries(const MVTransaction& seed) {
  const auto stored = SeriesSeed::of(seed.root(), seed.eid);
  if (!stored) return tl::make_unexpected(stored.error());
  return beginOfSeries(seed.root(), *stored);
}

Result<SeriesProgress> createRepeatItemsFrom(const MVTransaction& seed, Date from, Date to) {
  MVAppRoot& root = seed.root();
  return atomically(root, [&](Connection& db) -> Result<SeriesProgress> {
    const auto stored = SeriesSeed::of(root, seed.eid);
    if (!stored) return tl::make_unexpected(stored.error());
    if (stored->deleted != 0) return refuse("the series is over");
    return bringUpToDate(root, db, *stored, from, to);
  });
}

}  // namespace moniva
