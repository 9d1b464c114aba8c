#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "calendar/date.h"

namespace moniva {

/// All ISO 4217 codes ICU knows, former ones too, sorted.
const std::vector<std::string>& availableCurrencies();
/// Those of them that are paid with on that day; no metals, units of account and codes for tests.
std::vector<std::string> currenciesInTender(Date now);

/// Whether the text is written as codes are, three capital letters; not whether there is such a currency.
bool looksLikeCode(std::string_view text);
/// Whether the text is a currency's ISO code, today's or a former one, in capitals.
bool isCurrencyCode(std::string_view text);

/// Decimals the currency is counted in: 2 for USD, 0 for JPY, 3 for KWD; 2 for a code that is not known.
int currencyDigits(std::string_view currencyCode);

/// A code as ICU takes it; nothing for what is not three ASCII letters, which ICU would refuse.
std::optional<std::array<char16_t, 4>> isoText(std::string_view code);

}  // namespace moniva
