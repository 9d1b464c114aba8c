#include <algorithm>
#include <boost/json.hpp>
#include <limits>
#include <map>

#include "model/entry_checks.h"
#include "recurrence/series_standing.h"
#include "recurrence/series_view.h"
#include "ui/cli/command_error.h"
#include "ui/cli/commands/list_lines.h"
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

std::string currencyOfDue(Session& session, const MVTransaction& row) {
  return row.currency.empty() ? session.defaultCurrency() : row.currency;
}

bool isCounted(const MVTransaction& row) {
  return recordTypeOf(row) == kind::kIncome || recordTypeOf(row) == kind::kExpense;
}

void countDue(Session& session, DueSums& sums, const MVTransaction& row) {
  if (!isCounted(row)) return;
  auto& sum = sums[currencyOfDue(session, row)];
  double& side = recordTypeOf(row) == kind::kIncome ? sum.income : sum.expense;
  side = withoutNoise(side + row.amount);
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

void printDueTable(Session& session, const std::vector<ListLine>& lines) {
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
  for (const auto& [row, mark] : lines) {
    countDue(session, sums, row);
    const auto currency = currencyOfDue(session, row);
    const auto& holder = row.paymentAccount ? row.paymentAccount : row.bookAccount;
    const bool isOverdue = calendar.isHistory(row.datetime, session.now());
    const bool isToday = calendar.isToday(row.datetime, session.now());
    const auto state = isOverdue ? session.text("overdue") : isToday ? session.text("today") : std::string();
    const auto marks = state.empty() ? mark.value_or("") : fmt::format("{}, {}", state, mark.value_or(""));
    const Ink ink = isOverdue ? ink::yellow : isToday ? ink::cyan : ink::plain;
    table.addRow({Cell(shortEid(row.eid), ink::dim), Cell(shortDate(session, row.datetime), ink),
                  whatText(session, row), withText(row), printable(holder ? holder->title : std::string()),
                  Cell(amountText(session, row), comesIn(recordTypeOf(row)) ? ink::green : ink::plain),
                  Cell(isCounted(row) ? netText(session, sums[currency].net(), currency) : "", ink::dim),
                  Cell(marks, ink)});
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

json::array dueJson(Session& session, const std::vector<ListLine>& lines, DueSums& sums) {
  json::array array;
  for (const auto& [row, mark] : lines) {
    countDue(session, sums, row);
    auto object = jsonOf(session, row);
    object["repeat"] = row.type() == kind::kRepeatSeed ? row.repeat : std::string();
    object["isOverdue"] = session.calendar().isHistory(row.datetime, session.now());
    object["runningTotal"] = sums[currencyOfDue(session, row)].net();
    for (const char* name : {"paymentAccount", "paymentAccountB", "bookAccount", "mvCategory", "vendor"}) {
      // The columns of a table are the same whatever the rows refer to.
      if (object[name].is_null()) object[name] = json::object{{"pk", ""}, {"title", ""}};
    }
    array.push_back(std::move(object));
  }
  return array;
}

void listWhatIsDue(Session& session, const DueOptions& options) {
  const Calendar& calendar = session.calendar();
  const Date last = calendar.dateWithDay(session.now(), static_cast<int>(options.days));
  const auto lines = linesDue(session, options, calendar.oneDayAfter(last));
  DueSums sums;
  if (options.csv) return printCsv(session, dueJson(session, lines, sums));
  if (session.options().json) {
    json::object object{{"until", isoDate(session, calendar.dateEnd(last))},
                        {"transactions", dueJson(session, lines, sums)}};
    json::array totals;
    for (const auto& [currency, sum] : sums) {
      totals.push_back({{"currency", currency}, {"expense", sum.expense}, {"income", sum.income}});
    }
    object["sums"] = std::move(totals);
    return session.printJson(object);
  }
  if (!lines.empty()) return printDueTable(session, lines);
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
  due->add_option("-b,--book", options->book, "Of that book only; transfers belong to none")
      ->type_name("NAME")
      ->check(notEmpty());
  addCsv(*due, options->csv);
  line.onRun(due, [options](Session& session) { listWhatIsDue(session, *options); });
}

}  // namespace moniva
