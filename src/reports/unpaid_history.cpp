#include <algorithm>
#include <map>
#include <tuple>

#include "reports/history.h"
#include "storage/transaction.h"

namespace moniva {
namespace {

/// What is still to be paid: expenses, incomes, and transfers by the side the money leaves.
constexpr std::string_view kToBePaid =
    "t.deleted = 0 and (t.type = ? or t.type = ? or t.type = ?) and (t.transferEID = '' or"
    " (t.transferEID != '' and t.bid = 10)) and t.paid = 0 and (t.syear != ? or t.syear is NULL)"
    " and t.sday < 40000000";

/// An entry with the row whose currency it is in: its account, or without one its book, which a payment has
/// by the items of its record. Several rows of one key count once.
std::string unpaidFrom(bool withAccount) {
  return fmt::format(
      "from transactions t left join (select oldTitle, max(currency) as currency from account group by"
      " oldTitle) h on h.oldTitle = {} where {} and {}",
      withAccount ? "t.account"
                  : "case when t.book != '' or t.transferEID = '' then t.book else (select i.book from"
                    " transactions i where i.transferEID = t.transferEID and i.bid = 20 and i.book != ''"
                    " order by i.deleted limit 1) end",
      kToBePaid, withAccount ? "t.account != ''" : "(t.account = '' or t.account is NULL)");
}

using UnpaidDays = std::map<int, UnpaidDay>;

Result<> readUnpaid(Connection& db, bool withAccount, UnpaidDays& days) {
  const std::initializer_list<Value> arguments = {kind::kIncome, kind::kExpense, kind::kTransferOut,
                                                  advanced::kInstallment};
  const std::string from = unpaidFrom(withAccount);
  {
    Run run = db.query(
        fmt::format("select t.sday, t.eid, t.type, t.amount, ifnull(h.currency, ''), t.datetime {}", from),
        arguments);
    while (run.next()) {
      days[static_cast<int>(run.integer(0))].entries.push_back({std::string(run.text(1)),
                                                                static_cast<int>(run.integer(2)), run.real(3),
                                                                std::string(run.text(4)), run.date(5)});
    }
    if (!run.ok()) return tl::make_unexpected(db.refusal());
  }
  Run run = db.query(
      fmt::format("select t.sday, t.type, ifnull(h.currency, '') as code, sum(t.amount), count(t.eid) {}"
                  " group by t.sday, t.type, code",
                  from),
      arguments);
  while (run.next()) {
    auto& sums = days[static_cast<int>(run.integer(0))].sums;
    UnpaidDay::Sum sum{static_cast<int>(run.integer(1)), std::string(run.text(2)), run.real(3),
                       run.integer(4)};
    const auto same = std::ranges::find_if(sums, [&](const UnpaidDay::Sum& other) {
      return other.type == sum.type && other.currency == sum.currency;
    });
    if (same == sums.end()) {
      sums.push_back(std::move(sum));
    } else {
      same->amount += sum.amount;
      same->count += sum.count;
    }
  }
  if (!run.ok()) return tl::make_unexpected(db.refusal());
  return {};
}

}  // namespace

Result<std::int64_t> unpaidEntriesCount(MVAppRoot& root) {
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  Run run = db->query(
      "select count(eid) as eid_count from transactions where deleted = 0 and (type = ? or type = ? or"
      " type = ?) and (transferEID = '' or (transferEID != '' and bid = 10)) and paid = 0 and (syear != ? or"
      " syear is NULL)",
      {kind::kIncome, kind::kExpense, kind::kTransferOut, advanced::kInstallment});
  if (!run.next()) return tl::make_unexpected(db->refusal());
  return run.integer(0);
}

Result<std::vector<UnpaidDay>> unpaidTransactions(MVAppRoot& root) {
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  UnpaidDays found;
  {
    const ReadTransaction snapshot(*db);
    for (const bool withAccount : {true, false}) {
      if (auto read = readUnpaid(*db, withAccount, found); !read) return tl::make_unexpected(read.error());
    }
  }
  std::vector<UnpaidDay> days;
  for (auto& [sday, day] : found) {
    day.sday = sday;
    std::ranges::sort(day.entries, [](const UnpaidEntry& one, const UnpaidEntry& other) {
      return std::tie(one.datetime, one.eid) < std::tie(other.datetime, other.eid);
    });
    std::ranges::sort(day.sums, [](const UnpaidDay::Sum& one, const UnpaidDay::Sum& other) {
      return std::tie(one.type, one.currency) < std::tie(other.type, other.currency);
    });
    day.date = day.entries.front().datetime;
    days.push_back(std::move(day));
  }
  std::ranges::stable_sort(days, {}, &UnpaidDay::date);
  return days;
}

}  // namespace moniva
