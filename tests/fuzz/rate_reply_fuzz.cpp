// Feeds bytes to the reader of exchange-rate replies, and what it takes to the reader of kept tables:
// whatever comes, a table is refused or every rate of it can be reckoned with.

// The library's own sources, so that the fuzzer sees which way they take.
#include <boost/json/src.hpp>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "currency/currency_codes.h"
#include "currency/rate_table.h"

namespace {

void insist(bool holds) {
  if (!holds) std::abort();
}

void insistOnSound(const moniva::RateTable& table) {
  insist(table.size() > 1 && table.at("USD") == 1.0F);
  for (const auto& [code, rate] : table) {
    insist(moniva::looksLikeCode(code) && std::isfinite(rate) && rate > 0);
    insist(static_cast<float>(moniva::decimalOf(rate)) == rate);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  const std::string_view body(reinterpret_cast<const char*>(bytes), size);
  if (const auto table = moniva::readRateReply(body)) {
    insistOnSound(*table);
    const auto kept = moniva::rateTableOf(moniva::jsonOf(*table));
    insist(kept && *kept == *table);
  }
  if (const auto rate = moniva::readRateOf(body, "EUR")) insist(std::isfinite(*rate) && *rate > 0);
  boost::json::error_code error;
  const auto value = boost::json::parse({body.data(), body.size()}, error);
  if (!error) {
    if (const auto table = moniva::rateTableOf(value)) insistOnSound(*table);
  }
  return 0;
}
