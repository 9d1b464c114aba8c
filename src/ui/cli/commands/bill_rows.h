#pragma once

#include <boost/json/object.hpp>
#include <string>
#include <vector>

#include "reports/bill_report.h"
#include "ui/cli/session.h"
#include "ui/cli/style.h"

/// What the commands on bills of credit accounts have in common.
namespace moniva {

/// The live credit account of that name. Ends the command for none, with the nearest there is, and for a book
/// or an account of another kind, with what it is.
MonivaAccount creditAccountNamed(Session& session, const std::string& name);
/// The credit accounts that are not closed, in the order of the list.
std::vector<MonivaAccount> openCreditAccounts(Session& session);

/// The bill before that one.
BillReportSummary billBefore(Session& session, BillReport& report, const BillReportSummary& bill);
/// Whether more may be charged to it.
bool isRunning(const Session& session, const BillReportSummary& bill);
/// "November, 2026": what the month that begins on the day is called.
std::string billMonthText(const Session& session, const MonivaAccount& account, Date beginDate);

// "day 25", "the last day of the month"; "the 20th day after closing" where no due day is set.
std::string closingDayText(const Session& session, const MonivaAccount& account);
std::string dueDayText(const Session& session, const MonivaAccount& account);

/// "in 12 days", "today", "overdue by 3 days".
std::string daysLeftText(const Session& session, Date dueDate);
Ink daysLeftInk(const Session& session, Date dueDate);

/// The bill under the names of its fields, with its account; of a list with the bills.
boost::json::object jsonOf(Session& session, const MonivaAccount& account, const BillReportSummary& bill);

/// A bill that is to be paid, and whether more may be charged to it.
struct OpenBill {
  MonivaAccount account;
  BillReportSummary bill;
  bool isRunning = false;
};
/// What is to be paid of the last closed and the present months of open credit accounts before that moment.
std::vector<OpenBill> billsDueBefore(Session& session, Date end);

}  // namespace moniva
