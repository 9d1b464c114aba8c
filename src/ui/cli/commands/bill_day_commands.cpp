#include <boost/json.hpp>
#include <charconv>

#include "reports/bill_months.h"
#include "ui/cli/command_error.h"
#include "ui/cli/commands/account_rows.h"
#include "ui/cli/commands/bill_commands.h"
#include "ui/cli/commands/bill_rows.h"
#include "ui/cli/record_texts.h"
#include "ui/cli/report_target.h"
#include "ui/cli/text_width.h"

namespace moniva {
namespace {

struct BillDayOptions {
  std::string account;
  std::string closing;
  std::string due;
};

/// A day of the month as a number; nothing for what is none.
std::optional<int> dayOfMonthTyped(const std::string& text) {
  constexpr int kLastDay = 31;
  int day = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), day);
  const bool isDay = error == std::errc() && end == text.data() + text.size() && day >= 1 && day <= kLastDay;
  return isDay ? std::optional(day) : std::nullopt;
}

/// The day that months begin on when bills close on the day typed.
int monthStartTyped(const std::string& closing) {
  constexpr int kLastDayOfAllMonths = 27;
  if (closing == "last") return 1;
  const auto day = dayOfMonthTyped(closing);
  if (!day) {
    throw notUnderstood("bills close on day 1 to 27, or on the last day of the month (last), not '{}'",
                        printable(closing));
  }
  if (*day > kLastDayOfAllMonths) {
    throw refused(
        "after a short month bills that close on day {} would close on an earlier day; say --closing last "
        "for the last day of each month, or 27 at most",
        *day);
  }
  return -(*day + 1);
}

int dueDayTyped(const std::string& due) {
  if (due == "none") return 0;
  const auto day = dayOfMonthTyped(due);
  if (!day) {
    throw notUnderstood("bills are due on day 1 to 31, or 20 days after they close (none), not '{}'",
                        printable(due));
  }
  return *day;
}

void showBillDays(Session& session, const BillDayOptions& options) {
  auto account = creditAccountNamed(session, options.account);
  if (session.options().json) return session.printJson(jsonNow(session, account));
  const BillMonths months(account);
  const auto present = months.holding(session.now());
  Facts facts(session);
  facts.add(session.text("Account"), account.title);
  facts.add(session.text("Bills close on"), closingDayText(session, account));
  facts.add(session.text("Bills are due on"), dueDayText(session, account));
  facts.add(session.text("Present month"),
            fmt::format("{}, {}", billMonthText(session, account, present.begin),
                        periodText(session, {present.begin, present.end})));
  facts.add(session.text("Next closing"), shortDate(session, present.end));
  facts.add(session.text("Last bill is due on"), shortDate(session, months.before(present).due));
  facts.add(session.text("Present bill is due on"), shortDate(session, present.due));
  facts.print();
}

void setBillDays(Session& session, const BillDayOptions& options) {
  if (options.closing.empty() && options.due.empty()) {
    throw notUnderstood("say on which day bills close, or are due: --closing or --due");
  }
  const auto starts =
      options.closing.empty() ? std::nullopt : std::optional(monthStartTyped(options.closing));
  const auto due = options.due.empty() ? std::nullopt : std::optional(dueDayTyped(options.due));
  creditAccountNamed(session, options.account);
  changeRow(session, kAccountKind, options.account, [&](MonivaAccount& account) {
    if (starts) done(account.updateMonthStartsOn(*starts));
    if (due) done(account.updateDueDay(*due));
    const auto present = BillMonths(account).holding(session.now());
    return session.text(
        "Bills of '{}' close on {} and are due on {}. The present month, {}, closes on {}; its bill is due "
        "on {}.",
        account.title, closingDayText(session, account), dueDayText(session, account),
        billMonthText(session, account, present.begin), shortDate(session, present.end),
        shortDate(session, present.due));
  });
}

}  // namespace

void addBillDayCommands(CommandLine& line, CLI::App& bill, const std::function<void()>& check) {
  CLI::App* day = line.add(bill, "day");
  day->require_subcommand(1);
  const auto command = [&](const char* name, void (*action)(Session&, const BillDayOptions&)) {
    CLI::App* app = line.add(*day, name);
    auto options = std::make_shared<BillDayOptions>();
    app->add_option("ACCOUNT", options->account, "Name of the credit account")->required();
    line.onRun(app, [options, action, check](Session& session) {
      check();
      action(session, *options);
    });
    return std::pair(app, options);
  };
  command("show", showBillDays);
  const auto [set, options] = command("set", setBillDays);
  set->add_option("--closing", options->closing, "The day of the month bills close on, 1 to 27, or last")
      ->type_name("DAY")
      ->check(notEmpty());
  set->add_option(
         "--due", options->due,
         "The day of the month they are to be paid on, 1 to 31, or none for 20 days after they close")
      ->type_name("DAY")
      ->check(notEmpty());
}

}  // namespace moniva
