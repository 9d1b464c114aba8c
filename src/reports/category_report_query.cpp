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
  std::vector<MemberSum> sums;
  {
    Run run = db.query(
        fmt::format(
            "select sum(amount) as amount, case when subcategory = '' then category else subcategory"
            " end as cate, count(eid) as eid_count, category from transactions where ? <= datetime and"
            " datetime <= ? and {} and deleted = 0{} and (type = ? or type = ?) and subcategory !="
            " '#NOMVCATEGORY' group by cate, category",
            accountQuerySQL(book), paidCondition(includePending)),
        {calendar.dateBegin(from), calendar.dateEnd(to), book.pk, type, furtherKind(type)});
    while (run.next()) {
      sums.push_back({run.real(0), std::string(run.text(1)), static_cast<int>(run.integer(2)),
                      std::string(run.text(3))});
    }
    if (!run.ok()) return tl::make_unexpected(db.refusal());
  }
  Breakdown breakdown(db, book, type, from, to);
  RecordNames names(book.root());
  for (const MemberSum& sum : sums) {
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
