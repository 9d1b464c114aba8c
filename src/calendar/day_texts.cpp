#include "calendar/day_texts.h"

#include <fmt/format.h>

#include "calendar/date_texts.h"

namespace moniva {
namespace {

/// Whether the months and their names are the twelve Gregorian ones.
bool hasTwelveMonths(const Calendar& calendar, std::int64_t day) {
  constexpr std::int64_t kNoCutOver = daysFromCivil(1583, 1, 1);
  return calendar.days().isGregorian() && day >= kNoCutOver;
}

}  // namespace

void DayTexts::addMediumDay(std::string& text, Date date, std::int64_t dayNumber,
                            const DaySystem::Parts& at) {
  if (!eachAlone_ && hasTwelveMonths(*calendar_, dayNumber)) {
    const std::int64_t month = std::int64_t{at.year} * 12 + at.month;
    std::string& number = numbers_.at(static_cast<std::size_t>(at.day - 1));
    if (month != month_ || number.empty()) {
      auto written = calendar_->formats().writeAroundDay(DateForm::mediumDay, date);
      // Where a day says more than its number, or its number changes what is around it, none is like another.
      const bool fits = written &&
                        (month != month_ || (written->before == before_ && written->after == after_)) &&
                        (number.empty() || number == written->number);
      if (fits) {
        month_ = month;
        before_ = std::move(written->before);
        after_ = std::move(written->after);
        number = std::move(written->number);
      }
      eachAlone_ = !fits;
    }
    if (!eachAlone_) {
      text.append(before_).append(number).append(after_);
      return;
    }
  }
  text += stringOfDateMediumStyle(*calendar_, date);
}

std::string DayTexts::dayAndWeekday(Date date, std::int64_t dayNumber, const DaySystem::Parts& at) {
  constexpr int kThursday = 4;  // 1970-01-01, counting from Sunday = 0
  std::string& weekday = weekdays_.at(static_cast<std::size_t>(floorRemainder(dayNumber + kThursday, 7)));
  if (weekday.empty()) weekday = stringOfWeekdayName(*calendar_, date);
  std::string text;
  text.reserve(before_.size() + after_.size() + weekday.size() + 8);
  addMediumDay(text, date, dayNumber, at);
  text += ' ';
  return text += weekday;
}

std::string DayTexts::monthAndYear(Date date, std::int64_t dayNumber, const DaySystem::Parts& at) {
  if (!hasTwelveMonths(*calendar_, dayNumber)) {
    return fmt::format("{}, {}", stringOfMonthName(*calendar_, date), at.year);
  }
  std::string& name = months_.at(static_cast<std::size_t>(at.month - 1));
  if (name.empty()) name = stringOfMonthName(*calendar_, date);
  return fmt::format("{}, {}", name, at.year);
}

}  // namespace moniva
