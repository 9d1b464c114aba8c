#include <algorithm>
#include <boost/json.hpp>
#include <limits>
#include <map>

#include "model/entry_checks.h"
#include "recurrence/series_standing.h"
#include "recurrence/series_view.h"
#include "reminders/bill_reminders.h"
#include "ui/cli/command_error.h"
#include "ui/cli/commands/bill_rows.h"
#include "ui/cli/commands/list_lines.h"
#include "ui/cli/commands/reminder_fields.h"
#include "ui/cli/entry_options.h"
#include "ui/cli/record_texts.h"
#include "ui/cli/records.h"
#include "ui/cli/text_width.h"

namespace moniva {
namespace {

namespace json = boost::json;

struct DueOptions {
  std::int64_t days = 7;
  std::string book;
  bool csv = false;
};

/// What is due in one currency; transfers are neither spent nor earned.
struct DueSum {
  double expense = 0;
  double income = 0;
  double net() const { return withoutNoise(income - expense); }
};
using DueSums = std::map<std::string, DueSum>;

/// A record that is due, or a bill.
struct DueEntry {
  Date date;
  std::optional<ListLine> line;
  std::optional<OpenBill> open;
  bool isReminded = false;

  /// Income or expense; 0 for a transfer, which is neither.
  int type() const {
    if (open) return kind::kExpense;
    const int type = recordTypeOf(line->row);
    return type == kind::kIncome || type == kind::kExpense ? type : 0;
  }
  double amount() const { return open ? open->amount : line->row.amount; }
};

std::string currencyOfDue(Session& session, const DueEntry& entry) {
  if (entry.open) return entry.open->account.currency;
  const auto& currency = entry.line->row.currency;
  return currency.empty() ? session.defaultCurrency() : currency;
}

void countDue(Session& session, DueSums& sums, const DueEntry& entry) {
  if (entry.type() == 0) return;
  auto& sum = sums[currencyOfDue(session, entry)];
  double& side = entry.type() == kind::kIncome ? sum.income : sum.expense;
  side = withoutNoise(side + entry.amount());
}

/// What is to be paid is plain; what is left over has a plus.
std::string netText(Session& session, double net, const std::string& currency) {
  return net > 0 ? session.amounts().formatSigned(net, currency) : session.amounts().format(-net, currency);
}

/// What is pending up to the moment, and what series will make by then, each record at its day.
std::vector<ListLine> linesDue(Session& session, const DueOptions& options, Date end) {
  MVAppRoot& root = session.root();
  ListedRecords records(session);
  auto lines = records.pendingBefore(end);
  std::optional<MonivaAccount> book;
  if (!options.book.empty()) book = bookNamed(session, options.book);
  const auto isOfBook = [&](const MVTransaction& row) {
    return !book || (row.bookAccount && row.bookAccount->pk == book->pk);
  };
  const auto leaveOut = [&](const MVTransaction& seed, const Refusal& why) {
    session.complain(session.text("The series {} is left out: {}", shortEid(seed.eid),
                                  why.phrase->in(session.translate())));
  };
  std::erase_if(lines, [&](const ListLine& line) { return !isOfBook(line.row); });
  // A series goes by the days of its own zone, which may be due before the moment they begin with is.
  for (const auto& entry : done(seriesDueBefore(root, session.calendar().dateWithDay(end, 2)))) {
    const auto line = records.series(entry.eid);
    if (!line || !isOfBook(line->row)) continue;
    if (const auto makes = checkMakes(line->row); !makes) {
      leaveOut(line->row, makes.error());
      continue;
    }
    for (const Date day : done(comingDates(line->row, end, std::numeric_limits<std::size_t>::max()))) {
      lines.push_back(*line);
      lines.back().row.datetime = day;
    }
  }
  for (const auto& seed : done(seriesWithoutDate(root))) {
    const auto makes = checkMakes(seed);
    if (!makes && isOfBook(seed)) leaveOut(seed, makes.error());
  }
  std::ranges::stable_sort(lines, {}, [](const ListLine& line) { return line.row.datetime; });
  return lines;
}

/// The records and, of no book and for no table of records, the bills, each at its day.
std::vector<DueEntry> entriesDue(Session& session, const DueOptions& options, Date end) {
  const ComingReminders reminders(session);
  std::vector<DueEntry> entries;
  for (auto& line : linesDue(session, options, end)) {
    const Date date = line.row.datetime;
    // Of a series the next record alone is reminded of.
    const bool isSeries = line.row.type() == kind::kRepeatSeed;
    const bool isReminded = reminders.hasOne(line.row.eid, isSeries ? date : dueDateOf(line.row));
    entries.push_back({date, std::move(line), std::nullopt, isReminded});
  }
  if (!options.book.empty() || options.csv) return entries;
  for (auto& open : billsDueBefore(session, end)) {
    const Date date = open.dueDate;
    const bool isReminded = reminders.hasOne(open.account.pk, date);
    entries.push_back({date, std::nullopt, std::move(open), isReminded});
  }
  std::ranges::stable_sort(entries, {}, &DueEntry::date);
  return entries;
}

/// "overdue, pending, reminded".
std::string marksOfDue(Session& session, const DueEntry& entry) {
  const Calendar& calendar = session.calendar();
  std::string marks;
  const auto mark = [&](const std::string& text) {
    if (!text.empty()) marks += (marks.empty() ? "" : ", ") + text;
  };
  if (calendar.isHistory(entry.date, session.now())) mark(session.text("overdue"));
  if (calendar.isToday(entry.date, session.now())) mark(session.text("today"));
  if (entry.line) mark(entry.line->mark.value_or(""));
  if (entry.open) {
    mark(entry.open->kind == OpenBill::Kind::running ? session.text("bill so far") : session.text("bill"));
  }
  if (entry.isReminded) mark(session.text("reminded"));
  return marks;
}

std::vector<Cell> dueCells(Session& session, const DueEntry& entry, const Ink& ink) {
  const Cell date(shortDate(session, entry.date), ink);
  if (entry.open) {
    const auto& open = *entry.open;
    const auto what =
        open.kind == OpenBill::Kind::earlier
            ? session.text("Earlier bills")
            : session.text("Bill of {}", billMonthText(session, open.account, open.bill.beginDate));
    return {"",
            date,
            what,
            "",
            printable(open.account.title),
            session.amounts().format(open.amount, open.account.currency)};
  }
  const auto& row = entry.line->row;
  const auto& holder = row.paymentAccount ? row.paymentAccount : row.bookAccount;
  return {Cell(shortEid(row.eid), ink::dim),
          date,
          whatText(session, row),
          withText(row),
          printable(holder ? holder->title : std::string()),
          Cell(amountText(session, row), comesIn(recordTypeOf(row)) ? ink::green : ink::plain)};
}

void printDueTable(Session& session, const std::vector<DueEntry>& entries) {
  const Calendar& calendar = session.calendar();
  Table table({{.title = session.text("Record"), .isWhole = true},
               {.title = session.text("Due"), .isWhole = true},
               {.title = session.text("What"), .maxWidth = 60},
               {.title = session.text("With"), .maxWidth = 40},
               {.title = session.text("Account or book")},
               {.title = session.text("Amount"), .align = Align::right},
               {.title = session.text("So far"), .align = Align::right},
               {.title = ""}});
  DueSums sums;
  for (const auto& entry : entries) {
    countDue(session, sums, entry);
    const auto currency = currencyOfDue(session, entry);
    const Ink ink = calendar.isHistory(entry.date, session.now()) ? ink::yellow
                    : calendar.isToday(entry.date, session.now()) ? ink::cyan
                                                                  : ink::plain;
    auto cells = dueCells(session, entry, ink);
    cells.emplace_back(entry.type() != 0 ? netText(session, sums[currency].net(), currency) : "", ink::dim);
    cells.emplace_back(marksOfDue(session, entry), ink);
    table.addRow(std::move(cells));
  }
  if (!sums.empty()) table.addRule();
  for (const auto& [currency, sum] : sums) {
    const auto add = [&](const std::string& name, const std::string& amount) {
      table.addRow({"", "", Cell(name, ink::bold), "", "", Cell(amount, ink::bold)});
    };
    if (sum.expense > 0) add(session.text("To be paid"), session.amounts().format(sum.expense, currency));
    if (sum.income > 0) add(session.text("Comes in"), session.amounts().formatSigned(sum.income, currency));
  }
  session.out() << table.render(session.style(), session.width());
}

json::object openBillJson(Session& session, const OpenBill& open) {
  if (open.kind != OpenBill::Kind::earlier) return jsonOf(session, open.account, open.bill);
  return {{"account", {{"pk", open.account.pk}, {"title", open.account.title}}},
          {"currency", open.account.currency},
          {"dueDate", isoDate(session, session.calendar().dateBegin(open.dueDate))},
          {"earlierNeedReayAmount", open.amount}};
}

json::object recordJson(Session& session, const MVTransaction& row) {
  auto object = jsonOf(session, row);
  object["repeat"] = row.type() == kind::kRepeatSeed ? row.repeat : std::string();
  for (const char* name : {"paymentAccount", "paymentAccountB", "bookAccount", "mvCategory", "vendor"}) {
    // The columns of a table are the same whatever the rows refer to.
    if (object[name].is_null()) object[name] = json::object{{"pk", ""}, {"title", ""}};
  }
  return object;
}

struct DueJson {
  json::array transactions;
  json::array bills;
  DueSums sums;
};

DueJson dueJson(Session& session, const std::vector<DueEntry>& entries) {
  DueJson made;
  for (const auto& entry : entries) {
    countDue(session, made.sums, entry);
    auto object = entry.open ? openBillJson(session, *entry.open) : recordJson(session, entry.line->row);
    object["isOverdue"] = session.calendar().isHistory(entry.date, session.now());
    object["runningTotal"] = made.sums[currencyOfDue(session, entry)].net();
    object["isReminded"] = entry.isReminded;
    if (entry.open) object["isRunning"] = entry.open->kind == OpenBill::Kind::running;
    (entry.open ? made.bills : made.transactions).push_back(std::move(object));
  }
  return made;
}

void listWhatIsDue(Session& session, const DueOptions& options) {
  const Calendar& calendar = session.calendar();
  const Date last = calendar.dateWithDay(session.now(), static_cast<int>(options.days));
  const auto entries = entriesDue(session, options, calendar.oneDayAfter(last));
  if (options.csv) return printCsv(session, dueJson(session, entries).transactions);
  if (session.options().json) {
    auto made = dueJson(session, entries);
    json::array totals;
    for (const auto& [currency, sum] : made.sums) {
      totals.push_back({{"currency", currency}, {"expense", sum.expense}, {"income", sum.income}});
    }
    return session.printJson(json::object{{"until", isoDate(session, calendar.dateEnd(last))},
                                          {"transactions", std::move(made.transactions)},
                                          {"bills", std::move(made.bills)},
                                          {"sums", std::move(totals)}});
  }
  if (!entries.empty()) return printDueTable(session, entries);
  session.say(session.text("Nothing is due up to {}.", shortDate(session, last)));
}

}  // namespace

void addDueCommand(CommandLine& line) {
  constexpr int kMostDays = 3660;
  CLI::App* due = line.add(line.app(), "due");
  auto options = std::make_shared<DueOptions>();
  due->add_option("--days", options->days, "How many days from today")
      ->type_name("COUNT")
      ->check(CLI::Range(0, kMostDays));
  due->add_option("-b,--book", options->book, "Of that book only; transfers and bills belong to none")
      ->type_name("NAME")
      ->check(notEmpty());
  addCsv(*due, options->csv);
  line.onRun(due, [options](Session& session) { listWhatIsDue(session, *options); });
}

}  // namespace moniva
