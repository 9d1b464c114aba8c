#include "reports/payment_report.h"

#include "model/record_names.h"
#include "model/transaction_type.h"
#include "reports/payer_filter.h"
#include "storage/transaction.h"

namespace moniva {
namespace {

constexpr std::string_view kPaymentReport = "MonivaAccount(PaymentReport)";

using Payer = std::optional<MonivaAccount>;

/// The rows of one account, of none, or of all there are; for the key there is a slot.
std::string_view payerCondition(const Payer& payment) {
  if (!payment) return "account != ? and account not NULL";
  return MonivaAccount::isNoneAccount(payment->pk) ? "(account = ? or account is NULL)" : "account = ?";
}

Value payerKey(const Payer& payment) {
  return payment && !MonivaAccount::isNoneAccount(payment->pk) ? Value(payment->pk) : Value("");
}

std::vector<Value> slotsAround(std::initializer_list<Value> before, const PayerFilter& filter,
                               std::initializer_list<Value> after) {
  std::vector<Value> slots = before;
  slots.insert(slots.end(), filter.slots.begin(), filter.slots.end());
  slots.insert(slots.end(), after);
  return slots;
}

std::shared_ptr<const MonivaAccount> unnamedPayer(MVAppRoot& root, const std::string& key) {
  auto account = std::make_shared<MonivaAccount>(root);
  account->aKind = kAccountKind;
  account->pk = account->title = key;
  return account;
}

std::shared_ptr<const MonivaAccount> noPayer(MVAppRoot& root) {
  auto none = std::make_shared<MonivaAccount>(MonivaAccount::getNoneAccount(root));
  none->title = root.platform().localized("No account");
  return none;
}

Result<TransReportSummary> allPayers(Connection& db, const MonivaAccount& book, int type, Date from, Date to,
                                     bool includePending) {
  const Calendar& calendar = book.root().calendar();
  const PayerFilter filter = payerFilter(book);
  const ReadTransaction snapshot(db);
  // The plus leaves the index of types out: that of accounts has the rows in groups.
  auto sums = memberSums(
      db,
      fmt::format("select sum(amount) as amount, account, count(eid) as eid_count from"
                  " transactions t where amount > 0 and ? <= datetime and datetime <= ? and {} and deleted ="
                  " 0 and +type = ?{} and coalesce(syear, 0) != 1002 group by account",
                  filter.sql, paidCondition(includePending)),
      slotsAround({calendar.dateBegin(from), calendar.dateEnd(to)}, filter, {type}));
  if (!sums) return tl::make_unexpected(sums.error());
  Breakdown breakdown(db, book, type, from, to);
  RecordNames names(book.root());
  for (std::size_t i = 0; i < sums->size(); ++i) {
    const MemberSum& sum = (*sums)[i];
    // A missing account comes right before a blank one; both are none.
    if (sum.key.empty() && i + 1 < sums->size() && (*sums)[i + 1].key.empty()) {
      (*sums)[i + 1].amount += sum.amount;
      (*sums)[i + 1].count += sum.count;
      continue;
    }
    TransReportSummary row = breakdown.emptyRow();
    row.paymentAccount = sum.key.empty() ? noPayer(book.root()) : names.holder(sum.key);
    row.unnamed = row.paymentAccount == nullptr;
    if (row.unnamed) row.paymentAccount = unnamedPayer(book.root(), sum.key);
    row.title = row.paymentAccount->title;
    putAmount(row, type == kind::kIncome, sum.amount, sum.count);
    breakdown.add(std::move(row));
  }
  return breakdown.take();
}

Result<TransReportSummary> payerPeriods(Connection& db, const MonivaAccount& book, const Payer& payment,
                                        int type, const PeriodRange& range) {
  TransReportSummary member;
  member.transactionType = type;
  if (payment) member.paymentAccount = std::make_shared<const MonivaAccount>(*payment);
  const PayerFilter filter = payerFilter(book);
  const PeriodQuery query = {
      fmt::format("select sum(amount) as totalAmount, count(eid) as eid_count from transactions t where ? <="
                  " datetime and datetime <= ? and {} and deleted = 0 and {}{} and type = ?",
                  filter.sql, payerCondition(payment), paidCondition(range.includePending)),
      slotsAround({}, filter, {payerKey(payment), type})};
  return walkPeriods(db, book, query, member, range);
}

void dispatchPayerPeriods(const MonivaAccount& book, const Payer& payment, int type, const PeriodRange& range,
                          WalkCompletion completion) {
  reportInBackground<TransReportSummary>(
      book.root(), std::string(kPaymentReport),
      [book, payment, type, range](Connection& db) { return payerPeriods(db, book, payment, type, range); },
      std::move(completion));
}

}  // namespace

Result<TransReportSummary> getReportForPaymentAccount(const MonivaAccount& book, int type, Date fromDate,
                                                      Date toDate, bool includePending) {
  return reportNow<TransReportSummary>(book.root(), kPaymentReport, [&](Connection& db) {
    return allPayers(db, book, type, fromDate, toDate, includePending);
  });
}

Result<std::vector<std::string>> getSpendListOfPayment(const MonivaAccount& book,
                                                       const MonivaAccount& payment, int type, Date from,
                                                       Date toDate, const ListForm& form) {
  const Calendar& calendar = book.root().calendar();
  const PayerFilter filter = payerFilter(book);
  return reportNow<std::vector<std::string>>(book.root(), kPaymentReport, [&](Connection& db) {
    return keysOf(
        db,
        fmt::format("select eid from transactions t where ? <= datetime and datetime <= ? and {} and {} and"
                    " deleted = 0{} and type = ? order by datetime{}",
                    filter.sql, payerCondition(payment), paidCondition(form.includePending), form.order()),
        slotsAround({calendar.dateBegin(from), calendar.dateEnd(toDate)}, filter, {payerKey(payment), type}));
  });
}

Result<TransReportSummary> reportForPayment(const MonivaAccount& book, const Payer& payment, int type,
                                            const PeriodRange& range) {
  return reportNow<TransReportSummary>(book.root(), kPaymentReport, [&](Connection& db) {
    return payerPeriods(db, book, payment, type, range);
  });
}

void getReportByDayForPayment(const MonivaAccount& book, const Payer& payment, int type, Date fromDate,
                              Date toDate, WalkCompletion completion) {
  dispatchPayerPeriods(book, payment, type, {PeriodUnit::day, fromDate, toDate}, std::move(completion));
}

void getReportByMonthForPaymentOnBackgroundThread(const MonivaAccount& book, const Payer& payment, int type,
                                                  Date fromDate, Date toDate, WalkCompletion completion) {
  dispatchPayerPeriods(book, payment, type, {PeriodUnit::month, fromDate, toDate}, std::move(completion));
}

void getReportByYearForPayment(const MonivaAccount& book, const Payer& payment, int type, Date fromDate,
                               Date toDate, WalkCompletion completion) {
  dispatchPayerPeriods(book, payment, type, {PeriodUnit::year, fromDate, toDate}, std::move(completion));
}

}  // namespace moniva
