#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "calendar/civil_time.h"
#include "calendar/date.h"
#include "calendar/day_system.h"
#include "calendar/lazy.h"
#include "calendar/text_formats.h"
#include "calendar/zone.h"

namespace moniva {

/// The user's zone and calendar together, and the few operations on dates that all others are made of.
///
/// Where the clock is set forward some wall times do not exist; they become the time later by the gap, and
/// the beginning of a day the first instant after it. Where it is set back some come twice: arithmetic keeps
/// to the offset it started from, a time built from its parts is the first, and a day ends with its last
/// 23:59:59.
class ZonedCalendar {
 public:
  /// When a civil time is. `moved`: the clock skips that time. `ambiguous`: it comes twice, `date` is the
  /// first.
  struct Resolved {
    Date date;
    bool moved = false;
    bool ambiguous = false;
  };

  [[nodiscard]] const std::string& zone() const { return zone_->id(); }
  /// ICU's name of the locale: "en_US", "zh_Hans_CN", "fa_IR@calendar=persian".
  [[nodiscard]] const std::string& locale() const { return locale_; }

  /// The day a date falls on, as days since Gregorian 1970-01-01, whatever the user's calendar.
  [[nodiscard]] std::int64_t dayNumber(Date date) const { return taken(date).day; }
  /// The first instant of a day; of a day that the zone skipped, the first instant after it.
  [[nodiscard]] Date beginOfDay(std::int64_t dayNumber) const;
  /// The last 23:59:59 of a day.
  [[nodiscard]] Date endOfDay(std::int64_t dayNumber) const;
  /// The user's calendar, for arithmetic on day numbers.
  [[nodiscard]] const DaySystem& days() const { return *days_; }
  [[nodiscard]] const TextFormats& formats() const { return *formats_; }

  /// The date of a Gregorian civil time; its fields must name a time that exists in some zone.
  [[nodiscard]] Resolved resolve(const CivilTime& civil) const;
  /// A date as a Gregorian civil time, whatever the user's calendar.
  [[nodiscard]] CivilTime civilTime(Date date) const;

 protected:
  /// A date taken apart.
  struct Taken {
    std::int64_t day;
    std::int64_t secondOfDay;
    std::int64_t offset;
    double fraction;  ///< of a second
  };
  [[nodiscard]] Taken taken(Date date) const;

  ZonedCalendar(std::unique_ptr<const Zone> zone, std::string locale, std::unique_ptr<const DaySystem> days,
                std::unique_ptr<const DaySystem> gregorian);
  ~ZonedCalendar() = default;

  /// A date's day at another's time of day.
  [[nodiscard]] Date withTimeOf(Date date, Date timeOf) const;
  /// The same time of day on another day.
  [[nodiscard]] Date onDay(const Taken& from, std::int64_t dayNumber) const;

 private:
  [[nodiscard]] const DaySystem& gregorian() const { return gregorian_ ? *gregorian_ : *days_; }

  std::unique_ptr<const Zone> zone_;
  std::string locale_;
  std::unique_ptr<const DaySystem> days_;
  std::unique_ptr<const DaySystem> gregorian_;  ///< only beside a user's calendar that is another
  std::unique_ptr<const TextFormats> formats_;
};

}  // namespace moniva
