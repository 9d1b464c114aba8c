#pragma once

#include <array>
#include <optional>
#include <string>

#include "calendar/calendar.h"

namespace moniva {

/// Writes many days and months the way lists name them. What the locale makes of a month is asked once and
/// kept for its days, which is much cheaper than having each day written by itself. For one thread.
class DayTexts {
 public:
  /// `calendar` must outlive this object.
  explicit DayTexts(const Calendar& calendar) : calendar_(&calendar) {}

  /// "Mar 5, 2024 Tuesday": the day in the locale's medium style and the full name of its weekday.
  /// `dayNumber` is the day of the date and `at` that day taken apart.
  std::string dayAndWeekday(Date date, std::int64_t dayNumber, const DaySystem::Parts& at);
  /// "March, 2024": the full name of the month that the date is in, and the year.
  std::string monthAndYear(Date date, std::int64_t dayNumber, const DaySystem::Parts& at);

 private:
  /// The day in the medium style, added to the text.
  void addMediumDay(std::string& text, Date date, std::int64_t dayNumber, const DaySystem::Parts& at);

  const Calendar* calendar_;
  std::array<std::string, 7> weekdays_;
  std::array<std::string, 12> months_;
  // How the month written last looks around the numbers of its days, and those numbers.
  std::int64_t month_ = 0;
  std::string before_;
  std::string after_;
  std::array<std::string, 31> numbers_;
  bool eachAlone_ = false;
};

}  // namespace moniva
