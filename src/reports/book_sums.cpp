#include "reports/book_sums.h"

#include "model/account_balance.h"
#include "model/transaction_type.h"
#include "reports/period_walk.h"
#include "reports/report_block.h"
#include "reports/report_queries.h"
#include "storage/transaction.h"

namespace moniva {
namespace {

/// The days on which a series makes its records, by its rule.
class SeriesDays {
 public:
  /// From its next day on. `dayOfMonth` is that of its first record.
  SeriesDays(const DaySystem& days, std::string_view rule, std::int64_t next, int dayOfMonth)
      : days_(&days), rule_(rule), next_(next) {
    constexpr int kInEveryMonth = 28;
    dayOfMonth_ = dayOfMonth > kInEveryMonth && dayOfMonth <= 31 ? dayOfMonth : days.parts(next).day;
  }

  /// How many of them there are between two days, both counted in.
  std::int64_t between(std::int64_t first, std::int64_t last) const {
    if (const int step = rule_ == "Daily" ? 1 : rule_ == "Weekly" ? 7 : rule_ == "Biweekly" ? 14 : 0) {
      const std::int64_t before = first > next_ ? (first - next_ + step - 1) / step : 0;
      return last < next_ + before * step ? 0 : (last - next_) / step - before + 1;
    }
    std::int64_t count = 0;
    for (int time = 0;; ++time) {
      const auto day = dayOf(time);
      if (!day || *day > last) return count;
      if (*day >= first) ++count;
    }
  }

 private:
  /// Its day of so many times on, or the month's last; none for what is no rule.
  std::optional<std::int64_t> dayOf(int time) const {
    const int months = rule_ == "Monthly"       ? 1
                       : rule_ == "Bimonthly"   ? 2
                       : rule_ == "Quarterly"   ? 3
                       : rule_ == "Half-yearly" ? 6
                                                : 0;
    if (months == 0 && rule_ != "Yearly") return std::nullopt;
    const std::int64_t day =
        months == 0 ? days_->plusYears(next_, time) : days_->plusMonths(next_, std::int64_t{time} * months);
    return std::min(days_->firstOfMonth(day) + dayOfMonth_ - 1, days_->lastOfMonth(day));
  }

  const DaySystem* days_;
  std::string_view rule_;
  std::int64_t next_;
  int dayOfMonth_;
};

/// What the records come to that the series of the book have yet to make in that time.
Result<double> sumOfSeries(const MonivaAccount& book, Date from, Date to) {
  MVAppRoot& root = book.root();
  const Calendar& calendar = root.calendar();
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  Run run = db->query(
      fmt::format("select amount, repeat, datetime, repeat_end_date, sday from transactions where deleted = 0"
                  " and datetime <= ? and type = {} and syear = {} and {}",
                  kind::kRepeatSeed, kind::kExpense, accountQuerySQL(book)),
      {calendar.dateEnd(to), book.pk});
  double sum = 0;
  while (run.next()) {
    const SeriesDays days(calendar.days(), run.text(1), calendar.dayNumber(run.date(2)),
                          static_cast<int>(run.integer(4)));
    // An open end is kept as nothing or as an empty text.
    const Date end = run.real(3) > 0 && run.date(3) < to ? run.date(3) : to;
    sum += run.real(0) * static_cast<double>(days.between(calendar.dayNumber(from), calendar.dayNumber(end)));
  }
  if (!run.ok()) return tl::make_unexpected(db->refusal());
  return sum;
}

}  // namespace

Result<double> sumBetween(const MonivaAccount& book, std::string_view sum, std::string_view rows, Date from,
                          Date toDate) {
  MVAppRoot& root = book.root();
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  Run run = db->query(
      fmt::format(
          "select {} from transactions where ? <= datetime and datetime <= ? and {} and deleted = 0 and {}",
          sum, accountQuerySQL(book), rows),
      {root.calendar().dateBegin(from), root.calendar().dateEnd(toDate), book.pk});
  if (!run.next()) return tl::make_unexpected(db->refusal());
  return run.real(0);
}

Result<double> transactionSumFrom(const MonivaAccount& book, Date from, Date toDate, int type) {
  return sumBetween(book, "sum(amount) as amount", fmt::format("paid = 1 and type = {}", type), from, toDate);
}

Result<double> installmentSumFrom(const MonivaAccount& book, Date from, Date toDate) {
  return sumBetween(book, "sum(amount) as tamount",
                    fmt::format("paid = 0 and type = 12 and syear = {}", advanced::kInstallment), from,
                    toDate);
}

Result<double> repeatExpenseSumFrom(const MonivaAccount& book, Date from, Date to) {
  Connection* db = book.root().db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  const ReadTransaction snapshot(*db);
  double all = 0;
  for (const auto& part :
       {sumOfSeries(book, from, to),
        sumBetween(book, "sum(amount)", "type = 12 and syear = 1003 and paid = 0 and needReimburse = 0", from,
                   to),
        sumBetween(book, "sum(case type when 12 then amount else -amount end)",
                   "(type = 11 or type = 12) and paid = 0 and coalesce(transferEID, '') = ''", from, to)}) {
    if (!part) return part;
    all += *part;
  }
  return all;
}

Result<TransReportSummary> getReportByMonthForDebtAccountFrom(const MonivaAccount& account, Date from,
                                                              Date to) {
  MVAppRoot& root = account.root();
  const Calendar& calendar = root.calendar();
  return reportNow<TransReportSummary>(
      root, "MonivaAccount", [&](Connection& db) -> Result<TransReportSummary> {
        const ReadTransaction snapshot(db);
        const auto queries = ReportQueries::ofFixedKinds(account);
        PeriodWalk months(calendar, BookPeriods(calendar, account.periodStarts(), root.now()),
                          PeriodUnit::month, from, to);
        TransReportSummary list = months.list();
        list.transactionType = 1050;
        while (const auto month = months.next()) {
          TransReportSummary found;
          found.transactionType = list.transactionType;
          found.beginDate = month->begin;
          found.endDate = month->end;
          const auto done = queries.sum(db, calendar.dateBegin(month->begin), calendar.dateEnd(month->end),
                                        Paid::yes, found);
          if (!done) return tl::make_unexpected(done.error());
          if (found.count == 0) continue;
          months.name(found);
          list.take(std::move(found));
        }
        return list;
      });
}

Result<bool> hasForeignCurrencyTransactionsFrom(const MonivaAccount& book, Date from, Date to) {
  Connection* db = book.root().db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  Run run = db->query(
      "select currency2 from transactions where currency2 != '' and currency2 not NULL and deleted = 0 and"
      " book = ? and datetime > ? and datetime < ? limit 1",
      {book.pk, from, to});
  const bool found = run.next();
  if (!run.ok()) return tl::make_unexpected(db->refusal());
  return found;
}

Result<double> getInitialToDisplay(const MonivaAccount& account, Date date) {
  return balanceBefore(account, account.root().calendar().dateBegin(date));
}

}  // namespace moniva
