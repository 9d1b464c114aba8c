#include "ui/cli/commands/bill_commands.h"

#include <algorithm>
#include <boost/json.hpp>
#include <map>

#include "model/entry_checks.h"
#include "reports/bill_months.h"
#include "ui/cli/bars.h"
#include "ui/cli/command_error.h"
#include "ui/cli/commands/account_rows.h"
#include "ui/cli/commands/bill_rows.h"
#include "ui/cli/csv_out.h"
#include "ui/cli/entry_options.h"
#include "ui/cli/month_typed.h"
#include "ui/cli/record_texts.h"
#include "ui/cli/records.h"
#include "ui/cli/report_target.h"
#include "ui/cli/text_width.h"
#include "ui/cli/transaction_rows.h"

namespace moniva {
namespace {

namespace json = boost::json;

struct BillOptions {
  std::string account;
  std::string month;
  std::int64_t months = 12;
  bool charges = false;
  bool csv = false;
};

/// A month as bills are called, which has begun.
MonthTyped billMonthTyped(Session& session, const MonivaAccount& account, const std::string& text) {
  const auto typed = monthTypedOf(session, account, text);
  const Date begin = done(BillMonths(account).called(typed.year, typed.month)).begin;
  if (session.calendar().isAfterToday(begin, session.now())) {
    throw monthAhead(session, account, billMonthText(session, account, begin), begin);
  }
  return typed;
}

/// The bill of the month typed; else that of the last closed month while something is to be paid of it, else
/// the present one.
BillReportSummary billMeant(Session& session, BillReport& report, const std::string& text) {
  if (!text.empty()) {
    const auto [year, month] = billMonthTyped(session, report.monivaAccount, text);
    return done(report.getBillAsOfNow(year, month));
  }
  const auto now = done(getCorrentBill(report.monivaAccount));
  return now.lastMonth.openAmount > 0 ? now.lastMonth : now.thisMonth;
}

/// What the bill is of: "May 26, 2024 to Jun 25, 2024, EUR, the present month".
std::string billSpanText(Session& session, const MonivaAccount& account, const BillReportSummary& bill) {
  const Calendar& calendar = session.calendar();
  const auto span =
      fmt::format("{}, {}", periodText(session, {bill.beginDate, bill.endDate}), account.currency);
  if (isRunning(session, bill)) return session.text("{}, the present month", span);
  const Date present = BillMonths(account).holding(session.now()).begin;
  const bool isLast = calendar.isSameDay(calendar.getNextDay(bill.endDate), present);
  return isLast ? session.text("{}, the last closed month", span) : span;
}

std::string billStateText(Session& session, const BillReportSummary& bill) {
  const bool isPaid = bill.openAmount <= 0;
  if (isRunning(session, bill)) {
    return isPaid ? session.text("not closed yet, nothing to pay so far") : session.text("not closed yet");
  }
  if (!isPaid) return session.text("to be paid");
  return bill.repayComplete ? session.text("complete") : session.text("complete, paid late");
}

/// What is to be paid now, with what was paid for it after it was due, or here for earlier ones.
std::string billOpenText(Session& session, const MonivaAccount& account, const BillReportSummary& bill) {
  const auto amount = [&](double value) { return session.amounts().format(value, account.currency); };
  const double late = difference(bill.needReayAmount, bill.openAmount);
  if (late > 0)
    return session.text("{}; {} was paid after the due date", amount(bill.openAmount), amount(late));
  if (late == 0) return amount(bill.openAmount);
  return session.text("{}; {} of what was paid went to earlier bills", amount(bill.openAmount),
                      amount(bill.thisRepayMoreAmount - late));
}

void printBillFacts(Session& session, const MonivaAccount& account, const BillReportSummary& bill) {
  const auto amount = [&](double value) { return session.amounts().format(value, account.currency); };
  session.out() << session.style().bold(fmt::format("{} · {}", printable(account.title),
                                                    billMonthText(session, account, bill.beginDate)))
                << "  " << session.style().dim(billSpanText(session, account, bill)) << "\n\n";
  Facts facts(session);
  const bool isRefunded = bill.bileAmount < 0;
  facts.add(session.text("Billed"),
            isRefunded ? session.text("{}, more came back than was charged", amount(bill.bileAmount))
                       : amount(bill.bileAmount));
  if (bill.lastRepayMoreAmount > 0) {
    facts.add(session.text("Carried over"),
              session.text("{}, paid above the bill before", amount(bill.lastRepayMoreAmount)));
  }
  facts.add(session.text("Repaid"),
            hasNoStretch(bill)
                ? session.text("what is paid back counts for the bill before, which is due on the same day")
                : session.text("{}, from {}", amount(bill.repayAmount),
                               periodText(session, {bill.payoffBaginDate, bill.payoffEndDate})));
  facts.add(session.text("Still to pay"), billOpenText(session, account, bill));
  if (bill.thisRepayMoreAmount > 0 && bill.openAmount <= 0) {
    facts.add(isRefunded ? session.text("Left over") : session.text("Paid above"),
              session.text("{}, counted for the next bill", amount(bill.thisRepayMoreAmount)));
  }
  const auto due = shortDate(session, bill.dueDate);
  facts.add(session.text("Due"),
            bill.openAmount <= 0 ? due : fmt::format("{}, {}", due, daysLeftText(session, bill.dueDate)));
  facts.add(session.text("State"), billStateText(session, bill));
  if (bill.earlierNeedReayAmount > 0) {
    facts.add(session.text("Earlier bills"),
              session.text("{} is still to be paid of them", amount(bill.earlierNeedReayAmount)));
  }
  if (const double unbilled = unbilledAmount(account); unbilled != 0) {
    facts.add(session.text("In no bill"),
              session.text("{} of the opening balance and corrections", amount(unbilled)));
  }
  facts.print();
}

json::array repaidJson(Session& session, const std::vector<RepayLine>& lines) {
  json::array array;
  for (const auto& line : lines) {
    array.push_back({{"eid", line.eid},
                     {"type", line.type},
                     {"datetime", isoDate(session, line.datetime)},
                     {"amount", line.amount},
                     {"isCarried", line.isCarried}});
  }
  return array;
}

void printRepaid(Session& session, const MonivaAccount& account, const std::vector<RepayLine>& lines) {
  if (lines.empty()) return;
  Table table({{.title = session.text("Record"), .isWhole = true},
               {.title = session.text("Date"), .isWhole = true},
               {.title = session.text("Paid back"), .maxWidth = 60},
               {.title = session.text("Amount"), .align = Align::right}});
  RecordNames names(session.root());
  for (const auto& line : lines) {
    const auto amount = session.amounts().format(line.amount, account.currency);
    if (line.isCarried) {
      table.addRow({"", "", Cell(session.text("Payoff more last month"), ink::dim), amount});
      continue;
    }
    const auto row = MVTransaction::transactionFromEID(session.root(), line.eid, &names);
    table.addRow({Cell(shortEid(line.eid), ink::dim), shortDate(session, line.datetime),
                  row ? whatText(session, *row) : "", amount});
  }
  session.out() << '\n' << table.render(session.style(), session.width());
}

void showBill(Session& session, const BillOptions& options) {
  BillReport report(creditAccountNamed(session, options.account));
  const auto& account = report.monivaAccount;
  const auto bill = billMeant(session, report, options.month);
  const auto repaid = done(report.repaymentsOf(bill));
  std::vector<MVTransaction> charges;
  if (options.charges) charges = done(report.chargeList(bill.beginDate, bill.endDate));
  TransactionRows rows(session);
  for (const auto& charge : charges) rows.add(charge);
  if (session.options().json) {
    auto object = jsonOf(session, account, bill);
    object["unbilledAmount"] = unbilledAmount(account);
    object["repayList"] = repaidJson(session, repaid);
    if (options.charges) object["chargeList"] = rows.takeJson();
    return session.printJson(object);
  }
  printBillFacts(session, account, bill);
  printRepaid(session, account, repaid);
  if (!options.charges) return;
  session.out() << '\n' << session.style().bold(session.text("Charged")) << '\n';
  rows.print(session.text("Nothing was charged."));
}

/// Without the months before anything was charged or paid back.
void dropEmptyBeginning(BillReportSummary& list) {
  const auto isEmpty = [](const BillReportSummary& bill) {
    return bill.bileAmount == 0 && bill.repayAmount == 0 && bill.lastRepayMoreAmount == 0;
  };
  auto& bills = list.listArray;
  while (bills.size() > 1 && isEmpty(bills.back())) bills.pop_back();
  list.count = static_cast<int>(bills.size());
}

void printBillTable(Session& session, const MonivaAccount& account, const BillReportSummary& list) {
  constexpr std::size_t kCellsOfBar = 12;
  constexpr std::size_t kRoomForBars = 110;
  const bool hasBars = session.width() >= kRoomForBars;
  const auto amount = [&](double value) {
    return value == 0 ? std::string() : session.amounts().formatPlain(value, account.currency);
  };
  Table table({{.title = session.text("Month")},
               {.title = session.text("Billed"), .align = Align::right},
               {.title = hasBars ? " " : ""},
               {.title = session.text("Carried over"), .align = Align::right},
               {.title = session.text("Repaid"), .align = Align::right},
               {.title = session.text("Still to pay"), .align = Align::right},
               {.title = session.text("Paid above"), .align = Align::right},
               {.title = session.text("Due"), .isWhole = true},
               {.title = ""}});
  // The columns take each payment for the bill of its stretch; where that is not what is left, it is said.
  const auto leftText = [&](const BillReportSummary& bill) {
    const auto days = daysLeftText(session, bill.dueDate);
    return bill.openAmount == bill.needReayAmount
               ? days
               : session.text("{}, {} left", days, amount(bill.openAmount));
  };
  BillReportSummary sum;
  for (const auto& bill : list.listArray) {
    const bool isPaid = bill.openAmount <= 0;
    const auto state = !isPaid                    ? leftText(bill)
                       : !bill.repayComplete      ? session.text("paid late")
                       : isRunning(session, bill) ? session.text("so far")
                                                  : session.text("complete");
    table.addRow({billMonthText(session, account, bill.beginDate),
                  session.amounts().formatPlain(bill.bileAmount, account.currency),
                  Cell(hasBars ? bar(bill.bileAmount, list.maxBillAmount, kCellsOfBar) : "", ink::dim),
                  amount(bill.lastRepayMoreAmount), amount(bill.repayAmount), amount(bill.needReayAmount),
                  amount(bill.thisRepayMoreAmount), shortDate(session, bill.dueDate),
                  Cell(state, isPaid ? ink::dim : daysLeftInk(session, bill.dueDate))});
    sum.bileAmount = withoutNoise(sum.bileAmount + bill.bileAmount);
    sum.repayAmount = withoutNoise(sum.repayAmount + bill.repayAmount);
    sum.openAmount = withoutNoise(sum.openAmount + bill.openAmount);
  }
  if (const double earlier = list.listArray.back().earlierNeedReayAmount; earlier > 0) {
    table.addRow({session.text("Earlier bills"), "", "", "", "", amount(earlier)});
    sum.openAmount = withoutNoise(sum.openAmount + earlier);
  }
  table.addTotal({session.text("Total"), session.amounts().formatPlain(sum.bileAmount, account.currency), "",
                  "", amount(sum.repayAmount), amount(sum.openAmount), amount(list.thisRepayMoreAmount)});
  session.out() << session.style().bold(session.text("Bills of {}", printable(account.title))) << "  "
                << session.style().dim(account.currency) << "\n\n"
                << table.render(session.style(), session.width());
}

void listBills(Session& session, const BillOptions& options) {
  BillReport report(creditAccountNamed(session, options.account));
  const auto& account = report.monivaAccount;
  MonthTyped last;
  if (options.month.empty()) {
    const auto present = BillMonths(account).holding(session.now());
    last = {present.year, present.month};
  } else {
    last = billMonthTyped(session, account, options.month);
  }
  auto list = done(report.getBillsUpTo(last.year, last.month, static_cast<int>(options.months)));
  dropEmptyBeginning(list);
  const auto object = jsonOf(session, account, list);
  if (options.csv) return printCsv(session, object.at("listArray").as_array());
  if (session.options().json) return session.printJson(object);
  printBillTable(session, account, list);
}

json::object jsonOf(Session& session, const MonivaAccount& account, const CorrentBill& bill) {
  const Calendar& calendar = session.calendar();
  return {{"account", {{"pk", account.pk}, {"title", account.title}}},
          {"currency", account.currency},
          {"lastBeginDate", isoDate(session, calendar.dateBegin(bill.lastMonth.beginDate))},
          {"lastEndDate", isoDate(session, calendar.dateEnd(bill.lastMonth.endDate))},
          {"lastDueDate", isoDate(session, calendar.dateBegin(bill.lastDueDate))},
          {"dueDate", isoDate(session, calendar.dateBegin(bill.dueDate))},
          {"lastMonthBileAmount", bill.lastMonthBileAmount},
          {"lastMonthNeedReayAmount", bill.lastMonthNeedReayAmount},
          {"thisMonthBileAmount", bill.thisMonthBileAmount},
          {"thisMonthNeedReayAmount", bill.thisMonthNeedReayAmount},
          {"lastMonthLateAmount", bill.lastMonthLateAmount},
          {"earlierNeedReayAmount", bill.earlierNeedReayAmount},
          {"unbilledAmount", unbilledAmount(account)}};
}

/// What is said beside the last closed bill.
std::string lastBillText(Session& session, const MonivaAccount& account, const CorrentBill& bill) {
  const bool isLate = bill.lastMonthLateAmount > 0;
  if (bill.lastMonthNeedReayAmount <= 0) return isLate ? session.text("paid late") : session.text("complete");
  const auto days = daysLeftText(session, bill.lastDueDate);
  if (!isLate) return days;
  return session.text("{}, {} was paid after the due date", days,
                      session.amounts().format(bill.lastMonthLateAmount, account.currency));
}

/// What is to be paid of the open credit accounts in one currency.
struct BillsSum {
  double open = 0;
  double earlier = 0;
  double present = 0;
  int accounts = 0;
};

/// Where every open credit account stands.
void showBills(Session& session, bool csv) {
  const auto accounts = creditAccountsNow(session);
  if (csv || session.options().json) {
    json::array array;
    for (const auto& [account, bill] : accounts) array.push_back(jsonOf(session, account, bill));
    return csv ? printCsv(session, array) : session.printJson(array);
  }
  if (accounts.empty()) {
    return session.say(
        session.text("There is no open credit account. Add one with: moniva account add NAME --type debt"));
  }
  const bool hasEarlier =
      std::ranges::any_of(accounts, [](const auto& one) { return one.second.earlierNeedReayAmount > 0; });
  Table table({{.title = session.text("Account")},
               {.title = session.text("Last bill"), .align = Align::right},
               {.title = session.text("Due"), .isWhole = true},
               {.title = session.text("Still to pay"), .align = Align::right},
               {.title = hasEarlier ? session.text("Earlier bills") : "", .align = Align::right},
               {.title = session.text("This month so far"), .align = Align::right},
               {.title = ""}});
  std::map<std::string, BillsSum> sums;
  for (const auto& [account, bill] : accounts) {
    const auto amount = [&, of = &account](double value) {
      return session.amounts().format(value, of->currency);
    };
    const bool isPaid = bill.lastMonthNeedReayAmount <= 0;
    const Ink ink = isPaid ? ink::dim : daysLeftInk(session, bill.lastDueDate);
    const double earlier = bill.earlierNeedReayAmount;
    table.addRow({account.title, amount(bill.lastMonthBileAmount),
                  Cell(shortDate(session, bill.lastDueDate), ink), amount(bill.lastMonthNeedReayAmount),
                  Cell(earlier > 0 ? amount(earlier) : "", ink::yellow), amount(bill.thisMonthBileAmount),
                  Cell(lastBillText(session, account, bill), ink)});
    auto& sum = sums[account.currency];
    sum.open = withoutNoise(sum.open + bill.lastMonthNeedReayAmount);
    sum.earlier = withoutNoise(sum.earlier + earlier);
    sum.present = withoutNoise(sum.present + bill.thisMonthBileAmount);
    ++sum.accounts;
  }
  for (const auto& [currency, sum] : sums) {
    if (sum.accounts < 2) continue;
    table.addTotal({session.text("Total"), "", "", session.amounts().format(sum.open, currency),
                    hasEarlier ? session.amounts().format(sum.earlier, currency) : std::string(),
                    session.amounts().format(sum.present, currency)});
  }
  session.out() << table.render(session.style(), session.width());
  for (const auto& [account, bill] : accounts) {
    const double unbilled = unbilledAmount(account);
    if (unbilled == 0) continue;
    session.say(session.text("{} of the opening balance and corrections of '{}' is in no bill.",
                             session.amounts().format(unbilled, account.currency), printable(account.title)));
  }
}

constexpr const char* kCreditAccount = toTranslate("Name of the credit account");

void addBillOptions(CLI::App& command, BillOptions& options) {
  command.add_option("--month", options.month, "The month, such as 2026-10 (else what is to be paid now)")
      ->type_name("MONTH")
      ->check(notEmpty());
  command.add_flag("--charges", options.charges, "With what was charged");
}

/// What a command below does not take comes to the one above it.
void requireNothingElse(const BillOptions& above) {
  if (!above.account.empty()) throw notUnderstood("'{}' is a word too many", printable(above.account));
  if (above.charges) throw notUnderstood("--charges is for one bill: moniva bill show ACCOUNT");
  if (above.csv) throw notUnderstood("--csv is for lists: moniva bill, moniva bill list ACCOUNT");
  if (!above.month.empty()) throw notUnderstood("--month is for bills: moniva bill show ACCOUNT");
}

}  // namespace

void addBillCommands(CommandLine& line) {
  constexpr int kMostMonths = 600;
  CLI::App* bill = line.add(line.app(), "bill");
  auto direct = std::make_shared<BillOptions>();
  bill->add_option("ACCOUNT", direct->account, "Name of the credit account (else all that are open)");
  addBillOptions(*bill, *direct);
  addCsv(*bill, direct->csv);
  line.onRun(bill, [direct](Session& session) {
    if (!direct->account.empty()) {
      if (direct->csv) throw notUnderstood("--csv is for lists: moniva bill, moniva bill list ACCOUNT");
      return showBill(session, *direct);
    }
    if (!direct->month.empty() || direct->charges) {
      throw notUnderstood("say of which account: moniva bill ACCOUNT");
    }
    showBills(session, direct->csv);
  });

  const auto command = [&](const char* name, void (*action)(Session&, const BillOptions&)) {
    CLI::App* app = line.add(*bill, name);
    auto options = std::make_shared<BillOptions>();
    app->add_option("ACCOUNT", options->account, kCreditAccount)->required();
    line.onRun(app, [options, direct, action](Session& session) {
      requireNothingElse(*direct);
      action(session, *options);
    });
    return std::pair(app, options);
  };
  {
    const auto [show, options] = command("show", showBill);
    addBillOptions(*show, *options);
  }
  {
    const auto [list, options] = command("list", listBills);
    list->add_option("--months", options->months, "How many months (else 12)")
        ->type_name("COUNT")
        ->check(CLI::Range(1, kMostMonths));
    list->add_option("--month", options->month, "The last of them, such as 2026-10 (else the present one)")
        ->type_name("MONTH")
        ->check(notEmpty());
    addCsv(*list, options->csv);
  }
  addBillDayCommands(line, *bill, [direct] { requireNothingElse(*direct); });
}

}  // namespace moniva
