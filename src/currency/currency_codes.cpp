#include <unicode/ucurr.h>
#include <unicode/uenum.h>
#include <unicode/uloc.h>

#include <algorithm>
#include <array>
#include <memory>
#include <set>

#include "currency/amount_format.h"
#include "currency/currency_manager.h"
#include "currency/locale_utils.h"

namespace moniva {
namespace {

/// ICU's codes of a kind (UCurrCurrencyType), sorted, each once.
std::vector<std::string> codesOf(std::uint32_t kind) {
  UErrorCode status = U_ZERO_ERROR;
  const std::unique_ptr<UEnumeration, decltype(&uenum_close)> names(ucurr_openISOCurrencies(kind, &status),
                                                                    &uenum_close);
  std::vector<std::string> codes;
  while (U_SUCCESS(status)) {
    const char* name = uenum_next(names.get(), nullptr, &status);
    if (name == nullptr) break;
    codes.emplace_back(name);
  }
  std::sort(codes.begin(), codes.end());
  codes.erase(std::unique(codes.begin(), codes.end()), codes.end());
  return codes;
}

std::array<char16_t, 4> wideCode(std::string_view code) {
  std::array<char16_t, 4> wide{};
  std::copy_n(code.begin(), std::min<std::size_t>(code.size(), 3), wide.begin());
  return wide;
}

}  // namespace

const std::vector<std::string>& CurrencyManager::availableCurrencies() {
  static const std::vector<std::string> all = codesOf(UCURR_ALL);
  return all;
}

std::vector<std::string> CurrencyManager::currenciesInTender(Date now) {
  constexpr double kMilliseconds = 1000;
  const double day = now.secondsSince1970 * kMilliseconds;
  std::set<std::string, std::less<>> ofCountries;
  for (const char* const* country = uloc_getISOCountries(); *country != nullptr; ++country)
    ofCountries.insert(LocaleUtils::getCurrencyCode(fmt::format("en_{}", *country)));
  std::vector<std::string> codes = codesOf(UCURR_COMMON | UCURR_NON_DEPRECATED);
  // ICU's dates alone do not do: where several countries pay or paid with one currency they are those of any.
  std::erase_if(codes, [&](const std::string& code) {
    UErrorCode status = U_ZERO_ERROR;
    return !ofCountries.contains(code) && ucurr_isAvailable(wideCode(code).data(), day, day, &status) == 0;
  });
  return codes;
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

}  // namespace moniva
