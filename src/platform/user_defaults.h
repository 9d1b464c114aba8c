#pragma once

#include <boost/json.hpp>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "base/result.h"
#include "calendar/date.h"

namespace moniva {

/// The settings of this device, kept outside the data file so that a copied data file does not carry them
/// along. Values are JSON values; dates are numbers of seconds since 1970. Safe to use from several threads.
/// Changes are held in memory until `synchronize`.
class UserDefaults {
 public:
  virtual ~UserDefaults() = default;

  std::optional<boost::json::value> objectForKey(std::string_view key) const;
  /// The text under the key; nothing when it is absent or not a text.
  std::optional<std::string> stringForKey(std::string_view key) const;
  /// The date under the key; nothing when it is absent or not a number.
  std::optional<Date> dateForKey(std::string_view key) const;

  void setObject(boost::json::value value, std::string_view key);
  void setString(std::string_view value, std::string_view key);
  void setDate(Date value, std::string_view key);
  void removeObjectForKey(std::string_view key);

  /// The text under the key, or `text` put there when there is none. Of programs that ask at the same time
  /// all get the same; the answer is kept at once.
  virtual Result<std::string> stringForKeyOrSet(std::string_view key, std::string_view text);

  /// Brings what was changed to where it is kept. Fails with the reason when that place cannot be written.
  virtual Result<> synchronize() = 0;

 protected:
  using Values = std::map<std::string, boost::json::value, std::less<>>;
  mutable std::mutex mutex_;
  Values values_;
  /// What was set (a value) or removed (nothing) since the last `synchronize`.
  std::map<std::string, std::optional<boost::json::value>, std::less<>> changes_;
};

/// User defaults that live and die with the object.
class MemoryUserDefaults final : public UserDefaults {
 public:
  Result<> synchronize() override { return {}; }
};

}  // namespace moniva
