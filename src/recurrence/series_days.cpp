#include "recurrence/series_days.h"

#include <cstdlib>

namespace moniva {

std::shared_ptr<const Calendar> homeCalendar(const Calendar& here, std::string_view zone) {
  if (!zone.empty() && zone != here.zone()) {
    if (auto made = Calendar::make(std::string(zone), here.locale())) return *made;
  }
  return {std::shared_ptr<const Calendar>(), &here};
}

std::int64_t OwnDays::of(Date date, std::string_view zone, std::int64_t sday) {
  constexpr std::int64_t kFirstKey = 10'000'101;
  constexpr std::int64_t kLastKey = 40'000'000;
  if (zone == here_.zone()) return here_.dayNumber(date);
  if (const Calendar* there = calendarOf(zone)) return there->dayNumber(date);
  const std::int64_t here = here_.dayNumber(date);
  if (sday < kFirstKey || sday > kLastKey) return here;
  const auto day = here_.days().day({DaySystem::kAnyEra, static_cast<int>(sday / 10000),
                                     static_cast<int>(sday / 100 % 100), static_cast<int>(sday % 100)});
  // A key that is further off than any zone is of another date.
  return std::abs(day - here) <= 1 ? day : here;
}

const Calendar* OwnDays::calendarOf(std::string_view zone) {
  if (zone.empty()) return nullptr;
  auto known = zones_.find(zone);
  if (known == zones_.end()) {
    auto made = Calendar::make(std::string(zone), here_.locale());
    known = zones_.emplace(zone, made ? *made : nullptr).first;
  }
  return known->second.get();
}

}  // namespace moniva
