#include "reports/currency_report.h"

#include "model/transaction_type.h"

namespace moniva {
namespace {

constexpr std::string_view kCurrencyReport = "MonivaAccount(CurrencyReport)";

Result<TransReportSummary> allCurrencies(Connection& db, const MonivaAccount& book, int type, Date from,
                                         Date to, bool includePending) {
  const Calendar& calendar = book.root().calendar();
  const auto sums = memberSums(
      db,
      fmt::format("select sum(amount2) as amount, currency2, count(eid) as eid_count from transactions where"
                  " currency2 != '' and currency2 not NULL and ? <= datetime and datetime <= ? and {} and"
                  " deleted = 0 and type = ?{} group by currency2",
                  accountQuerySQL(book), paidCondition(includePending)),
      {calendar.dateBegin(from), calendar.dateEnd(to), book.pk, type});
  if (!sums) return tl::make_unexpected(sums.error());
  Breakdown breakdown(db, book, type, from, to);
  for (const MemberSum& sum : *sums) {
    TransReportSummary row = breakdown.emptyRow();
    row.currency = row.title = sum.key;
    putAmount(row, type == kind::kIncome, sum.amount, sum.count);
    row.expenseAmount = sum.amount;
    breakdown.add(std::move(row));
  }
  return breakdown.take();
}

Result<TransReportSummary> currencyPeriods(Connection& db, const MonivaAccount& book,
                                           const std::string& currency, int type, const PeriodRange& range) {
  TransReportSummary member;
  member.currency = currency;
  member.transactionType = type;
  const PeriodQuery query = {
      fmt::format("select sum(amount2) as totalAmount, count(eid) as eid_count from transactions where ? <= "
                  "datetime and datetime <= ? and type = ? and {} and deleted = 0 and currency2 = ?{}",
                  accountQuerySQL(book), paidCondition(range.includePending)),
      {type, book.pk, currency}};
  return walkPeriods(db, book, query, member, range);
}

void dispatchCurrencyPeriods(const MonivaAccount& book, const std::string& currency, int type,
                             const PeriodRange& range, WalkCompletion completion) {
  reportInBackground<TransReportSummary>(
      book.root(), std::string(kCurrencyReport),
      [book, currency, type, range](Connection& db) {
        return currencyPeriods(db, book, currency, type, range);
      },
      std::move(completion));
}

}  // namespace

Result<TransReportSummary> getReportForAllCurrency(const MonivaAccount& book, int type, Date fromDate,
                                                   Date toDate, bool includePending) {
  return reportNow<TransReportSummary>(book.root(), kCurrencyReport, [&](Connection& db) {
    return allCurrencies(db, book, type, fromDate, toDate, includePending);
  });
}

Result<std::vector<std::string>> getSpendListOfCurrency(const MonivaAccount& book,
                                                        const std::string& currency, int type, Date from,
                                                        Date toDate, const ListForm& form) {
  const Calendar& calendar = book.root().calendar();
  return reportNow<std::vector<std::string>>(book.root(), kCurrencyReport, [&](Connection& db) {
    return keysOf(
        db,
        fmt::format("select eid from transactions where type = ? and ? <= datetime and datetime <= ? and"
                    " currency2 = ? and {} and deleted = 0{} order by datetime{}",
                    accountQuerySQL(book), paidCondition(form.includePending), form.order()),
        {type, calendar.dateBegin(from), calendar.dateEnd(toDate), currency, book.pk});
  });
}

Result<TransReportSummary> reportForCurrency(const MonivaAccount& book, const std::string& currency, int type,
                                             const PeriodRange& range) {
  return reportNow<TransReportSummary>(book.root(), kCurrencyReport, [&](Connection& db) {
    return currencyPeriods(db, book, currency, type, range);
  });
}

void getReportByMonthForCurrency(const MonivaAccount& book, const std::string& currency, int type,
                                 Date fromDate, Date toDate, WalkCompletion completion) {
  dispatchCurrencyPeriods(book, currency, type, {PeriodUnit::month, fromDate, toDate}, std::move(completion));
}

void getReportByYearForCurrency(const MonivaAccount& book, const std::string& currency, int type,
                                Date fromDate, Date toDate, WalkCompletion completion) {
  dispatchCurrencyPeriods(book, currency, type, {PeriodUnit::year, fromDate, toDate}, std::move(completion));
}

}  // namespace moniva
