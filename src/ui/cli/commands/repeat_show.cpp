#include <algorithm>
#include <boost/json.hpp>
#include <map>
#include <set>

#include "model/entry_checks.h"
#include "recurrence/series_standing.h"
#include "recurrence/series_view.h"
#include "recurrence/spend_repeat.h"
#include "ui/cli/command_error.h"
#include "ui/cli/commands/account_rows.h"
#include "ui/cli/commands/list_lines.h"
#include "ui/cli/commands/repeat_texts.h"
#include "ui/cli/commands/transfer_texts.h"
#include "ui/cli/entry_options.h"
#include "ui/cli/record_texts.h"
#include "ui/cli/records.h"
#include "ui/cli/text_width.h"

namespace moniva {
namespace {

/// What a series has made: the records in use, what they come to in each currency, and those to be listed.
struct SeriesRecords {
  std::int64_t count = 0;
  std::map<std::string, double> sums;
  std::vector<std::string> listed;  ///< the earliest first
  std::optional<Date> first;        ///< of those in use the date of the earliest
};

SeriesRecords recordsOf(Session& session, const MVTransaction& seed, bool all) {
  constexpr std::size_t kShown = 5;
  MVAppRoot& root = session.root();
  SeriesRecords records;
  std::set<std::string, std::less<>> live;
  for (const auto& one : done(occurrencesOf(root, seed.eid))) {
    if (one.deleted == 0) live.insert(one.eid);
    if (one.deleted == 0 && !records.first) records.first = one.datetime;
    if (one.deleted == 0 || all) records.listed.push_back(one.eid);
  }
  records.count = static_cast<std::int64_t>(live.size());
  const Value arguments[] = {seed.eid};
  done(MVTransaction::transactionsWhere(
      root, "repeat_seed = ? and deleted = 0", arguments, [&](const MVTransaction& row) {
        if (!live.contains(row.eid)) return;
        const auto code = row.currency.empty() ? session.defaultCurrency() : row.currency;
        records.sums[code] += row.amount;
      }));
  if (!all && records.listed.size() > kShown) {
    records.listed.erase(records.listed.begin(), records.listed.end() - kShown);
  }
  return records;
}

std::string stateText(const Session& session, const MVTransaction& seed, const Result<>& makes) {
  if (!makes) return session.text("makes nothing: {}", makes.error().phrase->in(session.translate()));
  if (seed.deleted == 0) return session.text("goes on");
  const auto row = TransactionItem::fromEID(seed.root(), seed.eid);
  if (row && row->ipid == "stopRepeat by division") {
    return session.text("over: it was divided, and goes on as another series");
  }
  return row && row->ipid == "stopRepeat by Date" ? session.text("over: its last day has passed")
                                                  : session.text("stopped");
}

void printFacts(Session& session, const MVTransaction& seed, const SeriesRecords& records,
                const std::vector<Date>& coming, const Result<>& makes) {
  Facts facts(session);
  const auto add = [&](const std::string& name, const std::string& value) {
    if (!value.empty()) facts.add(name, value);
  };
  const auto title = [](const auto& holder) { return holder ? printable(holder->title) : std::string(); };
  facts.add(session.text("Repeats"), shownRule(session, seed.repeat));
  const auto transfer = Transfer::transferFromSeed(session.root(), seed.eid);
  if (!transfer) facts.add(session.text("Amount"), amountText(session, seed));
  add(session.text("Category"), printable(seed.categoryString));
  if (seed.vendor && !seed.vendor->isNoVendor()) {
    add(seed.advancedType == kind::kIncome ? session.text("Payer") : session.text("Payee"),
        printable(seed.vendorString));
  }
  if (transfer) {
    const TransferTexts texts(session, *transfer);
    facts.add(session.text("From"), texts.from);
    facts.add(session.text("To"), texts.to);
    facts.add(session.text("Sent"), texts.left);
    facts.add(session.text("Arrived"), texts.arrived);
    add(session.text("Fee"), texts.fee);
  } else {
    add(session.text("Account"), title(seed.paymentAccount));
  }
  add(session.text("Book"), title(seed.bookAccount));
  add(session.text("Note"), printable(seed.note));
  if (seed.repeatBeginDate != Date{}) {
    // One that goes on with records of another waits for days after those.
    const Date begun = dayHere(seed, seed.repeatBeginDate);
    facts.add(session.text("Began"), shortDate(session, std::min(begun, records.first.value_or(begun))));
  }
  facts.add(session.text("Until"), seed.repeatEndDate == Date{}
                                       ? session.text("no end")
                                       : shortDate(session, dayHere(seed, seed.repeatEndDate)));
  std::vector<std::string> days;
  for (const Date day : coming) days.push_back(shortDate(session, day));
  facts.add(session.text("State"), stateText(session, seed, makes));
  if (!days.empty()) facts.add(session.text("Next"), fmt::format("{}", fmt::join(days, "; ")));
  std::string made = session.count("{} record", "{} records", records.count);
  for (const auto& [code, sum] : records.sums) {
    made += ", " + session.amounts().format(withoutNoise(sum), code);
  }
  facts.add(session.text("Made"), made);
  facts.add(session.text("Series"), shortEid(seed.eid));
  facts.print();
}

}  // namespace

void showSeries(Session& session, const MVTransaction& seed, const SeriesShown& shown) {
  const auto records = recordsOf(session, seed, shown.all);
  const auto makes = seed.deleted == 0 ? checkMakes(seed) : Result<>();
  const auto coming = makes ? done(comingDates(seed, Date{1e15}, static_cast<std::size_t>(shown.coming)))
                            : std::vector<Date>();
  const bool isTwice = seed.deleted == 0 && done(hasDuplicateRepeatSeed(seed));
  TransactionRows rows(session);
  for (const auto& eid : records.listed) rows.addRow(eid);
  if (session.options().json) {
    auto object = seriesJson(session, seed);
    boost::json::array sums;
    for (const auto& [code, sum] : records.sums) {
      sums.push_back({{"currency", code}, {"amount", withoutNoise(sum)}});
    }
    boost::json::array days;
    for (const Date day : coming) days.push_back(isoDate(session, day));
    object["count"] = records.count;
    object["sums"] = std::move(sums);
    object["occurrences"] = rows.takeJson();
    object["coming"] = std::move(days);
    object["trouble"] = makes ? std::string() : makes.error().why;
    object["hasDuplicate"] = isTwice;
    if (const auto transfer = Transfer::transferFromSeed(session.root(), seed.eid)) {
      object["amountB"] = transfer->amountB;
      object["serviceCharge"] = transfer->serviceCharge;
    }
    return session.printJson(object);
  }
  printFacts(session, seed, records, coming, makes);
  if (!rows.empty()) {
    session.out() << '\n';
    rows.print("");
    const auto listed = static_cast<std::int64_t>(records.listed.size());
    if (!shown.all && listed < records.count) {
      session.say(session.text("These are the last {}; --all lists every one.", listed));
    }
  }
  if (isTwice) session.say(session.text("Another series says the same; see: moniva repeat list"));
}

void addRepeatShow(CommandLine& line, CLI::App& family) {
  struct ShowOptions {
    std::string series;
    SeriesShown shown;
  };
  constexpr int kMostComing = 1000;
  CLI::App* show = line.add(family, "show");
  auto options = std::make_shared<ShowOptions>();
  show->add_option("SERIES", options->series, "The series, or one of its records: the eid, or the end of it")
      ->required();
  show->add_option("--coming", options->shown.coming, "How many of the next days")
      ->type_name("COUNT")
      ->check(CLI::Range(0, kMostComing));
  show->add_flag("--all", options->shown.all, "Every record it has made, deleted ones too");
  line.onRun(show, [options](Session& session) {
    showSeries(session, seriesTyped(session, options->series), options->shown);
  });
}

}  // namespace moniva
