#include "calendar/date_texts.h"
#include "model/entry_checks.h"
#include "model/record_entry.h"
#include "recurrence/repeat_step.h"
#include "recurrence/series_seed.h"
#include "recurrence/series_values.h"
#include "recurrence/spend_repeat.h"

// Series that are over: taken up again, or removed.
namespace moniva {

Result<int> deleteSeries(MVAppRoot& root, std::string_view eid) {
  return changeRecords(root, RecordScope{}, [&](Connection&) -> Result<int> {
    auto seed = seedOfSeries(root, eid);
    if (!seed) return tl::make_unexpected(seed.error());
    // What removes a series passes over what is removed: one that is over has to be in use for that.
    auto written = write(
        root,
        "update transactions set deleted = 0, editDate = ?, edit_ipid = ? where eid = ? and deleted = 1",
        root.editStamp(), root.itsUDID(), seed->eid);
    if (!written) return tl::make_unexpected(written.error());
    seed->deleted = 0;
    return deletedAllRepeatTransaction(*seed);
  });
}

Result<SeriesOutcome> resumeSeries(MVAppRoot& root, std::string_view eid, std::optional<Date> end,
                                   bool fill) {
  return changeRecords(root, RecordScope{}, [&](Connection&) -> Result<SeriesOutcome> {
    auto seed = seedOfSeries(root, eid);
    if (!seed) return tl::make_unexpected(seed.error());
    if (seed->deleted == 0) return refuse("the series goes on as it is");
    SeriesChange change;
    change.end = end;
    if (auto checked = checkChange(*seed, change); !checked) return tl::make_unexpected(checked.error());
    const auto stored = SeriesSeed::of(root, seed->eid);
    if (!stored) return tl::make_unexpected(stored.error());
    if (stored->ipid == kDividedMark) {
      return refuse("the series was divided, and goes on as another one");
    }
    const Calendar& here = root.calendar();
    const Calendar& home = *stored->home;
    const std::int64_t today = here.dayNumber(root.now());
    Date until{};
    if (end) {
      if (*end != Date{}) until = home.endOfDay(here.dayNumber(*end));
    } else if (stored->end) {
      until = home.dateEnd(*stored->end);
    }
    const auto rule = ruleOf(*stored);
    if (!rule) return tl::make_unexpected(rule.error());
    Date next = stored->datetime;
    if (auto checked = checkRecordDate(here, next); !checked) return tl::make_unexpected(checked.error());
    const auto firstDay = firstDayOf(root, *stored);
    if (!firstDay) return tl::make_unexpected(firstDay.error());
    while (!fill && home.dayNumber(next) <= today) next = nextRepeatDate(home, *rule, next, *firstDay);
    if (until != Date{} && home.isBeforeDay(until, next)) {
      return refuse(
          "its end, {}, lies before its next day, {}; say with --until when it is to end, or --until never",
          stringOfDateMediumStyle(home, until), stringOfDateMediumStyle(home, next));
    }
    auto written = write(root,
                         "update transactions set deleted = 0, datetime = ?, repeat_end_date = ?, ipid = '',"
                         " editDate = ?, edit_ipid = ? where eid = ?",
                         next, endValue(until), root.editStamp(), root.itsUDID(), seed->eid);
    if (!written) return tl::make_unexpected(written.error());
    SeriesOutcome outcome;
    outcome.seed = seed->eid;
    outcome.next = next;
    if (home.dayNumber(next) > today) return outcome;
    const auto live = MVTransaction::transactionFromEID(root, seed->eid);
    if (!live) return refusalOfStore(root);
    const auto progress = createRepeatItemsFrom(*live, next, root.now());
    if (!progress) return tl::make_unexpected(progress.error());
    outcome.made = progress->made;
    outcome.ended = progress->ended;
    outcome.more = progress->more;
    outcome.next = progress->next;
    return outcome;
  });
}

}  // namespace moniva
