#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/platform.h"

/// Whether this device's clock is right, by the date that a public web server gives with every answer.
namespace moniva {

/// The setting that names the server to ask, and the one asked where it is not set.
constexpr std::string_view kNetworkTimeServerKey = "NetworkTimeServer";
constexpr std::string_view kUsualNetworkTimeServer = "https://www.wikipedia.org/";

/// The server's date beside the device's at the same moment.
struct ClockCheck {
  std::string server;  ///< its address
  Date internetDate;   ///< in whole seconds
  Date deviceDate;

  /// How far the device is ahead; below zero where it is behind.
  double seconds() const { return deviceDate.secondsSince1970 - internetDate.secondsSince1970; }
};

/// The address to ask, by the settings.
std::string networkTimeServer(const Platform& platform);

/// The server's date; refused with the reason where the server gives none. Blocks while the server is waited
/// for; not for the main thread but where a person waits for it.
Result<Date> getInternetDate(Platform& platform);
Result<Date> getInternetDateFrom(Platform& platform, const std::string& url);

/// Compares the device's clock with that server's, or with that of the settings for "", and logs what came of
/// it. The device's date is that halfway between request and answer. Refused as getInternetDateFrom is.
Result<ClockCheck> checkInternetDate(Platform& platform, std::string url = {});

/// The moment that a web server writes as "Sun, 06 Nov 1994 08:49:37 GMT"; nothing for any other form, for a
/// day that is not on the calendar and for a wrong weekday.
std::optional<Date> parseHttpDate(std::string_view text);

}  // namespace moniva
