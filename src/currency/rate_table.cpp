#include "currency/rate_table.h"

#include <algorithm>
#include <array>
#include <boost/json.hpp>
#include <charconv>
#include <cmath>
#include <optional>

#include "base/text.h"
#include "currency/currency_codes.h"

namespace moniva {
namespace {

namespace json = boost::json;

/// A rate that can be reckoned with, in single precision; nothing for what is none.
std::optional<float> rateOf(const json::value& value) {
  if (!value.is_number()) return std::nullopt;
  const auto rate = static_cast<float>(value.to_number<double>());
  if (!std::isfinite(rate) || rate <= 0) return std::nullopt;
  return rate;
}

std::string shown(const json::value& value) {
  if (value.is_number()) return fmt::format("{}", value.to_number<double>());
  return excerpt(json::serialize(value), 20);
}

Result<RateTable> tableOf(const json::object& rates) {
  RateTable table;
  for (const auto& [name, value] : rates) {
    const std::string_view code(name.data(), name.size());
    if (!looksLikeCode(code)) continue;
    const auto rate = rateOf(value);
    if (!rate) return refuse("the rate of {} is {}, where a number above zero has to be", code, shown(value));
    table.emplace_hint(table.end(), code, *rate);
  }
  const auto dollar = table.try_emplace(std::string(kBaseCurrency), 1.0F).first;
  if (dollar->second != 1.0F) return refuse("the rates are not those of the US dollar");
  if (table.size() == 1) return refuse("there is no rate in it");
  return table;
}

/// The member "rates" of a reply, read into `memory`.
Result<json::value> ratesOf(std::string_view body, json::storage_ptr memory) {
  body = trimBlanks(body);
  if (body.empty()) return refuse("there is nothing in it");
  json::error_code error;
  json::value reply = json::parse({body.data(), body.size()}, error, std::move(memory));
  if (error) return refuse("it is no JSON text");
  json::value* rates = reply.is_object() ? reply.get_object().if_contains("rates") : nullptr;
  if (rates == nullptr || !rates->is_object()) return refuse("there is no table of rates in it");
  return std::move(*rates);
}

}  // namespace

Result<RateTable> readRateReply(std::string_view body) {
  json::monotonic_resource memory;
  const auto rates = ratesOf(body, &memory);
  if (!rates) return tl::make_unexpected(rates.error());
  return tableOf(rates->get_object());
}

Result<float> readRateOf(std::string_view body, std::string_view code) {
  json::monotonic_resource memory;
  const auto rates = ratesOf(body, &memory);
  if (!rates) return tl::make_unexpected(rates.error());
  const json::value* value = rates->get_object().if_contains({code.data(), code.size()});
  if (value == nullptr) return refuse("there is no rate of {} in it", code);
  const auto rate = rateOf(*value);
  if (!rate) return refuse("the rate of {} is {}, where a number above zero has to be", code, shown(*value));
  return *rate;
}

std::string statedBase(std::string_view body) {
  json::error_code error;
  const json::value reply = json::parse({body.data(), body.size()}, error);
  if (error || !reply.is_object()) return {};
  for (const auto* name : {"base", "base_code"}) {
    const json::value* base = reply.get_object().if_contains(name);
    if (base != nullptr && base->is_string()) return std::string(base->get_string());
  }
  return {};
}

json::value jsonOf(const RateTable& table) {
  json::object rates;
  rates.reserve(table.size());
  for (const auto& [code, rate] : table) rates.emplace(code, decimalOf(rate));
  return rates;
}

Result<RateTable> rateTableOf(const json::value& kept) {
  if (!kept.is_object()) return refuse("what is kept is no table of rates");
  return tableOf(kept.get_object());
}

double decimalOf(float rate) {
  std::array<char, 32> text{};
  const auto written = std::to_chars(text.data(), text.data() + text.size(), rate);
  double decimal = rate;
  std::from_chars(text.data(), written.ptr, decimal);
  return decimal;
}

}  // namespace moniva
