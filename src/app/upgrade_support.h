#pragma once

#include <initializer_list>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "storage/writes.h"

// What the upgrade steps on keys and fields share; no part of what others use.
namespace moniva {

/// A key that follows from what it stands for, so that every device that upgrades a store makes the same one.
std::string derivedKey(std::initializer_list<std::string_view> parts);

/// What `read` makes of each row of the query, whole in memory, so that nothing is read while rows change.
template <class Read>
auto loaded(MVAppRoot& root, std::string_view sql, std::initializer_list<Value> slots, Read&& read)
    -> Result<std::vector<decltype(read(std::declval<const Run&>()))>> {
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  std::vector<decltype(read(std::declval<const Run&>()))> rows;
  Run run = db->query(sql, slots);
  while (run.next()) rows.push_back(read(run));
  if (!run.ok()) return tl::make_unexpected(db->refusal());
  return rows;
}
/// The texts of the query's first column.
Result<std::vector<std::string>> loadedTexts(MVAppRoot& root, std::string_view sql,
                                             std::initializer_list<Value> slots = {});

/// Runs the statements until one is refused.
Result<> writeAll(MVAppRoot& root, std::initializer_list<std::string_view> statements);

/// The names of the table's columns; none for a table that is not there.
Result<std::set<std::string, std::less<>>> columnsOf(MVAppRoot& root, std::string_view table);
std::string quotedName(std::string_view name);
/// "title='Home', currency='EUR', ...": the row of the table as texts that could be put back. A password is
/// nobody's to read; only groups keep something else there, their members.
Result<std::string> rowAsText(MVAppRoot& root, std::string_view table, std::int64_t rowid);
/// Counts what is kept of the balances of all books, accounts and groups afresh.
Result<> countAllBalances(MVAppRoot& root);
/// Removes the row of `account` for good; the log keeps what it said.
Result<> removeAccountRow(MVAppRoot& root, std::int64_t eid);
/// What names the book or account by the one key names it by the other: its records, the categories of a
/// book, an account's category, memberships; of a group its memberships.
Result<> repointHolder(MVAppRoot& root, int aKind, bool isGroup, const std::string& from,
                       const std::string& to);

/// Books and accounts that came to have no key get one: their title, by which older records name them, where
/// no other has it. Of two rows that records could never tell apart the one in use stays; `doubles` are the
/// others, which have its key then and are to be removed. `touched` are the keys whose records changed.
Result<> giveAccountKeys(MVAppRoot& root, std::vector<std::int64_t>& doubles, std::set<std::string>& touched);
/// Categories without a key get one, and children name their parents by keys. The keys of the rows that
/// changed are added to `given`; they are still to be stamped, after the merges, which go by former stamps.
Result<> giveCategoryKeys(MVAppRoot& root, std::set<std::string>& given);
/// The same for vendors; those of equal titles become one.
Result<> giveVendorKeys(MVAppRoot& root, std::set<std::string>& given);
/// Makes `categoryofbook` where it is not there. One that knows categories by the numbers of their rows, in a
/// table without `cate`, knows them by keys afterwards; all else of a row stays. A number of no row stays a
/// number, and '' is no book.
Result<> rebuildCategoryOfBook(MVAppRoot& root);
/// What stands between the parentheses of the table's CREATE statement in today's schema.
std::string_view columnsText(std::string_view table);
/// Removes views that have the names under which tables are rebuilt; the log keeps what they said.
Result<> dropViewsInTheWay(MVAppRoot& root);
/// Records that name their categories and vendors by titles name them by their keys.
Result<> nameByKeys(MVAppRoot& root);

}  // namespace moniva
