#pragma once

#include <string>
#include <string_view>

#include "base/result.h"
#include "platform/user_defaults.h"

namespace moniva {

/// Where exchange rates come from: the beginnings of addresses, "" for a service that is not to be asked.
/// They are settings of the device.
struct RateServices {
  static constexpr std::string_view kPrimaryKey = "ExchangeRateService";
  static constexpr std::string_view kSecondaryKey = "ExchangeRateSecondaryService";
  static constexpr std::string_view kUsualPrimary = "https://api.exchangerate-api.com";
  static constexpr std::string_view kUsualSecondary = "https://api.frankfurter.dev/v1";

  std::string primary;
  std::string secondary;

  /// What the settings say, else the usual ones.
  static RateServices of(const UserDefaults& defaults);
  /// Refuses what is neither "" nor an https address (http only of this machine itself), and what of such an
  /// address could not be asked: a user, a query, a port that is none.
  static Result<> check(const std::string& address);

  // "" for a service that is not to be asked; addresses may end in a slash.
  std::string tableUrl() const;                      ///< primary + "/v4/latest/USD"
  std::string pairUrl(std::string_view code) const;  ///< primary + "/v4/latest/%@"
  std::string secondTableUrl() const;                ///< secondary + "/latest?base=USD"
  /// Whom a URL asks: "api.exchangerate-api.com".
  static std::string hostOf(std::string_view url);
};

}  // namespace moniva
