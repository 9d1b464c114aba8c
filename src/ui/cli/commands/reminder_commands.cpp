#include <algorithm>
#include <boost/json.hpp>
#include <chrono>
#include <map>

#include "model/transaction_type.h"
#include "platform/posix/desktop_notifications.h"
#include "platform/posix/notification_service.h"
#include "reminders/bill_reminders.h"
#include "reminders/fire_times.h"
#include "reminders/mv_notification_manager.h"
#include "reminders/repay_reminders.h"
#include "ui/cli/command_error.h"
#include "ui/cli/command_line.h"
#include "ui/cli/commands/reminder_fields.h"
#include "ui/cli/completion_scripts.h"
#include "ui/cli/confirm.h"
#include "ui/cli/csv_out.h"
#include "ui/cli/entry_options.h"
#include "ui/cli/record_texts.h"
#include "ui/cli/records.h"
#include "ui/cli/table.h"
#include "ui/cli/text_width.h"
#include "ui/cli/transaction_rows.h"

namespace moniva {
namespace {

namespace json = boost::json;

struct ReminderOptions {
  std::string what;
  bool all = false;
  bool yes = false;
  bool csv = false;
};

std::string inWords(Session& session, const Refusal& refusal) {
  return CommandError(CommandError::kRefused, refusal).in(session.translate());
}

/// What the host is still to show.
class PendingReminders {
 public:
  explicit PendingReminders(Session& session) {
    const auto pending = session.platform().localNotifications->pending();
    if (!pending) {
      session.say(session.text("What is to be shown cannot be read: {}", inWords(session, pending.error())));
      return;
    }
    messages_.emplace();
    for (const auto& request : *pending) messages_->emplace(request.identifier, request.body);
  }

  /// Nothing where the host will not tell.
  std::optional<bool> has(const ReminderRecord& record) const {
    return messages_ ? std::optional(messages_->contains(record.identifier)) : std::nullopt;
  }
  std::string messageOf(const ReminderRecord& record) const {
    return has(record).value_or(false) ? messages_->at(record.identifier) : std::string();
  }

 private:
  std::optional<std::map<std::string, std::string>> messages_;
};

json::object jsonOf(Session& session, const ReminderRecord& record, const PendingReminders& pending) {
  const auto isPending = pending.has(record);
  return {{"identifier", record.identifier},
          {"owner", record.owner},
          {"title", record.title},
          {"message", pending.messageOf(record)},
          {"fireDate", isoDate(session, record.fireDate)},
          {"scheduledAt", isoDate(session, record.scheduledAt)},
          {"isPending", isPending ? json::value(*isPending) : json::value()}};
}

/// The account's title, or the end of the record.
Cell ownerCell(Session& session, const std::string& owner) {
  const auto account = MonivaAccount::getAccountWithPK(session.root(), owner);
  return account ? Cell(account->title) : Cell(shortEid(owner), ink::dim);
}

json::array remindersJson(Session& session, const std::vector<ReminderRecord>& records,
                          const PendingReminders& pending) {
  json::array array;
  for (const auto& record : records) array.push_back(jsonOf(session, record, pending));
  return array;
}

json::array remindersJson(Session& session, const std::vector<ReminderRecord>& records) {
  return remindersJson(session, records, PendingReminders(session));
}

/// How long a list waits for the desktop.
constexpr std::chrono::milliseconds kPatience(500);

void listReminders(Session& session, const ReminderOptions& options) {
  auto records = done(reminderRecords(session.root()));
  const PendingReminders pending(session);
  const auto isPast = [&](const ReminderRecord& one) { return one.fireDate <= session.now(); };
  if (!options.all) {
    std::erase_if(
        records, [&](const ReminderRecord& one) { return isPast(one) && !pending.has(one).value_or(false); });
  }
  if (options.csv) return printCsv(session, remindersJson(session, records, pending));
  if (session.options().json) return session.printJson(remindersJson(session, records, pending));
  if (const auto ready = NotificationService::open(kPatience); !ready) {
    session.say(session.text("This machine cannot show reminders now: {}", inWords(session, ready.error())));
  }
  if (records.empty()) {
    return session.say(session.text("No reminder is to come. Switch one on with: moniva reminder on RECORD"));
  }
  std::vector<Column> columns({{.title = session.text("When"), .isWhole = true},
                               {.title = session.text("Of"), .isWhole = true},
                               {.title = session.text("Title"), .maxWidth = 40},
                               {.title = session.text("Message"), .maxWidth = 70}});
  // Of what is to come there is nothing to say.
  if (std::ranges::any_of(records, isPast)) columns.push_back({.title = session.text("State")});
  Table table(std::move(columns));
  for (const auto& record : records) {
    const auto waits = isPast(record) ? pending.has(record) : std::nullopt;
    table.addRow({Cell(dateText(session, record.fireDate), waits == false ? ink::dim : ink::plain),
                  ownerCell(session, record.owner), printable(record.title),
                  printable(pending.messageOf(record)),
                  !waits   ? std::string()
                  : *waits ? session.text("waits to be shown")
                           : session.text("shown")});
  }
  session.out() << table.render(session.style(), session.width());
}

CommandError noCreditAccount(const MonivaAccount& account) {
  return refused("'{}' is no credit account, so there is no repayment to remind of",
                 printable(account.title));
}

std::vector<std::string> ownersOf(const std::vector<MVTransaction>& rows) {
  std::vector<std::string> owners;
  for (const auto& row : rows) owners.push_back(row.eid);
  return owners;
}

/// The record as the answers name it: "Rent, €500.00".
std::string remindedText(Session& session, const MVTransaction& row) {
  return fmt::format("{}, {}", whatText(session, row), amountText(session, row));
}

json::array scheduledJson(Session& session, const std::vector<std::string>& owners) {
  std::vector<ReminderRecord> records;
  for (const auto& owner : owners) {
    std::ranges::move(done(reminderRecordsOf(session.root(), owner)), std::back_inserter(records));
  }
  return remindersJson(session, records);
}

/// The record that is to be reminded of, or not; of accounts it says where theirs are switched.
std::string recordToRemindOf(Session& session, const std::string& text, bool on) {
  try {
    return recordTyped(session, text);
  } catch (const CommandError&) {
    const auto account = MonivaAccount::getAccountWithTitle(session.root(), text);
    if (!account || account->isDeleted != 0) throw;
    if (!account->isDebtAccount()) throw noCreditAccount(*account);
    throw refused("'{}' is an account; its reminders: moniva account reminders {} {}",
                  printable(account->title), shellQuoted(printable(account->title)), on ? "on" : "off");
  }
}

/// Ends the command for what cannot be reminded of, in words.
[[noreturn]] void refuseReminder(Session& session, const std::string& eid, const std::string& text) {
  const auto row = MVTransaction::transactionFromEID(session.root(), eid);
  if (row && row->deleted != 0) {
    throw row->type() == kind::kRepeatSeed
        ? refused("the series '{}' is over, so there is nothing to remind of", printable(text))
        : refused("the record is deleted; bring it back with: moniva restore {}", shortEid(eid));
  }
  throw refused("'{}' is settled already, so there is nothing to remind of", printable(text));
}

std::int64_t countComing(const Session& session, const std::vector<ReminderRecord>& records) {
  return std::ranges::count_if(records,
                               [&](const ReminderRecord& one) { return one.fireDate > session.now(); });
}

std::string cancelledText(const Session& session, std::int64_t count) {
  if (count == 0) return session.text("none was scheduled");
  return session.count("{} was cancelled", "{} were cancelled", count);
}

/// A change of the store whose requests change together.
void changeReminders(Session& session, const std::function<void()>& work) {
  changeStore(session, [&] {
    NotificationChanges changes(*session.platform().localNotifications);
    work();
    done(changes.end());
  });
}

void switchReminders(Session& session, const std::string& text, bool on) {
  std::vector<MVTransaction> rows;
  std::int64_t scheduled = 0;
  changeReminders(session, [&] {
    const std::string eid = recordToRemindOf(session, text, on);
    rows = rowsToRemindOf(session, eid);
    if (rows.empty()) refuseReminder(session, eid, text);
    for (const auto& row : rows) {
      if (!on) scheduled += countComing(session, done(reminderRecordsOf(session.root(), row.eid)));
      done(setNotificationEnabled(row, on));
    }
  });
  const auto owners = ownersOf(rows);
  const auto next = remindNow(session, owners, session.text("none is to come, as its day is too near"));
  if (session.options().json) {
    json::array eids(owners.begin(), owners.end());
    return session.printJson(json::object{{"transactions", std::move(eids)},
                                          {"needNotify", on},
                                          {"reminders", scheduledJson(session, owners)}});
  }
  const auto what = rows.size() == 1
                        ? remindedText(session, rows.front())
                        : session.text("{} and the rest of its record", remindedText(session, rows.front()));
  if (!on) {
    return session.answer(
        session.text("Reminders of {} are off; {}.", what, cancelledText(session, scheduled)));
  }
  session.answer(session.text("Reminders of {} are on; {}.", what, next));
}

void cancelOfAccount(Session& session, MonivaAccount account) {
  if (!account.isDebtAccount()) throw noCreditAccount(account);
  const auto cancelled = countComing(session, done(reminderRecordsOf(session.root(), account.pk)));
  changeReminders(session, [&] {
    if (account.repayNotificationEnabled()) done(account.updateRepayNotificationEnabled(false));
    done(deleteRepayNotification(account));
  });
  if (session.options().json) {
    return session.printJson(
        json::object{{"account", {{"pk", account.pk}, {"title", account.title}}}, {"cancelled", cancelled}});
  }
  session.answer(session.text("Repayments of '{}' are not reminded of any more; {}.", account.title,
                              cancelledText(session, cancelled)));
}

/// Everything that is still to be reminded of: what is pending, and series. What is past its day stays as it
/// is.
std::vector<MVTransaction> rowsReminded(Session& session) {
  std::vector<MVTransaction> rows;
  const auto take = [&](MVTransaction row) {
    const auto last = fireTimesFor(session.calendar(), row.eid, dueDateOf(row)).back();
    if (last.date > session.now()) rows.push_back(std::move(row));
  };
  const Value ofSeries[] = {kind::kRepeatSeed};
  done(MVTransaction::transactionsWhere(session.root(), "paid = 0 and needNotify = 1 and deleted = 0", {},
                                        take));
  done(MVTransaction::transactionsWhere(
      session.root(), "type = ? and paid != 0 and needNotify = 1 and deleted = 0", ofSeries, take));
  return rows;
}

void cancelAll(Session& session, bool yes) {
  MVAppRoot& root = session.root();
  const auto scheduled = countComing(session, done(reminderRecords(root)));
  const auto what = session.count("{} reminder", "{} reminders", scheduled);
  confirm(session, yes, session.text("Cancel {} and switch off what made them?", what),
          refused("this would cancel {} and switch off what made them; if so, say --yes", what),
          refused("nothing was cancelled"));
  changeReminders(session, [&] {
    for (auto& account : MonivaAccount::list(root, kAccountKind)) {
      if (!account.isDebtAccount() || !account.repayNotificationEnabled()) continue;
      done(account.updateRepayNotificationEnabled(false));
      done(deleteRepayNotification(account));
    }
    for (const auto& row : rowsReminded(session)) done(setNotificationEnabled(row, false));
    done(MVNotificationManager(root).cancelAllNotifications());
  });
  if (session.options().json) {
    return session.printJson(json::object{{"cancelled", scheduled}});
  }
  session.answer(session.text("Cancelled {}; nothing is reminded of any more.", what));
}

void cancelReminder(Session& session, const ReminderOptions& options) {
  if (options.all != options.what.empty()) {
    throw notUnderstood("say which record or account, or --all");
  }
  if (options.all) return cancelAll(session, options.yes);
  const auto account = MonivaAccount::getAccountWithTitle(session.root(), options.what);
  if (account && account->isDeleted == 0) return cancelOfAccount(session, *account);
  const bool isRecord = options.what.find_first_not_of("0123456789abcdefABCDEF-") == std::string::npos;
  if (!isRecord) return cancelOfAccount(session, accountNamed(session, options.what));
  switchReminders(session, options.what, false);
}

void testReminder(Session& session) {
  done(DesktopNotifications::showNow(session.text("A reminder of Moniva"),
                                     session.text("This is how you are reminded of what is to be paid.")));
  if (session.options().json) return session.printJson(json::object{{"shown", true}});
  session.answer(session.text("A reminder was shown on this desktop."));
}

void deliverReminders(Session& session) {
  const auto [shown, refusal] = session.deliverReminders();
  if (shown > 0 || !refusal) {
    if (session.options().json) {
      session.printJson(json::object{{"shown", shown}});
    } else {
      session.answer(shown == 0 ? session.text("No reminder has come due.")
                                : session.count("Showed {} reminder.", "Showed {} reminders.", shown));
    }
  }
  if (refusal) throw CommandError(CommandError::kRefused, *refusal);
}

}  // namespace

void addReminderCommands(CommandLine& line) {
  CLI::App* reminder = line.add(line.app(), "reminder");
  reminder->require_subcommand(1);
  const auto command = [&](const char* name, std::function<void(Session&, const ReminderOptions&)> run) {
    CLI::App* app = line.add(*reminder, name);
    auto options = std::make_shared<ReminderOptions>();
    line.onRun(app, [options, run = std::move(run)](Session& session) { run(session, *options); });
    return std::pair(app, options);
  };
  {
    const auto [list, options] = command("list", listReminders);
    list->add_flag("--all", options->all, "Those that were shown lately too");
    addCsv(*list, options->csv);
  }
  constexpr const char* kRecord = toTranslate("The record or series: its eid, or the end of it");
  for (const bool on : {true, false}) {
    const auto [app, options] = command(
        on ? "on" : "off",
        [on](Session& session, const ReminderOptions& typed) { switchReminders(session, typed.what, on); });
    app->add_option("RECORD", options->what, kRecord)->required();
  }
  {
    const auto [cancel, options] = command("cancel", cancelReminder);
    cancel->add_option("WHAT", options->what, "A record or series, or the name of a credit account");
    cancel->add_flag("--all", options->all, "All there are");
    cancel->add_flag("--yes", options->yes, "Cancel all of them indeed");
  }
  command("test", [](Session& session, const ReminderOptions&) { testReminder(session); });
  command("deliver", [](Session& session, const ReminderOptions&) { deliverReminders(session); });
}

}  // namespace moniva
