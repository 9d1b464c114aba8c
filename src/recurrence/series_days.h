#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>

#include "calendar/calendar.h"

// On which days a series and its records are, wherever the user has been since; for the sources of this room.
namespace moniva {

/// The calendar by which the days of a series go: the user's, in the zone where the series was begun. That is
/// `here` itself, which has to outlive it, where the zone is the same, blank or none.
std::shared_ptr<const Calendar> homeCalendar(const Calendar& here, std::string_view zone);

/// Tells which day rows are of, each in the zone in which it was made.
class OwnDays {
 public:
  explicit OwnDays(const Calendar& here) : here_(here) {}

  /// The number of the day of `date`, by the row's zone, else by its `sday` where that fits the date.
  std::int64_t of(Date date, std::string_view zone, std::int64_t sday);

 private:
  /// Null for a text that names no zone, such as a barcode.
  const Calendar* calendarOf(std::string_view zone);

  const Calendar& here_;
  std::map<std::string, std::shared_ptr<const Calendar>, std::less<>> zones_;
};

}  // namespace moniva
