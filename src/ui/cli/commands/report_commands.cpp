#include "ui/cli/commands/report_commands.h"

#include <boost/json.hpp>
#include <cmath>

#include "calendar/date_texts.h"
#include "ui/cli/command_error.h"
#include "ui/cli/commands/report_source.h"
#include "ui/cli/csv_out.h"
#include "ui/cli/records.h"
#include "ui/cli/transaction_rows.h"

namespace moniva {
namespace {

namespace json = boost::json;

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
void requireFewDays(const Session& session, const ParsedPeriod& period, std::int64_t inOne) {
  constexpr std::int64_t kMost = 50'000;
  const auto days = session.calendar().dayNumber(period.last) - session.calendar().dayNumber(period.first);
  if (days / inOne > kMost) throw refused("these are {} days; choose fewer, or leave out --empty", days + 1);
}

json::value percentOf(double now, double before) {
  const auto change = changeInPercent(now, before);
  return change ? json::value(std::round(*change * 100) / 100) : json::value();
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
  if (!options.accountsIn.empty()) return reportOfAccountsIn(session, options, period);
  if (options.empty && (unit == PeriodUnit::day || unit == PeriodUnit::week)) {
    requireFewDays(session, period, unit == PeriodUnit::week ? 7 : 1);
  }
  std::string what = of.title;
  for (const auto& part : {options.category, options.vendor, options.currency}) {
    if (!part.empty()) what += " · " + part;
  }
  if (options.type != "all") {
    what += " · " + (options.type == "income"    ? session.text("income")
                     : options.type == "expense" ? session.text("expense")
                                                 : options.type);
  }
  ReportSource source(session, of, options);
  const bool isOneDay = session.calendar().isSameDay(period.first, period.last);
  if (unit == PeriodUnit::day && isOneDay && !options.period.empty() && options.compare.empty() &&
      !source.isOfMember()) {
    return printDay(session, source.day(period.first), of, what, options);
  }
  const auto list = source.list(unit, period, options.empty || spans);
  PeriodColumns columns{.unit = unitTitle(session, unit), .spans = spans, .pending = options.pending};
  if (!options.compare.empty()) {
    columns.before = source.comparedWith(
        unit, list, options.compare == "year" ? ComparedWith::year : ComparedWith::previous);
  }
  if (options.csv || session.options().json) {
    auto object = jsonOfReport(session, list, options.pending);
    if (list.listArray.empty()) object["listArray"] = json::array();
    addComparison(session, object, list, columns.before, options.pending);
    options.csv ? printCsv(session, object.at("listArray").as_array()) : session.printJson(object);
  } else if (list.listArray.empty() && !list.isPartial) {
    session.say(session.text("'{}' has nothing from {} to {}.", what,
                             stringOfDateMediumStyle(session.calendar(), period.first),
                             stringOfDateMediumStyle(session.calendar(), period.last)));
  } else {
    columns.comparison = options.compare == "year" ? session.text("Year before") : session.text("Before");
    if (!source.isOfMember() && options.category.empty()) columns.note = noteOn(session, of, period);
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
  command->add_option("--vendor", options->vendor, "Only what was spent at this vendor, or came from it")
      ->type_name("VENDOR")
      ->check(notEmpty());
  command->add_option("--currency", options->currency, "Only what was in this foreign currency, in its units")
      ->type_name("CODE")
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

json::object jsonOfReport(Session& session, const TransReportSummary& summary, bool pending) {
  json::object object = jsonOf(session, summary);
  if (summary.isPartial) object["isPartial"] = true;
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
