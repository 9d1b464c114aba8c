#include "app/older_series.h"

#include <algorithm>
#include <set>

namespace moniva {
namespace {

/// Whole days: the time of day of records is anything.
double between(const Calendar& calendar, Date from, Date to) {
  return static_cast<double>(calendar.dayNumber(to) - calendar.dayNumber(from));
}

/// A series as far as it is known, and the dates of its rule, counted from its first, between which it is.
struct Line {
  std::vector<std::size_t> places;
  int firstDay = 0;
  Date before;
  Date after;
  Date latest;
  double halfRound = 0;

  bool takes(const Calendar& calendar, Date date) const {
    return between(calendar, latest, date) >= halfRound;
  }
  /// How far the date, which is later than those asked for before, is from the nearest of the rule.
  double distance(const Calendar& calendar, RepeatRule rule, Date date) {
    while (between(calendar, after, date) > 0) {
      before = after;
      after = nextRepeatDate(calendar, rule, after, firstDay);
    }
    return std::min(between(calendar, before, date), between(calendar, date, after));
  }
};

}  // namespace

OlderSeries olderSeries(const Calendar& calendar, RepeatRule rule, const std::vector<Date>& dates) {
  std::vector<Line> lines;
  for (std::size_t at = 0; at < dates.size(); ++at) {
    Line* nearest = nullptr;
    double least = 0;
    for (auto& line : lines) {
      if (!line.takes(calendar, dates[at])) continue;
      const double distance = line.distance(calendar, rule, dates[at]);
      if (nearest != nullptr && distance >= least) continue;
      nearest = &line;
      least = distance;
    }
    if (nearest == nullptr) {
      nearest = &lines.emplace_back();
      nearest->firstDay = calendar.day(dates[at]);
      nearest->before = dates[at];
      nearest->after = nextRepeatDate(calendar, rule, dates[at], nearest->firstDay);
    }
    nearest->places.push_back(at);
    nearest->latest = dates[at];
    // By its own day, as it may be off the rule's.
    const Date round = nextRepeatDate(calendar, rule, dates[at], calendar.day(dates[at]));
    nearest->halfRound = between(calendar, dates[at], round) / 2;
  }
  OlderSeries divided;
  const bool anyLong = std::ranges::any_of(lines, [](const Line& line) { return line.places.size() > 1; });
  for (auto& line : lines) {
    if (anyLong && line.places.size() == 1) {
      divided.strays.push_back(line.places.front());
    } else {
      divided.series.push_back(std::move(line.places));
    }
  }
  return divided;
}

std::vector<std::size_t> onDaysOfSeries(const Calendar& calendar, RepeatRule rule,
                                        const std::vector<Date>& dates, const std::vector<Date>& offered) {
  std::vector<std::size_t> places;
  if (offered.empty()) return places;
  const Date last = *std::ranges::max_element(offered);
  const int firstDay = calendar.day(dates.front());
  std::set<std::int64_t> free;
  for (Date date = nextRepeatDate(calendar, rule, dates.front(), firstDay);
       calendar.dayNumber(date) <= calendar.dayNumber(last);
       date = nextRepeatDate(calendar, rule, date, firstDay)) {
    free.insert(calendar.dayNumber(date));
  }
  for (const Date date : dates) free.erase(calendar.dayNumber(date));
  for (std::size_t at = 0; at < offered.size(); ++at) {
    if (free.erase(calendar.dayNumber(offered[at])) > 0) places.push_back(at);
  }
  return places;
}

Date dateAfter(const Calendar& calendar, RepeatRule rule, Date first, Date newest) {
  const int firstDay = calendar.day(first);
  Date before = first;
  Date date = nextRepeatDate(calendar, rule, first, firstDay);
  while (between(calendar, newest, date) < between(calendar, before, date) / 2) {
    before = date;
    date = nextRepeatDate(calendar, rule, date, firstDay);
  }
  return date;
}

}  // namespace moniva
