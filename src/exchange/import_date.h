#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "base/result.h"

namespace moniva {

/// A day as a file writes it, with the time of day where the file gives one. Of no time zone: which point in
/// time is meant is for those to say who know the user's zone.
struct ImportDate {
  int year = 1970;  ///< 1 to 9999
  int month = 1;
  int day = 1;
  int hour = 0;
  int minute = 0;
  int second = 0;
  bool hasTime = false;

  bool operator==(const ImportDate&) const = default;
};

/// What the first number of "02/03/2024" is.
enum class DateOrder { automatic, dayFirst, monthFirst };

/// Reads "2024-02-29", "2024/2/29", "2024.2.29", "20240229", "29.02.2024", and by `order` "29/02/2024" or
/// "02/29/2024" (also with dashes), each optionally followed by a blank or a T and "14:30" or "14:30:05".
/// With DateOrder::automatic a date is refused that is a day in both orders, and not the same one.
/// Refused too, quoting the text: days the calendar does not have, two-digit years, anything else.
Result<ImportDate> parseImportDate(std::string_view text, DateOrder order);

/// Sets the time of `date` from "14:30" or "14:30:05". Refused: anything else.
Result<> parseImportTime(std::string_view text, ImportDate& date);

/// Finds out from the dates of a file whether the day or the month comes first: one of them above 12 settles
/// it for all.
class DateOrderSurvey {
 public:
  void add(std::string_view text, std::size_t line);

  /// The order in force. Refused when dates contradict each other, or when there are dates to which it
  /// matters and none of them tells; the sentence names them and their lines.
  [[nodiscard]] Result<DateOrder> decide() const;

 private:
  struct Witness {
    std::string text;
    std::size_t line;
  };

  std::optional<Witness> dayFirst_;
  std::optional<Witness> monthFirst_;
  std::optional<Witness> unclear_;
};

}  // namespace moniva
