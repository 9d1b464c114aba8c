#include <algorithm>

#include "model/entry_checks.h"
#include "model/group_balance.h"
#include "model/spend_change.h"
#include "storage/writes.h"

namespace moniva {
namespace {

/// What the transaction has to bear when a payment is found where it cannot be.
enum class Repair { none, detach, remove, unpay };

/// A payment belongs to the items of its direction that do not pay for themselves; that of another item of
/// the group is left to that one.
Repair repairOf(MVAppRoot& root, const TransactionGroup& group, const TransactionItem& payment) {
  if (!payment.isSpend() || payment.isDeleted != 0 || group.items.empty()) return Repair::none;
  bool isPaidOtherwise = false;
  bool isOfAnItem = payment.isRefund();
  for (const auto& item : group.items) {
    isOfAnItem = isOfAnItem || (item.type == payment.type && item.account.empty());
    isPaidOtherwise = isPaidOtherwise || item.account == payment.account;
  }
  if (!isOfAnItem) return payment.account.empty() || isPaidOtherwise ? Repair::remove : Repair::detach;
  const bool ahead = liesAhead(root.calendar(), payment.datetime, payment.timeZone, root.now());
  return payment.paid && ahead ? Repair::unpay : Repair::none;
}

Result<> repair(MVAppRoot& root, const TransactionItem& payment, Repair how) {
  switch (how) {
    case Repair::detach:
      return write(
          root,
          "update transactions set editDate = ?, edit_ipid = ?, account = ?, transferEID = '', ipid = '',"
          " syear = 0 where eid = ?",
          root.editStamp(), root.itsUDID(), payment.account, payment.eid);
    case Repair::remove:
      return removeRow(root, payment.eid, "delete with getPaymentArray");
    case Repair::unpay:
      return write(root, "update transactions set editDate = ?, edit_ipid = ?, paid = 0 where eid = ?",
                   root.editStamp(), root.itsUDID(), payment.eid);
    case Repair::none:
      break;
  }
  return {};
}

}  // namespace

std::optional<Spend> Spend::spendFromPaymentUUID(MVAppRoot& root, std::string_view uuid) {
  const auto item = itemOfGroup(root, uuid);
  if (!item) return std::nullopt;
  if (!item->empty()) return spendFromEID(root, *item);
  // Transfers, debts and payments by themselves may have a UUID too, and no item.
  const auto rows = itemsWhere(root, "transferEID = ?", {uuid});
  if (!rows || rows->empty()) return std::nullopt;
  for (const auto& row : *rows) {
    if ((!row.isSpend() && !row.isSeed()) || row.advancedType == advanced::kPlain) return std::nullopt;
  }
  if (std::ranges::all_of(*rows, [](const auto& row) { return row.isDeleted > 1; })) return std::nullopt;
  (void)changeRecords(root, RecordScope{{}, std::string(uuid), {}}, [&](Connection&) {
    return write(root,
                 "update transactions set deleted = 3, ipid = 'delete with nil connectUUID', editDate = ?,"
                 " edit_ipid = ? where transferEID = ?",
                 root.editStamp(), root.itsUDID(), uuid);
  });
  return std::nullopt;
}

std::optional<Spend> Spend::spendSeedFromUUID(MVAppRoot& root, std::string_view uuid, int advancedType) {
  if (advancedType != advanced::kInstallment) return spendFromPaymentUUID(root, uuid);
  const auto seeds = itemsWhere(root, "type = 86 and transferEID = ?", {uuid});
  if (!seeds || seeds->empty()) return std::nullopt;
  return spendFromEID(root, seeds->front().eid);
}

std::optional<Spend> Spend::spendSeedFromCart(MVAppRoot& root, std::string_view uuid) {
  return spendSeedFromUUID(root, uuid, advanced::kCart);
}

std::optional<Spend> Spend::spendSeedFromInstallment(MVAppRoot& root, std::string_view uuid) {
  return spendSeedFromUUID(root, uuid, advanced::kInstallment);
}

std::optional<Spend> Spend::spendSeedFromCost(MVAppRoot& root, std::string_view uuid) {
  return spendSeedFromUUID(root, uuid, advanced::kCost);
}

Result<std::vector<TransactionItem>> Spend::getItemArray() {
  auto found = itemsWhere(*root_,
                          "syear = ? and transferEID = ? and bid = 20 and"
                          " type != 86 and deleted < 2 order by datetime",
                          {advancedType, connectionUUID});
  if (found) items = *found;
  return found;
}

Result<std::vector<TransactionItem>> Spend::getSplitItemsArray() {
  auto found = itemsWhere(*root_,
                          "(syear = ? or syear = ?) and transferEID = ? and bid ="
                          " 20 and type != 86 and deleted < 2 order by datetime",
                          {advanced::kCost, advanced::kInstallment, connectionUUID});
  if (found) items = *found;
  return found;
}

Result<std::vector<TransactionItem>> Spend::getCostItemsArray() {
  const auto group = TransactionGroup::of(*root_, connectionUUID);
  if (!group) return tl::make_unexpected(group.error());
  const int ofType = isSeed() && !group->items.empty() ? group->items.front().type : type;
  auto found = itemsWhere(*root_,
                          "type = ? and transferEID = ? and bid = 20 and"
                          " syear = ? and deleted = 0 order by datetime",
                          {ofType, connectionUUID, advanced::kCost});
  if (found) costItems = *found;
  return found;
}

Result<std::vector<TransactionItem>> Spend::getPaymentArray() {
  payments.clear();
  // The rows of transfers and debts have a UUID in common too, and are no payments of one another.
  const bool hasPayments = type == kind::kIncome || type == kind::kExpense || isSeed();
  if (connectionUUID.empty() || !hasPayments) return payments;
  constexpr std::string_view all = "transferEID = ? and bid = 10 and deleted < 2 order by datetime";
  auto found = itemsWhere(*root_, all, {connectionUUID});
  if (!found) return found;
  const auto group = TransactionGroup::of(*root_, connectionUUID);
  if (!group) return tl::make_unexpected(group.error());
  std::vector<std::pair<const TransactionItem*, Repair>> misplaced;
  for (const auto& payment : *found) {
    const Repair how = repairOf(*root_, *group, payment);
    if (how != Repair::none) misplaced.emplace_back(&payment, how);
  }
  if (!misplaced.empty()) {
    auto repaired = changeRecords(*root_, RecordScope{eid, connectionUUID, {}}, [&](Connection&) -> Result<> {
      for (const auto& [payment, how] : misplaced) {
        if (auto written = repair(*root_, *payment, how); !written) return written;
      }
      return {};
    });
    if (!repaired) return tl::make_unexpected(repaired.error());
    found = itemsWhere(*root_, all, {connectionUUID});
    if (!found) return found;
  }
  payments = *found;
  return found;
}

Result<std::vector<TransactionItem>> Spend::getInstallmentPaymentArray(int advancedTypeOfPayments) const {
  auto found = itemsWhere(*root_,
                          "transferEID = ? and bid = 10 and syear = ? and"
                          " deleted < 2 order by datetime",
                          {connectionUUID, advancedTypeOfPayments});
  if (found) std::erase_if(*found, [](const auto& payment) { return payment.isRefund(); });
  return found;
}

Result<std::vector<TransactionItem>> Spend::getInstallmentRefundArray(int advancedTypeOfPayments) const {
  auto found = itemsWhere(*root_,
                          "transferEID = ? and bid = 10 and syear = ? and"
                          " deleted < 2 and amount < 0 order by datetime",
                          {connectionUUID, advancedTypeOfPayments});
  return found;
}

Result<> Spend::addWithPayments(std::vector<Payment>& toPay) {
  std::vector<Spend> one{*this};
  if (!account.empty()) return refuse("a record that has payments is not paid from an account itself");
  one.front().advancedType = advanced::kSpendWithPayment;
  auto added = addCart(*root_, one, toPay);
  if (!added) return tl::make_unexpected(added.error());
  *this = one.front();
  return {};
}

Result<std::string> Spend::addCart(MVAppRoot& root, std::vector<Spend>& cartItems,
                                   std::vector<Payment>& toPay) {
  if (cartItems.empty()) return refuse("a cart needs an item");
  const std::string uuid = root.newIdentifier();
  // A record with payments is written as a cart of one item.
  const int advancedType =
      cartItems.size() == 1 && cartItems.front().advancedType == advanced::kSpendWithPayment
          ? advanced::kSpendWithPayment
          : advanced::kCart;
  return atomically(root, [&](Connection&) -> Result<std::string> {
    EntryUpkeep upkeep(root);
    std::vector<TransactionItem> written;
    for (auto& item : cartItems) {
      if (item.type != cartItems.front().type) return refuse("a cart is all expense or all income");
      if (!item.account.empty()) return refuse("an item of a cart is paid by the cart's payments");
      if (auto checked = checkBookKey(root, item.book); !checked) return tl::make_unexpected(checked.error());
      item.connectionUUID = uuid;
      if (auto added = item.add(advancedType); !added) return tl::make_unexpected(added.error());
      upkeep.note(item);
      TransactionItem row;
      row.category = item.category;
      written.push_back(std::move(row));
    }
    const std::string category = commonCategory(written);
    for (auto& payment : toPay) {
      payment.connectionUUID = uuid;
      payment.type = cartItems.front().type;
      payment.advancedType = advancedType;
      payment.category = category;
      payment.book.clear();
      if (!isPaidAt(payment.datetime, root.now())) payment.paid = false;
      if (auto checked = checkAccountKey(root, payment.account, payment.type); !checked) {
        return tl::make_unexpected(checked.error());
      }
      if (auto added = payment.insert(); !added) return tl::make_unexpected(added.error());
      upkeep.note(payment);
    }
    if (auto settled = settlePayments(root, uuid, SolePayment::stays); !settled) {
      return tl::make_unexpected(settled.error());
    }
    if (auto kept = upkeep.write(EntryUpkeep::Balances::byAmount); !kept)
      return tl::make_unexpected(kept.error());
    return uuid;
  });
}

Result<> Spend::addToCart(Spend& item) {
  if (advancedType != advanced::kCart) return refuse("the record is in no cart");
  return atomically(*root_, [&](Connection&) -> Result<> {
    const auto group = TransactionGroup::of(*root_, connectionUUID);
    if (!group) return tl::make_unexpected(group.error());
    if (group->items.empty()) return refuse("the cart is deleted; restore it first");
    if (item.type != group->items.front().type) return refuse("a cart is all expense or all income");
    if (!item.account.empty()) return refuse("an item of a cart is paid by the cart's payments");
    if (auto checked = checkBookKey(*root_, item.book); !checked) return checked;
    item.connectionUUID = connectionUUID;
    if (item.eid.empty()) item.eid = root_->newIdentifier();
    EntryUpkeep upkeep(*root_);
    upkeep.noteUses(item, 1);
    return changeRecords(*root_, RecordScope{{}, connectionUUID, {}}, [&](Connection&) -> Result<> {
      if (auto added = item.add(advanced::kCart); !added) return added;
      if (auto settled = settlePayments(*root_, connectionUUID, SolePayment::follows); !settled)
        return settled;
      return upkeep.write(EntryUpkeep::Balances::byAmount);
    });
  });
}

Result<> Spend::removeFromCart() {
  return changeSpend(*this, [&](const TransactionItem& row) -> Result<> {
    if (row.isPayment() || advancedType != advanced::kCart) return refuse("the record is in no cart");
    const auto group = TransactionGroup::of(*root_, connectionUUID);
    if (!group) return tl::make_unexpected(group.error());
    if (group->items.size() < 2) return refuse("this is the only item of the cart; delete the cart");
    if (const auto refunded = refunds(); !refunded || !refunded->empty()) {
      return refuse("the item was refunded; take the refund away first");
    }
    auto written =
        write(*root_,
              "update transactions set deleted = 1, transferEID = '', syear = 0, ipid = '', editDate = ?,"
              " edit_ipid = ? where eid = ?",
              root_->editStamp(), root_->itsUDID(), eid);
    if (!written) return written;
    const std::string uuid = std::exchange(connectionUUID, {});
    advancedType = advanced::kPlain;
    isDeleted = 1;
    return settlePayments(*root_, uuid, SolePayment::follows);
  });
}

}  // namespace moniva
