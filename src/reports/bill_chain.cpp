#include "reports/bill_chain.h"

#include <algorithm>
#include <limits>

#include "model/entry_checks.h"
#include "storage/transaction.h"

namespace moniva {
namespace {

/// The first moment of the year 1: what is dated before is damaged.
constexpr Date kFirstMoment{-62'135'596'800.0};

/// Where in time each of some stretches lies; they rise, and some may be empty.
class Stretches {
 public:
  void add(Date begin, Date end) {
    begins_.push_back(begin.secondsSince1970);
    ends_.push_back(end.secondsSince1970);
  }
  /// Calls `take` with the place of each stretch the moment is in, as a query for each would have it.
  /// Moments must rise.
  template <class Take>
  void cut(double moment, const Take& take) {
    while (at_ < ends_.size() && moment > ends_[at_]) ++at_;
    for (std::size_t place = at_; place < ends_.size() && begins_[place] <= moment; ++place) {
      if (moment <= ends_[place]) take(place);
    }
  }

 private:
  std::size_t at_ = 0;
  std::vector<double> begins_;
  std::vector<double> ends_;
};

constexpr std::size_t placeIn(const std::array<int, 4>& types, std::int64_t type) {
  for (std::size_t place = 0; place < types.size(); ++place) {
    if (types.at(place) == type) return place;
  }
  return types.size();
}

Result<std::vector<CarryRow>> billCarryRows(Connection& db, const std::string& account, Date to) {
  std::vector<CarryRow> rows;
  // There are few of the kind, so that its index is the one to use.
  Run run = db.query(
      "select eid, amount, datetime, deleted from transactions where datetime >= ? and datetime <= ?"
      " and type = ? and +account = ? order by datetime",
      {kFirstMoment, to, kind::kOverpayment, account});
  while (run.next()) {
    rows.push_back({std::string(run.text(0)), run.real(1), run.date(2), run.integer(3) == 0});
  }
  if (!run.ok()) return tl::make_unexpected(db.refusal());
  return rows;
}

/// When the first record of a kind that bills count is dated; after every moment without one.
Result<Date> firstRecord(Connection& db, const std::string& account, Date to) {
  Run run = db.query(
      "select datetime from transactions where account = ? and ? <= datetime and datetime <= ? and deleted ="
      " 0 and paid = 1 and +type in (11, 12, 23, 24, 25, 33, 34, 35) order by datetime limit 1",
      {account, kFirstMoment, to});
  const bool found = run.next();
  if (!run.ok()) return tl::make_unexpected(db.refusal());
  return found ? run.date(0) : Date{std::numeric_limits<double>::infinity()};
}

/// Adds up each kind month by month.
Result<> addUpBills(Connection& db, const MonivaAccount& account, Date to, BillChain& chain) {
  const Calendar& calendar = account.root().calendar();
  Stretches charged;
  Stretches repaid;
  for (const auto& bill : chain.bills) {
    charged.add(bill.month.begin, calendar.dateEnd(bill.month.end));
    repaid.add(bill.month.payoffBegin, calendar.dateEnd(bill.month.payoffEnd));
  }
  Run run = db.query(
      "select datetime, type, amount from transactions where account = ? and ? <= datetime and datetime <= ?"
      " and deleted = 0 and paid = 1 order by datetime",
      {account.pk, kFirstMoment, to});
  while (run.next()) {
    const double moment = run.real(0);
    const std::int64_t type = run.integer(1);
    if (const auto place = placeIn(kChargedTypes, type); place < kChargedTypes.size()) {
      charged.cut(moment, [&](std::size_t i) { chain.bills[i].charged.at(place) += run.real(2); });
    } else if (const auto other = placeIn(kRepaidTypes, type); other < kRepaidTypes.size()) {
      repaid.cut(moment, [&](std::size_t i) {
        auto& bill = chain.bills[i];
        bill.repaid.at(other) += run.real(2);
        if (moment < calendar.dateEnd(bill.month.end).secondsSince1970) bill.repaidEarly += run.real(2);
      });
    } else {
      continue;
    }
    chain.lastRecord = Date{moment};
  }
  if (!run.ok()) return tl::make_unexpected(db.refusal());
  return {};
}

/// Pays the bills one stretch after the other: what comes before a month has closed pays what the bill before
/// still lacks, as nothing else can be meant; the rest pays the month's own bill, and what is above that,
/// whatever is open yet, the oldest first. Answers what is above all.
double payBills(std::vector<ChainedBill>& bills) {
  double above = 0;
  std::size_t oldest = 0;
  for (std::size_t i = 0; i < bills.size(); ++i) {
    ChainedBill& bill = bills[i];
    double paid = totalOf(bill.repaid);
    if (i > 0) {
      const double late = std::clamp(bill.repaidEarly, 0.0, bills[i - 1].open);
      bills[i - 1].open = difference(bills[i - 1].open, late);
      paid -= late;
    }
    const double left = difference(totalOf(bill.charged), above + paid);
    bill.open = std::max(0.0, left);
    above = std::max(0.0, -left);
    for (; above > 0 && oldest < i; ++oldest) {
      const double covered = std::min(above, bills[oldest].open);
      bills[oldest].open = difference(bills[oldest].open, covered);
      above = difference(above, covered);
      if (bills[oldest].open > 0) break;
    }
  }
  return above;
}

}  // namespace

double totalOf(const BillSums& sums) {
  double total = 0;
  for (const double sum : sums) total += sum;
  return total;
}

double ChainedBill::left() const {
  return difference(totalOf(charged), carriedIn + totalOf(repaid));
}

double ChainedBill::carriedOut() const {
  return std::max(0.0, -left());
}

Result<BillChain> readBillChain(const MonivaAccount& account, const BillMonth& from, const BillMonth& upTo) {
  MVAppRoot& root = account.root();
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  const ReadTransaction snapshot(*db);
  const Calendar& calendar = root.calendar();
  const BillMonths months(account);
  const Date to = calendar.dateEnd(upTo.due);

  BillChain chain;
  auto rows = billCarryRows(*db, account.pk, calendar.dateEnd(months.after(upTo).end));
  if (!rows) return tl::make_unexpected(rows.error());
  chain.rows = std::move(*rows);
  const auto record = firstRecord(*db, account.pk, to);
  if (!record) return tl::make_unexpected(record.error());

  BillMonth month = from.name < upTo.name ? from : upTo;
  if (*record < month.begin || *record < month.payoffBegin) {
    if (const BillMonth paid = months.paidOn(*record); paid.name < month.name) month = paid;
  }
  const auto live = std::ranges::find(chain.rows, true, &CarryRow::isLive);
  if (live != chain.rows.end() && live->datetime < month.begin) month = months.holding(live->datetime);
  for (; month.name < upTo.name; month = months.after(month)) chain.bills.push_back({.month = month});
  chain.bills.push_back({.month = upTo});

  if (auto added = addUpBills(*db, account, to, chain); !added) return tl::make_unexpected(added.error());
  for (std::size_t i = 1; i < chain.bills.size(); ++i) {
    chain.bills[i].carriedIn = chain.bills[i - 1].carriedOut();
  }
  chain.above = payBills(chain.bills);
  return chain;
}

}  // namespace moniva
