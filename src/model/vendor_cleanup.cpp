#include "model/vendor_cleanup.h"

#include <algorithm>
#include <string>
#include <vector>

#include "model/vendor_rows.h"
#include "storage/transaction.h"

namespace moniva {
namespace {

struct SameTitle {
  std::int64_t row;
  Vendor vendor;
};

/// The rows of a title, the one that stays first.
std::vector<SameTitle> vendorRowsOf(MVAppRoot& root, Connection& db, int type, const std::string& title) {
  static const std::string sql = fmt::format("select {}, pk from category where type = ? and title = ? {}",
                                             kVendorColumns, kVendorRowOrder);
  std::vector<SameTitle> rows;
  Run run = db.query(sql, {type, title});
  while (run.next()) rows.push_back({run.integer(kVendorColumnCount), vendorOfRow(root, run)});
  return rows;
}

bool isAnothersKey(Connection& db, const SameTitle& loser) {
  Run run = db.query("select 1 from category where oldTitle = ? and type = ? and pk != ? limit 1",
                     {loser.vendor.pk, loser.vendor.type, loser.row});
  return run.next() || !run.ok();
}

bool mergeInto(MVAppRoot& root, Connection& db, const SameTitle& stays, const SameTitle& loser,
               bool changeEditDate, VendorCleanup& done) {
  ++done.removed;
  const Vendor& vendor = loser.vendor;
  // Where the key is another row's of the type as well, be it the one that stays, the records are that row's
  // too.
  if (vendor.pk.empty() || isAnothersKey(db, loser))
    return root.executeUpdate("delete from category where pk = ?", loser.row);
  if (!relabelRecords(root, vendor, stays.vendor.pk,
                      changeEditDate ? Relabelling::edit : Relabelling::silent))
    return false;
  done.records += db.changes();
  return root.executeUpdate("delete from category where oldTitle = ? and type = ?", vendor.pk, vendor.type);
}

/// Makes one of the rows, of which the first stays. When that is deleted and a row without a key is not, the
/// vendor is in use still.
bool mergeRows(MVAppRoot& root, Connection& db, const std::vector<SameTitle>& rows, bool changeEditDate,
               VendorCleanup& done) {
  const Vendor& stays = rows.front().vendor;
  const bool isLive =
      std::ranges::any_of(rows, [](const SameTitle& each) { return each.vendor.deleted == 0; });
  if (stays.deleted != 0 && isLive &&
      !root.executeUpdate(
          "update category set deleted=0, editDate=?, edit_ipid = ? where oldTitle=? and type = ?",
          root.editStamp(), root.itsUDID(), stays.pk, stays.type)) {
    return false;
  }
  for (std::size_t i = 1; i < rows.size(); ++i) {
    if (!mergeInto(root, db, rows.front(), rows[i], changeEditDate, done)) return false;
  }
  ++done.titles;
  return true;
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
      const auto rows = vendorRowsOf(root, *db, type, title);
      if (rows.empty() || !mergeRows(root, *db, rows, changeEditDate, done))
        return tl::make_unexpected(db->refusal());
    }
  }
  const auto keys = giveVendorsKeys(root);
  if (!keys) return tl::make_unexpected(keys.error());
  done.keys = *keys;
  if (!transaction.commit()) return tl::make_unexpected(db->refusal());
  return done;
}

Result<VendorCleanup> clearDuplicateVendor(MVAppRoot& root) {
  return clearDuplicatedItemChangeEditDate(root, true);
}

}  // namespace moniva
