#pragma once

#include <array>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

#include "calendar/date.h"
#include "calendar/zone.h"

U_NAMESPACE_BEGIN
class SimpleDateFormat;
U_NAMESPACE_END

namespace moniva {

/// The forms in which dates are written.
enum class DateForm {
  dayNumber,    ///< "yyyyMMdd"
  monthNumber,  ///< "yyyyMM"
  csvDay,       ///< "yyyy/MM/dd"
  dayAndTime,   ///< "yyyy-MM-dd HH:mm:ss"
  zoneName,     ///< "zzzz"
  monthAndDay,  ///< "MMM, dd"
  monthName,    ///< "LLLL", the month's full name standing alone
  weekdayName,  ///< "cccc", the weekday's full name standing alone
  tinyDay,      ///< the short day without its year
  shortDay,     ///< the locale's own styles, the day alone ...
  mediumDay,
  longDay,
  fullDay,
  shortDayAndTime,  ///< ... and the day with its time in the same style
  mediumDayAndTime,
  longDayAndTime,
  fullDayAndTime,
};
constexpr std::size_t kDateForms = 17;

/// Writes dates the way the user's locale does. Making an ICU formatter costs twenty times what using it
/// does, so each form has one, made at its first use and shared under a lock.
class TextFormats {
 public:
  /// `icuLocale` is ICU's name of the locale; `zone` must outlive this object.
  TextFormats(std::string icuLocale, const Zone& zone);
  ~TextFormats();

  /// UTF-8. `zoneId` is an IANA id; empty or unknown means the user's zone.
  [[nodiscard]] std::string write(DateForm form, Date date, std::string_view zoneId = {}) const;

  /// A text taken apart at the number of the day.
  struct AroundDay {
    std::string before;
    std::string number;
    std::string after;
  };
  /// The same in the user's zone, taken apart; nothing where the form says more of the day than its month,
  /// its year and one number, such as the weekday.
  [[nodiscard]] std::optional<AroundDay> writeAroundDay(DateForm form, Date date) const;

 private:
  [[nodiscard]] icu::SimpleDateFormat* format(DateForm form) const;
  [[nodiscard]] const Zone* otherZone(std::string_view id) const;

  std::string locale_;
  const Zone& zone_;
  mutable std::mutex mutex_;
  mutable std::array<std::unique_ptr<icu::SimpleDateFormat>, kDateForms> formats_;
  mutable std::map<std::string, std::unique_ptr<const Zone>, std::less<>> otherZones_;
};

}  // namespace moniva
