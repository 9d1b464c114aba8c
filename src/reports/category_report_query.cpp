#include "reports/category_report_query.h"

#include <array>

#include "storage/transaction.h"

namespace moniva {
namespace {

constexpr std::string_view kCategoryReportQuery = "CategoryReportQuery";

Result<TransReportSummary> allSubcategories(Connection& db, const MonivaAccount& book, int type, Date from,
                                            Date to, bool includePending) {
  const Calendar& calendar = book.root().calendar();
  const ReadTransaction snapshot(db);
  // An item that says nothing in the place of its subcategory chose none below its category.
  const auto sums = memberSums(
      db,
      fmt::format("select sum(amount) as amount, case when subcategory = '' then category else subcategory"
                  " end, count(eid) as eid_count from transactions where ? <= datetime and datetime <= ? and"
                  " {} and deleted = 0{} and (type = ? or type = ?) and subcategory != '#NOMVCATEGORY' group"
                  " by subcategory, category",
                  accountQuerySQL(book), paidCondition(includePending)),
      {calendar.dateBegin(from), calendar.dateEnd(to), book.pk, type, furtherKind(type)});
  if (!sums) return tl::make_unexpected(sums.error());
  Breakdown breakdown(db, book, type, from, to);
  RecordNames names(book.root());
  for (const MemberSum& sum : *sums) {
    if (!sum.key.empty()) breakdown.addCategory(sum, names);
  }
  for (auto& row : breakdown.rows()) row.title = row.category->cateString();
  return breakdown.take();
}

}  // namespace

void CategoryReportQuery::getReportForAllSubCategory() const {
  const auto work = [book = monivaAccount, type = transactionType, from = beginDate, to = endDate,
                     pending = includePending](Connection& db) {
    return allSubcategories(db, book, type, from, to, pending);
  };
  const auto tell = [views =
                         std::array<ViewBlock, 3>{updateCategoryReportView, updateIncomeAndOutcomeReportView,
                                                  updateExpenseTimeReportView},
                     failed = queryFailed](const Result<TransReportSummary>& list) {
    if (!list) {
      if (failed) failed(list.error());
      return;
    }
    for (const ViewBlock& view : views) {
      if (view) view(*list);
    }
  };
  reportInBackground<TransReportSummary>(monivaAccount.root(), std::string(kCategoryReportQuery), work, tell);
}

Result<TransReportSummary> CategoryReportQuery::reportForAllSubCategory() const {
  return reportNow<TransReportSummary>(monivaAccount.root(), kCategoryReportQuery, [&](Connection& db) {
    return allSubcategories(db, monivaAccount, transactionType, beginDate, endDate, includePending);
  });
}

}  // namespace moniva
