// What converting an amount and showing it costs beside bare calls of ICU, what reading a reply of a service
// costs beside the JSON reader alone, and what making the manager of rates costs; as ratios of both in the
// same run.

#include <benchmark/benchmark.h>
#include <unicode/numberformatter.h>

#include <array>
#include <boost/json.hpp>
#include <cmath>

#include "currency/amount_format.h"
#include "currency/currency_manager.h"
#include "side_by_side.h"

namespace moniva {
namespace {

constexpr int kAmounts = 2'000;
constexpr std::array kCodes = {"EUR", "GBP", "CHF", "USD"};

/// A table of two hundred currencies, with rates of as many digits as services give.
RateTable largeTable() {
  RateTable table{{"USD", 1.0F}, {"EUR", 0.9216F}, {"GBP", 0.7873F}, {"CHF", 0.8814F}};
  for (int i = 0; table.size() < 200; ++i)
    table.emplace(fmt::format("Q{:c}{:c}", 'A' + i / 26, 'A' + i % 26),
                  std::round(1e4F * std::exp(static_cast<float>(i % 19) - 6)) / 1e4F + 0.0123F);
  return table;
}

std::string largeReply() {
  std::string rates;
  for (const auto& [code, rate] : largeTable())
    rates += fmt::format("{}\"{}\":{}", rates.empty() ? "" : ",", code, decimalOf(rate));
  return fmt::format(R"({{"base":"USD","date":"2026-11-21","time_last_updated":1795219201,"rates":{{{}}}}})",
                     rates);
}

/// A device that keeps a table and asks nobody.
struct KeptRates {
  KeptRates() {
    platform.calendar = Calendar::make("Europe/Berlin", "en_US").value();
    platform.clock = std::make_unique<FixedClock>(Date{1.7e9});
    platform.userDefaults = std::make_unique<MemoryUserDefaults>();
    platform.userDefaults->setDate({1.7e9}, "CurrencyManagerLastRefresh");
    platform.userDefaults->setObject(jsonOf(largeTable()), "CurrencyManagerExchangeRates");
  }
  Platform platform;
};

double amountAt(int i) {
  return 12.34 + 7.01 * i;
}
const char* codeAt(int i) {
  return kCodes[static_cast<std::size_t>(i) % kCodes.size()];
}

void convertingAndShowing(benchmark::State& state) {
  KeptRates kept;
  CurrencyManager manager(kept.platform);
  const AmountFormat amounts = AmountFormat::make("en_US").value();
  const auto ours = [&](int i) {
    const char* to = codeAt(i + 1);
    const float rate = manager.exchangeRateFromCurrency(codeAt(i), to);
    return amounts.format(converted(amountAt(i), decimalOf(rate), currencyDigits(to)), to);
  };

  const RateTable table = largeTable();
  std::vector<icu::number::LocalizedNumberFormatter> formatters;
  std::vector<double> rates;
  for (int i = 0; i < static_cast<int>(kCodes.size()); ++i) {
    UErrorCode status = U_ZERO_ERROR;
    const std::string to = codeAt(i + 1);
    const icu::CurrencyUnit unit(icu::UnicodeString::fromUTF8(to).getTerminatedBuffer(), status);
    formatters.push_back(icu::number::NumberFormatter::withLocale(icu::Locale::getUS()).unit(unit));
    rates.push_back(decimalOf(table.at(to) / table.at(codeAt(i))));
  }
  const auto theirs = [&](int i) {
    const auto pair = static_cast<std::size_t>(i) % kCodes.size();
    const double amount = std::round(amountAt(i) * rates[pair] * 100) / 100;
    UErrorCode status = U_ZERO_ERROR;
    std::string text;
    return formatters[pair].formatDouble(amount, status).toString(status).toUTF8String(text);
  };
  for (int i = 0; i < kAmounts; ++i) {
    if (ours(i) != theirs(i)) return state.SkipWithError("both show another amount");
  }
  const auto all = [](const auto& one) {
    return [&one] {
      for (int i = 0; i < kAmounts; ++i) benchmark::DoNotOptimize(one(i));
    };
  };
  bench::sideBySide(state, kAmounts, all(ours), all(theirs));
}
BENCHMARK(convertingAndShowing)->UseManualTime()->Unit(benchmark::kMicrosecond)->Iterations(60);

void readingAReply(benchmark::State& state) {
  const std::string body = largeReply();
  if (readRateReply(body) != largeTable()) return state.SkipWithError("the reply is not what was written");
  constexpr int kTimes = 50;
  bench::sideBySide(
      state, kTimes,
      [&] {
        for (int i = 0; i < kTimes; ++i) benchmark::DoNotOptimize(readRateReply(body));
      },
      [&] {
        for (int i = 0; i < kTimes; ++i) benchmark::DoNotOptimize(boost::json::parse(body));
      });
}
BENCHMARK(readingAReply)->UseManualTime()->Unit(benchmark::kMicrosecond)->Iterations(60);

/// Beside parsing the same table from its text.
void makingTheManager(benchmark::State& state) {
  KeptRates kept;
  const std::string text = boost::json::serialize(jsonOf(largeTable()));
  if (CurrencyManager(kept.platform).exchangeRates() != largeTable())
    return state.SkipWithError("the table is not the one that was kept");
  constexpr int kTimes = 50;
  bench::sideBySide(
      state, kTimes,
      [&] {
        for (int i = 0; i < kTimes; ++i)
          benchmark::DoNotOptimize(CurrencyManager(kept.platform).isRefreshing());
      },
      [&] {
        for (int i = 0; i < kTimes; ++i) benchmark::DoNotOptimize(boost::json::parse(text));
      });
}
BENCHMARK(makingTheManager)->UseManualTime()->Unit(benchmark::kMicrosecond)->Iterations(60);

}  // namespace
}  // namespace moniva
