#pragma once

#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "model/mv_category.h"
#include "model/transaction_type.h"

/// What the files of MVCategory share: its row, and the checks and statements that several changes need.
namespace moniva {

/// The columns `categoryOfRow` reads, in its order.
inline constexpr std::string_view kCategoryColumns =
    "oldTitle, title, parent, type, orderString, deleted, orderID, familyUser, ipid, usedTimes";
inline constexpr int kCategoryColumnCount = 10;
MVCategory categoryOfRow(MVAppRoot& root, const Run& run);

inline constexpr std::string_view kRootKey = "_rootCate";
/// The setting that lets each book have its own view of the categories.
inline constexpr std::string_view kPerBookSetting = "enabledCategoryForBook";
/// The setting of the order mode of a type.
constexpr std::string_view orderSetting(int type) {
  return type == kind::kIncome ? "_IncomeCategoryOrderType" : "_ExpenseCategoryOrderType";
}

/// Rows of `transactions` a person would call a record in use of a category: no payments, budgets, templates.
inline constexpr std::string_view kRecordsInUse = "deleted = 0 and type in (11,12,13,14) and bid is not '10'";

constexpr bool isCategoryType(int type) {
  return type == kind::kIncome || type == kind::kExpense;
}
/// Key of the top-level category above, or of the category itself.
inline const std::string& topKey(const MVCategory& category) {
  return category.isSubCate() ? category.parent : category.pk;
}

/// Whether the text will do as a category's title; the texts that stand for the root and for no category are
/// refused.
Result<> checkCategoryTitle(std::string_view title);
/// The row of a category in use; refused for any other key. Of an income and an expense category that share
/// the key it is the one of the type, if one is given.
Result<MVCategory> liveCategory(MVAppRoot& root, std::string_view key, int type = 0);
/// A condition (" and type in (...)") for the transactions of a category whose key income and expense share,
/// so that it keeps to its own kinds; blank for a key that is not shared.
Result<std::string> kindsOf(MVAppRoot& root, std::string_view key, int type);
/// The condition for the kinds of a type alone: "type in (...)".
constexpr std::string_view kindsOfType(int type) {
  return type == kind::kIncome ? "type in (11,13,81)" : "type in (12,14,62,82,86)";
}
/// The place after the last category of the parent in the book's order by hand.
Result<int> nextPlaceInBook(MVAppRoot& root, int type, std::string_view parent, std::string_view book);
/// Counts uses afresh for the categories of the keys, or for all for none, by the records entered or edited
/// in the range; answers how many counts were wrong. Not an edit.
Result<int> countUses(MVAppRoot& root, const std::set<std::string, std::less<>>& only, Date from,
                      Date toDate);
/// The same by all records, after some have gone from one category to another.
Result<> countUsesAfresh(MVAppRoot& root, const std::set<std::string, std::less<>>& keys);
/// The payments of records whose items all meet the condition name another top-level category; those of a
/// record that keeps an item stay. To be asked before the items change.
bool paymentsFollow(MVAppRoot& root, std::string_view items, const std::vector<Value>& values,
                    std::string_view fromTop, std::string_view toTop);
/// The live category of the title, type and parent key that has not the key `except`; nothing when there is
/// none.
Result<std::optional<MVCategory>> liveSibling(MVAppRoot& root, std::string_view title, int type,
                                              std::string_view parent, std::string_view except);
/// Numbers a query answers in its first row; refused when it failed.
Result<std::int64_t> numberOf(Connection& db, std::string_view sql, std::initializer_list<Value> arguments);
/// Records in use that name the key in either column; only those that meet the condition of `kindsOf`.
Result<std::int64_t> recordsOf(MVAppRoot& root, std::string_view key, std::string_view kinds = {});

// Parts of a merge, inside the caller's transaction. False when the store refused a statement.

/// What refers to `loser` refers to `winner` afterwards: transactions (one budget a book), children, rows of
/// books (one for a book), former parents; uses are added up, and the account that goes with `loser` goes
/// with a `winner` that has none. The row of `loser` stays as it is.
bool repointCategory(MVAppRoot& root, const MVCategory& loser, const MVCategory& winner);
/// Before a top-level category becomes a subcategory: items that name it without having chosen say that they
/// chose it, lest they lose it with the name of the top.
bool chooseTopItself(MVAppRoot& root, const MVCategory& top, std::string_view chosen);
/// Records and deleted children of what was a top-level category get another top; its budget stays its own.
bool retopCategory(MVAppRoot& root, const MVCategory& category, std::string_view top);

}  // namespace moniva
