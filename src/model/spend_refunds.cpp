#include "calendar/date_texts.h"
#include "model/entry_checks.h"
#include "model/group_balance.h"
#include "model/spend.h"
#include "model/spend_change.h"
#include "storage/writes.h"

namespace moniva {
namespace {

/// A payment row of the record, above zero for what was paid and below for what came back.
struct RefundRow {
  std::string eid;
  double amount;
  std::string account;
  Date datetime;
  std::string timeZone;
};

Result<> insertPaymentOf(const Spend& spend, const RefundRow& row) {
  MVAppRoot& root = spend.root();
  return write(
      root,
      "insert into transactions (amount, type, account, editDate, eid, paid, datetime, sday, barcode,"
      " transferEID, subcategory, category, bid, ipid, syear, edit_ipid) values (?, ?, ?, ?, ?,1,?, ?,?,?,"
      "'#NOMVCATEGORY',? ,10, ?, ?,?)",
      row.amount, spend.type, row.account, root.editStamp(), row.eid, row.datetime,
      integerDateOfTimeZone(root.calendar(), row.datetime, row.timeZone), row.timeZone, spend.connectionUUID,
      spend.category, "", spend.advancedType, root.itsUDID());
}

Result<> checkRefundable(const TransactionItem& row) {
  if (row.advancedType == advanced::kCost || row.advancedType == advanced::kInstallment) {
    return refuse(
        "the shares of a spread cost and of an instalment plan are not refunded; change their amount");
  }
  if (row.type != kind::kExpense || row.isPayment()) return refuse("only an expense is refunded");
  if (!row.paid) return refuse("the expense is not paid yet; lower its amount instead");
  return {};
}

Result<double> paymentsOf(MVAppRoot& root, std::string_view uuid) {
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  Run run = db->query(
      "select sum(amount) as tamount from transactions where transferEID = ? and bid = 10 and deleted = 0",
      {uuid});
  if (!run.next()) return tl::make_unexpected(db->refusal());
  return withoutNoise(run.real(0));
}

/// Where the only payment left is what the record itself would say, nothing of the group is lost with it.
const TransactionItem* ownPayment(const TransactionGroup& group) {
  if (group.items.size() != 1 || group.payments.size() != 1) return nullptr;
  const auto& item = group.items.front();
  const auto& payment = group.payments.front();
  const bool says = payment.datetime == item.datetime && payment.paid && item.paid && payment.note.empty() &&
                    payment.amount2 == 0 && item.advancedType == advanced::kSpendWithPayment;
  return says ? &payment : nullptr;
}

/// Removes a payment row from its record for good.
Result<> takeFromGroup(MVAppRoot& root, std::string_view eid) {
  return write(root,
               "update transactions set deleted = 3, ipid = 'delete with deleteRefund', editDate = ?,"
               " edit_ipid = ?, syear = 0, transferEID = '' where eid = ?",
               root.editStamp(), root.itsUDID(), eid);
}

/// The live refund of that `eid`.
Result<TransactionItem> refundFromEID(MVAppRoot& root, std::string_view eid) {
  auto row = TransactionItem::fromEID(root, eid);
  if (!row || row->isDeleted != 0 || !row->isRefund()) return refuse("there is no refund '{}'", eid);
  return std::move(*row);
}

/// What the refund is of: the item it names, else the only one of its group.
Result<Spend> expenseOf(MVAppRoot& root, const TransactionItem& refund) {
  const auto named = refund.refundOf();
  auto owner = named.empty() ? Spend::spendFromPaymentUUID(root, refund.connectionUUID)
                             : Spend::spendFromEID(root, named);
  if (!owner || owner->connectionUUID != refund.connectionUUID) {
    return refuse("the expense of the refund is not there");
  }
  return std::move(*owner);
}

}  // namespace

Result<std::vector<TransactionItem>> Spend::refunds() const {
  auto group = TransactionGroup::of(*root_, connectionUUID);
  if (!group) return tl::make_unexpected(group.error());
  std::vector<TransactionItem> found;
  for (auto& payment : group->payments) {
    if (!payment.isRefund()) continue;
    const auto of = payment.refundOf();
    if (of.empty() ? group->items.size() == 1 : of == eid) found.push_back(std::move(payment));
  }
  return found;
}

Result<bool> Spend::hasRefund() {
  const auto read = getPaymentArray();
  if (!read) {
    root_->db().faultLog().line(
        fmt::format("==782 Spend:hasRefund array:self.payments [Error:{}]\n", read.error().why));
    return tl::make_unexpected(read.error());
  }
  const auto own = refunds();
  if (!own) return tl::make_unexpected(own.error());
  return !own->empty();
}

Result<std::string> Spend::refund(double refunded, Date date, std::string toAccount) {
  if (auto checked = checkAmount(refunded); !checked) return tl::make_unexpected(checked.error());
  if (auto checked = checkRecordDate(root_->calendar(), date); !checked)
    return tl::make_unexpected(checked.error());
  if (!isPaidAt(date, root_->now())) return refuse("a refund is recorded once it has come");
  if (auto checked = checkAccountKey(*root_, toAccount, kind::kExpense); !checked)
    return tl::make_unexpected(checked.error());
  std::string refundEid;
  auto changed = changeSpend(*this, [&](const TransactionItem& row) -> Result<> {
    if (auto checked = checkRefundable(row); !checked) return checked;
    if (withoutNoise(refunded - row.amount) > 0) {
      return refuse("{} is more than the {} that are left of the expense", refunded, row.amount);
    }
    const bool wasPlain = connectionUUID.empty();
    if (wasPlain) {
      connectionUUID = root_->newIdentifier();
      advancedType = advanced::kSpendWithPayment;
      RecordChange widened(*root_);
      if (auto begun = widened.begin({{}, connectionUUID, {}}); !begun) return begun;
      auto paidOnce = insertPaymentOf(
          *this, {root_->newIdentifier(), row.amount, row.account, row.datetime, row.timeZone});
      if (!paidOnce) return paidOnce;
      account.clear();
    }
    refundEid = root_->newIdentifier();
    auto written = insertPaymentOf(*this, {refundEid, -refunded, toAccount, date, root_->calendar().zone()});
    if (!written) return written;
    amount = withoutNoise(row.amount - refunded);
    ipid = "batchEdit";
    written = write(
        *root_,
        "update transactions set amount = ?, transferEID = ?, syear = ?, ipid = 'batchEdit', account = ?,"
        " editDate = ?, edit_ipid = ? where eid = ?",
        amount, connectionUUID, advancedType, account, root_->editStamp(), root_->itsUDID(), eid);
    if (!written) return written;
    // A cart may come to have other items.
    if (advancedType != advanced::kCart) return {};
    return write(*root_, "update transactions set sweek = ? where eid = ?", jsonOfRefund(eid), refundEid);
  });
  if (!changed) return tl::make_unexpected(changed.error());
  return refundEid;
}

Result<> Spend::deleteRefund(std::string_view refundEid) {
  const auto refund = refundFromEID(*root_, refundEid);
  if (!refund) return tl::make_unexpected(refund.error());
  const auto owner = expenseOf(*root_, *refund);
  if (!owner) return tl::make_unexpected(owner.error());
  Spend expense = *owner;
  auto changed = changeSpend(expense, [&](const TransactionItem& row) -> Result<> {
    const std::string uuid = row.connectionUUID;
    auto written = takeFromGroup(*root_, refundEid);
    if (!written) return written;
    const auto group = TransactionGroup::of(*root_, uuid);
    if (!group) return tl::make_unexpected(group.error());
    const auto total = paymentsOf(*root_, uuid);
    if (!total) return tl::make_unexpected(total.error());
    expense.amount = group->items.size() == 1 ? *total : withoutNoise(row.amount - refund->amount);
    const TransactionItem* own = ownPayment(*group);
    if (own == nullptr) {
      return write(
          *root_,
          "update transactions set amount = ?, ipid = 'batchEdit', editDate = ?, edit_ipid = ? where eid = ?",
          expense.amount, root_->editStamp(), root_->itsUDID(), expense.eid);
    }
    written = takeFromGroup(*root_, own->eid);
    if (!written) return written;
    expense.account = own->account;
    expense.connectionUUID.clear();
    expense.advancedType = advanced::kPlain;
    return write(
        *root_,
        "update transactions set amount = ?, transferEID = '', syear = 0, account = ?, ipid = 'batchEdit',"
        " editDate = ?, edit_ipid = ? where eid = ?",
        expense.amount, expense.account, root_->editStamp(), root_->itsUDID(), expense.eid);
  });
  if (changed && eid == expense.eid) *this = expense;
  return changed;
}

Result<> Spend::updateRefund(std::string_view refundEid, double refunded) {
  const auto refund = refundFromEID(*root_, refundEid);
  if (!refund) return tl::make_unexpected(refund.error());
  return updateRefund(refundEid, refunded, refund->datetime, refund->account);
}

Result<> Spend::updateRefund(std::string_view refundEid, double refunded, Date date,
                             const std::string& toAccount) {
  if (auto checked = checkAmount(refunded); !checked) return checked;
  if (auto checked = checkRecordDate(root_->calendar(), date); !checked) return checked;
  if (!isPaidAt(date, root_->now())) return refuse("a refund is recorded once it has come");
  if (auto checked = checkAccountKey(*root_, toAccount, kind::kExpense); !checked) return checked;
  const auto refund = refundFromEID(*root_, refundEid);
  if (!refund) return tl::make_unexpected(refund.error());
  const auto owner = expenseOf(*root_, *refund);
  if (!owner) return tl::make_unexpected(owner.error());
  Spend expense = *owner;
  auto changed = changeSpend(expense, [&](const TransactionItem& row) -> Result<> {
    const double whole = withoutNoise(row.amount - refund->amount);
    if (withoutNoise(refunded - whole) > 0) {
      return refuse("{} is more than the {} that are left of the expense", refunded, whole);
    }
    auto written = write(
        *root_,
        "update transactions set amount = ?, datetime = ?, sday = ?, account = ?, editDate = ?, edit_ipid = ?"
        " where eid = ?",
        -refunded, date, integerDateOfTimeZone(root_->calendar(), date, refund->timeZone), toAccount,
        root_->editStamp(), root_->itsUDID(), refundEid);
    if (!written) return written;
    const auto group = TransactionGroup::of(*root_, row.connectionUUID);
    if (!group) return tl::make_unexpected(group.error());
    const auto total = paymentsOf(*root_, row.connectionUUID);
    if (!total) return tl::make_unexpected(total.error());
    expense.amount = group->items.size() == 1 ? *total : withoutNoise(whole - refunded);
    return write(
        *root_,
        "update transactions set amount = ?, ipid = 'batchEdit', editDate = ?, edit_ipid = ? where eid = ?",
        expense.amount, root_->editStamp(), root_->itsUDID(), expense.eid);
  });
  if (changed && eid == expense.eid) *this = expense;
  return changed;
}

}  // namespace moniva
