#include "reports/breakdown_gap.h"

#include "model/entry_checks.h"
#include "reports/breakdown.h"
#include "reports/payer_filter.h"
#include "reports/report_block.h"
#include "storage/transaction.h"

namespace moniva {
namespace {

/// Which rows of the report are in no row for want of a category or a subcategory; blank for a breakdown that
/// has none such.
std::string_view unfiledCondition(BreakdownBy by, bool isOfOne) {
  if (by == BreakdownBy::category) {
    return isOfOne ? "amount > 0 and coalesce(subcategory, '#NOMVCATEGORY') = '#NOMVCATEGORY'"
                   : "amount > 0 and (category = '' or category is NULL)";
  }
  if (by == BreakdownBy::subcategory) {
    return "(coalesce(subcategory, '#NOMVCATEGORY') = '#NOMVCATEGORY' or (subcategory = '' and"
           " coalesce(category, '') = ''))";
  }
  return "";
}

/// The rows a report counts, as it follows the columns; has slots for the bounds, the book and the type.
std::string reportedRows(const MonivaAccount& book, bool includePending) {
  return fmt::format(
      " from transactions where ? <= datetime and datetime <= ? and {} and deleted = 0 and +type = ?{}",
      accountQuerySQL(book), paidCondition(includePending));
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
    const std::string rows = reportedRows(book, includePending);
    std::vector<Value> reported = {begin, end, book.pk, type};
    if (isOfOne) reported.emplace_back(of->pk);
    {
      // Grouped as the rows lie in the index of accounts, which has all that is asked for.
      Run run = db.query(
          fmt::format(
              "select sum(amount), sum(case when amount <= 0 then amount end), sum(case when amount > 0"
              " and syear = 1002 then amount end){}{} group by account",
              rows, isOfOne ? " and category = ?" : ""),
          reported);
      while (run.next()) {
        gap.reported += run.real(0);
        if (by != BreakdownBy::subcategory) gap.refunded += run.real(1);
        if (by == BreakdownBy::account) gap.costShares += run.real(2);
      }
      if (!run.ok()) return tl::make_unexpected(db.refusal());
    }
    if (const auto unfiled = unfiledCondition(by, isOfOne); !unfiled.empty()) {
      Run run = db.query(
          fmt::format("select sum(amount){}{} and {}", rows, isOfOne ? " and category = ?" : "", unfiled),
          reported);
      if (!run.next()) return tl::make_unexpected(db.refusal());
      gap.unfiled = run.real(0);
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
