#include <algorithm>
#include <boost/json.hpp>
#include <map>

#include "model/entry_checks.h"
#include "model/record_entry.h"
#include "model/repeat_rule.h"
#include "recurrence/do_db_recurring.h"
#include "recurrence/series_edit.h"
#include "recurrence/series_standing.h"
#include "recurrence/series_view.h"
#include "recurrence/spend_repeat.h"
#include "ui/cli/command_error.h"
#include "ui/cli/commands/entry_fields.h"
#include "ui/cli/commands/list_lines.h"
#include "ui/cli/commands/repeat_texts.h"
#include "ui/cli/records.h"
#include "ui/cli/text_width.h"

namespace moniva {
namespace {

namespace json = boost::json;

/// What the commands on series take, each the part it needs.
struct RepeatOptions {
  std::string series;
  std::string rule;
  std::string book;
  bool stopped = false;
  bool all = false;
  bool dryRun = false;
};

// The list.

/// What one round of the series comes to, as of those of a rule altogether.
void countSums(SeriesOfRule& group) {
  std::map<std::string, double> expense;
  std::map<std::string, double> income;
  for (const auto& seed : group.array) {
    if (seed.advancedType == kind::kExpense) expense[seed.currency] += seed.amount;
    if (seed.advancedType == kind::kIncome) income[seed.currency] += seed.amount;
  }
  const auto texts = [](const std::map<std::string, double>& sums) {
    std::vector<double> amounts;
    for (const auto& sum : sums) amounts.push_back(withoutNoise(sum.second));
    return fmt::format("{}", fmt::join(amounts, " / "));
  };
  group.expenseSums.assign(expense.begin(), expense.end());
  group.incomeSums.assign(income.begin(), income.end());
  group.expenseSumString = texts(expense);
  group.incomeSumString = texts(income);
}

/// The series asked for by rule; rules without any are left out.
std::vector<SeriesOfRule> groupsAsked(Session& session, const RepeatOptions& options) {
  MVAppRoot& root = session.root();
  const std::string wanted = options.rule.empty() ? std::string() : ruleTyped(session, options.rule);
  std::optional<MonivaAccount> book;
  if (!options.book.empty()) book = bookNamed(session, options.book);
  const auto over = options.stopped ? done(stoppedSeries(root)) : std::vector<MVTransaction>();
  std::vector<SeriesOfRule> groups;
  const auto addGroup = [&](SeriesOfRule group) {
    if (book) {
      std::erase_if(group.array, [&](const MVTransaction& seed) {
        return !seed.bookAccount || seed.bookAccount->pk != book->pk;
      });
    }
    if (options.stopped || book) countSums(group);
    if (!group.array.empty()) groups.push_back(std::move(group));
  };
  const auto overWhere = [&](std::string_view name, const auto& isOfIt) {
    SeriesOfRule group;
    group.repeatType = name;
    std::ranges::copy_if(over, std::back_inserter(group.array), isOfIt, &MVTransaction::repeat);
    return group;
  };
  for (const auto rule : kRepeatRules) {
    if (!wanted.empty() && rule != wanted) continue;
    addGroup(options.stopped ? overWhere(rule, [&](const auto& repeat) { return repeat == rule; })
                             : done(recurringTransactionsFor(root, rule)));
  }
  if (!wanted.empty()) return groups;
  SeriesOfRule damaged = overWhere("", [](const auto& repeat) { return !repeatRuleFrom(repeat); });
  if (!options.stopped) damaged.array = done(seriesWithoutRule(root));
  addGroup(std::move(damaged));
  return groups;
}

void addSums(Session& session, Table& table, const SeriesOfRule& group) {
  const auto add = [&](const std::string& name, const std::vector<std::pair<std::string, double>>& sums,
                       bool isIncome) {
    for (const auto& [code, sum] : sums) {
      const auto currency = code.empty() ? session.defaultCurrency() : code;
      const auto& amounts = session.amounts();
      table.addRow({"", "", Cell(name, ink::dim), "", "",
                    Cell(isIncome ? amounts.formatSigned(withoutNoise(sum), currency)
                                  : amounts.format(withoutNoise(sum), currency),
                         ink::dim)});
    }
  };
  if (group.array.size() < 2) return;
  add(session.text("Expenses, each time"), group.expenseSums, false);
  add(session.text("Income, each time"), group.incomeSums, true);
}

/// When the series is due, of one that is over when its last record was; blank where it makes nothing.
std::string dayText(Session& session, const MVTransaction& seed) {
  if (seed.deleted == 0)
    return checkMakes(seed) ? shortDate(session, dayHere(seed, seed.datetime)) : std::string();
  const auto latest = done(latestRecordOf(session.root(), seed.eid));
  return latest ? shortDate(session, *latest) : std::string();
}

void listSeries(Session& session, const RepeatOptions& options) {
  const auto groups = groupsAsked(session, options);
  if (session.options().json) {
    json::array array;
    for (const auto& group : groups) {
      json::array seeds;
      for (const auto& seed : group.array) seeds.push_back(seriesJson(session, seed));
      array.push_back({{"repeatType", group.repeatType},
                       {"array", std::move(seeds)},
                       {"expenseSumString", group.expenseSumString},
                       {"incomeSumString", group.incomeSumString}});
    }
    return session.printJson(array);
  }
  if (groups.empty()) {
    return session.say(options.stopped ? session.text("No series is over.")
                                       : session.text("There is no such series."));
  }
  Table table(
      {{.title = session.text("Series"), .isWhole = true},
       {.title = options.stopped ? session.text("Last record") : session.text("Next"), .isWhole = true},
       {.title = session.text("What"), .maxWidth = 60},
       {.title = session.text("With"), .maxWidth = 40},
       {.title = session.text("Account or book")},
       {.title = session.text("Amount"), .align = Align::right},
       {.title = session.text("Until")}});
  for (const auto& group : groups) {
    if (!table.empty()) table.addRow({});
    table.addRow({"", "",
                  group.repeatType.empty()
                      ? Cell(session.text("by no rule: makes nothing"), ink::bold | ink::yellow)
                      : Cell(ruleText(session, group.repeatType), ink::bold)});
    for (const auto& seed : group.array) {
      const auto& holder = seed.paymentAccount ? seed.paymentAccount : seed.bookAccount;
      table.addRow({Cell(shortEid(seed.eid), ink::dim), dayText(session, seed), whatText(session, seed),
                    withText(seed), printable(holder ? holder->title : std::string()),
                    Cell(amountText(session, seed), comesIn(recordTypeOf(seed)) ? ink::green : ink::plain),
                    seed.repeatEndDate == Date{} ? std::string()
                                                 : shortDate(session, dayHere(seed, seed.repeatEndDate))});
    }
    if (!options.stopped && !group.repeatType.empty()) addSums(session, table, group);
  }
  session.out() << table.render(session.style(), session.width());
}

// Ending, deleting, filling.

void stopSeries(Session& session, const RepeatOptions& options) {
  std::string eid;
  std::int64_t records = 0;
  changeStore(session, [&] {
    const auto seed = seriesTyped(session, options.series);
    eid = seed.eid;
    done(stopRepeat(seed));
    const auto made = done(occurrencesOf(session.root(), eid));
    records = std::ranges::count(made, 0, &SeriesOccurrence::deleted);
  });
  const auto seed = seriesTyped(session, eid);
  if (session.options().json) return session.printJson(seriesJson(session, seed));
  auto text = session.text("Stopped the series {}.", seriesText(session, seed));
  if (records > 0) text += " " + session.count("Its {} record stays.", "Its {} records stay.", records);
  if (repeatRuleFrom(seed.repeat)) {
    text += " " + session.text("Take it up again with: moniva repeat resume {}", shortEid(eid));
  }
  session.answer(text);
}

void deleteTyped(Session& session, const RepeatOptions& options) {
  std::string text;
  std::string eid;
  std::int64_t records = 0;
  changeOrTry(
      session, options.dryRun,
      [&] {
        const auto seed = seriesTyped(session, options.series);
        eid = seed.eid;
        text = seriesText(session, seed);
        records = done(deleteSeries(session.root(), eid));
      },
      [&] {
        if (session.options().json) return session.printJson({{"eid", eid}, {"records", records}});
        session.answer(
            records == 0 && options.dryRun ? session.text("Would delete the series {} for good.", text)
            : records == 0                 ? session.text("Deleted the series {} for good.", text)
            : options.dryRun ? session.count("Would delete the series {} for good, with its {} record.",
                                             "Would delete the series {} for good, with its {} records.",
                                             records, text, records)
                             : session.count("Deleted the series {} for good, with its {} record.",
                                             "Deleted the series {} for good, with its {} records.", records,
                                             text, records));
      });
}

void refillOne(Session& session, const RepeatOptions& options) {
  std::string eid;
  SeriesProgress progress;
  changeOrTry(
      session, options.dryRun,
      [&] {
        const auto seed = seriesTyped(session, options.series);
        eid = seed.eid;
        if (seed.deleted != 0) {
          throw refused("the series is over; take it up again with: moniva repeat resume {}", shortEid(eid));
        }
        progress = done(createRepeatItemsFrom(seed, done(beginOfSeries(seed)), session.now()));
      },
      [&] {
        const auto seed = seriesTyped(session, eid);
        if (session.options().json) {
          auto object = seriesJson(session, seed);
          object["made"] = progress.made;
          object["more"] = progress.more;
          return session.printJson(object);
        }
        const auto what = seriesText(session, seed);
        const std::int64_t made = progress.made;
        session.answer((made == 0
                            ? session.text("Nothing was missing of {}.", what)
                            : session.count("Added {} record that was missing of {}.",
                                            "Added {} records that were missing of {}.", made, made, what)) +
                       (progress.more ? " " + session.text("There are more: run it again.") : ""));
      });
}

void refillAll(Session& session, const RepeatOptions& options) {
  CatchUp caught;
  const auto fill = [&] { caught = done(updateRecurringTransactionsForAll(session.root())); };
  const auto tell = [&] {
    if (session.options().json) {
      boost::json::array troubles;
      for (const auto& trouble : caught.troubles) troubles.emplace_back(trouble.english());
      return session.printJson({{"series", caught.series},
                                {"made", caught.made},
                                {"ended", caught.ended},
                                {"troubles", std::move(troubles)}});
    }
    const std::int64_t made = caught.made;
    if (made > 0) {
      session.answer(session.count("Added {} missing record. Series: {}.",
                                   "Added {} missing records. Series: {}.", made, made, caught.series));
    } else if (caught.troubles.empty()) {
      session.answer(session.text("Nothing was missing of any series."));
    }
  };
  if (options.dryRun) {
    changeOrTry(session, true, fill, tell);
  } else {
    // Each series is a change of its own: all of them together could be more than fits the log of the store.
    fill();
    entriesChanged(session.root());
    tell();
  }
  for (const auto& trouble : caught.troubles) session.complain(trouble.in(session.translate()));
  if (!caught.troubles.empty()) throw refused("not every series could be brought up to date");
}

void refill(Session& session, const RepeatOptions& options) {
  if (options.all == !options.series.empty()) throw notUnderstood("name a series, or say --all");
  return options.all ? refillAll(session, options) : refillOne(session, options);
}

}  // namespace

void addRepeatCommands(CommandLine& line) {
  CLI::App* family = line.add(line.app(), "repeat");
  family->require_subcommand(1);
  const auto command = [&](const char* name, void (*run)(Session&, const RepeatOptions&)) {
    CLI::App* app = line.add(*family, name);
    auto options = std::make_shared<RepeatOptions>();
    line.onRun(app, [options, run](Session& session) { run(session, *options); });
    return std::pair(app, options);
  };
  constexpr const char* kSeries = toTranslate("The series, or one of its records: the eid, or the end of it");
  {
    const auto [list, options] = command("list", listSeries);
    list->add_option("--rule", options->rule, "Those of that rule, such as Monthly")
        ->type_name("RULE")
        ->check(notEmpty());
    list->add_option("-b,--book", options->book, "Those of that book")->type_name("NAME")->check(notEmpty());
    list->add_flag("--stopped", options->stopped, "Those that are over instead");
  }
  addRepeatShow(line, *family);
  addRepeatEdit(line, *family);
  {
    const auto [stop, options] = command("stop", stopSeries);
    stop->add_option("SERIES", options->series, kSeries)->required();
  }
  {
    const auto [remove, options] = command("delete", deleteTyped);
    remove->add_option("SERIES", options->series, kSeries)->required();
    addDryRun(*remove, options->dryRun);
  }
  {
    const auto [fill, options] = command("refill", refill);
    fill->add_option("SERIES", options->series, kSeries);
    fill->add_flag("--all", options->all, "Every series");
    addDryRun(*fill, options->dryRun);
  }
}

}  // namespace moniva
