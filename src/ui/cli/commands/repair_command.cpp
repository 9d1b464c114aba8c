#include <boost/json.hpp>
#include <set>

#include "app/further_repairs.h"
#include "recurrence/series_repair.h"
#include "ui/cli/command_error.h"
#include "ui/cli/commands/entry_fields.h"
#include "ui/cli/commands/repeat_texts.h"
#include "ui/cli/entry_options.h"
#include "ui/cli/table.h"

namespace moniva {
namespace {

/// What the series is: "Rent, Lang, €500.00, monthly"; "" where there is none.
std::string damagedSeriesText(Session& session, const std::string& seed) {
  const auto found = MVTransaction::transactionFromEID(session.root(), seed);
  if (!found || found->type() != kind::kRepeatSeed) return {};
  return seriesText(session, *found);
}

boost::json::array findingsJson(const SeriesFindings& findings) {
  boost::json::array list;
  for (const auto& one : findings) {
    list.push_back({{"repeatSeed", one.seed},
                    {"what", one.what.english()},
                    {"records", one.records},
                    {"mendable", one.mendable}});
  }
  return list;
}

void printFindings(Session& session, const SeriesFindings& findings) {
  Table table({{.title = session.text("Series"), .isWhole = true},
               {.title = session.text("What"), .maxWidth = 60},
               {.title = session.text("Found")},
               {.title = session.text("Records"), .align = Align::right}});
  for (const auto& one : findings) {
    table.addRow({Cell(shortEid(one.seed), ink::dim), damagedSeriesText(session, one.seed),
                  Cell(one.what.in(session.translate()), one.mendable ? Ink{} : ink::yellow),
                  std::to_string(one.records)});
  }
  session.out() << table.render(session.style(), session.width()) << '\n';
}

boost::json::array repairsJson(const std::vector<FurtherRepairOutcome>& repairs) {
  boost::json::array list;
  for (const auto& [repair, rows] : repairs) {
    list.push_back({{"name", repair->name}, {"purpose", repair->purpose}, {"rows", rows}});
  }
  return list;
}

void printRepairs(Session& session, const std::vector<FurtherRepairOutcome>& repairs) {
  Table table({{.title = session.text("Repair of older damage")},
               {.title = session.text("Rows"), .align = Align::right}});
  for (const auto& [repair, rows] : repairs) {
    table.addRow({session.platform().localized(repair->purpose), std::to_string(rows)});
  }
  session.out() << table.render(session.style(), session.width()) << '\n';
}

/// "Mended 3 records of 2 series."
std::string mendedText(Session& session, const SeriesFindings& mended) {
  std::set<std::string> series;
  std::int64_t records = 0;
  for (const auto& one : mended) {
    if (!one.mendable) continue;
    series.insert(one.seed);
    records += one.records;
  }
  return session.text("Mended {} of {}.", session.count("{} record", "{} records", records),
                      session.count("{} series", "{} series", static_cast<std::int64_t>(series.size())));
}

void repairStore(Session& session, bool dryRun) {
  // What is found is to be what was there before the day's own records are made.
  session.holdDaysWorkBack();
  session.launch();
  MVAppRoot& root = session.root();
  const bool json = session.options().json;
  const auto found = done(repairAllSeries(root, Repair::lookOnly));
  const bool anyMendable = std::ranges::any_of(found, &SeriesFinding::mendable);
  const auto older = done(runFurtherRepairs(root, Repair::lookOnly));
  if (!json && !found.empty()) printFindings(session, found);
  if (!json && !older.empty()) printRepairs(session, older);
  SeriesFindings mended;
  if (anyMendable && !dryRun) {
    mended = done(repairAllSeries(root, Repair::mend));
    std::erase_if(mended, [](const auto& one) { return !one.mendable; });
  }
  std::vector<FurtherRepairOutcome> mendedOlder;
  if (!dryRun) mendedOlder = done(runFurtherRepairs(root, Repair::mend));
  if (!mended.empty() || !mendedOlder.empty()) root.markRecentEditDate();
  if (json) {
    return session.printJson(boost::json::object{{"found", findingsJson(found)},
                                                 {"mended", findingsJson(mended)},
                                                 {"older", repairsJson(older)},
                                                 {"olderMended", repairsJson(mendedOlder)}});
  }
  if (found.empty() && older.empty()) {
    return session.answer(
        session.text("Every series is in order, and no record shows damage of older versions."));
  }
  if (dryRun) return session.answer(session.text("Nothing was changed."));
  if (anyMendable) session.answer(mendedText(session, mended));
  if (!mendedOlder.empty()) session.answer(session.text("Mended what older versions had damaged."));
  if (!anyMendable && mendedOlder.empty()) {
    session.answer(session.text("This is yours to decide, so nothing was changed."));
  }
}

}  // namespace

void addRepairCommand(CommandLine& line) {
  CLI::App* command = line.add(line.app(), "repair");
  auto dryRun = std::make_shared<bool>(false);
  command->add_flag("--dry-run", *dryRun, "Show what would be mended and change nothing");
  line.onRun(
      command, [dryRun](Session& session) { repairStore(session, *dryRun); }, false);
}

}  // namespace moniva
