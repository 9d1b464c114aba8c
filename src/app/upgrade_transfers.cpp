// Transfers and compound records that earlier versions left incomplete.

#include <vector>

#include "app/do_db_updater.h"
#include "app/run_once.h"
#include "model/entry_checks.h"
#include "model/record_entry.h"

namespace moniva {
namespace {

/// One column of a row that gets back what the other row of its pair says.
struct Mend {
  std::string eid;
  std::string group;
  std::string column;
  std::string value;
};

/// The mends that a query of (eid, group, value) finds.
Result<std::vector<Mend>> mendsIn(Connection& db, const char* column, std::string_view query) {
  std::vector<Mend> mends;
  Run run = db.query(query);
  while (run.next()) {
    mends.push_back({std::string(run.text(0)), std::string(run.text(1)), column, std::string(run.text(2))});
  }
  if (!run.ok()) return tl::make_unexpected(db.refusal());
  return mends;
}

/// Writes them, with the stamp; balances follow.
Result<> apply(MVAppRoot& root, const std::vector<Mend>& mends) {
  for (const auto& mend : mends) {
    auto done = changeRecords(root, {.eid = mend.eid, .group = mend.group, .series = {}}, [&](Connection&) {
      return write(
          root, "update transactions set " + mend.column + " = ?, editDate = ?, edit_ipid = ? where eid = ?",
          mend.value, root.editStamp(), root.itsUDID(), mend.eid);
    });
    if (!done) return done;
  }
  return {};
}

}  // namespace

Result<> fixedMissingTransferAccount(MVAppRoot& root) {
  return atomically(root, [&](Connection& db) -> Result<> {
    // Pairs of one live row each. What names nothing is repaired by a name that is known, never the other way
    // round, and never into a transfer within one account.
    constexpr std::string_view kAccounts =
        "with live as (select eid, transferEID, type, account, vendor from transactions where type in (23, "
        "33)"
        " and deleted = 0 and transferEID != ''), known as (select oldTitle from account where kind = 1 and"
        " oldTitle != '') select one.eid, one.transferEID, max(other.vendor) from live as one join live as "
        "other"
        " on other.transferEID = one.transferEID and other.type != one.type where ifnull(one.account, '') "
        "not in"
        " (select ifnull(oldTitle, '') from account where ifnull(oldTitle, '') != '') and other.vendor in "
        "known"
        " and other.vendor is not other.account group by one.eid having count(*) = 1";
    constexpr std::string_view kVendors =
        "with live as (select eid, transferEID, type, account, vendor from transactions where type in (23, "
        "33)"
        " and deleted = 0 and transferEID != ''), known as (select oldTitle from account where kind = 1 and"
        " oldTitle != '') select one.eid, one.transferEID, max(other.account) from live as one join live as "
        "other"
        " on other.transferEID = one.transferEID and other.type != one.type where ifnull(one.vendor, '') not "
        "in"
        " (select ifnull(oldTitle, '') from account where ifnull(oldTitle, '') != '') and other.account in "
        "known"
        " and other.account is not one.account group by one.eid having count(*) = 1";
    const auto accounts = mendsIn(db, "account", kAccounts);
    if (!accounts) return tl::make_unexpected(accounts.error());
    if (auto done = apply(root, *accounts); !done) return done;
    const auto vendors = mendsIn(db, "vendor", kVendors);
    return vendors ? apply(root, *vendors) : tl::make_unexpected(vendors.error());
  });
}

Result<> restoreWrongDeletedTransferIfNeed(MVAppRoot& root) {
  return runOnce(root, "updateWrongDeletedTransfer23", [&](Connection& db) -> Result<> {
    // Removed by a clean-up of series or without a reason, while the side it left from is there alone and
    // names it. Of several the one edited last comes back.
    std::vector<RecordScope> sides;
    {
      Run run = db.query(
          "select b.eid, b.transferEID, max(b.editDate) from transactions as b join transactions as a on"
          " a.transferEID = b.transferEID and +a.type = 33 and a.deleted = 0 where b.type = 23 and b.deleted "
          "= 3"
          " and b.transferEID != '' and b.account = a.vendor and b.account != '' and (ifnull(b.ipid, '') = "
          "'' or"
          " b.ipid like 'delete by fixDuplicateRecurringItem%' or b.ipid like"
          " 'delete with clearDuplicateRecurringItem%') and not exists (select 1 from transactions as other "
          "where"
          " other.transferEID = b.transferEID and other.type = 23 and other.deleted = 0) group by "
          "b.transferEID"
          " having count(distinct a.eid) = 1");
      while (run.next()) sides.push_back({std::string(run.text(0)), std::string(run.text(1)), {}});
      if (!run.ok()) return tl::make_unexpected(db.refusal());
    }
    for (const auto& side : sides) {
      auto restored = changeRecords(root, side, [&](Connection&) {
        return write(
            root, "update transactions set deleted = 0, ipid = '', editDate = ?, edit_ipid = ? where eid = ?",
            root.editStamp(), root.itsUDID(), side.eid);
      });
      if (!restored) return restored;
    }
    return {};
  });
}

Result<> updateInstallment(MVAppRoot& root) {
  return atomically(root, [&](Connection& db) -> Result<> {
    // A seed that is not a spread cost's, and whose parts do not say that it is.
    const auto seeds = mendsIn(
        db, "syear",
        "select eid, transferEID, '1003' from transactions as seed where type = 86 and deleted = 0 and"
        " ifnull(syear, 0) not in (1002, 1003) and transferEID != '' and exists (select 1 from transactions "
        "as"
        " part where part.transferEID = seed.transferEID and part.bid = 20 and part.type < 13 and"
        " part.deleted = 0) and not exists (select 1 from transactions as part where part.transferEID ="
        " seed.transferEID and part.type != 86 and part.deleted = 0 and ifnull(part.syear, 0) not in (0, "
        "1000,"
        " 1003))");
    if (!seeds) return tl::make_unexpected(seeds.error());
    if (auto done = apply(root, *seeds); !done) return done;
    const auto parts = mendsIn(
        db, "syear",
        "select eid, transferEID, '1003' from transactions as part where type in (11, 12) and deleted = 0 and"
        " ifnull(syear, 0) in (0, 1000) and transferEID != '' and exists (select 1 from transactions as seed"
        " where seed.transferEID = part.transferEID and seed.type = 86 and seed.syear = 1003 and "
        "seed.deleted ="
        " 0)");
    return parts ? apply(root, *parts) : tl::make_unexpected(parts.error());
  });
}

Result<> fixWrongBookAfterEditTransCartBook20210903(MVAppRoot& root) {
  return runOnce(root, "fixWrongBookAfterEditTransCartBook20210903", [&](Connection& db) -> Result<> {
    // Where all other items of the cart are in one book.
    const auto items = mendsIn(
        db, "book",
        "with books as (select oldTitle from account where kind = 2 and oldTitle != '') select one.eid,"
        " one.transferEID, max(other.book) from transactions as one join transactions as other on"
        " other.transferEID = one.transferEID and +other.type in (11, 12) and other.bid = 20 and "
        "other.deleted ="
        " 0 and other.syear = 1001 and other.book in books where one.type in (11, 12) and one.bid = 20 and"
        " one.deleted = 0 and one.syear = 1001 and one.transferEID != '' and ifnull(one.book, '') not in "
        "books"
        " group by one.eid having min(other.book) = max(other.book)");
    return items ? apply(root, *items) : tl::make_unexpected(items.error());
  });
}

Result<> updateExpenseCostItemType20240928(MVAppRoot& root) {
  return atomically(root, [&](Connection& db) -> Result<> {
    // Only where the record as a whole is kept by a seed, which counts nowhere, and comes to what its shares
    // do: elsewhere the money is counted already.
    const auto shares = mendsIn(
        db, "type",
        "select share.eid, share.transferEID, '12' from transactions as share join (select part.transferEID "
        "as"
        " uuid from transactions as part join transactions as seed on seed.transferEID = part.transferEID and"
        " +seed.type = 86 and seed.syear = 1002 and seed.deleted = 0 where part.type in (12, 14) and "
        "part.bid ="
        " 20 and part.deleted = 0 and part.transferEID != '' group by part.transferEID having"
        " count(distinct seed.eid) = 1 and max(part.type) = 14 and abs(sum(part.amount) - max(seed.amount +"
        " ifnull(seed.amount2, 0))) < 0.005) on uuid = share.transferEID where share.type = 14 and share.bid "
        "="
        " 20 and share.syear = 1002 and share.deleted = 0");
    return shares ? apply(root, *shares) : tl::make_unexpected(shares.error());
  });
}

}  // namespace moniva
