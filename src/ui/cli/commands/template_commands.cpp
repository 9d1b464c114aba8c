#include <boost/json.hpp>

#include "model/entry_checks.h"
#include "model/record_template.h"
#include "ui/cli/command_error.h"
#include "ui/cli/command_line.h"
#include "ui/cli/commands/account_rows.h"
#include "ui/cli/commands/template_commands.h"
#include "ui/cli/commands/transfer_texts.h"
#include "ui/cli/csv_out.h"
#include "ui/cli/did_you_mean.h"
#include "ui/cli/entry_options.h"
#include "ui/cli/record_texts.h"
#include "ui/cli/records.h"
#include "ui/cli/text_width.h"
#include "ui/cli/typed_text.h"

namespace moniva {
namespace {

/// What the commands on templates take, each the part it needs.
struct TemplateOptions {
  std::string title;
  std::string other;  ///< a record, or a new title
  std::string amount;
  std::string code;  ///< behind it
  std::string toAmount;
  std::string date;
  bool deleted = false;
  AmountOptions amounts;
};

/// How lists and answers show a template.
struct TemplateTexts {
  TemplateTexts(Session& session, const RecordTemplate& kept) {
    MVAppRoot& root = session.root();
    const auto from = MonivaAccount::getAccountWithPK(root, kept.account);
    const auto inBook = MonivaAccount::getAccountWithPK(root, kept.book);
    currency = from ? from->currency : inBook ? inBook->currency : session.defaultCurrency();
    amount = session.amounts().format(kept.amount, currency);
    account = from ? from->title : "";
    if (inBook) book = inBook->title;
    if (kept.isTransfer()) {
      kind = session.text("transfer");
      const auto to = MonivaAccount::getAccountWithPK(root, kept.vendor);
      account += fmt::format(" > {}", to ? to->title : kept.vendor);
      if (kept.acrossCurrencies && to) arrives = session.amounts().format(kept.amountB, to->currency);
      if (kept.serviceCharge > 0) fee = session.amounts().format(kept.serviceCharge, currency);
      return;
    }
    kind = kept.type == kind::kIncomeTemplate ? session.text("income") : session.text("expense");
    if (const auto chosen = MVCategory::getCategory(root, kept.subcategory)) category = chosen->cateString();
    if (const auto who = Vendor::getVendor(root, kept.vendor, kept.recordType())) vendor = who->title;
  }

  std::string kind, currency, amount, arrives, fee, account, book, category, vendor;
};

RecordTemplate templateTyped(Session& session, const std::string& typedTitle) {
  const std::string title = wellFormed(typedTitle, "the title");
  if (auto kept = RecordTemplate::withTitle(session.root(), title)) return std::move(*kept);
  std::vector<std::string> titles;
  for (auto& each : done(transactionTemplates(session.root()))) titles.push_back(std::move(each.title));
  if (const auto meant = didYouMean(title, titles)) {
    throw refused("there is no template '{}'; did you mean '{}'?", printable(title), printable(*meant));
  }
  if (titles.empty()) {
    throw refused("there is no template yet; keep a record as one with: moniva template save TITLE RECORD");
  }
  throw refused("there is no template '{}'; see: moniva template list", printable(title));
}

/// Looks the template up, if one is named, and makes the change as one transaction; answers in a sentence.
void changeTemplates(Session& session, const std::function<RecordTemplate()>& work,
                     const std::function<std::string(const RecordTemplate&)>& sentence) {
  RecordTemplate kept(session.root());
  changeStore(session, [&] { kept = work(); });
  if (session.options().json) return session.printJson(jsonOf(session, kept));
  session.answer(sentence(kept));
}

void saveTemplate(Session& session, const TemplateOptions& options) {
  MVAppRoot& root = session.root();
  changeTemplates(
      session,
      [&] {
        const std::string eid = recordTyped(session, options.other);
        const auto transfer = Transfer::transferFromEID(root, eid);
        const auto spend = Spend::spendFromEID(root, eid);
        if (!transfer && !spend) throw refused("there is no record '{}'", printable(options.other));
        if (transfer ? transfer->isDeleted != 0 : spend->isDeleted != 0) {
          throw refused("the record is deleted; bring it back with: moniva restore {}", shortEid(eid));
        }
        auto made = done(transfer ? RecordTemplate::of(root, *transfer) : RecordTemplate::of(root, *spend));
        made.title = wellFormed(options.title, "the title");
        done(made.add());
        return made;
      },
      [&](const RecordTemplate& kept) {
        const TemplateTexts texts(session, kept);
        return session.text("Kept as the template '{}': {}, {}.", printable(kept.title), texts.kind,
                            texts.amount);
      });
}

void listTemplates(Session& session, const TemplateOptions& options) {
  if (!options.deleted) return printTemplates(session, done(transactionTemplates(session.root())));
  const auto list = done(RecordTemplate::deletedOnes(session.root()));
  if (list.empty() && !session.options().json) return session.say(session.text("No template is deleted."));
  printTemplates(session, list);
}

void showTemplate(Session& session, const TemplateOptions& options) {
  const auto kept = templateTyped(session, options.title);
  if (session.options().json) return session.printJson(jsonOf(session, kept));
  const TemplateTexts texts(session, kept);
  Facts facts(session);
  const auto add = [&](const std::string& name, const std::string& value) {
    if (!value.empty()) facts.add(name, value);
  };
  add(session.text("Template"), kept.title);
  add(session.text("Kind"), texts.kind);
  add(session.text("Amount"), texts.amount);
  add(session.text("Arrives"), texts.arrives);
  add(session.text("Fee in it"), texts.fee);
  if (!kept.foreignCurrency.empty())
    add(session.text("In foreign money"),
        session.amounts().formatWithCode(kept.foreignAmount, kept.foreignCurrency));
  add(session.text("Category"), texts.category);
  add(kept.type == kind::kIncomeTemplate ? session.text("Payer") : session.text("Payee"), texts.vendor);
  add(session.text("Account"), texts.account);
  add(session.text("Book"), texts.book);
  add(session.text("Note"), kept.note);
  add(session.text("Uses"), std::to_string(kept.templateUsedTimes));
  add(session.text("Shortcut"), kept.templateURL);
  facts.print();
}

void useForTransfer(Session& session, const TemplateOptions& options, RecordTemplate& kept,
                    Transfer& transfer) {
  if (!options.amounts.rate.empty()) {
    throw refused(
        "'{}' is a template of a transfer, which takes no --rate; say with --to-amount what arrives",
        printable(kept.title));
  }
  transfer = done(kept.transfer());
  transfer.datetime = momentTyped(session, options.date);
  transfer.paid = isPaidAt(transfer.datetime, session.now());
  if (!options.amount.empty()) {
    if (transfer.acrossCurrencies && options.toAmount.empty()) {
      throw refused("the accounts keep different currencies; say with --to-amount what arrives");
    }
    const auto currency = done(currencyOfAccount(session.root(), transfer.accountA));
    const double moved = amountTyped(session, options.amount, currency, options.amounts);
    transfer.amountA = withoutNoise(moved + transfer.serviceCharge);
    if (!transfer.acrossCurrencies) transfer.amountB = moved;
  }
  if (!options.toAmount.empty()) {
    if (!transfer.acrossCurrencies) {
      throw refused("the accounts keep one currency, so what leaves one arrives in the other");
    }
    const auto currency = done(currencyOfAccount(session.root(), transfer.accountB));
    transfer.amountB = amountTyped(session, options.toAmount, currency, options.amounts);
  }
  done(kept.use(transfer));
}

std::string useForSpend(Session& session, const TemplateOptions& options, RecordTemplate& kept,
                        Spend& spend) {
  if (!options.toAmount.empty()) throw refused("'{}' is no template of a transfer", printable(kept.title));
  std::string note;
  spend = done(kept.spend());
  spend.datetime = momentTyped(session, options.date);
  spend.paid = isPaidAt(spend.datetime, session.now());
  if (!options.amount.empty()) {
    const auto currency = TemplateTexts(session, kept).currency;
    const auto entry = entryAmountTyped(session, options.amount, currency, options.amounts);
    spend.amount = entry.amount;
    // What it was in another currency is not known for another amount, unless that is what was typed.
    spend.foreignAmount = entry.foreignAmount;
    spend.foreignCurrency = entry.foreignCurrency;
    note = entry.note(session);
  } else if (!options.amounts.rate.empty()) {
    throw notUnderstood("--rate belongs to an --amount in another currency, such as 20 USD");
  }
  done(kept.use(spend));
  return note;
}

void useTemplate(Session& session, const TemplateOptions& words) {
  auto options = words;
  takeCode(options.title, options.code, options.amount);
  MVAppRoot& root = session.root();
  RecordTemplate kept(root);
  Transfer transfer(root);
  Spend spend(root);
  std::string note;
  prepareRates(session, options.amount, options.amounts, [&](const std::string& code) {
    const auto meant = templateTyped(session, options.title);
    return !meant.isTransfer() && code != TemplateTexts(session, meant).currency;
  });
  changeStore(session, [&] {
    kept = templateTyped(session, options.title);
    if (kept.isTransfer()) {
      useForTransfer(session, options, kept, transfer);
    } else {
      note = useForSpend(session, options, kept, spend);
    }
  });
  if (session.options().json) {
    return session.printJson(kept.isTransfer() ? jsonOf(session, transfer) : jsonOf(session, spend));
  }
  const std::string title = printable(kept.title);
  if (kept.isTransfer()) {
    const TransferTexts texts(session, transfer);
    return session.answer(session.text("Moved {} from {} to {} by the template '{}', on {}.", texts.amount,
                                       texts.from, texts.to, title,
                                       dayOf(session, transfer.datetime, transfer.paid)) +
                          texts.ofFee());
  }
  const std::string amount = session.amounts().format(spend.amount, TemplateTexts(session, kept).currency) +
                             foreignText(session, spend.foreignAmount, spend.foreignCurrency);
  const std::string day = dayOf(session, spend.datetime, spend.paid);
  session.answer(
      (spend.type == kind::kIncome
           ? session.text("Added income {} by the template '{}', on {}.", amount, title, day)
           : session.text("Added an expense {} by the template '{}', on {}.", amount, title, day)) +
      note);
}

void renameTemplate(Session& session, const TemplateOptions& options) {
  changeTemplates(
      session,
      [&] {
        auto kept = templateTyped(session, options.title);
        done(kept.rename(wellFormed(options.other, "the new title")));
        return kept;
      },
      [&](const RecordTemplate& kept) {
        return session.text("Renamed the template '{}' to '{}'.",
                            printable(wellFormed(options.title, "the title")), printable(kept.title));
      });
}

void deleteTemplate(Session& session, const TemplateOptions& options) {
  changeTemplates(
      session,
      [&] {
        auto kept = templateTyped(session, options.title);
        done(kept.delete_());
        return kept;
      },
      [&](const RecordTemplate& kept) {
        return session.text("Deleted the template '{}'; 'moniva template restore' brings it back.",
                            printable(kept.title));
      });
}

void restoreTemplate(Session& session, const TemplateOptions& options) {
  changeTemplates(
      session,
      [&] {
        const std::string title = wellFormed(options.title, "the title");
        auto kept = RecordTemplate::deletedWithTitle(session.root(), title);
        if (!kept) {
          std::vector<std::string> titles;
          for (auto& each : done(RecordTemplate::deletedOnes(session.root())))
            titles.push_back(std::move(each.title));
          if (const auto meant = didYouMean(title, titles)) {
            throw refused("there is no deleted template '{}'; did you mean '{}'?", printable(title),
                          printable(*meant));
          }
          throw refused("there is no deleted template '{}'; see: moniva template list --deleted",
                        printable(title));
        }
        done(kept->restore());
        return *kept;
      },
      [&](const RecordTemplate& kept) {
        return session.text("Brought back the template '{}'.", printable(kept.title));
      });
}

}  // namespace

void printTemplates(Session& session, const std::vector<RecordTemplate>& list, bool csv) {
  boost::json::array array;
  Table table({{.title = session.text("Template")},
               {.title = session.text("Kind")},
               {.title = session.text("Amount"), .align = Align::right},
               {.title = session.text("Account")},
               {.title = session.text("Category")},
               {.title = session.text("Uses"), .align = Align::right}});
  for (const auto& kept : list) {
    array.push_back(jsonOf(session, kept));
    const TemplateTexts texts(session, kept);
    table.addRow({kept.title, texts.kind, texts.amount, texts.account, texts.category,
                  std::to_string(kept.templateUsedTimes)});
  }
  if (csv) return printCsv(session, array);
  if (session.options().json) return session.printJson(array);
  if (table.empty()) {
    return session.say(
        session.text("There is no template yet. Keep a record as one with: "
                     "moniva template save TITLE RECORD"));
  }
  session.out() << table.render(session.style(), session.width());
}

void addTemplateCommands(CommandLine& line) {
  CLI::App* family = line.add(line.app(), "template");
  family->require_subcommand(1);
  const auto command = [&](const char* name, void (*action)(Session&, const TemplateOptions&)) {
    CLI::App* app = line.add(*family, name);
    auto options = std::make_shared<TemplateOptions>();
    line.onRun(app, [options, action](Session& session) { action(session, *options); });
    return std::pair(app, options);
  };
  const auto named = [&](const char* name, void (*action)(Session&, const TemplateOptions&),
                         const char* help) {
    const auto [app, options] = command(name, action);
    app->add_option("TITLE", options->title, help)->required();
    return std::pair(app, options);
  };
  constexpr const char* kTitle = toTranslate("Title of the template");
  {
    const auto [save, options] = named("save", saveTemplate, "What the template is to be called");
    save->add_option("RECORD", options->other, "The record to keep, or the end of it as lists show it")
        ->required();
  }
  {
    const auto [list, options] = command("list", listTemplates);
    list->add_flag("--deleted", options->deleted, "Those that were deleted");
  }
  named("show", showTemplate, kTitle);
  {
    const auto [use, options] = named("use", useTemplate, kTitle);
    use->add_option("CODE", options->code, "The currency of --amount, when it is another than the record's");
    use->add_option("--amount", options->amount, "Another amount than the template's, without a fee")
        ->type_name("AMOUNT")
        ->check(notEmpty());
    use->add_option("--to-amount", options->toAmount,
                    "What arrives, when the accounts keep different currencies")
        ->type_name("AMOUNT");
    use->add_option("-d,--date", options->date, "When (else now)")->type_name("DATE");
    addRoundOption(*use, options->amounts);
    addRateOption(*use, options->amounts);
  }
  {
    const auto [rename, options] = named("rename", renameTemplate, kTitle);
    rename->add_option("NEW", options->other, "Its new title")->required();
  }
  named("delete", deleteTemplate, kTitle);
  named("restore", restoreTemplate, "Title of the deleted template");
}

}  // namespace moniva
