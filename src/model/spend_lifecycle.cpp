#include "model/entry_checks.h"
#include "model/group_balance.h"
#include "model/spend.h"
#include "model/spend_change.h"
#include "storage/writes.h"

namespace moniva {
namespace {

constexpr std::string_view kDelete =
    "update transactions set deleted = 1, ipid = '', editDate = ?, edit_ipid = ? where eid = ?";

/// Whether rows with its UUID are one record with it, which this editor sees to.
bool mayBeCompound(const TransactionItem& row) {
  return row.isSpend() || row.isSeed();
}

/// Deletes the payments one by one; what one of them refuses is logged and the others follow.
void deletePayments(MVAppRoot& root, const std::vector<TransactionItem>& payments) {
  for (const auto& payment : payments) {
    auto deleted =
        write(root, "update transactions set deleted = 1, editDate = ?, edit_ipid = ? where eid = ?",
              root.editStamp(), root.itsUDID(), payment.eid);
    if (deleted) continue;
    root.db().faultLog().line(
        fmt::format("==338 Spend:Delete array:self.payments [Error:{}]\n", deleted.error().why));
  }
}

}  // namespace

Result<> Spend::delete_() {
  return changeSpend(*this, [&](const TransactionItem& row) -> Result<> {
    if (row.isRefund()) return deleteRefund(eid);
    if (row.isPayment() && mayBeCompound(row) && !row.connectionUUID.empty()) {
      auto payment = Payment::paymentFromEID(*root_, eid);
      return payment ? payment->delete_() : refuse("there is no payment '{}'", eid);
    }
    auto written = write(*root_, kDelete, root_->editStamp(), root_->itsUDID(), eid);
    if (!written) return written;
    isDeleted = 1;
    ipid.clear();
    if (!mayBeCompound(row)) return {};
    const auto group = TransactionGroup::of(*root_, row.connectionUUID);
    if (!group) return tl::make_unexpected(group.error());
    auto others = group->items;
    if (group->seed) others.push_back(*group->seed);
    for (const auto& other : others) {
      written = write(*root_, kDelete, root_->editStamp(), root_->itsUDID(), other.eid);
      if (!written) return written;
    }
    deletePayments(*root_, group->payments);
    return {};
  });
}

Result<> Spend::restore() {
  return atomically(*root_, [&](Connection&) -> Result<> {
    const auto row = TransactionItem::fromEID(*root_, eid);
    if (!row || row->isDeleted != 1) return refuse("there is no deleted record '{}'", eid);
    const bool grouped = !row->connectionUUID.empty() && mayBeCompound(*row);
    if (grouped && row->isPayment()) {
      const auto group = TransactionGroup::of(*root_, row->connectionUUID, true);
      if (group && !group->items.empty() && group->items.front().isDeleted == 0) {
        return refuse("a payment comes back with the record it is part of");
      }
    }
    const auto leave = [&]() -> Result<> {
      const auto left = leaveDeletedSeries(*root_, eid, grouped ? row->connectionUUID : std::string());
      if (!left) return tl::make_unexpected(left.error());
      if (*left) repeatSeedID.clear();
      return {};
    };
    return changeRecords(
        *root_, RecordScope{eid, grouped ? row->connectionUUID : std::string(), {}},
        [&](Connection&) -> Result<> {
          auto written =
              write(*root_, "update transactions set deleted = 0, editDate = ?, edit_ipid = ? where eid = ?",
                    root_->editStamp(), root_->itsUDID(), eid);
          if (!written) return written;
          isDeleted = 0;
          if (!grouped) return leave();
          written = write(*root_,
                          "update transactions set deleted = 0, editDate = ?, edit_ipid = ? where"
                          " transferEID = ? and deleted = 1",
                          root_->editStamp(), root_->itsUDID(), row->connectionUUID);
          if (!written) {
            root_->db().faultLog().line(
                fmt::format("==378 Spend:restore array:self.payments [Error:{}]\n", written.error().why));
          }
          return leave();
        });
  });
}

namespace {

/// Marks the record and what goes with it. Of a plan that is one instalment and its payment, and for its seed
/// every instalment that is due.
Result<> setPaid(Spend& spend, const TransactionItem& row, bool isPaid) {
  MVAppRoot& root = spend.root();
  const Date now = root.now();
  constexpr std::string_view one =
      "update transactions set paid = ?, ipid = '', editDate = ?, edit_ipid = ? where eid = ?";
  if (isPaid && !row.isSeed() && !isPaidAt(row.datetime, now)) {
    return refuse("the record lies ahead; change its date first");
  }
  if (row.isRefund()) return refuse("a refund is not pending");
  auto written = write(root, one, isPaid, root.editStamp(), root.itsUDID(), row.eid);
  if (!written) return written;
  spend.paid = isPaid;
  if (row.connectionUUID.empty() || !mayBeCompound(row)) return {};
  const auto group = TransactionGroup::of(root, row.connectionUUID);
  if (!group) return tl::make_unexpected(group.error());
  if (row.advancedType == advanced::kInstallment && !row.isSeed()) {
    const auto partner = partnerOf(*group, row);
    return partner ? write(root, one, isPaid, root.editStamp(), root.itsUDID(), partner->eid) : Result<>();
  }
  if (row.isPayment()) return {};
  const int type = group->items.empty() ? row.type : group->items.front().type;
  // What lies ahead stays pending, but for shares of a cost, which was paid as a whole.
  return write(
      root,
      "update transactions set paid = ?, ipid = '', editDate = ?, edit_ipid = ? where transferEID = ? and"
      " type = ? and amount >= 0 and deleted = 0 and (datetime <= ? or ? = 0 or (bid = 20 and syear = 1002))",
      isPaid, root.editStamp(), root.itsUDID(), row.connectionUUID, type, now, isPaid);
}

}  // namespace

Result<> Spend::paidIt() {
  return changeSpend(*this, [&](const TransactionItem& row) { return setPaid(*this, row, true); });
}

Result<> Spend::unpaidIt() {
  return changeSpend(*this, [&](const TransactionItem& row) { return setPaid(*this, row, false); });
}

Result<> Spend::updateConnectionUUID(std::string uuid) {
  return changeSpend(*this, [&](const TransactionItem&) {
    setConnectionUUID(uuid);
    return write(
        *root_,
        "update transactions set transferEID = ?, ipid = '', editDate = ?, edit_ipid = ? where eid = ?", uuid,
        root_->editStamp(), root_->itsUDID(), eid);
  });
}

Result<> Spend::clearConnectionUUID() {
  return changeSpend(*this, [&](const TransactionItem& row) -> Result<> {
    auto written =
        write(*root_,
              "update transactions set transferEID = '', ipid = '', editDate = ?, edit_ipid = ? where"
              " transferEID = ? and transferEID != ''",
              root_->editStamp(), root_->itsUDID(), row.connectionUUID);
    if (written) {
      written = write(*root_, "update transactions set syear = 0, editDate = ?, edit_ipid = ? where eid = ?",
                      root_->editStamp(), root_->itsUDID(), eid);
    }
    if (!written) return written;
    setConnectionUUID({});
    advancedType = advanced::kPlain;
    return {};
  });
}

}  // namespace moniva
