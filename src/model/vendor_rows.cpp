#include "model/vendor_rows.h"

#include <vector>

#include "storage/transaction.h"

namespace moniva {

Vendor vendorOfRow(MVAppRoot& root, const Run& run) {
  Vendor vendor(root);
  vendor.pk = run.text(0);
  vendor.title = run.text(1);
  vendor.type = static_cast<int>(run.integer(2));
  vendor.setOrderString(run.text(3));
  vendor.usedTimes = static_cast<int>(run.integer(4));
  vendor.orderID = static_cast<int>(run.integer(5));
  vendor.deleted = static_cast<int>(run.integer(6));
  vendor.familyUser = run.text(7);
  vendor.ipid = run.text(8);
  return vendor;
}

Result<std::optional<Vendor>> vendorWithKey(MVAppRoot& root, std::string_view title, int type) {
  auto found = Vendor::withTitle(root, title, type);
  if (!found || !found->pk.empty()) return found;
  if (auto given = giveVendorsKeys(root); !given) return tl::make_unexpected(given.error());
  return Vendor::withTitle(root, title, type);
}

Result<int> giveVendorsKeys(MVAppRoot& root) {
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  Transaction transaction(*db);
  if (!transaction.began()) return tl::make_unexpected(db->refusal());
  std::vector<std::int64_t> rows;
  {
    Run run = db->query(
        "select pk from category as bare where type in (6, 9) and coalesce(oldTitle, '') = '' and not exists"
        " (select 1 from category where title = bare.title and type = bare.type and oldTitle != '')");
    while (run.next()) rows.push_back(run.integer(0));
    if (!run.ok()) return tl::make_unexpected(db->refusal());
  }
  for (const auto row : rows) {
    if (!root.executeUpdate("update category set oldTitle = ?, editDate = ?, edit_ipid = ? where pk = ?",
                            root.newIdentifier(), root.editStamp(), root.itsUDID(), row)) {
      return tl::make_unexpected(db->refusal());
    }
  }
  if (!transaction.commit()) return tl::make_unexpected(db->refusal());
  return static_cast<int>(rows.size());
}

std::string_view ownRecords(MVAppRoot& root, std::string_view key, int type) {
  constexpr std::string_view all =
      " and type not in (23, 24, 25, 33, 34, 35, 83) and (type != 85 or syear is not 33)";
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return all;
  Run run = db->query("select 1 from category where oldTitle = ? and type in (6, 9) and type != ? limit 1",
                      {key, type});
  if (!run.next()) return all;
  return type == Vendor::kPayer ? " and type in (11, 13, 81)" : " and type in (12, 14, 82)";
}

bool relabelRecords(MVAppRoot& root, const Vendor& from, std::string_view key, Relabelling how) {
  const auto which = ownRecords(root, from.pk, from.type);
  if (how == Relabelling::silent) {
    return root.executeUpdate(fmt::format("update transactions set vendor = ? where vendor = ?{}", which),
                              key, from.pk);
  }
  return root.executeUpdate(
      fmt::format("update transactions set vendor = ?, editDate = ?, edit_ipid = ?{} where vendor = ?{}",
                  how == Relabelling::batchEdit ? ", ipid = 'batchEdit'" : "", which),
      key, root.editStamp(), root.itsUDID(), from.pk);
}

}  // namespace moniva
