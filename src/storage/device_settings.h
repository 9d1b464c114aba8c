#pragma once

#include <fmt/format.h>

#include <string>

#include "platform/user_defaults.h"

namespace moniva {

/// The setting of this device as the store would keep it: a text as it is, a date as its seconds; blank for
/// none.
inline std::string deviceSetting(const UserDefaults& defaults, std::string_view key) {
  if (const auto date = defaults.dateForKey(key)) return fmt::format("{}", date->secondsSince1970);
  return defaults.stringForKey(key).value_or("");
}

}  // namespace moniva
