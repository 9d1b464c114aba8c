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

/// The currency probably meant by what is no code: by its code in small letters, its sign, its name or a word
/// of that, or nearly so. Of several the own one is taken, then those of the person's list.
std::optional<CurrencyName> currencyMeant(Session& session, std::string_view text);

}  // namespace moniva
