#include "model/vendor_cleanup.h"

#include <string>
#include <vector>

#include "model/vendor.h"
#include "storage/transaction.h"

namespace moniva {
namespace {

struct SameTitle {
  std::int64_t row;
  std::string key;
};

/// The rows of a title, the one that stays first.
std::vector<SameTitle> rowsOf(Connection& db, int type, const std::string& title) {
  std::vector<SameTitle> rows;
  Run run = db.query(
      "select pk, oldTitle from category where type = ? and title = ? order by deleted != 0, editDate DESC,"
      " pk DESC",
      {type, title});
  while (run.next()) rows.push_back({run.integer(0), std::string(run.text(1))});
  return rows;
}

bool isAnothersKey(Connection& db, const SameTitle& loser) {
  Run run = db.query("select 1 from category where oldTitle = ? and pk != ? limit 1", {loser.key, loser.row});
  return run.next() || !run.ok();
}

bool mergeInto(MVAppRoot& root, Connection& db, const SameTitle& stays, const SameTitle& loser,
               bool changeEditDate, VendorCleanup& done) {
  ++done.removed;
  // Where the key is some other row's as well, be it the one that stays, the records are that row's too.
  if (loser.key.empty() || isAnothersKey(db, loser))
    return root.executeUpdate("delete from category where pk = ?", loser.row);
  const bool moved =
      changeEditDate
          ? root.executeUpdate(
                "update transactions set vendor = ?, editDate = ?, edit_ipid = ? where vendor = ?", stays.key,
                root.editStamp(), root.itsUDID(), loser.key)
          : root.executeUpdate("update transactions set vendor = ? where vendor = ?", stays.key, loser.key);
  if (!moved) return false;
  done.records += db.changes();
  return root.executeUpdate("delete from category where oldTitle = ?", loser.key);
}

}  // namespace

Result<VendorCleanup> clearDuplicatedItemChangeEditDate(MVAppRoot& root, bool changeEditDate) {
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  Transaction transaction(*db);
  if (!transaction.began()) return tl::make_unexpected(db->refusal());
  VendorCleanup done;
  for (const int type : {Vendor::kPayee, Vendor::kPayer}) {
    std::vector<std::string> titles;
    {
      Run run = db->query("select title from category where type = ? group by title having count(title) > 1",
                          {type});
      while (run.next()) titles.emplace_back(run.text(0));
      if (!run.ok()) return tl::make_unexpected(db->refusal());
    }
    for (const auto& title : titles) {
      const auto rows = rowsOf(*db, type, title);
      for (std::size_t i = 1; i < rows.size(); ++i) {
        if (!mergeInto(root, *db, rows.front(), rows[i], changeEditDate, done))
          return tl::make_unexpected(db->refusal());
      }
      ++done.titles;
    }
  }
  if (!transaction.commit()) return tl::make_unexpected(db->refusal());
  return done;
}

Result<VendorCleanup> clearDuplicateVendor(MVAppRoot& root) {
  return clearDuplicatedItemChangeEditDate(root, true);
}

}  // namespace moniva
