#include "reports/breakdown.h"

#include <algorithm>

#include "model/transaction_type.h"

namespace moniva {

Result<std::vector<MemberSum>> memberSums(Connection& db, std::string_view sql,
                                          const std::vector<Value>& slots) {
  Run run = db.query(sql, slots);
  std::vector<MemberSum> sums;
  while (run.next()) {
    sums.push_back({run.real(0), std::string(run.text(1)), static_cast<int>(run.integer(2)), {}});
  }
  if (!run.ok()) return tl::make_unexpected(db.refusal());
  return sums;
}

Result<std::vector<std::string>> keysOf(Connection& db, std::string_view sql,
                                        const std::vector<Value>& slots) {
  Run run = db.query(sql, slots);
  std::vector<std::string> keys;
  while (run.next()) keys.emplace_back(run.text(0));
  if (!run.ok()) return tl::make_unexpected(db.refusal());
  return keys;
}

void putAmount(TransReportSummary& summary, bool isIncome, double amount, int count) {
  (isIncome ? summary.incomeAmount : summary.expenseAmount) = amount;
  (isIncome ? summary.incomeCount : summary.expenseCount) = count;
  summary.count = count;
}

Breakdown::Breakdown(Connection& db, const MonivaAccount& of, int type, Date from, Date to, std::size_t rows)
    : db_(&db), root_(&of.root()) {
  db.clearError();
  empty_.transactionType = type;
  empty_.beginDate = from;
  empty_.endDate = to;
  empty_.takeLabels(BookPeriods(of.root().calendar(), of.periodStarts(), of.root().now()));
  list_ = empty_;
  list_.listArray.reserve(rows);
}

void Breakdown::addCategory(const MemberSum& sum, RecordNames& names) {
  TransReportSummary row = empty_;
  const auto known = names.category(sum.key, row.transactionType);
  row.category = known ? *known : MVCategory(*root_);
  if (!known) {
    row.category->pk = row.category->title = sum.key;
    row.category->type = row.transactionType;
    if (!sum.above.empty() && sum.above != sum.key) row.category->parent = sum.above;
    row.unnamed = true;
  } else if (known->isSubCate()) {
    row.category->supcategory = names.category(known->parent, known->type);
  }
  row.title = row.category->title;
  putAmount(row, row.category->type == kind::kIncome, sum.amount, sum.count);
  add(std::move(row));
}

Result<TransReportSummary> Breakdown::take() {
  if (db_->lastErrorCode() != 0) return tl::make_unexpected(db_->refusal());
  const auto amount = list_.transactionType == kind::kIncome ? &TransReportSummary::incomeAmount
                                                             : &TransReportSummary::expenseAmount;
  // Rows are large: their places are sorted, and each is moved once.
  std::vector<TransReportSummary*> places;
  for (auto& row : list_.listArray) {
    list_.addUp(row);
    places.push_back(&row);
  }
  std::ranges::stable_sort(places, std::greater<>(), [&](const auto* row) { return row->*amount; });
  std::vector<TransReportSummary> sorted;
  sorted.reserve(places.size());
  for (auto* row : places) sorted.push_back(std::move(*row));
  list_.listArray = std::move(sorted);
  list_.count = static_cast<int>(list_.listArray.size());
  list_.unnamed = std::ranges::any_of(list_.listArray, &TransReportSummary::unnamed);
  return std::move(list_);
}

}  // namespace moniva
