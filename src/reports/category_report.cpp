#include "reports/category_report.h"

#include "model/transaction_type.h"
#include "storage/transaction.h"

namespace moniva {
namespace {

constexpr std::string_view kCategoryReport = "MonivaAccount(CategoryReport)";

Result<TransReportSummary> categories(Connection& db, const MVCategory& above, const MonivaAccount& book,
                                      Date from, Date to, bool includePending) {
  const Calendar& calendar = book.root().calendar();
  const ReadTransaction snapshot(db);
  const Date begin = calendar.dateBegin(from);
  const Date end = calendar.dateEnd(to);
  const auto sums =
      above.isRoot()
          ? memberSums(db,
                       fmt::format("select sum(amount) as amount, category as cate, count(eid) as eid_count"
                                   " from transactions where amount > 0 and ? <= datetime and datetime <= ?"
                                   " and {} and deleted = 0 and (type = ? or type = ?) and category != '' and"
                                   " category not NULL{} group by category",
                                   accountQuerySQL(book), paidCondition(includePending)),
                       {begin, end, book.pk, above.type, furtherKind(above.type)})
          : memberSums(db,
                       fmt::format("select sum(amount) as amount, case when subcategory = '' then category"
                                   " else subcategory end as cate, count(eid) as eid_count from transactions "
                                   "where amount > 0 and ? <= datetime and"
                                   " datetime <= ? and category = ? and {} and deleted = 0{} and (type = ? or"
                                   " type = ?) group by cate",
                                   accountQuerySQL(book), paidCondition(includePending)),
                       {begin, end, above.pk, book.pk, above.type, furtherKind(above.type)});
  if (!sums) return tl::make_unexpected(sums.error());
  Breakdown breakdown(db, book, above.type, from, to);
  RecordNames names(book.root());
  for (MemberSum sum : *sums) {
    if (!above.isRoot()) sum.above = above.pk;
    if (!sum.key.empty() && sum.key != kNoCategory) breakdown.addCategory(sum, names);
  }
  auto list = breakdown.take();
  if (list && !above.isRoot()) list->category = above;
  return list;
}

/// The rows of one category, where a blank subcategory is none below it; takes the keys `keysOfCate` gives.
std::string_view cateCondition(const MVCategory& category) {
  return category.isSubCate()
             ? "case when subcategory = '' then category else subcategory end = ? and category = ?"
             : "category = ?";
}

std::vector<Value> slotsOfCate(const MonivaAccount& book, const MVCategory& category) {
  std::vector<Value> slots = {category.type, furtherKind(category.type), category.pk};
  if (category.isSubCate()) slots.emplace_back(category.parent);
  slots.emplace_back(book.pk);
  return slots;
}

std::string cateQuery(std::string_view columns, const MonivaAccount& book, const MVCategory& category,
                      bool includePending) {
  return fmt::format(
      "select {} from transactions where ? <= datetime and datetime <= ? and (type = ? or type = ?) and {}"
      " and {} and deleted = 0{}",
      columns, cateCondition(category), accountQuerySQL(book), paidCondition(includePending));
}

std::vector<Value> slotsOfCate(const MonivaAccount& book, const MVCategory& category, Date from, Date to) {
  const Calendar& calendar = book.root().calendar();
  std::vector<Value> slots = slotsOfCate(book, category);
  slots.insert(slots.begin(), {calendar.dateBegin(from), calendar.dateEnd(to)});
  return slots;
}

}  // namespace

Result<TransReportSummary> getSubCategoryReportFor(const MVCategory& category, const MonivaAccount& book,
                                                   Date from, Date toDate, bool includePending) {
  return reportNow<TransReportSummary>(book.root(), kCategoryReport, [&](Connection& db) {
    return categories(db, category, book, from, toDate, includePending);
  });
}

Result<double> transactionSumOfCate(const MonivaAccount& book, const MVCategory& category, Date from,
                                    Date toDate, bool includePending) {
  return reportNow<double>(book.root(), kCategoryReport, [&](Connection& db) -> Result<double> {
    Run run = db.query(cateQuery("sum(amount) as amountSUM", book, category, includePending),
                       slotsOfCate(book, category, from, toDate));
    if (!run.next()) return tl::make_unexpected(db.refusal());
    return run.real(0);
  });
}

Result<std::vector<std::string>> transactionListOfCate(const MonivaAccount& book, const MVCategory& category,
                                                       Date from, Date toDate, const ListForm& form) {
  return reportNow<std::vector<std::string>>(book.root(), kCategoryReport, [&](Connection& db) {
    return keysOf(db,
                  fmt::format("{} order by datetime{}", cateQuery("eid", book, category, form.includePending),
                              form.order()),
                  slotsOfCate(book, category, from, toDate));
  });
}

Result<TransReportSummary> reportForCategory(const MonivaAccount& book, const MVCategory& category,
                                             const PeriodRange& range) {
  return reportNow<TransReportSummary>(book.root(), kCategoryReport, [&](Connection& db) {
    TransReportSummary member;
    member.category = category;
    member.transactionType = category.type;
    return walkPeriods(db, book,
                       {cateQuery("sum(amount), count(eid)", book, category, range.includePending),
                        slotsOfCate(book, category)},
                       member, range);
  });
}

}  // namespace moniva
