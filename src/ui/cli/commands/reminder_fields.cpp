#include "ui/cli/commands/reminder_fields.h"

#include <algorithm>

#include "app/refresh_reminders.h"
#include "model/record_list.h"
#include "model/transaction_type.h"
#include "model/transfer.h"
#include "reminders/bill_reminders.h"
#include "reports/history.h"
#include "ui/cli/command_error.h"
#include "ui/cli/entry_options.h"
#include "ui/cli/records.h"

namespace moniva {
namespace {

constexpr int kDaysAhead = 5;

/// Everything that is still to be paid, by row; of a transfer the side the money leaves.
std::set<std::string> openRows(MVAppRoot& root) {
  std::set<std::string> open;
  for (const auto& day : done(unpaidTransactions(root))) {
    for (const auto& entry : day.entries) open.insert(entry.eid);
  }
  for (const int type : {kind::kExpense, kind::kIncome}) {
    for (const auto& eid : done(installmentTransactions(root, type))) open.insert(eid);
  }
  return open;
}

/// All rows of the record that the row is part of.
std::vector<std::string> rowsOfRecord(MVAppRoot& root, const MVTransaction& row) {
  if (row.type() == kind::kTransferIn) {
    const auto transfer = Transfer::transferFromEIDB(root, row.eid);
    return {transfer ? transfer->eidA : row.eid};
  }
  const auto whole = row.isTransfer() ? std::nullopt : done(RecordWhole::of(root, row.eid));
  if (!whole) return {row.eid};
  std::vector<std::string> rows;
  for (const auto& item : whole->group.items) rows.push_back(item.eid);
  for (const auto& payment : whole->group.payments) rows.push_back(payment.eid);
  if (rows.empty()) rows.push_back(row.eid);
  return rows;
}

}  // namespace

void addRemindOption(CLI::App& command, bool& remind) {
  command.add_flag("--remind", remind,
                   "Remind of it five and three days before and on the day, where it waits or repeats");
}

std::vector<MVTransaction> rowsToRemindOf(Session& session, const std::string& eid) {
  MVAppRoot& root = session.root();
  auto row = MVTransaction::transactionFromEID(root, eid);
  if (!row) return {};
  std::vector<MVTransaction> rows;
  if (row->type() == kind::kRepeatSeed) {
    if (row->deleted == 0) rows.push_back(std::move(*row));
    return rows;
  }
  const auto open = openRows(root);
  for (const auto& one : rowsOfRecord(root, *row)) {
    if (!open.contains(one)) continue;
    if (auto loaded = MVTransaction::transactionFromEID(root, one)) rows.push_back(std::move(*loaded));
  }
  return rows;
}

std::string remindNow(Session& session, const std::vector<std::string>& owners, const std::string& none) {
  if (!refreshReminders(session.root(), session.billsAtLaunch()))
    return session.text("they could not be scheduled yet");
  std::optional<Date> next;
  for (const auto& owner : owners) {
    for (const auto& record : done(reminderRecordsOf(session.root(), owner))) {
      if (record.fireDate > session.now() && (!next || record.fireDate < *next)) next = record.fireDate;
    }
  }
  return next ? session.text("the next one comes on {}", dateText(session, *next)) : none;
}

void remindOfNew(Session& session, const std::string& eid) {
  std::vector<std::string> owners;
  changeStore(session, [&] {
    for (const auto& row : rowsToRemindOf(session, eid)) {
      done(setNotificationEnabled(row, true));
      owners.push_back(row.eid);
    }
  });
  if (owners.empty()) {
    return session.say(
        session.text("There is nothing to remind of: the record is settled and does not repeat."));
  }
  const auto next = remindNow(session, owners, session.text("none is to come, as its day is too near"));
  session.say(session.text("Its reminders are on; {}.", next));
}

ComingReminders::ComingReminders(Session& session) : session_(session) {
  for (const auto& record : done(reminderRecords(session.root()))) {
    if (record.fireDate > session.now()) {
      days_.emplace(record.owner, session.calendar().dayNumber(record.fireDate));
    }
  }
}

bool ComingReminders::hasOne(const std::string& owner, Date due) const {
  const auto day = session_.calendar().dayNumber(due);
  const auto first = days_.lower_bound({owner, day - kDaysAhead});
  return first != days_.end() && first->first == owner && first->second <= day;
}

}  // namespace moniva
