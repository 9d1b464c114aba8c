#include "calendar/day_system.h"

#include <unicode/calendar.h>

#include <algorithm>
#include <cmath>
#include <string_view>

namespace moniva {
namespace {

// Earlier days are Julian, and ICU knows them.
constexpr std::int64_t kGregorianSince = daysFromCivil(1583, 1, 1);
// Further away ICU's own counting overflows.
constexpr std::int64_t kFurthestDay = 1'000'000'000;
constexpr std::int64_t kFurthestIcuYear = 2'800'000;
constexpr int kGregorianAd = 1;

constexpr UDate kMillisecondsPerDay = 86'400'000.0;

void setDay(icu::Calendar& icu, std::int64_t day) {
  UErrorCode status = U_ZERO_ERROR;
  icu.setTime(static_cast<UDate>(std::clamp(day, -kFurthestDay, kFurthestDay)) * kMillisecondsPerDay, status);
}

std::int64_t dayOf(const icu::Calendar& icu, std::int64_t otherwise) {
  UErrorCode status = U_ZERO_ERROR;
  const UDate time = icu.getTime(status);
  if (U_FAILURE(status)) return otherwise;
  return static_cast<std::int64_t>(std::floor(time / kMillisecondsPerDay));
}

int field(const icu::Calendar& icu, UCalendarDateFields which) {
  UErrorCode status = U_ZERO_ERROR;
  return icu.get(which, status);
}

std::int64_t added(icu::Calendar& icu, std::int64_t day, UCalendarDateFields which, std::int64_t count) {
  UErrorCode status = U_ZERO_ERROR;
  const std::int64_t furthest = which == UCAL_MONTH ? 12 * kFurthestIcuYear : kFurthestIcuYear;
  icu.add(which, static_cast<std::int32_t>(std::clamp(count, -furthest, furthest)), status);
  return U_FAILURE(status) ? day : dayOf(icu, day);
}

}  // namespace

DaySystem::DaySystem(std::unique_ptr<icu::Calendar> icu)
    : gregorian_(std::string_view(icu->getType()) == "gregorian"), icu_(std::move(icu)) {}
DaySystem::~DaySystem() = default;

Result<std::unique_ptr<const DaySystem>> DaySystem::make(const std::string& icuLocale) {
  UErrorCode status = U_ZERO_ERROR;
  std::unique_ptr<icu::Calendar> icu(icu::Calendar::createInstance(
      *icu::TimeZone::getGMT(), icu::Locale::createFromName(icuLocale.c_str()), status));
  if (U_FAILURE(status) || !icu) return refuse("there is no calendar for the locale '{}'", icuLocale);
  icu->setLenient(true);
  return std::unique_ptr<const DaySystem>(new DaySystem(std::move(icu)));
}

bool DaySystem::isArithmetic(std::int64_t day) const {
  return gregorian_ && day >= kGregorianSince && day <= kFurthestDay;
}

template <class Ask>
auto DaySystem::askIcu(std::int64_t day, Ask ask) const {
  const std::scoped_lock lock(icuMutex_);
  setDay(*icu_, day);
  return ask(*icu_);
}

DaySystem::Parts DaySystem::parts(std::int64_t day) const {
  if (isArithmetic(day)) {
    const CivilTime civil = civilFromDays(day);
    return {kGregorianAd, civil.year, civil.month, civil.day};
  }
  return askIcu(day, [](const icu::Calendar& icu) {
    return Parts{field(icu, UCAL_ERA), field(icu, UCAL_YEAR), field(icu, UCAL_MONTH) + 1,
                 field(icu, UCAL_DATE)};
  });
}

std::int64_t DaySystem::day(const Parts& parts) const {
  if (gregorian_ && (parts.era == kAnyEra || parts.era == kGregorianAd)) {
    const std::int64_t months = std::int64_t{parts.year} * 12 + parts.month - 1;
    const auto month = static_cast<int>(floorRemainder(months, 12)) + 1;
    const std::int64_t first = daysFromCivil(floorDivide(months, 12), month, 1);
    const std::int64_t day = first + parts.day - 1;
    if (isArithmetic(first) && isArithmetic(day)) return day;
  }
  const auto within = [](int value) {
    return static_cast<std::int32_t>(std::clamp<std::int64_t>(value, -kFurthestIcuYear, kFurthestIcuYear));
  };
  const std::scoped_lock lock(icuMutex_);
  icu_->clear();
  if (parts.era != kAnyEra) icu_->set(UCAL_ERA, parts.era);
  icu_->set(within(parts.year), within(parts.month) - 1, within(parts.day));
  return dayOf(*icu_, 0);
}

std::int64_t DaySystem::plusMonths(std::int64_t day, std::int64_t months) const {
  if (isArithmetic(day)) {
    const CivilTime from = civilFromDays(day);
    const std::int64_t count = std::int64_t{from.year} * 12 + from.month - 1 + months;
    const std::int64_t year = floorDivide(count, 12);
    const auto month = static_cast<int>(floorRemainder(count, 12)) + 1;
    // No month is shorter than 28 days: the length is needed for its last days only.
    const int dayOfMonth = from.day <= 28 ? from.day : std::min(from.day, daysInMonth(year, month));
    const std::int64_t to = daysFromCivil(year, month, dayOfMonth);
    if (isArithmetic(to)) return to;
  }
  return askIcu(day, [=](icu::Calendar& icu) { return added(icu, day, UCAL_MONTH, months); });
}

std::int64_t DaySystem::plusYears(std::int64_t day, std::int64_t years) const {
  if (isArithmetic(day)) return plusMonths(day, years * 12);
  return askIcu(day, [=](icu::Calendar& icu) { return added(icu, day, UCAL_YEAR, years); });
}

std::int64_t DaySystem::firstOfMonth(std::int64_t day) const {
  if (isArithmetic(day)) return day - civilFromDays(day).day + 1;
  return askIcu(day, [=](icu::Calendar& icu) {
    icu.set(UCAL_DATE, 1);
    return dayOf(icu, day);
  });
}

std::int64_t DaySystem::lastOfMonth(std::int64_t day) const {
  if (isArithmetic(day)) {
    const CivilTime civil = civilFromDays(day);
    return day - civil.day + daysInMonth(civil.year, civil.month);
  }
  // ICU's own length of a month is a day short for some Chinese ones. No month has more than 31 days, and
  // none but the last of a year fewer than 29: 32 days on it is the next one.
  constexpr int kIntoTheNext = 32;
  return firstOfMonth(firstOfMonth(day) + kIntoTheNext) - 1;
}

std::int64_t DaySystem::firstOfQuarter(std::int64_t day) const {
  Parts at = parts(day);
  at.month = (at.month - 1) / 3 * 3 + 1;
  at.day = 1;
  return this->day(at);
}

std::int64_t DaySystem::firstOfYear(std::int64_t day) const {
  const Parts at = parts(day);
  return this->day({at.era, at.year, 1, 1});
}

int DaySystem::dayOfYear(std::int64_t day) const {
  if (isArithmetic(day)) return static_cast<int>(day - firstOfYear(day)) + 1;
  return askIcu(day, [](const icu::Calendar& icu) { return field(icu, UCAL_DAY_OF_YEAR); });
}

int DaySystem::firstWeekday() const {
  return askIcu(0, [](const icu::Calendar& icu) {
    UErrorCode status = U_ZERO_ERROR;
    return static_cast<int>(icu.getFirstDayOfWeek(status));
  });
}

int DaySystem::weekOfYear(std::int64_t day) const {
  return askIcu(day, [](const icu::Calendar& icu) { return field(icu, UCAL_WEEK_OF_YEAR); });
}

}  // namespace moniva
