#include "model/entry_checks.h"

#include <algorithm>
#include <cmath>

#include "base/decimal.h"
#include "calendar/date_texts.h"
#include "model/account_balance.h"

namespace moniva {

namespace {

/// Of amounts that doubles have room for so many.
constexpr int kMostDecimals = 6;
constexpr int kLeastDecimals = 2;

}  // namespace

Result<> checkAmount(double amount) {
  constexpr double kMost = 1e12;
  if (!std::isfinite(amount) || amount <= 0) return refuse("an amount must be above zero; {} is not", amount);
  if (amount > kMost) return refuse("an amount of {} is beyond all measure", amount);
  return {};
}

Result<> checkRecordDate(const Calendar& calendar, Date date) {
  constexpr int kFirstYear = 1900;
  constexpr int kLastYear = 2200;
  if (!std::isfinite(date.secondsSince1970)) return refuse("a record needs a date");
  const int year = calendar.civilTime(date).year;
  if (year < kFirstYear || year > kLastYear) {
    return refuse("a record is dated between {} and {}; the year {} is not", kFirstYear, kLastYear, year);
  }
  return {};
}

Result<> checkTracked(const MonivaAccount& account, int type) {
  if (balanceSign(account, type) != 0) return {};
  return refuse("'{}' tracks expenses only; nothing else is recorded on it", account.title);
}

bool isPaidByDate(const Calendar& calendar, Date datetime, Date now) {
  return datetime <= calendar.dateEnd(now);
}

bool liesAhead(const Calendar& calendar, Date datetime, std::string_view zone, Date now) {
  if (datetime <= now || isPaidByDate(calendar, datetime, now)) return false;
  return zone.empty() ||
         integerDateOfTimeZone(calendar, datetime, zone) > integerDateOfTimeZone(calendar, now, zone);
}

double withoutNoise(double amount) {
  return rounded(amount, kMostDecimals);
}

double difference(double one, double other) {
  constexpr double kFifteenDigits = 1e9;  // with six decimals
  int decimals = kMostDecimals;
  for (double size = std::max(std::abs(one), std::abs(other));
       size >= kFifteenDigits && decimals > kLeastDecimals; size /= 10)
    --decimals;
  return rounded(one - other, decimals);
}

}  // namespace moniva
