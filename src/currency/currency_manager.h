#pragma once

#include <chrono>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "calendar/date.h"
#include "currency/currency_codes.h"
#include "currency/rate_table.h"
#include "platform/platform.h"

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
  /// Refuses what is neither "" nor an https address (http only of this machine itself).
  static Result<> check(const std::string& address);

  // "" for a service that is not to be asked; addresses may end in a slash.
  std::string tableUrl() const;                      ///< primary + "/v4/latest/USD"
  std::string pairUrl(std::string_view code) const;  ///< primary + "/v4/latest/%@"
  std::string secondTableUrl() const;                ///< secondary + "/latest?base=USD"
  /// Whom a URL asks: "api.exchangerate-api.com".
  static std::string hostOf(std::string_view url);
};

/// The exchange rates this device knows, kept in its settings and refreshed in the background. Made where
/// rates are asked for first: the first one made without a table kept begins to fetch one.
///
/// Belongs to the main thread, where tables are replaced; refreshes run on a thread of their own.
class CurrencyManager {
 public:
  static constexpr std::string_view baseCurrency = "USD";
  static constexpr double kRefreshAfter = 43'200;  ///< seconds
  static constexpr double kOldAfter =
      30 * 24 * 3600.0;  ///< seconds; older rates are used, and said to be old

  /// The running program's manager. The composition root calls it with the platform; that call makes it,
  /// once, and every later call gives the same one. Null before.
  static CurrencyManager* sharedManager(Platform* platform = nullptr);
  explicit CurrencyManager(Platform& platform);
  /// Waits for a refresh that is under way; who is in a hurry ends its requests first (`platform.http`).
  ~CurrencyManager() = default;
  CurrencyManager(const CurrencyManager&) = delete;
  CurrencyManager& operator=(const CurrencyManager&) = delete;

  /// When the table was fetched; the start of this object where there is none yet.
  Date lastRefresh() const { return lastRefresh_; }
  /// Empty where none was ever fetched.
  const RateTable& exchangeRates() const { return exchangeRates_; }
  /// The table kept in the settings; an empty one where none is kept. Refused where what is kept is none.
  static Result<RateTable> keptRates(const UserDefaults& defaults);
  /// Whether there is a table and it is older than kOldAfter at that moment.
  bool isOld(Date now) const;

  /// As the functions of the same names.
  static const std::vector<std::string>& availableCurrencies() { return moniva::availableCurrencies(); }
  static std::vector<std::string> currenciesInTender(Date now) { return moniva::currenciesInTender(now); }
  /// Those of all that are counted without decimals.
  static const std::vector<std::string>& noDecimalDigitsCurrencies();
  /// Symbols by code as the user's locale writes them; made when first asked for.
  const std::map<std::string, std::string, std::less<>>& currencySymbolDict() const;

  /// Refreshes in the background where the last refresh is more than kRefreshAfter old (or lies ahead, after
  /// a clock was set back).
  void refreshIfNeeded();
  /// Refreshes in the background; one that is under way already is enough. Where no service is to be asked
  /// it only says so in `refreshFailure`.
  void forceRefresh();
  bool isRefreshing() const { return refreshing_; }
  /// Runs the main queue until the refresh has ended, at most that long. On the main thread. Whether it has.
  bool waitForRefresh(std::chrono::milliseconds time);
  /// Why the last refresh changed nothing; nothing after one that did.
  const std::optional<Refusal>& refreshFailure() const { return failure_; }

  /// The work of a refresh: asks both services, the second's rates over the first's, and hands what came to
  /// the main thread. Off the main thread.
  void refreshExchangeRates();
  /// One service's table; nothing, with the reason in the log, where it gives none.
  std::optional<RateTable> refreshExchangeRatesOn(const std::string& url);
  /// Takes the table, keeps it in the settings, posts `kExchangeRateRefreshFinished`. On the main thread.
  void finishRefreshWithExchangeRates(RateTable table);

  /// What one of `from` is in `toCurrency`; 1 where they are the same and where one of them is not in the
  /// table (`knowsRate` tells).
  float exchangeRateFromCurrency(std::string_view from, std::string_view toCurrency);
  bool knowsRate(std::string_view from, std::string_view toCurrency) const;
  /// The same asked of the primary service now, with `from` as its base; refused with the reason where it
  /// gives none. Blocks; not on the main thread but where a person waits for it.
  static Result<float> exchangeRateFromCurrency(Platform& platform, std::string_view from,
                                                std::string_view toCurrency);

 private:
  void loadKept();
  /// One service's table; each way it can go is told in the log.
  Result<RateTable> askedOf(const std::string& url);
  /// What is known of one code in the other; nothing where it would not fit in single precision either.
  std::optional<float> pairRate(std::string_view from, std::string_view toCurrency) const;

  Platform& platform_;
  Date lastRefresh_;
  RateTable exchangeRates_;
  /// Pair rates computed so far, by both codes: "EUR JPY".
  std::map<std::string, float, std::less<>> conversionDict_;
  mutable std::map<std::string, std::string, std::less<>> currencySymbolDict_;
  std::optional<Refusal> failure_;
  bool refreshing_ = false;
  /// Gone with the object, so that what was handed to the main queue knows.
  std::shared_ptr<CurrencyManager*> self_ = std::make_shared<CurrencyManager*>(this);
  /// Declared last: its block uses everything above until it has ended.
  WorkQueue refreshQueue_;
};

/// `amount` times the rate as it is shown (decimalOf), `rounded` to that many decimals.
double converted(double amount, double rate, int digits);

}  // namespace moniva
