#include "calendar/zoned_calendar.h"

#include <algorithm>
#include <cmath>

namespace moniva {
namespace {

// Some three million years either way. Beyond it ICU's counting of days overflows; such dates come from
// damaged files and are only required not to do harm.
constexpr std::int64_t kFurthestTakenDay = 1'000'000'000;
constexpr auto kFurthestSeconds = static_cast<double>(kFurthestTakenDay * kSecondsPerDay);

std::int64_t wallSecondsOf(std::int64_t day, std::int64_t secondOfDay) {
  return std::clamp(day, -kFurthestTakenDay, kFurthestTakenDay) * kSecondsPerDay + secondOfDay;
}

Date dateOf(std::int64_t seconds) {
  return {static_cast<double>(seconds)};
}

}  // namespace

ZonedCalendar::ZonedCalendar(std::unique_ptr<const Zone> zone, std::string locale,
                             std::unique_ptr<const DaySystem> days,
                             std::unique_ptr<const DaySystem> gregorian)
    : zone_(std::move(zone)),
      locale_(std::move(locale)),
      days_(std::move(days)),
      gregorian_(std::move(gregorian)),
      formats_(std::make_unique<const TextFormats>(locale_, *zone_)) {}

ZonedCalendar::Taken ZonedCalendar::taken(Date date) const {
  const double seconds = std::isnan(date.secondsSince1970)
                             ? 0
                             : std::clamp(date.secondsSince1970, -kFurthestSeconds, kFurthestSeconds);
  const double whole = std::floor(seconds);
  const auto instant = static_cast<std::int64_t>(whole);
  const std::int64_t offset = zone_->offsetAt(instant);
  const std::int64_t day = floorDivide(instant + offset, kSecondsPerDay);
  return {day, instant + offset - day * kSecondsPerDay, offset, seconds - whole};
}

Date ZonedCalendar::beginOfDay(std::int64_t dayNumber) const {
  return dateOf(zone_->wall(wallSecondsOf(dayNumber, 0)).change);
}

Date ZonedCalendar::endOfDay(std::int64_t dayNumber) const {
  const Zone::Wall wall = zone_->wall(wallSecondsOf(dayNumber, kSecondsPerDay - 1));
  return dateOf(wall.kind == Zone::Wall::Kind::skipped ? wall.change - 1 : wall.last);
}

Date ZonedCalendar::onDay(const Taken& from, std::int64_t dayNumber) const {
  const std::int64_t wallSeconds = wallSecondsOf(dayNumber, from.secondOfDay);
  const Zone::Wall wall = zone_->wall(wallSeconds);
  std::int64_t instant = wall.first;
  if (wall.kind == Zone::Wall::Kind::twice && wallSeconds - wall.last == from.offset) instant = wall.last;
  if (wall.kind == Zone::Wall::Kind::skipped) {
    // Where a whole day is left out, going back from the day after it must not end where it began.
    const bool wholeDay = wall.last - wall.first >= kSecondsPerDay;
    instant = wholeDay && dayNumber < from.day ? wall.first : wall.last;
  }
  return dateOf(instant).plusSeconds(from.fraction);
}

Date ZonedCalendar::withTimeOf(Date date, Date timeOf) const {
  const Zone::Wall wall = zone_->wall(wallSecondsOf(taken(date).day, taken(timeOf).secondOfDay));
  return dateOf(wall.kind == Zone::Wall::Kind::skipped ? wall.last : wall.first);
}

ZonedCalendar::Resolved ZonedCalendar::resolve(const CivilTime& civil) const {
  const std::int64_t day = gregorian().day({DaySystem::kAnyEra, civil.year, civil.month, civil.day});
  const std::int64_t minutes = civil.hour * std::int64_t{60} + civil.minute;
  const Zone::Wall wall = zone_->wall(wallSecondsOf(day, minutes * 60 + civil.second));
  const bool skipped = wall.kind == Zone::Wall::Kind::skipped;
  return {dateOf(skipped ? wall.last : wall.first), skipped, wall.kind == Zone::Wall::Kind::twice};
}

CivilTime ZonedCalendar::civilTime(Date date) const {
  const Taken at = taken(date);
  const DaySystem::Parts parts = gregorian().parts(at.day);
  const auto second = static_cast<int>(at.secondOfDay);
  return {parts.year, parts.month, parts.day, second / 3'600, second / 60 % 60, second % 60};
}

}  // namespace moniva
