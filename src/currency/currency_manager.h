#pragma once

#include <array>
#include <chrono>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "calendar/date.h"
#include "currency/rate_services.h"
#include "currency/rate_table.h"
#include "platform/platform.h"

namespace moniva {

/// Whether a manager made where no table is kept begins to fetch one.
enum class FirstFetch { atOnce, whenAsked };

/// The exchange rates this device knows, kept in its settings and refreshed in the background. Made where
/// rates are asked for first.
///
/// Belongs to the main thread, where tables are replaced; refreshes run on a thread of their own.
class CurrencyManager {
 public:
  static constexpr std::string_view baseCurrency = kBaseCurrency;
  static constexpr double kRefreshAfter = 43'200;  ///< seconds
  static constexpr double kOldAfter =
      30 * 24 * 3600.0;  ///< seconds; older rates are used, and said to be old

  /// For a front end with one platform for its whole life, which has to outlive it; the command line keeps a
  /// manager of its own in its session. The first call with a platform makes it, and every later call gives
  /// the same one. Null before.
  static CurrencyManager* sharedManager(Platform* platform = nullptr);
  explicit CurrencyManager(Platform& platform, FirstFetch first = FirstFetch::atOnce);
  /// Waits for a refresh that is under way; who is in a hurry ends its requests first (`platform.http`).
  ~CurrencyManager() = default;
  CurrencyManager(const CurrencyManager&) = delete;
  CurrencyManager& operator=(const CurrencyManager&) = delete;

  /// When the table was fetched; the start of this object where there is none yet.
  Date lastRefresh() const { return lastRefresh_; }
  /// Empty where none was ever fetched.
  const RateTable& exchangeRates() const { return exchangeRates_; }
  /// The file the table was loaded from; "" for one that was fetched.
  std::string file() const;
  /// Whether there is a table and it is older than kOldAfter at that moment.
  bool isOld(Date now) const;

  /// All ISO 4217 codes ICU knows, former ones too, sorted.
  static const std::vector<std::string>& availableCurrencies();
  /// Those of them that are paid with on that day; no metals, units of account and codes for tests.
  static std::vector<std::string> currenciesInTender(Date now);
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
  /// For who waits no longer: takes what one service has answered while the other is still waited for; what
  /// the other answers later is taken over it. On the main thread. Whether anything came; where nothing did,
  /// `refreshFailure` says so until something does.
  bool takeWhatCame();
  /// Why the last refresh changed nothing; nothing after one that did, and while one begins.
  const std::optional<Refusal>& refreshFailure() const { return failure_; }
  /// Why one service gave no rates to a refresh that took those of the other.
  const std::optional<Refusal>& partFailure() const { return partFailure_; }

  /// The work of a refresh: asks both services at once and hands what came, the second's rates over the
  /// first's, to the main thread, where it is dropped if another table was taken meanwhile. Off the main
  /// thread.
  void refreshExchangeRates();
  /// One service's table; nothing, with the reason in the log and in `why`, where it gives none.
  std::optional<RateTable> refreshExchangeRatesOn(const std::string& url,
                                                  std::optional<Refusal>* why = nullptr);
  /// Takes the table, keeps it in the settings, posts `kExchangeRateRefreshFinished`. `file` is where it was
  /// loaded from, "" for a table that was fetched. On the main thread.
  void finishRefreshWithExchangeRates(RateTable table, const std::string& file = {});

  /// What one of `from` is in `toCurrency`; 1 where they are the same and where one of them is not in the
  /// table (`knowsRate` tells).
  float exchangeRateFromCurrency(std::string_view from, std::string_view toCurrency);
  bool knowsRate(std::string_view from, std::string_view toCurrency) const;
  /// The same asked of the primary service now, with `from` as its base; refused with the reason where it
  /// gives none. Blocks; not on the main thread but where a person waits for it.
  static Result<float> exchangeRateFromCurrency(Platform& platform, std::string_view from,
                                                std::string_view toCurrency);

 private:
  /// What came of a service so far: a table, or why there is none.
  struct Answer {
    std::optional<RateTable> table;
    std::optional<Refusal> why;
  };

  void loadKept(FirstFetch first);
  /// The tables that came in one, the second's rates over the first's, and how many they are.
  std::pair<RateTable, int> whatCame();
  void refreshEnded();
  /// What is known of one code in the other; nothing where it would not fit in single precision either.
  std::optional<float> pairRate(std::string_view from, std::string_view toCurrency) const;

  Platform& platform_;
  Date lastRefresh_;
  RateTable exchangeRates_;
  /// Pair rates computed so far, by both codes: "EUR JPY".
  std::map<std::string, float, std::less<>> conversionDict_;
  mutable std::map<std::string, std::string, std::less<>> currencySymbolDict_;
  std::optional<Refusal> failure_;
  std::optional<Refusal> partFailure_;
  bool refreshing_ = false;
  bool outrun_ = false;   ///< another table was taken since the refresh began
  int takenEarly_ = 0;    ///< tables of the refresh under way that are in use already
  std::mutex cameMutex_;  ///< of came_
  std::array<Answer, 2> came_;
  /// Gone with the object, so that what was handed to the main queue knows.
  std::shared_ptr<CurrencyManager*> self_ = std::make_shared<CurrencyManager*>(this);
  /// Declared last: its block uses everything above until it has ended.
  WorkQueue refreshQueue_;
};

/// `amount` times `rate` (a table's goes through decimalOf first), `rounded` to that many decimals.
double converted(double amount, double rate, int digits);

}  // namespace moniva
