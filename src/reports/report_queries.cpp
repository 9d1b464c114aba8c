#include "reports/report_queries.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "model/transaction_type.h"

namespace moniva {
namespace {

constexpr std::string_view kSum = "sum(amount) as amount, count(eid) as eid_count";

std::string ofType(int type) {
  return fmt::format("type = {}", type);
}

}  // namespace

ReportFigure ReportFigure::income(std::string rows) {
  using Summary = TransReportSummary;
  return {std::move(rows), &Summary::incomeCount, &Summary::incomeAmount, &Summary::incomePendingCount,
          &Summary::incomePendingAmount};
}

ReportFigure ReportFigure::expense(std::string rows) {
  using Summary = TransReportSummary;
  return {std::move(rows), &Summary::expenseCount, &Summary::expenseAmount, &Summary::expensePendingCount,
          &Summary::expensePendingAmount};
}

ReportFigure ReportFigure::transferIn(std::string rows) {
  using Summary = TransReportSummary;
  return {std::move(rows), &Summary::transferinCount, &Summary::transferinAmount,
          &Summary::incomePendingCount, &Summary::incomePendingAmount};
}

ReportFigure ReportFigure::transferOut(std::string rows) {
  using Summary = TransReportSummary;
  return {std::move(rows), &Summary::transferoutCount, &Summary::transferoutAmount,
          &Summary::expensePendingCount, &Summary::expensePendingAmount};
}

ReportQueries::ReportQueries(std::string_view holder, std::string key, std::vector<ReportFigure> figures,
                             std::optional<std::string> categoryKey)
    : holder_(holder),
      key_(std::move(key)),
      categoryKey_(std::move(categoryKey)),
      figures_(std::move(figures)) {
  for (const auto& figure : figures_) {
    settled_.push_back(
        {composed(kSum, Paid::yes, figure.rows), composed("datetime, amount", Paid::yes, figure.rows)});
    pending_.push_back(
        {composed(kSum, Paid::no, figure.rows), composed("datetime, amount", Paid::no, figure.rows)});
  }
}

ReportQueries ReportQueries::ofFixedKinds(const MonivaAccount& book) {
  std::vector<ReportFigure> figures;
  for (const int type : {kind::kIncome, kind::kBorrowed, kind::kRepaidToUs}) {
    figures.push_back(ReportFigure::income(ofType(type)));
  }
  for (const int type : {kind::kExpense, kind::kLent, kind::kRepaidByUs}) {
    figures.push_back(ReportFigure::expense(ofType(type)));
  }
  figures.push_back(ReportFigure::transferIn(ofType(kind::kTransferIn)));
  figures.push_back(ReportFigure::transferOut(ofType(kind::kTransferOut)));
  return {accountQuerySQL(book), book.pk, std::move(figures)};
}

std::string ReportQueries::composed(std::string_view columns, Paid paid, std::string_view rows) const {
  return fmt::format(
      "select {} from transactions where deleted = 0 and paid = {} and ? <= datetime and datetime <= ? and {}"
      " and {}",
      columns, paid == Paid::yes ? 1 : 0, rows, holder_);
}

Run ReportQueries::run(Connection& db, const std::string& sql, Date begin, Date end) const {
  return categoryKey_ ? db.query(sql, {begin, end, *categoryKey_, key_}) : db.query(sql, {begin, end, key_});
}

Result<> ReportQueries::sum(Connection& db, Date begin, Date end, Paid paid, TransReportSummary& into) const {
  const bool settled = paid == Paid::yes;
  const auto& texts = settled ? settled_ : pending_;
  for (std::size_t i = 0; i < figures_.size(); ++i) {
    const ReportFigure& figure = figures_[i];
    if (!settled && figure.pendingCount == nullptr) continue;
    Run found = run(db, texts[i].sum, begin, end);
    if (found.next()) {
      const auto count = static_cast<int>(found.integer(1));
      into.*(settled ? figure.amount : figure.pendingAmount) += found.real(0);
      into.*(settled ? figure.count : figure.pendingCount) += count;
      if (settled) into.count += count;
    }
    // A sum that could not be read must not pass for nothing.
    if (!found.ok()) return tl::make_unexpected(db.refusal());
  }
  return {};
}

Run ReportQueries::rows(Connection& db, std::size_t figure, Date begin, Date end, Paid paid) const {
  return run(db, (paid == Paid::yes ? settled_ : pending_).at(figure).rows, begin, end);
}

Result<std::vector<ReportQueries::Record>> ReportQueries::records(Connection& db, Date begin, Date end,
                                                                  Paid paid) const {
  std::vector<std::string_view> conditions;
  for (const auto& figure : figures_) {
    if (paid == Paid::yes || figure.pendingCount != nullptr) conditions.emplace_back(figure.rows);
  }
  std::vector<Record> found;
  if (conditions.empty()) return found;
  Run rows = run(db,
                 composed("eid, syear, type, transferEID, datetime", paid,
                          fmt::format("({})", fmt::join(conditions, " or "))) +
                     " order by datetime",
                 begin, end);
  while (rows.next()) found.push_back({std::string(rows.text(0)), rows.date(4)});
  if (!rows.ok()) return tl::make_unexpected(db.refusal());
  return found;
}

}  // namespace moniva
