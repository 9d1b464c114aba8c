#include <cmath>

#include "model/entry_checks.h"
#include "model/group_balance.h"
#include "model/spend_change.h"
#include "model/spend_plan.h"
#include "storage/writes.h"

namespace moniva {
namespace {

/// A share begins on that day; whole months weigh 1, the last one what of it is in the range.
struct Share {
  Date begin;
  double weight;
};

std::vector<Share> sharesOf(const Calendar& calendar, Date from, Date to) {
  std::vector<Share> shares;
  const Date end = calendar.oneDayAfter(to);
  for (int month = 0; static_cast<int>(shares.size()) <= kMostParts; ++month) {
    const Date begin = calendar.dateWithMonth(from, month);
    if (!calendar.isBeforeDay(begin, end)) break;
    const Date next = calendar.dateWithMonth(from, month + 1);
    const auto days = [&](Date later) {
      return std::round(
          (calendar.dateBegin(later).secondsSince1970 - calendar.dateBegin(begin).secondsSince1970) /
          86400.0);
    };
    shares.push_back({begin, std::min(1.0, days(end) / days(next))});
  }
  return shares;
}

}  // namespace

Result<std::vector<Spend>> Spend::apportionCostFrom(Date from, Date to) const {
  const Calendar& calendar = root_->calendar();
  for (const Date date : {from, to}) {
    if (auto checked = checkRecordDate(calendar, date); !checked) return tl::make_unexpected(checked.error());
  }
  if (calendar.isBeforeDay(to, from)) return refuse("the last day of the range lies before its first");
  const auto shares = sharesOf(calendar, from, to);
  if (static_cast<int>(shares.size()) > kMostParts) {
    return refuse("a cost is spread over {} months at most", kMostParts);
  }
  double whole = 0;
  for (const auto& share : shares) whole += share.weight;
  std::vector<Spend> parts;
  double weight = 0;
  double given = 0;
  for (const auto& share : shares) {
    weight += share.weight;
    // Each share ends at a cent, and what rounding leaves goes on to the next.
    const bool isLast = parts.size() + 1 == shares.size();
    const double upTo = isLast ? amount : std::round(amount * weight / whole * 100) / 100;
    Spend part(*root_);
    part.amount = withoutNoise(upTo - given);
    given = upTo;
    if (part.amount <= 0)
      return refuse("{} cannot be divided into {} shares of a cent and more", amount, shares.size());
    part.type = type;
    part.category = category;
    part.subcategory = subcategory;
    part.book = book;
    part.vendor = vendor;
    part.note = note;
    part.datetime = calendar.dateWithTime(share.begin, datetime);
    part.timeZone = timeZone;
    part.paid = paid;
    part.connectionUUID = connectionUUID;
    part.advancedType = advanced::kCost;
    parts.push_back(std::move(part));
  }
  return parts;
}

Result<> Spend::saveApportionedCost(Date from, Date to) {
  if (auto checked = checkPlain(*this); !checked) return checked;
  if (auto checked = checkAmount(amount); !checked) return checked;
  if (auto checked = checkAccountKey(*root_, account, type); !checked) return checked;
  if (auto checked = checkBookKey(*root_, book); !checked) return checked;
  Spend seed = *this;
  const bool isNew = isNewOne;
  if (seed.eid.empty()) seed.eid = root_->newIdentifier();
  if (seed.connectionUUID.empty()) seed.connectionUUID = root_->newIdentifier();
  const bool grouped = !connectionUUID.empty();
  auto parts = seed.apportionCostFrom(from, to);
  if (!parts) return tl::make_unexpected(parts.error());
  auto saved =
      changeRecords(*root_, RecordScope{seed.eid, seed.connectionUUID, {}}, [&](Connection&) -> Result<> {
        EntryUpkeep upkeep(*root_);
        if (!isNew) {
          const auto row = liveRow(*root_, eid);
          if (!row) return tl::make_unexpected(row.error());
          if (row->connectionUUID != connectionUUID || row->isSeed()) {
            return refuse("the record was changed meanwhile");
          }
          if (grouped && row->advancedType != advanced::kSpendWithPayment) {
            return refuse("the record is divided already; only a plain one or one with payments is spread");
          }
          if (const auto refunded = refunds(); !refunded || !refunded->empty()) {
            return refuse("the expense was refunded; take the refund away first");
          }
          upkeep.noteUses(seed, -1);
        }
        seed.payDate = from;
        seed.repeatEndDate = to;
        seed.foreignAmount = 0;
        const std::string paidFrom = seed.account;
        if (auto written = writeSeed(seed, advanced::kCost); !written) return written;
        if (auto written = writeParts(*parts, advanced::kCost, upkeep); !written) return written;
        if (grouped) {
          auto written =
              write(*root_,
                    "update transactions set syear = ?, ipid = 'batchEdit', editDate = ?, edit_ipid = ? where"
                    " transferEID = ? and bid = 10",
                    advanced::kCost, root_->editStamp(), root_->itsUDID(), seed.connectionUUID);
          if (written) written = settlePayments(*root_, seed.connectionUUID, SolePayment::follows);
          if (!written) return written;
        } else {
          Payment payment(*root_);
          payment.type = type;
          payment.amount = amount;
          payment.datetime = datetime;
          payment.timeZone = timeZone;
          payment.account = paidFrom;
          payment.category = category;
          payment.connectionUUID = seed.connectionUUID;
          payment.advancedType = advanced::kCost;
          payment.paid = paid;
          if (auto written = payment.insert(); !written) return written;
        }
        return upkeep.write(EntryUpkeep::Balances::byAmount);
      });
  if (saved) *this = seed;
  return saved;
}

Result<> Spend::updateApportionedCost(Date from, Date to) {
  return changeSpend(*this, [&](const TransactionItem& row) -> Result<> {
    if (!isSeed() || advancedType != advanced::kCost) return refuse("the record is no spread cost");
    const auto former = getCostItemsArray();
    if (!former) return tl::make_unexpected(former.error());
    if (former->empty()) return refuse("the cost has no shares");
    Spend whole = *this;
    whole.type = former->front().type;
    whole.amount = row.amount;
    whole.paid = former->front().paid;
    auto parts = whole.apportionCostFrom(from, to);
    if (!parts) return tl::make_unexpected(parts.error());
    EntryUpkeep upkeep(*root_);
    upkeep.noteUses(whole, -static_cast<int>(former->size()));
    auto written = removeParts(*root_, *former, "delete with updateApportionedCost");
    if (written) written = writeParts(*parts, advanced::kCost, upkeep);
    if (!written) return written;
    payDate = from;
    repeatEndDate = to;
    amount = row.amount;
    written = write(
        *root_,
        "update transactions set payDate = ?, repeat_end_date = ?, ipid = '', editDate = ?, edit_ipid = ?"
        " where eid = ?",
        from, to, root_->editStamp(), root_->itsUDID(), eid);
    if (written) written = settlePayments(*root_, connectionUUID, SolePayment::follows);
    return written ? upkeep.write(EntryUpkeep::Balances::byAmount) : written;
  });
}

Result<> Spend::combineApportionedCost() {
  return changeSpend(*this, [&](const TransactionItem& row) -> Result<> {
    if (!isSeed() || advancedType != advanced::kCost) return refuse("the record is no spread cost");
    const auto group = TransactionGroup::of(*root_, row.connectionUUID);
    if (!group) return tl::make_unexpected(group.error());
    if (group->items.empty()) return refuse("the cost has no shares");
    if (auto removed = removeParts(*root_, group->items, "delete with combineApportionedCost"); !removed) {
      return removed;
    }
    EntryUpkeep upkeep(*root_);
    Spend use = *this;
    use.type = group->items.front().type;
    upkeep.noteUses(use, 1 - static_cast<int>(group->items.size()));
    const double total = sumOf(group->items);
    const auto* sole = group->payments.size() == 1 && group->payments.front().datetime == row.datetime &&
                               group->payments.front().paid == row.paid
                           ? &group->payments.front()
                           : nullptr;
    Result<> written;
    if (sole != nullptr) {
      written = removeRow(*root_, sole->eid, "delete with combineApportionedCost");
      if (written) written = seedToItem(*this, use.type, total, sole->account, advanced::kPlain);
    } else {
      written =
          write(*root_,
                "update transactions set syear = ?, ipid = 'batchEdit', editDate = ?, edit_ipid = ? where"
                " transferEID = ? and bid = 10 and deleted = 0",
                advanced::kSpendWithPayment, root_->editStamp(), root_->itsUDID(), row.connectionUUID);
      if (written) written = seedToItem(*this, use.type, total, "", advanced::kSpendWithPayment);
    }
    return written ? upkeep.write(EntryUpkeep::Balances::byAmount) : written;
  });
}

Result<> Spend::recountCostIfNeed() {
  return changeSpend(*this, [&](const TransactionItem& row) -> Result<> {
    if (!isSeed() || advancedType != advanced::kCost) return refuse("the record is no spread cost");
    const auto group = TransactionGroup::of(*root_, row.connectionUUID);
    if (!group) return tl::make_unexpected(group.error());
    if (group->items.empty()) return {};
    if (auto counted = recountSeed(*root_, *group); !counted) return counted;
    amount = sumOf(group->items);
    return settlePayments(*root_, row.connectionUUID, SolePayment::follows);
  });
}

}  // namespace moniva
