#include "ui/cli/commands/report_commands.h"

#include <boost/json.hpp>

#include "calendar/date_texts.h"
#include "model/transaction_type.h"
#include "reports/period_comparison.h"
#include "reports/transaction_report.h"
#include "ui/cli/categories.h"
#include "ui/cli/command_error.h"
#include "ui/cli/csv_out.h"
#include "ui/cli/records.h"
#include "ui/cli/stop_on_interrupt.h"
#include "ui/cli/transaction_rows.h"

namespace moniva {
namespace {

namespace json = boost::json;

const std::map<std::string, int> kReportTypes = {{"income", kind::kIncome},
                                                 {"expense", kind::kExpense},
                                                 {"transfers", 2333},
                                                 {"transfers-in", kind::kTransferIn},
                                                 {"transfers-out", kind::kTransferOut}};

int typeTyped(const MonivaAccount& of, const std::string& word) {
  if (word == "all") return wholeReportType(of);
  const int type = kReportTypes.at(word);
  if (of.isBook() && word.starts_with("transfers")) {
    throw refused("'{}' is a book and has no transfers; name an account with --account", of.title);
  }
  return type;
}

/// The category typed, whichever it is of: first one of what is asked for, else one of the other.
MVCategory reportCategory(Session& session, const std::string& name, const std::string& type) {
  const int first = type == "income" ? kind::kIncome : kind::kExpense;
  try {
    return categoryTyped(session, name, first);
  } catch (const CommandError&) {
    std::optional<MVCategory> other;
    try {
      other = categoryTyped(session, name, first == kind::kIncome ? kind::kExpense : kind::kIncome);
    } catch (const CommandError&) {
    }
    if (!other) throw;
    if (type == "all") return *other;
    throw type == "income" ? refused("'{}' is a category of expenses", name)
                           : refused("'{}' is a category of income", name);
  }
}

std::string unitTitle(const Session& session, PeriodUnit unit) {
  switch (unit) {
    case PeriodUnit::year:
      return session.text("Year");
    case PeriodUnit::month:
      return session.text("Month");
    case PeriodUnit::week:
      return session.text("Week");
    case PeriodUnit::day:
      break;
  }
  return session.text("Day");
}

/// Every day of a long range would fill the memory before the screen.
void requireFewDays(const Session& session, const ParsedPeriod& period) {
  constexpr std::int64_t kMost = 50'000;
  const auto days = session.calendar().dayNumber(period.last) - session.calendar().dayNumber(period.first);
  if (days > kMost) throw refused("these are {} days; choose fewer, or leave out --empty", days + 1);
}

/// What each period of the list is compared with.
std::vector<TransReportSummary> comparedWith(Session& session, TransactionReport& report, PeriodUnit unit,
                                             const TransReportSummary& list, const std::string& with) {
  const BookPeriods periods(session.calendar(), report.monivaAccount().periodStarts(), session.now());
  std::vector<PeriodWalk::Period> others;
  for (const auto& period : list.listArray) {
    others.push_back(periodComparedWith(session.calendar(), periods, unit, {period.beginDate, period.endDate},
                                        with == "year" ? ComparedWith::year : ComparedWith::previous));
  }
  auto found = done(report.summariesOf(others));
  for (auto& summary : found) {
    PeriodWalk(session.calendar(), periods, unit, summary.beginDate, summary.endDate).name(summary);
  }
  return found;
}

json::value percentOf(double now, double before) {
  const auto change = changeInPercent(now, before);
  return change ? json::value(*change) : json::value();
}

void addComparison(Session& session, json::object& object, const TransReportSummary& list,
                   const std::vector<TransReportSummary>& before, bool pending) {
  for (std::size_t i = 0; i < before.size(); ++i) {
    auto& period = object.at("listArray").as_array()[i].as_object();
    period["before"] = jsonOfReport(session, before[i], pending);
    period["incomeChange"] = percentOf(moneyIn(list.listArray[i]), moneyIn(before[i]));
    period["expenseChange"] = percentOf(moneyOut(list.listArray[i]), moneyOut(before[i]));
  }
}

void report(Session& session, const ReportOptions& options, PeriodUnit unit, bool spans) {
  const MonivaAccount of = options.of.chosen(session);
  auto period =
      options.period.empty() ? usualPeriod(session, of, unit) : periodTyped(session, of, options.period);
  if (spans) {
    const BookPeriods years(session.calendar(), of.periodStarts(), session.now());
    period = {years.firstDateOfYear(period.first), years.lastDateOfYear(period.last)};
  }
  const bool isOneDay = session.calendar().isSameDay(period.first, period.last);
  if (unit == PeriodUnit::day && isOneDay && !options.period.empty() && options.compare.empty()) {
    return reportOfDay(session, of, options, period.first);
  }
  if (!options.accountsIn.empty()) throw notUnderstood("--accounts-in is for one day; name it");
  if (unit == PeriodUnit::day && options.empty) requireFewDays(session, period);
  TransactionReport made(session.root());
  setUp(session, made, of, options);
  made.setBeginDate(period.first);
  made.setEndDate(period.last);
  made.setIncludeEmpty(options.empty || spans);
  TransReportSummary list;
  {
    const StopOnInterrupt stop;
    made.setStopFlag(&StopOnInterrupt::flag());
    list = done(made.reportBy(unit));
  }
  PeriodColumns columns{.unit = unitTitle(session, unit), .spans = spans, .pending = options.pending};
  if (!options.compare.empty()) columns.before = comparedWith(session, made, unit, list, options.compare);
  auto object = jsonOfReport(session, list, options.pending);
  if (list.listArray.empty()) object["listArray"] = json::array();
  addComparison(session, object, list, columns.before, options.pending);
  if (options.csv) {
    printCsv(session, object.at("listArray").as_array());
  } else if (session.options().json) {
    session.printJson(object);
  } else if (list.listArray.empty() && !list.isPartial) {
    session.say(session.text("'{}' has nothing from {} to {}.", of.title,
                             stringOfDateMediumStyle(session.calendar(), period.first),
                             stringOfDateMediumStyle(session.calendar(), period.last)));
  } else {
    columns.comparison = options.compare == "year" ? session.text("Year before") : session.text("Before");
    columns.note = noteOn(session, of, period);
    printPeriods(session, list, of, columns);
  }
  if (list.isPartial) {
    throw CommandError(CommandError::kInterrupted, Refusal(phrase("stopped; the report is partial")));
  }
}

struct Unit {
  const char* name;
  PeriodUnit unit;
  bool spans;
};

void addPeriodReport(CommandLine& line, CLI::App& reports, const Unit& unit) {
  CLI::App* command = line.add(reports, unit.name);
  auto options = std::make_shared<ReportOptions>();
  command->add_option(
      "PERIOD", options->period,
      "A year 2024 or a month 2024-03 as your calendar and the book count them, a Gregorian day "
      "2024-03-05, or two of these joined by \"..\"");
  options->of.addTo(*command);
  command->add_option("-c,--category", options->category, "Only this category, or a subcategory: Food/Bakery")
      ->type_name("CATEGORY")
      ->check(notEmpty());
  command->add_option("--type", options->type, "What to count (else all)")
      ->type_name("KIND")
      ->check(oneOf({"all", "income", "expense", "transfers", "transfers-in", "transfers-out"}));
  if (!unit.spans) command->add_flag("--empty", options->empty, "Show periods without records too");
  command->add_flag("--pending", options->pending, "Show what is still pending besides");
  command
      ->add_option("--compare", options->compare,
                   "Show what the period before came to, or the same one a year before")
      ->type_name("WHAT")
      ->check(oneOf({"previous", "year"}));
  if (unit.unit == PeriodUnit::day) {
    command
        ->add_option("--accounts-in", options->accountsIn, "Of one day: all accounts kept in this currency")
        ->type_name("CURRENCY")
        ->check(notEmpty());
  }
  addCsv(*command, options->csv);
  line.onRun(command,
             [options, unit](Session& session) { report(session, *options, unit.unit, unit.spans); });
}

}  // namespace

void setUp(Session& session, TransactionReport& report, const MonivaAccount& of,
           const ReportOptions& options) {
  report.setMonivaAccount(of);
  report.setTransactionType(typeTyped(of, options.type));
  report.setIncludePending(options.pending);
  if (!options.category.empty()) {
    if (options.type.starts_with("transfers")) throw notUnderstood("transfers have no category");
    report.setCategory(reportCategory(session, options.category, options.type));
  }
}

json::object jsonOfReport(Session& session, const TransReportSummary& summary, bool pending) {
  json::object object = jsonOf(session, summary);
  const auto records = [&](const std::vector<MVTransaction>& rows) {
    json::array list;
    for (const auto& row : rows) list.push_back(jsonOf(session, row));
    return list;
  };
  if (pending) {
    object["incomePendingCount"] = summary.incomePendingCount;
    object["expensePendingCount"] = summary.expensePendingCount;
    object["incomePendingAmount"] = summary.incomePendingAmount;
    object["expensePendingAmount"] = summary.expensePendingAmount;
    if (summary.listArray.empty()) object["pendinglistArray"] = records(summary.pendinglistArray);
  }
  if (!summary.transactions.empty()) object["transactions"] = records(summary.transactions);
  for (std::size_t i = 0; pending && i < summary.listArray.size(); ++i) {
    object.at("listArray").as_array()[i] = jsonOfReport(session, summary.listArray[i], pending);
  }
  return object;
}

void addReportCommands(CommandLine& line) {
  CLI::App* reports = line.add(line.app(), "report");
  reports->require_subcommand(1);
  for (const Unit& unit : {Unit{"year", PeriodUnit::year, false}, Unit{"month", PeriodUnit::month, false},
                           Unit{"week", PeriodUnit::week, false}, Unit{"day", PeriodUnit::day, false},
                           Unit{"fiscal-year", PeriodUnit::year, true}}) {
    addPeriodReport(line, *reports, unit);
  }
  addExpectedReport(line, *reports);
}

}  // namespace moniva
