#include "reports/bill_chain.h"

#include <algorithm>
#include <limits>

#include "base/uuid.h"
#include "model/entry_checks.h"
#include "storage/writes.h"

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

Result<std::vector<CarryRow>> carryRows(Connection& db, const std::string& account, Date to) {
  std::vector<CarryRow> rows;
  // There are few of the kind, so that its index is the one to use.
  Run run = db.query(
      "select eid, amount, datetime, payDate, deleted from transactions where datetime >= ? and datetime <= ?"
      " and type = ? and +account = ? order by datetime",
      {kFirstMoment, to, kind::kOverpayment, account});
  while (run.next()) {
    rows.push_back({std::string(run.text(0)), run.real(1), run.date(2), run.date(3), run.integer(4) == 0});
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

/// Adds up each kind month by month, the rows in the order in which a query for the month alone has them, so
/// that it comes to the same, to the last bit.
Result<> addUp(Connection& db, const MonivaAccount& account, Date to, BillChain& chain) {
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
      repaid.cut(moment, [&](std::size_t i) { chain.bills[i].repaid.at(other) += run.real(2); });
    } else {
      continue;
    }
    chain.lastRecord = Date{moment};
  }
  if (!run.ok()) return tl::make_unexpected(db.refusal());
  return {};
}

/// The identifier of the row of a month, the same on every device.
std::string carryIdentifier(const std::string& account, const BillMonth& month) {
  constexpr std::int64_t kSecondsOfDay = 86'400;
  return nameBasedUuidV7(static_cast<double>(month.name * kSecondsOfDay),
                         fmt::format("{} {} lastPayoffMore", account, month.name));
}

/// What is to be written to the rows of one month.
struct CarryChange {
  Date begin;
  Date end;
  std::string eid{};   ///< of the row that is right and stays
  bool keeps = false;  ///< whether there is one
  double amount = 0;   ///< of the row to be made; 0 for none
};

Result<> writeCarry(MVAppRoot& root, const std::string& account, const CarryChange& change) {
  if (change.keeps) {
    return write(root,
                 "delete from transactions where datetime >= ? and datetime <= ? and type = ? and account = ?"
                 " and eid != ?",
                 change.begin, change.end, kind::kOverpayment, account, change.eid);
  }
  auto written = write(
      root, "delete from transactions where datetime >= ? and datetime <= ? and type = ? and account = ?",
      change.begin, change.end, kind::kOverpayment, account);
  if (!written || change.amount <= 0) return written;
  // The month may have begun on another day when its row was made.
  written =
      write(root, "delete from transactions where eid = ? and type = ?", change.eid, kind::kOverpayment);
  if (!written) return written;
  return write(root,
               "insert into transactions (amount, type, account, editDate, eid, datetime, subcategory,"
               " category, syear, bid, payDate, edit_ipid, ipid) values (?, ?, ?, ?,"
               " ?,?,'#NOMVCATEGORY','',0,10, ?,?,'lastPayoffMore')",
               change.amount, kind::kOverpayment, account, root.editStamp(), change.eid, change.begin,
               change.begin, root.itsUDID());
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

Result<BillChain> readBillChain(const MonivaAccount& account, const BillMonth& upTo, int atLeast) {
  MVAppRoot& root = account.root();
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  const ReadTransaction snapshot(*db);
  const Calendar& calendar = root.calendar();
  const BillMonths months(account);
  const Date to = calendar.dateEnd(upTo.due);

  BillChain chain;
  auto rows = carryRows(*db, account.pk, calendar.dateEnd(months.after(upTo).end));
  if (!rows) return tl::make_unexpected(rows.error());
  chain.rows = std::move(*rows);
  const auto record = firstRecord(*db, account.pk, to);
  if (!record) return tl::make_unexpected(record.error());

  BillMonth month = upTo;
  for (int i = 1; i < atLeast; ++i) month = months.before(month);
  if (*record < month.begin || *record < month.payoffBegin) {
    if (const BillMonth paid = months.paidOn(*record); paid.name < month.name) month = paid;
  }
  if (!chain.rows.empty() && chain.rows.front().datetime < month.begin) {
    month = months.holding(chain.rows.front().datetime);
  }
  for (; month.name < upTo.name; month = months.after(month)) chain.bills.push_back({.month = month});
  chain.bills.push_back({.month = upTo});

  if (auto added = addUp(*db, account, to, chain); !added) return tl::make_unexpected(added.error());
  for (std::size_t i = 1; i < chain.bills.size(); ++i) {
    chain.bills[i].carriedIn = chain.bills[i - 1].carriedOut();
  }
  return chain;
}

Result<> keepCarryRows(const MonivaAccount& account, const BillChain& chain) {
  MVAppRoot& root = account.root();
  const Calendar& calendar = root.calendar();
  const Date known = std::max(root.now(), chain.lastRecord);
  std::vector<CarryChange> changes;
  auto row = chain.rows.begin();
  for (std::size_t i = 0; i <= chain.bills.size(); ++i) {
    const BillMonth month =
        i < chain.bills.size() ? chain.bills[i].month : BillMonths(account).after(chain.bills.back().month);
    const double carried = i == 0 ? 0 : chain.bills[i - 1].carriedOut();
    CarryChange change{.begin = month.begin, .end = calendar.dateEnd(month.end), .amount = carried};
    if (carried > 0) change.eid = carryIdentifier(account.pk, month);
    bool isSuperfluous = false;
    for (; row != chain.rows.end() && row->datetime <= change.end; ++row) {
      if (row->datetime < change.begin) continue;
      const bool isRight = row->eid == change.eid && row->amount == carried && row->isLive &&
                           row->datetime == month.begin && row->payDate == month.begin;
      (isRight ? change.keeps : isSuperfluous) = true;
    }
    const bool isMissing = carried > 0 && !change.keeps &&
                           (i + 1 >= chain.bills.size() || chain.bills[i - 1].month.begin <= known);
    if (isSuperfluous || isMissing) changes.push_back(std::move(change));
  }
  Connection* db = root.db().getDatabase();
  if (changes.empty() || (db != nullptr && db->isReadOnly())) return {};
  return atomically(root, [&](Connection&) -> Result<> {
    for (const auto& change : changes) {
      if (auto written = writeCarry(root, account.pk, change); !written) return written;
    }
    return {};
  });
}

}  // namespace moniva
