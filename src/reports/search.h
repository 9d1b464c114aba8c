#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/result.h"
#include "model/moniva_account.h"

/// Records by text, amount, account and date, the newest first (of one moment the one entered last), and the
/// searches a person keeps.
///
/// A text is looked for in any place of a note, of the titles of the category and of the one above it, and of
/// the vendor, in the forms that keywordForms() gives; a record is found as well by its exact amount where
/// the text is a number ("12.5" or "12,5", and whatever the front end reads it for). Found are keys of rows
/// of `transactions`.
///
/// All refuse, with nothing found: a text that checkKeyword() refuses, an end before the beginning, a page
/// before the first or without room, and a store that cannot be read.
namespace moniva {

enum class SearchIn {
  records,    ///< items: expenses and income, shares of spread costs left out
  expenses,   ///< of these the expenses
  transfers,  ///< each once, by the side where money arrives
  debts,      ///< lent and borrowed; the person's name is looked at too
  payments,   ///< of compound records, and those by themselves
  costs,      ///< plans and spread costs as a whole
  all         ///< all of these
};

/// A record's place in the order of a search.
struct SearchPlace {
  Date datetime;
  std::string eid;
};

struct SearchQuery {
  SearchIn in = SearchIn::all;
  std::string keyword = {};           ///< empty for any text
  std::optional<double> amount = {};  ///< that amount only
  // Both moments count.
  std::optional<Date> from = {};
  std::optional<Date> to = {};
  /// Of that book or account, or of a group of either. A record is an account's as well when one of its
  /// payments is, a transfer when either side is.
  std::optional<MonivaAccount> account = {};
  /// The page, from 0 on: what lies before it is walked over. However deep, `after` costs a page only.
  std::int64_t page = 0;
  std::int64_t pageMax = 50;
  std::optional<SearchPlace> after = {};  ///< begins behind that place
  /// Whether items without a category are looked at too.
  bool uncategorised = false;
  /// What the text is as an amount of the person's locale; its digits and marks are not known here.
  std::optional<double> keywordAmount = {};
};

struct SearchPage {
  std::vector<std::string> found;   ///< at most `pageMax`
  bool more = false;                ///< there are records behind them
  std::optional<SearchPlace> last;  ///< where a next page begins; none without records
};

/// One page of a search.
Result<SearchPage> searchPage(MVAppRoot& root, const SearchQuery& query);
/// How many records there are on all its pages.
Result<std::int64_t> searchCount(MVAppRoot& root, const SearchQuery& query);
/// The place of a record; refused for none.
Result<SearchPlace> searchPlaceOf(MVAppRoot& root, const std::string& eid);

// The searches one by one: the keys of a page (from 0 on, of `pageMax`) go to the end of the list. Blank
// keywords, dates and accounts that are not given leave nothing out.
using SearchAccount = std::optional<MonivaAccount>;
Result<> searchTransactions(MVAppRoot& root, const std::string& keyword, std::optional<Date> fromDate,
                            std::optional<Date> toDate, const SearchAccount& account, std::int64_t page,
                            std::int64_t pageMax, std::vector<std::string>& uuidArray);
Result<> searchTransfer(MVAppRoot& root, const std::string& keyword, std::optional<Date> fromDate,
                        std::optional<Date> toDate, const SearchAccount& account, std::int64_t page,
                        std::int64_t pageMax, std::vector<std::string>& uuidArray);
Result<> searchDebt(MVAppRoot& root, const std::string& keyword, std::optional<Date> fromDate,
                    std::optional<Date> toDate, const SearchAccount& account, std::int64_t page,
                    std::int64_t pageMax, std::vector<std::string>& uuidArray);
Result<> searchPayment(MVAppRoot& root, const std::string& keyword, std::optional<Date> fromDate,
                       std::optional<Date> toDate, const SearchAccount& account, std::int64_t page,
                       std::int64_t pageMax, std::vector<std::string>& uuidArray);
Result<> searchCostSeed(MVAppRoot& root, const std::string& keyword, std::optional<Date> fromDate,
                        std::optional<Date> toDate, const SearchAccount& account, std::int64_t page,
                        std::int64_t pageMax, std::vector<std::string>& uuidArray);
Result<> searchSpend(MVAppRoot& root, const std::string& keyword, std::optional<Date> fromDate,
                     std::optional<Date> toDate, const SearchAccount& account, std::int64_t page,
                     std::int64_t pageMax, std::vector<std::string>& uuidArray);

/// Keeps a text to search for; one that is kept already then stands twice. Refused: an empty text, and what
/// checkKeyword() refuses.
Result<> saveSearch(MVAppRoot& root, const std::string& text);
/// The texts that are kept, the newest first.
Result<std::vector<std::string>> getSearchList(MVAppRoot& root);
/// Forgets the text, however often it stands; answers how often that was.
Result<std::int64_t> deleteSearch(MVAppRoot& root, const std::string& text);
/// Forgets all; answers how many there were.
Result<std::int64_t> clearAllSearchHistory(MVAppRoot& root);

}  // namespace moniva
