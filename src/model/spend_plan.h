#pragma once

#include <string>
#include <vector>

#include "model/record_entry.h"
#include "model/spend.h"

// What instalment plans and spread costs have in common; for the editor's sources.
namespace moniva {

inline constexpr int kMostParts = 60;

/// Writes the record as the seed (type 86) of a plan or a cost: a new row, or the row it has by now. The
/// parts are the caller's.
Result<> writeSeed(Spend& whole, int advancedType);
/// Makes the seed an item again, with that amount and account, of a group where there is one.
Result<> seedToItem(Spend& seed, int type, double amount, const std::string& account, int advancedType);
/// The parts as item rows of the group, their uses counted.
Result<> writeParts(std::vector<Spend>& parts, int advancedType, EntryUpkeep& upkeep);
/// Removes the live parts.
Result<> removeParts(MVAppRoot& root, const std::vector<TransactionItem>& parts, std::string_view reason);
/// Refused: a record that is no plain expense or income by itself.
Result<> checkPlain(const Spend& spend);

}  // namespace moniva
