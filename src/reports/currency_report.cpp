#include "reports/currency_report.h"

namespace moniva {
namespace {

constexpr std::string_view kCurrencyReport = "MonivaAccount(CurrencyReport)";

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
