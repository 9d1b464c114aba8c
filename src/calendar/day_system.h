#pragma once

#include <unicode/utypes.h>

#include <cstdint>
#include <memory>
#include <mutex>
#include <string>

#include "base/result.h"
#include "calendar/civil_time.h"

U_NAMESPACE_BEGIN
class Calendar;
U_NAMESPACE_END

namespace moniva {

/// How days are counted into months and years: Gregorian, Buddhist, Persian and so on. Zones play no part
/// here.
///
/// A day is the number of days since Gregorian 1970-01-01. Gregorian days from 1583 on are plain arithmetic;
/// any other day or calendar is asked of ICU, whose one calendar object is shared under a lock.
class DaySystem {
 public:
  /// A day taken apart. Eras count as in ICU; `kAnyEra` lets the calendar choose its current one.
  struct Parts {
    int era;
    int year;
    int month;  ///< from 1
    int day;    ///< from 1
  };
  static constexpr int kAnyEra = -1;

  /// The calendar of an ICU locale name ("en_US", "fa_IR@calendar=persian").
  static Result<std::unique_ptr<const DaySystem>> make(const std::string& icuLocale);
  ~DaySystem();

  [[nodiscard]] bool isGregorian() const { return gregorian_; }
  [[nodiscard]] Parts parts(std::int64_t day) const;
  /// The day of some parts. Months and days out of range count on into the years and months around.
  [[nodiscard]] std::int64_t day(const Parts& parts) const;

  /// The same day of the month `months` later, or the month's last where it has no such day.
  [[nodiscard]] std::int64_t plusMonths(std::int64_t day, std::int64_t months) const;
  /// The same day of the year `years` later, clamped likewise.
  [[nodiscard]] std::int64_t plusYears(std::int64_t day, std::int64_t years) const;

  [[nodiscard]] std::int64_t firstOfMonth(std::int64_t day) const;
  [[nodiscard]] std::int64_t lastOfMonth(std::int64_t day) const;
  [[nodiscard]] std::int64_t firstOfQuarter(std::int64_t day) const;
  [[nodiscard]] std::int64_t firstOfYear(std::int64_t day) const;
  [[nodiscard]] int dayOfYear(std::int64_t day) const;
  /// The locale's first weekday, 1 Sunday ... 7 Saturday.
  [[nodiscard]] int firstWeekday() const;
  /// The week of the year, by the locale's first weekday and shortest first week.
  [[nodiscard]] int weekOfYear(std::int64_t day) const;

 private:
  explicit DaySystem(std::unique_ptr<icu::Calendar> icu);
  [[nodiscard]] bool isArithmetic(std::int64_t day) const;
  /// Sets the shared ICU calendar to `day` and returns what `ask` makes of it.
  template <class Ask>
  auto askIcu(std::int64_t day, Ask ask) const;

  bool gregorian_;
  mutable std::mutex icuMutex_;
  std::unique_ptr<icu::Calendar> icu_;
};

}  // namespace moniva
