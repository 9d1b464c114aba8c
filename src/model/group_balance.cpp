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
  const TransactionItem* rest = nullptr;
  const TransactionItem* regular = nullptr;
  int regulars = 0;
  for (const auto& payment : group->payments) {
    if (payment.isRefund()) continue;
    if (payment.isRest() && rest == nullptr) {
      rest = &payment;
    } else {
      regular = &payment;
      ++regulars;
    }
  }
  if (sole == SolePayment::follows && regulars == 1 && rest == nullptr) {
    const double amount = withoutNoise(regular->amount + missing);
    if (auto checked = checkAmount(amount); !checked) return checked;
    return writeAmount(root, regular->eid, amount);
  }
  const double left = withoutNoise((rest != nullptr ? rest->amount : 0) + missing);
  if (left < 0) {
    return refuse("the payments would come to {}, which is more than the {} there is to pay",
                  withoutNoise(toPay - left), toPay);
  }
  if (rest == nullptr) return insertRest(root, group->items.front(), left, category);
  if (left > 0) return writeAmount(root, rest->eid, left);
  return write(root, "update transactions set deleted = 3, editDate = ?, edit_ipid = ? where eid = ?",
               root.editStamp(), root.itsUDID(), rest->eid);
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
  const double amount = withoutNoise(sumOf(group.items) - group.seed->amount2);
  if (amount == group.seed->amount) return {};
  return writeAmount(root, group.seed->eid, amount);
}

std::optional<TransactionItem> partnerOf(const TransactionGroup& group, const TransactionItem& part) {
  const auto& own = part.isPayment() ? group.payments : group.items;
  const auto& others = part.isPayment() ? group.items : group.payments;
  int place = 0;
  for (const auto& row : own) {
    if (row.eid == part.eid) break;
    if (row.datetime == part.datetime) ++place;
  }
  for (const auto& row : others) {
    if (row.datetime == part.datetime && !row.isRefund() && place-- == 0) return row;
  }
  return std::nullopt;
}

Result<> writeAmount(MVAppRoot& root, std::string_view eid, double amount) {
  return write(root,
               "update transactions set amount = ?, ipid = '', editDate = ?, edit_ipid = ? where eid = ?",
               amount, root.editStamp(), root.itsUDID(), eid);
}

bool settledAt(const TransactionItem& row, Date date, Date now) {
  if (!isPaidAt(date, now)) return false;
  return row.paid || !isPaidAt(row.datetime, now);
}

Result<> writeDate(MVAppRoot& root, const TransactionItem& row, Date date) {
  const Date due = row.payDate == row.datetime || row.payDate == Date{} ? date : row.payDate;
  return write(
      root,
      "update transactions set datetime = ?, sday = ?, barcode = ?, paid = ?, payDate = ?, ipid = '',"
      " editDate = ?, edit_ipid = ? where eid = ?",
      date, integerDateOfTimeZone(root.calendar(), date, row.timeZone), row.timeZone,
      settledAt(row, date, root.now()), due, root.editStamp(), root.itsUDID(), row.eid);
}

Result<> removeRow(MVAppRoot& root, std::string_view eid, std::string_view reason) {
  return write(root,
               "update transactions set deleted = 3, ipid = ?, editDate = ?, edit_ipid = ? where eid = ?",
               reason, root.editStamp(), root.itsUDID(), eid);
}

Result<> checkAccountKey(MVAppRoot& root, std::string_view account, int type) {
  if (account.empty()) return {};
  const auto row = MonivaAccount::getAccountWithPK(root, account);
  if (!row || row->isDeleted != 0 || row->isBook() || row->isGroup) {
    return refuse("there is no account with the key '{}'", account);
  }
  return checkTracked(*row, type);
}

Result<> checkBookKey(MVAppRoot& root, std::string_view book) {
  const auto row = MonivaAccount::getAccountWithPK(root, book);
  if (!row || row->isDeleted != 0 || !row->isBook() || row->isGroup) {
    return refuse("there is no book with the key '{}'", book);
  }
  return {};
}

}  // namespace moniva
