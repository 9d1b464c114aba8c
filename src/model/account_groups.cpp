#include "model/account_groups.h"

#include "model/account_balance.h"
#include "model/transaction_type.h"
#include "storage/writes.h"

namespace moniva {
namespace {

int membershipType(int aKind) {
  return aKind == kBookKind ? 8 : 7;
}

Result<std::vector<MonivaAccount>> rowsOfKeys(MVAppRoot& root, std::string_view sql,
                                              std::initializer_list<Value> slots) {
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  std::vector<std::string> keys;
  {
    Run run = db->query(sql, slots);
    while (run.next()) keys.emplace_back(run.text(0));
    if (!run.ok()) return tl::make_unexpected(db->refusal());
  }
  std::vector<MonivaAccount> rows;
  for (const auto& key : keys) {
    if (auto row = MonivaAccount::getAccountWithPK(root, key)) rows.push_back(std::move(*row));
  }
  return rows;
}

}  // namespace

std::string_view groupType(int aKind) {
  return aKind == kBookKind ? "_BookGroup" : "_AccountGroup";
}

Result<std::vector<MonivaAccount>> getGroupMembers(const MonivaAccount& group) {
  return rowsOfKeys(
      group.root(),
      "select oldTitle from account where oldTitle in (select title from category where parent = ?"
      " and type = ? and deleted = 0) and deleted = 0 order by orderID, eid",
      {group.pk, membershipType(group.aKind)});
}

Result<std::vector<MonivaAccount>> getFatherGroup(const MonivaAccount& account) {
  Connection* db = account.root().db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  {
    // Most are in no group, which every entry of a record asks for.
    Run run = db->query("select 1 from category where title = ? and type = ? and deleted = 0 limit 1",
                        {account.pk, membershipType(account.aKind)});
    if (!run.next()) {
      if (!run.ok()) return tl::make_unexpected(db->refusal());
      return std::vector<MonivaAccount>();
    }
  }
  return rowsOfKeys(
      account.root(),
      "select oldTitle from account where oldTitle in (select parent from category where title = ?"
      " and type = ? and deleted = 0) and deleted = 0 and isGroup = 1 order by orderID, eid",
      {account.pk, membershipType(account.aKind)});
}

Result<> addToGroup(MonivaAccount& group, const MonivaAccount& member) {
  if (!group.isGroup) return refuse("'{}' is no group", group.title);
  if (member.isGroup) return refuse("'{}' is a group itself; groups have no groups in them", member.title);
  if (member.aKind != group.aKind) {
    return group.isBook() ? refuse("'{}' is a group of books", group.title)
                          : refuse("'{}' is a group of accounts", group.title);
  }
  if (member.currency != group.currency) {
    return refuse("'{}' is kept in {} and the group '{}' in {}", member.title, member.currency, group.title,
                  group.currency);
  }
  MVAppRoot& root = group.root();
  const int type = membershipType(group.aKind);
  return atomically(root, [&](Connection& db) -> Result<> {
    bool known = false;
    bool isMember = false;
    {
      Run run = db.query(
          "select deleted from category where parent = ? and title = ? and type = ? order by deleted",
          {group.pk, member.pk, type});
      known = run.next();
      isMember = known && run.integer(0) == 0;
      if (!run.ok()) return tl::make_unexpected(db.refusal());
    }
    if (isMember) return refuse("'{}' is in the group '{}' already", member.title, group.title);
    auto written =
        known
            ? write(root,
                    "update category set deleted = 0, editDate = ?, edit_ipid = ? where parent = ? and title "
                    "= ?"
                    " and type = ?",
                    root.editStamp(), root.itsUDID(), group.pk, member.pk, type)
            : write(
                  root,
                  "insert into category (title, parent, type, deleted, editDate, edit_ipid, oldTitle) values"
                  " (?,?,?,0,?,?,?)",
                  member.pk, group.pk, type, root.editStamp(), root.itsUDID(), root.newIdentifier());
    if (!written) return written;
    return countTheTotalBalance(group);
  });
}

Result<> removeFromGroup(MonivaAccount& group, const MonivaAccount& member) {
  MVAppRoot& root = group.root();
  return atomically(root, [&](Connection& db) -> Result<> {
    auto written = write(root,
                         "update category set deleted = 1, editDate = ?, edit_ipid = ? where parent = ? and"
                         " title = ? and type = ? and deleted = 0",
                         root.editStamp(), root.itsUDID(), group.pk, member.pk, membershipType(group.aKind));
    if (written && db.changes() == 0)
      return refuse("'{}' is not in the group '{}'", member.title, group.title);
    if (!written) return written;
    return countTheTotalBalance(group);
  });
}

Result<> removeFromAllGroup(const MonivaAccount& account) {
  MVAppRoot& root = account.root();
  return atomically(root, [&](Connection&) -> Result<> {
    const auto groups = getFatherGroup(account);
    if (!groups) return tl::make_unexpected(groups.error());
    if (groups->empty()) return {};
    auto written =
        write(root,
              "update category set deleted = 1, editDate = ?, edit_ipid = ? where title = ? and type = ?"
              " and deleted = 0",
              root.editStamp(), root.itsUDID(), account.pk, membershipType(account.aKind));
    if (!written) return written;
    std::set<std::string> keys;
    for (const auto& group : *groups) keys.insert(group.pk);
    return countTheTotalBalances(root, keys);
  });
}

}  // namespace moniva
