#pragma once

#include <boost/json/object.hpp>
#include <optional>
#include <string>
#include <vector>

#include "reports/trans_report_summary.h"
#include "ui/cli/report_target.h"

namespace moniva {

/// What a table of periods shows besides what came in and went out.
struct PeriodColumns {
  std::string unit;                             ///< title of the periods: "Month"
  bool spans = false;                           ///< first and last day of each
  bool pending = false;                         ///< what is still pending of each
  std::string comparison = {};                  ///< title of what each is compared with
  std::vector<TransReportSummary> before = {};  ///< what each is compared with, in the same order
  std::string note = {};                        ///< a line below the heading
};

/// The periods of a list as a table with bars and a total. Which of income and expense there is follows from
/// the list's report type.
void printPeriods(Session& session, const TransReportSummary& list, const MonivaAccount& of,
                  const PeriodColumns& columns);
/// By how much, in per cent, `now` is above `before`; nothing where that was nothing.
std::optional<double> changeInPercent(double now, double before);

// What a report's summary says of money that came in and that went out, transfers of accounts too.
double moneyIn(const TransReportSummary& summary);
double moneyOut(const TransReportSummary& summary);
bool countsIn(const TransReportSummary& summary);
bool countsOut(const TransReportSummary& summary);

/// What a report on the command line is asked for.
struct ReportOptions {
  std::string period;
  HolderOptions of;
  std::string category;
  std::string vendor;
  std::string currency;
  std::string type = "all";
  std::string compare;
  std::string accountsIn;
  bool empty = false;
  bool pending = false;
  bool csv = false;
};

/// What is told of the whole time besides: the balances of an account, and whether there was foreign money.
std::string noteOn(Session& session, const MonivaAccount& of, const ParsedPeriod& period);
/// The summary of one day with its records; `what` says of what.
void printDay(Session& session, const TransReportSummary& day, const MonivaAccount& of,
              const std::string& what, const ReportOptions& options);
/// The same of all accounts that are kept in a currency. Ends the command for a time that is no day.
void reportOfAccountsIn(Session& session, const ReportOptions& options, const ParsedPeriod& period);
/// A summary as JSON, with what is pending and the records it has.
boost::json::object jsonOfReport(Session& session, const TransReportSummary& summary, bool pending);
/// The report of what is to be expected.
void addExpectedReport(CommandLine& line, CLI::App& reports);

/// All accounts with their balances.
void listAccounts(Session& session);

}  // namespace moniva
