#include "ui/cli/commands/report_commands.h"

#include <algorithm>
#include <boost/json.hpp>
#include <charconv>

#include "calendar/date_texts.h"
#include "calendar/parse_date.h"
#include "model/account_dates.h"
#include "model/transaction_type.h"
#include "reports/transaction_report.h"
#include "ui/cli/bars.h"
#include "ui/cli/command_error.h"
#include "ui/cli/command_line.h"
#include "ui/cli/records.h"
#include "ui/cli/table.h"
#include "ui/cli/text_width.h"

namespace moniva {
namespace {

struct ReportOptions {
  std::string period;
  std::string book;
  std::string account;
  std::string type = "all";
  bool empty = false;
};

const std::map<std::string, int> kBookTypes = {{"all", 1112}, {"income", 11}, {"expense", 12}};

std::optional<int> number(std::string_view text) {
  int value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return value;
}

/// A period as the book counts: "2024" its year of that label, "2024-03" its month of that label; anything
/// else by the days typed.
ParsedPeriod periodTyped(Session& session, const MonivaAccount& of, const std::string& text) {
  const BookPeriods periods(session.calendar(), of.periodStarts(), session.now());
  const bool isPlain = session.calendar().days().isGregorian();
  if (isPlain && text.size() == 4) {
    if (const auto year = number(text); year && *year > 0) {
      return {periods.firstDateOfFiscalYear(*year), periods.lastDateOfFiscalYear(*year)};
    }
  }
  if (isPlain && text.size() == 7 && text[4] == '-') {
    const auto year = number(std::string_view(text).substr(0, 4));
    const auto month = number(std::string_view(text).substr(5));
    if (year && month && *month >= 1 && *month <= 12) {
      const Date first = periods.firstDateOfFiscalYear(*year, *month);
      return {first, periods.lastDateOfMonth(first)};
    }
  }
  return typed(parsePeriod(text, session.calendar(), session.now()));
}

enum class Unit { year, month, day };

/// Without a period: all there is for years, the present year for months, the present month for days.
ParsedPeriod usualPeriod(Session& session, const MonivaAccount& of, Unit unit) {
  const BookPeriods periods(session.calendar(), of.periodStarts(), session.now());
  switch (unit) {
    case Unit::year:
      return {periods.firstDateOfYear(getTheDateOfFirstTransaction(of).value_or(session.now())),
              periods.lastDateOfYear(getTheDateOfLastTransaction(of).value_or(session.now()))};
    case Unit::month:
      return {periods.firstDateOfYear(), periods.lastDateOfYear()};
    case Unit::day:
      break;
  }
  return {periods.firstDateOfMonth(), periods.lastDateOfMonth()};
}

void report(Session& session, const ReportOptions& options, Unit unit) {
  if (!options.book.empty() && !options.account.empty()) {
    throw CommandError(CommandError::kUsage, "a report is of a book or of an account, not of both");
  }
  const MonivaAccount of =
      options.account.empty() ? bookNamed(session, options.book) : accountNamed(session, options.account);
  const auto period =
      options.period.empty() ? usualPeriod(session, of, unit) : periodTyped(session, of, options.period);
  TransactionReport made(session.root());
  made.setMonivaAccount(of);
  made.setTransactionType(of.isAccount() && options.type == "all" ? 1050 : kBookTypes.at(options.type));
  made.setBeginDate(period.first);
  made.setEndDate(period.last);
  made.setIncludeEmpty(options.empty);
  const auto list = unit == Unit::year    ? made.reportByYear()
                    : unit == Unit::month ? made.reportByMonth()
                                          : made.reportByDay();
  if (session.options().json) return session.printJson(jsonOf(session, list));
  const char* const unitTitle = unit == Unit::year ? "Year" : unit == Unit::month ? "Month" : "Day";
  if (list.listArray.empty()) {
    return session.say(fmt::format("'{}' has nothing from {} to {}.", of.title,
                                   stringOfDateMediumStyle(session.calendar(), period.first),
                                   stringOfDateMediumStyle(session.calendar(), period.last)));
  }
  printPeriods(session, list, of, unitTitle);
}

}  // namespace

void printPeriods(Session& session, const TransReportSummary& list, const MonivaAccount& of,
                  std::string_view unit) {
  const bool withTransfers = of.isAccount();
  const Ink incomeInk = ink::hex(session.root().objectForKey("incomeAmountFontColor"));
  const Ink expenseInk = ink::hex(session.root().objectForKey("expenseAmountFontColor"));
  // The income of an account's whole report holds the transfers in already, its expense not those out.
  const auto in = [&](const TransReportSummary& s) { return s.incomeAmount; };
  const auto out = [&](const TransReportSummary& s) { return s.expenseAmount + s.transferoutAmount; };
  double largest = 0;
  for (const auto& period : list.listArray) largest = std::max({largest, in(period), out(period)});
  const auto amount = [&](double value) { return session.amounts().formatPlain(value, of.currency); };

  std::vector<Column> columns = {{.title = std::string(unit)},
                                 {.title = withTransfers ? "In" : "Income", .align = Align::right},
                                 {.title = withTransfers ? "Out" : "Expense", .align = Align::right},
                                 {.title = "Left", .align = Align::right}};
  // Bars take what the figures leave of the terminal.
  std::size_t used = 6;
  for (const auto& period : list.listArray) {
    used = std::max(used, displayWidth(period.title) + 2 + 3 * (displayWidth(amount(-largest)) + 2));
  }
  const std::size_t cells =
      session.width() > used + 12 ? std::min<std::size_t>((session.width() - used) / 2 - 1, 14) : 0;
  if (cells > 0)
    columns.push_back({.title = fmt::format(
                           "{} │ {}", padLeft(withTransfers ? "out" : "expense", cells > 7 ? cells - 1 : 0),
                           withTransfers ? "in" : "income")});
  Table table(columns);
  for (const auto& period : list.listArray) {
    const double left = in(period)-out(period);
    std::vector<Cell> row = {period.title, Cell(amount(in(period)), incomeInk),
                             Cell(amount(out(period)), expenseInk),
                             Cell(amount(left), left < 0 ? ink::red : ink::plain)};
    if (cells > 0) row.emplace_back(pairedBars(out(period), in(period), largest, cells), ink::dim);
    table.addRow(std::move(row));
  }
  table.addTotal(
      {fmt::format("{} {}", list.listArray.size(), list.listArray.size() == 1 ? "period" : "periods"),
       amount(in(list)), amount(out(list)), amount(in(list)-out(list))});
  session.out() << session.style().bold(fmt::format("{} · {}", of.title, list.title)) << "  "
                << session.style().dim(
                       fmt::format("{}, {} to {}", of.currency,
                                   stringOfDateMediumStyle(session.calendar(), list.beginDate),
                                   stringOfDateMediumStyle(session.calendar(), list.endDate)))
                << "\n\n"
                << table.render(session.style(), session.width());
}

void addReportCommands(CommandLine& line) {
  CLI::App* reports = line.add(line.app(), "report");
  reports->require_subcommand(1);
  for (const auto& [name, unit] :
       {std::pair{"year", Unit::year}, {"month", Unit::month}, {"day", Unit::day}}) {
    CLI::App* command = line.add(*reports, name);
    auto options = std::make_shared<ReportOptions>();
    command->add_option("PERIOD", options->period,
                        "A year 2024, a month 2024-03, a day 2024-03-05, or two of them joined by \"..\"");
    command->add_option("-b,--book", options->book, "The book (else the current one)")->type_name("NAME");
    command->add_option("-a,--account", options->account, "An account instead of a book")->type_name("NAME");
    command->add_option("--type", options->type, "What to count (else all)")
        ->type_name("KIND")
        ->check(oneOf({"all", "income", "expense"}));
    command->add_flag("--empty", options->empty, "Show periods without records too");
    line.onRun(command, [options, unit = unit](Session& session) { report(session, *options, unit); });
  }
}

}  // namespace moniva
