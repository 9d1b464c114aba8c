#include "ui/cli/commands/report_commands.h"

#include <algorithm>
#include <boost/json.hpp>

#include "calendar/date_texts.h"
#include "model/transaction_type.h"
#include "reports/transaction_report.h"
#include "ui/cli/bars.h"
#include "ui/cli/command_error.h"
#include "ui/cli/records.h"
#include "ui/cli/report_target.h"
#include "ui/cli/table.h"
#include "ui/cli/text_width.h"

namespace moniva {
namespace {

struct ReportOptions {
  std::string period;
  HolderOptions of;
  std::string type = "all";
  bool empty = false;
};

const std::map<std::string, int> kTypes = {{"income", kind::kIncome}, {"expense", kind::kExpense}};

void report(Session& session, const ReportOptions& options, PeriodUnit unit) {
  const MonivaAccount of = options.of.chosen(session);
  const auto period =
      options.period.empty() ? usualPeriod(session, of, unit) : periodTyped(session, of, options.period);
  TransactionReport made(session.root());
  made.setMonivaAccount(of);
  made.setTransactionType(options.type == "all" ? wholeReportType(of) : kTypes.at(options.type));
  made.setBeginDate(period.first);
  made.setEndDate(period.last);
  made.setIncludeEmpty(options.empty);
  const auto list = done(unit == PeriodUnit::year    ? made.reportByYear()
                         : unit == PeriodUnit::month ? made.reportByMonth()
                                                     : made.reportByDay());
  if (session.options().json) return session.printJson(jsonOf(session, list));
  const std::string unitTitle = unit == PeriodUnit::year    ? session.text("Year")
                                : unit == PeriodUnit::month ? session.text("Month")
                                                            : session.text("Day");
  if (list.listArray.empty()) {
    return session.say(session.text("'{}' has nothing from {} to {}.", of.title,
                                    stringOfDateMediumStyle(session.calendar(), period.first),
                                    stringOfDateMediumStyle(session.calendar(), period.last)));
  }
  printPeriods(session, list, of, unitTitle);
}

}  // namespace

void printPeriods(Session& session, const TransReportSummary& list, const MonivaAccount& of,
                  std::string_view unit) {
  const bool withTransfers = of.isAccount();
  // The income of an account's whole report holds the transfers in already, its expense not those out.
  const auto in = [&](const TransReportSummary& s) { return s.incomeAmount; };
  const auto out = [&](const TransReportSummary& s) { return s.expenseAmount + s.transferoutAmount; };
  double largest = 0;
  for (const auto& period : list.listArray) largest = std::max({largest, in(period), out(period)});
  const auto amount = [&](double value) { return session.amounts().formatPlain(value, of.currency); };

  std::vector<Column> columns = {
      {.title = std::string(unit)},
      {.title = withTransfers ? session.text("In") : session.text("Income"), .align = Align::right},
      {.title = withTransfers ? session.text("Out") : session.text("Expense"), .align = Align::right},
      {.title = session.text("Left"), .align = Align::right}};
  // Bars take what the figures leave of the terminal.
  std::size_t used = 6;
  for (const auto& period : list.listArray) {
    used = std::max(used, displayWidth(period.title) + 2 + 3 * (displayWidth(amount(-largest)) + 2));
  }
  const std::size_t cells =
      session.width() > used + 12 ? std::min<std::size_t>((session.width() - used) / 2 - 1, 14) : 0;
  if (cells > 0)
    columns.push_back(
        {.title = fmt::format("{} │ {}",
                              padLeft(withTransfers ? session.text("out") : session.text("expense"),
                                      cells > 7 ? cells - 1 : 0),
                              withTransfers ? session.text("in") : session.text("income"))});
  Table table(columns);
  for (const auto& period : list.listArray) {
    const double left = in(period)-out(period);
    std::vector<Cell> row = {period.title, Cell(amount(in(period)), incomeInk(session)),
                             Cell(amount(out(period)), expenseInk(session)),
                             Cell(amount(left), left < 0 ? ink::red : ink::plain)};
    if (cells > 0) row.emplace_back(pairedBars(out(period), in(period), largest, cells), ink::dim);
    table.addRow(std::move(row));
  }
  table.addTotal({session.count("{} period", "{} periods", static_cast<std::int64_t>(list.listArray.size())),
                  amount(in(list)), amount(out(list)), amount(in(list)-out(list))});
  session.out() << session.style().bold(fmt::format("{} · {}", printable(of.title), list.title)) << "  "
                << session.style().dim(
                       session.text("{}, {} to {}", of.currency,
                                    stringOfDateMediumStyle(session.calendar(), list.beginDate),
                                    stringOfDateMediumStyle(session.calendar(), list.endDate)))
                << "\n\n"
                << table.render(session.style(), session.width());
}

void addReportCommands(CommandLine& line) {
  CLI::App* reports = line.add(line.app(), "report");
  reports->require_subcommand(1);
  for (const auto& [name, unit] :
       {std::pair{"year", PeriodUnit::year}, {"month", PeriodUnit::month}, {"day", PeriodUnit::day}}) {
    CLI::App* command = line.add(*reports, name);
    auto options = std::make_shared<ReportOptions>();
    command->add_option(
        "PERIOD", options->period,
        "A year 2024 or a month 2024-03 as your calendar and the book count them, a Gregorian day "
        "2024-03-05, or two of these joined by \"..\"");
    options->of.addTo(*command);
    command->add_option("--type", options->type, "What to count (else all)")
        ->type_name("KIND")
        ->check(oneOf({"all", "income", "expense"}));
    command->add_flag("--empty", options->empty, "Show periods without records too");
    line.onRun(command, [options, unit = unit](Session& session) { report(session, *options, unit); });
  }
}

}  // namespace moniva
