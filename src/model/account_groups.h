#pragma once

#include <vector>

#include "model/moniva_account.h"

/// Groups of books and groups of accounts. A group is a row of `account` with `isGroup` set; who belongs to
/// it is kept in membership rows of `category` (type 8 for books, 7 for accounts; `parent` is the group's
/// key, `title` the member's). All members are kept in the group's currency, or their sum would mean nothing.
namespace moniva {

/// The kind text of a group of books or of accounts.
std::string_view groupType(int aKind);

/// The live members of the group, in the order of the list. A read that failed is refused.
Result<std::vector<MonivaAccount>> getGroupMembers(const MonivaAccount& group);
/// The live groups that contain the row; likewise.
Result<std::vector<MonivaAccount>> getFatherGroup(const MonivaAccount& account);

/// Takes the row into the group and counts the group's balance afresh. Refused, with nothing written, for a
/// group as a member, another kind or currency, and for a member it has already.
Result<> addToGroup(MonivaAccount& group, const MonivaAccount& member);
/// Takes the row out of the group and counts the group's balance afresh. Refused for what is no member.
Result<> removeFromGroup(MonivaAccount& group, const MonivaAccount& member);
/// Takes the row out of every group, counting their balances afresh.
Result<> removeFromAllGroup(const MonivaAccount& account);

}  // namespace moniva
