#pragma once

#include "model/entry_checks.h"
#include "model/mv_transaction.h"
#include "model/record_entry.h"
#include "support/household.h"

namespace moniva {

/// A household with carts and plans in it, and what has to be true of it at all times.
class Compound : public Recording {
 public:
  Compound() : second(book("Second")) { setClock("2024-06-15 12:00:00"); }

  MonivaAccount second;

  Spend item(double amount) {
    Spend spend = expense(amount);
    spend.account.clear();
    return spend;
  }
  Payment payment(const MonivaAccount& from, double amount) {
    Payment made(root);
    made.account = from.pk;
    made.amount = amount;
    return made;
  }
  /// A cart of items of those amounts, paid from cash and, where `card` is above zero, the bank.
  std::string cart(const std::vector<double>& amounts, double fromCash, double fromBank = 0) {
    std::vector<Spend> items;
    for (const double amount : amounts) items.push_back(item(amount));
    std::vector<Payment> payments;
    if (fromCash > 0) payments.push_back(payment(*cash, fromCash));
    if (fromBank > 0) payments.push_back(payment(*bank, fromBank));
    const auto uuid = Spend::addCart(root, items, payments);
    EXPECT_TRUE(uuid) << uuid.error().why;
    return uuid.value_or("");
  }
  Spend plain(double amount) {
    Spend spend = expense(amount);
    EXPECT_TRUE(recordEntry(root, spend));
    return *Spend::spendFromEID(root, spend.eid);
  }
  Spend again(const Spend& spend) { return *Spend::spendFromEID(root, spend.eid); }
  std::string amounts(const std::string& uuid, int bid) {
    return rows(
        "select group_concat(amount, ' ') from (select round(amount, 2) as amount from transactions where"
        " transferEID = ? and bid = ? and deleted = 0 and type != 86 order by amount, eid)",
        {uuid, bid});
  }
  /// Nothing when all groups hold together, their seeds say what their parts come to, and what is kept of
  /// every balance is what counting gives.
  std::string faults() {
    std::string found = rows(
        "select transferEID || ': ' || sum(case when bid = 20 and type != 86 then amount else 0 end) || ' / "
        "' ||"
        " sum(case when bid = 10 then amount else 0 end) || ' / ' || sum(case when type = 86 then amount + "
        "amount2"
        " end) from transactions where transferEID != '' and deleted = 0 and type in (11, 12, 86) group by"
        " transferEID having abs(sum(case when bid = 10 then -amount when type != 86 then amount else 0 "
        "end)) > 1e-6"
        " or abs(sum(case when type = 86 then amount + amount2 when bid = 20 then -amount else 0 end)) > "
        "1e-6 and"
        " max(type) = 86");
    for (const auto* held : {&*home, &*cash, &*bank, &second}) {
      const double kept = number("select totalBalance from account where oldTitle = ?", {held->pk});
      const double counted = getTheTotalBalance(*held);
      if (withoutNoise(kept - counted) != 0)
        found += fmt::format("\n{}: {} kept, {} counted", held->title, kept, counted);
    }
    return found;
  }
};

#define EXPECT_SOUND(store) EXPECT_EQ((store).faults(), "")

}  // namespace moniva
