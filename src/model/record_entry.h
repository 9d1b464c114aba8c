#pragma once

#include <map>
#include <string>
#include <utility>

#include "base/result.h"
#include "model/spend.h"
#include "model/transfer.h"

namespace moniva {

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

/// Tells the program of entries that are in the store for good.
void entriesChanged(MVAppRoot& root);

}  // namespace moniva
