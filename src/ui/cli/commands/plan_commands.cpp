#include <charconv>

#include "model/entry_checks.h"
#include "ui/cli/command_error.h"
#include "ui/cli/commands/entry_fields.h"
#include "ui/cli/commands/spend_commands.h"
#include "ui/cli/records.h"
#include "ui/cli/text_width.h"
#include "ui/cli/typed_text.h"

namespace moniva {
namespace {

/// What the commands for instalment plans and spread costs take, each the part it needs.
struct PlanOptions {
  std::string eid;
  std::string total;
  std::string parts;
  std::string fee;
  std::string from;
  std::string to;
  EntryFields fields;
};

std::string addedText(Session& session, const RecordTexts& texts) {
  return session.text("Added {}", texts.described()) + texts.stillOpen();
}

std::string planNow(Session& session, const RecordTexts& texts) {
  return session.text("It is now {}", texts.described()) + texts.stillOpen();
}

/// A number of instalments; which numbers will do is known by the plan.
int partsTyped(const std::string& text) {
  int parts = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), parts);
  if (error == std::errc() && end == text.data() + text.size()) return parts;
  throw notUnderstood("'{}' is no number of instalments; it is a whole number, 1 to 60", printable(text));
}

/// A day of the range a cost is for; a blank one is a slip, not today.
Date rangeDay(Session& session, const std::string& text) {
  if (text.empty()) throw notUnderstood("the days that a cost is for need a date each");
  return dayTyped(session, text);
}

/// A new record of the total, before it is divided.
Spend newWhole(Session& session, const PlanOptions& options) {
  Spend whole(session.root());
  whole.datetime = momentTyped(session, options.fields.date);
  whole.note = asTyped(options.fields.note, "the note");
  whole.paid = !options.fields.pending && isPaidAt(whole.datetime, session.now());
  const auto names = fillEntry(session, options.fields, whole);
  whole.amount = amountTyped(session, options.total, names.currency, options.fields.amounts);
  if (!options.fee.empty()) {
    whole.foreignAmount = amountTyped(session, options.fee, names.currency, options.fields.amounts);
  }
  return whole;
}

void addPlan(Session& session, const PlanOptions& options) {
  enterRecord(
      session, options.fields,
      [&] {
        Spend whole = newWhole(session, options);
        done(whole.saveInstallment(partsTyped(options.parts)));
        return whole.eid;
      },
      [&](const RecordTexts& texts) { return addedText(session, texts); });
}

void dividePlan(Session& session, const PlanOptions& options) {
  enterRecord(
      session, options.fields,
      [&] {
        const auto record = wholeTyped(session, options.eid);
        if (record.isCompound()) {
          throw refused("the record has items or payments already; only a plain one is divided");
        }
        Spend whole = spendOf(session, record.head.eid);
        if (!options.fee.empty()) {
          whole.foreignAmount =
              amountTyped(session, options.fee, currencyOf(session, record), options.fields.amounts);
        }
        done(whole.saveInstallment(partsTyped(options.parts)));
        return whole.eid;
      },
      [&](const RecordTexts& texts) { return planNow(session, texts); });
}

/// The seed of the plan or the cost that the row typed is part of.
Spend seedTyped(Session& session, const std::string& text, int advancedType) {
  const auto whole = wholeTyped(session, text);
  const bool isPlan = advancedType == advanced::kInstallment;
  if (isPlan ? whole.isPlan() : whole.isSpread()) return spendOf(session, whole.head.eid);
  throw isPlan ? refused("the record is no instalment plan; see: moniva instalment list")
               : refused("the record is no cost spread over months; see: moniva cost list");
}

void changeSeed(Session& session, const PlanOptions& options, int advancedType,
                const std::function<void(Spend&)>& work) {
  std::string eid;
  changeStore(session, [&] {
    Spend seed = seedTyped(session, options.eid, advancedType);
    eid = seed.eid;
    work(seed);
  });
  answerChanged(session, eid, [&](const RecordTexts& texts) { return planNow(session, texts); });
}

void addCost(Session& session, const PlanOptions& options) {
  enterRecord(
      session, options.fields,
      [&] {
        Spend whole = newWhole(session, options);
        done(whole.saveApportionedCost(rangeDay(session, options.from), rangeDay(session, options.to)));
        return whole.eid;
      },
      [&](const RecordTexts& texts) { return addedText(session, texts); });
}

void spreadCost(Session& session, const PlanOptions& options) {
  enterRecord(
      session, options.fields,
      [&] {
        const auto record = wholeTyped(session, options.eid);
        if (record.isPlan() || record.isSpread() || record.isCart()) {
          throw refused("the record is divided already; only a plain one or one with payments is spread");
        }
        Spend whole = spendOf(session, record.head.eid);
        done(whole.saveApportionedCost(rangeDay(session, options.from), rangeDay(session, options.to)));
        return whole.eid;
      },
      [&](const RecordTexts& texts) { return planNow(session, texts); });
}

using PlanAction = std::function<void(Session&, const PlanOptions&)>;

struct PlanCommand {
  CLI::App* app;
  std::shared_ptr<PlanOptions> options;

  void addEid() const {
    app->add_option("EID", options->eid, "The record: its eid, or the end of it")->required();
  }
  void addParts() const { app->add_option("N", options->parts, "How many instalments, 1 to 60")->required(); }
  void addFee() const {
    app->add_option("--fee", options->fee, "What paying in instalments costs in all, added to the total")
        ->type_name("AMOUNT");
  }
  void addRange() const {
    app->add_option("--from", options->from, "The first day it is for")->type_name("DATE")->required();
    app->add_option("--to", options->to, "The last day it is for")->type_name("DATE")->required();
  }
  void addEntry() const { app->add_option("TOTAL", options->total, "The total, above zero")->required(); }
  void addEntryOptions() const {
    addCategoryFields(*app, options->fields);
    addAccountFields(*app, options->fields, false);
    addEntryFields(*app, options->fields);
  }
};

PlanCommand planCommand(CommandLine& line, CLI::App& family, const char* name, PlanAction action) {
  PlanCommand command{line.add(family, name), std::make_shared<PlanOptions>()};
  line.onRun(command.app, [options = command.options, action = std::move(action)](Session& session) {
    action(session, *options);
  });
  return command;
}

}  // namespace

void addInstalmentCommands(CommandLine& line) {
  CLI::App* family = line.add(line.app(), "instalment");
  family->alias("installment");
  family->require_subcommand(1);
  const auto add = planCommand(line, *family, "add", addPlan);
  add.addEntry();
  add.addParts();
  add.addEntryOptions();
  add.addFee();
  addDryRun(*add.app, add.options->fields.dryRun);
  const auto divide = planCommand(line, *family, "divide", dividePlan);
  divide.addEid();
  divide.addParts();
  divide.addFee();
  addDryRun(*divide.app, divide.options->fields.dryRun);
  addRoundOption(*divide.app, divide.options->fields.amounts);
  addCompoundList(line, *family, advanced::kInstallment);
  planCommand(line, *family, "cancel", [](Session& session, const PlanOptions& options) {
    changeSeed(session, options, advanced::kInstallment, [](Spend& seed) { done(seed.cancelInstallment()); });
  }).addEid();
}

void addCostCommands(CommandLine& line) {
  CLI::App* family = line.add(line.app(), "cost");
  family->require_subcommand(1);
  const auto add = planCommand(line, *family, "add", addCost);
  add.addEntry();
  add.addRange();
  add.addEntryOptions();
  add.app->add_flag("--pending", add.options->fields.pending, kNotPaidYet);
  addDryRun(*add.app, add.options->fields.dryRun);
  const auto spread = planCommand(line, *family, "spread", spreadCost);
  spread.addEid();
  spread.addRange();
  addDryRun(*spread.app, spread.options->fields.dryRun);
  const auto change = planCommand(line, *family, "change", [](Session& session, const PlanOptions& options) {
    const Date from = rangeDay(session, options.from);
    const Date to = rangeDay(session, options.to);
    changeSeed(session, options, advanced::kCost,
               [&](Spend& seed) { done(seed.updateApportionedCost(from, to)); });
  });
  change.addEid();
  change.addRange();
  planCommand(line, *family, "combine", [](Session& session, const PlanOptions& options) {
    changeSeed(session, options, advanced::kCost, [](Spend& seed) { done(seed.combineApportionedCost()); });
  }).addEid();
  addCompoundList(line, *family, advanced::kCost);
}

}  // namespace moniva
