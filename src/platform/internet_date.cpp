#include "platform/internet_date.h"

#include <fmt/format.h>

#include "calendar/civil_time.h"
#include "calendar/date_texts.h"

namespace moniva {
namespace {

constexpr std::string_view kWeekdays = "SunMonTueWedThuFriSat";
constexpr std::string_view kMonths = "JanFebMarAprMayJunJulAugSepOctNovDec";

/// The place of a name of three letters among others; nothing for none.
std::optional<int> placeOfName(std::string_view name, std::string_view names) {
  const auto at = names.find(name);
  if (at == std::string_view::npos || at % 3 != 0) return std::nullopt;
  return static_cast<int>(at / 3);
}

/// A number of digits only; -1 for anything else.
int numberOf(std::string_view digits) {
  int number = 0;
  for (const char digit : digits) {
    if (digit < '0' || digit > '9') return -1;
    number = number * 10 + (digit - '0');
  }
  return number;
}

}  // namespace

std::optional<Date> parseHttpDate(std::string_view text) {
  // Its marks alone: the places of the others hold what is read below.
  constexpr std::string_view kForm = "___, __ ___ ____ __:__:__ GMT";
  if (text.size() != kForm.size()) return std::nullopt;
  for (std::size_t at = 0; at < kForm.size(); ++at) {
    if (kForm[at] != '_' && kForm[at] != text[at]) return std::nullopt;
  }
  const auto weekday = placeOfName(text.substr(0, 3), kWeekdays);
  const auto month = placeOfName(text.substr(8, 3), kMonths);
  const int day = numberOf(text.substr(5, 2));
  const int year = numberOf(text.substr(12, 4));
  const int hour = numberOf(text.substr(17, 2));
  const int minute = numberOf(text.substr(20, 2));
  const int second = numberOf(text.substr(23, 2));
  if (!weekday || !month || day < 1 || year < 0 || hour < 0 || hour > 23 || minute < 0 || minute > 59 ||
      second < 0 || second > 60) {
    return std::nullopt;
  }
  const auto first = daysFromCivil(year, *month + 1, 1);
  const auto next = *month == 11 ? daysFromCivil(year + 1, 1, 1) : daysFromCivil(year, *month + 2, 1);
  const auto days = first + day - 1;
  // 1 January 1970 was a Thursday.
  if (days >= next || floorRemainder(days + 4, 7) != *weekday) return std::nullopt;
  const int seconds = (hour * 60 + minute) * 60 + second;
  return Date{static_cast<double>(days * kSecondsPerDay + seconds)};
}

std::string networkTimeServer(const Platform& platform) {
  const auto kept = platform.userDefaults->stringForKey(kNetworkTimeServerKey);
  return kept && !kept->empty() ? *kept : std::string(kUsualNetworkTimeServer);
}

Result<Date> getInternetDate(Platform& platform) {
  return getInternetDateFrom(platform, networkTimeServer(platform));
}

Result<Date> getInternetDateFrom(Platform& platform, const std::string& url) {
  const auto reply = platform.http->get(url, {.headersOnly = true});
  if (!reply) return tl::make_unexpected(reply.error());
  const std::string text = reply->header("date");
  if (text.empty()) return refuse("'{}' does not say what time it is", url);
  const auto date = parseHttpDate(text);
  if (!date) return refuse("'{}' says that it is '{}', which is no date", url, text);
  return *date;
}

Result<ClockCheck> checkInternetDate(Platform& platform, std::string url) {
  if (url.empty()) url = networkTimeServer(platform);
  const Date asked = platform.now();
  const auto date = getInternetDateFrom(platform, url);
  if (!date) return tl::make_unexpected(date.error());
  const Date answered = platform.now();
  const ClockCheck check{url, *date,
                         asked.plusSeconds((answered.secondsSince1970 - asked.secondsSince1970) / 2)};
  const auto written = [&](Date moment) { return stringOfDatetime(*platform.calendar, moment, "UTC"); };
  platform.log.line(fmt::format("33333-==== [{}] [{}] [{}] {:f}", url, written(check.internetDate),
                                written(check.deviceDate), check.seconds()));
  return check;
}

}  // namespace moniva
