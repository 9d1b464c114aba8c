#include <boost/json.hpp>

#include "exchange/csv_export.h"
#include "exchange/journal_writer.h"
#include "platform/files.h"
#include "ui/cli/command_error.h"
#include "ui/cli/command_line.h"
#include "ui/cli/entry_options.h"
#include "ui/cli/records.h"
#include "ui/cli/text_width.h"

namespace moniva {
namespace {

struct ExportOptions {
  std::string file = "-";
  std::string from;
  std::string to;
  std::string book;
  std::string account;
  std::string separator = "comma";
  bool pending = false;
  bool force = false;
  bool bom = false;
};

const std::map<std::string, char> kSeparators = {{"comma", ','}, {"semicolon", ';'}, {"tab", '\t'}};

/// Takes a separator for its name.
CLI::Validator separatorByName() {
  return CLI::Validator(
      [](std::string& text) {
        for (const auto& [name, sign] : kSeparators) {
          if (text == std::string(1, sign) || (text == "\\t" && sign == '\t')) text = name;
        }
        return std::string();
      },
      "");
}

using ExportWork = std::function<Result<ExportOutcome>(const ExportRequest&, const ExportSink&)>;

ExportRequest requestTyped(Session& session, const ExportOptions& options) {
  ExportRequest request;
  if (!options.from.empty()) request.from = boundTyped(session, options.from, false);
  if (!options.to.empty()) request.to = boundTyped(session, options.to, true);
  if (request.from && request.to && *request.to < *request.from) {
    throw notUnderstood("the period ends before it begins");
  }
  if (!options.book.empty() && !options.account.empty()) {
    throw notUnderstood("the records of a book or of an account are exported, not of both");
  }
  if (!options.book.empty()) request.of = bookNamed(session, options.book, Meant::groupsToo);
  if (!options.account.empty()) request.of = accountNamed(session, options.account, Meant::groupsToo);
  request.pending = options.pending;
  return request;
}

/// Does the work with a file, which appears whole at the end, or with standard output.
ExportOutcome writeTo(Session& session, const ExportOptions& options, const ExportWork& work) {
  ExportRequest request = requestTyped(session, options);
  std::optional<Progress> progress;
  request.progress = [&](std::size_t rows, std::size_t total) {
    if (!progress)
      progress.emplace(session.progressPlace(), &Session::watch, session.text("Exporting"), total);
    progress->moveTo(rows);
  };
  const auto finish = [&](ExportOutcome outcome) {
    if (progress) progress->finish();
    return outcome;
  };
  if (options.file == "-") {
    // What cannot be written is told of at the end of every command.
    return finish(done(work(request, [&](std::string_view bytes) -> Result<> {
      session.out() << bytes;
      return {};
    })));
  }
  // A folder or a device is refused in words of its own.
  const bool isFile = isPresent(options.file) && (!std::filesystem::exists(options.file) ||
                                                  std::filesystem::is_regular_file(options.file));
  if (!options.force && isFile) {
    throw refused("'{}' is there already; --force replaces it", printable(options.file));
  }
  NewFile file = done(NewFile::at(options.file, options.force));
  auto outcome = done(work(request, [&](std::string_view bytes) { return file.write(bytes); }));
  done(file.keep());
  return finish(outcome);
}

/// What was left out, a sentence for each reason.
void tellLeftOut(Session& session, const ExportOutcome& outcome, bool isTable) {
  const auto tell = [&](std::int64_t count, const std::string& sentence) {
    if (count > 0) session.say(sentence);
  };
  tell(outcome.pending,
       session.count("{} pending record was left out; --pending writes it.",
                     "{} pending records were left out; --pending writes them.", outcome.pending));
  tell(outcome.undated, session.count("{} record without a date was left out.",
                                      "{} records without a date were left out.", outcome.undated));
  tell(outcome.unmeasured,
       session.count("{} record was left out: its amount is no number or beyond all measure.",
                     "{} records were left out: their amounts are no numbers or beyond all measure.",
                     outcome.unmeasured));
  tell(outcome.unknown,
       isTable ? session.count("{} row was left out: it is no expense, income, transfer or debt.",
                               "{} rows were left out: they are no expenses, income, transfers or debts.",
                               outcome.unknown)
               : session.count("{} row was left out: its kind is not known.",
                               "{} rows were left out: their kinds are not known.", outcome.unknown));
  tell(outcome.noMoney,
       session.count("{} row was left out: budgets, templates, series and plans move no money themselves.",
                     "{} rows were left out: budgets, templates, series and plans move no money themselves.",
                     outcome.noMoney));
}

boost::json::object jsonOf(const ExportOptions& options, const ExportOutcome& outcome) {
  return {{"file", options.file},
          {"rows", outcome.rows},
          {"lines", outcome.lines},
          {"accounts", outcome.accounts},
          {"pending", outcome.pending},
          {"undated", outcome.undated},
          {"unmeasured", outcome.unmeasured},
          {"unknown", outcome.unknown},
          {"noMoney", outcome.noMoney}};
}

void answerExport(Session& session, const ExportOptions& options, const ExportOutcome& outcome,
                  const std::string& what, bool isTable) {
  tellLeftOut(session, outcome, isTable);
  if (options.file == "-") return session.say(session.text("Wrote {}.", what));
  if (session.options().json) return session.printJson(jsonOf(options, outcome));
  session.answer(session.text("Wrote {} to '{}'.", what, options.file));
}

void addExportOptions(CLI::App& command, ExportOptions& options) {
  command.add_option("FILE", options.file, "The file to write; - for standard output (else that)")
      ->type_name("FILE")
      ->check(CLI::Validator([](const std::string&) { return std::string(); }, "FILE"))
      ->check(notEmpty());
  command.add_option("--from", options.from, "From that day or moment on")
      ->type_name("DATE")
      ->check(notEmpty());
  command.add_option("--to", options.to, "Up to that day, itself included, or moment")
      ->type_name("DATE")
      ->check(notEmpty());
  command.add_option("-b,--book", options.book, "Of that book only, or of a group of books")
      ->type_name("NAME")
      ->check(notEmpty());
  command.add_option("-a,--account", options.account, "Of that account only, or of a group of accounts")
      ->type_name("NAME")
      ->check(notEmpty());
  command.add_flag("--pending", options.pending, "Also what waits for its day");
  command.add_flag("--force", options.force, "Replace a file that is there");
}

}  // namespace

void addExportCommands(CommandLine& line) {
  CLI::App* exports = line.add(line.app(), "export");
  exports->require_subcommand(1);

  CLI::App* journal = line.add(*exports, "journal");
  auto options = std::make_shared<ExportOptions>();
  addExportOptions(*journal, *options);
  line.onRun(journal, [options](Session& session) {
    const auto outcome = writeTo(session, *options, [&](const auto& request, const auto& sink) {
      return exportJournal(session.root(), request, sink);
    });
    answerExport(session, *options, outcome,
                 session.text("{} in {}", session.count("{} transaction", "{} transactions", outcome.lines),
                              session.count("{} account", "{} accounts", outcome.accounts)),
                 false);
  });

  CLI::App* csv = line.add(*exports, "csv");
  auto table = std::make_shared<ExportOptions>();
  addExportOptions(*csv, *table);
  csv->add_option("--separator", table->separator, "What parts the fields (else comma)")
      ->type_name("SIGN")
      ->check(oneOf({"comma", "semicolon", "tab"}))
      ->transform(separatorByName());
  csv->add_flag("--bom", table->bom, "Begin with the mark by which spreadsheet programs know UTF-8");
  line.onRun(csv, [table](Session& session) {
    const CsvForm form{.separator = kSeparators.at(table->separator), .hasMark = table->bom};
    const auto outcome = writeTo(session, *table, [&](const auto& request, const auto& sink) {
      return exportCsv(session.root(), request, form, sink);
    });
    answerExport(session, *table, outcome, session.count("{} record", "{} records", outcome.lines), true);
  });
}

}  // namespace moniva
