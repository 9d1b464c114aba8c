#include "model/group_balance.h"

#include <algorithm>

#include "calendar/date_texts.h"
#include "model/entry_checks.h"
#include "storage/writes.h"

namespace moniva {
namespace {

Result<> insertRest(MVAppRoot& root, const TransactionItem& item, double amount,
                    const std::string& category) {
  Payment rest(root);
  rest.type = item.type;
  rest.amount = amount;
  rest.datetime = item.datetime;
  rest.timeZone = item.timeZone;
  rest.paid = false;
  rest.connectionUUID = item.connectionUUID;
  rest.advancedType = item.advancedType;
  rest.category = category;
  return rest.insert();
}

Result<> alignCategories(MVAppRoot& root, const TransactionGroup& group, const std::string& category) {
  for (const auto& payment : group.payments) {
    if (payment.category == category) continue;
    auto written =
        write(root, "update transactions set category = ?, editDate = ?, edit_ipid = ? where eid = ?",
              category, root.editStamp(), root.itsUDID(), payment.eid);
    if (!written) return written;
  }
  return {};
}

}  // namespace

std::string commonCategory(const std::vector<TransactionItem>& items) {
  if (items.empty()) return {};
  const auto& first = items.front().category;
  const bool all = std::ranges::all_of(items, [&](const auto& item) { return item.category == first; });
  return all ? first : std::string();
}

Result<> settlePayments(MVAppRoot& root, std::string_view uuid, SolePayment sole) {
  auto group = TransactionGroup::of(root, uuid);
  if (!group) return tl::make_unexpected(group.error());
  if (group->items.empty()) return {};
  const std::string category = commonCategory(group->items);
  if (auto aligned = alignCategories(root, *group, category); !aligned) return aligned;
  const double toPay = sumOf(group->items);
  const double covered = sumOf(group->payments);
  const double missing = withoutNoise(toPay - covered);
  if (missing == 0) return {};
  std::vector<const TransactionItem*> rests;
  const TransactionItem* regular = nullptr;
  int regulars = 0;
  double left = missing;
  for (const auto& payment : group->payments) {
    if (payment.isRefund()) continue;
    if (payment.isRest()) {
      rests.push_back(&payment);
      left = withoutNoise(left + payment.amount);
    } else {
      regular = &payment;
      ++regulars;
    }
  }
  if (sole == SolePayment::follows && regulars == 1 && rests.empty()) {
    const double amount = withoutNoise(regular->amount + missing);
    if (auto checked = checkAmount(amount); !checked) return checked;
    return writeAmount(root, regular->eid, amount);
  }
  if (left < 0) {
    return refuse("the payments would come to {}, which is more than the {} there is to pay",
                  withoutNoise(toPay - left), toPay);
  }
  if (rests.empty()) return insertRest(root, group->items.front(), left, category);
  // There are several where payments without an account are marked unpaid; the first keeps what is left.
  for (const auto* rest : rests) {
    auto written =
        left > 0 && rest == rests.front()
            ? writeAmount(root, rest->eid, left)
            : write(root, "update transactions set deleted = 3, editDate = ?, edit_ipid = ? where eid = ?",
                    root.editStamp(), root.itsUDID(), rest->eid);
    if (!written) return written;
  }
  return {};
}

Result<> settleCleared(MVAppRoot& root, std::string_view uuid, std::string_view reason) {
  auto group = TransactionGroup::of(root, uuid);
  if (!group) return tl::make_unexpected(group.error());
  if (group->items.empty()) {
    if (group->seed) group->payments.push_back(*group->seed);
    for (const auto& row : group->payments) {
      if (auto removed = removeRow(root, row.eid, reason); !removed) return removed;
    }
    return {};
  }
  if (auto counted = recountSeed(root, *group); !counted) return counted;
  for (const auto& payment : group->payments) {
    const auto of = payment.refundOf();
    if (of.empty() || std::ranges::find(group->items, of, &TransactionItem::eid) != group->items.end())
      continue;
    if (auto removed = removeRow(root, payment.eid, reason); !removed) return removed;
  }
  group = TransactionGroup::of(root, uuid);
  if (!group) return tl::make_unexpected(group.error());
  double tooMuch = withoutNoise(sumOf(group->payments) - sumOf(group->items));
  for (auto payment = group->payments.rbegin(); payment != group->payments.rend() && tooMuch > 0; ++payment) {
    if (payment->isRefund()) continue;
    const double left = withoutNoise(std::max(0.0, payment->amount - tooMuch));
    tooMuch = withoutNoise(tooMuch - (payment->amount - left));
    auto written = left > 0 ? writeAmount(root, payment->eid, left) : removeRow(root, payment->eid, reason);
    if (!written) return written;
  }
  return settlePayments(root, uuid, SolePayment::stays);
}

Result<> recountSeed(MVAppRoot& root, const TransactionGroup& group) {
  if (!group.seed) return {};
  const double whole = sumOf(group.items);
  // Parts that come to less than the fee leave nothing besides it.
  const double fee = std::min(group.seed->amount2, whole);
  const double amount = withoutNoise(whole - fee);
  if (amount == group.seed->amount && fee == group.seed->amount2) return {};
  return write(
      root,
      "update transactions set amount = ?, amount2 = ?, ipid = '', editDate = ?, edit_ipid = ? where eid = ?",
      amount, fee, root.editStamp(), root.itsUDID(), group.seed->eid);
}

std::optional<TransactionItem> partnerOf(const TransactionGroup& group, const TransactionItem& part) {
  const auto& own = part.isPayment() ? group.payments : group.items;
  const auto& others = part.isPayment() ? group.items : group.payments;
  const auto matches = [&](const TransactionItem& row) {
    return row.datetime == part.datetime && withoutNoise(row.amount - part.amount) == 0;
  };
  int place = 0;
  for (const auto& row : own) {
    if (row.eid == part.eid) break;
    if (matches(row)) ++place;
  }
  for (const auto& row : others) {
    if (matches(row) && place-- == 0) return row;
  }
  return std::nullopt;
}

Result<> writeAmount(MVAppRoot& root, std::string_view eid, double amount) {
  return write(root,
               "update transactions set amount = ?, ipid = '', editDate = ?, edit_ipid = ? where eid = ?",
               amount, root.editStamp(), root.itsUDID(), eid);
}

bool settledAt(const TransactionItem& row, Date date, Date now) {
  const bool isShare = row.advancedType == advanced::kCost && !row.isPayment();
  if (isShare || row.type == kind::kRepeatSeed) return row.paid;
  if (!isPaidAt(date, now)) return false;
  return row.paid || !isPaidAt(row.datetime, now);
}

Result<> writeDate(MVAppRoot& root, const TransactionItem& row, Date date) {
  // A series keeps the day of the month there.
  const int day = row.type == kind::kRepeatSeed ? root.calendar().day(date)
                                                : integerDateOfTimeZone(root.calendar(), date, row.timeZone);
  const Date due = row.payDate == row.datetime || row.payDate == Date{} ? date : row.payDate;
  return write(
      root,
      "update transactions set datetime = ?, sday = ?, barcode = ?, paid = ?, payDate = ?, ipid = '',"
      " editDate = ?, edit_ipid = ? where eid = ?",
      date, day, row.timeZone, settledAt(row, date, root.now()), due, root.editStamp(), root.itsUDID(),
      row.eid);
}

Result<> removeRow(MVAppRoot& root, std::string_view eid, std::string_view reason) {
  return write(root,
               "update transactions set deleted = 3, ipid = ?, editDate = ?, edit_ipid = ? where eid = ?",
               reason, root.editStamp(), root.itsUDID(), eid);
}

Result<> checkAccountKey(MVAppRoot& root, std::string_view account, int type) {
  if (account.empty()) return {};
  const auto row = MonivaAccount::getAccountWithPK(root, account);
  if (row && row->isDeleted != 0) return refuse("the account '{}' is deleted", row->title);
  if (!row || row->isBook() || row->isGroup) {
    return refuse("there is no account with the key '{}'", account);
  }
  return checkTracked(*row, type);
}

Result<> checkBookKey(MVAppRoot& root, std::string_view book) {
  const auto row = MonivaAccount::getAccountWithPK(root, book);
  if (row && row->isDeleted != 0) return refuse("the book '{}' is deleted", row->title);
  if (!row || !row->isBook() || row->isGroup) {
    return refuse("there is no book with the key '{}'", book);
  }
  return {};
}

}  // namespace moniva
