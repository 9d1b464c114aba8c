#include "ui/cli/commands/import_command.h"

#include <boost/json.hpp>

#include "calendar/date_texts.h"
#include "currency/amount_format.h"
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

std::string counted(std::size_t number, std::string_view one, std::string_view many) {
  return fmt::format("{} {}", number, number == 1 ? one : many);
}

/// "a, b, c and 4 more".
std::string listed(const std::vector<std::string>& names) {
  constexpr std::size_t most = 8;
  std::string text;
  for (std::size_t i = 0; i < names.size() && i < most; ++i)
    text += (i == 0 ? "" : ", ") + printable(names[i]);
  if (names.size() > most) text += fmt::format(" and {} more", names.size() - most);
  return text;
}

std::string problemLine(const std::string& file, const RowProblem& problem) {
  std::string where = fmt::format("{}:{}", file, problem.line);
  if (problem.column > 0) where += fmt::format(":{}", problem.column);
  if (!problem.heading.empty()) where += fmt::format(" ({})", problem.heading);
  if (!problem.value.empty()) where += fmt::format(" '{}'", problem.value);
  return printable(where + ": " + problem.reason);
}

/// Why bad rows kept the file out.
std::string keptOutLine(const ImportOutcome& outcome, bool dryRun) {
  const std::string_view written = dryRun ? "would be" : "was";
  if (outcome.rows == 1) return fmt::format("the row cannot be taken, so nothing {} written", written);
  if (outcome.badRows == outcome.rows) {
    return fmt::format("none of {} rows can be taken, so nothing {} written", outcome.rows, written);
  }
  return fmt::format("{} of {} rows cannot be taken, so nothing {} written (--skip-bad takes the others)",
                     outcome.badRows, outcome.rows, written);
}

json::object jsonOf(Session& session, const ImportOutcome& outcome) {
  json::array problems;
  for (const auto& problem : outcome.problems) {
    problems.push_back({{"line", problem.line},
                        {"column", problem.column},
                        {"heading", problem.heading},
                        {"value", problem.value},
                        {"reason", problem.reason}});
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
          {"newCategories", json::value_from(outcome.newCategories)},
          {"newVendors", json::value_from(outcome.newVendors)},
          {"movedByClockChange", json::value_from(outcome.movedByClockChange)},
          {"shownTwice", json::value_from(outcome.shownTwice)},
          {"firstDate", isoDate(session, outcome.firstDate)},
          {"lastDate", isoDate(session, outcome.lastDate)}};
}

void tell(Session& session, const ImportOutcome& outcome, bool dryRun) {
  auto& out = session.out();
  out << fmt::format(
      "{} {}: {}, {}, {}.\n", dryRun ? "Would add" : "Added", counted(outcome.added(), "record", "records"),
      counted(outcome.addedExpenses, "expense", "expenses"), fmt::format("{} income", outcome.addedIncome),
      counted(outcome.addedTransfers, "transfer", "transfers"));
  if (outcome.alreadyThere > 0) {
    out << fmt::format("{} there already.\n",
                       outcome.alreadyThere == 1 ? "1 was" : fmt::format("{} were", outcome.alreadyThere));
  }
  if (outcome.pending > 0) {
    out << fmt::format("{} pending until {} day comes.\n", counted(outcome.pending, "is", "are"),
                       outcome.pending == 1 ? "its" : "their");
  }
  if (outcome.firstDate) {
    out << fmt::format("From {} to {}.\n", stringOfDateMediumStyle(session.calendar(), *outcome.firstDate),
                       stringOfDateMediumStyle(session.calendar(), *outcome.lastDate));
  }
  const auto made = [&](std::string_view what, const std::vector<std::string>& names) {
    if (!names.empty()) out << fmt::format("New {}: {}.\n", what, listed(names));
  };
  made("books", outcome.newBooks);
  made("accounts", outcome.newAccounts);
  made("categories", outcome.newCategories);
  made("vendors", outcome.newVendors);
  for (const auto line : outcome.movedByClockChange) {
    out << fmt::format("Line {}: the clock skips that time of day; it was moved past the gap.\n", line);
  }
  for (const auto line : outcome.shownTwice) {
    out << fmt::format("Line {}: the clock shows that time twice on that day; the first was taken.\n", line);
  }
}

}  // namespace

ImportOutcome runImport(Session& session, const std::filesystem::path& file, ImportRequest request) {
  std::optional<Progress> progress;
  request.progress = [&](std::size_t rows, std::size_t total) {
    if (!progress) progress.emplace(session.progressPlace(), &Session::watch, "Importing", total);
    progress->moveTo(rows);
  };
  if (request.currency.empty()) request.currency = session.defaultCurrency();
  auto outcome = done(importFile(session.root(), file, request));
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
                   "Currency of new books and accounts (else that of the locale)")
      ->type_name("CODE");
  command->add_option("--decimal", options->decimalMark, "The decimal mark of the file (else found out)")
      ->type_name("MARK")
      ->check(oneOf({"auto", "point", "comma"}));
  command
      ->add_option("--dates", options->dateOrder, "What the first number of 02/03/2024 is (else found out)")
      ->type_name("ORDER")
      ->check(oneOf({"auto", "day-first", "month-first"}));
  line.onRun(command, [options](Session& session) {
    if (!options->currency.empty() && !isCurrencyCode(options->currency)) {
      throw CommandError(CommandError::kUsage,
                         fmt::format("'{}' is no currency; codes have three capital letters, such as EUR",
                                     printable(options->currency)));
    }
    const auto outcome = runImport(session, options->file,
                                   {.reading = {.decimalMark = kDecimalMarks.at(options->decimalMark),
                                                .dateOrder = kDateOrders.at(options->dateOrder)},
                                    .skipBad = options->skipBad,
                                    .dryRun = options->dryRun,
                                    .currency = options->currency,
                                    .progress = nullptr});
    if (!outcome.ignoredHeadings.empty()) {
      session.say(fmt::format("Columns not used: {}.", listed(outcome.ignoredHeadings)));
    }
    for (std::size_t i = 0; i < outcome.problems.size() && i < kProblemsShown; ++i) {
      session.complain(problemLine(options->file, outcome.problems[i]));
    }
    if (outcome.problemCount > kProblemsShown) {
      session.complain(fmt::format("... and {} more.", outcome.problemCount - kProblemsShown));
    }
    const bool keptOut = outcome.badRows > 0 && !options->skipBad;
    if (session.options().json) {
      session.printJson(jsonOf(session, outcome));
    } else if (!keptOut) {
      tell(session, outcome, options->dryRun);
    }
    if (keptOut) {
      throw CommandError(CommandError::kRefused, keptOutLine(outcome, options->dryRun));
    }
  });
}

}  // namespace moniva
