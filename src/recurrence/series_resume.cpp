#include "calendar/date_texts.h"
#include "model/entry_checks.h"
#include "model/record_entry.h"
#include "recurrence/repeat_step.h"
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
    const Calendar& calendar = root.calendar();
    const Date today = calendar.dateEnd(root.now());
    Date until = end.value_or(seed->repeatEndDate);
    if (until != Date{}) until = calendar.dateEnd(until);
    seed->deleted = 0;
    seed->repeatEndDate = {};
    Date next = seed->datetime;
    const auto rule = repeatRuleFrom(seed->repeat);
    if (!rule) return refuse("'{}' is no rule of repeating", seed->repeat);
    if (auto checked = checkRecordDate(calendar, next); !checked) return tl::make_unexpected(checked.error());
    const auto firstDay = firstDayOf(*seed);
    if (!firstDay) return tl::make_unexpected(firstDay.error());
    while (!fill && next <= today) next = nextRepeatDate(calendar, *rule, next, *firstDay);
    if (until != Date{} && calendar.isBeforeDay(until, next)) {
      return refuse(
          "its end, {}, lies before its next day, {}; say with --until when it is to end, or --until never",
          stringOfDateMediumStyle(calendar, until), stringOfDateMediumStyle(calendar, next));
    }
    auto written = write(root,
                         "update transactions set deleted = 0, datetime = ?, repeat_end_date = ?, ipid = '',"
                         " editDate = ?, edit_ipid = ? where eid = ?",
                         next, endValue(until), root.editStamp(), root.itsUDID(), seed->eid);
    if (!written) return tl::make_unexpected(written.error());
    SeriesOutcome outcome;
    outcome.seed = seed->eid;
    outcome.next = next;
    if (next > today) return outcome;
    const auto live = MVTransaction::transactionFromEID(root, seed->eid);
    if (!live) return refusalOfStore(root);
    const auto progress = createRepeatItemsFrom(*live, next, today);
    if (!progress) return tl::make_unexpected(progress.error());
    outcome.made = progress->made;
    outcome.ended = progress->ended;
    outcome.next = progress->next;
    return outcome;
  });
}

}  // namespace moniva
