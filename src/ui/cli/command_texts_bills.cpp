#include "ui/cli/command_texts.h"

namespace moniva {

std::vector<CommandText> billTexts() {
  return {
      {"bill",
       "bills of credit accounts: what was charged, paid back, and is still to pay",
       "Without an ACCOUNT all open credit accounts are listed. Of one it shows the bill of the last closed "
       "month while something is to be paid of it, else the present month; --month names another. A bill is "
       "what was charged in the month. What is paid back from the day after one due date up to the next "
       "counts for one bill; what is paid above it counts for the next one. What is still to be paid takes "
       "late payments too: one made before the month closes pays what the bill before lacks.",
       {{"moniva bill", "what is to be paid, and when"},
        {"moniva bill Visa", "one bill, with what was paid back"},
        {"moniva bill Visa --month 2026-10 --charges", "a month with all that was charged"},
        {"moniva bill list Visa", "the bills of a year"},
        {"moniva bill day set Visa --closing 25 --due 10", "say when bills close and are due"}}},
      {"bill show",
       "show a bill of a credit account",
       "The same as moniva bill ACCOUNT, for accounts that are called like a command, too.",
       {{"moniva bill show Visa --month 2026-10", ""}}},
      {"bill list",
       "list the bills of a credit account, the latest first",
       "Months before the first one with a charge or a repayment are left out.",
       {{"moniva bill list Visa --months 24", "two years"},
        {"moniva bill list Visa --month 2025-12 --csv", "the year 2025, for a spreadsheet"}}},
      {"bill day",
       "when bills close and when they are to be paid",
       "",
       {{"moniva bill day show Visa", ""}, {"moniva bill day set Visa --closing last --due none", ""}}},
      {"bill day show", "show when bills close and are due", "", {{"moniva bill day show Visa", ""}}},
      {"bill day set",
       "set when bills close and are due",
       "Bills that close on day 25 are called after the month in which they close: that of November has what "
       "was charged from October 26 to November 25. Bills are due on the first due day after they close, in "
       "a month that is too short on its last day; without a due day 20 days after they close.",
       {{"moniva bill day set Visa --closing 25 --due 10", ""},
        {"moniva bill day set Visa --closing last --due none", "whole months, due after 20 days"}}},
      {"reminder",
       "reminders of what is to be paid",
       "Reminders come at ten o'clock five days before the day, three days before and on the day itself: of "
       "pending records and series that are to be reminded of, and of the bills of credit accounts whose "
       "reminders are on (moniva account reminders). The desktop shows them; what has come due is shown by "
       "every command that opens the store.",
       {{"moniva spend add 500 -c Rent -d 2026-12-01 --remind", "be reminded of a new record"},
        {"moniva account reminders Visa on", "of the bills of an account"},
        {"moniva reminder list", "see what is to come"}}},
      {"reminder list",
       "list the reminders that are to come",
       "",
       {{"moniva reminder list", ""}, {"moniva reminder list --all --json", "those that were shown, too"}}},
      {"reminder on",
       "switch the reminders of a pending record or a series on",
       "Of a series the next record is reminded of, each time.",
       {{"moniva reminder on 1a2b3c4d", "a record that 'moniva due' lists"}}},
      {"reminder off",
       "switch the reminders of a record or a series off",
       "",
       {{"moniva reminder off 1a2b3c4d", ""}}},
      {"reminder cancel",
       "cancel what is scheduled",
       "For a record or series it is as 'moniva reminder off', for a credit account as 'moniva account "
       "reminders NAME off': nothing is reminded of until it is switched on again. So it is for all of them "
       "with --all, which needs --yes.",
       {{"moniva reminder cancel Visa", "a credit account"}, {"moniva reminder cancel --all --yes", ""}}},
      {"reminder test",
       "show a reminder now, to see whether this machine can",
       "",
       {{"moniva reminder test", ""}}},
      {"reminder deliver",
       "show the reminders that have come due",
       "Every command that opens the store does so; this one does nothing else, and is meant for a timer, "
       "such as this line of a crontab: */15 9-20 * * * DBUS_SESSION_BUS_ADDRESS=unix:path=/run/user/$(id "
       "-u)/bus moniva reminder deliver --quiet",
       {{"moniva reminder deliver", ""},
        {"systemd-run --user --on-calendar='*:0/15' moniva reminder deliver", "every quarter of an hour"}}}};
}

}  // namespace moniva
