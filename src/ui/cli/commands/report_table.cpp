#include <algorithm>
#include <functional>

#include "calendar/date_texts.h"
#include "model/transaction_type.h"
#include "ui/cli/bars.h"
#include "ui/cli/commands/report_commands.h"
#include "ui/cli/table.h"
#include "ui/cli/text_width.h"

namespace moniva {
namespace {

/// Money in or money out, as a table shows it.
struct Side {
  std::string title;
  std::string barTitle;
  Ink ink;
  std::function<double(const TransReportSummary&)> amount;
  double TransReportSummary::*pending;
};

std::vector<Side> sidesOf(Session& session, const TransReportSummary& list, const MonivaAccount& of) {
  const bool isMoney = of.isAccount() && !list.category && !list.vendor && list.currency.empty();
  std::vector<Side> sides;
  if (countsIn(list)) {
    sides.push_back({isMoney ? session.text("In") : session.text("Income"),
                     isMoney ? session.text("in") : session.text("income"), incomeInk(session), moneyIn,
                     &TransReportSummary::incomePendingAmount});
  }
  if (countsOut(list)) {
    sides.push_back({isMoney ? session.text("Out") : session.text("Expense"),
                     isMoney ? session.text("out") : session.text("expense"), expenseInk(session), moneyOut,
                     &TransReportSummary::expensePendingAmount});
  }
  return sides;
}

std::string changeText(const Session& session, double now, double before) {
  if (now == 0 && before == 0) return {};
  const auto change = changeInPercent(now, before);
  if (!change) return session.text("new");
  return session.amounts().formatPercent(*change, true);
}

/// The table while it is made: columns and rows side by side.
class PeriodTable {
 public:
  PeriodTable(Session& session, const TransReportSummary& list, const MonivaAccount& of,
              const PeriodColumns& columns)
      : session_(session),
        list_(list),
        columns_(columns),
        currency_(list.currency.empty() ? of.currency : list.currency),
        sides_(sidesOf(session, list, of)) {}

  std::string render() {
    const std::vector<Column> heads = this->heads();
    for (std::size_t i = 0; i < list_.listArray.size(); ++i) {
      const TransReportSummary* before = columns_.before.empty() ? nullptr : &columns_.before[i];
      rows_.push_back(row(list_.listArray[i].title, list_.listArray[i], 1, before));
    }
    const auto count = static_cast<std::int64_t>(list_.listArray.size());
    rows_.push_back(row(session_.count("{} period", "{} periods", count), list_, 1, nullptr));
    if (count > 1) {
      rows_.push_back(row(session_.text("Average"), list_, static_cast<double>(count), nullptr));
    }
    return table(heads);
  }

 private:
  bool isPaired() const { return sides_.size() == 2; }
  std::string amount(double value) const { return session_.amounts().formatPlain(value, currency_); }
  double left(const TransReportSummary& summary) const { return moneyIn(summary) - moneyOut(summary); }

  std::vector<Column> heads() const {
    std::vector<Column> heads = {{.title = columns_.unit}};
    if (columns_.spans) heads.push_back({.title = session_.text("From -- to")});
    const auto add = [&](const std::string& title) {
      heads.push_back({.title = title, .align = Align::right});
    };
    for (const auto& side : sides_) {
      add(side.title);
      if (columns_.before.empty()) continue;
      add(columns_.comparison);
      add(session_.text("Change"));
    }
    if (isPaired()) add(session_.text("Left"));
    if (columns_.pending && isPaired()) add(session_.text("Pending in"));
    if (columns_.pending) add(isPaired() ? session_.text("Pending out") : session_.text("Pending"));
    return heads;
  }

  std::vector<Cell> row(const std::string& title, const TransReportSummary& summary, double parts,
                        const TransReportSummary* before) const {
    std::vector<Cell> cells = {title};
    if (columns_.spans) {
      const auto& calendar = session_.calendar();
      cells.emplace_back(&summary == &list_
                             ? ""
                             : fmt::format("{} -- {}", stringOfDateMediumStyle(calendar, summary.beginDate),
                                           stringOfDateMediumStyle(calendar, summary.endDate)),
                         ink::dim);
    }
    for (const auto& side : sides_) {
      cells.emplace_back(amount(side.amount(summary) / parts), side.ink);
      if (columns_.before.empty()) continue;
      cells.emplace_back(before == nullptr ? "" : amount(side.amount(*before)), ink::dim);
      cells.emplace_back(
          before == nullptr ? "" : changeText(session_, side.amount(summary), side.amount(*before)));
    }
    if (isPaired()) {
      const double rest = left(summary) / parts;
      cells.emplace_back(amount(rest), rest < 0 ? ink::red : ink::plain);
    }
    for (const auto& side : sides_) {
      if (columns_.pending) cells.emplace_back(amount(summary.*side.pending / parts), ink::dim);
    }
    return cells;
  }

  /// The cells that the figures leave for bars, on each side.
  std::size_t cellsForBars(const std::vector<Column>& heads) const {
    std::size_t used = 0;
    for (std::size_t column = 0; column < heads.size(); ++column) {
      std::size_t widest = displayWidth(heads[column].title);
      for (const auto& row : rows_) widest = std::max(widest, displayWidth(row[column].text));
      used += widest + 2;
    }
    constexpr std::size_t kLeast = 6;
    constexpr std::size_t kMost = 14;
    if (session_.width() < used + 1 + sides_.size() * kLeast) return 0;
    return std::min(kMost, (session_.width() - used - 1) / sides_.size());
  }

  std::string table(std::vector<Column> heads) {
    const std::size_t cells = cellsForBars(heads);
    double largest = 0;
    for (const auto& period : list_.listArray) {
      for (const auto& side : sides_) largest = std::max(largest, side.amount(period));
    }
    if (cells > 0 && isPaired()) {
      heads.push_back({.title = fmt::format("{} │ {}", padLeft(sides_[1].barTitle, cells > 7 ? cells - 1 : 0),
                                            sides_[0].barTitle)});
    } else if (cells > 0) {
      heads.push_back({.title = ""});
    }
    Table table(heads);
    for (std::size_t i = 0; i < rows_.size(); ++i) {
      if (i >= list_.listArray.size()) {
        i == list_.listArray.size() ? table.addTotal(rows_[i]) : table.addRow(rows_[i]);
        continue;
      }
      const TransReportSummary& period = list_.listArray[i];
      if (cells > 0) {
        rows_[i].emplace_back(isPaired() ? pairedBars(moneyOut(period), moneyIn(period), largest, cells)
                                         : bar(sides_[0].amount(period), largest, cells),
                              ink::dim);
      }
      table.addRow(rows_[i]);
    }
    return table.render(session_.style(), session_.width());
  }

  Session& session_;
  const TransReportSummary& list_;
  const PeriodColumns& columns_;
  std::string currency_;
  std::vector<Side> sides_;
  std::vector<std::vector<Cell>> rows_;
};

/// What is left of each period, or the one thing there is, as a line of blocks; nothing for a few periods and
/// for more than a line holds.
std::string sparklineOf(const TransReportSummary& list) {
  constexpr std::size_t kFewest = 3;
  constexpr std::size_t kMost = 40;
  if (list.listArray.size() < kFewest || list.listArray.size() > kMost) return {};
  std::vector<double> values;
  for (const auto& period : list.listArray) {
    values.push_back(!countsOut(list)  ? moneyIn(period)
                     : !countsIn(list) ? moneyOut(period)
                                       : moneyIn(period) - moneyOut(period));
  }
  return "  " + sparkline(values);
}

}  // namespace

double moneyIn(const TransReportSummary& summary) {
  // The income of a whole report holds the transfers in already, its expense not those out.
  const bool holdsTransfers = summary.transactionType == 1050 || summary.transactionType == 2312;
  return summary.incomeAmount + (holdsTransfers ? 0 : summary.transferinAmount);
}

double moneyOut(const TransReportSummary& summary) {
  return summary.expenseAmount + summary.transferoutAmount;
}

bool countsIn(const TransReportSummary& summary) {
  return summary.transactionType != kind::kExpense && summary.transactionType != kind::kTransferOut;
}

bool countsOut(const TransReportSummary& summary) {
  return summary.transactionType != kind::kIncome && summary.transactionType != kind::kTransferIn;
}

std::optional<double> changeInPercent(double now, double before) {
  if (before == 0) return now == 0 ? std::optional(0.0) : std::nullopt;
  return (now - before) / std::abs(before) * 100;
}

void printPeriods(Session& session, const TransReportSummary& list, const MonivaAccount& of,
                  const PeriodColumns& columns) {
  std::string what = printable(of.title);
  if (list.category) what += " · " + printable(list.category->cateString());
  if (list.vendor) what += " · " + printable(list.vendor->title);
  session.out() << session.style().bold(fmt::format("{} · {}", what, list.title)) << "  "
                << session.style().dim(
                       fmt::format("{}, {}{}", list.currency.empty() ? of.currency : list.currency,
                                   periodText(session, {list.beginDate, list.endDate}), sparklineOf(list)))
                << '\n';
  if (!columns.note.empty()) session.out() << session.style().dim(columns.note) << '\n';
  session.out() << '\n' << PeriodTable(session, list, of, columns).render();
}

}  // namespace moniva
