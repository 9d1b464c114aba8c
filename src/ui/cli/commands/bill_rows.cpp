#include "ui/cli/commands/bill_rows.h"

#include <boost/json.hpp>
#include <cstdlib>

#include "calendar/day_texts.h"
#include "model/entry_checks.h"
#include "ui/cli/command_error.h"
#include "ui/cli/commands/account_rows.h"
#include "ui/cli/records.h"
#include "ui/cli/text_width.h"

namespace moniva {
namespace {

namespace json = boost::json;

std::int64_t daysUntil(const Session& session, Date date) {
  return session.calendar().dayNumber(date) - session.calendar().dayNumber(session.now());
}

}  // namespace

MonivaAccount creditAccountNamed(Session& session, const std::string& name) {
  if (name.empty()) throw notUnderstood("the name is empty");
  const auto named = MonivaAccount::getAccountWithTitle(session.root(), name);
  if (!named || named->isDeleted != 0) {
    const auto book = MonivaAccount::getBookWithTitle(session.root(), name);
    if (book && book->isDeleted == 0) {
      throw refused("'{}' is a book; bills are of credit accounts, see: moniva bill", printable(name));
    }
  }
  auto account = accountNamed(session, name);
  if (!account.isDebtAccount()) {
    throw refused(
        "'{}' is an account of the kind {}; bills are of credit accounts, which are of the kind debt",
        printable(account.title), typeText(session, account));
  }
  return account;
}

std::vector<std::pair<MonivaAccount, CorrentBill>> creditAccountsNow(Session& session) {
  std::vector<std::pair<MonivaAccount, CorrentBill>> read;
  Result<> readAll;
  for (auto& account : done(openCreditAccounts(session.root()))) {
    auto bill = getCorrentBill(account);
    if (bill) {
      read.emplace_back(std::move(account), std::move(*bill));
      continue;
    }
    session.complain(session.text("The bills of '{}' cannot be read: {}", printable(account.title),
                                  bill.error().phrase->in(session.translate())));
    readAll = tl::make_unexpected(bill.error());
  }
  if (!readAll && read.empty()) done(std::move(readAll));
  return read;
}

bool isRunning(const Session& session, const BillReportSummary& bill) {
  return !session.calendar().isHistory(bill.endDate, session.now());
}

std::string billMonthText(const Session& session, const MonivaAccount& account, Date beginDate) {
  const Calendar& calendar = session.calendar();
  const Date month = BookPeriods(calendar, account.periodStarts(), session.now()).namesakeOfMonth(beginDate);
  const auto day = calendar.dayNumber(month);
  return DayTexts(calendar).monthAndYear(month, day, calendar.days().parts(day));
}

std::string daysLeftText(const Session& session, Date dueDate) {
  const auto days = daysUntil(session, dueDate);
  if (days == 0) return session.text("today");
  return days > 0 ? session.count("in {} day", "in {} days", days)
                  : session.count("overdue by {} day", "overdue by {} days", -days);
}

Ink daysLeftInk(const Session& session, Date dueDate) {
  const auto days = daysUntil(session, dueDate);
  return days < 0 ? ink::yellow : days == 0 ? ink::cyan : ink::plain;
}

std::string closingDayText(const Session& session, const MonivaAccount& account) {
  constexpr int kFirstThatDrifts = 29;
  const int start = std::abs(account.monthStartsOn);
  if (start == 1) return session.text("the last day of the month");
  if (start >= kFirstThatDrifts) return session.text("about day {}, after a short month another", start - 1);
  return session.text("day {}", start - 1);
}

std::string dueDayText(const Session& session, const MonivaAccount& account) {
  const int day = account.dueDay();
  return day == 0 ? session.text("the 20th day after closing") : session.text("day {}", day);
}

double unbilledAmount(const MonivaAccount& account) {
  return withoutNoise(account.beginBalance + account.adjustBalance);
}

bool hasNoStretch(const BillReportSummary& bill) {
  return bill.payoffBaginDate > bill.payoffEndDate;
}

json::object jsonOf(Session& session, const MonivaAccount& account, const BillReportSummary& bill) {
  const Calendar& calendar = session.calendar();
  json::object object{{"account", {{"pk", account.pk}, {"title", account.title}}},
                      {"currency", account.currency}};
  if (bill.count == 0) {
    object["year"] = bill.year;
    object["month"] = bill.month;
    object["beginDate"] = isoDate(session, calendar.dateBegin(bill.beginDate));
    object["endDate"] = isoDate(session, calendar.dateEnd(bill.endDate));
    object["dueDate"] = isoDate(session, calendar.dateBegin(bill.dueDate));
    const auto stretch = [&](Date date) { return hasNoStretch(bill) ? std::nullopt : std::optional(date); };
    object["payoffBaginDate"] = isoDate(session, stretch(calendar.dateBegin(bill.payoffBaginDate)));
    object["payoffEndDate"] = isoDate(session, stretch(calendar.dateEnd(bill.payoffEndDate)));
    object["bileAmount"] = bill.bileAmount;
    object["repayAmount"] = bill.repayAmount;
    object["needReayAmount"] = bill.needReayAmount;
    object["lastRepayMoreAmount"] = bill.lastRepayMoreAmount;
    object["thisRepayMoreAmount"] = bill.thisRepayMoreAmount;
    object["repayComplete"] = bill.repayComplete;
    object["openAmount"] = bill.openAmount;
    object["earlierNeedReayAmount"] = bill.earlierNeedReayAmount;
    return object;
  }
  json::array list;
  for (const auto& one : bill.listArray) list.push_back(jsonOf(session, account, one));
  object["maxBillAmount"] = bill.maxBillAmount;
  object["count"] = bill.count;
  object["listArray"] = std::move(list);
  return object;
}

std::vector<OpenBill> billsDueBefore(Session& session, Date end) {
  using Kind = OpenBill::Kind;
  std::vector<OpenBill> open;
  for (const auto& [account, now] : creditAccountsNow(session)) {
    const auto take = [&, of = &account](Kind kind, const BillReportSummary& bill, double amount, Date due) {
      if (amount > 0 && due < end) open.push_back({kind, *of, bill, amount, due});
    };
    take(Kind::earlier, {}, now.earlierNeedReayAmount, now.earlierDueDate);
    take(Kind::closed, now.lastMonth, now.lastMonthNeedReayAmount, now.lastDueDate);
    take(Kind::running, now.thisMonth, now.thisMonthNeedReayAmount, now.dueDate);
  }
  return open;
}

}  // namespace moniva
