#pragma once

#include <map>
#include <string>
#include <utility>

#include "base/result.h"
#include "model/spend.h"
#include "model/transfer.h"
#include "storage/writes.h"

namespace moniva {

/// Some rows of `transactions`: one by its `eid`, with all rows of a group by their `transferEID`, with all
/// of a series by their `repeat_seed`; blank for none of them.
struct RecordScope {
  std::string eid;
  std::string group;
  std::string series;
};

/// What entries change besides their own rows: the use counts of their categories and vendors, and the cached
/// balances of their book and accounts. Takes note of entries one by one and writes for all of them at once,
/// so that an import of many costs no more than the names it uses. Keys that name nothing are passed over.
class EntryUpkeep {
 public:
  explicit EntryUpkeep(MVAppRoot& root) : root_(&root) {}

  /// How balances are brought up to date: by what came in and went out, or counted from all transactions,
  /// which many entries make worthwhile and which rounds but once.
  enum class Balances { byAmount, afresh };

  void note(const Spend& spend);
  void note(const Transfer& transfer);
  /// The rows of the scope as they are in the store: `sign` 1 for rows that came, -1 for rows that go. Only
  /// balances follow.
  Result<> note(const RecordScope& scope, int sign);
  /// Writes the changes of the rows noted, which are in the store by then. Belongs into the transaction that
  /// wrote them: after a refusal it has to be given up.
  Result<> write(Balances balances);

 private:
  void noteChange(const std::string& account, int transactionType, double amount, bool paid);
  Result<> writeAll(Balances balances);

  MVAppRoot* root_;
  std::map<std::pair<std::string, std::string>, int> categoryUses_;  ///< by category and book
  std::map<std::string, int> vendors_;                               ///< with the type of their entries
  std::map<std::pair<std::string, int>, double> changes_;            ///< by book or account, and type
};

/// Writes the entry with its upkeep, all or nothing. What is missing is made and refused as by its `add`.
Result<> recordEntry(MVAppRoot& root, Spend& spend);
Result<> recordEntry(MVAppRoot& root, Transfer& transfer);

/// Runs a change of records as one transaction and brings the balances of the books and accounts concerned up
/// to date with it. The work takes the connection; it may extend the scope, by a group the record comes to
/// have, but only by rows that it makes itself.
template <class Work>
auto changeRecords(MVAppRoot& root, RecordScope& scope, Work&& work)
    -> decltype(work(std::declval<Connection&>())) {
  return atomically(root, [&](Connection& db) -> decltype(work(db)) {
    EntryUpkeep upkeep(root);
    if (auto noted = upkeep.note(scope, -1); !noted) return tl::make_unexpected(noted.error());
    auto result = work(db);
    if (!result) return result;
    if (auto noted = upkeep.note(scope, 1); !noted) return tl::make_unexpected(noted.error());
    if (auto written = upkeep.write(EntryUpkeep::Balances::byAmount); !written) {
      return tl::make_unexpected(written.error());
    }
    return result;
  });
}
template <class Work>
auto changeRecords(MVAppRoot& root, const RecordScope& rows, Work&& work) {
  RecordScope scope = rows;
  return changeRecords(root, scope, std::forward<Work>(work));
}

/// Tells the program of entries that are in the store for good.
void entriesChanged(MVAppRoot& root);

}  // namespace moniva
