#include "recurrence/settle_due.h"

#include <algorithm>
#include <map>
#include <set>

#include "model/account_balance.h"
#include "model/group_balance.h"
#include "model/transaction_item.h"
#include "storage/writes.h"

namespace moniva {
namespace {

// Only rows in use are settled: what a person deleted is once it is back, and what the program removed keeps
// the reason, by which repairs know it.

/// Keys of the accounts and books that have something due.
Result<std::set<std::string>> holdersOfDue(Connection& db, Date now) {
  std::set<std::string> holders;
  {
    Run run = db.query(
        "select account from transactions where paid = 0 and account != '' and account not NULL and datetime"
        " <= ? and deleted = 0 group by account",
        {now});
    while (run.next()) holders.emplace(run.text(0));
    if (!run.ok()) return tl::make_unexpected(db.refusal());
  }
  // What has no account is not settled by itself.
  if (holders.empty()) return holders;
  Run run = db.query(
      "select book from transactions where paid = 0 and book != '' and book not NULL and datetime <= ? and"
      " type < ? and deleted = 0 group by book",
      {now, kind::kFurtherIncome});
  while (run.next()) holders.emplace(run.text(0));
  if (!run.ok()) return tl::make_unexpected(db.refusal());
  return holders;
}

/// A payment that is due, of a record that has payments.
struct DuePayment {
  std::string eid;
  std::string group;
};

/// What is due, as the settling statement selects it.
struct Due {
  Date earliest;
  std::vector<DuePayment> payments;
  std::set<std::string> records;  ///< rows of a group are one, by the UUID they share
};

Result<Due> dueBy(Connection& db, Date now) {
  Due due{now, {}, {}};
  Run run = db.query(
      "select eid, transferEID, datetime, bid, type from transactions where paid = 0 and datetime <= ? and"
      " account != '' and account not NULL and deleted = 0",
      {now});
  while (run.next()) {
    due.earliest = std::min(due.earliest, run.date(2));
    due.records.emplace(run.text(1).empty() ? run.text(0) : run.text(1));
    const auto type = run.integer(4);
    const bool isSpend = type == kind::kIncome || type == kind::kExpense;
    if (!isSpend || run.integer(3) != kPaymentRow || run.text(1).empty()) continue;
    due.payments.push_back({std::string(run.text(0)), std::string(run.text(1))});
  }
  if (!run.ok()) return tl::make_unexpected(db.refusal());
  return due;
}

Result<> settleDueRow(MVAppRoot& root, std::string_view eid) {
  return write(root,
               "update transactions set paid = 1, ipid = 'batchEdit', editDate = ?, edit_ipid = ? where eid"
               " = ?",
               root.editStamp(), root.itsUDID(), eid);
}

/// Items go with the payments of their group: an instalment with its own, shares of a cost once no payment is
/// pending, others once their day has come, as when they are entered then.
Result<> settleItems(MVAppRoot& root, const std::string& uuid, const std::set<std::string>& settled, Date now,
                     std::set<std::string>& holders) {
  const auto group = TransactionGroup::of(root, uuid, true);
  if (!group) return tl::make_unexpected(group.error());
  const bool anyPending = std::ranges::any_of(
      group->payments, [](const auto& payment) { return !payment.paid && payment.isDeleted == 0; });
  std::vector<const TransactionItem*> items;
  for (const auto& item : group->items) {
    if (item.paid || !item.account.empty()) continue;
    if (item.advancedType == advanced::kInstallment) {
      const auto payment = partnerOf(*group, item);
      if (payment && settled.contains(payment->eid)) items.push_back(&item);
    } else if (item.advancedType == advanced::kCost ? !anyPending : item.datetime <= now) {
      items.push_back(&item);
    }
  }
  for (const auto* item : items) {
    if (auto done = settleDueRow(root, item->eid); !done) return done;
    if (!item->book.empty()) holders.insert(item->book);
  }
  return {};
}

Result<> settleItemsOf(MVAppRoot& root, const std::vector<DuePayment>& payments, Date now,
                       std::set<std::string>& holders) {
  std::map<std::string, std::set<std::string>> groups;
  for (const auto& payment : payments) groups[payment.group].insert(payment.eid);
  for (const auto& [uuid, settled] : groups) {
    if (auto done = settleItems(root, uuid, settled, now, holders); !done) return done;
  }
  return {};
}

}  // namespace

Result<int> makeMonivasPaid(MVAppRoot& root) {
  const Date now = root.now();
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  if (const auto any = holdersOfDue(*db, now); !any || any->empty()) {
    return any ? Result<int>(0) : tl::make_unexpected(any.error());
  }
  return atomically(root, [&](Connection&) -> Result<int> {
    auto holders = holdersOfDue(*db, now);
    if (!holders) return tl::make_unexpected(holders.error());
    const auto due = dueBy(*db, now);
    if (!due) return tl::make_unexpected(due.error());
    auto written = write(
        root,
        "update transactions set paid = 1, ipid = 'batchEdit', editDate = ?, edit_ipid = ? where paid = 0"
        " and datetime <= ? and account != '' and account not NULL and deleted = 0",
        root.editStamp(), root.itsUDID(), now);
    if (!written) return tl::make_unexpected(written.error());
    if (db->changes() == 0) return 0;
    written = settleItemsOf(root, due->payments, now, *holders);
    if (!written) return tl::make_unexpected(written.error());
    // Instalments that have come due are no batch a person would undo.
    written =
        write(root,
              "update transactions set ipid = '', editDate = ?, edit_ipid = ? where syear = ? and ipid ="
              " 'batchEdit' and type = ? and datetime >= ? and datetime <= ?",
              root.editStamp(), root.itsUDID(), advanced::kInstallment, kind::kExpense, due->earliest, now);
    if (written) written = countTheTotalBalances(root, *holders);
    if (!written) return tl::make_unexpected(written.error());
    return static_cast<int>(due->records.size());
  });
}

}  // namespace moniva
