#include <fmt/format.h>

#include <cmath>
#include <cstdlib>

#include "model/entry_checks.h"
#include "model/group_balance.h"
#include "model/spend_change.h"
#include "model/spend_plan.h"
#include "storage/writes.h"

namespace moniva {
namespace {

/// Rounded to cents as it is printed with two decimals.
double inCents(double amount) {
  return std::strtod(fmt::format("{:0.2f}", amount).c_str(), nullptr);
}

/// The wish to be reminded goes from a record to the instalments that are open; all of them have their
/// stamps.
Result<> remindOfParts(MVAppRoot& root, const Spend& seed) {
  auto passed =
      write(root,
            "update transactions set needNotify = 1 where transferEID = ? and type in (11, 12) and bid"
            " = 20 and paid = 0 and deleted = 0 and (select needNotify from transactions where eid ="
            " ?) = 1",
            seed.connectionUUID, seed.eid);
  if (!passed) return passed;
  return write(root, "update transactions set needNotify = 0 where eid = ?", seed.eid);
}

/// And back to the record that the plan becomes.
Result<> remindOfWhole(MVAppRoot& root, const Spend& seed) {
  return write(
      root,
      "update transactions set needNotify = 1 where eid = ? and exists (select 1 from transactions where"
      " transferEID = ? and type in (11, 12) and bid = 20 and paid = 0 and deleted = 0 and needNotify ="
      " 1)",
      seed.eid, seed.connectionUUID);
}

}  // namespace

std::vector<Spend> Spend::installmentByPaymentFor(int n) const {
  std::vector<Spend> plan;
  if (n < 1) return plan;
  const Calendar& calendar = root_->calendar();
  const double total = amount + foreignAmount;
  const double share = inCents(total / n);
  const bool atMonthsEnd =
      calendar.day(datetime) == 31 || (calendar.month(datetime) == 2 && calendar.isLastDayOfMonth(datetime));
  const std::string uuid = root_->newIdentifier();
  Date date = datetime;
  plan.reserve(static_cast<std::size_t>(n));
  for (int place = 0; place < n; ++place) {
    if (place > 0) date = atMonthsEnd ? calendar.getNextMonthEndDay(date) : calendar.getNextMonthDay(date);
    Spend one(*root_);
    one.amount = place == 0 ? withoutNoise(share + (total - share * n)) : share;
    one.type = type;
    one.category = category;
    one.subcategory = subcategory;
    one.book = book;
    one.account = account;
    one.vendor = vendor;
    one.note = note;
    one.datetime = date;
    one.timeZone = timeZone;
    one.connectionUUID = uuid;
    one.advancedType = advanced::kInstallment;
    one.paid = !liesAhead(calendar, date, timeZone, root_->now());
    plan.push_back(std::move(one));
  }
  return plan;
}

Result<> Spend::saveInstallment(int n) {
  if (n < 1 || n > kMostParts) return refuse("a plan has 1 to {} instalments; {} is not", kMostParts, n);
  if (auto checked = checkPlain(*this); !checked) return checked;
  if (auto checked = checkAmount(amount); !checked) return checked;
  if (auto checked = checkAccountKey(*root_, account, type); !checked) return checked;
  if (auto checked = checkBookKey(*root_, book); !checked) return checked;
  auto plan = installmentByPaymentFor(n);
  for (const auto& one : plan) {
    if (one.amount <= 0)
      return refuse("{} cannot be divided into {} instalments of a cent and more", amount, n);
  }
  Spend seed = *this;
  const bool isNew = isNewOne;
  if (seed.eid.empty()) seed.eid = root_->newIdentifier();
  seed.connectionUUID = plan.front().connectionUUID;
  const RecordScope scope{seed.eid, seed.connectionUUID, {}};
  auto saved = changeRecords(*root_, scope, [&](Connection&) -> Result<> {
    EntryUpkeep upkeep(*root_);
    if (!isNew) {
      const auto row = liveRow(*root_, eid);
      if (!row) return tl::make_unexpected(row.error());
      if (!row->connectionUUID.empty())
        return refuse("the record has payments already; only a plain one is divided");
      upkeep.noteUses(seed, -1);
    }
    if (auto written = writeSeed(seed, advanced::kInstallment); !written) return written;
    for (auto& one : plan) one.account.clear();
    if (auto written = writeParts(plan, advanced::kInstallment, upkeep); !written) return written;
    if (auto passed = isNew ? Result<>() : remindOfParts(*root_, seed); !passed) return passed;
    for (const auto& one : plan) {
      Payment payment(*root_);
      payment.type = one.type;
      payment.amount = one.amount;
      payment.datetime = one.datetime;
      payment.timeZone = one.timeZone;
      payment.account = account;
      payment.category = one.category;
      payment.connectionUUID = one.connectionUUID;
      payment.advancedType = advanced::kInstallment;
      payment.paid = one.paid;
      if (auto written = payment.insert(); !written) return written;
    }
    return upkeep.write(EntryUpkeep::Balances::byAmount);
  });
  if (saved) *this = seed;
  return saved;
}

Result<> Spend::cancelInstallment() {
  return changeSpend(*this, [&](const TransactionItem& row) -> Result<> {
    if (!isSeed() || advancedType != advanced::kInstallment) {
      return refuse("the record is no instalment plan");
    }
    const auto group = TransactionGroup::of(*root_, row.connectionUUID);
    if (!group) return tl::make_unexpected(group.error());
    if (group->items.empty()) return refuse("the plan has no instalments");
    for (const auto& payment : group->payments) {
      if (payment.account != group->payments.front().account) {
        return refuse("the instalments are paid from several accounts; bring them to one first");
      }
    }
    if (auto passed = remindOfWhole(*root_, *this); !passed) return passed;
    const std::string paidFrom = group->payments.empty() ? row.account : group->payments.front().account;
    for (const auto* rows : {&group->items, &group->payments}) {
      auto removed = removeParts(*root_, *rows, "delete with cancelInstallment");
      if (!removed) return removed;
    }
    EntryUpkeep upkeep(*root_);
    Spend use = *this;
    use.type = group->items.front().type;
    upkeep.noteUses(use, 1 - static_cast<int>(group->items.size()));
    auto written = seedToItem(*this, use.type, sumOf(group->items), paidFrom, advanced::kPlain);
    return written ? upkeep.write(EntryUpkeep::Balances::byAmount) : written;
  });
}

}  // namespace moniva
