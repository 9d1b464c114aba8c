#include "currency/currency_codes.h"

#include <fmt/format.h>
#include <unicode/ucurr.h>
#include <unicode/uenum.h>
#include <unicode/uloc.h>

#include <algorithm>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <set>

#include "currency/locale_utils.h"

namespace moniva {
namespace {

constexpr int kUsualDigits = 2;

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

}  // namespace

const std::vector<std::string>& availableCurrencies() {
  static const std::vector<std::string> all = codesOf(UCURR_ALL);
  return all;
}

std::vector<std::string> currenciesInTender(Date now) {
  constexpr double kMilliseconds = 1000;
  const double day = now.secondsSince1970 * kMilliseconds;
  std::set<std::string, std::less<>> ofCountries;
  for (const char* const* country = uloc_getISOCountries(); *country != nullptr; ++country)
    ofCountries.insert(LocaleUtils::getCurrencyCode(fmt::format("en_{}", *country)));
  std::vector<std::string> codes = codesOf(UCURR_COMMON | UCURR_NON_DEPRECATED);
  // ICU's dates alone do not do: where several countries pay or paid with one currency they are those of any.
  std::erase_if(codes, [&](const std::string& code) {
    UErrorCode status = U_ZERO_ERROR;
    return !ofCountries.contains(code) && ucurr_isAvailable(isoText(code)->data(), day, day, &status) == 0;
  });
  return codes;
}

bool looksLikeCode(std::string_view text) {
  return text.size() == 3 &&
         std::all_of(text.begin(), text.end(), [](char c) { return c >= 'A' && c <= 'Z'; });
}

bool isCurrencyCode(std::string_view text) {
  if (!looksLikeCode(text)) return false;
  UErrorCode status = U_ZERO_ERROR;
  return ucurr_isAvailable(isoText(text)->data(), U_DATE_MIN, U_DATE_MAX, &status) != 0 && U_SUCCESS(status);
}

int currencyDigits(std::string_view currencyCode) {
  // Those that are not counted in hundredths, as asking ICU takes longer than writing an amount.
  static const auto unusual = [] {
    std::map<std::string, int, std::less<>> digitsOf;
    for (const auto& code : availableCurrencies()) {
      UErrorCode status = U_ZERO_ERROR;
      const int digits = ucurr_getDefaultFractionDigits(isoText(code)->data(), &status);
      if (U_SUCCESS(status) && digits != kUsualDigits) digitsOf.emplace(code, digits);
    }
    return digitsOf;
  }();
  const auto found = unusual.find(currencyCode);
  return found == unusual.end() ? kUsualDigits : found->second;
}

std::optional<std::array<char16_t, 4>> isoText(std::string_view code) {
  if (code.size() != 3) return std::nullopt;
  std::array<char16_t, 4> text{};
  for (std::size_t i = 0; i < 3; ++i) {
    const char letter = code[i];
    const bool isLetter = (letter >= 'A' && letter <= 'Z') || (letter >= 'a' && letter <= 'z');
    if (!isLetter) return std::nullopt;
    text[i] = static_cast<char16_t>(letter);
  }
  return text;
}

}  // namespace moniva
