#include "recurrence/series_edit.h"

#include <algorithm>
#include <map>

#include "calendar/date_texts.h"
#include "model/entry_checks.h"
#include "model/record_entry.h"
#include "recurrence/repeat_step.h"
#include "recurrence/series_values.h"
#include "recurrence/spend_repeat.h"

namespace moniva {
namespace {

/// One change of one series, within its transaction.
class SeriesEditor {
 public:
  SeriesEditor(MVTransaction seed, std::string_view eid, Reach reach, const SeriesChange& change)
      : root_(seed.root()),
        calendar_(seed.root().calendar()),
        seed_(std::move(seed)),
        eid_(eid),
        reach_(reach),
        change_(change) {}

  Result<SeriesOutcome> run() {
    outcome_.seed = seed_.eid;
    if (auto checked = checkChange(seed_, change_); !checked) return tl::make_unexpected(checked.error());
    auto read = readOccurrences();
    if (read) read = reach_ == Reach::one ? changeOne() : changeMany();
    if (!read) return tl::make_unexpected(read.error());
    return outcome_;
  }

 private:
  bool names(const SeriesOccurrence& one) const {
    return one.eid == eid_ || (!group_.empty() && one.group == group_);
  }

  Result<> readOccurrences() {
    auto all = occurrencesOf(root_, seed_.eid);
    if (!all) return tl::make_unexpected(all.error());
    if (eid_ != seed_.eid) {
      const auto row = TransactionItem::fromEID(root_, eid_);
      if (row) group_ = row->connectionUUID;
      const auto named = std::ranges::find_if(*all, [&](const auto& one) { return names(one); });
      if (named == all->end()) return refuse("the record is of no series");
      if (named->deleted != 0) return refuse("the record is deleted; restore it first");
      named_ = *named;
    }
    from_ = calendar_.dateBegin(named_ ? named_->datetime : seed_.datetime);
    const auto inReach =
        std::ranges::partition_point(*all, [&](const auto& one) { return one.datetime < from_; });
    past_.assign(all->begin(), inReach);
    reached_.assign(inReach, all->end());
    return {};
  }

  Result<> changeOne() {
    if (!named_) return refuse("name one of the records the series has made");
    if (change_.rule || change_.end) {
      return refuse("one record has no rule and no end of its own; the series has");
    }
    if (auto changed = changeRecord(*named_); !changed) return changed;
    if (!change_.date) return {};
    if (!change_.hasValues()) ++outcome_.changed;
    return dateOccurrence(root_, *named_, *change_.date);
  }

  Result<> changeMany() {
    const bool onTime = change_.rule || change_.date || change_.end;
    if (onTime && seed_.deleted != 0) return refuse("the series is over; it can be taken up again");
    if (change_.rule == seed_.repeat && !change_.date) {
      // What it says already divides nothing.
    } else if (change_.rule || change_.date) {
      if (reach_ == Reach::all && !past_.empty()) {
        return refuse("what the series has made keeps its days; change it from one of its records on");
      }
      if (auto divided = divide(); !divided) return divided;
    }
    if (change_.end && !timed_) {
      if (auto written = writeEnd(); !written) return written;
    }
    if (auto written = changeSeed(root_, seed_, outcome_.seed, change_); !written) return written;
    if (change_.hasValues()) {
      for (const auto* rows : {&past_, &reached_}) {
        if (rows == &past_ && reach_ != Reach::all) continue;
        for (const auto& one : *rows) {
          if (one.deleted != 0) continue;
          if (auto changed = changeRecord(one); !changed) return changed;
        }
      }
    }
    return onTime ? settleTime() : Result<>();
  }

  Result<> changeRecord(const SeriesOccurrence& one) {
    if (!change_.hasValues()) return {};
    ++outcome_.changed;
    auto changed = changeOccurrence(root_, one, change_);
    if (changed) return changed;
    return refuse("the record of {}: {}", stringOfDateMediumStyle(calendar_, one.datetime), changed.error());
  }

  /// Writes the seed's end, which has no bearing on what is there.
  Result<> writeEnd() {
    const Date begun = seed_.repeatBeginDate == Date{} ? seed_.datetime : seed_.repeatBeginDate;
    if (*change_.end != Date{} && calendar_.isBeforeDay(*change_.end, begun)) {
      return refuse("a series ends after it begins");
    }
    return write(root_,
                 "update transactions set repeat_end_date = ?, ipid = '', editDate = ?, edit_ipid = ? where"
                 " eid = ?",
                 endValue(endOf(*change_.end)), root_.editStamp(), root_.itsUDID(), seed_.eid);
  }

  Date endOf(Date end) const { return end == Date{} ? end : calendar_.dateEnd(end); }

  /// Another rule or day from `from_` on: what the records in reach are dated, and what comes next.
  Result<> divide() {
    timed_ = true;
    const auto rule = repeatRuleFrom(change_.rule.value_or(seed_.repeat));
    if (!rule) return refuse("'{}' is no rule of repeating", seed_.repeat);
    const Date begin = change_.date ? calendar_.dateBegin(*change_.date) : from_;
    if (!past_.empty() && !calendar_.isAfterDay(begin, past_.back().datetime)) {
      return refuse("the series has a record on {} already, and the new day would lie before it",
                    stringOfDateMediumStyle(calendar_, past_.back().datetime));
    }
    const Date end = endOf(change_.end.value_or(seed_.repeatEndDate));
    if (end != Date{} && calendar_.isBeforeDay(end, begin)) return refuse("a series ends after it begins");
    const bool sameRule = seed_.repeat == textOf(*rule);
    auto next = sameRule && change_.date ? daysShifted(*rule, begin) : daysKept(*rule, begin);
    if (!next) return tl::make_unexpected(next.error());
    if (auto apart = checkApart(); !apart) return apart;
    if (auto moved = past_.empty() ? Result<>() : goOnApart(begin); !moved) return moved;
    if (auto left = leaveRemoved(); !left) return left;
    if (auto dated = dateRecords(); !dated) return dated;
    // Where the rule is another one the records in reach do not follow it, and days between them lack none.
    const Date begun = sameRule || reached_.empty() ? begin : *next;
    return write(root_,
                 "update transactions set repeat = ?, datetime = ?, payDate = ?, sday = ?, repeat_end_date ="
                 " ?, ipid = '', editDate = ?, edit_ipid = ? where eid = ?",
                 textOf(*rule), *next, begun, calendar_.day(begin), endValue(end), root_.editStamp(),
                 root_.itsUDID(), outcome_.seed);
  }

  /// The days of the same rule from another one on: each record in reach gets the day that its own becomes.
  /// Answers what the next date becomes.
  Result<Date> daysShifted(RepeatRule rule, Date begin) {
    const auto firstDay = firstDayOf(seed_);
    if (!firstDay) return tl::make_unexpected(firstDay.error());
    dates_.assign(reached_.size(), std::nullopt);
    Date former = from_;
    if (named_) {
      // It may be dated otherwise than the series has it.
      if (const auto day = dayMadeFor(seed_.eid, named_->eid)) former = calendar_.beginOfDay(*day);
    }
    std::multimap<std::int64_t, std::size_t> onDay;  ///< records by the day that the series gave them
    for (std::size_t at = 0; at < reached_.size(); ++at) {
      const auto& one = reached_[at];
      if (named_ && one.eid == named_->eid) {
        dates_[at] = begin;
      } else if (hasItsDay(one)) {
        onDay.emplace(calendar_.dayNumber(one.datetime), at);
      }
    }
    Date shifted = begin;
    while (calendar_.isBeforeDay(former, seed_.datetime)) {
      const auto [first, last] = onDay.equal_range(calendar_.dayNumber(former));
      for (auto one = first; one != last; ++one) dates_[one->second] = shifted;
      former = nextRepeatDate(calendar_, rule, former, *firstDay);
      shifted = nextRepeatDate(calendar_, rule, shifted, calendar_.day(begin));
    }
    return shifted;
  }

  /// Refused: a record that would move onto the day of another one.
  Result<> checkApart() const {
    std::map<std::int64_t, bool> taken;  ///< whether what has the day moves there
    for (std::size_t at = 0; at < reached_.size(); ++at) {
      const Date date = dates_[at].value_or(reached_[at].datetime);
      const bool moves = !calendar_.isSameDay(date, reached_[at].datetime);
      const auto [other, isFirst] = taken.emplace(calendar_.dayNumber(date), moves);
      if (!isFirst && (moves || other->second)) {
        return refuse("the series would have two records on {}", stringOfDateMediumStyle(calendar_, date));
      }
    }
    return {};
  }

  /// Whether the record has the day for which the series made it; else a person dated it.
  bool hasItsDay(const SeriesOccurrence& one) const {
    const auto made = dayMadeFor(seed_.eid, one.eid);
    return !made || *made == calendar_.dayNumber(one.datetime);
  }

  /// Under another rule the records in reach keep their days, but for the one that is named with another; the
  /// next date is the first one after them.
  Result<Date> daysKept(RepeatRule rule, Date begin) {
    dates_.assign(reached_.size(), std::nullopt);
    Date latest{};
    for (std::size_t at = 0; at < reached_.size(); ++at) {
      Date date = reached_[at].datetime;
      if (change_.date && named_ && reached_[at].eid == named_->eid) {
        dates_[at] = begin;
        date = begin;
      } else if (calendar_.isBeforeDay(date, begin)) {
        return refuse("the series has a record on {}, which the new day would pass",
                      stringOfDateMediumStyle(calendar_, date));
      }
      latest = std::max(latest, date);
    }
    Date next = begin;
    while (!reached_.empty() && !calendar_.isAfterDay(next, latest)) {
      next = nextRepeatDate(calendar_, rule, next, calendar_.day(begin));
    }
    return next;
  }

  /// Ends the series the day before, and makes the one that goes on with the records in reach.
  Result<> goOnApart(Date begin) {
    outcome_.former = seed_.eid;
    outcome_.seed = root_.newIdentifier();
    auto written = write(
        root_,
        "insert into transactions (eid, bid, amount, amount2, type, note, currency2, repeat,"
        " category, subcategory, vendor, datetime, syear, account, barcode, book, paid, needReimburse,"
        " needNotify, sweek, editDate, edit_ipid) select ?, bid, amount, amount2, type, note, currency2,"
        " repeat, category, subcategory, vendor, datetime, syear, account, barcode, book, paid,"
        " needReimburse, needNotify, sweek, ?, ? from transactions where eid = ?",
        outcome_.seed, root_.editStamp(), root_.itsUDID(), seed_.eid);
    const Date before = calendar_.dateEnd(calendar_.getPreviouslyDay(std::min(begin, from_)));
    if (written) {
      written = write(
          root_, "update transactions set repeat_end_date = ?, editDate = ?, edit_ipid = ? where eid = ?",
          before, root_.editStamp(), root_.itsUDID(), seed_.eid);
    }
    if (written) written = markOver(seed_.eid);
    for (const auto& one : reached_) {
      if (!written) return written;
      written =
          write(root_,
                // "+" keeps to the indexes of the row and its group.
                "update transactions set repeat_seed = ?, editDate = ?, edit_ipid = ? where +repeat_seed = ?"
                " and (eid = ? or transferEID = nullif(?, '')) and deleted < 2",
                outcome_.seed, root_.editStamp(), root_.itsUDID(), seed_.eid, one.eid, one.group);
    }
    return written;
  }

  /// What repairs removed from the days in reach must not be brought back by others: its day is served.
  Result<> leaveRemoved() {
    return write(root_,
                 "update transactions set ipid = 'removed before its series changed its days', editDate = ?,"
                 " edit_ipid = ? where repeat_seed = ? and deleted > 1 and datetime >= ?",
                 root_.editStamp(), root_.itsUDID(), seed_.eid, from_);
  }

  Result<> dateRecords() {
    for (std::size_t at = 0; at < reached_.size(); ++at) {
      const auto& one = reached_[at];
      if (!dates_[at] || calendar_.isSameDay(*dates_[at], one.datetime)) continue;
      auto dated = one.deleted == 0 ? dateOccurrence(root_, one, *dates_[at]) : dateDeleted(one, *dates_[at]);
      if (!dated) return dated;
      reached_[at].datetime = *dates_[at];
      if (one.deleted == 0 && !change_.hasValues()) ++outcome_.changed;
    }
    return {};
  }

  /// One that a person deleted goes along, so that it is not made again.
  Result<> dateDeleted(const SeriesOccurrence& one, Date day) {
    return write(
        root_,
        "update transactions set datetime = ?, sday = ?, editDate = ?, edit_ipid = ? where eid = ? or"
        " transferEID = nullif(?, '')",
        day, integerDateOfTimeZone(calendar_, day), root_.editStamp(), root_.itsUDID(), one.eid, one.group);
  }

  Result<> markOver(const std::string& seed) {
    outcome_.ended = seed == outcome_.seed;
    return write(root_,
                 "update transactions set deleted = 1, ipid = 'stopRepeat by Date', editDate = ?, edit_ipid ="
                 " ? where eid = ?",
                 root_.editStamp(), root_.itsUDID(), seed);
  }

  /// What a change of time makes due, what it leaves beyond the end, and what comes next.
  Result<> settleTime() {
    const auto seed = MVTransaction::transactionFromEID(root_, outcome_.seed);
    if (!seed) return refusalOfStore(root_);
    outcome_.next = seed->datetime;
    const Date end = seed->repeatEndDate;
    if (end != Date{}) {
      for (const auto* rows : {&past_, &reached_}) {
        outcome_.beyondEnd += static_cast<int>(std::ranges::count_if(*rows, [&](const auto& one) {
          return one.deleted == 0 && calendar_.isAfterDay(one.datetime, end);
        }));
      }
      if (calendar_.isBeforeDay(end, seed->datetime)) return markOver(outcome_.seed);
    }
    const Date today = calendar_.dateEnd(root_.now());
    if (seed->datetime > today) return {};
    const auto progress = createRepeatItemsFrom(*seed, seed->datetime, today);
    if (!progress) return tl::make_unexpected(progress.error());
    outcome_.made = progress->made;
    outcome_.ended = progress->ended;
    outcome_.next = progress->next;
    return {};
  }

  MVAppRoot& root_;
  const Calendar& calendar_;
  MVTransaction seed_;
  std::string eid_;
  std::string group_;
  Reach reach_;
  const SeriesChange& change_;
  std::optional<SeriesOccurrence> named_;
  Date from_;
  std::vector<SeriesOccurrence> past_;
  std::vector<SeriesOccurrence> reached_;
  std::vector<std::optional<Date>> dates_;  ///< new days of those in reach
  bool timed_ = false;                      ///< rule, day and end of the seed are written
  SeriesOutcome outcome_;
};

}  // namespace

Result<SeriesOutcome> editSeries(MVAppRoot& root, std::string_view eid, Reach reach,
                                 const SeriesChange& change) {
  return changeRecords(root, RecordScope{}, [&](Connection&) -> Result<SeriesOutcome> {
    auto seed = seedOfSeries(root, eid);
    if (!seed) return tl::make_unexpected(seed.error());
    return SeriesEditor(std::move(*seed), eid, reach, change).run();
  });
}

}  // namespace moniva
