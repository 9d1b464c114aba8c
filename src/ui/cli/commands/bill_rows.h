#pragma once

#include <boost/json/object.hpp>
#include <string>
#include <utility>
#include <vector>

#include "reports/bill_report.h"
#include "ui/cli/session.h"
#include "ui/cli/style.h"

/// What the commands on bills of credit accounts have in common.
namespace moniva {

/// The live credit account of that name. Ends the command for none, with the nearest there is, and for a book
/// or an account of another kind, with what it is.
MonivaAccount creditAccountNamed(Session& session, const std::string& name);
/// The credit accounts that are not closed, in the order of the list, each with its bills as of now. One that
/// cannot be read is left out with a word; where none can be the command ends.
std::vector<std::pair<MonivaAccount, CorrentBill>> creditAccountsNow(Session& session);

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

/// What is owed of the opening balance and of corrections, which no bill has; below zero for a debt.
double unbilledAmount(const MonivaAccount& account);
/// Whether no day is left to pay the bill on: the one before is due on the same day.
bool hasNoStretch(const BillReportSummary& bill);
/// The bill under the names of its fields, with its account; of a list with the bills.
boost::json::object jsonOf(Session& session, const MonivaAccount& account, const BillReportSummary& bill);

/// A bill that is to be paid, or all that earlier ones lack.
struct OpenBill {
  enum class Kind { closed, running, earlier };
  Kind kind = Kind::closed;
  MonivaAccount account;
  BillReportSummary bill{};  ///< none for earlier ones
  double amount = 0;         ///< to be paid now
  Date dueDate;
};
/// What is to be paid of bills of open credit accounts before that moment.
std::vector<OpenBill> billsDueBefore(Session& session, Date end);

}  // namespace moniva
