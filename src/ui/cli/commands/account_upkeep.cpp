#include <algorithm>
#include <boost/json.hpp>
#include <cmath>

#include "model/account_balance.h"
#include "model/account_groups.h"
#include "model/transaction_type.h"
#include "model/transfer.h"
#include "recurrence/series_standing.h"
#include "reports/bill_report.h"
#include "storage/writes.h"
#include "ui/cli/amount_typed.h"
#include "ui/cli/command_error.h"
#include "ui/cli/commands/account_rows.h"
#include "ui/cli/did_you_mean.h"
#include "ui/cli/records.h"

namespace moniva {
namespace {

void putInOrder(Session& session, int aKind, const std::vector<std::string>& names) {
  std::vector<MonivaAccount> list;
  done(atomically(session.root(), [&](Connection&) {
    list = MonivaAccount::list(session.root(), aKind);
    auto place = list.begin();
    for (const auto& name : names) {
      const auto row = aKind == kBookKind ? bookNamed(session, name) : accountNamed(session, name);
      const auto found = std::find_if(place, list.end(), [&](const auto& one) { return one.pk == row.pk; });
      if (found == list.end()) throw notUnderstood("'{}' is named twice", row.title);
      std::rotate(place, found, found + 1);
      ++place;
    }
    return MonivaAccount::saveOrder(session.root(), list);
  }));
  session.root().markRecentEditDate();
  if (!session.options().json) return session.answer(session.text("The order is now: {}.", titlesText(list)));
  boost::json::array kept;
  for (auto& row : list) kept.push_back(jsonNow(session, row));
  session.printJson(kept);
}

/// What is said of series that wait for the row; "" where none does.
std::string missedText(Session& session, const MonivaAccount& row) {
  if (done(seriesBehind(session.root(), row.pk)) == 0) return {};
  return " " + session.text(
                   "What its series missed is added tomorrow, or now with: "
                   "moniva repeat refill --all");
}

/// What is said of bills that a credit account leaves behind as it is closed; "" where all are paid.
std::string unpaidText(Session& session, const MonivaAccount& row) {
  if (!row.isDebtAccount()) return {};
  const auto bill = done(getCorrentBill(row));
  const double unpaid = bill.lastMonthNeedReayAmount + bill.thisMonthNeedReayAmount;
  if (unpaid <= 0) return {};
  const std::string amount = session.amounts().format(unpaid, row.currency);
  return " " +
         (row.repayNotificationEnabled()
              ? session.text("{} of its bills is still to be paid; it is no longer reminded of.", amount)
              : session.text("{} of its bills is still to be paid.", amount));
}

std::string setClosed(Session& session, MonivaAccount& row, bool closed) {
  if (row.enabled != closed) {
    throw closed ? refused("'{}' is closed already", row.title) : refused("'{}' is open already", row.title);
  }
  done(row.close(closed));
  return closed
             ? session.text("'{}' is closed and takes no new records.", row.title) + unpaidText(session, row)
             : session.text("'{}' is open again.", row.title) + missedText(session, row);
}

std::string deleteRow(Session& session, MonivaAccount& row) {
  const std::string records = ownRecordsText(session, row);
  const auto groups = done(getFatherGroup(row));
  done(row.delete_());
  std::string answer =
      row.isBook()
          ? session.text("Deleted the book '{}'; \"moniva book recover\" brings it back with {}.", row.title,
                         records)
          : session.text("Deleted the account '{}'; \"moniva account recover\" brings it back with {}.",
                         row.title, records);
  if (!groups.empty()) answer += " " + session.text("It left its groups: {}.", titlesText(groups));
  return answer;
}

std::string recoveredText(Session& session, const MonivaAccount& row) {
  const std::string records = ownRecordsText(session, row);
  if (row.isGroup) return session.text("The group '{}' is back, without members.", row.title);
  if (row.isBook()) {
    return row.enabled ? session.text("The book '{}' is back with {}.", row.title, records)
                       : session.text("The book '{}' is back with {}; it is closed.", row.title, records);
  }
  return row.enabled ? session.text("The account '{}' is back with {}.", row.title, records)
                     : session.text("The account '{}' is back with {}; it is closed.", row.title, records);
}

/// What was deleted under the title; ends the command when nothing was, with the nearest title there is.
std::vector<MonivaAccount> deletedOf(MVAppRoot& root, const std::string& title) {
  std::vector<MonivaAccount> rows;
  std::vector<std::string> titles;
  for (const int aKind : {kBookKind, kAccountKind}) {
    for (auto& row : MonivaAccount::list(root, aKind, MonivaAccount::Rows::deleted)) {
      titles.push_back(row.title);
      if (row.title == title) rows.push_back(std::move(row));
    }
  }
  if (!rows.empty()) return rows;
  const auto near = didYouMean(title, titles);
  throw near ? refused("nothing of the title '{}' was deleted; did you mean '{}'?", title, *near)
             : refused("nothing of the title '{}' was deleted", title);
}

/// Brings back everything of the title, whichever kind was asked for: that is how it was deleted.
void recoverTitle(Session& session, const std::string& title) {
  auto& root = session.root();
  std::vector<MonivaAccount> rows;
  done(atomically(root, [&](Connection&) -> Result<> {
    rows = deletedOf(root, title);
    if (auto back = rows.front().recoverForTitle(); !back) return back;
    for (auto& row : rows) {
      row.getInfo();
      if (!countTheTotalBalance(row)) return refusalOfStore(root);
    }
    return {};
  }));
  root.markRecentEditDate();
  boost::json::array list;
  for (auto& row : rows) {
    if (session.options().json) {
      list.push_back(jsonNow(session, row));
    } else {
      session.answer(recoveredText(session, row) + missedText(session, row));
    }
  }
  if (session.options().json) session.printJson(list);
}

std::string clearRow(Session& session, MonivaAccount& row, bool yes) {
  const auto count = done(row.recordCount());
  const auto series = done(row.seriesCount());
  if (count + series == 0) throw refused("'{}' has no records", row.title);
  const auto transferred = done(Transfer::countOf(row.root(), row.pk));
  const std::string transfers = session.count("{} transfer", "{} transfers", transferred);
  if (!yes && transferred > 0) {
    throw refused(
        "this would remove the {} of '{}' for good; of {} among them the other account keeps its side; if "
        "so, "
        "say --yes",
        recordsText(session, count, series), row.title, transfers);
  }
  if (!yes) {
    throw refused("this would remove the {} of '{}' for good; if so, say --yes",
                  recordsText(session, count, series), row.title);
  }
  const auto removed = done(row.clear());
  std::string answer =
      session.text("Removed {} of '{}'; its balance is {} now.", recordsText(session, removed, series),
                   row.title, session.amounts().format(row.totalBalance, row.currency));
  if (transferred > 0) {
    answer += " " + session.text("Of {} among them the other account keeps its side.", transfers);
  }
  return answer;
}

void recountBalances(Session& session, int aKind, const std::string& name, bool all) {
  auto& root = session.root();
  if (all && !name.empty()) throw notUnderstood("name one to count afresh, or say --all");
  if (!all && name.empty() && aKind != kBookKind) throw notUnderstood("say which account, or --all");
  std::vector<MonivaAccount> rows;
  std::vector<double> differences;
  done(atomically(root, [&](Connection&) -> Result<> {
    if (all) {
      rows = MonivaAccount::list(root, aKind);
    } else {
      rows.push_back(aKind == kBookKind ? bookNamed(session, name) : accountNamed(session, name));
    }
    for (auto& row : rows) {
      const double kept = row.totalBalance;
      if (!countTheTotalBalance(row)) return refusalOfStore(root);
      // No amount has more than six decimals: what lies behind them is noise of the sum.
      differences.push_back(std::round((row.totalBalance - kept) * 1e6) / 1e6);
    }
    return {};
  }));
  if (session.options().json) {
    boost::json::array list;
    for (std::size_t i = 0; i < rows.size(); ++i) {
      auto object = jsonOf(session, rows[i]);
      object["difference"] = differences[i];
      list.push_back(std::move(object));
    }
    return session.printJson(list);
  }
  std::int64_t wrong = 0;
  for (std::size_t i = 0; i < rows.size(); ++i) {
    const std::string balance = session.amounts().format(rows[i].totalBalance, rows[i].currency);
    if (differences[i] != 0) {
      ++wrong;
      session.answer(
          session.text("The balance of '{}' is {}; kept was {} ({}).", rows[i].title, balance,
                       session.amounts().format(rows[i].totalBalance - differences[i], rows[i].currency),
                       session.amounts().formatSigned(differences[i], rows[i].currency)));
    } else if (!all) {
      session.answer(session.text("The balance of '{}' is {}, as it was kept.", rows[i].title, balance));
    }
  }
  if (all) {
    session.answer(session.text(
        "{} counted afresh, {} of them corrected.",
        session.count("{} balance", "{} balances", static_cast<std::int64_t>(rows.size())), wrong));
  }
}

std::string correctBalance(Session& session, MonivaAccount& row, const std::string& text) {
  const double wanted = signedAmountTyped(session, text, row.currency);
  requireOpen(row);
  const double booked = done(correctBalanceTo(row, wanted));
  const std::string balance = session.amounts().format(wanted, row.currency);
  if (booked == 0) return session.text("The balance of '{}' is {} as it stands.", row.title, balance);
  return session.text("The balance of '{}' is {} now; a correction of {} was booked.", row.title, balance,
                      session.amounts().formatSigned(booked, row.currency));
}

using Change = std::function<std::string(Session&, MonivaAccount&)>;

/// A command that needs nothing but the name.
CLI::App* addNamed(const RowFamily& family, const char* command, const Change& change) {
  auto name = std::make_shared<std::string>();
  CLI::App* app = family.line.add(family.app, command);
  app->add_option("NAME", *name, family.nameHelp())->required();
  family.line.onRun(app, [name, change, aKind = family.aKind](Session& session) {
    changeRow(session, aKind, *name, [&](MonivaAccount& row) { return change(session, row); });
  });
  return app;
}

}  // namespace

void addRowUpkeep(const RowFamily& family) {
  auto& [line, parent, aKind] = family;
  CLI::App* order = line.add(parent, "order");
  auto names = std::make_shared<std::vector<std::string>>();
  order->add_option("NAME", *names, "The names that come first, in this order")->required();
  line.onRun(order, [names, kind = aKind](Session& session) { putInOrder(session, kind, *names); });

  addNamed(family, "close", [](Session& s, MonivaAccount& row) { return setClosed(s, row, true); });
  addNamed(family, "reopen", [](Session& s, MonivaAccount& row) { return setClosed(s, row, false); });
  addNamed(family, "delete", deleteRow);

  CLI::App* back = line.add(parent, "recover");
  auto title = std::make_shared<std::string>();
  back->add_option("NAME", *title, "The name it was deleted under")->required();
  line.onRun(back, [title](Session& session) { recoverTitle(session, *title); });

  auto yes = std::make_shared<bool>(false);
  addNamed(family, "clear", [yes](Session& s, MonivaAccount& row) {
    return clearRow(s, row, *yes);
  })->add_flag("--yes", *yes, "Remove them indeed");

  addMoveRecords(family);

  CLI::App* count = line.add(parent, "recount");
  auto counted = std::make_shared<std::string>();
  auto all = std::make_shared<bool>(false);
  count->add_option("NAME", *counted, family.nameHelp());
  count->add_flag("--all", *all, "Count all of them");
  line.onRun(count, [counted, all, kind = aKind](Session& session) {
    recountBalances(session, kind, *counted, *all);
  });

  addSetting(family, "correct", "AMOUNT", "What the balance is found to be; it may be below zero",
             correctBalance);
}

}  // namespace moniva
