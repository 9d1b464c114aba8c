#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "ui/cli/session.h"

/// Currencies by what people call them.
namespace moniva {

struct CurrencyName {
  std::string code;
  std::string name;  ///< in the person's language: "US Dollar"
};

CurrencyName currencyNamed(Session& session, const std::string& code);
/// "€", as the person's locale writes it; the code where it has no sign.
std::string currencySign(Session& session, const std::string& code);

/// Those of the codes whose code or name, in the person's language or English, has the text in it, whatever
/// the letter case and the accents; all for a blank one.
std::vector<std::string> currenciesLike(Session& session, const std::vector<std::string>& codes,
                                        std::string_view text);

/// What may be meant by a text that is no code.
struct CurrenciesMeant {
  std::string word;  ///< what they are called by: as typed, or nearly so
  std::vector<CurrencyName> currencies;
};

/// The currencies probably meant by what is no code: by a code in small letters, a sign, a name or a word of
/// that, or nearly so. Of those called so the own one is meant, then the first of the person's list, then all
/// in tender, then former ones; what is misspelt means no former one.
CurrenciesMeant currenciesMeant(Session& session, std::string_view text);

}  // namespace moniva
