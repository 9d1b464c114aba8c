#include "reports/member_walk.h"

#include "model/transaction_type.h"
#include "storage/transaction.h"

namespace moniva {

Result<TransReportSummary> walkPeriods(Connection& db, const MonivaAccount& of, const PeriodQuery& query,
                                       const TransReportSummary& member, const PeriodRange& range) {
  MVAppRoot& root = of.root();
  const Calendar& calendar = root.calendar();
  PeriodWalk periods(calendar, BookPeriods(calendar, of.periodStarts(), root.now()), range.unit, range.from,
                     range.to);
  TransReportSummary list = periods.list();
  list.transactionType = member.transactionType;
  list.category = member.category;
  list.vendor = member.vendor;
  list.paymentAccount = member.paymentAccount;
  list.currency = member.currency;

  std::vector<Value> slots = {Date{}, Date{}};
  slots.insert(slots.end(), query.slots.begin(), query.slots.end());
  const ReadTransaction snapshot(db);
  while (const auto period = periods.next()) {
    list.isPartial = range.stopLoadingData != nullptr && *range.stopLoadingData;
    if (list.isPartial) break;
    slots[0] = calendar.dateBegin(period->begin);
    slots[1] = calendar.dateEnd(period->end);
    Run run = db.query(query.sql, slots);
    const bool found = run.next();
    // A sum that could not be read must not pass for nothing.
    if (!found) return tl::make_unexpected(db.refusal());
    const int count = static_cast<int>(run.integer(1));
    if (count == 0 && !range.includeEmpty) continue;
    TransReportSummary summary = member;
    summary.beginDate = period->begin;
    summary.endDate = period->end;
    putAmount(summary, member.transactionType == kind::kIncome, run.real(0), count);
    periods.name(summary);
    list.take(std::move(summary));
  }
  return list;
}

}  // namespace moniva
