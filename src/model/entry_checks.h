#pragma once

#include <string_view>

#include "base/result.h"
#include "calendar/calendar.h"
#include "model/moniva_account.h"

/// What every record is checked for before it is written, wherever it comes from.
namespace moniva {

/// Refused: an amount that is not finite, not above zero, or beyond all measure (1e12).
Result<> checkAmount(double amount);
/// Refused: a date before 1900 or after 2200, which is a slip of the hand.
Result<> checkRecordDate(const Calendar& calendar, Date date);
/// Refused: a record of a type that the account does not track and that would never enter its balance, such
/// as income on one that tracks expenses only.
Result<> checkTracked(const MonivaAccount& account, int type);

/// Whether a record entered for that moment is settled: it is unless the moment lies ahead.
inline bool isPaidAt(Date datetime, Date now) {
  return datetime <= now;
}
/// The same by the day, for records that know no time of day: settled unless the day lies ahead.
bool isPaidByDate(const Calendar& calendar, Date datetime, Date now);

/// Whether the record's day lies ahead, both here and in the zone in which it was made (blank where that is
/// not known): what was settled by the day at one end of a journey is settled at the other.
bool liesAhead(const Calendar& calendar, Date datetime, std::string_view zone, Date now);

/// The amount without the noise that sums of doubles leave behind its sixth decimal, which no amount has;
/// from a thousand million on, where doubles hold fewer decimals, behind the fifteenth digit.
double withoutNoise(double amount);
/// What one amount is above the other, without the noise that amounts of their size leave behind.
double difference(double one, double other);

}  // namespace moniva
