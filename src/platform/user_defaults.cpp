#include "platform/user_defaults.h"

namespace moniva {

std::optional<boost::json::value> UserDefaults::objectForKey(std::string_view key) const {
  const std::scoped_lock lock(mutex_);
  const auto found = values_.find(key);
  if (found == values_.end()) return std::nullopt;
  return found->second;
}

std::optional<std::string> UserDefaults::stringForKey(std::string_view key) const {
  const auto value = objectForKey(key);
  if (!value || !value->is_string()) return std::nullopt;
  return std::string(value->get_string());
}

std::optional<Date> UserDefaults::dateForKey(std::string_view key) const {
  const auto value = objectForKey(key);
  if (!value || !value->is_number()) return std::nullopt;
  return Date{value->to_number<double>()};
}

void UserDefaults::setObject(boost::json::value value, std::string_view key) {
  const std::scoped_lock lock(mutex_);
  changes_.insert_or_assign(std::string(key), value);
  values_.insert_or_assign(std::string(key), std::move(value));
}

void UserDefaults::setString(std::string_view value, std::string_view key) {
  setObject(boost::json::string(value), key);
}

void UserDefaults::setDate(Date value, std::string_view key) {
  setObject(value.secondsSince1970, key);
}

Result<std::string> UserDefaults::stringForKeyOrSet(std::string_view key, std::string_view text) {
  if (auto known = stringForKey(key); known && !known->empty()) return *std::move(known);
  setString(text, key);
  if (auto kept = synchronize(); !kept) return tl::make_unexpected(kept.error());
  return std::string(text);
}

void UserDefaults::removeObjectForKey(std::string_view key) {
  const std::scoped_lock lock(mutex_);
  if (const auto found = values_.find(key); found != values_.end()) {
    changes_.insert_or_assign(std::string(key), std::nullopt);
    values_.erase(found);
  }
}

}  // namespace moniva
