// Vendors of the wrong type, vendors that went though they are in use, and persons of debts.

#include "app/do_db_updater.h"
#include "app/run_once.h"
#include "app/upgrade_support.h"
#include "model/vendor_rows.h"

namespace moniva {
namespace {

struct VendorRow {
  std::int64_t row = 0;
  Vendor vendor;
};

Result<std::vector<VendorRow>> vendorRows(MVAppRoot& root, std::string_view which) {
  return loaded(
      root,
      fmt::format("select {}, pk from category where type in (6, 9) and oldTitle != '' and {} order by"
                  " pk",
                  kVendorColumns, which),
      {}, [&](const Run& run) {
        return VendorRow{run.integer(kVendorColumnCount), vendorOfRow(root, run)};
      });
}

/// Key of the live vendor of that title and type; blank for none.
Result<std::string> liveKey(MVAppRoot& root, const std::string& title, int type) {
  const auto keys =
      loadedTexts(root,
                  "select oldTitle from category where title = ? and type = ? and deleted = 0 and"
                  " oldTitle != '' order by editDate DESC, pk limit 1",
                  {title, type});
  if (!keys) return tl::make_unexpected(keys.error());
  return keys->empty() ? std::string() : keys->front();
}

/// Whether records of expenses, or of income, name the key.
Result<bool> isNamed(MVAppRoot& root, const std::string& key, int type) {
  const auto found = loadedTexts(
      root,
      type == Vendor::kPayer
          ? "select 1 from transactions where vendor = ? and type in (11, 13, 81) and deleted < 2 limit 1"
          : "select 1 from transactions where vendor = ? and type in (12, 14, 82) and deleted < 2 limit 1",
      {key});
  if (!found) return tl::make_unexpected(found.error());
  return !found->empty();
}

}  // namespace

Result<> fixVendorTypeNotSameAsTransType(MVAppRoot& root) {
  return atomically(root, [&](Connection&) -> Result<> {
    const auto rows =
        vendorRows(root,
                   "deleted = 0 and oldTitle not in (select oldTitle from category where type in"
                   " (6, 9) group by oldTitle having count(*) > 1)");
    if (!rows) return tl::make_unexpected(rows.error());
    for (const auto& [row, vendor] : *rows) {
      const int other = Vendor::kPayee + Vendor::kPayer - vendor.type;
      const auto own = isNamed(root, vendor.pk, vendor.type);
      const auto foreign = isNamed(root, vendor.pk, other);
      if (!own || !foreign) return tl::make_unexpected((own ? foreign : own).error());
      if (*own || !*foreign) continue;
      const auto there = liveKey(root, vendor.title, other);
      if (!there) return tl::make_unexpected(there.error());
      auto done =
          there->empty()
              ? write(root, "update category set type = ?, editDate = ?, edit_ipid = ? where pk = ?", other,
                      root.editStamp(), root.itsUDID(), row)
              : write(root,
                      "update transactions set vendor = ?, editDate = ?, edit_ipid = ? where vendor = ?"
                      " and type in (11, 12, 13, 14, 81, 82)",
                      *there, root.editStamp(), root.itsUDID(), vendor.pk);
      if (!done) return done;
    }
    return {};
  });
}

Result<> needRestoreDeletedVendor(MVAppRoot& root) {
  return atomically(root, [&](Connection&) -> Result<> {
    // What a person deleted stays deleted: records go on to name it all the same.
    const auto rows =
        vendorRows(root,
                   "deleted > 1 and oldTitle not in (select oldTitle from category where type in"
                   " (6, 9) and deleted = 0) and exists (select 1 from transactions where vendor ="
                   " category.oldTitle and transactions.deleted = 0 and transactions.type in (11,"
                   " 12, 13, 14))");
    if (!rows) return tl::make_unexpected(rows.error());
    for (const auto& [row, vendor] : *rows) {
      const auto there = liveKey(root, vendor.title, vendor.type);
      if (!there) return tl::make_unexpected(there.error());
      const bool written =
          there->empty()
              ? root.executeUpdate(
                    "update category set deleted = 0, ipid = '', editDate = ?, edit_ipid = ? where pk = ?",
                    root.editStamp(), root.itsUDID(), row)
              : relabelRecords(root, vendor, *there, Relabelling::edit);
      if (!written) return refusalOfStore(root);
    }
    return {};
  });
}

Result<> updateDebter(MVAppRoot& root) {
  return runOnce(root, "updateDebter", [&](Connection&) -> Result<> {
    auto done =
        write(root,
              "update transactions set vendor = (select debt.vendor from transactions as debt where"
              " debt.eid = transactions.transferEID), editDate = ?, edit_ipid = ? where type in (25, 35)"
              " and coalesce(vendor, '') = '' and exists (select 1 from transactions as debt where"
              " debt.eid = transactions.transferEID and debt.type in (24, 34) and debt.vendor != '')",
              root.editStamp(), root.itsUDID());
    if (!done) return done;
    // A debt has its person's name; an identifier that is a vendor's key is nobody's.
    return write(
        root,
        "update transactions set vendor = (select title from category where oldTitle ="
        " transactions.vendor and type in (6, 9) and title != '' order by deleted, pk limit 1), editDate"
        " = ?, edit_ipid = ? where type in (24, 25, 34, 35) and length(vendor) = 36 and vendor in"
        " (select oldTitle from category where type in (6, 9) and title != '' and title != oldTitle)",
        root.editStamp(), root.itsUDID());
  });
}

}  // namespace moniva
