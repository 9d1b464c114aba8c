#pragma once

#include <map>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

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
  void note(const Payment& payment);
  /// What is used of categories and vendors alone: by `times` more, or less, records such as this one.
  void noteUses(const Spend& spend, int times);
  /// A settled amount more, or less, of a type in the book or account of that key.
  void noteChange(const std::string& holder, int transactionType, double amount);
  /// Writes the changes of the rows noted, which are in the store by then. Belongs into the transaction that
  /// wrote them: after a refusal it has to be given up.
  Result<> write(Balances balances);

 private:
  Result<> writeAll(Balances balances);

  MVAppRoot* root_;
  std::map<std::tuple<std::string, std::string, int>, int> categoryUses_;  ///< by category, book and type
  struct VendorUse {
    int type = 0;
    int entered = 0;
    bool anyLess = false;
  };
  std::map<std::string, VendorUse> vendors_;
  std::map<std::pair<std::string, int>, double> changes_;  ///< by book or account, and type
};

/// Writes the entry with its upkeep, all or nothing. What is missing is made and refused as by its `add`.
Result<> recordEntry(MVAppRoot& root, Spend& spend);
Result<> recordEntry(MVAppRoot& root, Transfer& transfer);

/// What a change of records does to balances: the rows concerned as they were before and as they are after.
/// Changes within a change join it, so that each row counts once. On one thread, in scopes that nest.
class RecordChange {
 public:
  explicit RecordChange(MVAppRoot& root);
  ~RecordChange();
  RecordChange(const RecordChange&) = delete;
  RecordChange& operator=(const RecordChange&) = delete;

  /// To be called before rows of the scope change. Rows that the change makes may be in it or come later.
  Result<> begin(const RecordScope& scope);
  /// Writes what the rows of all scopes have come to since; the outermost change does.
  Result<> end();

 private:
  struct Row {
    std::string account;
    std::string book;
    int type = 0;
    double amount = 0;
  };
  using Rows = std::map<std::string, Row, std::less<>>;

  static Result<> read(MVAppRoot& root, const RecordScope& scope, Rows& rows);

  MVAppRoot* root_;
  RecordChange* former_;  ///< under way on this thread before, in this store or another one
  RecordChange* outer_;   ///< the one of this store, which counts for both
  std::vector<RecordScope> scopes_;
  Rows before_;
};

/// Runs a change of records as one transaction and brings the balances of the books and accounts concerned up
/// to date with it. The work takes the connection and answers a Result; a change within it may
/// widen the scope, by a group the record comes to have.
template <class Work>
auto changeRecords(MVAppRoot& root, const RecordScope& rows, Work&& work)
    -> decltype(work(std::declval<Connection&>())) {
  return atomically(root, [&](Connection& db) -> decltype(work(db)) {
    RecordChange change(root);
    if (auto begun = change.begin(rows); !begun) return tl::make_unexpected(begun.error());
    auto result = work(db);
    if (!result) return result;
    if (auto ended = change.end(); !ended) return tl::make_unexpected(ended.error());
    return result;
  });
}

/// Takes rows that were brought back, one by its `eid` and those of a group, out of a series that was deleted
/// meanwhile or is gone, as what is left of one is removed by its repair. Answers whether there was one.
Result<bool> leaveDeletedSeries(MVAppRoot& root, const std::string& eid, const std::string& group);

/// Tells the program of entries that are in the store for good.
void entriesChanged(MVAppRoot& root);

}  // namespace moniva
