#include <algorithm>
#include <boost/json.hpp>

#include "calendar/date_texts.h"
#include "reports/alerts.h"
#include "ui/cli/command_error.h"
#include "ui/cli/commands/debt_commands.h"
#include "ui/cli/commands/list_lines.h"
#include "ui/cli/commands/template_commands.h"
#include "ui/cli/entry_options.h"
#include "ui/cli/record_texts.h"
#include "ui/cli/records.h"
#include "ui/cli/text_width.h"

namespace moniva {
namespace {

namespace json = boost::json;

/// What the lists take, each the part it needs.
struct HistoryOptions {
  std::string book;
  std::string date;
  std::string person;
  bool income = false;
  bool settled = false;
  bool csv = false;
};

template <class Key>
std::vector<ListLine> linesOf(const std::vector<Key>& keys,
                              const std::function<std::optional<ListLine>(const Key&)>& line) {
  std::vector<ListLine> lines;
  for (const auto& key : keys) {
    if (auto made = line(key)) lines.push_back(std::move(*made));
  }
  return lines;
}

/// The day typed, or today; ends the command for what is none.
Date dayOrToday(Session& session, const HistoryOptions& options) {
  return options.date.empty() ? session.calendar().dateBegin(session.now()) : dayTyped(session, options.date);
}

// Lists of rows as they are.

void listAdded(Session& session, const HistoryOptions& options) {
  const auto book = bookNamed(session, options.book);
  const Date before = options.date.empty() ? session.calendar().midnightTomorrow(session.now())
                                           : dayTyped(session, options.date);
  ListedRecords records(session);
  const auto found = done(getLastAddedSpend(book, options.income ? kind::kIncome : kind::kExpense, before));
  printLines(session, options.csv,
             linesOf<std::string>(found, [&](const auto& eid) { return records.row(eid); }),
             !options.date.empty()
                 ? session.text("'{}' has nothing before {}.", book.title, shortDate(session, before))
             : options.income ? session.text("'{}' has no income yet.", book.title)
                              : session.text("'{}' has no expense yet.", book.title));
}

void listEdited(Session& session, const HistoryOptions& options) {
  const Date day = dayOrToday(session, options);
  ListedRecords records(session);
  const auto found = done(allTransTestForDate(session.root(), day));
  printLines(session, options.csv,
             linesOf<EditedEntry>(found, [&](const auto& entry) { return records.record(entry.eid); }),
             session.text("Nothing was entered or edited on {}.", shortDate(session, day)));
}

/// Whatever a person deleted since the moment, the latest first.
std::vector<ListLine> deletedSince(Session& session, Date since) {
  MVAppRoot& root = session.root();
  ListedRecords records(session);
  std::vector<ListLine> lines;
  std::set<std::string> debts;
  const auto take = [&](const std::array<int, 3>& types) {
    for (const auto& entry : done(recentlyDeletedTransactions(root, since, types))) {
      // Repayments that went with their debt come back with it.
      if (debts.contains(entry.transferEID)) continue;
      auto line = records.record(entry.eid);
      if (!line) continue;
      if (line->row.isDebt()) debts.insert(entry.eid);
      lines.push_back(std::move(*line));
    }
  };
  take(kSpendsAndTransfers);
  take({kind::kBorrowed, kind::kLent, kind::kTransferIn});
  take({kind::kRepaidToUs, kind::kRepaidByUs, kind::kBalanceCorrection});
  std::ranges::stable_sort(lines, std::greater<>(), [](const ListLine& line) { return line.row.editedDate; });
  return lines;
}

Date aMonthAgo(Session& session) {
  return session.calendar().dateBegin(session.calendar().dateWithDay(session.now(), -30));
}

void listDeleted(Session& session, const HistoryOptions& options) {
  const Date since = options.date.empty() ? aMonthAgo(session) : dayTyped(session, options.date);
  auto lines = deletedSince(session, since);
  for (auto& line : lines) {
    const auto when = session.text("deleted {}", shortDate(session, line.row.editedDate));
    line.mark = line.mark ? fmt::format("{}; {}", *line.mark, when) : when;
  }
  printLines(session, options.csv, lines,
             session.text("Nothing was deleted since {}.", shortDate(session, since)));
  if (!lines.empty() && !options.csv && !session.options().json) {
    session.say(session.text("Bring one back with: moniva restore {}", shortEid(lines.front().row.eid)));
  }
}

void listInstalments(Session& session, const HistoryOptions& options) {
  ListedRecords records(session);
  std::vector<ListLine> lines;
  for (const int type : {kind::kExpense, kind::kIncome}) {
    for (const auto& eid : done(installmentTransactions(session.root(), type))) {
      if (auto line = records.installment(eid)) lines.push_back(std::move(*line));
    }
  }
  std::ranges::stable_sort(lines, {}, [](const ListLine& line) { return line.row.datetime; });
  printLines(session, options.csv, lines, session.text("No instalment is left to be paid."));
}

// Lists by day.

void listUnpaid(Session& session, const HistoryOptions& options) {
  MVAppRoot& root = session.root();
  ListedRecords records(session);
  std::vector<ListDay> days;
  std::vector<UnpaidDay::Sum> totals;
  for (const auto& day : done(unpaidTransactions(root))) {
    auto& listed = days.emplace_back(ListDay{day.date, {}, day.sums, day.sday});
    listed.lines = linesOf<UnpaidEntry>(day.entries, [&](const auto& entry) { return records.row(entry); });
    for (const auto& sum : day.sums) {
      const auto same = std::ranges::find_if(totals, [&](const UnpaidDay::Sum& total) {
        return total.type == sum.type && total.currency == sum.currency;
      });
      if (same == totals.end()) {
        totals.push_back(sum);
      } else {
        same->amount += sum.amount;
        same->count += sum.count;
      }
    }
  }
  printDays(session, options.csv, std::move(days), totals,
            session.text("Nothing is left to be paid. Well done!"));
  if (options.csv || session.options().json) return;
  std::size_t instalments = 0;
  for (const int type : {kind::kExpense, kind::kIncome}) {
    instalments += done(installmentTransactions(root, type)).size();
  }
  if (instalments == 0) return;
  session.say(session.count("{} instalment is pending besides; see: moniva list instalments",
                            "{} instalments are pending besides; see: moniva list instalments",
                            static_cast<std::int64_t>(instalments)));
}

/// What comes in the seven days and what is overdue, by date.
std::vector<ListLine> dueSoon(Session& session) {
  MVAppRoot& root = session.root();
  ListedRecords records(session);
  auto lines = linesOf<SeriesEntry>(done(needPayTransactionsInSevenDay(root)),
                                    [&](const auto& entry) { return records.series(entry.eid); });
  for (auto& line : records.pendingBefore(endOfSevenDays(root))) lines.push_back(std::move(line));
  std::ranges::stable_sort(lines, {}, [](const ListLine& line) { return line.row.datetime; });
  return lines;
}

void listDue(Session& session, const HistoryOptions& options) {
  std::vector<ListDay> days;
  for (auto& line : dueSoon(session)) {
    if (days.empty() || !session.calendar().isSameDay(days.back().date, line.row.datetime)) {
      days.push_back(ListDay{line.row.datetime, {}, {}, 0});
    }
    days.back().lines.push_back(std::move(line));
  }
  printDays(session, options.csv, std::move(days), {},
            session.text("Nothing is due in the next seven days."));
}

void listDay(Session& session, const HistoryOptions& options) {
  MVAppRoot& root = session.root();
  const Date date = dayOrToday(session, options);
  std::optional<MonivaAccount> book;
  if (!options.book.empty()) book = bookNamed(session, options.book, Meant::groupsToo);
  auto day = done(allTransactionsForDate(root, date, book ? &*book : nullptr));
  // A record that an edit of many has changed is no part of a larger one.
  const auto parts =
      std::stable_partition(day.compounds.begin(), day.compounds.end(), [&](const std::string& eid) {
        const auto row = MVTransaction::transactionFromEID(root, eid);
        return row && row->transferEID.empty() && row->advancedType == advanced::kPlain;
      });
  day.spends.insert(day.spends.end(), day.compounds.begin(), parts);
  day.compounds.erase(day.compounds.begin(), parts);
  const std::tuple<const char*, std::string, const std::vector<std::string>*> kinds[] = {
      {"spends", session.text("Expenses and income"), &day.spends},
      {"compounds", session.text("Parts of larger records"), &day.compounds},
      {"installments", session.text("Instalments"), &day.installments},
      {"transfers", session.text("Transfers"), &day.transfers},
      {"debts", session.text("Debts and repayments"), &day.debts},
      {"repeats", session.text("Series with a record due"), &day.repeats}};
  const bool asJson = session.options().json && !options.csv;
  ListedRecords records(session);
  TransactionRows rows(session, options.csv);
  json::object object;
  for (const auto& [name, heading, keys] : kinds) {
    if (!keys->empty()) rows.addHeading(heading);
    for (const auto& eid : *keys) {
      const auto line = keys == &day.repeats        ? records.series(eid)
                        : keys == &day.installments ? records.installment(eid)
                                                    : records.row(eid);
      if (line) rows.add(line->row, line->mark);
    }
    if (asJson) object[name] = rows.takeJson();
  }
  if (asJson) return session.printJson(object);
  rows.print(session.text("There is nothing on {}.", shortDate(session, date)));
}

// Lists of other things than rows.

void listDebtsByPerson(Session& session, const HistoryOptions& options) {
  MVAppRoot& root = session.root();
  const auto reports =
      options.person.empty()
          ? done(debtorReportWithRepaid(root, options.settled))
          : done(debtReportWithDebtor(root, debtorNamed(session, options.person), options.settled));
  if (options.csv) {
    json::array array;
    for (const auto& report : reports) {
      for (const auto& debt : report.debtArray) array.push_back(jsonOf(session, debt));
    }
    return printCsv(session, array);
  }
  if (session.options().json) return session.printJson(jsonOf(session, reports));
  ListedRecords records(session);
  TransactionRows rows(session);
  for (const auto& report : reports) {
    rows.addHeading(fmt::format("{} : {}", report.heading, printable(report.person)));
    for (const auto& debt : report.debtArray) {
      auto line = records.row(debt.eid);
      if (!line) continue;
      const auto repaid = session.amounts().format(debt.repaidAmount, debt.currency);
      line->mark = debt.repaidFinished     ? session.text("settled")
                   : debt.repaidAmount > 0 ? session.text("{} repaid", repaid)
                                           : std::string();
      rows.add(line->row, line->mark);
    }
    for (const auto& sum : report.currencyArray) {
      rows.addSum(options.settled ? session.text("Repaid") : session.text("Still owed"),
                  session.amounts().format(options.settled ? sum.repaidAmount : sum.owed, sum.currency));
    }
  }
  rows.print(options.settled ? session.text("There is no settled debt.")
                             : session.text("There is no open debt."));
}

json::array alertsJson(Session& session, const AlertInfo& alerts) {
  json::array array;
  for (const auto& bill : alerts.bills) {
    array.push_back({{"kind", "bill"},
                     {"text", bill.text},
                     {"account", {{"pk", bill.account}, {"title", bill.title}}},
                     {"currency", bill.currency},
                     {"lastMonthBileAmount", bill.lastMonthBileAmount},
                     {"needReayAmount", bill.needReayAmount},
                     {"earlierNeedReayAmount", bill.earlierNeedReayAmount},
                     {"beginDate", isoDate(session, bill.beginDate)},
                     {"endDate", isoDate(session, session.calendar().dateEnd(bill.endDate))},
                     {"dueDate", isoDate(session, bill.dueDate)}});
  }
  for (const auto& due : alerts.installments) {
    array.push_back({{"kind", "instalment"},
                     {"text", due.text},
                     {"eid", due.eid},
                     {"transferEID", due.transferEID},
                     {"currency", due.currency},
                     {"amount", due.amount},
                     {"count", due.count},
                     {"paidCount", due.paidCount},
                     {"parts", due.parts},
                     {"datetime", isoDate(session, due.datetime)}});
  }
  return array;
}

void listAlerts(Session& session, const HistoryOptions& options) {
  const auto alerts = done(allAlertInfo(session.root()));
  if (options.csv) return printCsv(session, alertsJson(session, alerts));
  if (session.options().json) return session.printJson(alertsJson(session, alerts));
  Table table({{.title = session.text("Record")},
               {.title = session.text("Due")},
               {.title = session.text("What"), .maxWidth = 60},
               {.title = session.text("Amount"), .align = Align::right},
               {.title = ""}});
  const auto day = [&](Date date) {
    return Cell(shortDate(session, date),
                session.calendar().isHistory(date, session.now()) ? ink::yellow : ink::plain);
  };
  for (const auto& bill : alerts.bills) {
    const auto add = [&, of = &bill](Date due, const std::string& what, double amount,
                                     const std::string& mark) {
      table.addRow({"", day(due), printable(what), session.amounts().format(amount, of->currency),
                    Cell(mark, ink::dim)});
    };
    if (bill.earlierNeedReayAmount > 0) {
      add(bill.earlierDueDate, bill.title, bill.earlierNeedReayAmount, session.text("left of earlier bills"));
    }
    if (bill.needReayAmount > 0) {
      add(bill.dueDate, bill.text, bill.needReayAmount,
          bill.needReayAmount < bill.lastMonthBileAmount ? session.text("left of last month's bill")
                                                         : session.text("bill of last month"));
    }
  }
  for (const auto& due : alerts.installments) {
    const auto waiting =
        session.count("{} instalment due", "{} instalments due", static_cast<std::int64_t>(due.count));
    table.addRow({Cell(shortEid(due.eid), ink::dim), day(due.datetime), printable(due.text),
                  session.amounts().format(due.amount, due.currency),
                  Cell(waiting + ", " + session.text("{}/{} paid", due.paidCount, due.parts), ink::dim)});
  }
  if (table.empty()) return session.say(session.text("There is nothing to be reminded of."));
  session.out() << table.render(session.style(), session.width());
}

/// The lists there are, each with how many lines it has now.
void listLists(Session& session, bool csv) {
  MVAppRoot& root = session.root();
  const auto& book = root.monivaAccount;
  const Date tomorrow = session.calendar().midnightTomorrow(session.now());
  const auto edited = [&] {
    ListedRecords records(session);
    return linesOf<EditedEntry>(done(allTransTestForDate(root, session.now())),
                                [&](const auto& entry) { return records.record(entry.eid); })
        .size();
  };
  const auto ofDay = [&] {
    const auto day = done(allTransactionsForDate(root, session.now()));
    return day.spends.size() + day.compounds.size() + day.installments.size() + day.transfers.size() +
           day.debts.size() + day.repeats.size();
  };
  const auto alerts = done(allAlertInfo(root));
  const std::tuple<const char*, std::size_t, std::string> lists[] = {
      {"added", book ? done(getLastAddedSpend(*book, kind::kExpense, tomorrow)).size() : 0,
       session.text("the expenses entered last, 20 at most")},
      {"unpaid", static_cast<std::size_t>(done(unpaidEntriesCount(root))),
       session.text("what is to be paid")},
      {"due", dueSoon(session).size(), session.text("what comes in the next seven days")},
      {"instalments",
       done(installmentTransactions(root, kind::kExpense)).size() +
           done(installmentTransactions(root, kind::kIncome)).size(),
       session.text("instalments still to be paid")},
      {"debts", static_cast<std::size_t>(done(recentDebtCount(root))), session.text("open debts by person")},
      {"alerts", alerts.bills.size() + alerts.installments.size(),
       session.text("last month's bills and instalments that are due")},
      {"day", ofDay(), session.text("what happened today")},
      {"edited", edited(), session.text("what was entered or edited today")},
      {"deleted", deletedSince(session, aMonthAgo(session)).size(),
       session.text("what was deleted in the last 30 days")},
      {"templates", done(getTransactionTemplateList(root)).size(),
       session.text("records kept to be entered again")}};
  json::array array;
  Table table({{.title = session.text("List")},
               {.title = session.text("Records"), .align = Align::right},
               {.title = session.text("Shows")}});
  for (const auto& [name, count, shows] : lists) {
    array.push_back({{"list", name}, {"count", count}});
    table.addRow({fmt::format("moniva list {}", name),
                  Cell(std::to_string(count), count == 0 ? ink::dim : ink::plain), shows});
  }
  if (csv) return printCsv(session, array);
  if (session.options().json) return session.printJson(array);
  session.out() << table.render(session.style(), session.width());
}

}  // namespace

void addListCommands(CommandLine& line) {
  CLI::App* list = line.add(line.app(), "list");
  auto options = std::make_shared<HistoryOptions>();
  line.onRun(list, [options](Session& session) { listLists(session, options->csv); });
  addCsv(*list, options->csv);
  const auto add = [&](const char* name, void (*run)(Session&, const HistoryOptions&)) {
    CLI::App* command = line.add(*list, name);
    addCsv(*command, options->csv);
    line.onRun(command, [options, run](Session& session) { run(session, *options); });
    return command;
  };
  const auto addDate = [&](CLI::App* command, const char* name, const char* what) {
    command->add_option(name, options->date, what)->type_name("DATE")->check(notEmpty());
  };
  CLI::App* added = add("added", listAdded);
  added->add_option("-b,--book", options->book, "The book (else the current book)")
      ->type_name("NAME")
      ->check(notEmpty());
  added->add_flag("--income", options->income, "Income instead of expenses");
  addDate(added, "--before", toTranslate("Those before that day (else up to today)"));
  add("unpaid", listUnpaid);
  addDate(add("deleted", listDeleted), "--since",
          toTranslate("Deleted since that day (else in the last 30 days)"));
  CLI::App* day = add("day", listDay);
  addDate(day, "DATE", toTranslate("The day (else today)"));
  day->add_option("-b,--book", options->book, "Of that book or group of books only")
      ->type_name("NAME")
      ->check(notEmpty());
  addDate(add("edited", listEdited), "DATE", toTranslate("The day (else today)"));
  CLI::App* debts = add("debts", listDebtsByPerson);
  debts->add_flag("--settled", options->settled, "Those that were repaid instead of open ones");
  debts->add_option("--person", options->person, "Of that person only")->type_name("NAME")->check(notEmpty());
  add("due", listDue);
  add("instalments", listInstalments)->alias("installments");
  add("templates", [](Session& session, const HistoryOptions& chosen) {
    printTemplates(session, done(getTransactionTemplateList(session.root())), chosen.csv);
  });
  add("alerts", listAlerts);
}

}  // namespace moniva
