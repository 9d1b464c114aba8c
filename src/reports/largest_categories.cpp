#include "reports/largest_categories.h"

#include <algorithm>

#include "reports/transaction_report.h"
#include "storage/transaction.h"

namespace moniva {

std::vector<TransReportSummary> largestCategories(const MonivaAccount& book, int type, Date from, Date to) {
  MVAppRoot& root = book.root();
  std::vector<TransReportSummary> found;
  root.db().inDatabase("largestCategories", [&](Connection& connection) {
    const ReadTransaction snapshot(connection);
    for (const auto& category : MVCategory::rootCateForType(root, type).getAllSubcategoryList()) {
      TransactionReport report(root);
      report.setMonivaAccount(book);
      report.setCategory(category);
      auto summary = report.getSummaryFrom(from, to);
      if (summary.count == 0) continue;
      summary.title = category.title;
      found.push_back(std::move(summary));
    }
  });
  std::ranges::stable_sort(found, std::greater<>(), &TransReportSummary::amount);
  return found;
}

}  // namespace moniva
