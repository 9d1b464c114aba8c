#include "reports/breakdown_gap.h"

#include "model/entry_checks.h"
#include "reports/breakdown.h"
#include "reports/payer_filter.h"
#include "reports/report_block.h"
#include "storage/transaction.h"

namespace moniva {
namespace {

/// Which rows of the report are in no row for want of a category or a subcategory.
std::string_view unfiledCondition(BreakdownBy by, bool isOfOne) {
  if (by == BreakdownBy::category)
    return isOfOne ? "amount > 0 and coalesce(subcategory, '') in ('', '#NOMVCATEGORY')"
                   : "amount > 0 and coalesce(category, '') = ''";
  if (by == BreakdownBy::subcategory) {
    return "coalesce(subcategory, '#NOMVCATEGORY') = '#NOMVCATEGORY' or (subcategory = '' and"
           " coalesce(category, '') = '')";
  }
  return "0";
}

}  // namespace

Result<BreakdownGap> gapOf(const MonivaAccount& book, BreakdownBy by, int type, Date from, Date to,
                           double total, bool includePending, const MVCategory* of) {
  const Calendar& calendar = book.root().calendar();
  const Date begin = calendar.dateBegin(from);
  const Date end = calendar.dateEnd(to);
  const bool isOfOne = of != nullptr && !of->isRoot();
  return reportNow<BreakdownGap>(book.root(), "BreakdownGap", [&](Connection& db) -> Result<BreakdownGap> {
    const ReadTransaction snapshot(db);
    BreakdownGap gap;
    {
      std::vector<Value> slots = {begin, end, book.pk, type};
      if (isOfOne) slots.emplace_back(of->pk);
      Run run = db.query(
          fmt::format("select sum(amount), sum(case when amount <= 0 then amount end), sum(case when {} then"
                      " amount end), sum(case when {} then amount end) from"
                      " transactions where ? <= datetime and datetime <= ? and {} and deleted = 0 and type ="
                      " ?{}{}",
                      unfiledCondition(by, isOfOne),
                      // What is not asked for is not read: the sums can come from an index then.
                      by == BreakdownBy::account ? "amount > 0 and syear = 1002" : "0", accountQuerySQL(book),
                      isOfOne ? " and category = ?" : "", paidCondition(includePending)),
          slots);
      if (!run.next()) return tl::make_unexpected(db.refusal());
      gap.reported = run.real(0);
      gap.refunded = by == BreakdownBy::subcategory ? 0 : run.real(1);
      gap.unfiled = run.real(2);
      gap.costShares = run.real(3);
    }
    if (by != BreakdownBy::account) return gap;
    const PayerFilter refunds = refundFilter(book);
    std::vector<Value> slots = {begin, end, type};
    slots.insert(slots.end(), refunds.slots.begin(), refunds.slots.end());
    Run run = db.query(fmt::format("select sum(amount) from transactions t where ? <= datetime and datetime"
                                   " <= ? and type = ? and deleted = 0 and {}{}",
                                   refunds.sql, paidCondition(includePending)),
                       slots);
    if (!run.next()) return tl::make_unexpected(db.refusal());
    gap.refunded += run.real(0);
    gap.otherMoments = withoutNoise(gap.reported - gap.refunded - gap.costShares - total);
    return gap;
  });
}

}  // namespace moniva
