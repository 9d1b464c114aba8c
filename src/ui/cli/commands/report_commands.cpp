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

/// "2024" or "2024-03" by the labels of the user's calendar and the book's own starts; nothing for texts that
/// are neither.
std::optional<ParsedPeriod> labelTyped(const Session& session, const BookPeriods& periods,
                                       std::string_view text) {
  const bool isGregorian = session.calendar().days().isGregorian();
  const auto dash = std::min(text.find('-'), text.size());
  const auto year = number(text.substr(0, dash));
  // Other calendars have years of fewer digits: 6 of an era, 41 of sixty.
  if (!year || *year < 1 || dash > 4 || (isGregorian && dash != 4)) return std::nullopt;
  if (dash == text.size()) {
    const ParsedPeriod period{periods.firstDateOfFiscalYear(*year), periods.lastDateOfFiscalYear(*year)};
    // An era begins inside a year, sixty years end with the sixtieth: the label must lead back to itself.
    if (isGregorian || periods.getFiscalYear(period.last) == *year ||
        periods.getFiscalYear(period.first) == *year) {
      return period;
    }
    throw notUnderstood("'{}' is no period: your calendar has no year {} now", text, *year);
  }
  const auto month = number(text.substr(dash + 1));
  if (!month || text.size() - dash > 3) return std::nullopt;
  const Date first = periods.firstDateOfFiscalYear(*year, *month);
  if (periods.getFiscalMonth(first) == *month && periods.getYearForFiscalMonth(first) == *year) {
    return ParsedPeriod{first, periods.lastDateOfMonth(first)};
  }
  if (isGregorian) return std::nullopt;
  throw notUnderstood("'{}' is no period: the year {} of your calendar has no month {}", text, *year, *month);
}

/// A period as the book counts: a label of a year or month, or days as typed, or two of these joined by "..".
ParsedPeriod periodTyped(Session& session, const BookPeriods& periods, const std::string& text) {
  const auto one = [&](const std::string& part) {
    const auto label = labelTyped(session, periods, CLI::detail::trim_copy(part));
    return label ? *label : typed(parsePeriod(part, session.calendar(), session.now()));
  };
  const auto dots = text.find("..");
  const bool isRange = dots != std::string::npos && dots > 0 && dots + 2 < text.size() &&
                       text.find("..", dots + 2) == std::string::npos;
  if (!isRange) return one(text);
  const ParsedPeriod from = one(text.substr(0, dots));
  const ParsedPeriod to = one(text.substr(dots + 2));
  if (to.last < from.first) {
    throw notUnderstood("'{}' ends before it begins", text);
  }
  return {from.first, to.last};
}

enum class Unit { year, month, day };

/// Without a period: all there is for years, the present year for months, the present month for days.
ParsedPeriod usualPeriod(Session& session, const BookPeriods& periods, const MonivaAccount& of, Unit unit) {
  switch (unit) {
    case Unit::year:
      return {periods.firstDateOfYear(done(getTheDateOfFirstTransaction(of)).value_or(session.now())),
              periods.lastDateOfYear(done(getTheDateOfLastTransaction(of)).value_or(session.now()))};
    case Unit::month:
      return {periods.firstDateOfYear(), periods.lastDateOfYear()};
    case Unit::day:
      break;
  }
  return {periods.firstDateOfMonth(), periods.lastDateOfMonth()};
}

/// What an account's report counts: what the account tracks.
int trackedBy(const MonivaAccount& account) {
  for (const int tracked : {2312, kind::kExpense}) {
    if (account.trackingType == tracked) return tracked;
  }
  return 1050;
}

void report(Session& session, const ReportOptions& options, Unit unit) {
  if (!options.book.empty() && !options.account.empty()) {
    throw notUnderstood("a report is of a book or of an account, not of both");
  }
  const MonivaAccount of = options.account.empty() ? bookNamed(session, options.book, Meant::groupsToo)
                                                   : accountNamed(session, options.account, Meant::groupsToo);
  const BookPeriods periods(session.calendar(), of.periodStarts(), session.now());
  const auto period = options.period.empty() ? usualPeriod(session, periods, of, unit)
                                             : periodTyped(session, periods, options.period);
  TransactionReport made(session.root());
  made.setMonivaAccount(of);
  made.setTransactionType(of.isAccount() && options.type == "all" ? trackedBy(of)
                                                                  : kBookTypes.at(options.type));
  made.setBeginDate(period.first);
  made.setEndDate(period.last);
  made.setIncludeEmpty(options.empty);
  const auto list = done(unit == Unit::year    ? made.reportByYear()
                         : unit == Unit::month ? made.reportByMonth()
                                               : made.reportByDay());
  if (session.options().json) return session.printJson(jsonOf(session, list));
  const std::string unitTitle = unit == Unit::year    ? session.text("Year")
                                : unit == Unit::month ? session.text("Month")
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
  const Ink incomeInk = ink::hex(session.root().objectForKey("incomeAmountFontColor"));
  const Ink expenseInk = ink::hex(session.root().objectForKey("expenseAmountFontColor"));
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
    std::vector<Cell> row = {period.title, Cell(amount(in(period)), incomeInk),
                             Cell(amount(out(period)), expenseInk),
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
       {std::pair{"year", Unit::year}, {"month", Unit::month}, {"day", Unit::day}}) {
    CLI::App* command = line.add(*reports, name);
    auto options = std::make_shared<ReportOptions>();
    command->add_option(
        "PERIOD", options->period,
        "A year 2024 or a month 2024-03 as your calendar and the book count them, a Gregorian day "
        "2024-03-05, or two of these joined by \"..\"");
    command->add_option("-b,--book", options->book, "The book, or a group of books (else the current book)")
        ->type_name("NAME");
    command->add_option("-a,--account", options->account, "An account, or a group of them, instead of a book")
        ->type_name("NAME");
    command->add_option("--type", options->type, "What to count (else all)")
        ->type_name("KIND")
        ->check(oneOf({"all", "income", "expense"}));
    command->add_flag("--empty", options->empty, "Show periods without records too");
    line.onRun(command, [options, unit = unit](Session& session) { report(session, *options, unit); });
  }
}

}  // namespace moniva
