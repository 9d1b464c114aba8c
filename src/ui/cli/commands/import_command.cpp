#include "ui/cli/commands/import_command.h"

#include <boost/json.hpp>

#include "calendar/date_texts.h"
#include "ui/cli/command_error.h"
#include "ui/cli/command_line.h"
#include "ui/cli/records.h"
#include "ui/cli/text_width.h"

namespace moniva {
namespace {

namespace json = boost::json;

struct ImportCommandOptions {
  std::string file;
  bool skipBad = false;
  bool dryRun = false;
  std::string currency;
  std::string decimalMark = "auto";
  std::string dateOrder = "auto";
};

const std::map<std::string, DecimalMark> kDecimalMarks = {
    {"auto", DecimalMark::automatic}, {"point", DecimalMark::point}, {"comma", DecimalMark::comma}};
const std::map<std::string, DateOrder> kDateOrders = {{"auto", DateOrder::automatic},
                                                      {"day-first", DateOrder::dayFirst},
                                                      {"month-first", DateOrder::monthFirst}};

/// Bad rows shown before the rest is only counted.
constexpr std::size_t kProblemsShown = 20;

/// "a, b, c and 4 more".
std::string listed(const Session& session, const std::vector<std::string>& names) {
  constexpr std::size_t most = 8;
  std::string text;
  for (std::size_t i = 0; i < names.size() && i < most; ++i)
    text += (i == 0 ? "" : ", ") + printable(names[i]);
  return names.size() > most ? session.text("{} and {} more", text, names.size() - most) : text;
}

std::string problemLine(const Session& session, const std::string& file, const RowProblem& problem) {
  std::string where = fmt::format("{}:{}", file, problem.line);
  if (problem.column > 0) where += fmt::format(":{}", problem.column);
  if (!problem.heading.empty()) where += fmt::format(" ({})", problem.heading);
  if (!problem.value.empty()) where += fmt::format(" '{}'", problem.value);
  return printable(where + ": " + problem.reason.in(session.translate()));
}

/// Why bad rows kept the file out.
CommandError keptOut(const ImportOutcome& outcome, bool dryRun) {
  if (outcome.rows == 1) {
    return dryRun ? refused("the row cannot be taken, so nothing would be written")
                  : refused("the row cannot be taken, so nothing was written");
  }
  if (outcome.badRows == outcome.rows) {
    return dryRun ? refused("none of {} rows can be taken, so nothing would be written", outcome.rows)
                  : refused("none of {} rows can be taken, so nothing was written", outcome.rows);
  }
  return dryRun
             ? refused(
                   "{} of {} rows cannot be taken, so nothing would be written (--skip-bad takes the others)",
                   outcome.badRows, outcome.rows)
             : refused("{} of {} rows cannot be taken, so nothing was written (--skip-bad takes the others)",
                       outcome.badRows, outcome.rows);
}

json::object jsonOf(Session& session, const ImportOutcome& outcome) {
  json::array problems;
  for (const auto& problem : outcome.problems) {
    problems.push_back({{"line", problem.line},
                        {"column", problem.column},
                        {"heading", problem.heading},
                        {"value", problem.value},
                        {"reason", problem.reason.english()}});
  }
  return {{"written", outcome.written},
          {"rows", outcome.rows},
          {"addedExpenses", outcome.addedExpenses},
          {"addedIncome", outcome.addedIncome},
          {"addedTransfers", outcome.addedTransfers},
          {"alreadyThere", outcome.alreadyThere},
          {"badRows", outcome.badRows},
          {"pending", outcome.pending},
          {"problems", std::move(problems)},
          {"problemCount", outcome.problemCount},
          {"ignoredHeadings", json::value_from(outcome.ignoredHeadings)},
          {"newBooks", json::value_from(outcome.newBooks)},
          {"newAccounts", json::value_from(outcome.newAccounts)},
          {"revivedBooks", json::value_from(outcome.revivedBooks)},
          {"revivedAccounts", json::value_from(outcome.revivedAccounts)},
          {"newCategories", json::value_from(outcome.newCategories)},
          {"newVendors", json::value_from(outcome.newVendors)},
          {"movedByClockChange", json::value_from(outcome.movedByClockChange)},
          {"shownTwice", json::value_from(outcome.shownTwice)},
          {"firstDate", isoDate(session, outcome.firstDate)},
          {"lastDate", isoDate(session, outcome.lastDate)}};
}

void tell(Session& session, const ImportOutcome& outcome, bool dryRun) {
  const auto number = [](std::size_t count) { return static_cast<std::int64_t>(count); };
  const std::string records = session.count("{} record", "{} records", number(outcome.added()));
  const std::string expenses = session.count("{} expense", "{} expenses", number(outcome.addedExpenses));
  const std::string income = session.text("{} income", outcome.addedIncome);
  const std::string transfers = session.count("{} transfer", "{} transfers", number(outcome.addedTransfers));
  session.answer(dryRun ? session.text("Would add {}: {}, {}, {}.", records, expenses, income, transfers)
                        : session.text("Added {}: {}, {}, {}.", records, expenses, income, transfers));
  if (outcome.alreadyThere > 0) {
    session.answer(
        session.count("{} was there already.", "{} were there already.", number(outcome.alreadyThere)));
  }
  if (outcome.pending > 0) {
    session.answer(session.count("{} is pending until its day comes.",
                                 "{} are pending until their day comes.", number(outcome.pending)));
  }
  if (outcome.firstDate) {
    session.answer(session.text("From {} to {}.",
                                stringOfDateMediumStyle(session.calendar(), *outcome.firstDate),
                                stringOfDateMediumStyle(session.calendar(), *outcome.lastDate)));
  }
  const auto names = [&](const std::vector<std::string>& made) { return listed(session, made); };
  if (!outcome.newBooks.empty()) session.answer(session.text("New books: {}.", names(outcome.newBooks)));
  if (!outcome.newAccounts.empty()) {
    session.answer(session.text("New accounts, of the kind saving (moniva account type changes it): {}.",
                                names(outcome.newAccounts)));
  }
  if (!outcome.revivedBooks.empty()) {
    session.answer(session.text("Deleted books that are back: {}.", names(outcome.revivedBooks)));
  }
  if (!outcome.revivedAccounts.empty()) {
    session.answer(session.text("Deleted accounts that are back: {}.", names(outcome.revivedAccounts)));
  }
  if (!outcome.newCategories.empty()) {
    session.answer(session.text("New categories: {}.", names(outcome.newCategories)));
  }
  if (!outcome.newVendors.empty()) {
    session.answer(session.text("New vendors: {}.", names(outcome.newVendors)));
  }
  for (const auto line : outcome.movedByClockChange) {
    session.answer(
        session.text("Line {}: the clock skips that time of day; it was moved past the gap.", line));
  }
  for (const auto line : outcome.shownTwice) {
    session.answer(
        session.text("Line {}: the clock shows that time twice on that day; the first was taken.", line));
  }
}

}  // namespace

ImportOutcome runImport(
    Session& session,
    const std::function<Result<ImportOutcome>(std::function<void(std::size_t, std::size_t)>)>& import) {
  std::optional<Progress> progress;
  auto outcome = done(import([&](std::size_t rows, std::size_t total) {
    if (!progress)
      progress.emplace(session.progressPlace(), &Session::watch, session.text("Importing"), total);
    progress->moveTo(rows);
  }));
  if (progress) progress->finish();
  return outcome;
}

void addImportCommand(CommandLine& line) {
  CLI::App* command = line.add(line.app(), "import");
  auto options = std::make_shared<ImportCommandOptions>();
  command->add_option("FILE", options->file, "The file of records")
      ->required()
      ->type_name("FILE")
      ->check(CLI::Validator([](const std::string&) { return std::string(); }, "FILE"));
  command->add_flag("--dry-run", options->dryRun, "Show what would happen and write nothing");
  command->add_flag("--skip-bad", options->skipBad, "Take the good rows although others are bad");
  command
      ->add_option("--currency", options->currency,
                   "Currency of new books and accounts (else the current book's, or the one of your country)")
      ->type_name("CODE");
  command->add_option("--decimal", options->decimalMark, "The decimal mark of the file (else found out)")
      ->type_name("MARK")
      ->check(oneOf({"auto", "point", "comma"}));
  command
      ->add_option("--dates", options->dateOrder, "What the first number of 02/03/2024 is (else found out)")
      ->type_name("ORDER")
      ->check(oneOf({"auto", "day-first", "month-first"}));
  line.onRun(command, [options](Session& session) {
    ImportRequest request{.reading = {.decimalMark = kDecimalMarks.at(options->decimalMark),
                                      .dateOrder = kDateOrders.at(options->dateOrder)},
                          .skipBad = options->skipBad,
                          .dryRun = options->dryRun,
                          .currency = currencyTyped(session, options->currency),
                          .progress = nullptr};
    const auto outcome = runImport(session, [&](auto progress) {
      request.progress = std::move(progress);
      return importFile(session.root(), options->file, request);
    });
    if (!outcome.ignoredHeadings.empty()) {
      session.say(session.text("Columns not used: {}.", listed(session, outcome.ignoredHeadings)));
    }
    for (std::size_t i = 0; i < outcome.problems.size() && i < kProblemsShown; ++i) {
      session.complain(problemLine(session, options->file, outcome.problems[i]));
    }
    if (outcome.problemCount > kProblemsShown) {
      session.complain(session.text("... and {} more.", outcome.problemCount - kProblemsShown));
    }
    const bool isKeptOut = outcome.badRows > 0 && !options->skipBad;
    if (session.options().json) {
      session.printJson(jsonOf(session, outcome));
    } else if (!isKeptOut) {
      tell(session, outcome, options->dryRun);
    }
    if (isKeptOut) throw keptOut(outcome, options->dryRun);
  });
}

}  // namespace moniva
