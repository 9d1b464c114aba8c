#pragma once

#include <CLI/App.hpp>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "model/moniva_account.h"
#include "model/mv_transaction.h"
#include "reminders/reminder_records.h"
#include "ui/cli/session.h"

/// What the commands on reminders, and those that enter what can be reminded of, have in common.
namespace moniva {

/// The option --remind of a command that adds a record.
void addRemindOption(CLI::App& command, bool& remind);
/// Switches the reminders of a record or series on that was just added, and says when they come; of one that
/// neither waits nor repeats, that there is nothing to remind of.
void remindOfNew(Session& session, const std::string& eid);

/// The rows of the record that can be reminded of: the series itself, or what of it is still to be paid.
std::vector<MVTransaction> rowsToRemindOf(Session& session, const std::string& eid);
/// Schedules and cancels what there is to, and says of these owners what comes of it: "the next one comes on
/// Jun 15, 2024 10:00", or `none`. A host that will not is told of by the end of the command.
std::string remindNow(Session& session, const std::vector<std::string>& owners, const std::string& none);

/// What is scheduled and still to come, to be asked for many owners.
class ComingReminders {
 public:
  explicit ComingReminders(Session& session);
  /// Whether one is to come for what the owner has due on the day.
  bool hasOne(const std::string& owner, Date due) const;

 private:
  Session& session_;
  std::set<std::pair<std::string, std::int64_t>> days_;
};

}  // namespace moniva
