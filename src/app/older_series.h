#pragma once

#include <vector>

#include "recurrence/repeat_step.h"

// Which records of earlier versions, each of which carried its rule, belong to one series.
namespace moniva {

/// The places of dates in the list they were given in.
struct OlderSeries {
  std::vector<std::vector<std::size_t>> series;  ///< each in order of time
  std::vector<std::size_t> strays;
};

/// Divides the dates (in order of time) of records that are alike among as many series as it takes for no two
/// records of one to be nearer than half a round: rents of two flats on one day are two series, also where
/// they have different days. A date that was moved a little stays in its series; one that would make a series
/// by itself, where others are of several, is a stray.
OlderSeries olderSeries(const Calendar& calendar, RepeatRule rule, const std::vector<Date>& dates);

/// The places of those of `offered` that fall on a day of the series after its first which none of `dates`,
/// the first in front, is on; one for a day.
std::vector<std::size_t> onDaysOfSeries(const Calendar& calendar, RepeatRule rule,
                                        const std::vector<Date>& dates, const std::vector<Date>& offered);

/// The first date of the series begun on `first` that `newest` does not serve: at least half a round after
/// it.
Date dateAfter(const Calendar& calendar, RepeatRule rule, Date first, Date newest);

}  // namespace moniva
