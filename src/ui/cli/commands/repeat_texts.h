#pragma once

#include <CLI/App.hpp>
#include <boost/json/object.hpp>
#include <functional>
#include <string>

#include "model/mv_transaction.h"
#include "ui/cli/command_line.h"

/// What the commands on series have in common.
namespace moniva {

/// The series typed, by its own record or by one of those it has made; `eid` is set to the row typed. Ends
/// the command for none.
MVTransaction seriesTyped(Session& session, const std::string& text, std::string* eid = nullptr);
/// "Monthly" for "monthly", "MONTHLY" and what lists say in the person's language; ends the command for no
/// rule, with the nearest there is.
std::string ruleTyped(Session& session, const std::string& text);
/// "monthly"; of what is no rule the text itself.
std::string shownRule(const Session& session, const std::string& rule);

/// " 'Trip' is kept in USD; the amount counts there as it stands.", where account or book keep another
/// currency than the row.
std::string currencyNotes(Session& session, const MVTransaction& row);

/// "Rent, Lang, €500.00, monthly", without what is no rule.
std::string seriesText(Session& session, const MVTransaction& seed);
/// What a record says of its series: "monthly; see: moniva repeat show 1a2b3c4d"; "" for a blank seed and
/// for one that is gone.
std::string repeatsText(Session& session, const std::string& seed);
/// The series under the names of its fields; the date is that of its next record.
boost::json::object seriesJson(Session& session, const MVTransaction& seed);

/// How much of a series is shown.
struct SeriesShown {
  std::int64_t coming = 6;  ///< days of records to come
  bool all = false;         ///< every record it has made, not the last ones alone
};
/// Prints what is known of a series, what it has made and when it makes more.
void showSeries(Session& session, const MVTransaction& seed, const SeriesShown& shown = {});

/// Does the work as one change of the store and then says its answer; for a trial it is undone after that,
/// and the person told so.
void changeOrTry(Session& session, bool isTrial, const std::function<void()>& work,
                 const std::function<void()>& answer);

void addRepeatShow(CommandLine& line, CLI::App& family);
void addRepeatEdit(CommandLine& line, CLI::App& family);

}  // namespace moniva
