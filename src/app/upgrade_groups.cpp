// Groups of books and accounts, and the order of the lists.

#include <algorithm>
#include <boost/json.hpp>

#include "app/do_db_updater.h"
#include "app/run_once.h"
#include "app/upgrade_support.h"
#include "base/text.h"
#include "model/account_balance.h"
#include "model/account_groups.h"

namespace moniva {
namespace {

struct GroupRow {
  std::string key;
  std::string members;
  int kind = 0;
};

/// The row of the group's kind that the text names, by its key or else as the only one of the title; no
/// groups, nothing deleted. Blank for none.
Result<std::string> memberMeant(MVAppRoot& root, const GroupRow& group, const std::string& text) {
  for (const std::string_view column : {"oldTitle", "title"}) {
    const auto keys =
        loadedTexts(root,
                    fmt::format("select distinct oldTitle from account where {} = ? and kind = ? and"
                                " isGroup = 0 and deleted = 0 and oldTitle != ''",
                                column),
                    {text, group.kind});
    if (!keys) return tl::make_unexpected(keys.error());
    if (keys->size() == 1) return keys->front();
  }
  return std::string();
}

/// The keys of the members that the list names: a JSON array, or a line or a part between commas each.
/// `unknown` counts those that are none.
Result<std::vector<std::string>> membersMeant(MVAppRoot& root, const GroupRow& group, int& unknown) {
  std::vector<std::string> keys;
  const auto take = [&](std::string_view text) -> Result<bool> {
    text = trimBlanks(text);
    if (text.empty()) return true;
    auto key = memberMeant(root, group, std::string(text));
    if (!key) return tl::make_unexpected(key.error());
    if (!key->empty() && std::ranges::find(keys, *key) == keys.end()) keys.push_back(*key);
    return !key->empty();
  };
  boost::system::error_code error;
  const auto json = boost::json::parse(group.members, error);
  if (!error && json.is_array()) {
    for (const auto& each : json.get_array()) {
      const auto taken = take(each.is_string() ? std::string_view(each.get_string()) : "");
      if (!taken) return tl::make_unexpected(taken.error());
      unknown += *taken ? 0 : 1;
    }
    return keys;
  }
  const auto parts = [](std::string_view text, char mark) {
    std::vector<std::string_view> found;
    for (;;) {
      const auto end = text.find(mark);
      found.push_back(text.substr(0, end));
      if (end == std::string_view::npos) return found;
      text.remove_prefix(end + 1);
    }
  };
  for (const auto line : parts(group.members, '\n')) {
    // A title may have a comma in it.
    const auto whole = take(line);
    if (!whole) return tl::make_unexpected(whole.error());
    if (*whole) continue;
    for (const auto part : parts(line, ',')) {
      const auto taken = take(part);
      if (!taken) return tl::make_unexpected(taken.error());
      unknown += *taken ? 0 : 1;
    }
  }
  return keys;
}

int membershipTypeOf(int aKind) {
  return aKind == kBookKind ? 8 : 7;
}

}  // namespace

Result<> updateDataFiled20210305(MVAppRoot& root) {
  return atomically(root, [&](Connection&) -> Result<> {
    const auto groups =
        loaded(root, "select oldTitle, password as member, kind from account where isGroup = 1", {},
               [](const Run& run) {
                 return GroupRow{std::string(run.text(0)), std::string(run.text(1)),
                                 static_cast<int>(run.integer(2))};
               });
    if (!groups) return tl::make_unexpected(groups.error());
    std::set<std::string> touched;
    for (const auto& group : *groups) {
      if (group.key.empty() || group.members.empty()) continue;
      int unknown = 0;
      const auto members = membersMeant(root, group, unknown);
      if (!members) return tl::make_unexpected(members.error());
      if (unknown > 0) {
        root.platform().log.line(
            fmt::format("== group {}: {} of its list are no members", group.key, unknown));
      }
      const int type = membershipTypeOf(group.kind);
      for (const auto& member : *members) {
        // A membership that a person ended stays ended.
        const auto known =
            loadedTexts(root, "select 1 from category where parent = ? and title = ? and type = ?",
                        {group.key, member, type});
        if (!known) return tl::make_unexpected(known.error());
        if (!known->empty()) continue;
        auto done = write(root,
                          "insert into category (title, parent, type, deleted, editDate, edit_ipid, oldTitle)"
                          " values (?,?,?,0,?,?,?)",
                          member, group.key, type, root.editStamp(), root.itsUDID(),
                          derivedKey({"member", group.key, member}));
        if (!done) return done;
        touched.insert(group.key);
      }
    }
    return countTheTotalBalances(root, touched);
  });
}

Result<> fixedGroupbMember(MVAppRoot& root, const std::string& key) {
  return atomically(root, [&](Connection&) -> Result<> {
    const auto group = MonivaAccount::getAccountWithPK(root, key);
    if (!group || !group->isGroup) return {};
    const int type = membershipTypeOf(group->aKind);
    struct Membership {
      std::int64_t row;
      std::string member;
      int type;
      bool isLive;
    };
    // Of the rows of one member the first decides: one of the right type, also one that was ended.
    const auto rows =
        loaded(root,
               "select pk, title, type, deleted from category where parent = ? and type in (7, 8)"
               " order by type != ?, deleted != 0, editDate DESC, pk",
               {key, type}, [](const Run& run) {
                 return Membership{run.integer(0), std::string(run.text(1)), static_cast<int>(run.integer(2)),
                                   run.integer(3) == 0};
               });
    if (!rows) return tl::make_unexpected(rows.error());
    std::set<std::string> seen;
    bool changed = false;
    for (const auto& row : *rows) {
      const auto member = MonivaAccount::getAccountWithPK(root, row.member);
      if (!member || member->aKind != group->aKind) continue;
      const bool goes = !seen.insert(row.member).second || member->isGroup;
      if (goes ? !row.isLive : row.type == type) continue;
      auto done =
          goes ? write(root,
                       "update category set deleted = 3, ipid = 'delete by fixedGroupbMember', editDate = ?,"
                       " edit_ipid = ? where pk = ?",
                       root.editStamp(), root.itsUDID(), row.row)
               : write(root, "update category set type = ?, editDate = ?, edit_ipid = ? where pk = ?", type,
                       root.editStamp(), root.itsUDID(), row.row);
      if (!done) return done;
      changed = true;
    }
    return changed ? countTheTotalBalances(root, {key}) : Result<>();
  });
}

Result<> updateAccountGroupMemberIfNeed(MVAppRoot& root) {
  return runOnce(root, "updateAccountGroupMember2", [&](Connection&) -> Result<> {
    const auto groups =
        loadedTexts(root, "select oldTitle from account where isGroup = 1 and oldTitle != ''");
    if (!groups) return tl::make_unexpected(groups.error());
    for (const auto& key : *groups) {
      if (auto done = fixedGroupbMember(root, key); !done) return done;
    }
    return {};
  });
}

Result<> updateAccountOrder(MVAppRoot& root) {
  return runOnce(root, "updateAccountOrder", [&](Connection&) -> Result<> {
    for (const int kind : {kAccountKind, kBookKind}) {
      for (const auto which : {MonivaAccount::Rows::plain, MonivaAccount::Rows::groups}) {
        auto list = MonivaAccount::list(root, kind, which);
        std::erase_if(list, [](const MonivaAccount& row) { return row.pk.empty(); });
        std::set<int> places;
        for (const auto& row : list) places.insert(row.orderID);
        if (places.size() == list.size()) continue;
        if (auto done = MonivaAccount::saveOrder(root, list); !done) return done;
      }
    }
    return {};
  });
}

}  // namespace moniva
