#include <algorithm>
#include <cmath>
#include <set>
#include <unordered_map>

#include "base/uuid.h"
#include "reports/bill_chain.h"
#include "storage/writes.h"

// The rows that keep what was paid above a bill.
namespace moniva {
namespace {

/// What a row is to say; an amount of 0 takes it away.
struct BillCarryChange {
  std::string eid;
  double amount = 0;
  Date begin;
};

/// The row of a month may have been made in another zone, where the month begins some hours off.
bool isOfMonth(const Calendar& calendar, const CarryRow& row, const BillMonth& month) {
  constexpr double kMostBetweenZones = 26 * 3600;
  return (month.begin <= row.datetime && row.datetime <= calendar.dateEnd(month.end)) ||
         std::abs(row.datetime.secondsSince1970 - month.begin.secondsSince1970) <= kMostBetweenZones;
}

/// What differs from what the bills say.
std::vector<BillCarryChange> billCarryChanges(const MonivaAccount& account, const BillChain& chain) {
  MVAppRoot& root = account.root();
  const BillMonths months(account);
  const Date known = std::max(root.now(), chain.lastRecord);
  std::unordered_map<std::string_view, const CarryRow*> rows;
  for (const auto& row : chain.rows) rows.emplace(row.eid, &row);
  std::set<std::string> ours;
  std::vector<BillCarryChange> changes;
  const BillMonth next = months.after(chain.bills.back().month);
  for (std::size_t i = 0; i <= chain.bills.size(); ++i) {
    const double carried = i == 0 ? 0 : chain.bills[i - 1].carriedOut();
    if (carried <= 0 && rows.empty()) continue;
    const BillMonth& month = i < chain.bills.size() ? chain.bills[i].month : next;
    auto eid = carryIdentifier(account, month);
    ours.insert(eid);
    const auto found = rows.find(eid);
    if (found == rows.end()) {
      // Nothing is carried into the first.
      if (carried <= 0) continue;
      const bool isNear = i + 1 >= chain.bills.size() || chain.bills[i - 1].month.begin <= known;
      if (isNear) changes.push_back({std::move(eid), carried, month.begin});
      continue;
    }
    const CarryRow& row = *found->second;
    const bool isRight = carried <= 0
                             ? !row.isLive
                             : row.isLive && row.amount == carried && isOfMonth(root.calendar(), row, month);
    if (!isRight) changes.push_back({std::move(eid), carried, month.begin});
  }
  // That of the month after them may be dated before it here.
  if (!rows.empty()) ours.insert(carryIdentifier(account, months.after(next)));
  for (const auto& row : chain.rows) {
    if (row.isLive && !ours.contains(row.eid)) changes.push_back({row.eid, 0, row.datetime});
  }
  return changes;
}

Result<> writeBillCarry(MVAppRoot& root, const std::string& account, const BillCarryChange& change) {
  if (change.amount <= 0) {
    // What is gone for good would come back from other devices.
    return write(root,
                 "update transactions set amount = 0, deleted = 3, editDate = ?, edit_ipid = ? where eid = ?"
                 " and type = ? and deleted = 0",
                 root.editStamp(), root.itsUDID(), change.eid, kind::kOverpayment);
  }
  auto written = write(root,
                       "update transactions set amount = ?, account = ?, editDate = ?, datetime = ?, payDate"
                       " = ?, edit_ipid = ?, ipid = 'lastPayoffMore', deleted = 0 where eid = ? and type = ?",
                       change.amount, account, root.editStamp(), change.begin, change.begin, root.itsUDID(),
                       change.eid, kind::kOverpayment);
  Connection* db = root.db().getDatabase();
  if (!written || db == nullptr || db->changes() > 0) return written;
  return write(root,
               "insert into transactions (amount, type, account, editDate, eid, datetime, subcategory,"
               " category, syear, bid, payDate, edit_ipid, ipid) values (?, ?, ?, ?,"
               " ?,?,'#NOMVCATEGORY','',0,10, ?,?,'lastPayoffMore')",
               change.amount, kind::kOverpayment, account, root.editStamp(), change.eid, change.begin,
               change.begin, root.itsUDID());
}

}  // namespace

std::string carryIdentifier(const MonivaAccount& account, const BillMonth& month) {
  constexpr std::int64_t kSecondsOfDay = 86'400;
  return nameBasedUuidV7(static_cast<double>(month.name * kSecondsOfDay),
                         fmt::format("{} {} lastPayoffMore", account.pk, month.name));
}

void keepCarryRows(const MonivaAccount& account, const BillChain& chain) {
  if (billCarryChanges(account, chain).empty()) return;
  keepIfFree(account.root(), [&](Connection&) -> Result<> {
    // Another program may have changed the records meanwhile.
    const auto fresh = readBillChain(account, chain.bills.front().month, chain.bills.back().month);
    if (!fresh) return tl::make_unexpected(fresh.error());
    for (const auto& change : billCarryChanges(account, *fresh)) {
      if (auto written = writeBillCarry(account.root(), account.pk, change); !written) return written;
    }
    return {};
  });
}

}  // namespace moniva
