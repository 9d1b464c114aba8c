#include "recurrence/series_edit.h"

#include <algorithm>
#include <map>

#include "calendar/date_texts.h"
#include "model/entry_checks.h"
#include "model/record_entry.h"
#include "recurrence/repeat_step.h"
#include "recurrence/series_days.h"
#include "recurrence/series_seed.h"
#include "recurrence/series_values.h"
#include "recurrence/spend_repeat.h"

namespace moniva {
namespace {

/// One change of one series, within its transaction.
class SeriesEditor {
 public:
  SeriesEditor(MVTransaction seed, std::string_view eid, Reach reach, const SeriesChange& change)
      : root_(seed.root()),
        here_(seed.root().calendar()),
        home_(homeCalendar(here_, seed.timeZone)),
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
    from_ = named_ ? named_->day : home_->dayNumber(seed_.datetime);
    for (auto& one : *all) (one.day < from_ ? past_ : reached_).push_back(std::move(one));
    return {};
  }

  std::string dayText(std::int64_t day) const {
    return stringOfDateMediumStyle(here_, here_.beginOfDay(day));
  }
  static std::int64_t latestOf(const std::vector<SeriesOccurrence>& rows) {
    return std::ranges::max(rows, {}, &SeriesOccurrence::day).day;
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
    return refuse("the record of {}: {}", dayText(one.day), changed.error());
  }

  /// Writes the seed's end, which has no bearing on what is there.
  Result<> writeEnd() {
    const Date begun = seed_.repeatBeginDate == Date{} ? seed_.datetime : seed_.repeatBeginDate;
    // One that was divided begins after the records it went on with.
    std::int64_t first = home_->dayNumber(begun);
    for (const auto* rows : {&past_, &reached_}) {
      for (const auto& one : *rows) first = std::min(first, one.day);
    }
    if (*change_.end != Date{} && here_.dayNumber(*change_.end) < first) {
      return refuse("a series ends after it begins");
    }
    return write(root_,
                 "update transactions set repeat_end_date = ?, ipid = '', editDate = ?, edit_ipid = ? where"
                 " eid = ?",
                 endValue(endOf(*change_.end)), root_.editStamp(), root_.itsUDID(), seed_.eid);
  }

  /// A day that a person named, as the end of it where the series is at home.
  Date endOf(Date end) const { return end == Date{} ? end : home_->endOfDay(here_.dayNumber(end)); }

  /// Another rule or day from `from_` on: what the records in reach are dated, and what comes next.
  Result<> divide() {
    timed_ = true;
    const auto rule = repeatRuleFrom(change_.rule.value_or(seed_.repeat));
    if (!rule) return refuse("'{}' is no rule of repeating", seed_.repeat);
    const std::int64_t begin = change_.date ? here_.dayNumber(*change_.date) : from_;
    if (!past_.empty() && begin <= latestOf(past_)) {
      return refuse("the series has a record on {} already, and the new day would not lie after it",
                    dayText(latestOf(past_)));
    }
    Date end = endOf(change_.end.value_or(Date{}));
    if (!change_.end && seed_.repeatEndDate != Date{}) end = home_->dateEnd(seed_.repeatEndDate);
    if (end != Date{} && home_->dayNumber(end) < begin) return refuse("a series ends after it begins");
    const auto firstDay = firstDayFrom(begin);
    if (!firstDay) return tl::make_unexpected(firstDay.error());
    const bool sameRule = seed_.repeat == textOf(*rule);
    auto next =
        sameRule && change_.date ? daysShifted(*rule, begin, *firstDay) : daysKept(*rule, begin, *firstDay);
    if (!next) return tl::make_unexpected(next.error());
    if (auto apart = checkApart(); !apart) return apart;
    const bool hasMade = !past_.empty() || !reached_.empty();
    if (auto moved = hasMade ? goOnApart(begin) : Result<>(); !moved) return moved;
    if (auto left = leaveRemoved(); !left) return left;
    if (auto dated = dateRecords(); !dated) return dated;
    // The records in reach serve by their dates alone, and days between them lack none.
    const Date begun = reached_.empty() ? home_->beginOfDay(begin) : *next;
    return write(root_,
                 "update transactions set repeat = ?, datetime = ?, payDate = ?, sday = ?, repeat_end_date ="
                 " ?, ipid = '', editDate = ?, edit_ipid = ? where eid = ?",
                 textOf(*rule), *next, begun, *firstDay, endValue(end), root_.editStamp(), root_.itsUDID(),
                 outcome_.seed);
  }

  /// The day of month from there on: that of the new day; without one the series' own, for which the last of
  /// a shorter month stands.
  Result<int> firstDayFrom(std::int64_t begin) const {
    const Date date = home_->beginOfDay(begin);
    const int day = home_->day(date);
    if (change_.date) return day;
    const auto firstDay = firstDayOf(seed_);
    if (!firstDay) return firstDay;
    return day == std::min(*firstDay, home_->numberOfDaysInMonth(date)) ? *firstDay : day;
  }

  /// The days of the same rule from another one on: each record in reach gets the day that its own becomes.
  /// Answers what the next date becomes.
  Result<Date> daysShifted(RepeatRule rule, std::int64_t begin, int day) {
    const auto firstDay = firstDayOf(seed_);
    if (!firstDay) return tl::make_unexpected(firstDay.error());
    days_.assign(reached_.size(), std::nullopt);
    std::int64_t from = from_;
    if (named_) {
      // It may be dated otherwise than the series has it.
      from = dayMadeFor(seed_.eid, named_->eid).value_or(from_);
    }
    std::multimap<std::int64_t, std::size_t> onDay;  ///< records by the day that the series gave them
    for (std::size_t at = 0; at < reached_.size(); ++at) {
      const auto& one = reached_[at];
      if (named_ && one.eid == named_->eid) {
        days_[at] = begin;
      } else if (hasItsDay(one)) {
        onDay.emplace(one.day, at);
      }
    }
    Date former = home_->beginOfDay(from);
    Date shifted = home_->beginOfDay(begin);
    while (home_->isBeforeDay(former, seed_.datetime)) {
      const auto [first, last] = onDay.equal_range(home_->dayNumber(former));
      for (auto one = first; one != last; ++one) days_[one->second] = home_->dayNumber(shifted);
      former = nextRepeatDate(*home_, rule, former, *firstDay);
      shifted = nextRepeatDate(*home_, rule, shifted, day);
    }
    return shifted;
  }

  /// Refused: a record that would move onto the day of another one.
  Result<> checkApart() const {
    std::map<std::int64_t, bool> taken;  ///< whether what has the day moves there
    for (std::size_t at = 0; at < reached_.size(); ++at) {
      const std::int64_t day = days_[at].value_or(reached_[at].day);
      const bool moves = day != reached_[at].day;
      const auto [other, isFirst] = taken.emplace(day, moves);
      if (!isFirst && (moves || other->second)) {
        return refuse("the series would have two records on {}", dayText(day));
      }
    }
    return {};
  }

  /// Whether the record has the day for which the series made it; else a person dated it.
  bool hasItsDay(const SeriesOccurrence& one) const {
    return dayMadeFor(seed_.eid, one.eid).value_or(one.day) == one.day;
  }

  /// Under another rule the records in reach keep their days, but for the one that is named with another; the
  /// next date is the first one after them.
  Result<Date> daysKept(RepeatRule rule, std::int64_t begin, int firstDay) {
    days_.assign(reached_.size(), std::nullopt);
    std::int64_t latest = begin - 1;
    for (std::size_t at = 0; at < reached_.size(); ++at) {
      std::int64_t day = reached_[at].day;
      if (change_.date && named_ && reached_[at].eid == named_->eid) {
        days_[at] = day = begin;
      } else if (day < begin) {
        return refuse("the series has a record on {}, and the new day would lie after it", dayText(day));
      }
      latest = std::max(latest, day);
    }
    Date next = home_->beginOfDay(begin);
    while (home_->dayNumber(next) <= latest) next = nextRepeatDate(*home_, rule, next, firstDay);
    return next;
  }

  /// Ends the series the day before, and makes the one that goes on with the records in reach.
  Result<> goOnApart(std::int64_t begin) {
    outcome_.former = seed_.eid;
    outcome_.whole = past_.empty();
    outcome_.seed = root_.newIdentifier();
    auto written = write(
        root_,
        "insert into transactions (eid, bid, amount, amount2, type, note, currency2, repeat,"
        " category, subcategory, vendor, datetime, syear, account, barcode, book, paid, needReimburse,"
        " needNotify, sweek, editDate, edit_ipid) select ?, bid, amount, amount2, type, note, currency2,"
        " repeat, category, subcategory, vendor, datetime, syear, account, barcode, book, paid,"
        " needReimburse, needNotify, sweek, ?, ? from transactions where eid = ?",
        outcome_.seed, root_.editStamp(), root_.itsUDID(), seed_.eid);
    const Date before = home_->endOfDay(std::min(begin, from_) - 1);
    if (written) {
      written = write(
          root_, "update transactions set repeat_end_date = ?, editDate = ?, edit_ipid = ? where eid = ?",
          before, root_.editStamp(), root_.itsUDID(), seed_.eid);
    }
    if (written) written = markOver(seed_.eid, kDividedMark);
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
                 root_.editStamp(), root_.itsUDID(), seed_.eid, here_.beginOfDay(from_));
  }

  Result<> dateRecords() {
    for (std::size_t at = 0; at < reached_.size(); ++at) {
      auto& one = reached_[at];
      if (days_[at].value_or(one.day) == one.day) continue;
      const Date date = here_.beginOfDay(*days_[at]);
      auto dated = one.deleted == 0 ? dateOccurrence(root_, one, date) : dateDeleted(one, date);
      if (!dated) return dated;
      one.day = *days_[at];
      if (one.deleted == 0 && !change_.hasValues()) ++outcome_.changed;
    }
    return {};
  }

  /// One that a person deleted goes along, so that it is not made again.
  Result<> dateDeleted(const SeriesOccurrence& one, Date day) {
    return write(
        root_,
        "update transactions set datetime = ?, sday = ?, barcode = ?, editDate = ?, edit_ipid = ? where eid ="
        " ? or transferEID = nullif(?, '')",
        day, integerDateOfTimeZone(here_, day), here_.zone(), root_.editStamp(), root_.itsUDID(), one.eid,
        one.group);
  }

  Result<> markOver(const std::string& seed, std::string_view why) {
    outcome_.ended = seed == outcome_.seed;
    return write(root_,
                 "update transactions set deleted = 1, ipid = ?, editDate = ?, edit_ipid = ? where eid = ?",
                 why, root_.editStamp(), root_.itsUDID(), seed);
  }

  /// What a change of time makes due, what it leaves beyond the end, and what comes next.
  Result<> settleTime() {
    const auto seed = MVTransaction::transactionFromEID(root_, outcome_.seed);
    if (!seed) return refusalOfStore(root_);
    outcome_.next = seed->datetime;
    const std::int64_t next = home_->dayNumber(seed->datetime);
    if (seed->repeatEndDate != Date{}) {
      const std::int64_t last = home_->dayNumber(seed->repeatEndDate);
      for (const auto* rows : {&past_, &reached_}) {
        outcome_.beyondEnd += static_cast<int>(std::ranges::count_if(
            *rows, [&](const auto& one) { return one.deleted == 0 && one.day > last; }));
      }
      if (last < next) return markOver(outcome_.seed, "stopRepeat by Date");
    }
    if (next > here_.dayNumber(root_.now())) return {};
    const auto progress = createRepeatItemsFrom(*seed, seed->datetime, root_.now());
    if (!progress) return tl::make_unexpected(progress.error());
    if (progress->more) {
      return refuse("the series would have more than {} records by today; name a later day",
                    kMostOccurrencesAtOnce);
    }
    outcome_.made = progress->made;
    outcome_.ended = progress->ended;
    outcome_.next = progress->next;
    return {};
  }

  MVAppRoot& root_;
  const Calendar& here_;
  std::shared_ptr<const Calendar> home_;  ///< by which the days of the series go
  MVTransaction seed_;
  std::string eid_;
  std::string group_;
  Reach reach_;
  const SeriesChange& change_;
  std::optional<SeriesOccurrence> named_;
  std::int64_t from_ = 0;  ///< the number of the day from which records are in reach
  std::vector<SeriesOccurrence> past_;
  std::vector<SeriesOccurrence> reached_;
  std::vector<std::optional<std::int64_t>> days_;  ///< new days of those in reach
  bool timed_ = false;                             ///< rule, day and end of the seed are written
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
