#include "reports/largest_categories.h"

#include <algorithm>
#include <unordered_map>

#include "model/transaction_type.h"
#include "storage/transaction.h"

namespace moniva {
namespace {

struct Sum {
  double amount;
  int count;
};

/// What each category comes to, by its key, in one pass over the period's rows.
Result<std::unordered_map<std::string, Sum>> sumsByCategory(Connection& db, const MonivaAccount& book,
                                                            bool isIncome, Date begin, Date end) {
  Run run = db.query(
      fmt::format("select category, sum(amount) as amount, count(eid) as eid_count from transactions where"
                  " deleted = 0 and paid = 1 and ? <= datetime and datetime <= ? and (type = ? or type = ?)"
                  " and {} group by category",
                  accountQuerySQL(book)),
      {begin, end, isIncome ? kind::kIncome : kind::kExpense,
       isIncome ? kind::kFurtherIncome : kind::kFurtherExpense, book.pk});
  std::unordered_map<std::string, Sum> sums;
  while (run.next()) sums.emplace(run.text(0), Sum{run.real(1), static_cast<int>(run.integer(2))});
  if (!run.ok()) return tl::make_unexpected(db.refusal());
  return sums;
}

}  // namespace

Result<std::vector<TransReportSummary>> largestCategories(const MonivaAccount& book, int type, Date from,
                                                          Date to) {
  using Found = Result<std::vector<TransReportSummary>>;
  MVAppRoot& root = book.root();
  const Calendar& calendar = root.calendar();
  const bool isIncome = type == kind::kIncome;
  const auto read = [&](Connection& db) -> Found {
    const ReadTransaction snapshot(db);
    const auto sums = sumsByCategory(db, book, isIncome, calendar.dateBegin(from), calendar.dateEnd(to));
    if (!sums) return tl::make_unexpected(sums.error());
    TransReportSummary labelled;
    labelled.transactionType = type;
    labelled.beginDate = from;
    labelled.endDate = to;
    labelled.takeLabels(BookPeriods(calendar, book.periodStarts(), root.now()));

    auto categories = MVCategory::rootCateForType(root, type).getAllSubcategoryList();
    if (!categories) return tl::make_unexpected(categories.error());
    std::ranges::stable_sort(*categories, {}, &MVCategory::orderString);
    std::vector<TransReportSummary> found;
    for (auto& category : *categories) {
      const auto sum = sums->find(category.pk);
      if (sum == sums->end() || sum->second.count == 0) continue;
      TransReportSummary& summary = found.emplace_back(labelled);
      summary.title = category.title;
      summary.category = std::move(category);
      summary.count = (isIncome ? summary.incomeCount : summary.expenseCount) = sum->second.count;
      (isIncome ? summary.incomeAmount : summary.expenseAmount) = sum->second.amount;
    }
    std::ranges::stable_sort(found, std::greater<>(), &TransReportSummary::amount);
    return found;
  };
  Found found = refuse("the store cannot be read: it is closed or busy with other work");
  root.db().inDatabase("largestCategories", [&](Connection& db) { found = read(db); });
  return found;
}

}  // namespace moniva
