#pragma once

#include "recurrence/series_edit.h"
#include "recurrence/series_view.h"
#include "storage/value.h"

// The values of a series, for its own sources.
namespace moniva {

/// A seed's end as it is kept: an open one as a blank text.
inline Value endValue(Date end) {
  return end == Date{} ? Value("") : Value(end);
}
/// Refused: amounts, dates and rules that are none, and what records of the kind have not.
Result<> checkChange(const MVTransaction& seed, const SeriesChange& change);
/// Writes the values on one record by the editor of its kind.
Result<> changeOccurrence(MVAppRoot& root, const SeriesOccurrence& one, const SeriesChange& change);
/// Dates one record anew, at its time of day.
Result<> dateOccurrence(MVAppRoot& root, const SeriesOccurrence& one, Date day);
/// Writes the values on the seed's row alone, checked as a record's.
Result<> changeSeed(MVAppRoot& root, const MVTransaction& seed, const std::string& eid,
                    const SeriesChange& change);

}  // namespace moniva
