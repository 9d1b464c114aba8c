#include <algorithm>
#include <boost/json.hpp>

#include "app/do_db_updater.h"
#include "model/moniva_account.h"
#include "ui/cli/command_error.h"
#include "ui/cli/command_line.h"
#include "ui/cli/table.h"

namespace moniva {
namespace {

struct UpgradeOptions {
  bool dryRun = false;
  std::string again;
};

/// A step as it is shown: of the conversion the code is blank.
struct ShownStep {
  std::string code;
  std::string_view name;
  Phrase purpose;
  Phrase because;
};

std::vector<ShownStep> shownSteps(MVAppRoot& root) {
  std::vector<ShownStep> shown;
  if (needsFixDataForMoniva1(root)) {
    shown.push_back({"", "fixDataForMoniva1", phrase("converts a store of the first edition"),
                     phrase("records have no book")});
  }
  for (const UpgradeStep* step : done(DoDBUpdater(root).stepsDue())) {
    const bool isUrgent = step->isUrgent != nullptr && step->isUrgent(root);
    shown.push_back({std::to_string(step->code), step->name,
                     Phrase(step->purpose, std::string(step->purpose)),
                     isUrgent          ? phrase("tables lack columns")
                     : step->byRequest ? phrase("it was asked for")
                                       : phrase("it has not run on this store")});
  }
  return shown;
}

boost::json::array jsonOf(const std::vector<ShownStep>& steps) {
  boost::json::array list;
  for (const auto& step : steps) {
    list.push_back(
        {{"code", step.code.empty() ? boost::json::value() : boost::json::value(std::stoi(step.code))},
         {"name", step.name},
         {"purpose", step.purpose.english()},
         {"because", step.because.english()}});
  }
  return list;
}

void printDue(Session& session, const std::vector<ShownStep>& steps) {
  if (session.options().json) return session.printJson(boost::json::object{{"due", jsonOf(steps)}});
  if (steps.empty()) return session.answer(session.text("The store is up to date."));
  Table table({{.title = session.text("Step"), .align = Align::right},
               {.title = session.text("What it does")},
               {.title = session.text("Because")}});
  for (const auto& step : steps) {
    table.addRow({step.code, step.purpose.in(session.translate()), step.because.in(session.translate())});
  }
  session.out() << table.render(session.style(), session.width());
}

void printOutcome(Session& session, const std::vector<ShownStep>& steps, const UpgradeOutcome& outcome) {
  const auto failureOf = [&](std::string_view name) {
    const auto found = std::ranges::find(outcome.failed, name, &UpgradeFailure::name);
    return found == outcome.failed.end() ? nullptr : &found->why;
  };
  if (session.options().json) {
    boost::json::array failed;
    for (const auto& [name, why] : outcome.failed) failed.push_back({{"name", name}, {"why", why.why}});
    return session.printJson(boost::json::object{
        {"due", jsonOf(steps)},
        {"run", boost::json::value_from(outcome.run)},
        {"converted", outcome.converted},
        {"failed", std::move(failed)},
        {"changed", outcome.changed},
        {"copy", outcome.copy.empty() ? boost::json::value() : boost::json::value(outcome.copy.string())}});
  }
  Table table({{.title = ""},
               {.title = session.text("Step"), .align = Align::right},
               {.title = session.text("What it does")},
               {.title = ""}});
  for (const auto& step : steps) {
    const auto* why = failureOf(step.name);
    const bool isDone = step.code.empty()
                            ? outcome.converted
                            : std::ranges::find(outcome.run, std::stoi(step.code)) != outcome.run.end();
    table.addRow({isDone ? Cell("✓", ink::green) : Cell("✗", ink::red), step.code,
                  step.purpose.in(session.translate()),
                  why != nullptr ? Cell(why->phrase->in(session.translate()))
                                 : Cell(isDone ? session.text("done") : session.text("not done"), ink::dim)});
  }
  session.out() << table.render(session.style(), session.width()) << '\n';
  if (outcome.copy.empty() && !outcome.failed.empty()) return;
  if (outcome.copy.empty()) return session.answer(session.text("Nothing in the store had to be changed."));
  session.answer(session.count("Wrote {} row.", "Wrote {} rows.", outcome.changed) + " " +
                 session.text("How the store was before is kept as '{}'.", outcome.copy.string()));
}

void upgrade(Session& session, const UpgradeOptions& options) {
  session.holdDaysWorkBack();
  session.launch();
  auto& root = session.root();
  const UpgradeStep* asked = nullptr;
  if (!options.again.empty()) {
    const auto& steps = upgradeSteps();
    const auto step = std::ranges::find(steps, std::stoi(options.again), &UpgradeStep::code);
    asked = &*step;
  }
  auto& settings = *session.platform().userDefaults;
  const bool wasAsked = asked == nullptr || settings.objectForKey(asked->key).has_value();
  if (!wasAsked) settings.setString("1", asked->key);
  const auto due = shownSteps(root);
  if (options.dryRun && !wasAsked) settings.removeObjectForKey(asked->key);
  if (options.dryRun || due.empty()) return printDue(session, due);
  const auto outcome = done(DoDBUpdater(root).run());
  // The current book may have got another key.
  refreshUsingMonivaAccount(root);
  if (outcome.changed > 0) root.markRecentEditDate();
  printOutcome(session, due, outcome);
  if (!outcome.failed.empty()) {
    throw refused("{} of {} steps could not be done and were undone", outcome.failed.size(), due.size());
  }
}

}  // namespace

void addUpgradeCommand(CommandLine& line) {
  CLI::App* command = line.add(line.app(), "upgrade");
  auto options = std::make_shared<UpgradeOptions>();
  std::vector<std::string> requests;
  for (const auto& step : upgradeSteps()) {
    if (step.byRequest) requests.push_back(std::to_string(step.code));
  }
  auto* dryRun =
      command->add_flag("--dry-run", options->dryRun, "Show what the store needs and change nothing");
  command
      ->add_option(
          "--again", options->again,
          "Do one of these as well: 5 rebuilds the tables with dates as numbers, 6 fills fields that "
          "have nothing in them, 13 repairs the records of all series")
      ->type_name("STEP")
      ->check(oneOf(requests))
      ->excludes(dryRun);
  line.onRun(
      command, [options](Session& session) { upgrade(session, *options); }, false);
}

}  // namespace moniva
