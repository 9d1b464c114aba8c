#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>

#include "storage/mv_app_root.h"

/// The list of currencies a person picks from, which `DoDB::getCurrencyList` reads: rows of `category` below
/// "_currency". Whether a code is one of a currency is the caller's to know.
namespace moniva {

enum class CurrencyAdded { added, revived, present };

/// Puts the code on the list: as a new row, or as the one that was deleted last. A list that is empty gets
/// the common currencies first.
Result<CurrencyAdded> addCurrency(MVAppRoot& root, std::string_view code);

/// Takes the code off the list; what is kept in the currency stays. Refused for one that is not on it, and
/// for the last one, without which the list would be filled with the common ones again.
Result<> removeCurrency(MVAppRoot& root, std::string_view code);

/// What is kept in a currency.
struct CurrencyUse {
  std::int64_t books = 0;
  std::int64_t accounts = 0;
  std::int64_t records = 0;  ///< income and expenses entered with a foreign amount in it
};
/// By code, every currency in which something that is not deleted is kept.
Result<std::map<std::string, CurrencyUse, std::less<>>> currencyUses(MVAppRoot& root);

}  // namespace moniva
