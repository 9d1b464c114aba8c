#include <boost/json.hpp>

#include "calendar/date_texts.h"
#include "model/transaction_type.h"
#include "reports/book_sums.h"
#include "reports/transaction_report.h"
#include "ui/cli/command_error.h"
#include "ui/cli/commands/report_commands.h"
#include "ui/cli/entry_options.h"
#include "ui/cli/rates.h"
#include "ui/cli/records.h"
#include "ui/cli/text_width.h"
#include "ui/cli/transaction_rows.h"

namespace moniva {
namespace {

/// "Income 12.00 · Expense 40.00 · Left -28.00", of an account with its balances.
std::string sumsText(Session& session, const TransReportSummary& day, const MonivaAccount& of) {
  const bool isAccount = of.isAccount();
  const auto amount = [&](double value) { return session.amounts().format(value, of.currency); };
  std::string text;
  const auto add = [&](const std::string& part) { text += (text.empty() ? "" : " · ") + part; };
  if (countsIn(day)) {
    add(isAccount ? session.text("In {}", amount(moneyIn(day)))
                  : session.text("Income {}", amount(moneyIn(day))));
  }
  if (countsOut(day)) {
    add(isAccount ? session.text("Out {}", amount(moneyOut(day)))
                  : session.text("Expense {}", amount(moneyOut(day))));
  }
  if (countsIn(day) && countsOut(day)) add(session.text("Left {}", amount(moneyIn(day) - moneyOut(day))));
  return text;
}

void printExpected(Session& session, const HolderOptions& holder, const std::string& typedPeriod) {
  const MonivaAccount of = holder.chosen(session);
  const auto period =
      typedPeriod.empty() ? usualPeriod(session, of, PeriodUnit::day) : periodTyped(session, of, typedPeriod);
  const double spent = done(transactionSumFrom(of, period.first, period.last, kind::kExpense));
  const double instalments = done(installmentSumFrom(of, period.first, period.last));
  const double expected = done(repeatExpenseSumFrom(of, period.first, period.last));
  if (session.options().json) {
    return session.printJson(
        boost::json::object{{"beginDate", isoDate(session, session.calendar().dateBegin(period.first))},
                            {"endDate", isoDate(session, session.calendar().dateEnd(period.last))},
                            {"transactionSum", spent},
                            {"installmentSum", instalments},
                            {"repeatExpenseSum", expected}});
  }
  Table table({{.title = ""}, {.title = "", .align = Align::right}});
  const auto add = [&](const std::string& what, double value) {
    table.addRow({what, Cell(session.amounts().format(value, of.currency), expenseInk(session))});
  };
  add(session.text("Spent"), spent);
  add(session.text("Instalments to be paid"), instalments);
  add(session.text("Expected in all"), expected);
  session.out() << session.style().bold(printable(of.title)) << "  "
                << session.style().dim(periodText(session, period)) << "\n\n"
                << table.render(session.style(), session.width());
}

}  // namespace

std::string noteOn(Session& session, const MonivaAccount& of, const ParsedPeriod& period) {
  if (of.isAccount()) {
    const double before = done(getInitialToDisplay(of, period.first));
    const double after = done(getInitialToDisplay(of, session.calendar().getNextDay(period.last)));
    return session.text("Balance {} before, {} at the end", session.amounts().format(before, of.currency),
                        session.amounts().format(after, of.currency));
  }
  const bool isForeign = done(hasForeignCurrencyTransactionsFrom(
      of, session.calendar().dateBegin(period.first), session.calendar().dateEnd(period.last)));
  return isForeign ? session.text("Some of it was in foreign money.") : "";
}

void printDay(Session& session, const TransReportSummary& day, const MonivaAccount& of,
              const std::string& what, const ReportOptions& options) {
  if (!options.csv && session.options().json) {
    auto object = jsonOfReport(session, day, options.pending);
    if (day.transactions.empty()) object["transactions"] = boost::json::array();
    return session.printJson(object);
  }
  TransactionRows rows(session, options.csv);
  for (const auto& row : day.transactions) rows.add(row);
  for (const auto& row : day.pendinglistArray) rows.add(row);
  const std::string none = session.text("'{}' has nothing on {}.", what,
                                        stringOfDateMediumStyle(session.calendar(), day.beginDate));
  if (options.csv || rows.empty()) return rows.print(none);
  session.out() << session.style().bold(fmt::format("{} · {}", printable(what), day.title)) << '\n'
                << sumsText(session, day, of) << '\n';
  const std::string note = noteOn(session, of, {day.beginDate, day.endDate});
  if (!note.empty()) session.out() << session.style().dim(note) << '\n';
  if (options.pending) {
    session.out() << session.style().dim(
                         session.text("Pending: in {}, out {}",
                                      session.amounts().format(day.incomePendingAmount, of.currency),
                                      session.amounts().format(day.expensePendingAmount, of.currency)))
                  << '\n';
  }
  session.out() << '\n';
  rows.print(none);
}

void reportOfAccountsIn(Session& session, const ReportOptions& options, const ParsedPeriod& period) {
  if (!options.of.book.empty() || !options.of.account.empty() || !options.category.empty() ||
      !options.vendor.empty() || !options.currency.empty() || !options.compare.empty() ||
      options.type != "all" || options.pending || options.empty) {
    throw notUnderstood("--accounts-in counts all that was settled that day; it goes with no other choice");
  }
  if (options.period.empty() || !session.calendar().isSameDay(period.first, period.last)) {
    throw notUnderstood("--accounts-in is for one day; name it");
  }
  const std::string code = currencyCodeTyped(session, options.accountsIn);
  auto summary = done(TransactionReport::getSummaryForCurrency(session.root(), code, period.first));
  summary.transactions =
      done(TransactionReport::getTransactionListForCurrency(session.root(), code, period.first));
  MonivaAccount all(session.root());
  all.aKind = kBookKind;
  all.currency = code;
  printDay(session, summary, all, session.text("All accounts in {}", code), options);
}

void addExpectedReport(CommandLine& line, CLI::App& reports) {
  CLI::App* command = line.add(reports, "expected");
  auto period = std::make_shared<std::string>();
  auto of = std::make_shared<HolderOptions>();
  command->add_option("PERIOD", *period,
                      "A year, a month or a day, or two of these joined by \"..\" (else this month)");
  of->addTo(*command);
  line.onRun(command, [period, of](Session& session) { printExpected(session, *of, *period); });
}

}  // namespace moniva
