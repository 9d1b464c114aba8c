#include "model/entry_checks.h"

#include <algorithm>
#include <cmath>

#include "calendar/date_texts.h"
#include "model/account_balance.h"

namespace moniva {

namespace {

double roundedBySize(double amount, double size) {
  constexpr double kFifteenDigits = 1e15;
  double scale = 1e6;
  while (scale > 100 && std::abs(size) * scale >= kFifteenDigits) scale /= 10;
  return std::round(amount * scale) / scale;
}

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
  return roundedBySize(amount, amount);
}

double difference(double one, double other) {
  return roundedBySize(one - other, std::max(std::abs(one), std::abs(other)));
}

}  // namespace moniva
