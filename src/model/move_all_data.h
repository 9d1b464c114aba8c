#pragma once

#include "model/moniva_account.h"

namespace moniva {

/// Gives all records of a book or account to another, deleted ones too, and counts the balances of both and
/// the uses of categories afresh; photos and budgets stay as they are. Answers how many live ones there were.
/// Refused, with nothing changed: the row itself, a group, another kind, another currency, what the other
/// does not track, and transfers between the two, which would lead nowhere.
Result<std::int64_t> moveAllDataTo(const MonivaAccount& from, const MonivaAccount& other);

}  // namespace moniva
