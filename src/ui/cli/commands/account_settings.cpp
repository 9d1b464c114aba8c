#include "calendar/book_periods.h"
#include "model/account_balance.h"
#include "model/transaction_type.h"
#include "reminders/repay_reminders.h"
#include "reports/moniva_account_budget.h"
#include "storage/writes.h"
#include "ui/cli/amount_typed.h"
#include "ui/cli/command_error.h"
#include "ui/cli/commands/account_rows.h"
#include "ui/cli/commands/period_options.h"
#include "ui/cli/commands/reminder_fields.h"
#include "ui/cli/rates.h"
#include "ui/cli/typed_text.h"

namespace moniva {
namespace {

std::string balanceText(const Session& session, const MonivaAccount& row) {
  return session.amounts().format(row.totalBalance, row.currency);
}

std::string renameRow(Session& session, MonivaAccount& row, const std::string& title) {
  const std::string before = row.title;
  done(row.updateTitle(wellFormed(title, "the name")));
  return session.text("'{}' is called '{}' now.", before, row.title);
}

std::string setNote(Session& session, MonivaAccount& row, const std::string& note) {
  done(row.updateNote(asTyped(note, "the note")));
  return note.empty() ? session.text("'{}' has no note now.", row.title)
                      : session.text("'{}' has this note now: {}", row.title, note);
}

std::string setCurrency(Session& session, MonivaAccount& row, const std::string& code) {
  currencyCodeTyped(session, code);
  if (code == row.currency) throw refused("'{}' is kept in {} already", row.title, code);
  const std::string also = changeCurrency(session, row, code);
  return session.text("'{}' is kept in {} now; its amounts stand as they were.", row.title, code) + also;
}

std::string setOpeningBalance(Session& session, MonivaAccount& row, const std::string& text) {
  const double amount = signedAmountTyped(session, text, row.currency);
  done(row.updateBeginBalance(amount));
  return session.text("'{}' began with {}; its balance is {} now.", row.title,
                      session.amounts().format(amount, row.currency), balanceText(session, row));
}

std::string setAccountType(Session& session, MonivaAccount& row, const std::string& word) {
  done(row.updateType(keptFor(accountTypeWords(), word)));
  done(row.updateTrackingType(row.trackingType));
  return session.text("'{}' is of the kind {} now (it tracks: {}); its balance is {}.", row.title,
                      typeText(session, row), trackingText(session, row), balanceText(session, row));
}

std::string setTracking(Session& session, MonivaAccount& row, const std::string& word) {
  done(row.updateTrackingType(keptFor(trackingWords(row.aKind), word)));
  return session.text("'{}' tracks {} now; its balance is {}.", row.title, trackingText(session, row),
                      balanceText(session, row));
}

std::string setProfit(Session& session, MonivaAccount& row, const std::string& word) {
  done(row.updateShowProfitForSummary(word == "on"));
  return word == "on" ? session.text("Summaries of '{}' show its profit.", row.title)
                      : session.text("Summaries of '{}' do not show its profit.", row.title);
}

std::string setReminders(Session& session, MonivaAccount& row, const std::string& word) {
  if (word == "on" && row.isDebtAccount() && !row.enabled) {
    throw refused("'{}' is closed, so nothing is reminded of; open it with: moniva account reopen NAME",
                  row.title);
  }
  done(row.updateRepayNotificationEnabled(word == "on"));
  if (word == "off") {
    done(deleteRepayNotification(row));
    return session.text("Repayments of '{}' are not reminded of.", row.title);
  }
  return session.text("Repayments of '{}' are reminded of; {}.", row.title,
                      remindNow(session, {row.pk}, session.text("no reminder is to come now")));
}

const std::vector<Word<std::string>>& dashboardWords() {
  static const std::vector<Word<std::string>> words = [] {
    std::vector<Word<std::string>> made;
    const auto& styles = MonivaAccount::overviewStyles();
    for (const char* word : {"standard", "modern", "modern2", "tablet"}) {
      made.push_back({word, std::string(styles[made.size()])});
    }
    return made;
  }();
  return words;
}

std::string setDashboard(Session& session, MonivaAccount& row, const std::string& word) {
  done(row.updateOverViewUI(keptFor(dashboardWords(), word)));
  return session.text("'{}' has the dashboard '{}' now.", row.title, dashboardText(session, row));
}

std::string setPeriods(Session& session, MonivaAccount& row, const PeriodStarts& starts) {
  std::optional<BookBudget> budget;
  if (row.isBook() && !row.isGroup && row.budgetEnabled && starts.monthStartsOn != 0) {
    budget = done(getMonthlyBudget(row));
  }
  writeStarts(row, starts);
  // The present month may be called otherwise now; what it has to spend stays.
  if (budget) budget = done(keepBudgetOverNewPeriods(row, budget));
  const PresentPeriods present(session, row);
  const auto periods = session.text("For '{}' this week is {}, this month {}, this year {}.", row.title,
                                    present.week, present.month, present.year);
  if (!budget) return periods;
  return periods + " " +
         session.text("Its monthly budget is {}, as it was.",
                      session.amounts().format(budget->amount, row.currency));
}

}  // namespace

void addRowSettings(const RowFamily& family) {
  addSetting(family, "rename", "NEW", "The new name", renameRow);
  addSetting(family, "note", "TEXT", "The note; \"\" for none", setNote);
  addSetting(family, "currency", "CODE", "The currency, such as EUR", setCurrency);
  addSetting(family, "opening-balance", "AMOUNT", "What was in it at the beginning; it may be below zero",
             setOpeningBalance);
  if (!family.ofBooks()) {
    addSetting(family, "type", "KIND", "Kind of account", setAccountType)
        ->check(oneOf(wordsOf(accountTypeWords())));
    addSetting(family, "reminders", "STATE", "Whether repayments are reminded of", setReminders)
        ->check(oneOf({"on", "off"}));
  } else {
    addSetting(family, "dashboard", "STYLE", "How its dashboard looks", setDashboard)
        ->check(oneOf(wordsOf(dashboardWords())));
  }
  addSetting(family, "tracking", "WHAT", "What of its records counts", setTracking)
      ->check(oneOf(wordsOf(trackingWords(family.aKind))));
  addSetting(family, "profit", "STATE", "Whether summaries show its profit", setProfit)
      ->check(oneOf({"on", "off"}));

  CLI::App* periods = family.line.add(family.app, "periods");
  auto name = std::make_shared<std::string>();
  auto starts = std::make_shared<PeriodStarts>(kNoStarts);
  periods->add_option("NAME", *name, family.nameHelp())->required();
  addPeriodOptions(*periods, *starts);
  family.line.onRun(periods, [name, starts, aKind = family.aKind](Session& session) {
    if (starts->weekStartsOn == 0 && starts->monthStartsOn == 0 && starts->yearStartsOn == 0) {
      throw notUnderstood("say what begins when: --week-starts, --month-starts or --year-starts");
    }
    changeRow(session, aKind, *name, [&](MonivaAccount& row) { return setPeriods(session, row, *starts); });
  });
}

}  // namespace moniva
