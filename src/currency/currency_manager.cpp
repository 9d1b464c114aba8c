#include "currency/currency_manager.h"

#include <algorithm>
#include <cmath>
#include <future>

#include "base/decimal.h"
#include "base/text.h"

namespace moniva {
namespace {

constexpr std::string_view kRefreshKey = "CurrencyManagerLastRefresh";
constexpr std::string_view kRatesKey = "CurrencyManagerExchangeRates";
/// Where they were loaded from.
constexpr std::string_view kFileKey = "ExchangeRatesFile";

/// A time that a clock shows: from 1970 to 9999.
bool isSoundTime(Date date) {
  constexpr double kEnd = 253'402'300'800;
  return date.secondsSince1970 > 0 && date.secondsSince1970 < kEnd;
}

Refusal noService() {
  return refuse("no service is set that exchange rates could come from").value();
}

}  // namespace

CurrencyManager* CurrencyManager::sharedManager(Platform* platform) {
  // Never freed: it is there until the program ends.
  static CurrencyManager* shared = nullptr;
  if (shared == nullptr && platform != nullptr) shared = new CurrencyManager(*platform);
  return shared;
}

CurrencyManager::CurrencyManager(Platform& platform, FirstFetch first) : platform_(platform) {
  loadKept(first);
}

void CurrencyManager::loadKept(FirstFetch first) {
  auto date = platform_.userDefaults->dateForKey(kRefreshKey);
  if (date && !isSoundTime(*date)) date.reset();
  lastRefresh_ = date.value_or(platform_.now());
  if (auto kept = keptRates(*platform_.userDefaults)) {
    exchangeRates_ = *std::move(kept);
  } else {
    platform_.log.line(fmt::format("==get currency rate: those kept are not used: {}", kept.error()));
  }
  // Of rates without a date nobody knows the age.
  if (first == FirstFetch::atOnce && (exchangeRates_.empty() || !date)) forceRefresh();
}

std::string CurrencyManager::file() const {
  return platform_.userDefaults->stringForKey(kFileKey).value_or("");
}

Result<RateTable> CurrencyManager::keptRates(const UserDefaults& defaults) {
  const auto kept = defaults.objectForKey(kRatesKey);
  return kept ? rateTableOf(*kept) : RateTable();
}

bool CurrencyManager::isOld(Date now) const {
  constexpr double kDay = 86'400;
  // A table of days to come was taken while the clock was wrong: nobody knows its age.
  const bool isAhead = lastRefresh_ > now.plusSeconds(kDay);
  return !exchangeRates_.empty() && (isAhead || now > lastRefresh_.plusSeconds(kOldAfter));
}

void CurrencyManager::refreshIfNeeded() {
  const Date now = platform_.now();
  if (now > lastRefresh_.plusSeconds(kRefreshAfter) || lastRefresh_ > now) forceRefresh();
}

void CurrencyManager::forceRefresh() {
  if (refreshing_) return;
  const auto services = RateServices::of(*platform_.userDefaults);
  if (services.tableUrl().empty() && services.secondTableUrl().empty()) {
    failure_ = noService();
    return;
  }
  refreshing_ = true;
  outrun_ = false;
  takenEarly_ = 0;
  failure_.reset();
  partFailure_.reset();
  came_ = {};
  refreshQueue_.dispatch([this] { refreshExchangeRates(); });
}

bool CurrencyManager::waitForRefresh(std::chrono::milliseconds time) {
  const auto end = std::chrono::steady_clock::now() + time;
  for (;;) {
    platform_.mainQueue.runPending();
    if (!refreshing_) return true;
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - std::chrono::steady_clock::now());
    if (left.count() <= 0) return false;
    refreshQueue_.drainWithin(left);
  }
}

bool CurrencyManager::takeWhatCame() {
  if (!refreshing_ || outrun_) return !failure_;
  auto [table, number] = whatCame();
  if (number > takenEarly_) {
    finishRefreshWithExchangeRates(std::move(table));
    outrun_ = false;
    takenEarly_ = number;
  } else if (number == 0 && !failure_) {
    failure_ = refuse("no service has answered yet").value();
  }
  return number > 0;
}

void CurrencyManager::refreshExchangeRates() {
  const auto services = RateServices::of(*platform_.userDefaults);
  const auto ask = [this](std::size_t service, const std::string& url) {
    if (url.empty()) return;
    Answer answer;
    answer.table = refreshExchangeRatesOn(url, &answer.why);
    const std::scoped_lock lock(cameMutex_);
    came_[service] = std::move(answer);
  };
  const auto second = std::async(std::launch::async, ask, 1, services.secondTableUrl());
  ask(0, services.tableUrl());
  second.wait();
  platform_.mainQueue.dispatch([weak = std::weak_ptr(self_)] {
    if (const auto self = weak.lock()) (**self).refreshEnded();
  });
}

std::pair<RateTable, int> CurrencyManager::whatCame() {
  const std::scoped_lock lock(cameMutex_);
  RateTable table;
  int number = 0;
  for (const auto& answer : came_) {
    if (!answer.table) continue;
    RateTable over = *answer.table;
    over.merge(table);
    table = std::move(over);
    ++number;
  }
  return {std::move(table), number};
}

void CurrencyManager::refreshEnded() {
  refreshing_ = false;
  if (outrun_) return;
  auto [table, number] = whatCame();
  if (number > takenEarly_) finishRefreshWithExchangeRates(std::move(table));
  std::optional<Refusal> why;
  for (const auto& answer : came_) {
    if (answer.why) why = why ? refuse("{}; {}", *why, *answer.why).value() : *answer.why;
  }
  if (number > 0) {
    partFailure_ = std::move(why);
  } else {
    failure_ = why ? std::move(why) : noService();
  }
}

std::optional<RateTable> CurrencyManager::refreshExchangeRatesOn(const std::string& url,
                                                                 std::optional<Refusal>* why) {
  const auto failed = [&](const Refusal& reason) {
    platform_.log.line(fmt::format("==get currency rate: {}", reason));
    if (why != nullptr) *why = reason;
    return std::nullopt;
  };
  const auto reply = platform_.http->get(url);
  if (!reply) return failed(reply.error());
  auto table = readRateReply(reply->body);
  if (!table) {
    if (!trimBlanks(reply->body).empty()) {
      platform_.log.line(
          fmt::format("==get currency rate ERROR rateJson:{} url:{}", excerpt(reply->body), url));
    }
    return failed(refuse("{}: {}", RateServices::hostOf(url), table.error()).value());
  }
  platform_.log.line(fmt::format("==get currency rate Succesful rateJson:{} url:{}", table->size(), url));
  return *std::move(table);
}

void CurrencyManager::finishRefreshWithExchangeRates(RateTable table, const std::string& file) {
  lastRefresh_ = platform_.now();
  exchangeRates_ = std::move(table);
  exchangeRates_.try_emplace(std::string(baseCurrency), 1.0F);
  conversionDict_.clear();
  failure_.reset();
  partFailure_.reset();
  outrun_ = refreshing_;
  auto& defaults = *platform_.userDefaults;
  defaults.setDate(lastRefresh_, kRefreshKey);
  defaults.setObject(jsonOf(exchangeRates_), kRatesKey);
  if (file.empty()) {
    defaults.removeObjectForKey(kFileKey);
  } else {
    defaults.setString(file, kFileKey);
  }
  if (const auto kept = defaults.synchronize(); !kept)
    platform_.log.line(fmt::format("==get currency rate: the rates are not kept: {}", kept.error()));
  platform_.notifications.post(notification::kExchangeRateRefreshFinished);
}

std::optional<float> CurrencyManager::pairRate(std::string_view from, std::string_view toCurrency) const {
  const auto of = exchangeRates_.find(from);
  const auto to = exchangeRates_.find(toCurrency);
  if (of == exchangeRates_.end() || to == exchangeRates_.end()) return std::nullopt;
  if (from == baseCurrency) return to->second;
  const float rate = to->second / of->second;
  if (!std::isfinite(rate) || rate <= 0) return std::nullopt;
  return rate;
}

float CurrencyManager::exchangeRateFromCurrency(std::string_view from, std::string_view toCurrency) {
  if (from == toCurrency) return 1;
  std::string pair;
  pair.append(from).append(" ").append(toCurrency);
  if (const auto known = conversionDict_.find(pair); known != conversionDict_.end()) return known->second;
  const auto rate = pairRate(from, toCurrency);
  if (!rate) return 1;
  return conversionDict_.emplace(std::move(pair), *rate).first->second;
}

bool CurrencyManager::knowsRate(std::string_view from, std::string_view toCurrency) const {
  return from == toCurrency || pairRate(from, toCurrency).has_value();
}

Result<float> CurrencyManager::exchangeRateFromCurrency(Platform& platform, std::string_view from,
                                                        std::string_view toCurrency) {
  for (const auto code : {from, toCurrency}) {
    if (!looksLikeCode(code)) return refuse("'{}' is no currency's code; one looks like USD", code);
  }
  if (from == toCurrency) return 1.0F;
  const std::string url = RateServices::of(*platform.userDefaults).pairUrl(from);
  if (url.empty()) return tl::make_unexpected(noService());
  const auto reply = platform.http->get(url);
  if (!reply) return tl::make_unexpected(reply.error());
  const auto rate = readRateOf(reply->body, toCurrency);
  if (!rate) return refuse("{}: {}", RateServices::hostOf(url), rate.error());
  return *rate;
}

const std::vector<std::string>& CurrencyManager::noDecimalDigitsCurrencies() {
  static const std::vector<std::string> without = [] {
    std::vector<std::string> codes = availableCurrencies();
    std::erase_if(codes, [](const std::string& code) { return currencyDigits(code) != 0; });
    return codes;
  }();
  return without;
}

const std::map<std::string, std::string, std::less<>>& CurrencyManager::currencySymbolDict() const {
  if (currencySymbolDict_.empty()) {
    for (const auto& code : availableCurrencies())
      currencySymbolDict_.emplace(code, symbolOfCurrency(platform_.calendar->locale(), code));
  }
  return currencySymbolDict_;
}

double converted(double amount, double rate, int digits) {
  return rounded(amount * rate, digits);
}

}  // namespace moniva
