#include "ui/cli/commands/breakdown_table.h"

#include <fmt/ranges.h>
#include <algorithm>

#include "model/transaction_type.h"
#include "ui/cli/bars.h"
#include "ui/cli/report_target.h"
#include "ui/cli/table.h"
#include "ui/cli/text_width.h"

namespace moniva {
namespace {

/// What a row comes to, on whichever side it is; currencies may have it on both.
double amountOf(const TransReportSummary& row) {
  if (row.currency.empty()) return row.incomeAmount + row.expenseAmount;
  return row.incomeAmount != 0 ? row.incomeAmount : row.expenseAmount;
}

/// The cells bars may take beside the figures.
std::size_t cellsOfBars(const Session& session, const TransReportSummary& list, std::size_t figures) {
  constexpr std::size_t kMost = 24;
  constexpr std::size_t kLeast = 6;
  std::size_t titles = 0;
  for (const auto& row : list.listArray) titles = std::max(titles, displayWidth(row.title));
  const std::size_t used = titles + figures;
  if (session.width() < used + kLeast) return 0;
  return std::min(kMost, session.width() - used);
}

}  // namespace

void joinOthers(const Session& session, TransReportSummary& list, std::int64_t limit) {
  auto& rows = list.listArray;
  if (limit <= 0 || static_cast<std::int64_t>(rows.size()) <= limit) return;
  TransReportSummary others;
  others.transactionType = list.transactionType;
  others.beginDate = list.beginDate;
  others.endDate = list.endDate;
  others.year = list.year;
  others.month = list.month;
  const auto first = rows.begin() + limit;
  others.title = session.text("others ({})", rows.end() - first);
  for (auto row = first; row != rows.end(); ++row) others.take(std::move(*row));
  others.listArray.clear();
  others.maxInSumAmount = others.maxOutSumAmount = 0;
  // Units of different currencies have no sum.
  if (!rows.front().currency.empty()) others.incomeAmount = others.expenseAmount = 0;
  rows.erase(first, rows.end());
  rows.push_back(std::move(others));
}

void printBreakdown(Session& session, const TransReportSummary& list, const BreakdownHeading& heading) {
  const bool isIncome = list.transactionType == kind::kIncome;
  const bool isInOne = !heading.currency.empty();
  const auto amount = [&](const TransReportSummary& row, double value) {
    return session.amounts().formatPlain(value, isInOne ? heading.currency : row.currency);
  };
  double largest = 0;
  std::int64_t records = 0;
  for (const auto& row : list.listArray) {
    largest = std::max(largest, amountOf(row));
    records += row.count;
  }
  const std::string count = session.text("Records");
  const std::string kind = isIncome ? session.text("Income") : session.text("Expense");
  std::vector<Column> columns = {{.title = heading.rows},
                                 {.title = count, .align = Align::right},
                                 {.title = kind, .align = Align::right}};
  std::size_t figures = displayWidth(count) + 8 + displayWidth(amount(list, -amountOf(list)));
  if (heading.withShares) {
    columns.push_back({.title = session.text("Share"), .align = Align::right});
    figures += 10;
  }
  const std::size_t cells = isInOne ? cellsOfBars(session, list, figures) : 0;
  if (cells > 0) columns.push_back({.title = ""});

  Table table(columns);
  const auto cellsOf = [&](const TransReportSummary& row, const std::string& title) {
    std::vector<Cell> line = {
        Cell(printable(title), row.unnamed ? ink::dim : ink::plain), fmt::format("{}", row.count),
        Cell(amount(row, amountOf(row)), isIncome ? incomeInk(session) : expenseInk(session))};
    if (heading.withShares)
      line.emplace_back(heading.whole > 0
                            ? session.amounts().formatPercent(100 * amountOf(row) / heading.whole, false)
                            : "");
    return line;
  };
  for (const auto& row : list.listArray) {
    auto line = cellsOf(row, row.title);
    if (cells > 0) line.emplace_back(bar(amountOf(row), largest, cells), ink::dim);
    table.addRow(std::move(line));
  }
  if (isInOne) {
    TransReportSummary total = list;
    total.unnamed = false;
    total.count = static_cast<int>(records);
    auto line = cellsOf(total, session.text("Total"));
    for (auto& cell : line) cell.ink = ink::plain;
    table.addTotal(std::move(line));
  }
  session.out() << session.style().bold(printable(heading.of)) << "  "
                << session.style().dim((isInOne ? heading.currency + ", " : std::string()) +
                                       periodText(session, {list.beginDate, list.endDate}))
                << "\n\n"
                << table.render(session.style(), session.width());
  const auto unnamed = std::ranges::count_if(list.listArray, &TransReportSummary::unnamed);
  if (unnamed > 0) {
    session.out() << session.style().dim(session.count(
                         "{} row stands under its key, which names nothing any more.",
                         "{} rows stand under their keys, which name nothing any more.", unnamed))
                  << '\n';
  }
}

void printGap(Session& session, const BreakdownGap& gap, const std::string& unfiled,
              const std::string& currency) {
  const auto money = [&](double value) { return session.amounts().format(value, currency); };
  std::vector<std::string> parts;
  if (gap.unfiled != 0) parts.push_back(fmt::format("{} {}", money(gap.unfiled), unfiled));
  if (gap.costShares != 0)
    parts.push_back(session.text("{} of costs spread over months", money(gap.costShares)));
  if (gap.otherMoments > 0) {
    parts.push_back(session.text("{} not paid yet or paid on other days", money(gap.otherMoments)));
  } else if (gap.otherMoments < 0) {
    parts.push_back(session.text("{} paid here for other days", money(gap.otherMoments)));
  }
  if (gap.refunded != 0) parts.push_back(session.text("{} refunded", money(gap.refunded)));
  if (parts.empty()) return;
  session.out() << session.style().dim(session.text("The report of the period comes to {}; it also has {}.",
                                                    money(gap.reported),
                                                    fmt::format("{}", fmt::join(parts, ", "))))
                << '\n';
}

}  // namespace moniva
